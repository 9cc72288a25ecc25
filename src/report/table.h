// Tables of names and figures, and the three ways to write them: aligned for a
// reader, CSV, JSON.
//
// Names can hold any byte. For a reader and in CSV, what is no UTF-8 and what
// moves a cursor or turns the direction of text is shown as U+FFFD; in JSON,
// only what is no UTF-8.
#ifndef VEK_REPORT_TABLE_H_
#define VEK_REPORT_TABLE_H_

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vek::reporting {

// A fraction of 1: in percent for a reader.
struct Share {
  double value = 0;
};
// A number in just these digits.
struct Digits {
  std::string text;
};
using Names = std::vector<std::string>;
// What does not exist is "-" for a reader, empty in CSV, null in JSON.
using Cell = std::variant<std::monostate, std::string, Names, std::uint64_t,
                          double, Share, Digits>;

Cell share_or_none(const std::optional<double> &value);

struct Table {
  std::string name;
  std::vector<std::string> columns;
  std::vector<std::vector<Cell>> rows;
  // Each row is a name and its value: JSON has one object for all of them.
  bool is_record = false;
  // Sentences below the table, for a reader only.
  std::string note = {};
  // The rows behind this one are shown to no reader, who is told how many they
  // are.
  std::size_t nr_shown = SIZE_MAX;
};

std::string shown_name(std::string_view name);
std::string reader_text(const Cell &cell);

// Puts `escape(name)` in the place of each name.
void escape_names(Table &table, std::string (*escape)(std::string_view));

void print_aligned(const std::vector<Table> &tables, std::ostream &out);
// By RFC 4180, with plain line ends; a list of names is separated by blanks.
void print_csv(const Table &table, std::ostream &out);
// Lines whose fields tabs part, below the columns' names. `escape` makes a name
// that has neither tabs nor line ends.
void print_tsv(const Table &table, std::string (*escape)(std::string_view),
               std::ostream &out);
// A list of objects, or of a record one object.
std::string json_of(const Table &table);
// An object with a member for each table.
void print_json(const std::vector<Table> &tables, std::ostream &out);

}  // namespace vek::reporting

#endif  // VEK_REPORT_TABLE_H_
