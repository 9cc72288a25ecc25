#include "intake/collection.h"

#include "base/helpers.h"
#include "log/log.h"

namespace vek {
namespace {

// A class that cannot be written and read back deserves a warning while the
// user can still see where it comes from. Only the first component at fault is
// named.
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

void collect_documents(const std::string &examples, ClassTable &classes,
                       const ProfileDocument &profile_document) {
  const Path files(examples, "files", "");
  if (!is_directory(files)) {
    report_file_error(files, FileError::directory_missing);
    abort_run();
  }
  std::string name;
  if (!base_name(examples, name)) {
    report_file_error(".", FileError::open_directory);
    abort_run();
  }
  // In an empty table this makes the top class; in one that was read it finds
  // the class again, or makes a new one if the name is another.
  const std::uint32_t top_id = classes.enter(name, 0);
  if (top_id != 0) {
    error("Cannot profile \"%s\" with the same data as \"%s\"", name.c_str(),
          classes.get_name(0).c_str());
    abort_run();
  }
  // Training documents first, so that classes get their ids in the order in
  // which the training list names them.
  for (const ListKind kind : {ListKind::train, ListKind::test})
    collect_list(examples, top_id, kind, classes, profile_document);
}

std::set<std::string> listed_documents(const std::string &examples) {
  const KeepErrno keep;
  std::set<std::string> names;
  for (const ListKind kind : {ListKind::train, ListKind::test}) {
    std::string text;
    read_file(Path(examples, list_name(kind), ""), text);
    ListReader reader(text);
    std::string line;
    ListEntry entry;
    while (reader.next(line) && parse_list_line(line, entry))
      names.insert(entry.document);
  }
  return names;
}

void collect_list(const std::string &examples, std::uint32_t top_id,
                  ListKind kind, ClassTable &classes,
                  const ProfileDocument &profile_document) {
  if (Directory(examples).failed()) {
    report_file_error(examples, FileError::open_directory);
    abort_run();
  }
  const Path list(examples, list_name(kind), "");
  std::string text;
  const ReadResult result = read_file(list, text);
  if (result == ReadResult::cannot_open) {
    // A list that is not there, or may not be read, counts as empty; a failure
    // that may be gone the next time must not make classes disappear.
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
      const std::size_t nr_classes = classes.size();
      const std::uint32_t id = classes.enter_path(path, top_id);
      // A warning where a class is new, and not for each of its documents.
      if (classes.size() != nr_classes)
        check_class_names(path, list, reader.line_number());
      profile_document(entry.document);
      if (kind == ListKind::train) {
        classes.add_train_document(id, entry.document);
      } else {
        classes.add_test_document(id, entry.document);
      }
      logf_if_verbose(3, "collected %sing document `%s'",
                      kind == ListKind::train ? "train" : "test",
                      entry.document.c_str());
    }
  }
}

}  // namespace vek
