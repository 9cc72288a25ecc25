#include "classes/termstats.h"

#include <algorithm>

namespace vek {

void TermStatsTable::settle() {
  places_ = {};
  slots_.shrink_to_fit();
  std::sort(slots_.begin(), slots_.end(),
            [](const Slot &a, const Slot &b) { return a.term < b.term; });
}

}  // namespace vek
