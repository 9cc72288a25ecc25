#include "analyse/document.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "analysis_check.h"
#include "support/temporary_directory.h"

namespace vek::analysis {
namespace {

using namespace std::string_view_literals;

std::string analyse(std::string_view bytes,
                    std::size_t buffer_size = DocumentReader::usual_buffer) {
  TextAnalyser analyser("none", Terms::both, Numbers::keep,
                        {.buffer = buffer_size});
  return analyser.analyse(bytes);
}

TEST(DocumentReader, ReadsAllAsWindows1252IfAByteIsNotUtf8) {
  EXPECT_EQ(analyse("\xEF\xBB\xBFKäse"), "käse\n");
  EXPECT_EQ(analyse("\xEF\xBB\xBF"), "");
  EXPECT_EQ(analyse("Cafe\u0301"), "café\n");
  EXPECT_EQ(analyse("K\xE4se, \xC3\xA4"), "käse ã\n");
  EXPECT_EQ(analyse("it\x92s 5\x80"), "it's 5 [ 5 , it's ]\n");
  EXPECT_EQ(analyse("\xEF\xBB\xBFK\xE4se"), "käse\n");
  // The wrong byte stands far behind the first piece, and the begin has to be
  // read as Windows-1252 all the same.
  const std::string text = "\xC3\xA4." + std::string(200000, '.');
  EXPECT_EQ(analyse(text, DocumentReader::least_buffer), "ä\n");
  EXPECT_EQ(analyse(text + "\xE4", DocumentReader::least_buffer), "ã\nä\n");
  EXPECT_EQ(analyse(text + "\xC3", DocumentReader::least_buffer), "ã\nã\n");
}

// A long text in which every place is delicate, behind a growing begin, so that
// the pieces end everywhere in it.
TEST(DocumentReader, GivesTheSameWhateverTheSizeOfItsBuffer) {
  std::string tail;
  for (int i = 0; i < 60; ++i) {
    tail +=
        "U.S. état O'Neill 1,000.5 \r\n\r\nlong-\nterm é.ü… 中国 x\u0301y "
        "a\u2029b";
    tail += std::string(static_cast<std::size_t>(11 * i), 'w') + "'s ";
  }
  for (std::size_t i = 0; i < 120; ++i) {
    for (const char *end : {"", "\xE9"}) {
      const std::string text = std::string(i, '.') + tail + end;
      ASSERT_EQ(analyse(text, DocumentReader::least_buffer), analyse(text))
          << i;
    }
  }
}

// Gives so many bytes and then fails.
class Broken : public ByteSource {
 public:
  explicit Broken(std::uint64_t limit) : limit_(limit) {}
  std::ptrdiff_t read(std::uint64_t offset, char *to,
                      std::size_t size) override {
    std::fill_n(to, size, 'a');
    return offset >= limit_ ? -1 : static_cast<std::ptrdiff_t>(size);
  }

 private:
  std::uint64_t limit_;
};

TEST(DocumentReader, TellsWhenTheSourceFails) {
  class NoWords : public WordSink {
    void word(std::string_view, Gap) override {}
  } sink;
  Tokeniser tokeniser({}, sink);
  for (const std::uint64_t limit : {0U, 1U, 100000U}) {
    Broken source(limit);
    EXPECT_FALSE(DocumentReader().read(source, tokeniser)) << limit;
  }
}

TEST(FileSource, ReadsAFileFromAnyPlace) {
  const TemporaryDirectory directory;
  write_text("a", "0123456789");
  FileSource source;
  ASSERT_EQ(source.open("a"), "");
  char buffer[20];
  EXPECT_EQ(source.read(0, buffer, 4), 4);
  EXPECT_EQ(source.read(8, buffer + 4, 9), 2);
  EXPECT_EQ(std::string_view(buffer, 6), "012389");
  EXPECT_EQ(source.read(99, buffer, 20), 0);
  write_text("a", "0123456789more");
  EXPECT_EQ(source.read(8, buffer, 20), 2) << "grown meanwhile";
  // What the kernel makes up has no size.
  ASSERT_EQ(source.open("/proc/self/status"), "");
  EXPECT_EQ(source.read(0, buffer, 4), 4);
  EXPECT_EQ(std::string_view(buffer, 4), "Name");
}

TEST(FileSource, OpensNothingButFiles) {
  const TemporaryDirectory directory;
  ASSERT_EQ(mkfifo("fifo", 0600), 0);
  ASSERT_EQ(symlink("loop", "loop"), 0);
  for (const char *path : {"fifo", ".", "/dev/zero"})
    EXPECT_EQ(FileSource().open(path), "not a regular file") << path;
  EXPECT_EQ(FileSource().open("gone"), "No such file or directory");
  EXPECT_NE(FileSource().open("loop"), "");
  EXPECT_NE(FileSource().open(""), "");
  write_text("a", "text");
  EXPECT_NE(FileSource().open(std::string("a\0b"sv)), "") << "NUL in the name";
}

}  // namespace
}  // namespace vek::analysis
