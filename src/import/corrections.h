// Documents whose classes people have set right, for the training list of an
// examples directory.
//
// A document is known by its words. One that is in the training list gets the
// new classes there; one that is in no list becomes a training document, with
// its text in `files`. All files change together, as with an import.
#ifndef VEK_IMPORT_CORRECTIONS_H_
#define VEK_IMPORT_CORRECTIONS_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/failure.h"
#include "import/directory.h"
#include "import/document.h"
#include "import/examples.h"

namespace vek::importing {

struct CorrectedText {
  std::string source;                // where it was found, for names_file
  std::string place;                 // within that
  std::string text;                  // UTF-8
  std::vector<std::string> classes;  // as the lists have them, or new ones
  bool may_be_new = true;  // or it counts only if it is in the training list
};

class Corrections {
 public:
  // The directory must have a training list.
  bool open(const std::string &path, Failure &failure);

  enum class Taken {
    yes,
    empty,    // it has no words
    in_test,  // the test list has it, and keeps it as it is
    bad,      // no class with a name, or too many
    failed,   // its text cannot be written
  };
  Taken take(const CorrectedText &correction, Failure &failure);

  // Puts everything in its place.
  bool finish(Failure &failure);

  // After finish().
  std::size_t nr_new() const { return new_.size(); }
  std::size_t nr_changed() const { return old_.size(); }

 private:
  // Of an old document, or of one that this call has entered.
  struct Change {
    std::string fields;  // the classes, as a list has them
    std::string name;
    CorrectedText source;  // without the text
  };

  bool enter(const CorrectedText &correction, Document document,
             const std::string &fields, Failure &failure);
  std::string fields_of(const std::vector<std::string> &classes,
                        Document &document);
  bool keep_real_changes(Failure &failure);
  bool write_new_names(Failure &failure) const;

  ExamplesDirectory directory_;
  Examples examples_;
  std::size_t nr_old_ = 0;
  // Places in examples_.documents, by the words.
  std::unordered_multimap<std::uint64_t, std::uint32_t> by_text_;
  std::map<std::uint32_t, Change> old_;  // by these places
  std::map<std::uint32_t, Change> new_;
};

}  // namespace vek::importing

#endif  // VEK_IMPORT_CORRECTIONS_H_
