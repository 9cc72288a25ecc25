// JSON as text, written member by member.
#ifndef VEK_REPORT_JSON_WRITER_H_
#define VEK_REPORT_JSON_WRITER_H_

#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "base/textio.h"

namespace vek::reporting {

// Values and members are separated by commas where they have to
// be; what is opened must be closed.
class JsonWriter {
 public:
  void open(char bracket) {
    separate();
    out_ += bracket;
  }
  void close(char bracket) { out_ += bracket; }
  void key(std::string_view name) {
    separate();
    out_ += '"';
    out_ += name;
    out_ += "\":";
  }
  // What is no UTF-8 becomes U+FFFD.
  void text(std::string_view value) { raw(quoted(value)); }
  template <std::integral Number>
  void count(Number value) {
    separate();
    append_number(out_, value);
  }
  // JSON has no other numbers than finite ones.
  void real(double value, int precision = default_precision) {
    separate();
    if (std::isfinite(value)) {
      char digits[real_room];
      out_.append(digits, put_real(digits, value, precision));
    } else {
      out_ += "null";
    }
  }
  void raw(std::string_view json) {
    separate();
    out_ += json;
  }

  template <typename Range, typename Write>
  void list(const Range &range, Write write) {
    open('[');
    for (const auto &element : range)
      write(element);
    close(']');
  }
  template <typename Range>
  void counts(const Range &range) {
    list(range, [this](auto value) { this->count(value); });
  }

  std::size_t size() const { return out_.size(); }
  std::string take() { return std::move(out_); }

 private:
  static std::string quoted(std::string_view value);
  void separate() {
    if (!out_.empty() && std::strchr("[{:,", out_.back()) == nullptr)
      out_ += ',';
  }

  std::string out_;
};

}  // namespace vek::reporting

#endif  // VEK_REPORT_JSON_WRITER_H_
