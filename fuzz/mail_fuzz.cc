// Any bytes as a message, as a page and as a text in an unknown encoding: what
// comes of each is UTF-8, or it is said why nothing does.
#include <string>

#include "convert/encoding.h"
#include "convert/mail.h"
#include "target.h"

using vek::fuzzing::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  using namespace vek::convert;
  if (size == 0)
    return 0;
  std::string text(vek::fuzzing::text_of(data + 1, size - 1));
  std::string reason;
  if (data[0] % 4 == 0) {
    reason = to_utf8(text, "");
  } else if (data[0] % 4 == 1) {
    reason = page_to_text(text, "");
  } else {
    Settings settings;
    settings.classes = "X-Class";
    settings.separator = ",";
    Record record;
    reason = read_message(text, settings, record);
    text = record.text;
  }
  require(!reason.empty() || is_utf8(text));
  return 0;
}
