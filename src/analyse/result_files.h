// The answers as files: where the one for a path belongs, and how it gets there
// as a whole or not at all.
#ifndef VEK_ANALYSE_RESULT_FILES_H_
#define VEK_ANALYSE_RESULT_FILES_H_

#include <string>
#include <string_view>

namespace vek::analysis {

class ResultNames {
 public:
  // Files lie in `to`, and are named by the last component of a document's
  // path.
  explicit ResultNames(std::string_view to);

  // They are named by all of the path behind the directory `from`. The paths
  // are compared as text, but for "./" at their begin.
  ResultNames(std::string_view to, std::string_view from);

  // Sets `file` to the path of the result for the document `path`: in the
  // directory, with ".txt" at its end unless the name is longer and ends so
  // anyway. Returns what is wrong with `path`, or an empty string.
  std::string find(std::string_view path, std::string &file) const;

 private:
  std::string name_behind_from(std::string_view path,
                               std::string_view &name) const;

  std::string to_;
  std::string from_;
  bool has_from_ = false;
};

// `file` is there, as a regular file.
bool is_result(const std::string &file);

// A file that gets its name when it is complete. Until then it has a name of
// its own in the same directory, which begins with temporary_prefix, and goes
// away with the object.
class ResultFile {
 public:
  static constexpr std::string_view temporary_prefix = ".vek-analyse-";

  ResultFile() = default;
  ~ResultFile();
  ResultFile(const ResultFile &) = delete;
  ResultFile &operator=(const ResultFile &) = delete;

  // Opens it for writing, and makes the directories that it lacks. False if
  // that fails; errno tells why, as it does for commit().
  bool open(const std::string &file);

  int descriptor() const { return descriptor_; }

  // Gives the file its name. A file that has it already is replaced.
  bool commit();

 private:
  bool open_temporary();

  std::string file_;
  std::string temporary_;
  int descriptor_ = -1;
};

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_RESULT_FILES_H_
