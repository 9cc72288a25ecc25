// Runs a command that writes vek.log in the working directory, and prints how
// long each of the run's phases took, in all and for each document, with the
// highest memory of the run.
//
//   phase_times NR-DOCUMENTS COMMAND [ARGUMENT...]
//
// Phases are told apart by the lines that appear in the log, which is looked at
// every half millisecond.
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

// The beginning of the line that ends a phase.
struct Phase {
  const char *name;
  std::string_view last_line;
};
constexpr Phase phases[] = {{"start, reading what is stored", "collecting"},
                            {"collecting", "analyzing the documents"},
                            {"merging classes", "creating data/atoms.dat"},
                            {"writing atoms", "creating data/terms.dat"},
                            {"writing terms, class update", "training"},
                            {"training, thresholds", "testing"},
                            {"test", "renaming output"},
                            {"end", ""}};

void print(const char *name, double seconds, double nr_documents) {
  std::printf("%-30s %9.3f s %9.2f us a document\n", name, seconds,
              seconds / nr_documents * 1e6);
}

// Prints the phases that the new lines of the log end.
class Watch {
 public:
  explicit Watch(double nr_documents) : nr_documents_(nr_documents) {}

  void look() {
    if (!log_.is_open())
      log_.open("vek.log");
    log_.clear();
    for (std::string part; std::getline(log_, part); line_.clear()) {
      line_ += part;
      // The line is not complete yet.
      if (log_.eof())
        return;
      take_line();
    }
  }

  void finish() {
    print(phases[std::size(phases) - 1].name, seconds_since(last_),
          nr_documents_);
    print("all", seconds_since(start_), nr_documents_);
  }

 private:
  static double seconds_since(Clock::time_point time) {
    return std::chrono::duration<double>(Clock::now() - time).count();
  }

  // A run without something to write or to learn leaves out some lines.
  void take_line() {
    for (std::size_t i = next_; i + 1 < std::size(phases); ++i) {
      if (!line_.starts_with(phases[i].last_line))
        continue;
      print(phases[i].name, seconds_since(last_), nr_documents_);
      last_ = Clock::now();
      next_ = i + 1;
      return;
    }
  }

  double nr_documents_;
  std::ifstream log_;
  std::string line_;
  std::size_t next_ = 0;
  Clock::time_point start_ = Clock::now();
  Clock::time_point last_ = start_;
};

}  // namespace

int main(int argument_count, char **argument_vector) {
  if (argument_count < 3) {
    std::cerr << "usage: phase_times NR-DOCUMENTS COMMAND [ARGUMENT...]\n";
    return 2;
  }
  std::remove("vek.log");
  Watch watch(std::atof(argument_vector[1]));
  pid_t child = 0;
  if (posix_spawn(&child, argument_vector[2], nullptr, nullptr,
                  argument_vector + 2, environ) != 0) {
    std::cerr << "cannot start " << argument_vector[2] << '\n';
    return 1;
  }
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    watch.look();
    std::this_thread::sleep_for(std::chrono::microseconds(500));
  }
  watch.look();
  watch.finish();
  struct rusage usage = {};
  getrusage(RUSAGE_CHILDREN, &usage);
  std::printf("highest memory %.0f MB, user %.2f s, system %.2f s\n",
              static_cast<double>(usage.ru_maxrss) / 1024,
              static_cast<double>(usage.ru_utime.tv_sec) +
                  static_cast<double>(usage.ru_utime.tv_usec) * 1e-6,
              static_cast<double>(usage.ru_stime.tv_sec) +
                  static_cast<double>(usage.ru_stime.tv_usec) * 1e-6);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
