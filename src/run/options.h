// The command line: what the user asked for in this run.
#ifndef VEK_RUN_OPTIONS_H_
#define VEK_RUN_OPTIONS_H_

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "params/params.h"

namespace vek {

class Options {
 public:
  // Fills the record from the arguments, strictly from left to right. Help,
  // version, bad usage and a bare program name end the process here, by
  // exit() and without the words of abort_run().
  void parse_options(int argument_count, char **argument_vector);

  std::uint32_t verbose() const { return verbose_; }
  // Winnow if none was given.
  Algorithm algorithm() const { return algorithm_; }
  bool poll() const { return poll_; }
  bool xlearning() const { return xlearning_; }
  bool xtesting() const { return xtesting_; }
  const std::string &data_directory() const { return data_directory_; }
  const std::string &input_directory() const { return input_directory_; }
  const std::string &examples_directory() const { return examples_directory_; }
  const std::string &rc_file() const { return rc_file_; }
  // How long to wait for a data directory that is in use.
  std::chrono::seconds patience() const { return patience_; }

  // Logs that polling is on, if it is.
  void report_polling(unsigned level) const;

 private:
  void parse_verbose(std::string_view argument);
  void set_algorithm(char letter);
  void set_patience(std::string_view seconds);

  std::uint32_t verbose_ = 0;
  Algorithm algorithm_ = Algorithm::winnow;
  bool poll_ = false;
  bool xlearning_ = false;
  bool xtesting_ = false;
  std::string data_directory_;
  std::string input_directory_;
  std::string examples_directory_;
  std::string rc_file_;
  std::chrono::seconds patience_{0};
};

}  // namespace vek

#endif  // VEK_RUN_OPTIONS_H_
