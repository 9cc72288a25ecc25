#include "evaluation/testing.h"

#include <cmath>
#include <cstdint>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/collection_fixture.h"

namespace vek {
namespace {

using TestDocument = CollectionTest;

TEST_F(TestDocument, CountsHitsMissesAndWrongAssignments) {
  params.scaling = false;
  top().nr_docs = 2;
  // The term of a class, by which it scores, has its number.
  for (const auto &[path, weight] :
       {std::pair("a", 2.0), std::pair("b", 2.0), std::pair("c", 0.5)}) {
    ClassData &data = at(path);
    data.profile[data.id].pos_weight = weight / std::log(2.0);
    top().profile[data.id].df = 1;
  }
  const Judging judging;
  Judge judge(classes, pos_weight_sum, params, judging);
  const Testing testing = {classes, documents, judge, params, messages};
  std::ostringstream file;
  const struct {
    std::vector<TermCount> terms;
    std::vector<const char *> filed;
    std::uint32_t max_ranks;
    std::string counts;  // RS/RNS/NRS of a, b and c
  } cases[] = {
      {{{1, 1}}, {"a"}, 1, "1/0/0 0/0/0 0/0/0 "},
      {{{1, 1}}, {"b"}, 1, "0/0/1 0/1/0 0/0/0 "},
      // Filed twice in one class.
      {{{1, 1}}, {"a", "a"}, 1, "1/1/0 0/0/0 0/0/0 "},
      {{{1, 2}, {2, 2}}, {"c", "a"}, 3, "1/0/0 0/0/1 0/1/0 "},
      // Not significant: all missed, and nothing assigned, whatever is left.
      {{{3, 1}}, {"a", "c"}, 3, "0/1/0 0/0/0 0/1/0 "},
  };
  for (const auto &one : cases) {
    const std::string name = "t" + std::to_string(&one - cases);
    documents.put(name, one.terms);
    DocumentMap::ClassList filed;
    for (const char *path : one.filed)
      filed.push_back(&at(path));
    params.max_ranks = one.max_ranks;
    ConfusionMatrix matrix(classes);
    EXPECT_TRUE(test_document(testing, name, filed, matrix, file));
    std::string counts;
    for (const std::uint32_t id : {1U, 2U, 3U}) {
      counts += std::to_string(matrix.nr_correct(id)) + '/' +
                std::to_string(matrix.nr_missed(id)) + '/' +
                std::to_string(matrix.nr_wrong(id)) + ' ';
    }
    EXPECT_EQ(counts, one.counts) << name;
  }
  file.setstate(std::ios::badbit);
  ConfusionMatrix matrix(classes);
  EXPECT_FALSE(test_document(testing, "t0", {}, matrix, file));
}

}  // namespace
}  // namespace vek
