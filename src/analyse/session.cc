#include "analyse/session.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "analyse/analysis_writer.h"
#include "analyse/document.h"
#include "analyse/lexicon.h"
#include "analyse/output.h"
#include "analyse/requests.h"
#include "analyse/result_files.h"
#include "analyse/tokeniser.h"
#include "base/command_line.h"
#include "base/progress_line.h"

namespace vek::analysis {
namespace {

constexpr char end_of_answer = '\x01';

void report(const std::string &message) {
  vek::report(program_name, message);
}

// `path` in quotes, without the signs that could upset a terminal.
std::string shown(std::string path) {
  for (char &c : path) {
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7F')
      c = '?';
  }
  return "'" + path + "'";
}

// The way of a document from its path to the text of its analysis.
class Analysis {
 public:
  Analysis(const Options &options, Lexicon &lexicon, Output &output)
      : writer_(*options.language_P, options.terms, lexicon, output),
        tokeniser_(rules(*options.language_P), writer_) {}

  // Puts the analysis into the output. False, after a report, if the document
  // cannot be read; a part of it may have been put then.
  bool analyse(const std::string &path) {
    FileSource source;
    if (const std::string problem = source.open(path); !problem.empty()) {
      report("cannot read " + shown(path) + ": " + problem);
      return false;
    }
    writer_.start();
    if (!reader_.read(source, tokeniser_)) {
      report("cannot read " + shown(path) + ": " + std::strerror(errno));
      return false;
    }
    writer_.finish();
    return true;
  }

 private:
  static TokeniserRules rules(const Language &language) {
    return {.colon_in_words = language.ending_mark == ':',
            .has_final_apostrophe = language.has_final_apostrophe};
  }

  AnalysisWriter writer_;
  Tokeniser tokeniser_;
  DocumentReader reader_;
};

class Session {
 public:
  Session(const Options &options, Lexicon &lexicon)
      : names_(options.from_directory.empty()
                   ? ResultNames(options.to_directory)
                   : ResultNames(options.to_directory, options.from_directory)),
        writes_files_(!options.to_directory.empty()),
        output_(writes_files_ ? -1 : STDOUT_FILENO),
        analysis_(options, lexicon, output_),
        progress_(program_name, options.has_progress
                                    ? ProgressLine::Shown::always
                                    : ProgressLine::Shown::never) {}

  int run() {
    RequestReader requests(STDIN_FILENO);
    std::string path;
    while (requests.next(path)) {
      if (writes_files_) {
        write_result(path);
      } else if (!answer(path)) {
        return has_failures_ ? exit_documents_failed : broken_output();
      }
    }
    if (errno != 0) {
      report(std::string("cannot read the requests: ") + std::strerror(errno));
      return exit_failure;
    }
    progress_.finish();
    return has_failures_ ? exit_documents_failed : exit_good;
  }

 private:
  enum class Outcome { done, skipped, failed };

  // False if the session is over: the answer could not be written, or the
  // document could not be read. An answer says nothing about that, and an empty
  // one would stand for the document ever after; so there is none.
  bool answer(const std::string &path) {
    if (!analysis_.analyse(path)) {
      note(Outcome::failed);
      return false;
    }
    output_.put(end_of_answer);
    output_.flush();
    note(Outcome::done);
    return output_.good();
  }

  void write_result(const std::string &path) {
    std::string file;
    const std::string problem = names_.find(path, file);
    if (!problem.empty()) {
      report("no result for " + shown(path) + ": " + problem);
      note(Outcome::failed);
      // A result is complete, as it gets its name at the end: an interrupted
      // run is continued by starting it again.
    } else if (is_result(file)) {
      note(Outcome::skipped);
    } else {
      note(make_result(path, file) ? Outcome::done : Outcome::failed);
    }
  }

  bool make_result(const std::string &path, const std::string &file) {
    ResultFile result;
    if (!result.open(file))
      return cannot_write(file, errno);
    output_.drop();
    // After drop(), which forgets the text and the failure of an earlier file.
    output_.set_descriptor(result.descriptor());
    if (!analysis_.analyse(path))
      return false;
    output_.flush();
    if (!output_.good())
      return cannot_write(file, output_.error_number());
    return result.commit() || cannot_write(file, errno);
  }

  // Returns false, for the caller to hand on.
  static bool cannot_write(const std::string &file, int error_number) {
    report("cannot write " + shown(file) + ": " + std::strerror(error_number));
    return false;
  }

  void note(Outcome outcome) {
    if (outcome == Outcome::failed)
      has_failures_ = true;
    progress_.count(outcome == Outcome::skipped);
  }

  // With EPIPE the reader has closed its end, as it may at any time. Anything
  // else, such as a full disk, is a failure.
  ExitStatus broken_output() const {
    const int error_number = output_.error_number();
    if (error_number == EPIPE)
      return exit_good;
    report(std::string("cannot write the answer: ") +
           std::strerror(error_number));
    return exit_failure;
  }

  const ResultNames names_;
  const bool writes_files_;
  DescriptorOutput output_;
  Analysis analysis_;
  ProgressLine progress_;
  bool has_failures_ = false;
};

// Empty, or what is wrong.
std::string add_stop_file(const std::string &name, Lexicon &lexicon) {
  FileSource source;
  std::string problem = source.open(name);
  if (!problem.empty())
    return problem;
  // One megabyte is more than any list of words; a file that fills it may be
  // longer, and is refused rather than cut.
  std::string text(1 << 20, '\0');
  const std::ptrdiff_t size = source.read(0, text.data(), text.size());
  if (size < 0)
    return std::strerror(errno);
  if (static_cast<std::size_t>(size) == text.size())
    return "too long";
  text.resize(static_cast<std::size_t>(size));
  lexicon.add_stop_words(text);
  return {};
}

}  // namespace

int run_session(const Options &options) {
  Lexicon lexicon(*options.language_P, options.numbers);
  if (!lexicon.has_stemmer()) {
    report(std::string("the stemming library lacks '") +
           options.language_P->name + "'");
    return exit_failure;
  }
  if (!options.stop_file.empty()) {
    const std::string problem = add_stop_file(options.stop_file, lexicon);
    if (!problem.empty()) {
      report("cannot read " + shown(options.stop_file) + ": " + problem);
      return exit_usage;
    }
  }
  return Session(options, lexicon).run();
}

}  // namespace vek::analysis
