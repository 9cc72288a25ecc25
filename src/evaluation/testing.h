// The test run: each test document is scored, walks down the hierarchy, and is
// counted as found, missed or wrongly assigned.
#ifndef VEK_EVALUATION_TESTING_H_
#define VEK_EVALUATION_TESTING_H_

#include <ostream>
#include <string>
#include <vector>

#include "base/messages.h"
#include "classes/classtab.h"
#include "evaluation/confus.h"
#include "evaluation/judge.h"
#include "intake/documents.h"
#include "params/params.h"

namespace vek {

// What a test works with. All must outlive it.
struct Testing {
  const ClassTable &classes;
  Documents &documents;
  Judge &judge;
  const Params &params;
  Messages &messages;
  // Gets the lines of predictions, if it is not null.
  std::ostream *predictions_P = nullptr;
};

// Counts what a document was assigned to against the ids of the classes in
// which it was filed.
void count_decision(std::vector<Ranking> assigned,
                    const std::vector<std::uint32_t> &filed_in,
                    ConfusionMatrix &matrix);

// Judges one test document, writes its line to the rank file and counts the
// decision. `filed_in` are the classes in which
// it was filed. False if the line could not be written.
bool test_document(const Testing &testing, const std::string &name,
                   const DocumentMap::ClassList &filed_in,
                   ConfusionMatrix &matrix, std::ostream &rank_file);

// All test documents of the top class, which must have sons, and the report as
// a message of level 3. False as above.
bool test_top_class(const Testing &testing, std::ostream &rank_file);

}  // namespace vek

#endif  // VEK_EVALUATION_TESTING_H_
