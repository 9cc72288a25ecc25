// Rows of comma-separated values: RFC 4180, with any delimiter. A quoted field
// may hold delimiters, line ends and doubled quotes.
//
// A quote in the wrong place, or one that is never closed, spoils the line in
// which its row begins and no more: reading goes on with the line behind that.
#ifndef VEK_CONVERT_CSV_H_
#define VEK_CONVERT_CSV_H_

#include <csv.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "convert/lines.h"

namespace vek::convert {

// The delimiter that is most frequent outside quotes: comma, semicolon, tab or
// bar; a comma if there is none.
char guess_delimiter(std::string_view line);

class CsvReader {
 public:
  enum class Result { row, bad, end, failed };
  using Row = std::vector<std::string>;

  // A delimiter of '\0' is found out from the first line.
  CsvReader(Lines &lines, char delimiter, bool has_quotes);
  ~CsvReader();
  CsvReader(const CsvReader &) = delete;
  CsvReader &operator=(const CsvReader &) = delete;

  // `bad`: reason() and begin() tell of what. `failed`: errno does. Lines
  // without anything are skipped.
  Result next(Row &row);

  // The line in which the row begins, from 1.
  std::uint64_t number() const { return first_line_; }
  const std::string &reason() const { return reason_; }
  std::string_view begin() const { return raw_; }

 private:
  bool take_line(Lines::Result &result);
  void add_field(const char *text_P, std::size_t size);
  Result parse_line();
  Result end_row(Row &row);
  Result give_up(const char *reason);
  void reset();

  Lines &lines_;
  csv_parser parser_ = {};
  const bool has_quotes_;
  char delimiter_;
  Row fields_;
  std::deque<Row> rows_;  // that ended in this line: more than one with lone CR
  std::string line_;
  std::string raw_;    // the row's lines up to now
  std::string again_;  // lines to be read once more
  std::size_t again_begin_ = 0;
  std::uint64_t line_number_ = 0;
  std::uint64_t first_line_ = 0;
  std::string reason_;
};

}  // namespace vek::convert

#endif  // VEK_CONVERT_CSV_H_
