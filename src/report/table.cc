#include "report/table.h"

#include <utf8proc.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <nlohmann/json.hpp>

#include "base/messages.h"
#include "base/textio.h"

namespace vek::reporting {
namespace {

// A wider cell moves the rest of its line, and no other line.
constexpr std::size_t widest_column = 48;
constexpr char replacement[] = "\xEF\xBF\xBD";

// The length of the character at the front, 1 for a byte that begins none;
// `character` is negative then.
std::size_t next_character(std::string_view text, utf8proc_int32_t &character) {
  const utf8proc_ssize_t size =
      utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t *>(text.data()),
                       static_cast<utf8proc_ssize_t>(text.size()), &character);
  return size > 0 ? static_cast<std::size_t>(size) : 1;
}

bool is_dangerous(utf8proc_int32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0) ||
         (character >= 0x202A && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069);
}

// On a terminal, of what shown_name() returns.
std::size_t width_of(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    utf8proc_int32_t character = 0;
    text.remove_prefix(next_character(text, character));
    width += static_cast<std::size_t>(utf8proc_charwidth(character));
  }
  return width;
}

std::string joined(const Names &names) {
  std::string text;
  for (const std::string &name : names)
    text += (text.empty() ? "" : " ") + shown_name(name);
  return text;
}

std::string real_text(double value, bool is_exact) {
  std::string text;
  if (is_exact) {
    append_exact_real(text, value);
  } else {
    append_real(text, value);
  }
  return text;
}

// Numbers as exactly as the machine has them.
std::string machine_text(const Cell &cell) {
  if (const auto *share_P = std::get_if<Share>(&cell))
    return real_text(share_P->value, true);
  if (const auto *real_P = std::get_if<double>(&cell))
    return real_text(*real_P, true);
  return cell.index() == 0 ? "" : reader_text(cell);
}

std::string csv_text(const Cell &cell) {
  std::string text;
  if (const auto *names_P = std::get_if<Names>(&cell))
    text = joined(*names_P);
  else
    text = machine_text(cell);
  if (text.find_first_of(",\"\n\r") == std::string::npos)
    return text;
  std::string out = "\"";
  for (const char character : text)
    out.append(character == '"' ? 2 : 1, character);
  return out + '"';
}

// JSON knows no number that is none or infinite.
nlohmann::ordered_json json_real(double value) {
  if (!std::isfinite(value))
    return nullptr;
  return value;
}

nlohmann::ordered_json json_value(const Cell &cell) {
  if (const auto *name_P = std::get_if<std::string>(&cell))
    return *name_P;
  if (const auto *names_P = std::get_if<Names>(&cell))
    return *names_P;
  if (const auto *count_P = std::get_if<std::uint64_t>(&cell))
    return *count_P;
  if (const auto *real_P = std::get_if<double>(&cell))
    return json_real(*real_P);
  if (const auto *share_P = std::get_if<Share>(&cell))
    return json_real(share_P->value);
  if (const auto *digits_P = std::get_if<Digits>(&cell))
    return digits_P->text;
  return nullptr;
}

nlohmann::ordered_json json_table(const Table &table) {
  nlohmann::ordered_json json = table.is_record
                                    ? nlohmann::ordered_json::object()
                                    : nlohmann::ordered_json::array();
  for (const std::vector<Cell> &row : table.rows) {
    if (table.is_record) {
      json[std::get<std::string>(row[0])] = json_value(row[1]);
      continue;
    }
    nlohmann::ordered_json object;
    for (std::size_t i = 0; i < row.size(); ++i)
      object[table.columns[i]] = json_value(row[i]);
    json.push_back(std::move(object));
  }
  return json;
}

std::string dumped(const nlohmann::ordered_json &json) {
  return json.dump(-1, ' ', false,
                   nlohmann::ordered_json::error_handler_t::replace);
}

// Machines get names with an underline.
std::string heading(std::string text) {
  std::ranges::replace(text, '_', ' ');
  return text;
}

void append_padded(std::string &line, const std::string &text,
                   std::size_t width, bool is_text) {
  const std::size_t own = width_of(text);
  const std::size_t padding = width > own ? width - own : 0;
  if (!line.empty())
    line += "  ";
  if (is_text) {
    line += text;
    line.append(padding, ' ');
  } else {
    line.append(padding, ' ');
    line += text;
  }
}

void print_line(std::string line, std::ostream &out) {
  line.erase(line.find_last_not_of(' ') + 1);
  out << line << '\n';
}

void print_one(const Table &table, std::ostream &out) {
  const std::size_t nr_rows = std::min(table.nr_shown, table.rows.size());
  std::vector<std::vector<std::string>> texts;
  std::vector<std::size_t> widths;
  std::vector<bool> is_text(table.columns.size(), false);
  for (const std::string &column : table.columns)
    widths.push_back(table.is_record ? 0 : width_of(column));
  Names headings;
  std::ranges::transform(table.columns, std::back_inserter(headings), heading);
  for (std::size_t row = 0; row < nr_rows; ++row) {
    std::vector<std::string> &line = texts.emplace_back();
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
      const Cell &cell = table.rows[row][i];
      line.push_back(reader_text(cell));
      if (table.columns[0] == "measure" && i == 0)
        line.back() = heading(line.back());
      widths[i] =
          std::max(widths[i], std::min(width_of(line.back()), widest_column));
      is_text[i] = is_text[i] || std::holds_alternative<std::string>(cell) ||
                   std::holds_alternative<Names>(cell);
    }
  }
  const auto print = [&](const std::vector<std::string> &cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i)
      append_padded(line, cells[i], widths[i], is_text[i]);
    print_line(line, out);
  };
  if (!table.is_record && nr_rows > 0)
    print(headings);
  for (const std::vector<std::string> &line : texts)
    print(line);
  if (nr_rows < table.rows.size())
    out << "... and " << table.rows.size() - nr_rows << " more\n";
  if (!table.note.empty())
    out << table.note << '\n';
}

}  // namespace

Cell share_or_none(const std::optional<double> &value) {
  if (!value)
    return {};
  return Share{*value};
}

std::string shown_name(std::string_view name) {
  std::string text;
  while (!name.empty()) {
    utf8proc_int32_t character = 0;
    const std::size_t size = next_character(name, character);
    if (character < 0 || is_dangerous(character)) {
      text += replacement;
    } else {
      text += name.substr(0, size);
    }
    name.remove_prefix(size);
  }
  return text;
}

std::string reader_text(const Cell &cell) {
  if (const auto *name_P = std::get_if<std::string>(&cell))
    return shown_name(*name_P);
  if (const auto *names_P = std::get_if<Names>(&cell))
    return names_P->empty() ? "-" : joined(*names_P);
  if (const auto *count_P = std::get_if<std::uint64_t>(&cell))
    return std::to_string(*count_P);
  if (const auto *real_P = std::get_if<double>(&cell))
    return real_text(*real_P, false);
  if (const auto *digits_P = std::get_if<Digits>(&cell))
    return digits_P->text;
  if (const auto *share_P = std::get_if<Share>(&cell))
    return formatted("%.2f%%", share_P->value * 100);
  return "-";
}

void escape_names(Table &table, std::string (*escape)(std::string_view)) {
  for (std::vector<Cell> &row : table.rows) {
    for (Cell &cell : row) {
      if (auto *name_P = std::get_if<std::string>(&cell))
        *name_P = escape(*name_P);
      if (auto *names_P = std::get_if<Names>(&cell)) {
        for (std::string &name : *names_P)
          name = escape(name);
      }
    }
  }
}

void print_aligned(const std::vector<Table> &tables, std::ostream &out) {
  for (const Table &table : tables) {
    if (&table != &tables.front())
      out << '\n';
    print_one(table, out);
  }
}

void print_csv(const Table &table, std::ostream &out) {
  std::string line;
  for (const std::string &column : table.columns)
    line += (line.empty() ? "" : ",") + column;
  out << line << '\n';
  for (const std::vector<Cell> &row : table.rows) {
    line.clear();
    for (std::size_t i = 0; i < row.size(); ++i)
      line += (i == 0 ? "" : ",") + csv_text(row[i]);
    out << line << '\n';
  }
}

void print_tsv(const Table &table, std::string (*escape)(std::string_view),
               std::ostream &out) {
  std::string line;
  for (const std::string &column : table.columns)
    line += (line.empty() ? "" : "\t") + column;
  out << line << '\n';
  for (const std::vector<Cell> &row : table.rows) {
    line.clear();
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += i == 0 ? "" : "\t";
      std::string separator;
      if (const auto *name_P = std::get_if<std::string>(&row[i])) {
        line += escape(*name_P);
      } else if (const auto *names_P = std::get_if<Names>(&row[i])) {
        for (const std::string &name : *names_P) {
          line += separator + escape(name);
          separator = " ";
        }
      } else {
        line += machine_text(row[i]);
      }
    }
    out << line << '\n';
  }
}

std::string json_of(const Table &table) {
  return dumped(json_table(table));
}

void print_json(const std::vector<Table> &tables, std::ostream &out) {
  nlohmann::ordered_json json = nlohmann::ordered_json::object();
  for (const Table &table : tables)
    json[table.name] = json_table(table);
  out << dumped(json) << '\n';
}

}  // namespace vek::reporting
