#include "evaluation/ranks.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <limits>

#include "evaluation/packs.h"
#include "run/log.h"
#include "run/textio.h"

namespace vek {
namespace {

constexpr char document_suffix[] = ".txt";
constexpr int score_precision = 5;

// A strict weak order also where a score is not a number.
bool comes_before(const Ranking &a, const Ranking &b) {
  if (std::isnan(a.score))
    return false;
  return std::isnan(b.score) || a.score > b.score;
}

// Up to so many scores, counting for each what comes before it is faster than
// sorting, whose comparisons cannot be foreseen: the processor compares with
// several at once.
constexpr std::size_t most_counted = 512;

// Sets places[i] to the place of scores[i] in the order. None of the `size`
// scores is NaN, and behind them stands a pack of the least there is.
template <int nr_bytes>
[[gnu::always_inline]] inline void count_places(const WeightType *scores,
                                                std::size_t size,
                                                std::uint32_t *places) {
  constexpr std::size_t width = pack_width<WeightType, nr_bytes>;
  for (std::size_t i = 0; i < size; ++i) {
    const WeightType score = scores[i];
    const std::size_t own = i / width * width;
    Pack<std::int64_t, nr_bytes> minus_count = {};
    Pack<WeightType, nr_bytes> others;
    for (std::size_t k = 0; k < own; k += width) {
      load_pack(others, scores + k);
      minus_count += others >= score;
    }
    for (std::size_t k = own + width; k < size; k += width) {
      load_pack(others, scores + k);
      minus_count += others > score;
    }
    std::int64_t place = 0;
    for (std::size_t k = 0; k < width; ++k)
      place -= minus_count[k];
    for (std::size_t k = own; k < i; ++k)
      place += scores[k] >= score ? 1 : 0;
    for (std::size_t k = i + 1; k < own + width; ++k)
      place += scores[k] > score ? 1 : 0;
    places[i] = static_cast<std::uint32_t>(place);
  }
}

void count_in_16_bytes(const WeightType *scores, std::size_t size,
                       std::uint32_t *places) {
  count_places<16>(scores, size, places);
}
VEK_WIDE_PACKS void count_in_32_bytes(const WeightType *scores,
                                      std::size_t size, std::uint32_t *places) {
  count_places<32>(scores, size, places);
}
auto *const count = has_wide_packs() ? count_in_32_bytes : count_in_16_bytes;

// False, and nothing done, if a score is not a number.
bool sort_by_counting(Ranks &ranks) {
  // Kept from call to call, so that sorting does not allocate.
  static std::vector<WeightType> scores;
  static std::vector<std::uint32_t> places;
  static std::vector<Ranking> unsorted;
  scores.clear();
  bool has_nan = false;
  for (const Ranking &ranking : ranks) {
    has_nan |= std::isnan(ranking.score);
    scores.push_back(ranking.score);
  }
  if (has_nan)
    return false;
  scores.resize(ranks.size() + 4, -std::numeric_limits<WeightType>::infinity());
  places.resize(ranks.size());
  count(scores.data(), ranks.size(), places.data());
  unsorted.assign(ranks.begin(), ranks.end());
  for (std::size_t i = 0; i < unsorted.size(); ++i)
    ranks[places[i]] = unsorted[i];
  return true;
}

}  // namespace

void Ranks::sort() {
  // In a flat hierarchy the second sorting finds what the first has left.
  if (std::is_sorted(begin(), end(), comes_before))
    return;
  if (size() > most_counted || !sort_by_counting(*this))
    std::stable_sort(begin(), end(), comes_before);
}

void Ranks::print(const std::string &name, std::ostream &os) const {
  // Kept from call to call, so that its memory serves the next document.
  static std::string line;
  line = name;
  line += document_suffix;
  for (const Ranking &ranking : *this) {
    line += ' ';
    line += class_table.full_name(ranking.class_data_P->id);
    line += ':';
    append_real(line, ranking.score, score_precision);
  }
  if (empty())
    line += ' ';
  line += '\n';
  os.write(line.data(), std::ssize(line));
  if (!empty() && !os)
    abort_run();
}

void next_rank_file_name(char *buffer, std::size_t size) {
  static std::uint32_t counter = 0;
  std::snprintf(buffer, size, "rank%u", counter++);
}

}  // namespace vek
