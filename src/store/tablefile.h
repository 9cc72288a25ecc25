// The file of a table that only grows, atoms.dat or terms.dat: reads it as a
// whole and appends to it. Failures are reported and end the run.
#ifndef VEK_STORE_TABLEFILE_H_
#define VEK_STORE_TABLEFILE_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/failure.h"
#include "base/output_file.h"

namespace vek {

class TableFile {
 public:
  // Names the file. Until accept() is called, none of its records counts as
  // written.
  void set_name(const std::string &name);

  const std::string &name() const { return name_; }

  // How many records the file holds; also the id of the first that it lacks.
  std::uint32_t nr_written() const { return nr_written_; }

  // All bytes of the file. Ends the run with a report if they cannot be read.
  // The name must be set, here and in append().
  std::string load();

  // The bytes of load() turned out to be `nr_records` records.
  void accept(std::uint32_t nr_records) { nr_written_ = nr_records; }

  // The bytes of load() turned out to be damaged: reports a format error and
  // ends the run.
  [[noreturn]] void reject(const LineFault &fault) const;

  // Opens the file, creating it if it is missing, and appends the records from
  // nr_written() up to `nr_records`; append_record(std::string &out,
  // std::uint32_t id) makes one, with its line end. Logs what it does if there
  // is anything to do; `things` is what the log calls the records. A failure
  // ends the run with a report. The file then holds a first part of the bytes,
  // and nr_written() records of them for certain.
  template <typename AppendRecord>
  void append(std::uint32_t nr_records, std::string_view things,
              AppendRecord append_record) {
    OutputFile out;
    begin(out, nr_records, things);
    std::string bytes;
    while (nr_written_ < nr_records) {
      const std::uint32_t end =
          nr_written_ + std::min(step, nr_records - nr_written_);
      bytes.clear();
      for (std::uint32_t id = nr_written_; id < end; ++id) {
        append_record(bytes, id);
      }
      write_until(end, bytes, out);
    }
    finish(out);
  }

 private:
  // Records that are written and checked at once. A flush for each would cost
  // a system call for each, and leave nothing better behind when it fails.
  static constexpr std::uint32_t step = 4096;

  void begin(OutputFile &out, std::uint32_t nr_records,
             std::string_view things);
  void write_until(std::uint32_t end, const std::string &bytes,
                   OutputFile &out);
  void finish(OutputFile &out) const;

  std::string name_;
  std::uint32_t nr_written_ = 0;
  // The file was loaded and does not end in a line end, so that a new record
  // would become a part of its last one.
  bool lacks_line_end_ = false;
};

}  // namespace vek

#endif  // VEK_STORE_TABLEFILE_H_
