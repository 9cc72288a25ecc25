#include "convert/rows.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "convert/csv.h"
#include "convert/encoding.h"
#include "convert/json_fields.h"

namespace vek::convert {
namespace {

constexpr std::string_view label_prefix = "__label__";

using Names = std::vector<std::string>;

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t\r\n");
  if (begin == std::string_view::npos)
    return "";
  return text.substr(begin, text.find_last_not_of(" \t\r\n") + 1 - begin);
}

// What all forms have in common: from the values of fields to a record.
class RowReader {
 public:
  RowReader(Lines &lines, const Settings &settings, const FilePlace &file,
            Sink &sink, Failure &failure)
      : lines_(lines),
        settings_(settings),
        file_(file),
        sink_(sink),
        failure_(failure) {}

  bool read(Form form) {
    if (form == Form::jsonl)
      return read_lines([this](const std::string &line) { add_json(line); });
    if (form == Form::fasttext)
      return read_lines([this](const std::string &line) { add_label(line); });
    return read_table(form == Form::tsv ? '\t' : '\0');
  }

 private:
  template <class AddLine>
  bool read_lines(AddLine add_line) {
    std::string line;
    while (true) {
      const Lines::Result result = lines_.next(line);
      number_ = lines_.number();
      if (result == Lines::Result::end)
        return true;
      if (result == Lines::Result::failed)
        return fail(std::strerror(errno));
      if (result == Lines::Result::too_long)
        reject("a line of more than 40 MiB", line);
      else if (!trimmed(line).empty())
        add_line(line);
    }
  }

  void add_json(const std::string &line) {
    Names names = settings_.text.empty() ? Names{"text"} : settings_.text;
    const std::size_t nr_text = names.size();
    names.insert(names.end(), {settings_.id, settings_.group});
    if (!settings_.classes.empty())
      names.push_back(settings_.classes);
    else
      names.insert(names.end(), {"class", "label"});
    std::vector<Names> values;
    const std::string reason = read_json_fields(line, names, values);
    if (!reason.empty()) {
      reject(reason, line);
      return;
    }
    Record record;
    bool has_text = false;
    for (std::size_t i = 0; i < nr_text; ++i) {
      for (const std::string &value : values[i])
        append_text(record.text, value);
      has_text |= !values[i].empty();
    }
    if (!has_text) {
      reject("no field `" + names.front() + "'; see --text", line);
      return;
    }
    if (!values[nr_text].empty() && !settings_.id.empty())
      record.key = values[nr_text].front();
    if (!values[nr_text + 1].empty() && !settings_.group.empty())
      record.group = values[nr_text + 1].front();
    for (std::size_t i = nr_text + 2; i < values.size(); ++i) {
      for (const std::string &value : values[i])
        add_classes(record, value);
    }
    take(record, line);
  }

  void add_label(const std::string &line) {
    Record record;
    std::string_view rest = trimmed(line);
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find_first_of(" \t"), rest.size());
      const std::string_view word = rest.substr(0, end);
      if (word.starts_with(label_prefix))
        add_classes(record, word.substr(label_prefix.size()));
      else
        record.text.append(record.text.empty() ? "" : " ").append(word);
      rest = trimmed(rest.substr(end));
    }
    take(record, line);
  }

  // The places of the columns in a row.
  struct Columns {
    std::vector<std::size_t> text;
    std::optional<std::size_t> classes;
    std::optional<std::size_t> id;
    std::optional<std::size_t> group;
    std::size_t nr_columns = 0;  // 0: not known
  };

  // A name goes before a number.
  std::optional<std::size_t> find_column(const Names &header,
                                         const std::string &name) const {
    const auto found = std::find(header.begin(), header.end(), name);
    if (settings_.has_header && found != header.end())
      return static_cast<std::size_t>(found - header.begin());
    std::size_t number = 0;
    const char *end_P = name.data() + name.size();
    const auto result = std::from_chars(name.data(), end_P, number);
    if (result.ec == std::errc() && result.ptr == end_P && number >= 1 &&
        number <= header.size())
      return number - 1;
    return std::nullopt;
  }

  bool need_column(const Names &header, const std::string &name,
                   std::optional<std::size_t> &column) {
    column = find_column(header, name);
    if (column)
      return true;
    std::string reason = "no column `" + name + "'; there are";
    for (const std::string &column_name : header) {
      if (reason.size() < 500)
        reason += " `" + column_name + "'";
    }
    return fail(reason + "; see --text, --class and --no-header");
  }

  bool find_columns(const Names &header, Columns &columns) {
    if (settings_.has_header)
      columns.nr_columns = header.size();
    const Names text = settings_.text.empty() ? Names{"text"} : settings_.text;
    for (const std::string &name : text) {
      std::optional<std::size_t> column;
      if (!need_column(header, name, column))
        return false;
      columns.text.push_back(*column);
    }
    if (settings_.classes.empty()) {
      columns.classes = find_column(header, "class");
      if (!columns.classes)
        columns.classes = find_column(header, "label");
    }
    if (!columns.classes &&
        (!settings_.classes.empty() || file_.folder.empty()) &&
        !need_column(header,
                     settings_.classes.empty() ? "class" : settings_.classes,
                     columns.classes))
      return false;
    return (settings_.id.empty() ||
            need_column(header, settings_.id, columns.id)) &&
           (settings_.group.empty() ||
            need_column(header, settings_.group, columns.group));
  }

  bool read_table(char delimiter) {
    CsvReader reader(lines_, delimiter, settings_.has_quotes);
    Names row;
    Columns columns;
    bool has_columns = false;
    while (true) {
      const CsvReader::Result result = reader.next(row);
      number_ = reader.number();
      if (result == CsvReader::Result::end)
        return true;
      if (result == CsvReader::Result::failed)
        return fail(std::strerror(errno));
      if (result == CsvReader::Result::bad) {
        if (!has_columns)
          return fail(reader.reason());
        reject(reader.reason(), reader.begin());
      } else if (!has_columns) {
        has_columns = true;
        if (!find_columns(row, columns))
          return false;
        if (!settings_.has_header)
          add_row(columns, row, reader.begin());
      } else {
        add_row(columns, row, reader.begin());
      }
    }
  }

  void add_row(const Columns &columns, Names &row, std::string_view begin) {
    std::size_t nr_needed = columns.nr_columns;
    for (const std::size_t column : columns.text)
      nr_needed = std::max(nr_needed, column + 1);
    for (const auto &column : {columns.classes, columns.id, columns.group})
      nr_needed = std::max(nr_needed, column ? *column + 1 : 0);
    if (row.size() < nr_needed ||
        (columns.nr_columns > 0 && row.size() > nr_needed)) {
      reject(std::to_string(row.size()) + " fields instead of " +
                 std::to_string(nr_needed),
             begin);
      return;
    }
    Record record;
    for (const std::size_t column : columns.text)
      append_text(record.text, row[column]);
    if (columns.classes)
      add_classes(record, row[*columns.classes]);
    if (columns.id)
      record.key = row[*columns.id];
    if (columns.group)
      record.group = row[*columns.group];
    take(record, begin);
  }

  static void append_text(std::string &text, const std::string &field) {
    if (!text.empty() && !field.empty())
      text += "\n\n";
    text += field;
  }

  void add_classes(Record &record, std::string_view field) const {
    split_classes(field, settings_.separator, record.classes);
  }

  void take(Record &record, std::string_view begin) {
    record.place = file_.at_line(number_);
    record.is_id = !settings_.id.empty();
    if (record.is_id && record.key.empty()) {
      reject("no value of `" + settings_.id + "'", begin);
      return;
    }
    if (!settings_.group.empty() && record.group.empty()) {
      reject("no value of `" + settings_.group + "'", begin);
      return;
    }
    if (record.classes.empty() && settings_.classes.empty() &&
        !file_.folder.empty()) {
      record.classes = {file_.folder};
      record.has_folder_class = true;
    }
    bool is_valid =
        is_utf8(record.text) && is_utf8(record.key) && is_utf8(record.group);
    for (const std::string &name : record.classes)
      is_valid &= is_utf8(name);
    if (!is_valid)
      reject("not valid UTF-8, or NUL; see --encoding", begin);
    else
      sink_.take(record);
  }

  void reject(const std::string &reason, std::string_view begin) {
    sink_.reject(file_.at_line(number_), reason, begin);
  }

  bool fail(const std::string &reason) {
    failure_ = {file_.path, "line " + std::to_string(number_), reason};
    return false;
  }

  Lines &lines_;
  const Settings &settings_;
  const FilePlace &file_;
  Sink &sink_;
  Failure &failure_;
  std::uint64_t number_ = 0;
};

}  // namespace

void split_classes(std::string_view value, const std::string &separator,
                   std::vector<std::string> &classes) {
  while (true) {
    const std::size_t end =
        separator.empty() ? std::string_view::npos : value.find(separator);
    const std::string_view name = trimmed(value.substr(0, end));
    if (!name.empty())
      classes.emplace_back(name);
    if (end == std::string_view::npos)
      return;
    value.remove_prefix(end + separator.size());
  }
}

bool read_rows(Form form, Lines &lines, const Settings &settings,
               const FilePlace &file, Sink &sink, Failure &failure) {
  return RowReader(lines, settings, file, sink, failure).read(form);
}

}  // namespace vek::convert
