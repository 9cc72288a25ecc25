// The page about resource files tells of every key, value and default there is,
// and of no other.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "base/messages.h"
#include "learning/classifiers.h"
#include "params/params.h"
#include "params/rcparser.h"
#include "params/scanner.h"
#include "support/temporary_directory.h"

namespace vek {
namespace {

// A line such as: *maxranks* _integer_, default *1*
struct Entry {
  std::string section;
  std::string key;
  std::string values;
  std::string default_value;
};

std::vector<Entry> read_page() {
  const std::regex heading("# THE SECTION \\[([A-Z]+)\\]");
  const std::regex entry("\\*([a-z]+)\\* (.+), default \\*(.+)\\*");
  std::istringstream page(read_text(SETTINGS_PAGE));
  std::vector<Entry> entries;
  std::string section;
  std::smatch match;
  for (std::string line; std::getline(page, line);) {
    if (std::regex_match(line, match, heading)) {
      section = match[1];
      std::ranges::transform(section, section.begin(), ::tolower);
    } else if (std::regex_match(line, match, entry)) {
      entries.push_back({section, match[1], match[2], match[3]});
    }
  }
  return entries;
}

std::string text_of(Token::Code code) {
  return std::string(
      std::ranges::find(keyword_table, code, &Keyword::code)->text);
}

// With the names of a choice, and otherwise the kind of value.
TEST(SettingsPage, HasTheKeysAndChoicesOfTheParser) {
  std::map<std::string, std::string> of_page;
  for (const Entry &entry : read_page()) {
    of_page[entry.section + ' ' + entry.key] =
        entry.values[0] == '"' ? "string" : entry.values;
  }
  const char *const kinds[] = {"*on*|*off*", "_integer_", "_number_", "string"};
  std::map<std::string, std::string> of_parser;
  for (const ResourceSection &section : resource_sections()) {
    for (const ResourceKey &key : section.keys) {
      std::string &shown =
          of_parser[text_of(section.keyword) + ' ' + text_of(key.keyword)];
      const auto *choice_P = std::get_if<ChoiceValue>(&key.value);
      if (choice_P == nullptr) {
        shown = kinds[key.value.index()];
        continue;
      }
      for (const ChoiceValue::Option &option : choice_P->options)
        shown += (shown.empty() ? "*" : "|*") + text_of(option.keyword) + '*';
    }
  }
  EXPECT_EQ(of_page, of_parser);
}

// All that a record holds, by the settings text of each algorithm.
std::string everything(const Params &settings) {
  std::ostringstream text;
  text << settings.general_text(classifier_of(settings.algorithm).name)
       << settings.rocchio.pivoted;
  for (const Classifier &classifier : classifiers())
    classifier.write_settings(text, settings);
  return text.str();
}

TEST(SettingsPage, HasTheDefaultsOfTheProgram) {
  const std::vector<Entry> entries = read_page();
  ASSERT_FALSE(entries.empty());
  for (const auto &[section, key, values, default_value] : entries) {
    const std::string text = '[' + section + "] " + key + ' ' + default_value;
    Params settings;
    Messages messages;
    RcParser parser(&settings, text, "page", messages);
    parser.parse();
    EXPECT_EQ(parser.nr_errors(), 0U) << text;
    EXPECT_EQ(everything(settings), everything({})) << text;
  }
}

}  // namespace
}  // namespace vek
