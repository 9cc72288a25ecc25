#include "learning/training.h"

#include <string>

#include "support/collection_fixture.h"

namespace vek {
namespace {

// Three documents over five terms:
//   a: d1 = 0 0 1, d2 = 0 2 2 2 3 3 3 3;  b: d3 = 2 2 2 2 2
class UpdateProfiles : public CollectionTest {
 protected:
  UpdateProfiles() {
    train("d1", {{0, 2}, {1, 1}}, {"a"});
    train("d2", {{0, 1}, {2, 3}, {3, 4}}, {"a"});
    train("d3", {{2, 5}}, {"b"});
    at("empty");
  }

  // The class's counts, and its terms with tf and df.
  std::string dump(std::uint32_t id) {
    const ClassData &data = classes.get_data(id);
    EXPECT_TRUE(data.term_stats.empty());
    std::string text = std::to_string(data.nr_docs) + " " +
                       std::to_string(data.nr_others) + " " +
                       std::to_string(data.nr_terms) + ":";
    for (const auto &[term, entry] : data.profile) {
      text += " " + std::to_string(term) + "=" + std::to_string(entry.tf) +
              "/" + std::to_string(entry.df);
    }
    return text;
  }
};

TEST_F(UpdateProfiles, KeepsInEveryClassWhatPassesInOne) {
  params.term_selection = TermSelection::docfreq;
  params.selectivity = 0.75;
  gather();
  // Term 0 passes in a with both documents, term 2 in b alone.
  EXPECT_EQ(dump(0), "3 0 11: 0=3/2 2=8/2");
  EXPECT_EQ(dump(1), "2 1 6: 0=3/2 2=3/1");
  EXPECT_EQ(dump(2), "1 2 5: 2=5/1");
  EXPECT_EQ(dump(3), "0 3 0:");
  EXPECT_EQ(active_terms.size(), 2U);
  EXPECT_EQ(documents.get("d2")->total(), 4U);
}

// V is 5: with 4, term 3 would fail in a, where it has 4/11 * ln(V * 16/11);
// with 6, term 0 would pass in the top class, where it has 8/23 * ln(V *
// 32/23).
TEST_F(UpdateProfiles, JudgesByAllTermsThatTheTopClassEverHad) {
  params.term_selection = TermSelection::infogain;
  params.selectivity = 0.7;
  top().nr_terms = 7;
  top().profile[0].tf = 5;
  top().profile[7].tf = 2;
  gather();
  EXPECT_EQ(dump(0), "3 0 14: 2=8/2 3=4/1 7=2/0");
  EXPECT_EQ(dump(1), "2 1 7: 2=3/1 3=4/1");
}

TEST_F(UpdateProfiles, AddsToTheStatisticsOfEarlierRuns) {
  ClassData &data = at("a");
  data.nr_docs = 9;
  data.nr_terms = 100;
  data.profile[0] = {50, 5, 0.0, 0.0, 0.0, 6, 7};
  gather();
  EXPECT_EQ(dump(1), "2 1 111: 0=53/7 1=1/1 2=3/1 3=4/1");
  const ClassProfileEntry &entry = data.profile[0];
  EXPECT_EQ(entry.promotions + entry.demotions, 0);
}

}  // namespace
}  // namespace vek
