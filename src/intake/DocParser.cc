#include "intake/DocParser.h"

namespace vek {

DocParser::DocParser(AtomTable &atoms, TermBag &bag, std::string_view input,
                     const char *name, Messages &messages)
    : DocParser(
          atoms, bag, input, name, messages,
          {max_alternatives, max_pairs + max_pairs_per_byte * input.size(),
           max_compound_bytes + max_compound_bytes_per_byte * input.size()}) {}

DocParser::DocParser(AtomTable &atoms, TermBag &bag, std::string_view input,
                     const char *name, Messages &messages, const Limits &limits)
    : Scanner(Mode::document, input, name, messages),
      atoms_(atoms),
      bag_(bag),
      limits_(limits) {}

// document: item*
bool DocParser::parse() {
  while (!at_end() && !is_full_) {
    if (is_word()) {
      count_word();
    } else if (open_group()) {
      parse_group();
    } else {
      advance();
    }
  }
  report_hidden_errors();
  return !is_full_;
}

void DocParser::count_word() {
  // An empty string is no word; the atom table has no empty text.
  if (!text().empty()) {
    const std::uint32_t atom = atoms_.enter(text());
    is_full_ = atom == EmptyAtom;
    if (!is_full_)
      bag_.add({atom, EmptyAtom});
  }
  advance();
}

// Starts on a group, up to the first token of its phrase. Returns false if
// there is none.
bool DocParser::open_group() {
  if (!is('[') && !is('{'))
    return false;
  const int closing = is('[') ? ']' : '}';
  advance();
  // What the new phrase adds lies behind what the open ones hold, so that
  // closing it is cutting the arrays back to where it began.
  phrases_.push_back({ids_.size(), 0, closing, false, new_compound()});
  return true;
}

// The rest of the group just opened and all groups in it. One step is one part
// of a compound, or what follows its last part.
void DocParser::parse_group() {
  // This ends: each step takes a token or closes a group.
  while (!phrases_.empty()) {
    if (is_word()) {
      add_word();
    } else if (!open_group()) {
      end_compound();
    }
  }
}

// heads: compound ("|" compound)*
// modifiers: compound? ("|" compound?)*
// The compound of the innermost phrase ends here; what comes next decides
// whether the phrase does.
void DocParser::end_compound() {
  Phrase &phrase = phrases_.back();
  enter_candidates(phrase.compound);
  if (phrase.in_modifiers) {
    count_modified(phrase);
    // The modifiers are counted at once and dropped; the heads stay for the
    // next ones and for the compound around the group.
    ids_.resize(phrase.heads_end);
  } else if (!phrase.compound.found) {
    parse_error("head expected");
  }
  phrase.compound = new_compound();
  if (accept('|'))
    return;
  if (phrase.in_modifiers) {
    close_group();
  } else if (accept(',')) {
    phrase.in_modifiers = true;
    phrase.heads_end = ids_.size();
  } else {
    count_heads(phrase);
    close_group();
  }
}

// The phrase of the innermost group is over.
void DocParser::close_group() {
  const int closing = phrases_.back().closing;
  // No further error is reported until the group has been left.
  if (has_error())
    skip_to(closing);
  expect(closing, closing == ']' ? "`]' expected" : "`}' expected");
  const std::size_t heads_begin = phrases_.back().heads_begin;
  phrases_.pop_back();
  if (!phrases_.empty()) {
    const Ids heads = Ids(ids_).subspan(heads_begin);
    // Before ids_ is cut: `heads` is a view of it. add_group() copies.
    add_group(closing == ']' ? heads : Ids());
  }
  ids_.resize(heads_begin);
}

void DocParser::count_heads(const Phrase &phrase) {
  const std::uint32_t no_modifier[] = {EmptyAtom};
  count_product(Ids(ids_).subspan(phrase.heads_begin), no_modifier);
}

// The modifiers are those of the compound just finished.
void DocParser::count_modified(const Phrase &phrase) {
  const std::size_t nr_heads = phrase.heads_end - phrase.heads_begin;
  count_product(Ids(ids_).subspan(phrase.heads_begin, nr_heads),
                Ids(ids_).subspan(phrase.heads_end));
}

void DocParser::count_product(Ids heads, Ids modifiers) {
  if (modifiers.empty())
    return;
  // Divided, because the product may be beyond 64 bits.
  if (heads.size() > (limits_.pairs - nr_pairs_) / modifiers.size()) {
    parse_error("too many pairs in a document");
    return;
  }
  nr_pairs_ += heads.size() * modifiers.size();
  for (const std::uint32_t head : heads) {
    for (const std::uint32_t mod : modifiers) {
      bag_.add({head, mod});
    }
  }
}

// A compound starts as one candidate with an empty text.
DocParser::Compound DocParser::new_compound() const {
  return {texts_.size(), choices_.size(), 0, 1, false};
}

// The candidates have no text yet.
bool DocParser::is_blank(const Compound &compound) const {
  return texts_.size() == compound.text_begin &&
         choices_.size() == compound.choices_begin;
}

// The compound is nothing but a group, whose atoms are then its own. Without
// this, the brackets around a long word would make as many copies of it.
bool DocParser::hands_on(const Compound &compound) const {
  return texts_.size() == compound.text_begin &&
         choices_.size() == compound.choices_begin + 1;
}

std::size_t DocParser::cost(const Compound &compound) const {
  return hands_on(compound) ? compound.nr_candidates : compound.nr_bytes;
}

// compound: word
// The limit is checked behind the word, as it is behind a group, so that the
// message names what follows.
void DocParser::add_word() {
  Compound &compound = phrases_.back().compound;
  compound.found = true;
  if (compound.nr_candidates > 0) {
    const std::size_t size = texts_.size();
    if (!is_blank(compound))
      texts_ += ' ';
    texts_ += text();
    compound.nr_bytes += compound.nr_candidates * (texts_.size() - size);
  }
  advance();
  check_cost(compound);
}

// compound: group
void DocParser::add_group(Ids ids) {
  Compound &compound = phrases_.back().compound;
  if (ids.empty())
    compound.nr_candidates = 0;
  if (compound.nr_candidates == 0)
    return;
  compound.found = true;
  // Divided, because the product may be beyond 64 bits.
  if (ids.size() > limits_.alternatives / compound.nr_candidates) {
    refuse(compound, "too many alternatives in a compound");
  } else {
    add_choice(compound, ids);
    check_cost(compound);
  }
}

void DocParser::add_choice(Compound &compound, Ids ids) {
  std::size_t nr_bytes = 0;
  for (const std::uint32_t id : ids)
    nr_bytes += atoms_.text(id).size();
  if (!is_blank(compound)) {
    texts_ += ' ';
    nr_bytes += ids.size();
  }
  choices_.push_back({texts_.size(), choice_ids_.size(), ids.size()});
  choice_ids_.insert(choice_ids_.end(), ids.begin(), ids.end());
  // With c candidates of b bytes in all, and n alternatives of a bytes in all
  // (blanks included), there are c * n candidates of b * n + c * a bytes.
  compound.nr_bytes =
      compound.nr_bytes * ids.size() + compound.nr_candidates * nr_bytes;
  compound.nr_candidates *= ids.size();
}

void DocParser::check_cost(Compound &compound) {
  if (compound.nr_candidates > 0 &&
      cost(compound) > limits_.compound_bytes - nr_bytes_) {
    refuse(compound, "too much text in compounds");
  }
}

void DocParser::refuse(Compound &compound, const char *message) {
  parse_error(message);
  compound.nr_candidates = 0;
}

// Ends the compound: its texts go behind `ids_`, and what it held is gone.
void DocParser::enter_candidates(const Compound &compound) {
  if (compound.found && compound.nr_candidates > 0) {
    nr_bytes_ += cost(compound);
    if (choices_.size() == compound.choices_begin) {
      enter_text(std::string_view(texts_).substr(compound.text_begin));
    } else if (hands_on(compound)) {
      const Ids ids = Ids(choice_ids_).subspan(choices_.back().ids_begin);
      ids_.insert(ids_.end(), ids.begin(), ids.end());
    } else {
      enter_combinations(compound);
    }
  }
  // Also without candidates: the compound is over, whatever came of it.
  texts_.resize(compound.text_begin);
  if (choices_.size() > compound.choices_begin) {
    choice_ids_.resize(choices_[compound.choices_begin].ids_begin);
    choices_.resize(compound.choices_begin);
  }
}

void DocParser::enter_text(std::string_view text) {
  if (text.empty())
    return;
  const std::uint32_t atom = atoms_.enter(text);
  if (atom == EmptyAtom) {
    is_full_ = true;
  } else {
    ids_.push_back(atom);
  }
}

// In the order of a nest of loops, the first choice outermost.
void DocParser::enter_combinations(const Compound &compound) {
  combination_.assign(choices_.size() - compound.choices_begin, 0);
  for (std::size_t i = 0; i < compound.nr_candidates; ++i) {
    spell(compound);
    enter_text(candidate_);
    step_combination(compound);
  }
}

void DocParser::spell(const Compound &compound) {
  const std::string_view words = texts_;
  std::size_t done = compound.text_begin;
  candidate_.clear();
  for (std::size_t i = 0; i < combination_.size(); ++i) {
    const Choice &choice = choices_[compound.choices_begin + i];
    // The words up to the choice, blanks included, then the alternative.
    candidate_ += words.substr(done, choice.place - done);
    candidate_ += atoms_.text(choice_ids_[choice.ids_begin + combination_[i]]);
    done = choice.place;
  }
  candidate_ += words.substr(done);
}

void DocParser::step_combination(const Compound &compound) {
  // Counts up like an odometer: the last choice turns fastest, and behind the
  // last combination all are back at 0.
  for (std::size_t i = combination_.size(); i-- > 0;) {
    if (++combination_[i] < choices_[compound.choices_begin + i].nr_ids)
      return;
    combination_[i] = 0;
  }
}

}  // namespace vek
