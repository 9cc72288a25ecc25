// A directory of its own for a test case, which becomes the working directory.
#ifndef VEK_TESTS_SUPPORT_TEMPORARY_DIRECTORY_H_
#define VEK_TESTS_SUPPORT_TEMPORARY_DIRECTORY_H_

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>

namespace vek {

class TemporaryDirectory {
 public:
  TemporaryDirectory() : before_(std::filesystem::current_path()) {
    std::string path = std::filesystem::temp_directory_path() / "vek-XXXXXX";
    if (mkdtemp(path.data()) == nullptr)
      throw std::runtime_error(path);
    path_ = path;
    std::filesystem::current_path(path_);
  }
  ~TemporaryDirectory() {
    std::filesystem::current_path(before_);
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory &) = delete;
  TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

 private:
  std::filesystem::path before_;
  std::filesystem::path path_;
};

// Paths are relative to the working directory. Directories on the way are
// made.
inline void write_text(const std::filesystem::path &path,
                       const std::string &text) {
  if (path.has_parent_path()) {
    std::filesystem::create_directories(path.parent_path());
  }
  std::ofstream(path, std::ios::binary) << text;
}

inline std::string read_text(const std::filesystem::path &path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// Bytes as "01 0A FF", so that a binary file can be compared in a diff.
inline std::string hexadecimal(const std::string &bytes) {
  std::ostringstream out;
  out << std::hex << std::uppercase << std::setfill('0');
  for (const char byte : bytes) {
    out << (out.tellp() > 0 ? " " : "") << std::setw(2)
        << int{static_cast<unsigned char>(byte)};
  }
  return out.str();
}

}  // namespace vek

#endif  // VEK_TESTS_SUPPORT_TEMPORARY_DIRECTORY_H_
