#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "convert/encoding.h"
#include "convert/html.h"
#include "convert/mail.h"
#include "convert/rows.h"

namespace vek::convert {
namespace {

// What came, as lines "place key class,class text" and "place: reason".
class Recorder : public Sink {
 public:
  bool wants(const std::string &, bool) override { return true; }
  void take(Record &record) override {
    std::string classes;
    for (const std::string &name : record.classes)
      classes += (classes.empty() ? "" : ",") + name;
    text += record.place + ' ' + record.key + ' ' + classes + ' ' +
            record.text + '|';
  }
  void reject(const std::string &place, const std::string &reason,
              std::string_view) override {
    text += place + ": " + reason + '|';
  }
  std::string text;
};

std::string rows(Form form, std::string_view text,
                 const Settings &settings = {}) {
  Lines lines(reader_of(text), settings.encoding);
  Recorder recorder;
  Failure failure;
  const FilePlace file = {"FILE", "", "", ""};
  if (!read_rows(form, lines, settings, file, recorder, failure))
    return failure.text();
  return recorder.text;
}

TEST(Rows, AreTakenApart) {
  const std::string_view head = "text,class\n";
  const struct {
    std::string_view rows;
    const char *expected;
  } cases[] = {
      {"a,b\nc,d", "2  b a|3  d c|"},
      {"a,b\r\n\r\nc,d\r\n", "2  b a|4  d c|"},
      {"\"a,\n\"\"x\"\"\",b\nc,d\n", "2  b a,\n\"x\"|4  d c|"},
      {"a\nb,c,d\ne,f\n",
       "2: 1 fields instead of 2|"
       "3: 3 fields instead of 2|4  f e|"},
      // Only the line is lost in which the quote was opened.
      {"\"a,b\nc,d\ne,f\n", "2: a quote that is not closed|3  d c|4  f e|"},
      {"\"a,b\nc,\"d\"\ne,f\n",
       "2: a quote in the wrong place; see "
       "--no-quotes|3  d c|4  f e|"},
      {std::string_view("a\0,b\nc,d\n", 9), "2: NUL bytes|3  d c|"},
      {"\xFF,b\nc,d\n", "2: not valid UTF-8, or NUL; see --encoding|3  d c|"}};
  for (const auto &[text, expected] : cases)
    EXPECT_EQ(rows(Form::csv, std::string(head).append(text)), expected);
}

TEST(Rows, ColumnsAreFoundByNameAndNumber) {
  Settings settings;
  settings.text = {"B", "1"};
  settings.classes = "4";
  settings.id = "3";
  settings.separator = ";";
  // The name 3 goes before the number.
  EXPECT_EQ(rows(Form::csv, "A;B;C;x;3\na;b;c;\"p; ;q\";i\n", settings),
            "2 i p,q b\n\na|");
  settings.text = {"2"};
  settings.classes = "1";
  settings.id = "";
  settings.has_header = false;
  settings.has_quotes = false;
  EXPECT_EQ(rows(Form::tsv, "a\t\"b\" c\nd\n", settings),
            "1  a \"b\" c|2: 1 fields instead of 2|");
}

TEST(Rows, AnyEncodingIsRead) {
  Settings settings;
  settings.encoding = "WINDOWS-1252";
  EXPECT_EQ(rows(Form::csv, "text,class\n\x80 \xE4,b\n", settings),
            "2  b \xE2\x82\xAC \xC3\xA4|");
  using namespace std::string_view_literals;
  settings.encoding = "UTF-16";
  EXPECT_EQ(
      rows(Form::fasttext,
           "\xFF\xFE_\0_\0l\0a\0b\0e\0l\0_\0_\0x\0 \0\xE4\0\n\0"sv, settings),
      "1  x \xC3\xA4|");
  settings.encoding = "EUC-JP";
  EXPECT_EQ(rows(Form::csv, "text,class\n\xA4,a\n\xA4\xA2,b\n", settings),
            "2: not valid UTF-8, or NUL; see --encoding|3  b \xE3\x81\x82|");
}

TEST(Rows, JsonHasFieldsWithinFields) {
  Settings settings;
  settings.text = {"a.b"};
  const struct {
    const char *line;
    const char *expected;
  } cases[] = {{R"({"a":{"b":"x"},"class":["p","q"]})", "1  p,q x|"},
               {R"({"a":[{"b":1.50},{"b":true}],"label":7,"class":null})",
                "1  7 1.50\n\ntrue|"},
               {R"({"b":"x"})", "1: no field `a.b'; see --text|"},
               {R"(["a"])", "1: no object; one is wanted on each line|"},
               {R"({"a":)", "1: no JSON at byte 6|"},
               {R"({"a":{"b":"\u0000"},"class":"c"})",
                "1: not valid UTF-8, or NUL; see --encoding|"}};
  for (const auto &[line, expected] : cases)
    EXPECT_EQ(rows(Form::jsonl, line, settings), expected) << line;
  const std::string deep = "{\"a\":" + std::string(1000000, '[');
  EXPECT_EQ(rows(Form::jsonl, deep, settings), "1: nested more than 100 deep|");
}

TEST(Rows, LinesAreBounded) {
  const std::string line(longest_text + 10, 'x');
  EXPECT_EQ(rows(Form::csv, "text,class\n\"a\n" + line + "\nb,c\n"),
            "2: a line of more than 40 MiB|4  c b|");
  EXPECT_EQ(rows(Form::fasttext, line + "\n__label__a b"),
            "1: a line of more than 40 MiB|2  a b|");
}

TEST(Encoding, IsFoundOut) {
  using namespace std::string_view_literals;
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"plain", ""},
      {"\xEF\xBB\xBFx", ""},
      {"L'\xE9l\xE8ve a \xE9t\xE9 re\xE7u", ""},
      {"a\0b\0c\0"sv, ""},
      {"\0\0\xFE\xFF\0\0\0a"sv, ""},
      {"a\0b"sv, "NUL bytes: this is no text"},
      {"\xFF\xFE\x41"sv, "not valid UTF-16; see --encoding"}};
  for (const auto &[bytes, reason] : cases) {
    std::string text(bytes);
    EXPECT_EQ(to_utf8(text, ""), reason);
    EXPECT_TRUE(!reason.empty() || is_utf8(text));
  }
  std::string text = "L'\xE9l\xE8ve a \xE9t\xE9 re\xE7u";
  to_utf8(text, "");
  EXPECT_EQ(text, "L'\xC3\xA9l\xC3\xA8ve a \xC3\xA9t\xC3\xA9 re\xC3\xA7u");
  EXPECT_EQ(to_utf8(text, "ASCII"), "not valid ASCII");
}

TEST(Html, IsWhatAReaderSees) {
  const std::pair<const char *, const char *> cases[] = {
      {"<title>T</title><p>a <b>b</b>c<p>d", "T\na bc\nd\n"},
      {"a<script>if (x<y) z</script>b<style>p{}</style>c", "abc\n"},
      {"&lt;&auml;&#8364;&nbsp;<!-- no -->x",
       "<\xC3\xA4\xE2\x82\xAC\xC2\xA0x\n"},
      {"<ul><li>a<li>b</ul>", "a\nb\n"},
      {"plain &amp; simple", "plain & simple\n"},
      {"", ""}};
  for (const auto &[page, text] : cases)
    EXPECT_EQ(html_text(page), text) << page;
  std::string page = "<meta charset='iso-8859-2'><p>\xB1";
  EXPECT_EQ(page_to_text(page, ""), "");
  EXPECT_EQ(page, "\xC4\x85\n");
}

std::string mail(const std::string &bytes, const Settings &settings = {}) {
  Record record;
  const std::string reason = read_message(bytes, settings, record);
  std::string classes;
  for (const std::string &name : record.classes)
    classes += '[' + name + ']';
  return reason.empty() ? classes + record.key + '|' + record.text : reason;
}

TEST(Mail, HasSubjectAndText) {
  EXPECT_EQ(mail("Subject: =?iso-8859-1?Q?gr=FC=DFe?=\nMessage-ID: <i@x>\n"
                 "Content-Type: text/plain; charset=iso-8859-1\n"
                 "Content-Transfer-Encoding: quoted-printable\n\n=E4=\nb\n"),
            "i@x|gr\xC3\xBC\xC3\x9F"
            "e\n\n\xC3\xA4"
            "b\n");
  const std::string alternatives =
      "Content-Type: multipart/mixed; boundary=o\n\n"
      "--o\nContent-Type: multipart/alternative; boundary=i\n\n"
      "--i\nContent-Type: text/html\n\n<p>rich\n"
      "--i\nContent-Type: text/plain\n\nplain\n--i--\n"
      "--o\nContent-Type: text/html\n\n<p>a<p>b\n"
      "--o\nContent-Type: text/plain\nContent-Disposition: attachment\n\nno\n"
      "--o\nContent-Type: image/png\n\nno\n"
      "--o\nContent-Type: message/rfc822\n\nSubject: inner\n\nmail\n--o--\n";
  EXPECT_EQ(mail(alternatives), "|plain\n\na\nb\n\n\ninner\n\nmail");
  Settings settings;
  settings.classes = "X-Label";
  settings.separator = ",";
  EXPECT_EQ(mail("X-Label: a, b\n\nx\n", settings), "[a][b]|x\n");
}

TEST(Mail, BombsAreRefused) {
  std::string nested;
  std::string forwarded;
  for (int i = 0; i < 5000; ++i) {
    const std::string name = std::to_string(i);
    nested += "Content-Type: multipart/mixed; boundary=b" + name + "\n\n--b" +
              name + "\n";
    forwarded += "Content-Type: message/rfc822\n\n";
  }
  EXPECT_EQ(mail(nested), "too many parts, or nested too deep");
  EXPECT_EQ(mail(forwarded), "too many parts, or nested too deep");
  std::string headers;
  for (int i = 0; i < 300000; ++i)
    headers += "a: b\n";
  EXPECT_EQ(mail(headers), "too many headers or parts");
}

TEST(Mail, MailboxIsDividedWhereAMessageBegins) {
  const std::string box =
      "From a@b Mon Nov  2 10:00:00 2020\nSubject: one\n\nx\n\n"
      "From here it is text\n>From there too\n"
      "From a@b Mon Nov  2 10:00:00 2020\n\n"
      "From a@b Mon Nov  2 10:00:00 2020\nMessage-ID: <2>\n\ny\n";
  Lines lines(reader_of(box));
  Recorder recorder;
  Failure failure;
  ASSERT_TRUE(read_mbox(lines, {}, {"FILE", "m", "c", ""}, recorder, failure));
  EXPECT_EQ(recorder.text,
            "m:1  c one\n\nx\n\nFrom here it is text\nFrom there too\n"
            "From a@b Mon Nov  2 10:00:00 2020\n\n|m:10 2 c y\n|");
}

TEST(Settings, FiltersAreForEndings) {
  Settings settings;
  settings.filters = {"cat", "pdf=a=b", "docx=c {}"};
  EXPECT_EQ(settings.filter_for("x/y.PDF"), "a=b");
  EXPECT_EQ(settings.filter_for("x.docx/y"), "cat");
  settings.filters = {"pdf=a", "pdf=b"};
  EXPECT_EQ(settings.filter_for(".pdf"), "");
  EXPECT_EQ(settings.filter_for("a.pdf"), "b");
}

}  // namespace
}  // namespace vek::convert
