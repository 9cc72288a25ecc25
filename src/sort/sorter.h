// Sorts texts: reads each, asks the model, and has the target bring it to the
// folders of its classes.
#ifndef VEK_SORT_SORTER_H_
#define VEK_SORT_SORTER_H_

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/progress_line.h"
#include "sort/answers.h"
#include "sort/arrivals.h"
#include "sort/target.h"
#include "sort/text_reader.h"

namespace vek::sorting {

struct Counts {
  std::size_t nr_sorted = 0;
  std::size_t nr_unsure = 0;
  std::size_t nr_rejected = 0;
  std::size_t nr_failed = 0;  // could not be read or delivered, and are left
};

class Sorter {
 public:
  // What is told of a text that is left. All must outlive the sorter.
  using Report = std::function<void(const Failure &failure)>;
  Sorter(Answers &answers, Target &target, const Arrivals &arrivals, Mode mode,
         Report report)
      : answers_(answers),
        target_(target),
        arrivals_(arrivals),
        mode_(mode),
        report_(std::move(report)),
        reader_(answers.conversion()) {}

  // Sorts the texts that are not known, until a signal stops it. False if
  // nothing can be sorted now, by the analyser, the journal or the log.
  bool sort(const std::vector<Arrival> &texts, ProgressLine &progress,
            Failure &failure);

  // The model has been read anew.
  void take_up_model() { reader_ = TextReader(answers_.conversion()); }

  const Counts &counts() const { return counts_; }

 private:
  enum class Read { ready, passed_over, failed };
  Read judge(const Arrival &arrival, Delivery &delivery, Failure &failure);
  bool deliver(ProgressLine &progress, Failure &failure);
  void leave(const Failure &failure);

  Answers &answers_;
  Target &target_;
  const Arrivals &arrivals_;
  const Mode mode_;
  const Report report_;
  TextReader reader_;
  std::vector<Delivery> batch_;
  std::vector<std::size_t Counts::*> results_;  // of the batch
  std::set<std::string> told_;                  // failures
  Counts counts_;
};

}  // namespace vek::sorting

#endif  // VEK_SORT_SORTER_H_
