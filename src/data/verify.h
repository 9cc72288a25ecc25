// Looks at every file of a data directory against every other.
#ifndef VEK_DATA_VERIFY_H_
#define VEK_DATA_VERIFY_H_

#include <cstdint>
#include <ostream>
#include <string>

#include "base/failure.h"
#include "data/class_files.h"
#include "learning/classifiers.h"
#include "model/model.h"

namespace vek::keeping {

class Verification {
 public:
  // Findings go to `out`, a line for each: "damage: FILE: PLACE: what; remedy"
  // or, for what a broken-off run has left and the next one puts right, the
  // same with "note: ".
  Verification(const std::string &directory, std::ostream &out)
      : directory_(directory), out_(out) {}

  // False, with `failure` filled in, if the directory or a file in it may not
  // be opened: then nothing can be said.
  bool run(Failure &failure);

  bool has_damage() const { return has_damage_; }

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
  void check_spare_class_files(const ClassTable &classes);

  std::string path(const std::string &name) const;
  bool is_there(const std::string &name) const;
  void damage(const Failure &failure, const std::string &remedy);
  void note(const std::string &name, const std::string &text);

  const std::string &directory_;
  std::ostream &out_;
  std::vector<std::string> names_;
  Model model_;
  // Terms of the vocabulary; no id is too large while that is not known.
  std::uint64_t nr_terms_ = UINT64_C(1) << 32;
  bool has_damage_ = false;
};

}  // namespace vek::keeping

#endif  // VEK_DATA_VERIFY_H_
