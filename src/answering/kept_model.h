// A kept model with all that it takes to answer what vek would answer: the
// parameters of its resource file, its analyser, its classifier.
//
// For a text of the same analysis the answer is that of `vek -p` to the last
// bit. Nothing here logs, writes or ends the process; a failure is returned
// with its file and reason.
#ifndef VEK_ANSWERING_KEPT_MODEL_H_
#define VEK_ANSWERING_KEPT_MODEL_H_

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/failure.h"
#include "evaluation/judge.h"
#include "intake/analyserprocess.h"
#include "intake/docprof.h"
#include "learning/classifiers.h"
#include "model/model.h"
#include "params/params.h"

namespace vek {

class KeptModel {
 public:
  struct Place {
    // Where vek is called: all other paths are as seen from there. Empty: the
    // working directory.
    std::string directory;
    // As vek's -r takes it; empty: vek.rc, if it is there.
    std::string resource_file;
    // As vek's -d takes it; empty: that of the resource file.
    std::string data_directory;
    // As vek's -a, but with it Winnow can be had too; without it, that of the
    // resource file.
    std::optional<Algorithm> algorithm;
  };

  // Whose fault it is that a text has no profile: of the text, so that others
  // may go well, or of the analyser.
  enum class Cause { text, analyser };

  KeptModel() = default;
  ~KeptModel();
  KeptModel(const KeptModel &) = delete;
  KeptModel &operator=(const KeptModel &) = delete;

  // Reads parameters, vocabulary, classes, weights and judging, as `vek -p`
  // without examples has them. A packed model is verified first (manifest.h).
  // To be called once. False if the resource file has an error, if a run is
  // using the data directory, if there is no model, or if it is damaged or of
  // another classifier.
  bool open(const Place &place, Failure &failure);

  const Params &params() const { return params_; }
  const Classifier &classifier() const {
    return classifier_of(params_.algorithm);
  }
  const Model &model() const { return model_; }
  Judge &judge() { return *judge_; }
  // The data directory, and the file of a document, as seen from here.
  const std::string &data_directory() const { return data_directory_; }
  std::string text_path(const std::string &name) const;

  // The name under which a document is stored: that one, or without the ending
  // with which it stands in a rank file. Empty if it is not stored.
  std::string stored_name(const std::string &name) const;

  // Sets `profile` to that of a text, given its analysis. What the vocabulary
  // lacks is there as well, because a product has a factor for it: with ids
  // from model().terms().size() on, which mean nothing in another profile.
  //
  // The vocabulary does not grow, whatever the texts bring: the words of one
  // are in a table of its own, which is gone on return.
  bool profile(std::string_view analysis, DocProfile &profile,
               Failure &failure) const;

  // Sets `analysis` to that of the text in a file. The analyser is started when
  // it is needed first, in the directory; without one the file holds the
  // analysis itself. After a failure of the analyser it is started again for
  // the next text. `path` is as seen from the working directory.
  bool analyse_file(const std::string &path, std::string &analysis,
                    Failure &failure, Cause &cause);

  // Both.
  bool profile_file(const std::string &path, DocProfile &profile,
                    Failure &failure, Cause &cause);

 private:
  bool ask(const std::string &path, std::string &analysis, Failure &failure);

  std::string directory_;
  std::string data_directory_;
  Params params_;
  Model model_;
  std::optional<Judge> judge_;
  AnalyserProcess process_;
};

// The classifier that an option's letter stands for: W, R, S or L.
std::optional<Algorithm> algorithm_of_letter(char letter);

}  // namespace vek

#endif  // VEK_ANSWERING_KEPT_MODEL_H_
