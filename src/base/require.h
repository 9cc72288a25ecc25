// Conditions that only a programming error can break.
#ifndef VEK_BASE_REQUIRE_H_
#define VEK_BASE_REQUIRE_H_

#include <cstdio>
#include <cstdlib>

namespace vek {

// Stops the program, in every build, unless the condition holds. `text` is what
// the message calls the condition. Where the expression itself says enough, use
// assert(). The place is the caller's; Clang 14 lacks what
// std::source_location needs.
inline void require(bool condition, const char *text,
                    const char *file = __builtin_FILE(),
                    int line = __builtin_LINE(),
                    const char *function = __builtin_FUNCTION()) {
  if (condition)
    return;
  std::fprintf(stderr, "vek: %s:%d: %s: Assertion `%s' failed.\n", file, line,
               function, text);
  std::abort();
}

}  // namespace vek

#endif  // VEK_BASE_REQUIRE_H_
