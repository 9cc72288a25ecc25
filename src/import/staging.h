// The new files of an examples directory, written under temporary names and put
// in place together.
#ifndef VEK_IMPORT_STAGING_H_
#define VEK_IMPORT_STAGING_H_

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "base/failure.h"
#include "base/output_file.h"
#include "import/directory.h"
#include "import/examples.h"
#include "import/likeness.h"

namespace vek::importing {

// Lines that a run collects until it knows where they belong: of new documents,
// name, classes, source, place and key; of rejects, those of rejects_file.
inline constexpr char new_names[] = "new-names";
inline constexpr char new_rejects[] = "new-rejects";

// Each function stages one file, or returns false and says why.
class Staging {
 public:
  // Both must outlive it.
  Staging(const ExamplesDirectory &directory, const Examples &examples)
      : directory_(directory), examples_(examples) {}

  // Old documents that documents() is to give other classes, by name; as a list
  // has them.
  void change_classes(std::map<std::string, std::string, std::less<>> changes) {
    changes_ = std::move(changes);
  }

  // Each function stages one file, or returns false and says why.

  // The lists and the table of names: the old lines, and new ones for the
  // documents from `nr_old` on. Those without a side go to `withdraw`, with
  // their line of new_names.
  bool documents(std::size_t nr_old,
                 const std::function<void(const std::string &line)> &withdraw,
                 Failure &failure);
  bool classes(Failure &failure);
  bool settings(Failure &failure);
  bool numbers(Failure &failure);
  // Needs the table of names.
  bool near(const std::vector<NearPair> &pairs, Failure &failure);
  bool resource(Failure &failure);
  bool rejects(Failure &failure);

  // Puts all in place.
  bool commit(Failure &failure) const {
    return directory_.commit(files_, failure);
  }

 private:
  bool begin(const char *file, OutputFile &output, Failure &failure) const;
  bool end(const char *file, OutputFile &output, Failure &failure);
  bool append_old(const char *file, OutputFile &output, Failure &failure) const;
  bool append_changed(const char *file, char separator, std::size_t field,
                      OutputFile &output, Failure &failure) const;

  const ExamplesDirectory &directory_;
  const Examples &examples_;
  std::vector<std::string> files_;
  std::map<std::string, std::string, std::less<>> changes_;
  bool has_new_names_ = false;
};

}  // namespace vek::importing

#endif  // VEK_IMPORT_STAGING_H_
