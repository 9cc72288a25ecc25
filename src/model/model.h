// A data directory for readers: what it has learnt, as a run of vek would find
// it, without a change to any file.
//
// Everything is read into the memory of this object, except the documents'
// profiles, which are read one by one. What a broken-off run has left, as the
// journal of the vocabulary or class files that are half replaced, counts as it
// does for vek. Nothing here logs, writes, creates or ends the process: a
// failure is returned with its file, place and reason. No run should use the
// directory at the same time.
#ifndef VEK_MODEL_MODEL_H_
#define VEK_MODEL_MODEL_H_

#include <cstdint>
#include <map>
#include <string>

#include "base/failure.h"
#include "classes/classtab.h"
#include "evaluation/judging.h"
#include "intake/docprof.h"
#include "learning/classifiers.h"
#include "model/storereader.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/stringpool.h"
#include "vocabulary/termtab.h"

namespace vek {

class Model {
 public:
  Model() = default;
  Model(const Model &) = delete;
  Model &operator=(const Model &) = delete;

  // Reads the vocabulary and the names of the stored documents. To be called
  // once, and before all else. False, with `failure` filled in, if the
  // directory is not there or is damaged.
  bool open(const std::string &directory, Failure &failure);

  // Reads class table, class profiles, thresholds and weights, as a run that
  // classifies with the kept model has them. They must have been written by
  // that classifier. False, with `failure` filled in, if there are no classes,
  // if a file is missing, damaged or of another classifier, or if a class has
  // terms that the vocabulary lacks.
  bool read_classes(const Classifier &classifier, Failure &failure);

  // The classifier that wrote the class files, judged by the columns of the
  // first class profile with a term. Null, with `failure` filled in, if there
  // is none.
  const Classifier *find_classifier(Failure &failure) const;

  const AtomTable &atoms() const { return atoms_; }
  const TermTable &terms() const { return terms_; }
  // A term as people write it: the head, or modifier and head.
  std::string term_text(std::uint32_t term_id) const;

  // Empty, unless read_classes() was called.
  const ClassTable &classes() const { return classes_; }
  // What was learnt about their scores; empty if nothing was.
  const Judging &judging() const { return judging_; }
  // Sets `id` to that of the class with that path below the top class, as
  // `sport/tennis`. False, with `failure` filled in, if there is none.
  bool find_class(const std::string &path, std::uint32_t &id,
                  Failure &failure) const;

  // The stored documents, by name.
  const StoreReader::Blocks &documents() const { return store_.blocks(); }
  // Fills the empty profile with all terms of a stored document. False, with
  // `failure` filled in, if it is not stored, cannot be read, or has terms that
  // the vocabulary lacks.
  bool read_profile(const std::string &name, DocProfile &profile,
                    Failure &failure) const;

 private:
  bool read_vocabulary(Failure &failure);
  bool read_class_set(Failure &failure);
  bool read_judging(Failure &failure);
  bool read_class_file(const std::string &name, std::string &text,
                       Failure &failure) const;

  std::string directory_;
  StringPool pool_;
  AtomTable atoms_{pool_};
  TermTable terms_;
  ClassTable classes_;
  Judging judging_;
  StoreReader store_;
  // Class files that wait to be put in their place.
  std::map<std::string, std::string> waiting_class_files_;
};

}  // namespace vek

#endif  // VEK_MODEL_MODEL_H_
