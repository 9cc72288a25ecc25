// Where an analysis goes: a buffer of bounded size before a file descriptor or
// a string.
#ifndef VEK_ANALYSE_OUTPUT_H_
#define VEK_ANALYSE_OUTPUT_H_

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace vek::analysis {

class Output {
 public:
  Output();
  virtual ~Output() = default;
  Output(const Output &) = delete;
  Output &operator=(const Output &) = delete;

  void put(char c) {
    if (nr_bytes_ == capacity)
      flush();
    buffer_[nr_bytes_++] = c;
  }
  void put(std::string_view text) {
    if (text.size() > capacity - nr_bytes_)
      return put_in_parts(text);
    text.copy(buffer_.get() + nr_bytes_, text.size());
    nr_bytes_ += text.size();
  }

  // Passes on what is in the buffer, in one piece.
  void flush();

  // Forgets what is in the buffer, and that a write failed.
  void drop();

  // False if something could not be passed on; what came later was dropped.
  bool good() const { return good_; }

 protected:
  // Passes on all of `text`. False if that fails.
  virtual bool write(std::string_view text) = 0;

 private:
  // As much as a pipe takes at once.
  static constexpr std::size_t capacity = 64 * 1024;

  void put_in_parts(std::string_view text);

  std::unique_ptr<char[]> buffer_;
  std::size_t nr_bytes_ = 0;
  bool good_ = true;
};

class StringOutput : public Output {
 public:
  // All that was put since the last call.
  std::string take();

 protected:
  bool write(std::string_view text) override;

 private:
  std::string text_;
};

class DescriptorOutput : public Output {
 public:
  // The descriptor stays the caller's. -1 means none.
  explicit DescriptorOutput(int descriptor) : descriptor_(descriptor) {}

  void set_descriptor(int descriptor) { descriptor_ = descriptor; }

  // The errno of the write that failed last.
  int error_number() const { return error_number_; }

 protected:
  // Also to a descriptor that does not wait.
  bool write(std::string_view text) override;

 private:
  int descriptor_;
  int error_number_ = 0;
};

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_OUTPUT_H_
