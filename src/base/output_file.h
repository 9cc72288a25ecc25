// An output stream over a file descriptor.
//
// The standard file stream gives new files the mode 0666; vek's are 0664,
// whatever the umask leaves of it, and some are appended to, and some are
// synced. Apart from that it is a plain std::ostream: a failed write sets
// badbit and errno.
#ifndef VEK_BASE_OUTPUT_FILE_H_
#define VEK_BASE_OUTPUT_FILE_H_

#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

namespace vek {

class OutputFile : public std::ostream {
 public:
  enum class Mode { truncate, append };

  OutputFile();
  ~OutputFile() override;

  // Opens `path`, creating it with mode 0664 if it is missing. On failure
  // failbit is set and errno says why. The stream must not be open. A pipe
  // without a reader is waited for, but not to append to it.
  void open(const std::string &path, Mode mode);
  bool is_open() const { return buffer_.fd() >= 0; }

  // Writes out what is buffered and has the system put it on the disk.
  // Returns whether all went well.
  bool sync_to_disk();

  // Flushes and closes; a failure of either sets failbit. Nothing happens to
  // a stream that is not open.
  void close();

 private:
  class Buffer : public std::streambuf {
   public:
    Buffer();
    void attach(int fd);
    int detach();
    int fd() const { return fd_; }

   protected:
    int_type overflow(int_type character) override;
    int sync() override;
    std::streamsize xsputn(const char *text, std::streamsize size) override;

   private:
    bool write_out();
    void reset();

    std::vector<char> bytes_;
    int fd_ = -1;
  };

  Buffer buffer_;
};

}  // namespace vek

#endif  // VEK_BASE_OUTPUT_FILE_H_
