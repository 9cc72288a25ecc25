#include "tune/analysis.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "base/helpers.h"
#include "tune/stopping.h"

namespace vek::tuning {
namespace {

namespace fs = std::filesystem;

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::error_code error;
    path_ = (fs::temp_directory_path(error) / "vek-tune-XXXXXX").string();
    if (mkdtemp(path_.data()) == nullptr)
      path_.clear();
  }
  ~TemporaryDirectory() {
    std::error_code error;
    if (!path_.empty())
      fs::remove_all(path_, error);
  }
  TemporaryDirectory(const TemporaryDirectory &) = delete;
  TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

  // Empty, with errno set, if it could not be made.
  const std::string &path() const { return path_; }

 private:
  std::string path_;
};

// For a shell.
std::string shell_quoted(const std::string &text) {
  std::string out = "'";
  for (const char character : text)
    out += character == '\'' ? std::string("'\\''") : std::string(1, character);
  return out + '\'';
}

// The analyser's command line is cut at blanks, as vek does it, and without a
// slash it is a name in the working directory.
std::string analyser_script(const std::string &command,
                            const std::string &directory) {
  std::string script = "cd " + shell_quoted(directory) + " && exec";
  std::size_t start = 0;
  while (start != std::string::npos) {
    const std::size_t end = command.find(' ', start);
    std::string word = command.substr(start, end - start);
    if (start == 0 && word.find('/') == std::string::npos)
      word.insert(0, "./");
    script += ' ' + shell_quoted(word);
    start = end == std::string::npos ? end : end + 1;
  }
  return script + '\n';
}

bool write_file(const std::string &path, const std::string &text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  return bool(file);
}

// The collection is one class that holds all documents, so there is next to
// nothing to learn, and nothing of it is kept.
bool write_collection(const std::string &directory,
                      const std::vector<std::string> &names,
                      const Params &params, const std::string &here) {
  std::string list;
  for (const std::string &name : names)
    list += name + ".txt x\n";
  const std::string analyser = params.analyser.empty() ? "" : "/bin/sh analyse";
  const std::string resources =
      "[General]\ntraining rocchio\nanalyser \"" + analyser +
      "\"\ndatadirectory \"" +
      (fs::path(here) / params.data_directory).string() +
      "\"\nfiledirectory \"" +
      (fs::path(here) / params.file_directory).string() +
      "\"\nanalysertimeout " + std::to_string(params.analyser_timeout) + '\n';
  std::error_code error;
  return fs::create_directory(directory + "/files", error) &&
         write_file(directory + "/analyse",
                    analyser_script(params.analyser, here)) &&
         write_file(directory + "/train", list) &&
         write_file(directory + "/vek.rc", resources);
}

// The vek that stands beside this program, if one does.
std::string vek_path() {
  std::error_code error;
  const fs::path own = fs::read_symlink("/proc/self/exe", error);
  const std::string beside = (own.parent_path() / "vek").string();
  return !error && access(beside.c_str(), X_OK) == 0 ? beside : "vek";
}

// Returns the status of waitpid(). A stop signal is handed on, and vek then
// ends in good order.
int run_vek(const std::string &directory) {
  const std::string path = vek_path();
  const pid_t pid = fork();
  if (pid == 0) {
    forget_stop_signals();
    // What vek says, it says on standard error; with -v, how far it is.
    const char *verbose = isatty(STDERR_FILENO) == 1 ? "-v" : nullptr;
    if (chdir(directory.c_str()) == 0)
      execlp(path.c_str(), "vek", "-r", "vek.rc", ".", verbose, nullptr);
    _exit(127);
  }
  int status = -1;
  bool is_told = false;
  while (pid > 0 && waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    if (stop_signal() != 0 && !is_told)
      kill(pid, SIGTERM);
    is_told = stop_signal() != 0;
  }
  return status;
}

}  // namespace

bool analyse_documents(const std::vector<std::string> &names,
                       const Params &params, Failure &failure) {
  const TemporaryDirectory temporary;
  std::error_code error;
  const std::string here = fs::current_path(error).string();
  if (here.find('"') != std::string::npos) {
    failure = {here, "", "a name with a quote cannot stand in a resource file"};
    return false;
  }
  if (temporary.path().empty() || error ||
      !write_collection(temporary.path(), names, params, here)) {
    failure = {"temporary directory", "",
               error ? error.message() : std::strerror(errno)};
    return false;
  }
  const int status = run_vek(temporary.path());
  if (status == 0)
    return true;
  failure = {"vek", "",
             WIFEXITED(status) && WEXITSTATUS(status) == 127
                 ? "it is neither beside this program nor on the PATH"
                 : "the documents could not be analysed"};
  return false;
}

}  // namespace vek::tuning
