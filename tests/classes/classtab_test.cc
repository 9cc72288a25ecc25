#include "classes/classtab.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace vek {
namespace {

using Names = std::vector<std::string>;

std::string written(const ClassTable &table) {
  std::ostringstream stream;
  EXPECT_TRUE(table.write(stream));
  return stream.str();
}

bool read(ClassTable &table, const std::string &text) {
  std::istringstream stream(text);
  return table.read(stream);
}

bool reads(const std::string &text) {
  ClassTable table;
  return read(table, text);
}

Names full_names(ClassTable &table) {
  Names names;
  for (std::uint32_t id = 0; id < table.size(); ++id) {
    std::ostringstream stream;
    table.print_full_name(stream, id);
    EXPECT_EQ(stream.str(), table.full_name(id));
    names.push_back(stream.str());
  }
  return names;
}

// The documents with the names of their classes, as "d1: a b, d2: a".
std::string dump(ClassTable &table, const DocumentMap &documents) {
  std::string text;
  for (const auto &[name, classes] : documents) {
    text += (text.empty() ? "" : ", ") + name + ":";
    for (const ClassData *class_data_P : classes) {
      text += " " + table.get_name(class_data_P->id);
    }
  }
  return text;
}

TEST(ClassTable, GivesEachKeyOneId) {
  ClassTable table;
  EXPECT_EQ(table.enter("top", 0), 0U);
  EXPECT_EQ(table.enter("b", 0), 1U);
  EXPECT_EQ(table.enter("a", 0), 2U);
  EXPECT_EQ(table.enter("a", 1), 3U);
  EXPECT_EQ(table.enter("a", 0), 2U);
  // The keys of the top class and of its sons have the same father.
  EXPECT_EQ(table.enter("top", 0), 0U);
  EXPECT_EQ(table.enter("top", 1), 4U);
  EXPECT_EQ(table.size(), 5U);

  ClassData &top = table.get_data(0);
  EXPECT_EQ(top.father, nullptr);
  EXPECT_EQ(top.sons, (std::vector{&table.get_data(1), &table.get_data(2)}));
  EXPECT_EQ(table.get_data(3).father, &table.get_data(1));
  EXPECT_EQ(full_names(table), (Names{"top", "b", "a", "b/a", "b/top"}));
  Names in_key_order;
  for (const auto &[key, data] : table)
    in_key_order.push_back(key.name);
  EXPECT_EQ(in_key_order, (Names{"a", "b", "top", "a", "top"}));
}

TEST(ClassTable, EntersThePartsOfAPath) {
  struct Case {
    std::string path;
    std::uint32_t id;
    Names entered;  // names of the new classes
  };
  const std::vector<Case> cases = {
      {"a", 1, {"a"}},       {"a/b", 2, {"b"}}, {"a//b", 2, {}},
      {"a///b/c", 3, {"c"}}, {"a/", 4, {"a/"}}, {"a/b//", 5, {"b//"}},
      {"/a", 7, {"", "a"}},  {"//", 8, {"//"}}, {"", 6, {}},
      {"top/d", 9, {"d"}},   {"d", 9, {}},
  };
  ClassTable table;
  table.enter("top", 0);
  for (const Case &one : cases) {
    const auto before = static_cast<std::uint32_t>(table.size());
    EXPECT_EQ(table.enter_path(one.path, 0), one.id) << one.path;
    Names entered;
    for (std::uint32_t id = before; id < table.size(); ++id) {
      entered.push_back(table.get_name(id));
    }
    EXPECT_EQ(entered, one.entered) << one.path;
  }
}

TEST(ClassTable, StopsTheProgramForAnUnknownId) {
  ClassTable table;
  table.enter("top", 0);
  const char *const words = "unsigned\\(id\\) < size\\(\\)";
  EXPECT_DEATH(table.get_data(1), words);
  EXPECT_DEATH(table.get_name(1), words);
  EXPECT_DEATH(table.get_profile(4294967295), words);
  EXPECT_DEATH(table.print_full_name(std::cout, 1), words);
}

const std::string stored =
    "4\n"
    "0\t3\t0\t70\t0\t\"news\"\n"
    "1\t2\t1\t4294967295\t0\t\"a b\"\n"
    "2\t0\t3\t0\t0\t\"c\"\n"
    "3\t1\t1\t9\t1\t\"c\"\n";

TEST(ClassTable, WritesALineForEachClassByAscendingId) {
  ClassTable table;
  EXPECT_EQ(written(table), "0\n");
  for (const char *path : {"news", "a b", "c", "a b/c"}) {
    table.enter_path(path, 0);
  }
  const std::uint32_t counts[][3] = {
      {3, 0, 70}, {2, 1, 4294967295}, {0, 3, 0}, {1, 1, 9}};
  for (std::uint32_t id = 0; id < 4; ++id) {
    ClassData &data = table.get_data(id);
    data.nr_docs = counts[id][0];
    data.nr_others = counts[id][1];
    data.nr_terms = counts[id][2];
  }
  EXPECT_EQ(written(table), stored);
}

TEST(ClassTable, ReadsTheSameTree) {
  ClassTable table;
  ASSERT_TRUE(read(table, stored));
  EXPECT_EQ(written(table), stored);
  EXPECT_EQ(full_names(table), (Names{"news", "a b", "c", "a b/c"}));
  EXPECT_EQ(table.get_data(0).sons,
            (std::vector{&table.get_data(1), &table.get_data(2)}));
  EXPECT_EQ(table.get_data(3).father, &table.get_data(1));
  EXPECT_EQ(table.get_data(1).weight_sum, 0.0);
  // Known keys are found, and a new one gets the next id.
  EXPECT_EQ(table.enter_path("a b/c", 0), 3U);
  EXPECT_EQ(table.enter("c", 2), 4U);
}

TEST(ClassTable, ReadsNoTableThatIsCutShort) {
  for (std::size_t size = 0; size + 1 < stored.size(); ++size) {
    EXPECT_FALSE(reads(stored.substr(0, size))) << size;
  }
  EXPECT_TRUE(reads(stored.substr(0, stored.size() - 1)));
}

TEST(ClassTable, ReadsNoDamagedTable) {
  struct Case {
    std::string text;
    bool readable = false;
  };
  const std::string top = "0\t0\t0\t0\t0\t\"t\"\n";
  const std::vector<Case> cases = {
      {" 1 \n 0 1\r2 3 0 \"t\" \n\n", true},
      {"0\n", true},
      {"1\n" + top + "1\t0\t0\t0\t0\t\"a\"\n"},
      {"1\n" + top + "x"},
      {"1\n" + top + std::string(1, '\0')},
      {"2\n" + top},
      {"4294967295\n" + top},
      {"4294967296\n" + top},
      {"-1\n"},
      {"x\n"},
      // Ids are positions, and a father stands before its sons.
      {"1\n1\t0\t0\t0\t0\t\"t\"\n"},
      {"1\n0\t0\t0\t0\t1\t\"t\"\n"},
      {"2\n" + top + "2\t0\t0\t0\t0\t\"a\"\n"},
      {"2\n" + top + "1\t0\t0\t0\t1\t\"a\"\n"},
      {"2\n" + top + "1\t0\t0\t0\t4294967295\t\"a\"\n"},
      {"1\n0\t4294967296\t0\t0\t0\t\"t\"\n"},
      {"1\n0\t0\t-1\t0\t0\t\"t\"\n"},
      {"1\n0\t0\t0\t1.5\t0\t\"t\"\n"},
      {"1\n0\t0\t0\t0\t0\tt\n"},
      {"1\n0\t0\t0\t0\t0\t\"t\n"},
      {"1\n0\t0\t0\t0\t0\t\"t\nu\"\n"},
      {std::string("1\n0\t0\t0\t0\t0\t\"t\0\"\n", 17)},
      {"1\n0\t0\t0\t0\t0\t\"t\"u\"\n"},
      {"1\n0\t0\t0\t0\t0\t\"t\\\"\n"},
      {"1\n0\t0\t0\t0\t0\t\"t\\"},
      {"1\n0\t0\t0\t0\t0\t\"t\\\"u\"\n", true},
      {"1\n0\t0\t0\t0\t0\t\"\"\n", true},
  };
  for (const Case &one : cases) {
    EXPECT_EQ(reads(one.text), one.readable) << one.text;
  }
  std::istringstream broken("0\n");
  broken.setstate(std::ios::badbit);
  EXPECT_FALSE(ClassTable().read(broken));
  std::ostringstream full;
  full.setstate(std::ios::badbit);
  EXPECT_FALSE(ClassTable().write(full));
}

TEST(ClassTable, StopsTheProgramForARepeatedKey) {
  const std::string text = "3\n0\t0\t0\t0\t0\t\"t\"\n1\t0\t0\t0\t0\t\"a\"\n";
  EXPECT_DEATH(reads(text + "2\t9\t9\t9\t0\t\"a\"\n"), "p\\.second");
  EXPECT_DEATH(reads(text + "2\t0\t0\t0\t0\t\"t\"\n"), "p\\.second");
  EXPECT_DEATH(reads(text + "1\t0\t0\t0\t0\t\"a\"\n"), "p\\.second");
}

// What is_storable_name() promises is what a table read back says.
TEST(ClassTable, KnowsWhichNamesCanBeReadBack) {
  struct Case {
    std::string name;
    bool storable;
  };
  std::string pairs;
  for (int i = 0; i < 1023; ++i)
    pairs += "\\\"";
  const std::vector<Case> cases = {
      {"", true},
      {"a b\t\xC3\xA9\x01", true},
      {std::string(1023, 'a'), true},
      {std::string(1024, 'a'), false},
      {pairs, true},
      {pairs + "a", false},
      {"a\\", false},
      {"a\\\\", true},
      {"a\"b", false},
      {"\"", false},
      {"a\\\"b", true},
      {"a\nb", false},
      {std::string("a\0b", 3), false},
  };
  for (const Case &one : cases) {
    EXPECT_EQ(ClassTable::is_storable_name(one.name), one.storable) << one.name;
    ClassTable table;
    table.enter("top", 0);
    table.enter(one.name, 0);
    std::uint32_t bad_id = 0;
    EXPECT_EQ(table.all_names_storable(bad_id), one.storable);
    EXPECT_EQ(bad_id, one.storable ? 0U : 1U);
    ClassTable again;
    EXPECT_EQ(read(again, written(table)) && again.get_name(1) == one.name,
              one.storable)
        << one.name;
  }
}

TEST(ClassTable, GathersTheDocumentsOfTheSons) {
  ClassTable table;
  EXPECT_FALSE(table.has_training_documents());
  table.gather_documents();
  for (const char *path : {"top", "a", "b", "a/x", "a/y"}) {
    table.enter_path(path, 0);
  }
  table.add_train_document(3, "d2");
  table.add_train_document(3, "d2");
  table.add_train_document(4, "d2");
  table.add_train_document(1, "d1");
  table.add_train_document(2, "d2");
  table.add_test_document(3, "t");
  table.add_test_document(4, "t");
  table.add_test_document(4, "t");
  table.add_test_document(1, "t");
  table.add_test_document(2, "t");
  EXPECT_FALSE(table.has_training_documents());
  table.gather_documents();
  EXPECT_TRUE(table.has_training_documents());

  const std::vector<std::pair<std::string, std::string>> expected = {
      {"d1: a, d2: a b", "t: a x y y b"},
      {"d1: a, d2: x y", "t: a x y y"},
      {"d2: b", "t: b"},
      {"d2: x x", "t: x"},
      {"d2: y", "t: y y"},
  };
  for (std::uint32_t id = 0; id < 5; ++id) {
    const ClassData &data = table.get_data(id);
    EXPECT_EQ(dump(table, data.train_docs), expected[id].first);
    EXPECT_EQ(dump(table, data.test_docs), expected[id].second);
  }
  EXPECT_EQ(table.get_data(0).train_docs.size(), 2U);
}

// Deep enough for any recursion to run out of stack.
TEST(ClassTable, CanBeAHundredThousandLevelsDeep) {
  ClassTable table;
  std::uint32_t id = table.enter("top", 0);
  for (int level = 0; level < 100000; ++level)
    id = table.enter("c", id);
  ClassTable again;
  ASSERT_TRUE(read(again, written(table)));
  again.add_train_document(id, "d");
  again.add_test_document(id, "d");
  again.gather_documents();
  EXPECT_EQ(dump(again, again.get_data(0).train_docs), "d: c");
  EXPECT_EQ(again.get_data(0).test_docs.begin()->second.front()->id, id);
  EXPECT_EQ(again.full_name(5000).size(), 2 * 5000U - 1);
}

}  // namespace
}  // namespace vek
