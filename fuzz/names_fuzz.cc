// Any bytes as the name of a document, in an input directory, in a list and as
// a request to the analyser: a document's name stands for the file that it was
// made from, and the answer for a path lies in the directory of the answers.
#include <string>

#include "analyse/result_files.h"
#include "base/helpers.h"
#include "intake/lists.h"
#include "target.h"

namespace {

using vek::fuzzing::require;

void check_entry(const std::string &entry) {
  std::string name;
  if (!vek::is_input_document(entry, name))
    return;
  require(name + ".txt" == entry && !name.starts_with('.') && !name.empty());
  const std::string path = vek::Path("files", name, ".txt");
  require(path.starts_with("files/" + name) && path.ends_with(".txt"));
}

bool has_parent_component(std::string_view path) {
  const std::string framed = '/' + std::string(path) + '/';
  return framed.find("/../") != framed.npos;
}

void check_answer(const vek::analysis::ResultNames &names,
                  std::string_view path) {
  std::string file;
  if (!names.find(path, file).empty())
    return;
  require(file.starts_with("answers/") && file.ends_with(".txt"));
  require(!has_parent_component(file));
  require(file.size() <= path.size() + 12);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  const std::string text(vek::fuzzing::text_of(data, size));
  check_entry(text);
  check_answer(vek::analysis::ResultNames("answers"), text);
  check_answer(vek::analysis::ResultNames("answers", "texts"), text);
  return 0;
}
