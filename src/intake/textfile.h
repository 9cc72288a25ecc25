// The file that holds the text of a document, or its analysis.
//
// It is opened before anybody is asked about it: an analyser answers a path
// that it cannot read as it likes, and an empty answer would be stored for
// ever. Only a regular file has a text; a pipe or a device could block, or
// never end.
#ifndef VEK_INTAKE_TEXTFILE_H_
#define VEK_INTAKE_TEXTFILE_H_

#include <cstdint>
#include <string>

namespace vek {

class TextFile {
 public:
  // Opens it for reading, without waiting. A failure leaves errno set.
  explicit TextFile(const std::string &path);
  ~TextFile();
  TextFile(const TextFile &) = delete;
  TextFile &operator=(const TextFile &) = delete;

  // Empty, or why it cannot be read.
  const std::string &problem() const { return problem_; }

  // Both only without a problem. The descriptor stays this object's.
  int descriptor() const { return descriptor_; }
  // In bytes, when it was opened. Files that the kernel makes up claim 0.
  std::int64_t size() const { return size_; }

 private:
  // In this order: opening the file sets the problem.
  std::string problem_;
  int descriptor_ = -1;
  std::int64_t size_ = 0;
};

}  // namespace vek

#endif  // VEK_INTAKE_TEXTFILE_H_
