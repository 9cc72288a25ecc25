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

bool reads(const std::string &text) {
  ClassTable table;
  return table.parse(text) == ClassTable::Parsed::good;
}

Names full_names(ClassTable &table) {
  Names names;
  for (std::uint32_t id = 0; id < table.size(); ++id)
    names.push_back(table.full_name(id));
  return names;
}

// The documents with the names of their classes, as "d1: a b, d2: a".
std::string dump(ClassTable &table, const DocumentMap &documents) {
  std::string text;
  for (const auto &[name, classes] : documents) {
    text += (text.empty() ? "" : ", ") + name + ":";
    for (const ClassData *class_data_P : classes)
      text += " " + table.get_name(class_data_P->id);
  }
  return text;
}

TEST(ClassTable, GivesEachPathOneId) {
  ClassTable table;
  // The keys of the top class and of its sons have the same father.
  EXPECT_EQ(table.enter("top", 0), 0U);
  EXPECT_EQ(table.enter("top", 0), 0U);
  EXPECT_EQ(table.get_data(0).father, nullptr);
  const std::pair<const char *, std::uint32_t> cases[] = {
      {"a", 1},  {"a/b", 2},   {"a//b", 2}, {"a///b/c", 3},
      {"a/", 4}, {"a/b//", 5}, {"/a", 7},   {"//", 8},
      {"", 6},   {"top/d", 9}, {"d", 9},    {"a/top", 10},
  };
  for (const auto &[path, id] : cases)
    EXPECT_EQ(table.enter_path(path, 0), id) << path;
  EXPECT_EQ(full_names(table), (Names{"top", "a", "a/b", "a/b/c", "a/", "a/b//",
                                      "", "/a", "//", "d", "a/top"}));
}

const std::string stored =
    "4\n"
    "0\t3\t0\t70\t0\t\"news\"\n"
    "1\t2\t1\t4294967295\t0\t\"a b\"\n"
    "2\t0\t3\t0\t0\t\"c\"\n"
    "3\t1\t1\t9\t1\t\"c\"\n";

TEST(ClassTable, ReadsTheSameTreeThatItWritesAndNoPartOfIt) {
  EXPECT_EQ(written(ClassTable()), "0\n");
  ClassTable table;
  ASSERT_TRUE(table.parse(stored) == ClassTable::Parsed::good);
  EXPECT_EQ(written(table), stored);
  EXPECT_EQ(full_names(table), (Names{"news", "a b", "c", "a b/c"}));
  // Known keys are found, and a new one gets the next id.
  EXPECT_EQ(table.enter_path("a b/c", 0), 3U);
  EXPECT_EQ(table.enter("c", 2), 4U);
  for (std::size_t size = 0; size < stored.size(); ++size)
    EXPECT_EQ(reads(stored.substr(0, size)), size + 1 == stored.size());
}

TEST(ClassTable, ReadsNoDamagedTable) {
  const std::string top = "0\t0\t0\t0\t0\t\"t\"\n";
  const struct {
    std::string text;
    bool readable = false;
  } cases[] = {
      {" 1 \n 0 1\r2 3 0 \"t\" \n\n", true},
      {"1\n" + top + "1\t0\t0\t0\t0\t\"a\"\n"},
      {"4294967295\n" + top},
      // Ids are positions, and a father stands before its sons.
      {"1\n1\t0\t0\t0\t0\t\"t\"\n"},
      {"1\n0\t0\t0\t0\t1\t\"t\"\n"},
      {"2\n" + top + "2\t0\t0\t0\t0\t\"a\"\n"},
      {"2\n" + top + "1\t0\t0\t0\t1\t\"a\"\n"},
      {"1\n0\t4294967296\t0\t0\t0\t\"t\"\n"},
      {"1\n0\t0\t0\t0\t0\tt\n"},
      {std::string("1\n0\t0\t0\t0\t0\t\"t\0\"\n", 17)},
      {"1\n0\t0\t0\t0\t0\t\"t\\"},
      {"1\n0\t0\t0\t0\t0\t\"t\\\"\n"},
      {"1\n0\t0\t0\t0\t0\t\"t\\\"u\"\n", true},
  };
  for (const auto &[text, readable] : cases)
    EXPECT_EQ(reads(text), readable) << text;
  ClassTable repeated;
  EXPECT_EQ(repeated.parse("2\n0\t0\t0\t0\t0\t\"t\"\n1\t0\t0\t0\t0\t\"t\"\n"),
            ClassTable::Parsed::repeated_class);
}

// What is_storable_name() promises is what a table read back says.
TEST(ClassTable, KnowsWhichNamesCanBeReadBack) {
  std::string pairs;
  for (int i = 0; i < 1023; ++i)
    pairs += "\\\"";
  const std::pair<std::string, bool> cases[] = {
      {"", true},
      {"a b\t\xC3\xA9\x01", true},
      {std::string(1023, 'a'), true},
      {std::string(1024, 'a'), false},
      {pairs, true},
      {pairs + "a", false},
      {"a\\", false},
      {"\"", false},
      {"a\\\"b", true},
      {"a\nb", false},
      {std::string("a\0b", 3), false},
  };
  for (const auto &[name, storable] : cases) {
    EXPECT_EQ(ClassTable::is_storable_name(name), storable) << name;
    ClassTable table, again;
    table.enter("top", 0);
    table.enter(name, 0);
    std::uint32_t bad_id = 0;
    EXPECT_EQ(table.all_names_storable(bad_id), storable);
    EXPECT_EQ(bad_id, storable ? 0U : 1U);
    const bool is_read =
        again.parse(written(table)) == ClassTable::Parsed::good;
    EXPECT_EQ(is_read && again.get_name(1) == name, storable) << name;
  }
}

TEST(ClassTable, GathersTheDocumentsOfTheSons) {
  ClassTable table;
  for (const char *path : {"top", "a", "b", "a/x", "a/y"})
    table.enter_path(path, 0);
  for (const std::uint32_t id : {3U, 3U, 4U, 2U})
    table.add_train_document(id, "d2");
  table.add_train_document(1, "d1");
  for (const std::uint32_t id : {3U, 4U, 4U, 1U, 2U})
    table.add_test_document(id, "t");
  EXPECT_FALSE(table.has_training_documents());
  table.gather_documents();
  EXPECT_TRUE(table.has_training_documents());
  std::string train, test;
  for (std::uint32_t id = 0; id < 5; ++id) {
    train += dump(table, table.get_data(id).train_docs) + '\n';
    test += dump(table, table.get_data(id).test_docs) + '\n';
  }
  EXPECT_EQ(train, "d1: a, d2: a b\nd1: a, d2: x y\nd2: b\nd2: x x\nd2: y\n");
  EXPECT_EQ(test, "t: a x y y b\nt: a x y y\nt: b\nt: x\nt: y y\n");
}

// Deep enough for any recursion to run out of stack.
TEST(ClassTable, CanBeAHundredThousandLevelsDeep) {
  ClassTable table;
  std::uint32_t id = table.enter("top", 0);
  for (int level = 0; level < 100000; ++level)
    id = table.enter("c", id);
  ClassTable again;
  ASSERT_TRUE(again.parse(written(table)) == ClassTable::Parsed::good);
  again.add_train_document(id, "d");
  again.gather_documents();
  EXPECT_EQ(dump(again, again.get_data(0).train_docs), "d: c");
  EXPECT_EQ(again.full_name(5000).size(), 2 * 5000U - 1);
}

}  // namespace
}  // namespace vek
