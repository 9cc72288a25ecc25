// Any bytes as the stored profile of a document: what is read is written as the
// same bytes, and without the terms that the table lacks there is nothing left
// to drop.
//
// The first two bytes are the number of terms that the table knows.
#include <algorithm>
#include <string>

#include "intake/docprof.h"
#include "target.h"

namespace {

using vek::fuzzing::require;

std::uint32_t sum_of_counts(const vek::DocProfile &profile) {
  std::uint32_t sum = 0;
  for (const vek::DocProfileEntry &entry : profile)
    sum += entry.freq;
  return sum;
}

std::string written(const vek::DocProfile &profile) {
  std::string block;
  require(profile.write(block));
  return block;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  if (size < 6)
    return 0;
  const std::size_t nr_terms = data[0] + 256U * data[1];
  const std::string block(vek::fuzzing::text_of(data + 2, size - 2));
  vek::DocProfile profile;
  if (!profile.read(block.data(), static_cast<unsigned>(block.size())))
    return 0;
  require(profile.size() == block.size() / 8);
  require(profile.total() == sum_of_counts(profile));
  require(written(profile) == block);

  const std::size_t before = profile.size();
  const std::size_t nr_dropped = profile.drop_unknown(nr_terms);
  require(profile.size() + nr_dropped == before);
  require(profile.total() == sum_of_counts(profile));
  require(std::all_of(profile.begin(), profile.end(), [=](const auto &entry) {
    return entry.term < nr_terms && entry.weight == 0.0;
  }));
  require(profile.drop_unknown(nr_terms) == 0);
  const std::string rest = written(profile);
  vek::DocProfile again;
  require(again.read(rest.data(), static_cast<unsigned>(rest.size())));
  require(written(again) == rest);
  return 0;
}
