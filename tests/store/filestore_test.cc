#include "store/filestore.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "store/data_run.h"

namespace vek {
namespace {

using OpenStore = std::unique_ptr<FileStore, void (*)(FileStore *)>;

OpenStore open() {
  return {filestore_open("store"), filestore_close};
}

void put(const OpenStore &store, const std::string &name,
         std::string_view data) {
  filestore_put_file(store.get(), name.c_str(), data.data(),
                     static_cast<unsigned>(data.size()));
}

std::optional<std::string> get(const OpenStore &store,
                               const std::string &name) {
  void *data_P = nullptr;
  std::size_t size = 0;
  if (!filestore_get_file(store.get(), name.c_str(), &data_P, &size))
    return {};
  std::string out(static_cast<const char *>(data_P), size);
  g_free(data_P);
  return out;
}

// ---- Bytes of an index.

std::string words(std::initializer_list<std::uint32_t> values) {
  std::string out;
  for (const std::uint32_t value : values) {
    for (unsigned shift = 0; shift < 32; shift += 8)
      out += static_cast<char>(value >> shift & 0xFF);
  }
  return out;
}

std::string entry(std::string_view name, std::uint32_t id, std::uint32_t offset,
                  std::uint32_t size) {
  return std::string(name) + '\0' + words({id, offset, size, 0x5F000000});
}

// Files that take no room on the disk.
void set_repositories(const std::vector<std::uint64_t> &sizes) {
  const auto nr_sizes = static_cast<std::uint32_t>(sizes.size());
  write_text("store.idx", words({nr_sizes, 0}));
  for (std::uint32_t id = 0; id < nr_sizes; ++id) {
    const std::string path = "store.00" + std::to_string(id);
    write_text(path, "");
    std::filesystem::resize_file(path, sizes[id]);
  }
}

class Store : public testing::Test {
 protected:
  // The store is not opened, and its files are left as they are.
  static RunResult refusal(const std::string &index) {
    const auto files = [] {
      return read_text("store.idx") + read_text("store.new");
    };
    write_text("store.idx", index);
    const std::string before = files();
    RunResult result = run_in_child([] { open(); });
    EXPECT_EQ(files(), before);
    return result;
  }

  TemporaryDirectory directory_;
};

TEST_F(Store, GivesBackBlocksOfAllNamesAndSizes) {
  std::map<std::string, std::string> blocks = {
      {"ab", std::string("\0x\0", 3)},
      {"\xFF\x80\x01 \n", "name of odd bytes"},
      {"", "empty name"},
      {"empty block", ""},
      {std::string(1000000, 'n'), "name beyond any buffer"},
      {"large block", std::string(100000, 'x')},
  };
  for (int i = 0; i < 50000; ++i)
    blocks["file" + std::to_string(i)] = std::to_string(i);
  OpenStore store = open();
  for (const auto &[name, data] : blocks)
    put(store, name, data);
  for (const bool is_new : {true, false}) {
    for (const auto &[name, data] : blocks)
      ASSERT_EQ(get(store, name), data) << is_new;
    store.reset();
    store = open();
  }
}

TEST_F(Store, AppendsABlockThatIsPutAgain) {
  open();
  EXPECT_EQ(read_text("store.idx"), words({0, 0}));
  // The index does not know of it.
  write_text("store.000", "unknown that goes");
  OpenStore store = open();
  put(store, "a", "first");
  // What is read ahead here is of the old bytes.
  EXPECT_EQ(get(store, "a"), "first");
  put(store, "a", "again");
  EXPECT_EQ(get(store, "a"), "again");
  store.reset();
  EXPECT_EQ(read_text("store.000"), "firstagainat goes");
  EXPECT_EQ(get(open(), "a"), "again");
}

TEST_F(Store, PutsABlockIntoTheFirstRepositoryWithRoom) {
  struct Placement {
    std::string data;
    std::uint32_t repository_id;
    std::int32_t offset;
  };
  const struct {
    std::vector<std::uint64_t> sizes;  // of the repositories there are
    std::vector<Placement> puts;
  } cases[] = {
      {{}, {{"1", 0, 0}, {"2", 0, 1}}},
      {{1073741820}, {{"12345", 1, 0}, {"1234", 0, 1073741820}, {"1", 1, 5}}},
      {{1073741824}, {{"", 0, 1073741824}}},
      {{1073741825}, {{"", 1, 0}}},
      {{1073741824, 1073741823, 10}, {{"12", 2, 10}, {"1", 1, 1073741823}}},
      // The sum is small in 32 bits.
      {{0xFFFFFFFE}, {{"1234", 1, 0}}},
  };
  for (const auto &[sizes, puts] : cases) {
    set_repositories(sizes);
    OpenStore store = open();
    for (const auto &[data, repository_id, offset] : puts) {
      SCOPED_TRACE(testing::PrintToString(sizes) + data);
      put(store, data, data);
      const FileStoreNode &node =
          *filestore_get_node(store.get(), data.c_str());
      EXPECT_EQ(node.repository_id, repository_id);
      EXPECT_EQ(node.offset, offset);
    }
    for (const Placement &wanted : puts)
      EXPECT_EQ(get(store, wanted.data), wanted.data);
  }
}

TEST_F(Store, EndsTheProgramForABlockThatHasNoPlace) {
  const auto expect_end = [](unsigned size, const std::string &message) {
    const std::string index = read_text("store.idx");
    const RunResult result = run_in_child([=] {
      static OpenStore store = open();  // closed by exit()
      filestore_put_file(store.get(), "a", "1", size);
    });
    EXPECT_EQ(result.screen, "filestore_put_file: " + message + '\n');
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(read_text("store.idx"), index);
  };
  set_repositories({});
  expect_end(0x7ffff001, "a block of 2147479553 bytes is too big");
  expect_end(0xffffffff, "a block of 4294967295 bytes is too big");
  set_repositories(std::vector<std::uint64_t>(8, 1U << 30));
  expect_end(1, "all 8 repositories of `store' are full");
}

// Before anything is written.
TEST_F(Store, RefusesAnIndexThatCannotBeRight) {
  const std::string a = entry("a", 0, 0, 10);
  const std::string other = entry("b", 0, 0, 1);
  const std::pair<std::string, std::string> cases[] = {
      {words({1, 0xFFFFFFFF}) + a, "it ends too early"},
      {words({1, 1}) + a + "x", "it has bytes behind its last entry"},
      {words({1, 1}) + entry("a", 1, 0, 1),
       "entry 1 lies in repository 1 of 1"},
      {words({1, 1}) + entry("a", 0, 0xFFFFFFFF, 1), "entry 1 has no position"},
      {words({1, 3}) + a + other + a, "entry 3 has the name of another"},
      {words({1, 2}) + entry("a", 0, 11, 0) + other,
       "it has a block up to byte 11 of `store.000', which has 10"},
      // The sum is small in 32 bits.
      {words({1, 1}) + entry("a", 0, 8, 0xFFFFFFFF),
       "it has a block up to byte 4294967303 of `store.000', which has 10"},
      {words({9}), "res->nr_stores <= MAX_NR_STORES"},
      {words({1, 1}) + entry("a", 8, 0, 1),
       "node->repository_id < MAX_NR_STORES"},
  };
  write_text("store.000", "0123456789");
  for (const auto &[index, message] : cases) {
    const bool asserts = message.ends_with("MAX_NR_STORES");
    const RunResult result = refusal(index);
    EXPECT_NE(result.screen.find(
                  asserts ? message
                          : "filestore_open: damaged index file `store.idx': " +
                                message + '\n'),
              std::string::npos)
        << message << "; " << result.screen;
    EXPECT_EQ(result.status, asserts ? 1000 + SIGABRT : 1);
  }
  EXPECT_TRUE(refusal(words({1, 1}) + a.substr(0, 9))
                  .screen.starts_with(
                      "warning: read_off_t read 3 bytes in stead of 4\nf"));
  // Nor is a copy that is no better taken for it, or lost.
  write_text("store.new", "x");
  EXPECT_EQ(refusal("y").status, 1);
  std::filesystem::remove("store.new");
  std::filesystem::remove("store.000");
  EXPECT_EQ(refusal(words({1, 0})).screen,
            "filestore_open: No such file or directory\n");
}

TEST_F(Store, OrdersTheIndexByAPostOrderWalkOfTheTree) {
  // The trees: b over a and c; the same after a rotation; d over the trees of
  // b and f; f over a whole tree on its left and h with g on its right.
  const std::pair<std::string, std::string> cases[] = {
      {"bac", "acb"},
      {"abc", "acb"},
      {"abcdefg", "acbegfd"},
      {"fbhadgce", "acedbghf"}};
  for (const auto &[order, walk] : cases) {
    write_text("store.idx", "");
    OpenStore store = open();
    for (const char name : order)
      put(store, {name}, "x");
    store.reset();
    const std::string index = read_text("store.idx");
    std::string names;
    for (std::size_t at = 8; at < index.size(); at += 18)
      names += index[at];
    EXPECT_EQ(names, walk);
  }
}

// A sync that was broken off leaves a copy of the index, and others may have
// left or laid there what is no better than the index.
TEST_F(Store, TakesTheIndexFromTheCopyUnlessTheCopyIsWorse) {
  const std::string one = words({1, 1}) + entry("a", 0, 0, 1);
  const std::string other = words({1, 1}) + entry("a", 0, 1, 1);
  const std::string two =
      words({1, 2}) + entry("b", 0, 1, 1) + entry("a", 0, 0, 1);
  const std::string beyond =
      words({1, 2}) + entry("b", 0, 1, 2) + entry("a", 0, 0, 1);
  const struct {
    std::string index, copy, taken;
  } cases[] = {
      {one.substr(0, 11), one, one},
      {"", one, one},
      {one + "torn", one, one},
      {one, other, other},
      {one, two, two},
      {two, one, two},
      {two, two + "z", two},
      {two, beyond, two},
  };
  write_text("store.000", "xy");
  for (const auto &[index, copy, taken] : cases) {
    write_text("store.idx", index);
    write_text("store.new", copy);
    OpenStore store = open();
    EXPECT_FALSE(std::filesystem::exists("store.new"));
    EXPECT_EQ(hexadecimal(read_text("store.idx")), hexadecimal(taken));
    EXPECT_EQ(get(store, "a"), taken == other ? "y" : "x");
  }
}

TEST_F(Store, FillsUpABlockThatCannotBeReadWhole) {
  OpenStore store = open();
  put(store, "a", "0123456789");
  std::filesystem::resize_file("store.000", 3);
  const std::string filled("012\0\0\0\0\0\0\0", 10);
  mallopt(M_PERTURB, 0x55);  // new memory is not 0 by chance
  testing::internal::CaptureStderr();
  EXPECT_EQ(get(store, "a"), filled);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "warning: read_data read 3 bytes in stead of 10\n");
}

}  // namespace
}  // namespace vek
