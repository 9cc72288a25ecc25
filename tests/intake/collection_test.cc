#include "intake/collection.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

#include "intake/lists.h"
#include "support/temporary_directory.h"

namespace vek {
namespace {

using namespace std::string_literals;

std::string lines_of(const std::string &text) {
  ListReader reader(text);
  std::string out;
  for (std::string line; reader.next(line);) {
    out += std::to_string(reader.line_number()) + '<' + line + '>';
  }
  return out + (reader.too_long() ? " too long" : "");
}

TEST(ListReader, GivesTheLinesUpToOneThatIsTooLong) {
  const std::string longest(2047, 'x');
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {"\n\na\n", "1<>2<>3<a>"},
      {"a\r\nb\0c\n"s, "1<a\r>2<b\0c>"s},
      {longest + "\nb\n", "1<" + longest + ">2<b>"},
      {longest, "1<" + longest + ">"},
      {"a\n" + longest + "x\nb\n", "1<a> too long"},
      {longest + "x", " too long"}};
  for (const auto &[text, lines] : cases)
    EXPECT_EQ(lines_of(text), lines);
}

std::string parsed(const std::string &line) {
  ListEntry entry;
  if (!parse_list_line(line, entry))
    return "malformed";
  std::string out = '<' + entry.document + '>';
  for (const std::string &path : entry.classes)
    out += '(' + path + ')';
  return out;
}

TEST(ListLine, IsADocumentAndItsCleanedClasses) {
  const std::pair<std::string, std::string> cases[] = {
      {"doc1.txt   earn  acq earn ", "<doc1>(earn)(acq)(earn)"},
      {"sub/doc.txt.txt sport/tennis", "<sub/doc.txt>(sport/tennis)"},
      // Colon first, then one question mark.
      {"d ?earn:0.5", "<d>(earn)"},
      {"d ??a ?:b :c ?", "<d>(?a)()()()"},
      {"d a:b:c a?b", "<d>(a)(a?b)"},
      // Only the blank separates.
      {"d\te a\tb\r", "<d\te>(a\tb\r)"},
      {" doc1 earn", "<>(doc1)(earn)"},
      {"  doc1", "<>(doc1)"},
      {"", "malformed"},
      {"doc1", "malformed"},
      {"doc1   ", "malformed"},
      {"doc1 e\0rn"s, "malformed"},
      {std::string(2045, 'd') + " c", "<" + std::string(2045, 'd') + ">(c)"}};
  for (const auto &[line, entry] : cases)
    EXPECT_EQ(parsed(line), entry) << line;
}

TEST(List, IsOddWithAMarkInFrontOrCarriageReturns) {
  const std::string mark = "\xEF\xBB\xBF";
  const std::string of_mark = "a byte-order mark is part of the first name";
  const std::string of_returns =
      "the lines end in CR LF: the carriage returns are parts of names";
  const std::pair<std::string, std::string> cases[] = {
      {"a\rb\n" + mark, ""},
      {mark + "a x\n", of_mark},
      {"a x\r\nb x\r\n", of_returns},
      {mark + "a x\r\n", of_mark + ", and " + of_returns}};
  for (const auto &[text, oddity] : cases)
    EXPECT_EQ(list_oddity(text), oddity) << text;
}

TEST(Request, HoldsNoControlCharacterAndNoPathThatIsTooLong) {
  EXPECT_EQ(request_fault("\xC3\xA4 b", std::string(4095, 'x')), "");
  EXPECT_NE(request_fault("a", std::string(4096, 'x')), "");
  for (const char *name : {"a\nb", "\t", "\x7F"})
    EXPECT_NE(request_fault(name, name), "");
}

TEST(BaseName, IsTheLastComponentWithItsSlash) {
  const std::pair<const char *, const char *> cases[] = {
      {"/a.b/c d", "c d"}, {"/a/b/", "b/"}, {"a", "a"},
      {"a//", "/"},        {"/", "/"},      {"", ""},
      {"..", ".."},        {"./", "./"},    {"a/./.", "."}};
  std::string name;
  for (const auto &[directory, expected] : cases) {
    EXPECT_TRUE(base_name(directory, name));
    EXPECT_EQ(name, expected) << directory;
  }
  TemporaryDirectory here;
  std::filesystem::create_directory("work");
  std::filesystem::current_path("work");
  EXPECT_TRUE(base_name(".", name));
  EXPECT_EQ(name, "work");
}

TEST(InputDocument, EndsInTxtAndIsNotHidden) {
  std::string name;
  for (const std::string entry : {"a", "x.txt", " "}) {
    EXPECT_TRUE(is_input_document(entry + ".txt", name));
    EXPECT_EQ(name, entry);
  }
  for (const char *entry : {".txt", ".a.txt", "plain", "upper.TXT", "a.txt~"})
    EXPECT_FALSE(is_input_document(entry, name)) << entry;
}

}  // namespace
}  // namespace vek
