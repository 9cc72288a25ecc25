#include "vocabulary/termtab.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/child_run.h"
#include "support/messages.h"
#include "support/temporary_directory.h"

namespace vek {
namespace {

using Ids = std::vector<std::uint32_t>;

struct Pair {
  std::uint32_t head;
  std::uint32_t mod;
};
using Pairs = std::vector<Pair>;

Ids enter(TermTable &table, const Pairs &pairs) {
  Ids ids;
  for (const auto &[head, mod] : pairs) {
    ids.push_back(table.enter(head, mod));
  }
  return ids;
}

Ids chain(const TermTable &table, std::uint32_t head) {
  Ids ids;
  for (std::uint32_t id = table.first_of_head(head); id != EmptyAtom;
       id = table.get_term(id).next) {
    ids.push_back(id);
  }
  return ids;
}

const Pairs chain_example = {{1, 5}, {1, 3}, {1, 9}, {1, 7}, {1, EmptyAtom}};
const char chain_example_lines[] =
    "1 5 0 3\n1 3 1 0\n1 9 2 4\n1 7 3 2\n1 4294967295 4 4294967295\n";

TEST(TermTable, ChainsTheTermsOfAHeadByModifier) {
  TermTable table;
  EXPECT_EQ(enter(table, chain_example), (Ids{0, 1, 2, 3, 4}));
  EXPECT_EQ(table.first_of_head(1), 1U);
  EXPECT_EQ(chain(table, 1), (Ids{1, 0, 3, 2, 4}));
  EXPECT_EQ(chain(table, 0), Ids{});
  EXPECT_EQ(chain(table, 2), Ids{});
}

TEST(TermTable, GivesAPairOneId) {
  TermTable table;
  EXPECT_EQ(table.enter(1, 2), 0U);
  EXPECT_EQ(table.enter(2, 1), 1U);
  EXPECT_EQ(table.enter(1, EmptyAtom), 2U);
  EXPECT_EQ(table.enter(1, 2), 0U);
  EXPECT_EQ(table.enter(1, EmptyAtom), 2U);
  EXPECT_EQ(table.size(), 3U);
  EXPECT_EQ(table.head(1), 2U);
  EXPECT_EQ(table.mod(2), EmptyAtom);
}

// Against a plain record of what was entered, looked at now and then, so that
// links are made upon links.
TEST(TermTable, HoldsManyPairsInOrder) {
  std::mt19937 random(1);
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> expected;
  TermTable table;
  for (int i = 0; i < 20000; ++i) {
    const auto head = static_cast<std::uint32_t>(random() % 20);
    const auto number = static_cast<std::uint32_t>(random() % 500);
    const std::uint32_t mod = number < 50 ? EmptyAtom : number;
    const auto size = static_cast<std::uint32_t>(expected.size());
    const std::uint32_t id =
        expected.try_emplace({head, mod}, size).first->second;
    ASSERT_EQ(table.enter(head, mod), id);
    if (i % 2000 != 0)
      continue;
    std::map<std::uint32_t, Ids> chains;
    for (const auto &[pair, term] : expected) {
      chains[pair.first].push_back(term);
    }
    for (const auto &[any_head, ids] : chains) {
      ASSERT_EQ(chain(table, any_head), ids);
    }
  }
  EXPECT_EQ(table.size(), expected.size());
}

// The global tables, as in a run, with atoms for the ids below ten. Each step
// is a run of its own.
class TermFile : public testing::Test {
 protected:
  TermFile() { set_verbosity(0); }

  static void open() {
    for (int i = 0; i < 10; ++i) {
      atom_table.enter(std::to_string(i));
    }
    term_table.set_file("terms.dat");
  }

  static RunResult create(const Pairs &pairs) {
    return run_in_child([&pairs] {
      open();
      enter(term_table, pairs);
      term_table.write();
    });
  }

  static RunResult go_on(const Pairs &pairs) {
    return run_in_child([&pairs] {
      open();
      term_table.read();
      enter(term_table, pairs);
      term_table.write();
    });
  }

  // The status of a run that holds the file against `pairs` in id order.
  static int read_back(const Pairs &pairs) {
    return run_in_child([&pairs] {
             open();
             term_table.read();
             const std::uint32_t size = term_table.size();
             const Ids ids = enter(term_table, pairs);
             bool same = size == pairs.size() && size == term_table.size() &&
                         size == term_table.nr_written();
             for (std::uint32_t id = 0; id < ids.size(); ++id) {
               same = same && ids[id] == id;
             }
             std::exit(same ? 0 : 99);
           })
        .status;
  }

 private:
  TemporaryDirectory directory_;
};

TEST_F(TermFile, HoldsTheFourNumbersOfATerm) {
  const RunResult run = create({{0, 1}, {2, EmptyAtom}, {0, EmptyAtom}});
  EXPECT_EQ(run.log, "creating terms.dat with 3 terms\n");
  EXPECT_EQ(hexadecimal(read_text("terms.dat")),
            "30 20 31 20 30 20 32 0A "
            "32 20 34 32 39 34 39 36 37 32 39 35 20 31 20 "
            "34 32 39 34 39 36 37 32 39 35 0A "
            "30 20 34 32 39 34 39 36 37 32 39 35 20 32 20 "
            "34 32 39 34 39 36 37 32 39 35 0A");
  create(chain_example);
  EXPECT_TRUE(read_text("terms.dat").ends_with(chain_example_lines));
}

TEST_F(TermFile, IsCreatedWithoutTerms) {
  const RunResult run = create({});
  EXPECT_EQ(run.log, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(read_text("terms.dat"), "");
  EXPECT_EQ(go_on({}).status, 0);
}

TEST_F(TermFile, GivesTheChainBack) {
  create(chain_example);
  EXPECT_EQ(read_back(chain_example), 0);
  const RunResult run = run_in_child([] {
    open();
    term_table.read();
    std::exit(chain(term_table, 1) == Ids{1, 0, 3, 2, 4} ? 0 : 99);
  });
  EXPECT_EQ(run.status, 0);
}

TEST_F(TermFile, GrowsByNewTermsOnly) {
  create({{1, 5}, {1, 9}});
  EXPECT_EQ(go_on({{1, 9}}).log, "");
  EXPECT_EQ(read_text("terms.dat"), "1 5 0 1\n1 9 1 4294967295\n");
  EXPECT_EQ(go_on({{1, 7}, {1, 8}}).log,
            "updating terms.dat from 2 to 4 terms\n");
  // The first line still leads to the third term of the chain.
  EXPECT_EQ(read_text("terms.dat"),
            "1 5 0 1\n1 9 1 4294967295\n1 7 2 3\n1 8 3 1\n");
  EXPECT_EQ(read_back({{1, 5}, {1, 9}, {1, 7}, {1, 8}}), 0);
}

TEST_F(TermFile, MakesNothingOfTheLastTwoNumbers) {
  write_text("terms.dat", "1 5 77 99\n1 3 0 0");
  EXPECT_EQ(go_on({{1, 4}}).status, 0);
  EXPECT_EQ(read_text("terms.dat"), "1 5 77 99\n1 3 0 0\n1 4 2 0\n");
}

TEST_F(TermFile, IsRefusedIfDamaged) {
  const std::string cases[] = {
      "\n",
      "1 2 0\n",
      "1 2 0 4294967295 \n",
      "1 2 0 4294967295 0\n",
      " 1 2 0 4294967295\n",
      "1  2 0 4294967295\n",
      "1\t2 0 4294967295\n",
      "1 2 0 4294967295\r\n",
      "1 -2 0 4294967295\n",
      "1 2 0 4294967296\n",
      "1 x 0 4294967295\n",
      "1 2 0 0\n\n3 4 0 0\n",
      // A head that is none, atoms that do not exist, a pair told twice.
      "4294967295 2 0 4294967295\n",
      "10 2 0 4294967295\n",
      "1 10 0 4294967295\n",
      "1 4294967294 0 4294967295\n",
      "1 2 0 4294967295\n1 2 1 4294967295\n",
  };
  for (const std::string &content : cases) {
    write_text("terms.dat", content);
    const RunResult run = go_on({{8, 9}});
    EXPECT_EQ(run.status, 1) << content;
    EXPECT_EQ(run.screen,
              "ERROR: format error in file `terms.dat'\naborting...\n");
    EXPECT_EQ(read_text("terms.dat"), content);
  }
}

TEST_F(TermFile, EndsTheRunIfItFails) {
  const struct {
    std::string file;
    void (TermTable::*operation)();
    int status;
    std::string message;
  } cases[] = {
      {"missing", &TermTable::read, ENOENT,
       "cannot open file `missing' for reading"},
      {".", &TermTable::read, EISDIR, "error reading file `.'"},
      {".", &TermTable::write, EISDIR, "cannot open file `.' for writing"},
      {"/dev/full", &TermTable::write, ENOSPC,
       "error writing file `/dev/full'"},
  };
  for (const auto &failure : cases) {
    const RunResult run = run_in_child([&failure] {
      TermTable table;
      table.set_file(failure.file);
      if (failure.operation == &TermTable::write)
        table.enter(0, 1);
      (table.*failure.operation)();
    });
    EXPECT_EQ(run.status, failure.status);
    EXPECT_EQ(run.screen, "ERROR: " + failure.message +
                              "\naborting... (errno = " +
                              std::to_string(failure.status) + ")\n");
  }
}

}  // namespace
}  // namespace vek
