// The parser of resource files, which set the parameters of a run.
//
// A file is a sequence of sections, a bracketed name and then keys with their
// values; a parameter that it does not mention keeps its value. Lines mean
// nothing, keywords have no case, and a comment runs from # to the end of its
// line. An error is reported, the rest of its section is skipped, and what was
// set before it stays set.
//
//   file:    section*
//   section: '[' ("general" | "winnow" | "rocchio" | "sbc" | "linear")
//            ']' entry*
//   entry:   key value
//
// Which key stands in which section, what its value is and what it sets is the
// table of resource_sections().
#ifndef VEK_PARAMS_RCPARSER_H_
#define VEK_PARAMS_RCPARSER_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "base/input_file.h"
#include "params/params.h"
#include "params/scanner.h"

namespace vek {

// The kinds of value, each with the field of the record that it sets.

// "on" or "off".
struct OnOffValue {
  bool *(*field)(Params &settings);
};
// An integer.
struct NumberValue {
  std::uint32_t *(*field)(Params &settings);
};
// An integer or a rational number.
struct RationalValue {
  double *(*field)(Params &settings);
};
// A quoted string, with its backslashes. It ends before its first byte 0, as
// it would for the system when it is used as a path.
struct StringValue {
  std::string *(*field)(Params &settings);
};
// One of some keywords.
struct ChoiceValue {
  struct Option {
    Token::Code keyword;
    void (*set)(Params &settings);
  };
  const char *message;  // for any other token
  std::span<const Option> options;
};

struct ResourceKey {
  Token::Code keyword;
  std::variant<OnOffValue, NumberValue, RationalValue, StringValue, ChoiceValue>
      value;
};

struct ResourceSection {
  Token::Code keyword;
  const char *unknown_key;  // the message for an identifier that is no keyword
  const char *missing_key;  // the message for any other token but a key
  std::span<const ResourceKey> keys;
};

std::span<const ResourceSection> resource_sections();

// read_file() of a resource file, which has at most 64 MiB.
ReadResult read_resource_file(const std::string &path, std::string &text,
                              std::string &reason);

class RcParser : public Scanner {
 public:
  // Will fill `params_P`. The arguments must outlive the parser.
  RcParser(Params *params_P, std::string_view input, const char *file_name,
           Messages &messages);

  // Reads from the current token to the end. nr_errors() tells how it went.
  void parse();

 private:
  void parse_section();
  const ResourceSection *parse_header();
  void parse_entries(const ResourceSection &section);
  void parse_entry(const ResourceSection &section);

  // Each sets the parameter and takes the token, or reports what it expected.
  void parse_value(const OnOffValue &value);
  void parse_value(const NumberValue &value);
  void parse_value(const RationalValue &value);
  void parse_value(const StringValue &value);
  void parse_value(const ChoiceValue &value);

  Params *const params_P_;
};

}  // namespace vek

#endif  // VEK_PARAMS_RCPARSER_H_
