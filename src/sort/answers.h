// The answers of the kept model to texts in memory, and of the model that is
// kept next, when a run of vek has learnt a new one.
#ifndef VEK_SORT_ANSWERS_H_
#define VEK_SORT_ANSWERS_H_

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "answering/kept_model.h"
#include "base/failure.h"
#include "convert/settings.h"
#include "sort/locking.h"

namespace vek::sorting {

struct Verdict {
  struct Choice {
    std::string class_name;  // the path below the top class
    double score = 0;
  };
  std::vector<Choice> choices;  // best first
  // The document gets these classes. Otherwise they are the best ones, and none
  // of them scored above its threshold.
  bool is_sure = false;
  bool has_probabilities = false;  // the scores are that
};

class Answers {
 public:
  explicit Answers(std::string model_directory)
      : directory_(std::move(model_directory)) {}
  ~Answers();
  Answers(const Answers &) = delete;
  Answers &operator=(const Answers &) = delete;

  // Reads the model. A run of vek that is using it is waited for so long.
  Locked open(std::chrono::seconds patience, Failure &failure);

  // The files of the model are not those that were read. Looks at them once a
  // second at the most.
  bool has_changed();
  // Reads it anew. If that fails, the old one stays, and is not called changed
  // before its files change again; if it is in use, the next second.
  Locked reload(Failure &failure);

  // `text`: it is refused; `system`: no text has an answer.
  enum class Result { answered, text, system };
  Result answer(const std::string &text, Verdict &verdict, std::string &reason);

  // 16 hexadecimal digits that are others for each model.
  const std::string &model_id() const { return id_; }
  // How its texts were converted.
  const convert::Settings &conversion() const { return conversion_; }
  // The fields of the rows that were its texts; empty if they were none, or
  // not all have the same.
  const std::vector<std::string> &row_fields() const {
    return conversion_.text;
  }

 private:
  using Clock = std::chrono::steady_clock;

  std::vector<std::string> files() const;
  std::string find_state() const;
  bool find_id(std::string &id, Failure &failure) const;
  bool put_text(const std::string &text, std::string &reason);

  const std::string directory_;
  std::unique_ptr<KeptModel> model_;
  convert::Settings conversion_;
  std::string data_directory_;
  std::string id_;
  std::string state_;        // of the files that were read
  bool has_failed_ = false;  // the last time
  Clock::time_point looked_at_;
  int memory_ = -1;  // a file in memory with the text, for the analyser
  std::size_t memory_size_ = 0;
  DocProfile profile_;
  Answer answer_;
};

}  // namespace vek::sorting

#endif  // VEK_SORT_ANSWERS_H_
