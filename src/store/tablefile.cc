#include "store/tablefile.h"

#include <cassert>

#include "log/log.h"

namespace vek {
namespace {

[[noreturn]] void fail(const std::string &name, FileError code) {
  report_file_error(name, code);
  abort_run();
}

}  // namespace

void TableFile::set_name(const std::string &name) {
  name_ = name;
  nr_written_ = 0;
  lacks_line_end_ = false;
}

std::string TableFile::load() {
  assert(!name_.empty());
  std::string content;
  must_read(name_, content);
  lacks_line_end_ = !content.empty() && content.back() != '\n';
  return content;
}

void TableFile::reject(const LineFault &fault) const {
  report_file_error(name_, FileError::format, fault.text());
  abort_run(no_cause);
}

void TableFile::begin(OutputFile &out, std::uint32_t nr_records,
                      std::string_view things) {
  assert(!name_.empty());
  // Also without a record to write: a data directory has both files.
  out.open(name_, OutputFile::Mode::append);
  if (!out)
    fail(name_, FileError::open_for_writing);
  if (nr_written_ >= nr_records)
    return;
  std::string text = nr_written_ == 0 ? "creating " : "updating ";
  text += name_;
  text += nr_written_ == 0 ? " with "
                           : " from " + std::to_string(nr_written_) + " to ";
  text += std::to_string(nr_records);
  text += ' ';
  text += things;
  log_always(1, text);
  if (lacks_line_end_)
    out.put('\n');
  lacks_line_end_ = false;
}

void TableFile::write_until(std::uint32_t end, const std::string &bytes,
                            OutputFile &out) {
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  out.flush();
  if (!out)
    fail(name_, FileError::write);
  // Only when the bytes have left the process: what counts as written here is
  // what a later append() leaves out.
  nr_written_ = end;
}

void TableFile::finish(OutputFile &out) const {
  out.close();
  if (!out)
    fail(name_, FileError::write);
}

}  // namespace vek
