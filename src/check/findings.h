// What a check has found: places in files, each with what is wrong there.
#ifndef VEK_CHECK_FINDINGS_H_
#define VEK_CHECK_FINDINGS_H_

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace vek::checking {

// A warning: a run goes on, with poorer results. A stop: a run would end there.
enum class Severity { warning, stop };

class Findings {
 public:
  // Reserves the file's place in the order of printing, unless it has one.
  void name_file(const std::string &file) { number_of(file); }

  // `line` counts from 1; 0 is the file as a whole.
  void add(const std::string &file, std::size_t line, Severity severity,
           const std::string &text);

  // A line for each, "file:line: warning: text" or "file:line: stop: text":
  // the files in the order in which they were named first, the lines in
  // ascending order, those of one line in the order of adding.
  void print(std::ostream &os) const;

  std::size_t count(Severity severity) const;

  // 0 without findings, 1 with warnings only, 2 if the run would stop.
  int exit_status() const;

 private:
  struct Finding {
    std::size_t file;  // position in `files_`
    std::size_t line;
    Severity severity;
    std::string text;
  };

  std::size_t number_of(const std::string &file);

  std::vector<std::string> files_;
  std::vector<Finding> findings_;
};

// A name as messages show it: a backtick in front, an apostrophe behind.
std::string quoted(std::string_view name);

}  // namespace vek::checking

#endif  // VEK_CHECK_FINDINGS_H_
