#include "analyse/analysis_writer.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "analysis_check.h"

namespace vek::analysis {
namespace {

using namespace std::string_view_literals;

TEST(AnalysisWriter, WritesWordsAndPairs) {
  const std::string_view text = "sold 1,500 bags of 60 kilos";
  const struct {
    std::string_view language, text, analysis;
    Terms terms = Terms::pairs;
    Numbers numbers = Numbers::drop;
  } cases[] = {
      {"en", "The of and 1987.", "", Terms::both},
      {"en", "Crude oil prices rose.",
       "crude oil [ oil , crude ] price [ price , oil ] rose [ rose , price "
       "]\n",
       Terms::both},
      {"en", "House. Dog, cat\n\nmouse", "hous\ndog cat\nmous\n", Terms::both},
      {"en", "Steel works. Big dog", "steel work\nbig dog\n", Terms::words},
      {"en", text, "sold bag kilo\n", Terms::both},
      {"en", text, "sold # bag # kilo\n", Terms::both, Numbers::as_class},
      {"en", text,
       "[ 1.500 , sold ] [ bag , 1.500 ] [ bag , 60 ] [ kilo , 60 ]\n",
       Terms::pairs, Numbers::keep},
      // The head stands where the language has it.
      {"es", "política monetaria", "[ polit , monetari ]\n"},
      {"pt", "política monetária", "[ polít , monetár ]\n"},
      {"ro", "politica monetară", "[ polit , monet ]\n"},
      {"none", "Steel works", "[ works , steel ]\n"},
      // Nouns around "of".
      {"en",
       "price of oil. price\nof-the oil. price of the an oil. price the oil. "
       "price of, oil. price. Of oil. price of 5 oil",
       "[ price , oil ]\n[ price , oil ]\n"},
      {"de",
       "Preis des Öls. preis des Öls. Preis des teuren. Preis des der Öls.",
       "[ preis , ols ]\n"},
      {"fr", "prix de la vie. prix de l'eau. prix d’eau. goûte l'eau.",
       "[ prix , vi ]\n[ prix , eau ]\n[ prix , eau ]\n"},
      {"it", "prezzo dell'acqua", "[ prezz , acqua ]\n"}};
  for (const auto &c : cases) {
    TextAnalyser analyser(c.language, c.terms, c.numbers);
    EXPECT_EQ(analyser.analyse(c.text), c.analysis) << c.language << c.text;
  }
}

TEST(AnalysisWriter, LetsNothingOfTheTextThrough) {
  const std::string_view texts[] = {
      "a [b] {c} |d| \"e\" f,g \\h \\",
      "nul\0byte one\x01 two\x1B[0m del\x7F"sv,
      "\xFF\xFE"
      "broken \xC3( text \x80",
      "1,000a 1,, ,1 a,b a\\,b #c #",
      "' ' '' 's n't d' l' .s U.S. .. x.y.z.",
      "\u00B7a\u00B7 a\u00B7b \u05F4a a\u05F4b",
      "\u3164\u115F \u1160 \uFFF0 \U000E0041 \U000F0000 \U0010FFFF"};
  for (const char *language : {"en", "fr", "tr", "ar", "none"}) {
    for (const Numbers numbers :
         {Numbers::drop, Numbers::as_class, Numbers::keep}) {
      TextAnalyser analyser(language, Terms::both, numbers);
      for (const std::string_view text : texts) {
        const std::string analysis = analyser.analyse(text);
        EXPECT_TRUE(is_valid_analysis(analysis)) << text << '\n' << analysis;
        EXPECT_FALSE(analysis.empty()) << text;
      }
    }
  }
}

TEST(AnalysisCheck, RefusesWhatAParserWouldMisread) {
  for (const char *text :
       {"a", " a\n", "a\n\n", "[ a , ]\n", "[a , b ]\n", "[ a , b\n", "a,b\n",
        "a\\\n", "a\x01\n", "a\x7F\n", "\xC3\n"}) {
    EXPECT_FALSE(is_valid_analysis(text)) << text;
  }
  EXPECT_TRUE(is_valid_analysis("a [ b , c ]\n[ d , e ] f\n"));
  EXPECT_FALSE(is_valid_analysis(std::string(65, 'a') + "\n"));
}

}  // namespace
}  // namespace vek::analysis
