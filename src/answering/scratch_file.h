// A file with a text that an analyser is to read, gone with this object.
#ifndef VEK_ANSWERING_SCRATCH_FILE_H_
#define VEK_ANSWERING_SCRATCH_FILE_H_

#include <string>
#include <string_view>

#include "base/failure.h"

namespace vek {

class ScratchFile {
 public:
  ScratchFile() = default;
  ~ScratchFile();
  ScratchFile(const ScratchFile &) = delete;
  ScratchFile &operator=(const ScratchFile &) = delete;

  // Makes the text the file's content; the file is made when it is needed
  // first, in the directory for such, readable for its owner alone. False, with
  // `failure` filled in, if the system refuses.
  bool write(std::string_view text, Failure &failure);

  // With the ending of a document's file.
  const std::string &path() const { return path_; }

 private:
  std::string path_;
  int descriptor_ = -1;
};

}  // namespace vek

#endif  // VEK_ANSWERING_SCRATCH_FILE_H_
