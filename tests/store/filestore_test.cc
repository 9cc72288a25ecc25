#include "store/filestore.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

// What is to go wrong with one coming write(): the call with this number, from
// 1, fails with `error`, or moves only `moves` bytes.
struct WriteFault {
  int call = 0;
  int error = 0;
  std::size_t moves = 0;
  bool pretend = false;  // nothing is moved, and all is reported as written
};

constinit WriteFault write_fault;
constinit int fallocate_error = 0;

}  // namespace

// The store's calls come here, since a program goes before its libraries.
extern "C" ssize_t write(int fd, const void *data, std::size_t size) {
  if (write_fault.call != 0 && --write_fault.call == 0) {
    errno = write_fault.error;
    if (write_fault.error != 0)
      return -1;
    if (write_fault.pretend)
      return static_cast<ssize_t>(size);
    size = std::min(size, write_fault.moves);
  }
  return syscall(SYS_write, fd, data, size);
}

extern "C" int fallocate(int fd, int mode, off_t offset, off_t length) {
  errno = fallocate_error;
  if (fallocate_error != 0)
    return -1;
  return static_cast<int>(syscall(SYS_fallocate, fd, mode, offset, length));
}

namespace {

using testing::ExitedWithCode;
using testing::KilledBySignal;

struct Closer {
  void operator()(FileStore *store_P) const { filestore_close(store_P); }
};
using OpenStore = std::unique_ptr<FileStore, Closer>;
using Content = std::map<std::string, std::string>;

std::string word(std::uint32_t value) {
  std::string out;
  for (unsigned shift = 0; shift < 32; shift += 8) {
    out += static_cast<char>(value >> shift & 0xFF);
  }
  return out;
}

std::string entry(std::string_view name, std::uint32_t id, std::uint32_t offset,
                  std::uint32_t size) {
  std::string out(name);
  out += '\0';
  return out + word(id) + word(offset) + word(size) + word(0x5F000000);
}

std::string hex(std::string_view bytes) {
  std::string out;
  for (const char byte : bytes) {
    std::array<char, 4> text;
    std::snprintf(text.data(), text.size(), "%02X ",
                  static_cast<unsigned>(static_cast<unsigned char>(byte)));
    out += text.data();
  }
  return out;
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

std::string names_of(const OpenStore &store) {
  std::string out;
  GList *list_P = filestore_get_filenames(store.get());
  for (const GList *at_P = list_P; at_P != nullptr; at_P = at_P->next) {
    out.append(static_cast<const char *>(at_P->data)) += ' ';
  }
  g_list_free(list_P);
  return out;
}

class Store : public testing::Test {
 protected:
  Store() : directory_(testing::TempDir() + "filestore.XXXXXX") {
    if (mkdtemp(directory_.data()) == nullptr)
      std::abort();
  }
  ~Store() override { std::filesystem::remove_all(directory_); }

  std::string path(const std::string &suffix) const {
    return directory_ + "/store" + suffix;
  }
  OpenStore open() const { return OpenStore(filestore_open(path("").c_str())); }
  void set_file(const std::string &suffix, std::string_view bytes) const {
    std::ofstream(path(suffix), std::ios::binary) << bytes;
  }
  // A file of `size` bytes that takes no room on the disk.
  void set_size(const std::string &suffix, std::uint64_t size) const {
    set_file(suffix, "");
    std::filesystem::resize_file(path(suffix), size);
  }
  std::string file(const std::string &suffix) const {
    std::ifstream in(path(suffix), std::ios::binary);
    return (std::ostringstream() << in.rdbuf()).str();
  }
  bool exists(const std::string &suffix) const {
    return std::filesystem::exists(path(suffix));
  }
  // All files of the directory.
  Content content() const {
    Content out;
    for (const auto &item : std::filesystem::directory_iterator(directory_)) {
      const std::string name = item.path().extension();
      out[name] = item.is_regular_file() ? hex(file(name)) : "";
    }
    return out;
  }
  // To be called in a child process: one that hangs is ended.
  void try_to_open() const {
    alarm(60);
    open();
  }
  // To be called in a child process that is to end by exit(), which leaves
  // `store` alone: closes it then, as a global object's destructor would.
  void close_at_exit(const OpenStore &store) const {
    static FileStore *store_P;
    store_P = store.get();
    std::atexit([] { filestore_close(store_P); });
  }
  void put_and_close_at_exit(const char *data_P, unsigned size) const {
    OpenStore store = open();
    close_at_exit(store);
    filestore_put_file(store.get(), "a", data_P, size);
  }

  std::string directory_;
};

using StoreDeathTest = Store;

unsigned mode_of(const std::string &path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

TEST_F(Store, IsCreatedWithAnEmptyIndexAndClosedWithTwoZeroWords) {
  umask(0);
  OpenStore store = open();
  ASSERT_TRUE(exists(".idx"));
  EXPECT_EQ(file(".idx"), "");
  EXPECT_EQ(mode_of(path(".idx")), 0640U);
  store.reset();
  EXPECT_EQ(hex(file(".idx")), "00 00 00 00 00 00 00 00 ");
  EXPECT_FALSE(exists(".000"));
}

TEST_F(Store, WritesTheIndexOfOneBlock) {
  umask(0);
  const auto before = static_cast<std::uint32_t>(std::time(nullptr));
  OpenStore store = open();
  put(store, "a", "0123456789");
  EXPECT_EQ(file(".000"), "0123456789");
  EXPECT_EQ(mode_of(path(".000")), 0640U);
  const std::uint32_t time = filestore_get_node(store.get(), "a")->time;
  EXPECT_GE(time, before);
  EXPECT_LE(time, before + 60);
  store.reset();
  EXPECT_EQ(hex(file(".idx")),
            "01 00 00 00 01 00 00 00 61 00 00 00 00 00 00 00 00 00 "
            "0A 00 00 00 " +
                hex(word(time)));
}

TEST_F(Store, GivesBackBlocksOfAllNamesAndSizes) {
  const Content blocks = {
      {"a", "short"},
      {"ab", std::string("\0x\0", 3)},
      {"a b\nc", "name with blank and line end"},
      {"\xFF\x80\x01", "name of odd bytes"},
      {"", "empty name"},
      {"empty block", ""},
      {std::string(1000000, 'n'), "name beyond any buffer"},
  };
  OpenStore store = open();
  for (const auto &[name, data] : blocks) {
    put(store, name, data);
  }
  for (int i = 0; i < 50000; ++i) {
    put(store, "file" + std::to_string(i), std::to_string(i));
  }
  const auto check = [&] {
    for (const auto &[name, data] : blocks) {
      EXPECT_EQ(get(store, name), data);
    }
    for (int i = 0; i < 50000; i += 7) {
      ASSERT_EQ(get(store, "file" + std::to_string(i)), std::to_string(i));
    }
  };
  check();
  store.reset();
  store = open();
  check();
}

TEST_F(Store, LeavesResultsOfAnUnknownNameUntouched) {
  OpenStore store = open();
  put(store, "ab", "data");
  int mark = 0;
  void *data_P = &mark;
  std::size_t size = 77;
  EXPECT_FALSE(filestore_get_file(store.get(), "a", &data_P, &size));
  EXPECT_EQ(data_P, &mark);
  EXPECT_EQ(size, 77U);
  EXPECT_FALSE(filestore_file_exists(store.get(), "abc"));
  EXPECT_EQ(filestore_get_node(store.get(), ""), nullptr);
}

TEST_F(Store, AppendsABlockThatIsPutAgain) {
  OpenStore store = open();
  put(store, "a", "first");
  const FileStoreNode *old_P = filestore_get_node(store.get(), "a");
  put(store, "a", "again");
  const FileStoreNode *new_P = filestore_get_node(store.get(), "a");
  EXPECT_EQ(old_P->offset, 0);
  EXPECT_STREQ(old_P->name, "a");
  EXPECT_EQ(new_P->offset, 5);
  EXPECT_EQ(names_of(store), "a ");
  EXPECT_EQ(get(store, "a"), "again");
  store.reset();
  EXPECT_EQ(file(".000"), "firstagain");
  EXPECT_EQ(file(".idx").size(), 26U);
  EXPECT_EQ(get(open(), "a"), "again");
}

TEST_F(StoreDeathTest, ForgetsNamesThatWereNotSynced) {
  const auto put_two = [this] {
    OpenStore store = open();
    put(store, "a", "synced");
    filestore_sync(store.get());
    put(store, "b", "lost");
    _exit(0);
  };
  EXPECT_EXIT(put_two(), ExitedWithCode(0), "^$");
  OpenStore store = open();
  EXPECT_EQ(names_of(store), "a ");
  put(store, "c", "new");
  EXPECT_EQ(get(store, "c"), "new");
  EXPECT_EQ(file(".000"), "syncedlostnew");
}

TEST_F(Store, WritesARepositoryTheIndexDoesNotKnowFromItsStart) {
  set_file(".idx", "");
  set_file(".000", "unknown");
  OpenStore store = open();
  EXPECT_EQ(names_of(store), "");
  put(store, "a", "new");
  EXPECT_EQ(get(store, "a"), "new");
  EXPECT_EQ(file(".000"), "newnown");
}

struct Placement {
  std::string data;
  std::uint32_t repository_id;
  std::int32_t offset;
};

struct PlacementCase {
  std::vector<std::uint64_t> sizes;  // of the repositories there are
  std::vector<Placement> puts;
};

TEST_F(Store, PutsABlockIntoTheFirstRepositoryWithRoom) {
  const std::vector<PlacementCase> cases = {
      {{}, {{"1", 0, 0}, {"2", 0, 1}}},
      {{1073741820}, {{"12345", 1, 0}, {"1234", 0, 1073741820}, {"1", 1, 5}}},
      {{1073741824}, {{"", 0, 1073741824}}},
      {{1073741825}, {{"", 1, 0}}},
      {{1073741824, 1073741823, 10}, {{"12", 2, 10}, {"1", 1, 1073741823}}},
      // The sum is small in 32 bits.
      {{0xFFFFFFFE}, {{"1234", 1, 0}}},
  };
  for (const PlacementCase &placements : cases) {
    const auto nr_sizes = static_cast<std::uint32_t>(placements.sizes.size());
    set_file(".idx", word(nr_sizes) + word(0));
    for (std::uint32_t id = 0; id < nr_sizes; ++id) {
      set_size(".00" + std::to_string(id), placements.sizes[id]);
    }
    OpenStore store = open();
    for (const Placement &wanted : placements.puts) {
      SCOPED_TRACE(testing::PrintToString(placements.sizes) + wanted.data);
      put(store, wanted.data, wanted.data);
      const FileStoreNode *node_P =
          filestore_get_node(store.get(), wanted.data.c_str());
      EXPECT_EQ(node_P->repository_id, wanted.repository_id);
      EXPECT_EQ(node_P->offset, wanted.offset);
      EXPECT_EQ(get(store, wanted.data), wanted.data);
    }
  }
}

TEST_F(Store, GivesAHugeBlockARepositoryOfItsOwn) {
  OpenStore store = open();
  write_fault = {.call = 1, .pretend = true};
  filestore_put_file(store.get(), "huge", "", 1073741825);
  put(store, "small", "");
  const FileStoreNode *node_P = filestore_get_node(store.get(), "huge");
  EXPECT_EQ(node_P->repository_id, 0U);
  EXPECT_EQ(node_P->size, 1073741825U);
  EXPECT_EQ(filestore_get_node(store.get(), "small")->repository_id, 1U);
}

TEST_F(StoreDeathTest, RefusesABlockTheFormatCannotHold) {
  for (const unsigned size : {0x7ffff001U, 0x80000000U, 0xffffffffU}) {
    EXPECT_EXIT(put_and_close_at_exit("", size), ExitedWithCode(1),
                "^filestore_put_file: a block of " + std::to_string(size) +
                    " bytes is too big\n$");
    EXPECT_EQ(hex(file(".idx")), hex(word(0) + word(0)));
    EXPECT_FALSE(exists(".000"));
  }
}

TEST_F(StoreDeathTest, RefusesABlockWhenAllRepositoriesAreFull) {
  set_file(".idx", word(8) + word(0));
  for (int id = 0; id < 8; ++id) {
    set_size(".00" + std::to_string(id), 1U << 30);
  }
  EXPECT_EXIT(put_and_close_at_exit("1", 1), ExitedWithCode(1),
              "^filestore_put_file: all 8 repositories of `.*' are full\n$");
  EXPECT_FALSE(exists(".008"));
  EXPECT_EQ(hex(file(".idx")), hex(word(8) + word(0)));
}

TEST_F(StoreDeathTest, DoesNotNameARepositoryThatCannotBeCreated) {
  std::filesystem::create_directory(path(".000"));
  EXPECT_EXIT(put_and_close_at_exit("1", 1), ExitedWithCode(1),
              "^filestore_put_file: Is a directory\n$");
  EXPECT_EQ(hex(file(".idx")), hex(word(0) + word(0)));
}

TEST_F(StoreDeathTest, StopsIfAFileCannotBeOpened) {
  set_file(".idx", word(1) + word(0));
  EXPECT_EXIT(try_to_open(), ExitedWithCode(1),
              "^filestore_open: No such file or directory\n$");
  EXPECT_FALSE(exists(".000"));
  EXPECT_EXIT(filestore_open((directory_ + "/none/store").c_str()),
              ExitedWithCode(1),
              "^filestore_open: No such file or directory\n$");
}

TEST_F(StoreDeathTest, RefusesAnIndexThatIsCutAnywhere) {
  struct Field {
    const char *primitive;
    std::size_t size;
  };
  const std::vector<Field> fields = {
      {"read_unsigned", 4}, {"read_unsigned", 4},  //
      {"read_str", 2},      {"read_unsigned", 4}, {"read_off_t", 4},
      {"read_size_t", 4},   {"read_time_t", 4},  //
      {"read_str", 3},      {"read_unsigned", 4}, {"read_off_t", 4},
      {"read_size_t", 4},   {"read_time_t", 4}};
  const std::string index =
      word(1) + word(2) + entry("a", 0, 0, 3) + entry("bc", 0, 3, 4);
  set_file(".000", "aaabbbb");
  std::size_t cut = 0;
  for (const Field &field : fields) {
    for (std::size_t rest = 0; rest < field.size; ++rest, ++cut) {
      if (cut == 0)
        continue;  // no index at all
      SCOPED_TRACE(cut);
      set_file(".idx", index.substr(0, cut));
      const Content before = content();
      const std::string counts =
          field.primitive == std::string("read_str")
              ? "0 bytes in stead of 1"
              : std::to_string(rest) + " bytes in stead of 4";
      EXPECT_EXIT(try_to_open(), ExitedWithCode(1),
                  std::string("^warning: ") + field.primitive + " read " +
                      counts +
                      "\nfilestore_open: damaged index file `.*/store.idx': "
                      "it ends too early\n$");
      EXPECT_EQ(content(), before);
    }
  }
  ASSERT_EQ(cut, index.size());
}

struct Damage {
  const char *what;
  std::string index;
  const char *message;
};

TEST_F(StoreDeathTest, RefusesAnIndexThatCannotBeRight) {
  const std::vector<Damage> cases = {
      {"one byte behind", word(1) + word(1) + entry("a", 0, 0, 10) + "x",
       "bytes behind its last entry"},
      {"bytes behind no entry", word(0) + word(0) + word(0),
       "bytes behind its last entry"},
      {"huge count", word(1) + word(0xFFFFFFFF) + entry("a", 0, 0, 10),
       "it ends too early"},
      {"repository 1 of 1", word(1) + word(1) + entry("a", 1, 0, 1),
       "entry 1 lies in repository 1 of 1"},
      {"entry of no repository", word(0) + word(1) + entry("a", 0, 0, 0),
       "entry 1 lies in repository 0 of 0"},
      {"size too big", word(1) + word(1) + entry("a", 0, 0, 11),
       "a block up to byte 11 of `.*/store.000', which has 10"},
      {"offset too big", word(1) + word(1) + entry("a", 0, 11, 0),
       "a block up to byte 11 of `.*/store.000', which has 10"},
      {"sum small in 32 bits",
       word(1) + word(2) + entry("a", 0, 8, 0xFFFFFFFF) + entry("b", 0, 0, 1),
       "a block up to byte 4294967303 of"},
      {"negative offset", word(1) + word(1) + entry("a", 0, 0xFFFFFFFF, 1),
       "entry 1 has no position"},
      {"same name",
       word(1) + word(3) + entry("a", 0, 0, 1) + entry("b", 0, 0, 1) +
           entry("a", 0, 1, 1),
       "entry 3 has the name of another"},
  };
  set_file(".000", "0123456789");
  for (const Damage &damage : cases) {
    SCOPED_TRACE(damage.what);
    set_file(".idx", damage.index);
    const Content before = content();
    EXPECT_EXIT(try_to_open(), ExitedWithCode(1),
                std::string("damaged index file `.*") + damage.message);
    EXPECT_EQ(content(), before);
  }
}

TEST_F(StoreDeathTest, AssertsThatRepositoryNumbersArePossible) {
  const std::vector<Damage> cases = {
      {"nr_stores", word(9), "res->nr_stores <= MAX_NR_STORES"},
      {"huge", word(0xFFFFFFFF), "res->nr_stores <= MAX_NR_STORES"},
      {"id", word(1) + word(1) + entry("a", 8, 0, 1),
       "node->repository_id < MAX_NR_STORES"},
  };
  for (const Damage &damage : cases) {
    SCOPED_TRACE(damage.what);
    set_file(".idx", damage.index);
    EXPECT_EXIT(try_to_open(), KilledBySignal(SIGABRT), damage.message);
    EXPECT_EQ(hex(file(".idx")), hex(damage.index));
  }
}

TEST_F(Store, OrdersTheIndexByAPostOrderWalkOfTheTree) {
  struct Case {
    const char *put;
    const char *walk;
  };
  // The trees: b over a and c; the same after a rotation; d over the trees of
  // b and f; f over a whole tree on its left and h with g on its right.
  const std::vector<Case> cases = {{"bac", "a c b "},
                                   {"abc", "a c b "},
                                   {"abcdefg", "a c b e g f d "},
                                   {"fbhadgce", "a c e d b g h f "}};
  for (const Case &order : cases) {
    set_file(".idx", "");
    OpenStore store = open();
    for (const char *at_P = order.put; *at_P != 0; ++at_P) {
      put(store, std::string(1, *at_P), "x");
    }
    EXPECT_EQ(names_of(store), order.walk);
    store.reset();
    const std::string index = file(".idx");
    std::string names;
    for (std::size_t at = 8; at < index.size(); at += 18) {
      names.append(1, index[at]) += ' ';
    }
    EXPECT_EQ(names, order.walk);
  }
}

TEST_F(Store, ReadsEntriesInAnyOrder) {
  set_file(".000", "xyz");
  set_file(".idx", word(1) + word(3) + entry("c", 0, 2, 1) +
                       entry("a", 0, 0, 1) + entry("b", 0, 1, 1));
  OpenStore store = open();
  EXPECT_EQ(names_of(store), "a c b ");
  EXPECT_EQ(get(store, "a"), "x");
  EXPECT_EQ(get(store, "b"), "y");
  EXPECT_EQ(get(store, "c"), "z");
}

TEST_F(StoreDeathTest, AssertsThatNoArgumentIsNull) {
  OpenStore store = open();
  FileStore *open_P = store.get();
  void *data_P = nullptr;
  std::size_t size = 0;
  const std::vector<std::pair<const char *, std::function<void()>>> cases = {
      {"fname", [] { filestore_open(nullptr); }},
      {"fstore", [] { filestore_close(nullptr); }},
      {"fstore", [] { filestore_sync(nullptr); }},
      {"fstore", [] { filestore_file_exists(nullptr, "a"); }},
      {"fname", [=] { filestore_file_exists(open_P, nullptr); }},
      {"fstore", [] { filestore_put_file(nullptr, "a", "", 0); }},
      {"fname", [=] { filestore_put_file(open_P, nullptr, "", 0); }},
      {"data", [=] { filestore_put_file(open_P, "a", nullptr, 0); }},
      {"fstore", [&] { filestore_get_file(nullptr, "a", &data_P, &size); }},
      {"fname", [&] { filestore_get_file(open_P, nullptr, &data_P, &size); }},
      {"data_ptr", [&] { filestore_get_file(open_P, "a", nullptr, &size); }},
      {"len_ptr", [&] { filestore_get_file(open_P, "a", &data_P, nullptr); }},
      {"fstore", [] { filestore_get_filenames(nullptr); }},
      {"fstore", [] { filestore_get_node(nullptr, "a"); }},
      {"fname", [=] { filestore_get_node(open_P, nullptr); }},
  };
  for (const auto &[argument, call] : cases) {
    EXPECT_EXIT(call(), KilledBySignal(SIGABRT),
                std::string("assertion failed: \\(") + argument + "\\)");
  }
}

TEST_F(StoreDeathTest, TellsAShortWriteOfABlockAndWritesTheRest) {
  const auto put_short = [this] {
    OpenStore store = open();
    write_fault = {.call = 1, .moves = 3};
    put(store, "a", "0123456789");
    store.reset();
    std::exit(0);
  };
  EXPECT_EXIT(put_short(), ExitedWithCode(0),
              "^warning: write_data wrote 3 bytes in stead of 10\n$");
  OpenStore store = open();
  EXPECT_EQ(get(store, "a"), "0123456789");
  put(store, "b", "next");
  EXPECT_EQ(filestore_get_node(store.get(), "b")->offset, 10);
}

// A sync that was broken off in the middle of the index.
TEST_F(Store, TakesTheIndexFromTheCopyIfThereIsOne) {
  const std::string index = word(1) + word(1) + entry("a", 0, 0, 1);
  set_file(".000", "xy");
  for (const std::string &torn : {index.substr(0, 11), std::string(), index}) {
    set_file(".idx", torn);
    set_file(".new", index);
    EXPECT_EQ(get(open(), "a"), "x");
    EXPECT_EQ(hex(file(".idx")), hex(index));
    EXPECT_FALSE(exists(".new"));
  }
}

// Left over from before, damaged, or leading to bytes that are not there.
TEST_F(Store, TakesNoCopyThatIsWorseThanTheIndex) {
  const std::string index =
      word(1) + word(2) + entry("a", 0, 0, 1) + entry("b", 0, 1, 1);
  set_file(".000", "xy");
  for (const std::string &copy :
       {word(1) + word(1) + entry("a", 0, 0, 1), std::string(8, '\xFF'),
        index + "z",
        word(1) + word(2) + entry("a", 0, 0, 1) + entry("b", 0, 1, 2)}) {
    set_file(".idx", index);
    set_file(".new", copy);
    EXPECT_EQ(get(open(), "b"), "y");
    EXPECT_FALSE(exists(".new"));
  }
}

TEST_F(Store, WritesAgainAfterAnInterruption) {
  OpenStore store = open();
  write_fault = {.call = 1, .error = EINTR};
  errno = 0;
  put(store, "a", "block");
  EXPECT_EQ(errno, 0);
  write_fault = {.call = 1, .error = EINTR};
  store.reset();
  EXPECT_EQ(get(open(), "a"), "block");
}

TEST_F(StoreDeathTest, KeepsEarlierBlocksIfOneCannotBeWritten) {
  const auto put_two = [this] {
    OpenStore store = open();
    close_at_exit(store);
    put(store, "a", "kept");
    write_fault = {.call = 1, .error = ENOSPC};
    put(store, "b", "lost");
  };
  EXPECT_EXIT(put_two(), ExitedWithCode(1),
              "^write_data: No space left on device\n$");
  OpenStore store = open();
  EXPECT_EQ(names_of(store), "a ");
  EXPECT_EQ(get(store, "a"), "kept");
}

TEST_F(StoreDeathTest, CompletesAnIndexThatWasWrittenShort) {
  struct Case {
    std::size_t moves;
    const char *message;
  };
  const std::vector<Case> cases = {
      {2, "^warning: write_unsigned wrote 2 bytes in stead of 4\n$"},
      {8, "^$"},
      {9, "^warning: write_str wrote 1 bytes in stead of 4\n$"},
      {13, "^warning: write_unsigned wrote 1 bytes in stead of 4\n$"},
      {19, "^warning: write_off_t wrote 3 bytes in stead of 4\n$"},
      {20, "^$"},
      {22, "^warning: write_size_t wrote 2 bytes in stead of 4\n$"},
      {27, "^warning: write_time_t wrote 3 bytes in stead of 4\n$"},
      {29, "^warning: write_str wrote 1 bytes in stead of 2\n$"},
  };
  set_file(".000", "xy");
  const std::string index =
      word(1) + word(2) + entry("abc", 0, 0, 1) + entry("d", 0, 1, 1);
  for (const Case &cut : cases) {
    // The tree of two entries is written in the other order.
    set_file(".idx",
             word(1) + word(2) + entry("d", 0, 1, 1) + entry("abc", 0, 0, 1));
    const auto sync = [&] {
      OpenStore store = open();
      write_fault = {.call = 1, .moves = cut.moves};
      store.reset();
      std::exit(0);
    };
    EXPECT_EXIT(sync(), ExitedWithCode(0), cut.message);
    EXPECT_EQ(hex(file(".idx")), hex(index));
  }
}

TEST_F(StoreDeathTest, DoesNotTryASecondTimeIfTheIndexCannotBeWritten) {
  struct Case {
    WriteFault fault;
    int no_room;
    const char *message;
  };
  const std::vector<Case> cases = {
      {{.call = 1, .error = EIO}, 0, "^write_unsigned: Input/output error\n$"},
      {{}, ENOSPC, "^filestore_sync: No space left on device\n$"},
  };
  for (const Case &failure : cases) {
    set_file(".idx", word(0) + word(0));
    const auto sync = [&] {
      OpenStore store = open();
      close_at_exit(store);
      put(store, "a", "block");
      write_fault = failure.fault;
      fallocate_error = failure.no_room;
      filestore_sync(store.get());
    };
    EXPECT_EXIT(sync(), ExitedWithCode(1), failure.message);
    EXPECT_EQ(hex(file(".idx")), hex(word(0) + word(0)));
  }
}

TEST_F(StoreDeathTest, FailsInAHandlerOfExitWithoutACrash) {
  const auto leave = [this] {
    OpenStore store = open();
    close_at_exit(store);
    write_fault = {.call = 1, .error = EIO};
    std::exit(0);
  };
  EXPECT_EXIT(leave(), ExitedWithCode(1),
              "^write_unsigned: Input/output error\n$");
}

TEST_F(Store, SyncsWhereRoomCannotBeReserved) {
  OpenStore store = open();
  put(store, "a", "block");
  fallocate_error = EOPNOTSUPP;
  errno = 0;
  filestore_sync(store.get());
  EXPECT_EQ(errno, 0);
  EXPECT_EQ(file(".idx").size(), 26U);
}

TEST_F(StoreDeathTest, FillsUpABlockThatCannotBeReadWhole) {
  const auto read_short = [this] {
    OpenStore store = open();
    put(store, "a", "0123456789");
    std::filesystem::resize_file(path(".000"), 3);
    const bool right = get(store, "a") == std::string("012\0\0\0\0\0\0\0", 10);
    store.reset();
    std::exit(right ? 0 : 2);
  };
  EXPECT_EXIT(read_short(), ExitedWithCode(0),
              "^warning: read_data read 3 bytes in stead of 10\n$");
}

}  // namespace
