#include "intake/collection.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "classes/classtab.h"
#include "intake/analyser.h"
#include "params/params.h"
#include "store/database.h"
#include "support/child_run.h"
#include "support/messages.h"
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
      {"a b\nc d", "1<a b>2<c d>"},
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
      {".txt a", "<.txt>(a)"},
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

TEST(BaseName, IsTheLastComponentWithItsSlash) {
  const std::pair<const char *, const char *> cases[] = {
      {"/a/b", "b"}, {"/a/b/", "b/"}, {"a", "a"},   {"a/", "a/"},
      {"a//", "/"},  {"/", "/"},      {"//", "/"},  {"", ""},
      {"../x", "x"}, {"..", ".."},    {"./", "./"}, {"/a.b/c d", "c d"},
      {"a/./.", "."}};
  for (const auto &[directory, name] : cases)
    EXPECT_EQ(base_name(directory), name) << directory;
  TemporaryDirectory here;
  std::filesystem::create_directory("work");
  std::filesystem::current_path("work");
  EXPECT_EQ(base_name("."), "work");
}

TEST(Collection, NamesWhatCannotBeStoredAndEndsAtALineThatIsTooLong) {
  const TemporaryDirectory directory;
  const std::string longest(2045, 'y');
  write_text("ex/train", "a x\nb good/b\\ad\\\nb good/b\\ad\\ \"\nb " +
                             longest + "\nc z\nd " + longest + "y\nd x\n");
  write_text("ex/test", "c \"/son y/z\"/\n");
  for (const std::string name : {"a", "b", "c"})
    write_text("ex/files/" + name + ".txt", name);
  const RunResult run = run_in_child([] {
    params.set_file_directory("ex/files");
    analyser.open("");
    data_base.open("data");
    data_base.read(false);
    collect_documents("ex");
    class_table.gather_documents();
    for (std::uint32_t id = 0; id < class_table.size(); ++id) {
      std::string line = class_table.full_name(id).substr(0, 9) + ':';
      for (const auto &[name, list] : class_table.get_data(id).train_docs)
        line += ' ' + name;
      log_always(5, line);
    }
  });
  EXPECT_EQ(run.status, 0);
  std::string expected;
  for (const std::string &place :
       {"train: line 2: class name `b\\ad\\"s, "train: line 3: class name `\""s,
        "train: line 4: class name `" + longest.substr(0, 200),
        "test: line 1: class name `\""s, "test: line 1: class name `z\"/"s}) {
    expected += "WARNING: file ex/" + place +
                "' cannot be stored in the data directory\n";
  }
  EXPECT_EQ(run.screen, expected);
  EXPECT_EQ(run.log, expected +
                         "ex: a b c\nx: a\ngood: b\ngood/b\\ad: b\n\": b\n"
                         "yyyyyyyyy: b\nz: c\n\"/son:\ny:\ny/z\"/:\n");
}

}  // namespace
}  // namespace vek
