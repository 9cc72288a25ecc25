// What a run has predicted: the file predictions<N>.tsv in memory.
//
// The file is trusted in nothing. What is not as doc/formats.md has it is a
// failure with its line. Memory is bounded by the size of the file.
#ifndef VEK_REPORT_PREDICTIONS_H_
#define VEK_REPORT_PREDICTIONS_H_

#include <tsl/robin_map.h>

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"

namespace vek::reporting {

// The classes that some file names, with dense ids in the order in which they
// are met. Two runs that are compared share one.
class ClassNames {
 public:
  std::uint32_t enter(std::string_view name);
  const std::string &operator[](std::uint32_t id) const { return names_[id]; }
  std::uint32_t size() const {
    return static_cast<std::uint32_t>(names_.size());
  }

 private:
  std::deque<std::string> names_;  // where they stay: the map points to them
  tsl::robin_map<std::string_view, std::uint32_t> ids_;
};

// A class and how strongly a document belongs to it. A score may be infinite or
// no number.
struct Scored {
  std::uint32_t class_id = 0;
  double score = 0;
  double threshold = 0;
};

struct Prediction {
  std::string name;
  std::vector<std::uint32_t> filed_in;  // a class may stand there twice
  std::vector<std::uint32_t> ranks;     // of those, from 1; 0: it is no leaf
  std::vector<Scored> assigned;         // best first
  std::vector<double> probabilities;    // of those; empty without calibration
  std::vector<Scored> candidates;       // best first
  bool is_significant = false;

  // New documents are in no class, and nothing is counted for them.
  bool is_judged() const { return !filed_in.empty(); }
};

struct Predictions {
  std::string file;
  std::vector<Prediction> documents;

  bool has_judged() const;
};

// Reads the text of a predictions file into the empty record. False, with
// `failure` filled in, if it is damaged; `file` is its name for that.
bool parse_predictions(std::string_view text, const std::string &file,
                       ClassNames &classes, Predictions &predictions,
                       Failure &failure);

// The same for a file, which may be what cannot be read, too.
bool read_predictions(const std::string &file, ClassNames &classes,
                      Predictions &predictions, Failure &failure);

// `place` is a predictions file, or a directory: then that of its predictions
// files is read that is newest of those with test documents, or else newest.
bool find_predictions(const std::string &place, ClassNames &classes,
                      Predictions &predictions, Failure &failure);

}  // namespace vek::reporting

#endif  // VEK_REPORT_PREDICTIONS_H_
