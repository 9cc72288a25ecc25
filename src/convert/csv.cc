#include "convert/csv.h"

#include <algorithm>
#include <new>
#include <utility>

#include "convert/record.h"

namespace vek::convert {
namespace {

// By which the library's buffer grows; its default makes long fields slow.
constexpr std::size_t growth = std::size_t{64} << 10;
// More columns are no table, and each costs memory of its own.
constexpr std::size_t most_fields = 10000;

}  // namespace

char guess_delimiter(std::string_view line) {
  std::size_t counts[256] = {};
  bool is_quoted = false;
  for (const char character : line) {
    is_quoted ^= character == '"';
    if (!is_quoted)
      ++counts[static_cast<unsigned char>(character)];
  }
  return *std::max_element(std::begin(",;\t|"), std::end(",;\t|") - 1,
                           [&counts](char a, char b) {
                             return counts[static_cast<unsigned char>(a)] <
                                    counts[static_cast<unsigned char>(b)];
                           });
}

CsvReader::CsvReader(Lines &lines, char delimiter, bool has_quotes)
    : lines_(lines), has_quotes_(has_quotes), delimiter_(delimiter) {
  reset();
}

CsvReader::~CsvReader() {
  csv_free(&parser_);
}

void CsvReader::reset() {
  csv_free(&parser_);
  if (csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI) != 0)
    throw std::bad_alloc();
  csv_set_blk_size(&parser_, growth);
  csv_set_delim(&parser_, static_cast<unsigned char>(delimiter_));
  // A line with NUL goes no further than this, so no field has such a quote.
  if (!has_quotes_)
    csv_set_quote(&parser_, '\0');
  fields_.clear();
  rows_.clear();
}

// The next line, from what has to be read again or from the source.
bool CsvReader::take_line(Lines::Result &result) {
  ++line_number_;
  if (again_begin_ < again_.size()) {
    const std::size_t end = again_.find('\n', again_begin_);
    const std::size_t size =
        end == std::string::npos ? end : end + 1 - again_begin_;
    line_.assign(again_, again_begin_, size);
    again_begin_ += line_.size();
    result = Lines::Result::line;
    return true;
  }
  again_.clear();
  again_begin_ = 0;
  result = lines_.next(line_);
  return result == Lines::Result::line || result == Lines::Result::too_long;
}

void CsvReader::add_field(const char *text_P, std::size_t size) {
  if (fields_.size() <= most_fields)
    fields_.emplace_back(text_P == nullptr ? "" : text_P, size);
}

CsvReader::Result CsvReader::give_up(const char *reason) {
  reason_ = reason;
  // All but the first line once more.
  const std::size_t end = raw_.find('\n');
  if (end != std::string::npos && end + 1 < raw_.size()) {
    line_number_ = first_line_;
    again_.replace(0, again_begin_, raw_, end + 1);
    again_begin_ = 0;
    raw_.resize(end);
  }
  reset();
  return Result::bad;
}

CsvReader::Result CsvReader::parse_line() {
  const auto on_field = [](void *text_P, std::size_t size, void *reader_P) {
    static_cast<CsvReader *>(reader_P)->add_field(static_cast<char *>(text_P),
                                                  size);
  };
  const auto on_row = [](int, void *reader_P) {
    CsvReader &reader = *static_cast<CsvReader *>(reader_P);
    reader.rows_.push_back(std::move(reader.fields_));
    reader.fields_.clear();
  };
  if (csv_parse(&parser_, line_.data(), line_.size(), on_field, on_row, this) !=
      line_.size()) {
    if (csv_error(&parser_) == CSV_ENOMEM)
      throw std::bad_alloc();
    return give_up("a quote in the wrong place; see --no-quotes");
  }
  // At the end of the source the last row lacks its line end.
  if ((line_.empty() || line_.back() != '\n') &&
      csv_fini(&parser_, on_field, on_row, this) != 0)
    return give_up("a quote that is not closed");
  return Result::row;
}

CsvReader::Result CsvReader::end_row(Row &row) {
  row = std::move(rows_.front());
  rows_.pop_front();
  if (row.size() <= most_fields)
    return Result::row;
  reason_ = "more than 10000 fields";
  return Result::bad;
}

CsvReader::Result CsvReader::next(Row &row) {
  if (!rows_.empty())
    return end_row(row);
  raw_.clear();
  while (rows_.empty()) {
    Lines::Result result = Lines::Result::end;
    if (!take_line(result)) {
      if (result == Lines::Result::failed)
        return Result::failed;
      // Only a quoted field can be open here.
      return raw_.empty() ? Result::end : give_up("a quote that is not closed");
    }
    if (raw_.empty())
      first_line_ = line_number_;
    if (delimiter_ == '\0') {
      delimiter_ = guess_delimiter(line_);
      csv_set_delim(&parser_, static_cast<unsigned char>(delimiter_));
    }
    if (result == Lines::Result::too_long) {
      // Behind others it is an empty one when they are read again.
      raw_ += raw_.empty() ? line_ : "\n";
      return give_up("a line of more than 40 MiB");
    }
    raw_ += line_;
    if (line_.find('\0') != std::string::npos)
      return give_up("NUL bytes");
    if (raw_.size() > longest_text)
      return give_up("more than 40 MiB: a quote that is not closed?");
    if (const Result parsed = parse_line(); parsed != Result::row)
      return parsed;
    if (rows_.empty() && fields_.empty() && parser_.entry_pos == 0 &&
        line_.find_first_not_of("\r\n") == std::string::npos && raw_ == line_)
      raw_.clear();  // an empty line before the row
  }
  return end_row(row);
}

}  // namespace vek::convert
