// The text of a file, converted as the texts were that a model was learnt from.
#ifndef VEK_SORT_TEXT_READER_H_
#define VEK_SORT_TEXT_READER_H_

#include <string>
#include <string_view>

#include "base/failure.h"
#include "convert/record.h"
#include "convert/settings.h"

namespace vek::sorting {

// How a model's import converted its texts. Of several sources all filters
// count, and what else all have in common; a source of rows tells nothing of
// files but has the fields with the text. Without an import it is by the name
// of each file. False if the file is damaged.
bool read_conversion(const std::string &model_directory,
                     convert::Settings &settings, Failure &failure);

// Why a text in UTF-8 has no answer, whatever the model; empty if it may have.
std::string fault_of_text(std::string_view text);

class TextReader : private convert::Sink {
 public:
  explicit TextReader(convert::Settings settings)
      : settings_(std::move(settings)) {}

  // `system` is a failure that says nothing about the text.
  enum class Result { read, gone, refused, system };
  // Sets `text`, or the reason why there is none.
  Result read(const std::string &path, bool is_mail, std::string &text,
              std::string &reason);

 private:
  bool wants(const std::string &, bool) override { return true; }
  void take(convert::Record &record) override;
  void reject(const std::string &place, const std::string &reason,
              std::string_view begin) override;

  convert::Settings settings_;
  std::string text_;
  std::string reason_;
};

}  // namespace vek::sorting

#endif  // VEK_SORT_TEXT_READER_H_
