// Any bytes as a table, JSON lines, fastText lines or a mailbox; the first two
// bytes say which and with what settings. What comes of it is UTF-8, and no
// place is beyond the last line.
#include <cstddef>
#include <string>

#include "convert/encoding.h"
#include "convert/mail.h"
#include "convert/rows.h"
#include "target.h"

namespace {

using namespace vek::convert;
using vek::fuzzing::require;

class Checker : public Sink {
 public:
  explicit Checker(std::size_t nr_lines) : nr_lines_(nr_lines) {}

  bool wants(const std::string &, bool) override { return true; }
  void take(Record &record) override {
    check(record.place);
    require(is_utf8(record.text) && is_utf8(record.key) &&
            is_utf8(record.group));
    for (const std::string &name : record.classes)
      require(!name.empty() && is_utf8(name));
  }
  void reject(const std::string &place, const std::string &reason,
              std::string_view) override {
    check(place);
    require(!reason.empty());
  }

 private:
  // Rows come in the order of their lines.
  void check(const std::string &place) {
    const std::size_t line = std::stoul(place);
    require(line >= last_ && line <= nr_lines_);
    last_ = line;
  }

  const std::size_t nr_lines_;
  std::size_t last_ = 1;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  if (size < 2)
    return 0;
  constexpr Form forms[] = {Form::csv, Form::tsv, Form::jsonl, Form::fasttext,
                            Form::mbox};
  const Form form = forms[data[0] % std::size(forms)];
  const unsigned bits = data[1];
  std::string_view text = vek::fuzzing::text_of(data + 2, size - 2);
  Settings settings;
  settings.text = {(bits & 1) != 0 ? "1" : "text"};
  settings.classes = (bits & 2) != 0 ? "2" : "";
  settings.id = (bits & 4) != 0 ? "id" : "";
  settings.group = (bits & 8) != 0 ? "a.b" : "";
  settings.separator = (bits & 16) != 0 ? ";" : "";
  settings.has_header = (bits & 32) == 0;
  settings.has_quotes = (bits & 64) == 0;
  settings.encoding = (bits & 128) != 0 ? "UTF-16LE" : "";
  Lines lines(reader_of(text), settings.encoding);
  const FilePlace file = {"FILE", "", "folder", ""};
  // No encoding here makes more lines of the bytes.
  Checker checker(size + 1);
  vek::Failure failure;
  if (form == Form::mbox)
    require(read_mbox(lines, settings, file, checker, failure));
  else if (!read_rows(form, lines, settings, file, checker, failure))
    require(!failure.reason.empty());
  return 0;
}
