#include "intake/collection.h"

#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "classes/classtab.h"
#include "intake/analyser.h"
#include "run/helpers.h"
#include "run/log.h"

namespace vek {
namespace {

constexpr char document_suffix[] = ".txt";

const char *list_name(ListKind kind) {
  return kind == ListKind::train ? "train" : "test";
}

std::string working_directory() {
  const std::unique_ptr<char, decltype(&std::free)> path(getcwd(nullptr, 0),
                                                         &std::free);
  if (path == nullptr) {
    report_file_error(".", FileError::open_directory);
    abort_run();
  }
  return path.get();
}

// A class that cannot be written and read back is worth a word while the user
// can still see where it comes from; only the first component counts that is
// at fault.
void check_class_names(const std::string &path, const std::string &list,
                       std::size_t line_number) {
  std::string component;
  std::string rest = path;
  bool more = true;
  while (more) {
    const std::string whole = rest;
    more = split_word(rest, '/', component, rest);
    const std::string &name = more ? component : whole;
    if (ClassTable::is_storable_name(name))
      continue;
    warning(
        "file %s: line %zu: class name `%.200s' cannot be stored in the data "
        "directory",
        list.c_str(), line_number, name.c_str());
    return;
  }
}

}  // namespace

bool ListReader::next(std::string &line) {
  if (rest_.empty())
    return false;
  ++line_number_;
  const std::size_t end = rest_.find('\n');
  const std::string_view text = rest_.substr(0, end);
  too_long_ = text.size() > longest_list_line;
  if (too_long_)
    return false;
  line = text;
  rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
  return true;
}

bool parse_list_line(const std::string &line, ListEntry &entry) {
  entry.classes.clear();
  std::string word;
  std::string rest;
  if (line.find('\0') != std::string::npos)
    return false;
  if (!split_word(line, ' ', word, rest))
    return false;
  strip_suffix(entry.document, word, document_suffix);
  while (!rest.empty()) {
    split_word(rest, ' ', word, rest);
    clean_class_name(word);
    entry.classes.push_back(word);
  }
  return true;
}

void clean_class_name(std::string &field) {
  const std::size_t colon = field.find(':');
  if (colon != std::string::npos)
    field.resize(colon);
  if (field.starts_with('?'))
    field.erase(0, 1);
}

std::string base_name(const std::string &directory) {
  std::string path = directory == "." ? working_directory() : directory;
  if (path.size() < 2)
    return path;
  const std::size_t slash = path.rfind('/', path.size() - 2);
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

void collect_documents(const char *examples) {
  const Path files(examples, "files", "");
  if (!is_directory(files)) {
    report_file_error(files, FileError::directory_missing);
    abort_run();
  }
  const std::string name = base_name(examples);
  const std::uint32_t top_id = class_table.enter(name, 0);
  if (top_id != 0) {
    error("Cannot profile \"%s\" with the same data as \"%s\"", name.c_str(),
          class_table.get_name(0).c_str());
    abort_run();
  }
  collect_list(examples, top_id, ListKind::train);
  collect_list(examples, top_id, ListKind::test);
}

void collect_list(const char *examples, std::uint32_t top_id, ListKind kind) {
  if (Directory(examples).failed()) {
    report_file_error(examples, FileError::open_directory);
    abort_run();
  }
  const Path list(examples, list_name(kind), "");
  std::string text;
  const ReadResult result = read_file(list, text);
  if (result == ReadResult::cannot_open) {
    if (!is_system_failure())
      return;
    report_file_error(list, FileError::open_for_reading);
    abort_run();
  }
  if (result == ReadResult::read_error) {
    report_file_error(list, FileError::read);
    abort_run();
  }
  ListReader reader(text);
  std::string line;
  ListEntry entry;
  while (reader.next(line)) {
    if (!parse_list_line(line, entry)) {
      report_file_error(list, FileError::format);
      abort_run();
    }
    for (const std::string &path : entry.classes) {
      const std::size_t nr_classes = class_table.size();
      const std::uint32_t id = class_table.enter_path(path, top_id);
      if (class_table.size() != nr_classes) {
        check_class_names(path, list, reader.line_number());
      }
      collect_document(entry.document, id, kind);
    }
  }
}

void collect_document(const std::string &name, std::uint32_t class_id,
                      ListKind kind) {
  profile_document(name);
  if (kind == ListKind::train) {
    class_table.add_train_document(class_id, name);
    logf_if_verbose(3, "collected training document `%s'", name.c_str());
  } else {
    class_table.add_test_document(class_id, name);
    logf_if_verbose(3, "collected testing document `%s'", name.c_str());
  }
}

}  // namespace vek
