// The test run: each test document is scored, walks down the hierarchy, and is
// counted as found, missed or wrongly assigned.
#ifndef VEK_EVALUATION_TESTING_H_
#define VEK_EVALUATION_TESTING_H_

#include <ostream>
#include <string>

#include "base/messages.h"
#include "classes/classtab.h"
#include "evaluation/confus.h"
#include "evaluation/walk.h"
#include "intake/documents.h"
#include "params/params.h"

namespace vek {

// What a test works with. All must outlive it.
struct Testing {
  const ClassTable &classes;
  Documents &documents;
  Walk &walk;
  const Params &params;
  Messages &messages;
};

// Scores one test document against the sons of the top class, writes its line
// to the rank file and counts the decision. `filed_in` are the classes in which
// it was filed. False if the line could not be written.
bool test_document(const Testing &testing, const std::string &name,
                   const DocumentMap::ClassList &filed_in,
                   ConfusionMatrix &matrix, std::ostream &rank_file);

// All test documents of the top class, which must have sons, and the report as
// a message of level 3. False as above.
bool test_top_class(const Testing &testing, std::ostream &rank_file);

}  // namespace vek

#endif  // VEK_EVALUATION_TESTING_H_
