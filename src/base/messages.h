// Where long work says how far it is and what it has met.
//
// Code that learns, tests and parses is used by programs with a log and by
// programs without one, so it is given the place for its messages. In vek they
// go to the log (log/log.h); this class itself drops them.
#ifndef VEK_BASE_MESSAGES_H_
#define VEK_BASE_MESSAGES_H_

#include <cstdarg>
#include <string>
#include <string_view>

namespace vek {

class Messages {
 public:
  Messages() = default;
  Messages(const Messages &) = delete;
  Messages &operator=(const Messages &) = delete;
  virtual ~Messages() = default;

  // Whether a detail of that level is shown: if not, a caller need not make the
  // text. Levels count from 1, the most important.
  virtual bool wants(unsigned /*level*/) const { return false; }

  // A note is kept at any setting; a detail is dropped unless wants(level).
  virtual void note(unsigned /*level*/, std::string_view /*text*/) {}
  virtual void detail(unsigned /*level*/, std::string_view /*text*/) {}

  // Said now and then by long work that has nothing to tell: here the program
  // may be ended.
  virtual void may_stop() {}

  virtual void warning(std::string_view /*text*/) {}
  virtual void error(std::string_view /*text*/) {}
};

// The text that printf would print, cut to 1023 bytes. Leaves errno alone.
[[gnu::format(printf, 1, 2)]] std::string formatted(const char *format, ...);
std::string formatted_list(const char *format, std::va_list values);

}  // namespace vek

#endif  // VEK_BASE_MESSAGES_H_
