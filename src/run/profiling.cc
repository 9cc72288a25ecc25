#include "run/profiling.h"

#include <cstdint>
#include <string_view>

#include "intake/DocParser.h"
#include "log/stop.h"
#include "run/globals.h"

namespace vek {

void analyse_document(const std::string &name, TermBag &bag) {
  const std::string text = analyser.process(name);
  LogMessages messages;
  DocParser parser(atom_table, bag, text, name.c_str(), messages);
  if (!parser.parse()) {
    error("no more atoms can be numbered");
    abort_run(no_cause);
  }
}

void add_to_profile(const TermBag &bag, DocProfile &profile) {
  for (const auto &[pair, count] : bag) {
    const std::uint32_t term = term_table.enter(pair.head, pair.mod);
    if (term == EmptyAtom) {
      error("no more terms can be numbered");
      abort_run(no_cause);
    }
    profile.add_term(term, count);
  }
}

void profile_document(const std::string &name) {
  stop_if_requested();
  if (data_base.exists(name))
    return;
  logf_if_verbose(3, "profiling document `%s'", name.c_str());
  TermBag bag;
  analyse_document(name, bag);
  analysis_report.count(name, bag.empty() && analyser.text_size() > 0);
  DocProfile profile;
  add_to_profile(bag, profile);
  data_base.put(name, profile);
}

DocProfile *document_profile(const std::string &name) {
  profile_document(name);
  return data_base.get(name);
}

}  // namespace vek
