// Conditions that only a programming error can break.
#ifndef VEK_BASE_REQUIRE_H_
#define VEK_BASE_REQUIRE_H_

#include <cstdio>
#include <cstdlib>
#include <source_location>

namespace vek {

// Stops the program, in every build, unless the condition holds. `text` is what
// the message calls the condition. Where the expression itself says enough, use
// assert().
inline void require(
    bool condition, const char *text,
    std::source_location place = std::source_location::current()) {
  if (condition)
    return;
  std::fprintf(stderr, "vek: %s:%u: %s: Assertion `%s' failed.\n",
               place.file_name(), static_cast<unsigned>(place.line()),
               place.function_name(), text);
  std::abort();
}

}  // namespace vek

#endif  // VEK_BASE_REQUIRE_H_
