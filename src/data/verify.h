// Looks at every file of a data directory against every other. vek-check does
// so too, before a run.
#ifndef VEK_DATA_VERIFY_H_
#define VEK_DATA_VERIFY_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "base/failure.h"
#include "data/class_files.h"
#include "learning/classifiers.h"
#include "model/model.h"

namespace vek::keeping {

// Damage, with its remedy; or a note, with none, of what a broken-off run has
// left and the next one puts right.
struct Finding {
  Failure failure;
  std::string remedy;

  bool is_damage() const { return !remedy.empty(); }
};

class Verification {
 public:
  using Report = std::function<void(const Finding &finding)>;
  // `quick` leaves out the documents' profiles, which take long.
  enum class Depth { quick, full };

  Verification(const std::string &directory, Depth depth, Report report)
      : directory_(directory), depth_(depth), report_(std::move(report)) {}

  // False, with `failure` filled in, if the directory or a file in it may not
  // be opened: then nothing can be said.
  bool run(Failure &failure);

  bool has_damage() const { return has_damage_; }
  // Vocabulary and names of documents, as far as they are good.
  const Model &model() const { return model_; }

 private:
  bool check_names(Failure &failure);
  void check_vocabulary();
  void check_store();
  void check_overlaps(const StoreReader &store);
  void check_profile(const StoreReader &store, const std::string &name,
                     const StoreReader::Block &block);
  void check_classes();
  void check_class(const ClassFiles &files, const ClassData &data,
                   const Classifier &classifier);
  const Classifier *find_classifier(const ClassFiles &files,
                                    const ClassTable &classes) const;
  void check_judging(const ClassFiles &files, const ClassTable &classes);
  void check_spare_class_files(const ClassTable &classes);

  std::string path(const std::string &name) const;
  bool is_there(const std::string &name) const;
  void damage(const Failure &failure, const std::string &remedy);
  void note(const std::string &name, const std::string &text);

  const std::string &directory_;
  const Depth depth_;
  const Report report_;
  std::vector<std::string> names_;
  Model model_;
  // Terms of the vocabulary; no id is too large while that is not known.
  std::uint64_t nr_terms_ = UINT64_C(1) << 32;
  bool has_damage_ = false;
};

}  // namespace vek::keeping

#endif  // VEK_DATA_VERIFY_H_
