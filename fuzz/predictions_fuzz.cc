// Any bytes as a predictions file: it is refused with its line, or all that is
// shown of it can be made, and its counts agree with each other.
#include <sstream>
#include <string>

#include "report/page.h"
#include "report/predictions.h"
#include "report/table.h"
#include "report/tables.h"
#include "target.h"

using namespace vek::reporting;
using vek::fuzzing::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  ClassNames names;
  Judged run{names, {}, {}, {}};
  vek::Failure failure;
  if (!parse_predictions(vek::fuzzing::text_of(data, size), "file", names,
                         run.predictions, failure)) {
    require(!failure.reason.empty());
    return 0;
  }
  run.judge();
  const Counts &total = run.figures.total;
  std::uint64_t nr_filed = 0;
  for (const Prediction &doc : run.predictions.documents)
    nr_filed += doc.filed_in.size();
  require(total.support() == nr_filed);
  require(total.f1().value_or(0) >= 0 && total.f1().value_or(0) <= 1);
  std::ostringstream output;
  print_aligned({summary_table(run), class_table(run, "f1", Order::usual),
                 pair_table(run), document_table(run)},
                output);
  print_csv(document_table(run), output);
  const Comparison same =
      compare(run.predictions, run.predictions, names.size());
  require(same.changed.empty() && same.mcnemar == 1);
  const std::string page =
      make_page({run, &run.predictions, &same, "no such directory"});
  // The data, the page's own script, and no other element has such an end.
  const std::size_t first = page.find("</script");
  require(page.find("</script", page.find("</script", first + 1) + 1) ==
          std::string::npos);
  return 0;
}
