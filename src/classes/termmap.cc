#include "classes/termmap.h"

#include <sys/random.h>

namespace vek {
namespace {

TermHash::Key random_key() {
  // Fibonacci hashing, should the system have no random numbers.
  TermHash::Key key = {0x9E3779B97F4A7C15, 0};
  std::uint64_t numbers[2] = {};
  if (getrandom(numbers, sizeof numbers, GRND_NONBLOCK) == sizeof numbers)
    key = {numbers[0] | 1, numbers[1]};
  return key;
}

}  // namespace

const TermHash::Key TermHash::key = random_key();

}  // namespace vek
