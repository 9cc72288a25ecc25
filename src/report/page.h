// The report as one HTML page that needs no network and no other file.
//
// Its sources are in the folder page. The program puts the data in, as JSON in
// which no markup can end, and a content security policy that allows the page's
// own style and script, by their hashes, and nothing else.
#ifndef VEK_REPORT_PAGE_H_
#define VEK_REPORT_PAGE_H_

#include <string>

#include "report/comparison.h"
#include "report/tables.h"

namespace vek::reporting {

struct PageInput {
  const Judged &run;
  // Null, or a comparison with another run.
  const Predictions *other_P = nullptr;
  const Comparison *comparison_P = nullptr;
  // Directory with the texts; empty: no texts.
  std::string files;
};

std::string make_page(const PageInput &input);

}  // namespace vek::reporting

#endif  // VEK_REPORT_PAGE_H_
