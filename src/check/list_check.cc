#include "check/list_check.h"

#include "base/helpers.h"
#include "base/textio.h"

namespace vek::checking {
ListCheck::ListCheck(const std::string &examples, ClassFiles class_files,
                     Collection &collection, Findings &findings)
    : examples_(examples),
      class_files_(class_files),
      collection_(collection),
      findings_(findings) {
  std::string name;
  base_name(examples, name);
  collection_.classes.enter(name, 0);
  // The top class is entered here, so its name comes from the directory and
  // from no line.
  check_new_class({}, 0);
}

std::string ListCheck::path(ListKind kind) const {
  return Path(examples_, list_name(kind), "");
}

void ListCheck::warn(Place place, const std::string &text) {
  findings_.add(path(place.kind), place.line, Severity::warning, text);
}

void ListCheck::read(ListKind kind) {
  // Also a list without findings takes its place, so that later ones do not
  // change the order of files.
  findings_.name_file(path(kind));
  std::string text;
  std::string reason;
  switch (read_list(path(kind), text, reason)) {
    case ReadResult::ok:
      break;
    case ReadResult::cannot_open:
      warn({kind, 0},
           "the list cannot be opened (" + reason + ") and counts as empty");
      return;
    case ReadResult::read_error:
      findings_.add(path(kind), 0, Severity::stop,
                    "the list cannot be read: " + reason);
      return;
  }
  const std::string oddity = list_oddity(text);
  if (!oddity.empty())
    warn({kind, 0}, oddity);
  ListReader reader(text);
  std::string line;
  while (reader.next(line))
    check_line({kind, reader.line_number()}, line);
  check_end(kind, text, reader);
}

void ListCheck::check_end(ListKind kind, const std::string &text,
                          const ListReader &reader) {
  const Place place{kind, reader.line_number()};
  if (reader.too_long()) {
    // The reader stopped at the long line itself, which is lost too.
    const std::size_t nr_lost = count_lines(text) - reader.line_number() + 1;
    warn(place, "a line of over " + std::to_string(longest_list_line) +
                    " bytes ends the list; lines not read: " +
                    std::to_string(nr_lost));
  } else if (!text.empty() && text.back() != '\n') {
    warn(place,
         "the last line has no end: what is appended becomes part of "
         "it");
  }
}

void ListCheck::check_line(Place place, const std::string &line) {
  // Before the line is taken apart, since these bytes may be why that fails.
  check_bytes(place, line);
  ListEntry entry;
  if (!parse_list_line(line, entry)) {
    findings_.add(path(place.kind), place.line, Severity::stop,
                  list_line_fault(line));
    return;
  }
  if (entry.document.empty()) {
    warn(place,
         "the line begins with a blank, so that the document's name is empty");
  }
  note_document(place, entry.document);
  for (const std::string &class_path : entry.classes)
    file_document(place, entry.document, class_path);
}

// Bytes that separate words elsewhere, but not in a list.
void ListCheck::check_bytes(Place place, const std::string &line) {
  if (line.find('\t') != std::string::npos)
    warn(place, "a tab does not separate, it is part of a name");
  // Those at line ends are told once for the list.
  if (line.find('\r') < line.size() - 1)
    warn(place, "a carriage return is part of a name");
}

void ListCheck::note_document(Place place, const std::string &name) {
  Collection::Document &document = collection_.documents[name];
  std::size_t &line =
      place.kind == ListKind::train ? document.train_line : document.test_line;
  // Only the first line of a document is kept; to stand in several lines of one
  // list is a way of naming several classes.
  if (line != 0)
    return;
  line = place.line;
  if (place.kind == ListKind::test && document.train_line != 0) {
    warn(place, "document " + quoted(name) + " stands in the training list " +
                    "too, in line " + std::to_string(document.train_line));
  }
}

void ListCheck::file_document(Place place, const std::string &name,
                              const std::string &class_path) {
  check_class_path(place, class_path);
  ClassTable &classes = collection_.classes;
  const std::size_t nr_classes = classes.size();
  const std::uint32_t id = classes.enter_path(class_path, 0);
  // A path can create several classes, an inner one for each component.
  for (std::size_t i = nr_classes; i < classes.size(); ++i)
    check_new_class(place, static_cast<std::uint32_t>(i));
  Place &own_document = collection_.class_places[id].own_document;
  if (own_document.line == 0)
    own_document = place;
  const ClassData &data = classes.get_data(id);
  const bool is_train = place.kind == ListKind::train;
  // Entered once only, unlike in vek, which enters it twice: the check goes on
  // with what was meant.
  if ((is_train ? data.train_docs : data.test_docs).contains(name)) {
    warn(place, "document " + quoted(name) + " is in class " +
                    quoted(classes.full_name(id)) + " already");
    return;
  }
  if (is_train) {
    classes.add_train_document(id, name);
  } else {
    classes.add_test_document(id, name);
  }
}

void ListCheck::check_class_path(Place place, const std::string &class_path) {
  if (class_path.empty()) {
    warn(place, "there is an empty class name");
  } else if (class_path.front() == '/') {
    warn(place, "the first name in " + quoted(class_path) + " is empty");
  } else if (class_path.back() == '/') {
    warn(place, "the slash at the end of " + quoted(class_path) +
                    " is part of the class name");
  }
}

void ListCheck::check_new_class(Place place, std::uint32_t id) {
  collection_.class_places.push_back({place, {}});
  const std::string &name = collection_.classes.get_name(id);
  if (ClassTable::is_storable_name(name))
    return;
  const bool stops = class_files_ == ClassFiles::written;
  findings_.add(id == 0 ? examples_ : path(place.kind), place.line,
                stops ? Severity::stop : Severity::warning,
                "class name " + quoted(name) +
                    " cannot be stored, so no class files can be written");
}

}  // namespace vek::checking
