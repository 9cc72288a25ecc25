#include "evaluation/ranks.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iterator>

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

}  // namespace

void Ranks::sort() {
  // In a flat hierarchy the second sorting finds what the first has left.
  if (std::is_sorted(begin(), end(), comes_before))
    return;
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
