#include <unistd.h>
#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <new>
#include <optional>
#include <string>

#include "answering/kept_model.h"
#include "answering/place_options.h"
#include "answering/scratch_file.h"
#include "base/command_line.h"
#include "base/helpers.h"
#include "base/input_file.h"
#include "data/names.h"
#include "explain/account.h"
#include "explain/explanation.h"
#include "explain/marks.h"
#include "explain/page.h"
#include "report/page_frame.h"

namespace {

using namespace vek;
using namespace vek::explaining;
using keeping::escaped;

constexpr char program[] = "vek-explain";
constexpr char standard_input[] = "-";

constexpr int exit_good = 0;
constexpr int exit_failed = 2;

// More is no document.
constexpr std::size_t largest_input_text = std::size_t{1} << 28;

struct Arguments {
  std::string document;
  std::string class_path;  // empty: all of the way
  KeptModel::Place place;
  std::size_t nr_terms = 10;  // each way; 0: all
  std::string html;           // empty: no page
  bool exact = false;
  bool json = false;
  bool tsv = false;
};

bool read_standard_input(std::string &text, Failure &failure) {
  char buffer[65536];
  ssize_t count = 0;
  while ((count = retry(
              [&] { return read(STDIN_FILENO, buffer, sizeof buffer); })) > 0) {
    text.append(buffer, static_cast<std::size_t>(count));
    if (text.size() > largest_input_text) {
      failure = {"standard input", "", "it does not end"};
      return false;
    }
  }
  if (count < 0)
    failure = {"standard input", "", std::strerror(errno)};
  return count == 0;
}

// What was asked about: a stored document, a file, or standard input.
class Subject {
 public:
  explicit Subject(KeptModel &model) : model_(model) {}

  // Finds the profile.
  bool read(const std::string &document, Failure &failure) {
    const std::string name = model_.stored_name(document);
    // A file comes before a name that only resembles it.
    is_stored_ = name == document || (!name.empty() && !file_exists(document));
    if (is_stored_) {
      text_path_ = model_.text_path(name);
      return model_.model().read_profile(name, profile_, failure);
    }
    text_path_ = document;
    if (document == standard_input) {
      std::string text;
      if (!read_standard_input(text, failure) || !input_.write(text, failure))
        return false;
      text_path_ = input_.path();
    } else if (!file_exists(document)) {
      failure = {document, "", "there is no such document and no such file"};
      return false;
    }
    KeptModel::Cause cause{};
    if (model_.profile_file(text_path_, profile_, failure, cause))
      return true;
    if (document == standard_input)
      failure.file = "standard input";
    return false;
  }

  // False if there is a text and it cannot be read or analysed. A stored
  // document needs none.
  bool read_words(std::optional<TextWords> &words, Failure &failure) {
    if (is_stored_ && !file_exists(text_path_))
      return true;
    std::string text;
    if (read_file(text_path_, text, failure.reason, largest_input_text) !=
        ReadResult::ok) {
      failure.file = text_path_;
      return false;
    }
    return words.emplace().find(model_, text, failure);
  }

  bool is_stored() const { return is_stored_; }
  DocProfile &profile() { return profile_; }

 private:
  KeptModel &model_;
  DocProfile profile_;
  std::string text_path_;
  ScratchFile input_;
  bool is_stored_ = false;
};

// All of the way, or the step to the class that was asked for.
bool find_parts(Explanation &explanation, Account &account, Failure &failure) {
  const auto add_shares = [&](Account::Part &part, const ClassData &data) {
    return explanation.find_shares(data, part.shares.emplace_back(), failure);
  };
  if (account.asked_P != nullptr) {
    account.parts.push_back({explanation.step_to(*account.asked_P), {}});
    return add_shares(account.parts.back(), *account.asked_P);
  }
  for (Step &step : explanation.steps_on_way()) {
    account.parts.push_back({std::move(step), {}});
    Account::Part &part = account.parts.back();
    for (const SonScore &son : part.step.sons) {
      if (son.is_on_way && !add_shares(part, *son.class_P))
        return false;
    }
  }
  return true;
}

bool write_account(const Account &account, const Arguments &arguments,
                   Subject &subject, Failure &failure) {
  if (!arguments.html.empty()) {
    std::optional<TextWords> words;
    return subject.read_words(words, failure) &&
           reporting::write_page(arguments.html,
                                 make_page(account, arguments.nr_terms,
                                           words ? &*words : nullptr),
                                 failure);
  }
  if (arguments.json) {
    print_json(account, arguments.nr_terms, std::cout);
  } else if (arguments.tsv) {
    print_tsv(account, arguments.nr_terms, std::cout);
  } else {
    print_text(account, arguments.nr_terms,
               arguments.exact ? Column::Precision::exact
                               : Column::Precision::readable,
               std::cout);
  }
  return true;
}

bool explain(const Arguments &arguments, Failure &failure) {
  KeptModel model;
  if (!model.open(arguments.place, failure))
    return false;
  std::uint32_t class_id = 0;
  if (!arguments.class_path.empty() &&
      !model.model().find_class(arguments.class_path, class_id, failure)) {
    return false;
  }
  Subject subject(model);
  if (!subject.read(arguments.document, failure))
    return false;
  Explanation explanation(model, subject.profile());
  Account account{model, arguments.document, subject.is_stored()};
  account.nr_terms = subject.profile().size();
  for (const DocProfileEntry &entry : subject.profile())
    account.nr_unknown += entry.term >= model.model().terms().size() ? 1 : 0;
  account.is_product = explanation.is_product();
  account.is_significant = explanation.answer().significant;
  account.leaves = explanation.leaves();
  if (class_id != 0)
    account.asked_P = &model.model().classes().get_data(class_id);
  return find_parts(explanation, account, failure) &&
         write_account(account, arguments, subject, failure);
}

int run(const Arguments &arguments) {
  std::ios::sync_with_stdio(false);
  Failure failure;
  if (!explain(arguments, failure)) {
    report(program, escaped(failure.text()));
    return exit_failed;
  }
  std::cout.flush();
  if (!std::cout) {
    std::perror(program);
    return exit_failed;
  }
  return exit_good;
}

void add_options(CLI::App &app, Arguments &arguments) {
  app.add_option("document", arguments.document,
                 "name of a stored document, or a file; - for standard input");
  app.add_option("class", arguments.class_path,
                 "explain the score of this class alone");
  app.add_option("-C,--directory", arguments.place.directory,
                 "where vek is called (.)")
      ->type_name("DIRECTORY");
  add_place_options(app, arguments.place);
  app.add_option("-t,--terms", arguments.nr_terms,
                 "terms for and against each, 0: all (10)")
      ->check(vek::check_number)
      ->type_name("NUMBER");
  app.add_flag("-x,--exact", arguments.exact, "show all digits");
  app.add_option("--html", arguments.html,
                 "write a page with the marked text instead")
      ->type_name("FILE");
  app.add_flag("-j,--json", arguments.json, "write JSON");
  app.add_flag("--tsv", arguments.tsv, "write tab-separated lines");
}

}  // namespace

int main(int nr_arguments, char **arguments) {
  CommandLine line(program,
                   "Explains why a kept model gives a document its classes.");
  Arguments values;
  add_options(line.app(), values);
  line.app().footer("Exit status: 0 done, 2 failure");
  if (const std::optional<int> status = line.parse(nr_arguments, arguments))
    return *status;
  const auto refuse = [](const char *reason) {
    report(program, reason);
    return exit_usage;
  };
  if (values.document.empty())
    return refuse("a document is needed");
  if (values.json + values.tsv + !values.html.empty() > 1)
    return refuse("only one of --json, --tsv and --html");
  try {
    return run(values);
  } catch (const std::bad_alloc &) {
    report(program, "out of memory");
    return exit_failed;
  }
}
