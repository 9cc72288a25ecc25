// The whole check of a collection: its directories, lists, documents and
// classes. It only reads: no file is created or changed.
#ifndef VEK_CHECK_COLLECTION_CHECK_H_
#define VEK_CHECK_COLLECTION_CHECK_H_

#include <optional>
#include <string>

#include "check/findings.h"
#include "check/list_check.h"
#include "data/verify.h"
#include "params/params.h"

namespace vek::checking {

// Reads a resource file, the one that vek would read: `name` with its ".rc",
// or "vek.rc" in the working directory, if there is one, for an empty name.
void read_resource_file(const std::string &name, Params &settings,
                        Findings &findings);

class CollectionCheck {
 public:
  // The arguments must outlive the check.
  CollectionCheck(const std::string &examples, const Params &settings,
                  Findings &findings);

  // False if the collection cannot be looked at at all.
  bool run();

  // What was checked.
  const Collection &collection() const { return collection_; }

 private:
  bool has_directories();
  void check_analyser();
  void check_documents();
  void check_profiles();
  struct TextProblem {
    bool is_missing;
    std::string text;
  };
  std::optional<TextProblem> text_problem(const std::string &name) const;
  void check_input_directory();
  void check_classes();
  void check_class(std::uint32_t id, bool learns, bool measures);
  void check_top_class();
  void warn(Place place, const std::string &text);

  const std::string &examples_;
  const Params &settings_;
  Findings &findings_;
  Collection collection_;
  ListCheck lists_;
  keeping::Verification data_;
};

}  // namespace vek::checking

#endif  // VEK_CHECK_COLLECTION_CHECK_H_
