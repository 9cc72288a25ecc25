// The lists of a collection: read as vek reads them, with a finding for each
// line that its writer would not have meant that way.
#ifndef VEK_CHECK_LIST_CHECK_H_
#define VEK_CHECK_LIST_CHECK_H_

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "check/findings.h"
#include "classes/classtab.h"
#include "intake/lists.h"

namespace vek::checking {

// A line of a list; line 0 is none.
struct Place {
  ListKind kind = ListKind::train;
  std::size_t line = 0;
};

// What the lists come to.
struct Collection {
  // A document's first line in each list, 0 if it is not there.
  struct Document {
    std::size_t train_line = 0;
    std::size_t test_line = 0;
  };
  struct ClassPlaces {
    Place first;
    // The first line that files a document in the class itself.
    Place own_document;
  };

  ClassTable classes;
  // By class id.
  std::vector<ClassPlaces> class_places;
  std::map<std::string, Document> documents;
};

// Whether the run would write class files. With a class name that cannot be
// stored it then stops; otherwise it only warns.
enum class ClassFiles { not_written, written };

class ListCheck {
 public:
  // Enters the top class. The arguments must outlive the check.
  ListCheck(const std::string &examples, ClassFiles class_files,
            Collection &collection, Findings &findings);

  // Reads the list of that kind; to be called for the training list first.
  void read(ListKind kind);

  // The list's path.
  std::string path(ListKind kind) const;

 private:
  void check_end(ListKind kind, const std::string &text,
                 const ListReader &reader);
  void check_line(Place place, const std::string &line);
  void check_bytes(Place place, const std::string &line);
  void file_document(Place place, const std::string &name,
                     const std::string &class_path);
  void note_document(Place place, const std::string &name);
  void check_class_path(Place place, const std::string &class_path);
  void check_new_class(Place place, std::uint32_t id);
  void warn(Place place, const std::string &text);

  const std::string &examples_;
  const ClassFiles class_files_;
  Collection &collection_;
  Findings &findings_;
};

}  // namespace vek::checking

#endif  // VEK_CHECK_LIST_CHECK_H_
