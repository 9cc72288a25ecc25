#include "check/collection_check.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <string_view>
#include <vector>

#include "base/helpers.h"
#include "base/input_file.h"
#include "check/analyser_check.h"
#include "check/data_check.h"
#include "intake/lists.h"
#include "intake/textfile.h"
#include "params/rcparser.h"

namespace vek::checking {
namespace {

constexpr char resource_suffix[] = ".rc";

// An analyser may have much to read before its first answer.
constexpr std::chrono::seconds patience(60);

ClassFiles class_files(const Params &settings) {
  return settings.save || settings.incremental ? ClassFiles::written
                                               : ClassFiles::not_written;
}

// Turns what the parser of a resource file says into findings.
class ResourceErrors : public Messages {
 public:
  ResourceErrors(const std::string &path, Findings &findings)
      : path_(path), prefix_("file " + path + ": line "), findings_(findings) {}

  void error(std::string_view text) override {
    std::size_t line = 0;
    if (text.starts_with(prefix_)) {
      text.remove_prefix(prefix_.size());
      const auto result =
          std::from_chars(text.data(), text.data() + text.size(), line);
      text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()) +
                         2);
    }
    findings_.add(path_, line, Severity::stop, std::string(text));
  }

 private:
  const std::string &path_;
  const std::string prefix_;
  Findings &findings_;
};

}  // namespace

void read_resource_file(const std::string &name, Params &settings,
                        Findings &findings) {
  const Path path("", name.empty() ? "vek" : name, resource_suffix);
  if (name.empty() && !file_exists(path))
    return;
  std::string text;
  std::string reason;
  if (vek::read_resource_file(path, text, reason) != ReadResult::ok) {
    findings.add(path, 0, Severity::stop,
                 "the resource file cannot be read: " + reason);
    return;
  }
  const std::string path_text = path;
  ResourceErrors errors(path_text, findings);
  RcParser(&settings, text, path.c_str(), errors).parse();
  if (settings.incremental) {
    findings.add(path, 0, Severity::warning,
                 "`incremental on' adds the counts of these documents to those "
                 "of earlier runs, and trains on these alone: to append to "
                 "`train' is nearly always what is wanted");
  }
}

CollectionCheck::CollectionCheck(const std::string &examples,
                                 const Params &settings, Findings &findings)
    : examples_(examples),
      settings_(settings),
      findings_(findings),
      lists_(examples, class_files(settings), collection_, findings),
      data_(settings.data_directory, keeping::Verification::Depth::quick,
            [&](const keeping::Finding &damage) {
              add_damage(settings, damage, findings);
            }) {}

void CollectionCheck::warn(Place place, const std::string &text) {
  findings_.add(lists_.path(place.kind), place.line, Severity::warning, text);
}

bool CollectionCheck::run() {
  if (!has_directories())
    return false;
  check_log(findings_);
  check_data(settings_, data_, findings_);
  lists_.read(ListKind::train);
  lists_.read(ListKind::test);
  check_documents();
  check_profiles();
  check_input_directory();
  check_classes();
  check_analyser();
  return true;
}

// Asks the analyser for the first text that a run would ask it for, or for any
// other. Only a run with new documents depends on the answer.
void CollectionCheck::check_analyser() {
  const std::string &command = settings_.analyser;
  if (command.empty())
    return;
  std::string path;
  Severity severity = Severity::warning;
  for (const auto &[name, document] : collection_.documents) {
    const bool is_new = !data_.model().documents().contains(name);
    if (!is_new && !path.empty())
      continue;
    const Path text(settings_.file_directory, name, document_suffix);
    std::string reason;
    const int fd = open_input(text, reason);
    if (fd < 0)
      continue;
    close(fd);
    path = text;
    if (is_new) {
      severity = Severity::stop;
      break;
    }
  }
  const std::string fault =
      analyser_fault(command, path,
                     settings_.analyser_timeout == 0
                         ? patience
                         : std::chrono::seconds(settings_.analyser_timeout));
  if (!fault.empty())
    findings_.add("analyser " + quoted(command), 0, severity, fault);
}

bool CollectionCheck::has_directories() {
  if (Directory(examples_).failed()) {
    findings_.add(examples_, 0, Severity::stop, "cannot open the directory");
    return false;
  }
  // vek asks for it by this name, wherever the texts lie.
  if (!is_directory(Path(examples_, "files", ""))) {
    findings_.add(examples_, 0, Severity::stop,
                  "there is no directory `files' in it");
  }
  return true;
}

// Why vek cannot have a document analysed. It needs the text only until there
// is a profile, and then does not read it again.
std::optional<CollectionCheck::TextProblem> CollectionCheck::text_problem(
    const std::string &name) const {
  if (data_.model().documents().contains(name))
    return {};
  const std::string path =
      Path(settings_.file_directory, name, document_suffix);
  const TextFile file(path);
  if (file.problem().empty())
    return {};
  if (errno == ENOENT)
    return TextProblem{true, "there is no file " + quoted(path)};
  return TextProblem{
      false, "file " + quoted(path) + " cannot be read: " + file.problem()};
}

void CollectionCheck::check_documents() {
  const std::string directory = settings_.file_directory;
  // Without the directory all its files are missing; one finding says so.
  const bool has_directory = is_directory(directory);
  std::size_t nr_missing = 0;
  for (const auto &[name, document] : collection_.documents) {
    const std::optional<TextProblem> problem = text_problem(name);
    if (!problem)
      continue;
    ++nr_missing;
    if (!has_directory)
      continue;
    const bool in_train = document.train_line != 0;
    const ListKind kind = in_train ? ListKind::train : ListKind::test;
    findings_.add(lists_.path(kind),
                  in_train ? document.train_line : document.test_line,
                  Severity::stop, problem->text);
  }
  if (nr_missing != 0 && !has_directory) {
    findings_.add(directory, 0, Severity::stop,
                  "the directory of the texts is missing, and with it " +
                      std::to_string(nr_missing) + " documents");
  }
}

// A text without a word has none, but so has one for which the analyser failed
// once, and a stored document is not analysed again.
void CollectionCheck::check_profiles() {
  const std::string &data = settings_.data_directory;
  for (const auto &[name, block] : data_.model().documents()) {
    const Path path(settings_.file_directory, name, document_suffix);
    if (block.size > empty_profile_size || file_size(path) == 0)
      continue;
    findings_.add(data, 0, Severity::warning,
                  "document " + quoted(name) + " is kept without terms: " +
                      quoted("vek-data forget " + data + " " + name) +
                      " has it analysed again");
  }
}

// The names come from one directory and the texts from another.
void CollectionCheck::check_input_directory() {
  const Path path(settings_.input_directory, "in", "");
  Directory entries(path);
  if (entries.failed())
    return;
  std::vector<std::string> findings;
  std::string entry;
  std::string name;
  while (entries.read(entry)) {
    if (!is_input_document(entry, name))
      continue;
    const bool is_stored = data_.model().documents().contains(name);
    const std::string fault = request_fault(
        name, Path(settings_.file_directory, name, document_suffix));
    if (!fault.empty() && !is_stored)
      findings.push_back("polling would leave out " + quoted(entry) + ": " +
                         fault);
    else if (const auto problem = text_problem(name)) {
      findings.push_back((problem->is_missing ? "polling would stop at "
                                              : "polling would leave out ") +
                         quoted(entry) + ": " + problem->text);
    }
  }
  // The system names entries in any order; findings come in the same order each
  // time.
  std::sort(findings.begin(), findings.end());
  for (const std::string &finding : findings)
    findings_.add(path, 0, Severity::warning, finding);
}

void CollectionCheck::check_classes() {
  ClassTable &classes = collection_.classes;
  // Behind this a class has the documents of all below it, so that an inner
  // class without documents of its own is not reported.
  classes.gather_documents();
  check_top_class();
  const ClassData &top = classes.get_data(0);
  // In order of creation, which is that of the lists. A class lacks documents
  // only if others have some; otherwise check_top_class() has said it all.
  for (std::uint32_t id = 1; id < classes.size(); ++id)
    check_class(id, !top.train_docs.empty(), !top.test_docs.empty());
}

void CollectionCheck::check_top_class() {
  const ClassData &top = collection_.classes.get_data(0);
  if (top.train_docs.empty())
    warn({ListKind::train, 0}, "there is no document to learn from");
  if (top.test_docs.empty())
    warn({ListKind::test, 0}, "there is no document to test on");
  if (top.sons.size() != 1)
    return;
  const std::uint32_t id = top.sons.front()->id;
  warn(collection_.class_places[id].first,
       "class " + quoted(collection_.classes.full_name(id)) +
           " is the only one below the top class: there is nothing to tell it "
           "from");
}

void CollectionCheck::check_class(std::uint32_t id, bool learns,
                                  bool measures) {
  const ClassData &data = collection_.classes.get_data(id);
  const Collection::ClassPlaces &places = collection_.class_places[id];
  const std::string name = "class " + quoted(collection_.classes.full_name(id));
  if (learns && data.train_docs.empty())
    warn(places.first, name + " has test documents only");
  if (measures && data.test_docs.empty())
    warn(places.first, name + " has training documents only");
  if (data.sons.size() == 1) {
    warn(places.first,
         name + " has a single son: there is nothing to tell it from");
  }
  if (!data.sons.empty() && places.own_document.line != 0) {
    warn(places.own_document,
         name + " has sons, and only classes without sons are assigned");
  }
}

}  // namespace vek::checking
