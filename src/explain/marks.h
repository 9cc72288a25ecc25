// The words of a text, with what their terms do for a class.
#ifndef VEK_EXPLAIN_MARKS_H_
#define VEK_EXPLAIN_MARKS_H_

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "answering/kept_model.h"
#include "base/failure.h"
#include "explain/explanation.h"

namespace vek::explaining {

// The words of a text, and which terms each of them stands for: found out by
// having each different word analysed alone, as its own text. What the analyser
// makes of a word in its place only, or of several words together, is not
// found.
class TextWords {
 public:
  struct Word {
    std::size_t begin = 0;  // in bytes
    std::size_t size = 0;
    std::vector<std::uint32_t> terms;  // heads alone, of the vocabulary
  };

  // False, with `failure` filled in, if the analyser fails. Long texts are cut,
  // and a slow analyser is not asked for ever; then is_cut() and has_all()
  // tell.
  bool find(KeptModel &model, std::string text, Failure &failure);

  const std::string &text() const { return text_; }
  const std::vector<Word> &words() const { return words_; }
  bool is_cut() const { return is_cut_; }
  bool has_all() const { return has_all_; }

 private:
  std::string text_;
  std::vector<Word> words_;
  bool is_cut_ = false;
  bool has_all_ = true;
};

// A word that is to be marked: the sum of what its terms and the pairs in which
// it stands do for the class, and which these are.
struct Mark {
  double value = 0.0;
  std::vector<const TermShare *> shares;
};

// By place of the word. A pair is where its words stand at most a few words
// apart, in either order. Sets `nr_unmarked` to the number of terms that are
// nowhere.
std::vector<Mark> find_marks(const Model &model, const TextWords &words,
                             const TermShares &shares,
                             std::size_t &nr_unmarked);

}  // namespace vek::explaining

#endif  // VEK_EXPLAIN_MARKS_H_
