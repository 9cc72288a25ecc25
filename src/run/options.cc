#include "run/options.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "learning/classifiers.h"
#include "log/log.h"

namespace vek {
namespace {

constexpr char usage_text[] =
    "Usage: vek [ -h ] [ -v ] [ -p ] [ -V ] [ -a <W | R | S> ]\n"
    "           [ -d <data-directory> ] [ -i <input-directory> ]\n"
    "           [ -r <rc-file> ] [ <examples-directory> ]\n";

constexpr char help_text[] =
    "Options are:\n"
    "    -h    --help           show help\n"
    "    -d    --data           specify data directory\n"
    "    -i    --input          specify input directory\n"
    "    -p    --poll           poll input directory for documents\n"
    "    -r    --resource       specify resource file\n"
    "    -v    --verbose        be verbose\n"
    "    -V    --Version        show version\n"
    "    -a    --algorithm      specify training algorithm\n"
    "    -xl   --xlearning      exclude learning (training) phase\n"
    "    -xt   --xtesting       exclude testing phase\n"
    "\n"
    "Arguments are:\n"
    "    <data-directory>       directory for storing profile data\n"
    "    <examples-directory>   directory with example documents\n"
    "    <input-directory>      directory to be polled for input documents\n"
    "    <W | R | S>            select which to apply: Winnow, Rocchio or SBC\n"
    "    <rc-file>              file with resource definitions\n"
    "\n";

constexpr char hint_text[] = "use `vek -h' for help\n";

constexpr char banner_text[] = "vek, a text categoriser";

void show(const char *text) {
  std::fputs(text, stderr);
}

[[noreturn]] void exit_with_hint() {
  show(hint_text);
  std::exit(1);
}

// Walks along the arguments behind the program name.
class Arguments {
 public:
  Arguments(int count, char **vector) : count_(count), vector_(vector) {}

  bool at_end() const { return next_ >= count_; }
  const char *take() { return vector_[next_++]; }

  // The argument of the option `name`. Without one, or if it looks like an
  // option, the run ends.
  const char *take_value(const char *name) {
    if (at_end() || vector_[next_][0] == '-') {
      error("option `%s' needs an argument", name);
      exit_with_hint();
    }
    return take();
  }

 private:
  int count_;
  char **vector_;
  int next_ = 1;
};

}  // namespace

void Options::parse_options(int argument_count, char **argument_vector) {
  if (argument_count <= 1) {
    show(usage_text);
    std::exit(0);
  }
  Arguments arguments(argument_count, argument_vector);
  while (!arguments.at_end()) {
    const char *text = arguments.take();
    const std::string_view argument(text);
    if (argument == "--verbose") {
      ++verbose_;
    } else if (argument.starts_with("-v")) {
      parse_verbose(argument);
    } else if (argument == "-a" || argument == "--algorithm") {
      set_algorithm(arguments.take_value("-a")[0]);
    } else if (argument == "-p" || argument == "--poll") {
      poll_ = true;
    } else if (argument == "-V" || argument == "--Version" ||
               argument == "--version") {
      std::fprintf(stderr, "vek %.1f, a text categoriser\n", version);
      std::exit(0);
    } else if (argument == "-h" || argument == "--help") {
      show(usage_text);
      show(help_text);
      std::exit(0);
    } else if (argument == "-xl" || argument == "--xlearning") {
      xlearning_ = true;
    } else if (argument == "-xt" || argument == "--xtesting") {
      xtesting_ = true;
    } else if (argument == "-d" || argument == "--data") {
      data_directory_ = arguments.take_value("-d");
    } else if (argument == "-i" || argument == "--input") {
      input_directory_ = arguments.take_value("-i");
    } else if (argument == "-r" || argument == "--resource") {
      rc_file_ = arguments.take_value("-r");
    } else if (argument == "--wait") {
      set_patience(arguments.take_value("--wait"));
    } else if (argument.starts_with('-')) {
      error("unknown option `%s'", text);
      exit_with_hint();
    } else if (examples_directory_.empty()) {
      examples_directory_ = argument;
    } else {
      error("duplicate examples directory specified");
      std::exit(1);
    }
  }
  if (examples_directory_.empty())
    poll_ = true;
  set_verbosity(verbose_);
  log_if_verbose(1, banner_text);
}

void Options::parse_verbose(std::string_view argument) {
  const std::size_t end = argument.find_first_not_of('v', 1);
  const std::size_t nr_letters =
      (end == std::string_view::npos ? argument.size() : end) - 1;
  verbose_ += static_cast<std::uint32_t>(nr_letters);
  if (end != std::string_view::npos) {
    error("invalid option `%s'", std::string(argument).c_str());
  }
}

void Options::set_algorithm(char letter) {
  for (const Classifier &classifier : classifiers()) {
    if (classifier.option_letter == letter) {
      algorithm_ = classifier.algorithm;
      return;
    }
  }
  error("valid arguments to -a are W, R or S");
  exit_with_hint();
}

void Options::set_patience(std::string_view seconds) {
  std::uint32_t number = 0;
  const char *const end_P = seconds.data() + seconds.size();
  const auto [rest_P, fault] = std::from_chars(seconds.data(), end_P, number);
  if (fault != std::errc() || rest_P != end_P) {
    error("valid arguments to --wait are numbers of seconds");
    exit_with_hint();
  }
  patience_ = std::chrono::seconds(number);
}

void Options::report_polling(unsigned level) const {
  if (poll_)
    log_if_verbose(level, "polling mode activated");
}

}  // namespace vek
