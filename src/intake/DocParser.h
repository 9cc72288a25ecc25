// The parser of analysis text, which gives the words of a document, heads with
// their modifiers, alternatives, and phrases inside phrases. It fills the
// document's TermBag, and on the way enters every word and compound that it
// completes in the atom table.
//
// The language, in tokens of the scanner's document mode; a string stands for
// a word everywhere:
//
//   document   item*
//   item       word | group | any other token, skipped without a message
//   group      "[" phrase "]"  |  "{" phrase "}"
//   phrase     heads  |  heads "," modifiers
//   heads      compound ("|" compound)*
//   modifiers  compound? ("|" compound?)*
//   compound   (word | group)+
//
// A word of the document counts alone, as does each head of a phrase without
// modifiers; otherwise each head counts with each modifier. A group in brackets
// hands its heads to the compound in which it stands, a group in braces hands
// nothing on. A compound is the cross product of its parts, joined by blanks:
// as many atoms as there are combinations of what its groups hand to it, hence
// none if one of them hands on nothing. A text that comes out empty, which
// takes an empty string, is dropped.
//
// An error never stops a parse. It is reported, the group in which it stands is
// left at the next bracket of its kind, and what was counted remains.
//
// Groups may nest as deep as memory allows: the state of the open ones lies on
// a stack of the parser's own. Work and memory stay in proportion to the text,
// except for products, and those have limits; where one is met, there is a
// parse error and the product counts as nothing.
#ifndef VEK_INTAKE_DOCPARSER_H_
#define VEK_INTAKE_DOCPARSER_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/messages.h"
#include "intake/termbag.h"
#include "params/scanner.h"
#include "vocabulary/atomtab.h"

namespace vek {

class DocParser : public Scanner {
 public:
  // The combinations of one compound. Ten words with three readings each are
  // about as many; forty with two would be more than a machine can hold.
  static constexpr std::size_t max_alternatives = 65536;

  // The pairs counted by the phrases of one document, and the bytes of all the
  // compounds made in it: a number that even the smallest document may use, and
  // some more for each byte of its text. A phrase of a thousand heads and a
  // thousand modifiers is within the first, three compounds of max_alternatives
  // are within the second. The other two no real text comes near, however long
  // it is: it has less than one pair for a byte, and a word is in as many
  // compounds as there are brackets around it.
  static constexpr std::size_t max_pairs = std::size_t{1} << 20;
  static constexpr std::size_t max_pairs_per_byte = 8;
  static constexpr std::size_t max_compound_bytes = std::size_t{1} << 23;
  static constexpr std::size_t max_compound_bytes_per_byte = 8;

  // The limits for one document.
  struct Limits {
    std::size_t alternatives;
    std::size_t pairs;
    std::size_t compound_bytes;
  };

  // The bag is filled by parse(). All arguments must outlive the parser; `name`
  // stands for the file in messages.
  DocParser(AtomTable &atoms, TermBag &bag, std::string_view input,
            const char *name, Messages &messages);
  // With other limits than the usual ones, for a test that is to meet them in a
  // small text.
  DocParser(AtomTable &atoms, TermBag &bag, std::string_view input,
            const char *name, Messages &messages, const Limits &limits);

  // Parses to the end of the input. False if it ended because no more atoms can
  // be numbered.
  bool parse();

 private:
  // A group that a compound takes in: the place of its texts among the literal
  // text of the compound, and what it handed on, a part of `choice_ids_`.
  struct Choice {
    std::size_t place;
    std::size_t ids_begin;
    std::size_t nr_ids;
  };

  // A compound in the making. Its candidates are the combinations of its
  // choices, with its words between them; they are spelled out only at its end.
  struct Compound {
    std::size_t text_begin = 0;     // in `texts_`
    std::size_t choices_begin = 0;  // in `choices_`
    std::size_t nr_bytes = 0;       // of all candidates together
    std::size_t nr_candidates = 0;  // 0 once a part has handed on nothing
    bool found = false;  // there was a word, or a group gave something
  };

  // The phrase of an open group. Its heads are in `ids_` from `heads_begin`; up
  // to `heads_end`, once modifiers are read.
  struct Phrase {
    std::size_t heads_begin = 0;
    std::size_t heads_end = 0;
    int closing = 0;
    bool in_modifiers = false;
    Compound compound;
  };

  using Ids = std::span<const std::uint32_t>;

  bool is_word() const { return is(Token::word) || is(Token::string); }
  void count_word();
  bool open_group();
  void parse_group();
  void end_compound();
  void close_group();

  void count_heads(const Phrase &phrase);
  void count_modified(const Phrase &phrase);
  void count_product(Ids heads, Ids modifiers);

  Compound new_compound() const;
  bool is_blank(const Compound &compound) const;
  bool hands_on(const Compound &compound) const;
  std::size_t cost(const Compound &compound) const;
  void add_word();
  void add_group(Ids ids);
  void add_choice(Compound &compound, Ids ids);
  void check_cost(Compound &compound);
  void refuse(Compound &compound, const char *message);
  void enter_candidates(const Compound &compound);
  void enter_text(std::string_view text);
  void enter_combinations(const Compound &compound);
  void spell(const Compound &compound);
  void step_combination(const Compound &compound);

  AtomTable &atoms_;
  TermBag &bag_;
  const Limits limits_;
  std::size_t nr_pairs_ = 0;  // counted by phrases
  std::size_t nr_bytes_ = 0;  // of finished compounds

  bool is_full_ = false;  // the atom table

  // What the open groups hold, each behind that of the group around it.
  std::vector<Phrase> phrases_;
  std::vector<std::uint32_t> ids_;  // atoms: heads, and modifiers at the end
  std::string texts_;               // words of compounds
  std::vector<Choice> choices_;
  std::vector<std::uint32_t> choice_ids_;

  // The combination that is spelled out: a position in each choice, the text.
  std::vector<std::size_t> combination_;
  std::string candidate_;
};

}  // namespace vek

#endif  // VEK_INTAKE_DOCPARSER_H_
