#include "explain/page.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "explain/page_sources.h"
#include "report/page_frame.h"
#include "report/table.h"

namespace vek::explaining {
namespace {

using reporting::Cell;
using reporting::html_text;
using reporting::Table;

// Shades of each of the two colours.
constexpr int nr_shades = 4;

// Machines get names with an underline.
std::string heading(std::string text) {
  std::ranges::replace(text, '_', ' ');
  return html_text(text);
}

std::string element(const std::string &tag, const std::string &content) {
  return '<' + tag + '>' + content + "</" + tag.substr(0, tag.find(' ')) + '>';
}

std::string html_table(const Table &table, const std::string &caption) {
  std::string head;
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const bool is_text =
        table.rows.empty() ||
        std::holds_alternative<std::string>(table.rows.front()[i]);
    head += element(
        is_text ? "th scope=\"col\"" : "th scope=\"col\" class=\"number\"",
        heading(table.columns[i]));
  }
  std::string body;
  const std::size_t nr_shown = std::min(table.nr_shown, table.rows.size());
  for (std::size_t row = 0; row < nr_shown; ++row) {
    std::string line;
    for (const Cell &cell : table.rows[row]) {
      const bool is_text = std::holds_alternative<std::string>(cell);
      line += element(is_text ? "td" : "td class=\"number\"",
                      html_text(reader_text(cell)));
    }
    body += element("tr", line) + '\n';
  }
  std::string text =
      "<div class=\"scroll\">" +
      element("table", element("caption", html_text(caption)) +
                           element("thead", element("tr", head)) +
                           element("tbody", body)) +
      "</div>\n";
  if (nr_shown < table.rows.size()) {
    text += element(
        "p class=\"soft\"",
        "... and " + std::to_string(table.rows.size() - nr_shown) + " more");
  }
  return text;
}

std::string note_of(const Account &account, const TermShares &shares,
                    const Mark &mark) {
  const Column column(shares.total, Column::Precision::readable);
  std::string note;
  for (const TermShare *share_P : mark.shares) {
    const std::string number = column.text(share_P->favour);
    note += (note.empty() ? "" : "; ") + term_text(account, *share_P) + ' ' +
            (number.starts_with('-') ? "" : "+") + number;
  }
  return note;
}

std::string marked_text(const Account &account, const TermShares &shares,
                        const TextWords &words) {
  std::size_t nr_unmarked = 0;
  const std::vector<Mark> marks =
      find_marks(account.model.model(), words, shares, nr_unmarked);
  double largest = 0.0;
  for (const Mark &mark : marks) {
    if (std::isfinite(mark.value))
      largest = std::max(largest, std::abs(mark.value));
  }
  const std::string &text = words.text();
  std::string html;
  std::size_t place = 0;
  for (std::size_t i = 0; i < marks.size(); ++i) {
    const TextWords::Word &word = words.words()[i];
    if (marks[i].shares.empty())
      continue;
    html += html_text(text.substr(place, word.begin - place));
    const double part = std::abs(marks[i].value) / largest;
    const int shade =
        part > 0.0 ? std::clamp(static_cast<int>(std::ceil(part * nr_shades)),
                                1, nr_shades)
                   : 1;
    html += "<mark class=\"" + std::string(marks[i].value < 0.0 ? "a" : "f") +
            std::to_string(shade) + "\" title=\"" +
            html_text(note_of(account, shares, marks[i])) + "\">" +
            html_text(text.substr(word.begin, word.size)) + "</mark>";
    place = word.begin + word.size;
  }
  html += html_text(text.substr(place));
  std::string note =
      "The darker, the more a word and the pairs in which it stands favour the "
      "class (solid line) or speak against it (dotted line).";
  if (nr_unmarked > 0) {
    note += ' ' + std::to_string(nr_unmarked) +
            " terms are not marked: of what the analyser makes of words "
            "together, or far apart, no word is known.";
  }
  if (!words.has_all())
    note += " The analyser was too slow to mark all words.";
  if (words.is_cut())
    note += " The text is cut.";
  return element("pre class=\"text\"", html) + '\n' +
         element("p class=\"soft\"", html_text(note)) + '\n';
}

}  // namespace

std::string make_page(const Account &account, std::size_t nr_terms,
                      const TextWords *words_P) {
  std::string body =
      element("h1", "<span class=\"brand\">vek</span> <bdi>" +
                        html_text(account.document) + "</bdi>") +
      element("p class=\"conclusion\"", html_text(conclusion(account))) +
      html_table(leaf_table(account), "What became of the leaves");
  for (const Account::Part &part : account.parts) {
    body +=
        "<section>\n" +
        element("h2", "Below <bdi>" +
                          html_text(class_text(account, *part.step.father_P)) +
                          "</bdi>") +
        html_table(step_table(account, part), "The classes and their scores");
    for (const TermShares &shares : part.shares) {
      const std::string name = class_text(account, *shares.class_P);
      body += element("h3", "<bdi>" + html_text(name) + "</bdi>");
      if (words_P != nullptr)
        body += marked_text(account, shares, *words_P);
      const Listing listing(shares, nr_terms, Column::Precision::readable);
      body += html_table(share_table(account, shares, listing),
                         "What makes the score of " + name);
    }
    body += "</section>\n";
  }
  if (words_P == nullptr)
    body += element("p class=\"soft\"", "There is no file with the text.");
  const std::string title = html_text(account.document);
  return reporting::filled(page_html,
                           {{"@STYLE_HASH@", reporting::hash_of(page_css)},
                            {"@TITLE@", title},
                            {"@STYLE@", page_css},
                            {"@BODY@", body}});
}

}  // namespace vek::explaining
