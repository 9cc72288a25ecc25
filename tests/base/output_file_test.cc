#include "base/output_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "support/temporary_directory.h"

namespace vek {
namespace {

using Mode = OutputFile::Mode;

void write_in_pieces(OutputFile &file, const std::string &text,
                     std::size_t piece) {
  for (std::size_t at = 0; at < text.size(); at += piece)
    file << text.substr(at, piece);
}

TEST(OutputFile, TruncatesOrAppends) {
  const TemporaryDirectory directory;
  write_text("file", "long text that goes away");
  const mode_t before = umask(0);
  OutputFile().open("new", Mode::append);
  umask(before);
  EXPECT_EQ(std::filesystem::status("new").permissions(),
            std::filesystem::perms(0664));
  OutputFile file;
  file.open("file", Mode::truncate);
  file << "short";
  file.close();
  file.open("file", Mode::append);
  file << ", more";
  EXPECT_TRUE(file.sync_to_disk());
  EXPECT_EQ(read_text("file"), "short, more");
}

// So that the buffer ends within pieces and between them.
TEST(OutputFile, WritesTheSameBytesInPiecesOfEverySize) {
  const TemporaryDirectory directory;
  std::string text(200003, '\0');
  for (std::size_t i = 0; i < text.size(); ++i)
    text[i] = char(i * i % 251);
  for (const unsigned piece : {1U, 7U, 65535U, 65536U, 65537U, 200003U}) {
    OutputFile file;
    file.open("file", Mode::truncate);
    write_in_pieces(file, text, piece);
    file.put('\n');
    file.close();
    EXPECT_TRUE(file.good());
    EXPECT_TRUE(read_text("file") == text + '\n') << piece;
  }
}

TEST(OutputFile, FailsWithErrnoOnAFullDisk) {
  for (const std::size_t size : {1U, 65536U, 200000U}) {
    OutputFile file;
    file.open("/dev/full", Mode::truncate);
    write_in_pieces(file, std::string(size, 'x'), 60000);
    errno = 0;
    EXPECT_FALSE(file.sync_to_disk());
    file.clear();
    write_in_pieces(file, std::string(size, 'x'), 60000);
    file.close();
    EXPECT_TRUE(file.fail()) << size;
    EXPECT_EQ(errno, ENOSPC) << size;
  }
}

}  // namespace
}  // namespace vek
