#include "intake/collection.h"

#include <cerrno>

#include "base/failure.h"
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

// A list that is not there, or may not be read, counts as empty; a failure that
// may be gone the next time must not make classes disappear.
bool read_if_possible(const std::string &list, std::string &text) {
  std::string reason;
  const ReadResult result = read_list(list, text, reason);
  if (result == ReadResult::ok)
    return true;
  if (result == ReadResult::cannot_open && !is_system_failure()) {
    if (errno != ENOENT) {
      warning("file %s: %s, the list counts as empty", list.c_str(),
              reason.c_str());
    }
    return false;
  }
  report_file_error(list,
                    result == ReadResult::cannot_open
                        ? FileError::open_for_reading
                        : FileError::read,
                    reason);
  abort_run();
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
    abort_run(no_cause);
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
    std::string reason;
    read_list(Path(examples, list_name(kind), ""), text, reason);
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
  if (!read_if_possible(list, text))
    return;
  const std::string oddity = list_oddity(text);
  if (!oddity.empty())
    warning("file %s: %s", list.c_str(), oddity.c_str());
  ListReader reader(text);
  std::string line;
  ListEntry entry;
  while (reader.next(line)) {
    if (!parse_list_line(line, entry)) {
      const LineFault fault{reader.line_number(),
                            printable(list_line_fault(line))};
      report_file_error(list, FileError::format, fault.text());
      abort_run(no_cause);
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
