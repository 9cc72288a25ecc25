#include "import/dealing.h"

#include <tsl/robin_map.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

namespace vek::importing {
namespace {

using Numbers = std::vector<std::uint64_t>;
using SideMap = tsl::robin_map<std::uint64_t, Side>;

std::vector<Numbers> numbers_by_class(const std::vector<Document> &documents) {
  std::vector<Numbers> numbers;
  for (const Document &document : documents) {
    if (document.class_id >= numbers.size())
      numbers.resize(document.class_id + std::size_t{1});
    numbers[document.class_id].push_back(document.group);
  }
  for (Numbers &group : numbers)
    std::sort(group.begin(), group.end());
  return numbers;
}

// How many documents of each class belong to the test list: its share rounded
// down, and one more for those with the largest rest, so that the sum is right.
std::vector<std::size_t> quotas(const std::vector<Numbers> &numbers,
                                double share) {
  std::vector<std::size_t> result;
  std::vector<double> rests;
  double wanted = 0.5;  // rounded
  for (const Numbers &group : numbers) {
    const double exact = share * static_cast<double>(group.size());
    // One is left to learn from.
    const std::size_t most = group.empty() ? 0 : group.size() - 1;
    result.push_back(std::min(static_cast<std::size_t>(exact), most));
    rests.push_back(result.back() < most ? exact - std::floor(exact) : 0);
    wanted += exact;
  }
  const auto total =
      std::accumulate(result.begin(), result.end(), std::size_t{0});
  std::vector<std::size_t> order(result.size());
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(
      order.begin(), order.end(),
      [&rests](std::size_t a, std::size_t b) { return rests[a] > rests[b]; });
  const auto sum = static_cast<std::size_t>(wanted);
  for (std::size_t i = 0; i < order.size() && total + i < sum; ++i) {
    if (rests[order[i]] > 0)
      ++result[order[i]];
  }
  return result;
}

// The documents of a group go together: the limit is before or behind it,
// whichever comes nearer to the quota. Numbers below the result are in.
std::uint64_t limit_of(const Numbers &numbers, std::size_t quota) {
  if (quota == 0)
    return 0;
  const std::uint64_t number = numbers[quota - 1];
  const auto range = std::equal_range(numbers.begin(), numbers.end(), number);
  const auto before = static_cast<std::size_t>(range.first - numbers.begin());
  const auto behind = static_cast<std::size_t>(range.second - numbers.begin());
  if (quota - before < behind - quota || behind == numbers.size())
    return number;
  return number + 1;
}

}  // namespace

void deal(std::vector<Document> &documents, double share) {
  const std::vector<Numbers> numbers = numbers_by_class(documents);
  const std::vector<std::size_t> wanted = quotas(numbers, share);
  Numbers limits;
  for (std::size_t i = 0; i < numbers.size(); ++i)
    limits.push_back(limit_of(numbers[i], wanted[i]));
  SideMap sides;
  for (Document &document : documents) {
    if (document.side == Side::none) {
      const auto found = sides.find(document.group);
      if (found != sides.end())
        document.side = found->second;
      else if (document.group < limits[document.class_id])
        document.side = Side::test;
      else
        document.side = Side::train;
    }
    sides.emplace(document.group, document.side);
  }
}

std::size_t withdraw_doubles(std::vector<Document> &documents) {
  std::size_t nr_withdrawn = 0;
  SideMap sides;
  for (Document &document : documents) {
    const auto found = sides.emplace(document.text, document.side).first;
    if (document.is_new && found->second != document.side) {
      document.side = Side::none;
      ++nr_withdrawn;
    }
  }
  return nr_withdrawn;
}

}  // namespace vek::importing
