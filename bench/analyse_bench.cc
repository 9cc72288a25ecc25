// How fast the analyser is: documents a second in strict turn through the pipe,
// megabytes a second of one large file, and the memory that this takes.
//
//   analyse_bench VEK-ANALYSE
//
// The text is made here, from a fixed seed, in the proportions of English: two
// words in five are function words, the others follow Zipf's law, and the
// endings are those that a stemmer has to do with.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t document_size = 500;  // bytes
constexpr std::size_t nr_documents = 2000;
constexpr std::size_t nr_requests = 40000;
constexpr std::size_t large_size = 100 * 1000 * 1000;  // bytes

class TextMaker {
 public:
  TextMaker() {
    for (std::size_t i = 0; i < nr_words; ++i)
      words_.push_back(make_word());
  }

  // At least `size` bytes, in lines and sentences.
  std::string text(std::size_t size) {
    std::string text;
    while (text.size() < size)
      add_sentence(text);
    return text;
  }

 private:
  static constexpr std::size_t nr_words = 60000;

  std::size_t below(std::size_t limit) { return random_() % limit; }

  std::string make_word() {
    static constexpr const char *syllables[] = {
        "ba",  "con", "de", "ex", "fi",   "gra",  "ho",  "in",  "ju",  "ka",
        "lo",  "men", "no", "or", "pre",  "qui",  "re",  "sta", "tri", "un",
        "ver", "wa",  "ty", "za", "port", "duct", "mar", "ket", "gov", "ern"};
    static constexpr const char *endings[] = {"",    "",   "",     "s",  "ed",
                                              "ing", "er", "tion", "al", "ly"};
    std::string word;
    for (std::size_t i = 1 + below(3); i-- > 0;) {
      word += syllables[below(std::size(syllables))];
    }
    return word + endings[below(std::size(endings))];
  }

  // A rank that is drawn about as often as 1/rank says.
  const std::string &frequent_word() {
    const double share = static_cast<double>(random_() >> 11) * 0x1p-53;
    const double rank =
        std::exp(share * std::log(static_cast<double>(nr_words)));
    return words_[std::min(nr_words, static_cast<std::size_t>(rank)) - 1];
  }

  std::string_view function_word() {
    static constexpr std::string_view function_words[] = {
        "the",  "of", "and", "to",  "in",   "a",    "for",
        "that", "on", "is",  "was", "by",   "with", "at",
        "from", "it", "its", "as",  "will", "would"};
    return function_words[below(std::size(function_words))];
  }

  void add_sentence(std::string &text) {
    const std::size_t begin = text.size();
    for (std::size_t i = 8 + below(20); i-- > 0;) {
      text += below(5) < 2 ? function_word() : frequent_word();
      if (below(20) == 0)
        text += " 1,9" + std::to_string(below(1000));
      text += below(12) == 0 ? "\n" : below(15) == 0 ? ", " : " ";
    }
    text.back() = '.';
    text += "\n";
    text[begin] = static_cast<char>(text[begin] - 'a' + 'A');
  }

  std::mt19937_64 random_{42};
  std::vector<std::string> words_;
};

// Seconds of the processor, which a busy machine leaves as they are.
double processor_seconds(const rusage &usage) {
  const auto seconds = [](const timeval &time) {
    return static_cast<double>(time.tv_sec) +
           static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

class Stopwatch {
 public:
  double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() -
                                         start_)
        .count();
  }

 private:
  std::chrono::steady_clock::time_point start_ =
      std::chrono::steady_clock::now();
};

[[noreturn]] void give_up(const char *what) {
  std::perror(what);
  std::exit(1);
}

// The analyser as a child with a pipe to it and one from it.
class Child {
 public:
  Child(const std::string &program, const char *terms) {
    int to[2], from[2];
    if (pipe2(to, O_CLOEXEC) != 0 || pipe2(from, O_CLOEXEC) != 0) {
      give_up("pipe");
    }
    id_ = fork();
    if (id_ == 0) {
      dup2(to[0], STDIN_FILENO);
      dup2(from[1], STDOUT_FILENO);
      execl(program.c_str(), program.c_str(), "-t", terms, nullptr);
      _exit(127);
    }
    close(to[0]);
    close(from[1]);
    to_ = to[1];
    from_ = from[0];
  }

  // Sends a path and reads its answer. Returns the answer's bytes.
  std::size_t ask(const std::string &path) {
    const std::string line = path + '\n';
    if (write(to_, line.data(), line.size()) !=
        static_cast<ssize_t>(line.size())) {
      give_up("write");
    }
    std::size_t size = 0;
    while (true) {
      const ssize_t count = read(from_, buffer_.data(), buffer_.size());
      if (count <= 0)
        give_up("read");
      size += static_cast<std::size_t>(count);
      if (buffer_[static_cast<std::size_t>(count) - 1] == '\x01')
        return size;
    }
  }

  // Ends the child. Returns what it used.
  rusage end() {
    close(to_);
    close(from_);
    rusage usage = {};
    int status = 0;
    if (wait4(id_, &status, 0, &usage) != id_ || status != 0)
      give_up("child");
    return usage;
  }

 private:
  pid_t id_ = 0;
  int to_ = -1;
  int from_ = -1;
  std::vector<char> buffer_ = std::vector<char>(1 << 16);
};

void measure_turns(const std::string &program, const std::string &directory,
                   TextMaker &maker) {
  std::vector<std::string> paths;
  for (std::size_t i = 0; i < nr_documents; ++i) {
    paths.push_back(directory + '/' + std::to_string(i) + ".txt");
    std::ofstream(paths.back())
        << maker.text(document_size).substr(0, document_size);
  }
  Child child(program, "both");
  child.ask(paths[0]);
  const Stopwatch watch;
  for (std::size_t i = 0; i < nr_requests; ++i)
    child.ask(paths[i % nr_documents]);
  const double seconds = watch.seconds();
  const rusage usage = child.end();
  const auto nr = static_cast<double>(nr_requests);
  std::printf(
      "%.0f documents of %zu bytes in strict turn: %.0f a second, "
      "%.0f in a second of its processor time, %ld kB\n",
      nr, document_size, nr / seconds, nr / processor_seconds(usage),
      usage.ru_maxrss);
}

void measure_large_file(const std::string &program, const std::string &path,
                        const char *terms) {
  Child child(program, terms);
  const Stopwatch watch;
  const std::size_t size = child.ask(path);
  const double seconds = watch.seconds();
  const rusage usage = child.end();
  const double read =
      static_cast<double>(std::filesystem::file_size(path)) / 1e6;
  std::printf(
      "one file of %.0f MB, %s: %.1f MB/s, %.1f MB in a second of its "
      "processor time, answer of %.0f MB, %ld kB\n",
      read, terms, read / seconds, read / processor_seconds(usage),
      static_cast<double>(size) / 1e6, usage.ru_maxrss);
}

}  // namespace

int main(int nr_arguments, char **arguments) {
  if (nr_arguments != 2) {
    std::fprintf(stderr, "usage: %s vek-analyse\n", arguments[0]);
    return 2;
  }
  std::string directory =
      std::filesystem::temp_directory_path() / "analyse-bench-XXXXXX";
  if (mkdtemp(directory.data()) == nullptr)
    give_up("mkdtemp");
  TextMaker maker;
  measure_turns(arguments[1], directory, maker);
  const std::string path = directory + "/large.txt";
  std::ofstream(path) << maker.text(large_size);
  for (const char *terms : {"words", "pairs", "both"}) {
    measure_large_file(arguments[1], path, terms);
  }
  std::filesystem::remove_all(directory);
}
