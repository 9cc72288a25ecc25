#include "sort/text_reader.h"

#include <cerrno>
#include <cstring>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "base/helpers.h"
#include "base/input_file.h"
#include "convert/filter.h"
#include "convert/source.h"
#include "import/directory.h"
#include "import/examples.h"

namespace vek::sorting {

bool read_conversion(const std::string &model_directory,
                     convert::Settings &settings, Failure &failure) {
  const std::string path = model_directory + '/' + importing::settings_file;
  std::string text;
  std::string reason;
  settings = {};
  if (read_file(path, text, reason) != ReadResult::ok) {
    failure = {path, "", reason};
    return presence_of(path) == Presence::missing;
  }
  std::map<std::string, convert::Settings> sources;
  try {
    const nlohmann::json json = nlohmann::json::parse(text);
    if (json.at("version") != importing::settings_version)
      throw nlohmann::json::other_error::create(0, "", &json);
    json.at("sources").get_to(sources);
  } catch (const nlohmann::json::exception &) {
    failure = {path, "", "no settings of this version"};
    return false;
  }
  std::optional<convert::Form> form;
  std::optional<std::string> encoding;
  std::optional<std::vector<std::string>> fields;
  for (const auto &[name, source] : sources) {
    settings.filters.insert(settings.filters.end(), source.filters.begin(),
                            source.filters.end());
    if (convert::has_many_documents(source.form)) {
      fields = fields.value_or(source.text) == source.text
                   ? source.text
                   : std::vector<std::string>();
      continue;
    }
    form = form.value_or(source.form) == source.form ? source.form
                                                     : convert::Form::unknown;
    encoding = encoding.value_or(source.encoding) == source.encoding
                   ? source.encoding
                   : "";
  }
  settings.form = form.value_or(convert::Form::unknown);
  settings.encoding = encoding.value_or("");
  settings.text = fields.value_or(std::vector<std::string>());
  return true;
}

std::string fault_of_text(std::string_view text) {
  return text.find_first_not_of(" \t\r\n\f\v") == std::string_view::npos
             ? "empty"
             : "";
}

TextReader::Result TextReader::read(const std::string &path, bool is_mail,
                                    std::string &text, std::string &reason) {
  text_.clear();
  reason_.clear();
  convert::Form form = settings_.form;
  if (form == convert::Form::unknown)
    form = is_mail ? convert::Form::mail : convert::form_by_name(path);
  if (convert::has_many_documents(form) && settings_.filter_for(path).empty()) {
    reason = std::string("a file of the form ") + convert::form_name(form) +
             " has many documents; see --stream";
    return Result::refused;
  }
  Failure failure;
  errno = 0;
  if (!convert::read_file({path, "", "", ""}, settings_, is_mail, *this,
                          failure))
    reason_ = failure.reason;
  if (!reason_.empty()) {
    reason = reason_;
    const bool is_of_system = reason_ == std::strerror(errno);
    return is_of_system && errno == ENOENT ? Result::gone
           : (is_of_system && is_system_failure()) ||
                   reason_.starts_with(convert::not_started)
               ? Result::system
               : Result::refused;
  }
  text.swap(text_);
  reason = fault_of_text(text);
  return reason.empty() ? Result::read : Result::refused;
}

void TextReader::take(convert::Record &record) {
  text_.swap(record.text);
}

void TextReader::reject(const std::string &, const std::string &reason,
                        std::string_view) {
  reason_ = reason;
}

}  // namespace vek::sorting
