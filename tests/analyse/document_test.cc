#include "analyse/document.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "analysis_check.h"
#include "support/temporary_directory.h"

namespace vek::analysis {
namespace {

std::string analyse(std::string_view bytes,
                    std::size_t buffer_size = DocumentReader::usual_buffer) {
  TextAnalyser analyser("none", Terms::both, Numbers::keep,
                        {.buffer = buffer_size});
  return analyser.analyse(bytes);
}

TEST(DocumentReader, ReadsAllAsWindows1252IfAByteIsNotUtf8) {
  EXPECT_EQ(analyse("\xEF\xBB\xBFKäse"), "käse\n");
  EXPECT_EQ(analyse("Cafe\u0301"), "café\n");
  EXPECT_EQ(analyse("K\xE4se, \xC3\xA4"), "käse ã\n");
  EXPECT_EQ(analyse("\xEF\xBB\xBFK\xE4se, na\x92\x9F, z\x8C\x81y"),
            "käse na'ÿ zœ y\n");
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
  for (std::size_t i = 0; i < 60; ++i) {
    tail +=
        "U.S. état O'Neill 1,000.5 \r\n\r\nlong-\nterm é.ü… 中国 x\u0301y "
        "a\u2029b" +
        std::string(11 * i, 'w') + "'s ";
  }
  for (std::size_t i = 0; i < 120; ++i) {
    for (const char *end : {"", "\xE9"}) {
      const std::string text = std::string(i, '.') + tail + end;
      ASSERT_EQ(analyse(text, DocumentReader::least_buffer), analyse(text))
          << i;
    }
  }
}

TEST(DocumentReader, TellsWhenTheSourceFails) {
  // Gives so many bytes and then fails.
  struct Broken : ByteSource {
    std::ptrdiff_t read(std::uint64_t offset, char *to,
                        std::size_t size) override {
      std::fill_n(to, size, 'a');
      return offset >= limit ? -1 : static_cast<std::ptrdiff_t>(size);
    }
    std::uint64_t limit = 0;
  } source;
  struct NoWords : WordSink {
    void word(std::string_view, Gap) override {}
  } sink;
  Tokeniser tokeniser({}, sink);
  for (const std::uint64_t limit : {0U, 1U, 100000U}) {
    source.limit = limit;
    EXPECT_FALSE(DocumentReader().read(source, tokeniser)) << limit;
  }
}

TEST(FileSource, ReadsNoMoreThanThereWasAndWhatHasNoSize) {
  const TemporaryDirectory directory;
  write_text("a", "0123456789");
  FileSource source;
  ASSERT_EQ(source.open("a"), "");
  write_text("a", "0123456789more");
  char buffer[20];
  EXPECT_EQ(source.read(8, buffer, 20), 2);
  // What the kernel makes up.
  ASSERT_EQ(source.open("/proc/self/status"), "");
  EXPECT_EQ(source.read(0, buffer, 4), 4);
  EXPECT_EQ(std::string_view(buffer, 4), "Name");
}

}  // namespace
}  // namespace vek::analysis
