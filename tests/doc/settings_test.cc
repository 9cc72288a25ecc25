// The page about resource files tells of every key, value and default there is,
// and of no other.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

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
  return std::string(std::ranges::find(keywords(), code, &Keyword::code)->text);
}

// The kind of value as the page shows it; of a choice, the names.
struct Shown {
  std::string operator()(const OnOffValue &) { return "*on*|*off*"; }
  std::string operator()(const NumberValue &) { return "_integer_"; }
  std::string operator()(const RationalValue &) { return "_number_"; }
  std::string operator()(const StringValue &) { return "string"; }
  std::string operator()(const ChoiceValue &value) {
    std::string text;
    for (const ChoiceValue::Option &option : value.options)
      text += (text.empty() ? "*" : "|*") + text_of(option.keyword) + '*';
    return text;
  }
};

TEST(SettingsPage, HasTheKeysAndValuesOfTheParser) {
  std::map<std::string, std::string> of_page;
  for (const Entry &entry : read_page()) {
    const bool is_string = entry.values.starts_with('"');
    of_page[entry.section + ' ' + entry.key] =
        is_string ? "string" : entry.values;
  }
  std::map<std::string, std::string> of_parser;
  for (const ResourceSection &section : resource_sections()) {
    for (const ResourceKey &key : section.keys) {
      of_parser[text_of(section.keyword) + ' ' + text_of(key.keyword)] =
          std::visit(Shown(), key.value);
    }
  }
  EXPECT_EQ(of_page, of_parser);
}

// All that a record holds, by the settings text of each algorithm.
std::string everything(Params settings) {
  std::string text = settings.settings_text();
  for (const Algorithm algorithm :
       {Algorithm::winnow, Algorithm::rocchio, Algorithm::sbc}) {
    settings.set_algorithm(algorithm);
    text += settings.settings_text();
  }
  return text + (settings.rocchio().pivoted() ? "pivoted" : "");
}

// Whether the text of the resource file was read without an error.
bool set(Params &settings, const std::string &resources) {
  RcParser parser(&settings, resources, "page");
  parser.parse();
  return parser.nr_errors() == 0;
}

// Something else than the default, for each kind of value.
std::string another_value(const Entry &entry) {
  if (entry.values.starts_with('"'))
    return "\"another\"";
  if (entry.values.starts_with('_'))
    return "7";
  std::string first, second;
  std::istringstream values(
      std::regex_replace(entry.values, std::regex("\\*|\\|"), " "));
  values >> first >> second;
  return first == entry.default_value ? second : first;
}

TEST(SettingsPage, HasTheDefaultsOfTheProgram) {
  const std::string defaults = everything(Params());
  ASSERT_FALSE(read_page().empty());
  for (const Entry &entry : read_page()) {
    const std::string key = '[' + entry.section + "] " + entry.key + ' ';
    Params settings;
    EXPECT_TRUE(set(settings, key + another_value(entry))) << key;
    EXPECT_NE(everything(settings), defaults) << key;
    EXPECT_TRUE(set(settings, key + entry.default_value)) << key;
    EXPECT_EQ(everything(settings), defaults) << key;
  }
}

}  // namespace
}  // namespace vek
