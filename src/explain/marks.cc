#include "explain/marks.h"

#include <utf8proc.h>

#include <algorithm>
#include <chrono>
#include <set>
#include <utility>

#include "answering/scratch_file.h"

namespace vek::explaining {
namespace {

using Clock = std::chrono::steady_clock;

// A page of more is of no use to a reader.
constexpr std::size_t longest_text = 400'000;
constexpr std::chrono::seconds longest_wait{5};

// Words of a pair have at most so many minus one words between them, among
// them those that the analyser leaves out.
constexpr std::size_t farthest = 5;

struct Character {
  std::size_t size;
  bool is_letter;  // or a number or a mark on a letter
  bool is_joint;   // an apostrophe, which words have in them
};

Character next_character(std::string_view text) {
  utf8proc_int32_t code = 0;
  const utf8proc_ssize_t size =
      utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t *>(text.data()),
                       static_cast<utf8proc_ssize_t>(text.size()), &code);
  if (size <= 0)
    return {1, false, false};
  const utf8proc_category_t category = utf8proc_category(code);
  const bool is_letter =
      category >= UTF8PROC_CATEGORY_LU && category <= UTF8PROC_CATEGORY_NO;
  return {static_cast<std::size_t>(size), is_letter,
          code == '\'' || code == 0x2019};
}

std::vector<TextWords::Word> split(std::string_view text) {
  std::vector<TextWords::Word> words;
  std::size_t end_of_letters = 0;
  bool is_open = false;
  for (std::size_t place = 0; place < text.size();) {
    const Character character = next_character(text.substr(place));
    if (character.is_letter) {
      if (!is_open)
        words.push_back({place, 0, {}});
      is_open = true;
      end_of_letters = place + character.size;
      words.back().size = end_of_letters - words.back().begin;
    } else if (!character.is_joint || place != end_of_letters) {
      is_open = false;
    }
    place += character.size;
  }
  return words;
}

// Cuts between characters.
bool cut(std::string &text) {
  if (text.size() <= longest_text)
    return false;
  std::size_t size = longest_text;
  while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
    --size;
  text.resize(size);
  return true;
}

// The heads alone that a word stands for when it is a text by itself.
bool find_terms(KeptModel &model, const std::string &word, ScratchFile &file,
                std::vector<std::uint32_t> &terms, Failure &failure) {
  DocProfile profile;
  KeptModel::Cause cause{};
  if (model.params().analyser.empty()) {
    if (!model.profile(word, profile, failure))
      return false;
  } else if (!file.write(word, failure)) {
    return false;
  } else if (!model.profile_file(file.path(), profile, failure, cause)) {
    failure.file = "the word `" + word + "'";
    return false;
  }
  const TermTable &known = model.model().terms();
  for (const DocProfileEntry &entry : profile) {
    if (entry.term < known.size() && known.mod(entry.term) == EmptyAtom)
      terms.push_back(entry.term);
  }
  return true;
}

}  // namespace

bool TextWords::find(KeptModel &model, std::string text, Failure &failure) {
  text_ = std::move(text);
  is_cut_ = cut(text_);
  words_ = split(text_);
  std::map<std::string, std::vector<std::uint32_t>, std::less<>> seen;
  ScratchFile file;
  const Clock::time_point end = Clock::now() + longest_wait;
  for (Word &word : words_) {
    const std::string surface = text_.substr(word.begin, word.size);
    auto place = seen.find(surface);
    if (place == seen.end()) {
      has_all_ = has_all_ && Clock::now() < end;
      if (!has_all_)
        continue;
      place = seen.try_emplace(surface).first;
      if (!find_terms(model, surface, file, place->second, failure))
        return false;
    }
    word.terms = place->second;
  }
  return true;
}

std::vector<Mark> find_marks(const Model &model, const TextWords &words,
                             const TermShares &shares,
                             std::size_t &nr_unmarked) {
  const TermTable &terms = model.terms();
  std::map<std::pair<std::uint32_t, std::uint32_t>, const TermShare *> by_atoms;
  for (const TermShare &share : shares.terms) {
    if (share.term < terms.size() && share.favour != 0.0)
      by_atoms[{terms.head(share.term), terms.mod(share.term)}] = &share;
  }
  std::vector<Mark> marks(words.words().size());
  std::set<const TermShare *> marked;
  const auto mark = [&](std::size_t place, const TermShare *share_P) {
    Mark &one = marks[place];
    if (std::ranges::find(one.shares, share_P) != one.shares.end())
      return;
    one.shares.push_back(share_P);
    one.value += share_P->favour;
    marked.insert(share_P);
  };
  // Calls visit(share) if the two are the head and the modifier of a term.
  const auto look_up = [&](std::uint32_t head, std::uint32_t mod, auto visit) {
    const auto place = by_atoms.find({head, mod});
    if (place != by_atoms.end())
      visit(place->second);
  };
  const std::vector<TextWords::Word> &all = words.words();
  for (std::size_t i = 0; i < all.size(); ++i) {
    for (const std::uint32_t term : all[i].terms) {
      const std::uint32_t head = terms.head(term);
      look_up(head, EmptyAtom, [&](const TermShare *of) { mark(i, of); });
      const std::size_t first = i < farthest ? 0 : i - farthest;
      const std::size_t last = std::min(i + farthest + 1, all.size());
      for (std::size_t k = first; k < last; ++k) {
        for (const std::uint32_t other : all[k].terms) {
          if (k == i)
            continue;
          look_up(head, terms.head(other), [&](const TermShare *of) {
            mark(i, of);
            mark(k, of);
          });
        }
      }
    }
  }
  nr_unmarked = by_atoms.size() - marked.size();
  return marks;
}

}  // namespace vek::explaining
