// The class files of a data directory as they count: in their places, or in the
// file in which those wait that a run was about to replace.
#ifndef VEK_DATA_CLASS_FILES_H_
#define VEK_DATA_CLASS_FILES_H_

#include <map>
#include <string>

#include "base/failure.h"
#include "base/helpers.h"
#include "classes/classtab.h"

namespace vek::keeping {

class ClassFiles {
 public:
  // False, with `failure` filled in, if the waiting ones cannot be read.
  bool open(const std::string &directory, Failure &failure);

  bool are_waiting() const { return !waiting_.empty(); }
  // Of a class file.
  Presence presence(const std::string &name) const;
  bool read(const std::string &name, std::string &text, Failure &failure) const;
  // Into the empty table.
  bool read_table(ClassTable &classes, Failure &failure) const;

  std::string path(const std::string &name) const;

 private:
  std::string directory_;
  std::map<std::string, std::string> waiting_;
};

}  // namespace vek::keeping

#endif  // VEK_DATA_CLASS_FILES_H_
