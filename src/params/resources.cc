#include "params/resources.h"

#include <string_view>

#include "base/helpers.h"
#include "base/messages.h"
#include "params/rcparser.h"

namespace vek {
namespace {

constexpr char default_name[] = "vek";
constexpr char resource_suffix[] = ".rc";

class FirstError : public Messages {
 public:
  void error(std::string_view text) override {
    if (text_.empty())
      text_ = text;
  }
  const std::string &text() const { return text_; }

 private:
  std::string text_;
};

// Of "file FILE: line 7: REASON".
Failure failure_of(const std::string &path, std::string reason) {
  const std::string prefix = "file " + path + ": ";
  if (reason.starts_with(prefix))
    reason.erase(0, prefix.size());
  const std::size_t end = reason.find(": ");
  if (!reason.starts_with("line ") || end == std::string::npos)
    return {path, "", reason};
  return {path, reason.substr(0, end), reason.substr(end + 2)};
}

}  // namespace

std::string path_from(const std::string &directory, const std::string &path) {
  if (directory.empty() || directory == "." || path.starts_with('/'))
    return path;
  return Path(directory, path, "");
}

bool read_resources(const std::string &directory, const std::string &name,
                    Params &params, Failure &failure) {
  const std::string path = path_from(
      directory, Path("", name.empty() ? default_name : name, resource_suffix));
  if (name.empty() && !file_exists(path))
    return true;
  std::string text;
  std::string reason;
  if (read_resource_file(path, text, reason) != ReadResult::ok) {
    failure = {path, "", reason};
    return false;
  }
  FirstError messages;
  RcParser parser(&params, text, path.c_str(), messages);
  parser.parse();
  if (parser.nr_errors() == 0)
    return true;
  failure = failure_of(path, messages.text());
  return false;
}

}  // namespace vek
