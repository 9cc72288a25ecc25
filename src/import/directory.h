// The files of an examples directory, as an import reads and writes them.
//
// A run first writes texts, each of which is complete or the begin of what it
// will be, and which no list names yet. All other files are written beside the
// old ones, under temporary names. When all is on the disk, one file gets its
// name that lists them: from then on they count, and take the places of the old
// ones. A run that finds this file completes what was begun; without it, it
// removes what is temporary. So whenever a run is killed, the lists are those
// of before or those of after it.
#ifndef VEK_IMPORT_DIRECTORY_H_
#define VEK_IMPORT_DIRECTORY_H_

#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"

namespace vek::importing {

inline constexpr char names_file[] = "names.tsv";
inline constexpr char classes_file[] = "classes.tsv";
inline constexpr char rejects_file[] = "rejects.tsv";
inline constexpr char near_file[] = "near.tsv";
inline constexpr char settings_file[] = "import.json";
inline constexpr char numbers_file[] = "import.dat";
inline constexpr char resource_file[] = "vek.rc";

class ExamplesDirectory {
 public:
  ExamplesDirectory() = default;
  ~ExamplesDirectory();
  ExamplesDirectory(const ExamplesDirectory &) = delete;
  ExamplesDirectory &operator=(const ExamplesDirectory &) = delete;

  // Makes the directory if it is missing, locks it against other imports until
  // the object goes, and puts in order what a killed run has left.
  bool open(const std::string &path, Failure &failure);

  const std::string &path() const { return path_; }
  std::string path_of(std::string_view file) const;
  // The temporary name of one of the files above, or of another.
  std::string staged_path_of(std::string_view file) const;
  bool has(std::string_view file) const;

  enum class Written { yes, taken, failed };
  // Writes a document's text. `taken`: a file of that name has another text.
  Written write_text(const std::string &name, std::string_view text,
                     Failure &failure) const;
  // A document that came to be in no list.
  void remove_text(const std::string &name) const;

  // Puts the staged files in the places of those of their names.
  bool commit(const std::vector<std::string> &files, Failure &failure) const;

 private:
  bool complete(Failure &failure) const;
  bool fail(const std::string &file, Failure &failure) const;

  std::string path_;
  int descriptor_ = -1;
};

// The fields of a line with tabs between them.
std::vector<std::string_view> fields_of(std::string_view line);

}  // namespace vek::importing

#endif  // VEK_IMPORT_DIRECTORY_H_
