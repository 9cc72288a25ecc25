#include "report/predictions.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <tuple>

#include "base/escapes.h"
#include "base/helpers.h"
#include "base/input_file.h"
#include "base/textio.h"

namespace vek::reporting {
namespace {

constexpr std::int64_t largest_file = std::int64_t{4} << 30;

enum Column {
  document,
  filed_in,
  assigned,
  score,
  threshold,
  probability,
  rank,
  significant,
  candidates,
  thresholds,
  nr_columns
};
constexpr std::array<std::string_view, nr_columns> column_names = {
    "document",    "true", "assigned",    "score",      "threshold",
    "probability", "rank", "significant", "candidates", "thresholds"};

// Cuts what stands before the first separator, or all, off the front.
std::string_view take_until(std::string_view &rest, char separator) {
  const std::size_t end = std::min(rest.find(separator), rest.size());
  const std::string_view taken = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return taken;
}

template <typename Number>
bool read_number(std::string_view text, Number &value) {
  const char *end_P = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end_P, value);
  return !text.empty() && result.ec == std::errc() && result.ptr == end_P;
}

// A name that another program has not escaped is taken as it stands.
std::string unescaped(std::string_view text) {
  std::string name;
  return unescape(text, name) ? name : std::string(text);
}

std::string quoted(std::string_view text) {
  constexpr std::size_t longest = 60;
  return "`" + std::string(text.substr(0, longest)) +
         (text.size() > longest ? "...'" : "'");
}

// The lines of one file. Functions that read return what is wrong, or nothing.
class PredictionsParser {
 public:
  PredictionsParser(ClassNames &classes, Predictions &predictions)
      : classes_(classes), predictions_(predictions) {}

  std::string read_header(std::string_view line) {
    places_.fill(std::string_view::npos);
    if (line.empty())
      return "no line with the names of the columns";
    for (nr_cells_ = 0; !line.empty(); ++nr_cells_) {
      const auto name_P =
          std::ranges::find(column_names, take_until(line, '\t'));
      if (name_P != column_names.end())
        places_[std::size_t(name_P - column_names.begin())] = nr_cells_;
    }
    const auto missing_P = std::ranges::find(places_, std::string_view::npos);
    if (missing_P == places_.end())
      return "";
    return "there is no column " +
           quoted(column_names[std::size_t(missing_P - places_.begin())]) +
           ": this is no predictions file";
  }

  std::string read_line(std::string_view line) {
    if (line.find('\0') != std::string_view::npos)
      return "a zero byte";
    std::string wrong = split(line);
    if (!wrong.empty())
      return wrong;
    Prediction &doc = predictions_.documents.emplace_back();
    doc.name = unescaped(cells_[document]);
    if (doc.name.empty())
      return "a document without a name";
    for (const auto step :
         {&PredictionsParser::read_filed, &PredictionsParser::read_assigned,
          &PredictionsParser::read_candidates}) {
      wrong = (this->*step)(doc);
      if (!wrong.empty())
        return wrong;
    }
    if (cells_[significant] != "0" && cells_[significant] != "1")
      return "significant is " + quoted(cells_[significant]) + ", not 0 or 1";
    doc.is_significant = cells_[significant] == "1";
    return "";
  }

 private:
  std::string split(std::string_view line) {
    const auto found =
        static_cast<std::size_t>(std::ranges::count(line, '\t')) + 1;
    if (found != nr_cells_) {
      return "columns: " + std::to_string(found) + ", and in the first line " +
             std::to_string(nr_cells_);
    }
    for (std::size_t cell = 0; cell < nr_cells_; ++cell) {
      const std::string_view text = take_until(line, '\t');
      const auto place_P = std::ranges::find(places_, cell);
      if (place_P != places_.end())
        cells_[std::size_t(place_P - places_.begin())] = text;
    }
    return "";
  }

  // Calls `take` with each entry of a cell.
  template <typename Take>
  std::string each(Column column, Take take) {
    std::string_view rest = cells_[column];
    while (!rest.empty()) {
      const bool is_more = rest.find(' ') != std::string_view::npos;
      const std::string_view entry = take_until(rest, ' ');
      if (entry.empty() || (is_more && rest.empty()))
        return "an empty entry in column " + quoted(column_names[column]);
      if (!take(entry)) {
        return quoted(entry) + " in column " + quoted(column_names[column]) +
               " is not what belongs there";
      }
    }
    return "";
  }

  template <typename Number>
  std::string read_numbers(Column column, std::size_t nr_wanted,
                           std::vector<Number> &numbers) {
    numbers.clear();
    const std::string wrong = each(column, [&](std::string_view entry) {
      return read_number(entry, numbers.emplace_back());
    });
    if (!wrong.empty() || numbers.size() == nr_wanted)
      return wrong;
    return "entries in column " + quoted(column_names[column]) + ": " +
           std::to_string(numbers.size()) + ", and " +
           std::to_string(nr_wanted) + " are wanted";
  }

  std::uint32_t enter(std::string_view entry) {
    if (entry.find('\\') == std::string_view::npos)
      return classes_.enter(entry);
    return classes_.enter(unescaped(entry));
  }

  std::string read_filed(Prediction &doc) {
    const std::string wrong = each(filed_in, [&](std::string_view entry) {
      doc.filed_in.push_back(enter(entry));
      return true;
    });
    return wrong.empty() ? read_numbers(rank, doc.filed_in.size(), doc.ranks)
                         : wrong;
  }

  std::string read_assigned(Prediction &doc) {
    std::string wrong = each(assigned, [&](std::string_view entry) {
      doc.assigned.push_back({enter(entry)});
      return true;
    });
    if (wrong.empty())
      wrong = read_numbers(score, doc.assigned.size(), numbers_);
    for (std::size_t i = 0; wrong.empty() && i < numbers_.size(); ++i)
      doc.assigned[i].score = numbers_[i];
    if (wrong.empty())
      wrong = read_numbers(threshold, doc.assigned.size(), numbers_);
    for (std::size_t i = 0; wrong.empty() && i < numbers_.size(); ++i)
      doc.assigned[i].threshold = numbers_[i];
    if (wrong.empty() && !cells_[probability].empty())
      wrong = read_numbers(probability, doc.assigned.size(), doc.probabilities);
    return wrong;
  }

  std::string read_candidates(Prediction &doc) {
    std::string wrong = each(candidates, [&](std::string_view entry) {
      const std::size_t colon = entry.rfind(':');
      if (colon == std::string_view::npos || colon == 0)
        return false;
      Scored &scored = doc.candidates.emplace_back();
      scored.class_id = enter(entry.substr(0, colon));
      return read_number(entry.substr(colon + 1), scored.score);
    });
    if (wrong.empty())
      wrong = read_numbers(thresholds, doc.candidates.size(), numbers_);
    for (std::size_t i = 0; wrong.empty() && i < numbers_.size(); ++i)
      doc.candidates[i].threshold = numbers_[i];
    return wrong;
  }

  ClassNames &classes_;
  Predictions &predictions_;
  std::size_t nr_cells_ = 0;                        // of a line
  std::array<std::size_t, nr_columns> places_{};    // of the columns in it
  std::array<std::string_view, nr_columns> cells_;  // of the line at hand
  std::vector<double> numbers_;
};

// Whether no two documents have one name; otherwise the later one is set.
bool has_unique_names(const Predictions &predictions, std::size_t &second) {
  tsl::robin_map<std::string_view, std::size_t> places;
  for (std::size_t i = 0; i < predictions.documents.size(); ++i) {
    if (!places.emplace(predictions.documents[i].name, i).second) {
      second = i;
      return false;
    }
  }
  return true;
}

// The predictions files of a directory, newest first; where the times are
// equal, the one with the higher number.
std::vector<std::string> predictions_files(const std::string &directory,
                                           bool &failed) {
  using Key =
      std::tuple<std::int64_t, std::int64_t, std::uint64_t, std::string>;
  std::vector<Key> found;
  Directory entries(directory);
  for (std::string name; !entries.failed() && entries.read(name);) {
    std::uint64_t number = 0;
    if (!name.starts_with("predictions") || !name.ends_with(".tsv") ||
        !read_number(std::string_view(name).substr(11, name.size() - 15),
                     number))
      continue;
    const std::string path = Path(directory, name, "");
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0)
      found.emplace_back(status.st_mtim.tv_sec, status.st_mtim.tv_nsec, number,
                         path);
  }
  failed = entries.failed() || entries.read_failed();
  std::ranges::sort(found, std::greater{});
  std::vector<std::string> paths;
  for (const Key &key : found)
    paths.push_back(std::get<std::string>(key));
  return paths;
}

}  // namespace

std::uint32_t ClassNames::enter(std::string_view name) {
  const auto place = ids_.find(name);
  if (place != ids_.end())
    return place->second;
  const std::uint32_t id = size();
  ids_.emplace(names_.emplace_back(name), id);
  return id;
}

bool Predictions::has_judged() const {
  return std::ranges::any_of(documents, &Prediction::is_judged);
}

bool parse_predictions(std::string_view text, const std::string &file,
                       ClassNames &classes, Predictions &predictions,
                       Failure &failure) {
  predictions.file = file;
  PredictionsParser parser(classes, predictions);
  const bool is_complete = text.ends_with('\n');
  std::string_view line;
  take_line(text, line);
  std::string wrong = parser.read_header(line);
  std::size_t number = 1;
  while (wrong.empty() && take_line(text, line)) {
    ++number;
    wrong = parser.read_line(line);
  }
  if (wrong.empty() && !is_complete)
    wrong = "the line has no end: the file is not complete";
  std::size_t second = 0;
  if (wrong.empty() && !has_unique_names(predictions, second)) {
    number = second + 2;
    wrong = "the document " + quoted(predictions.documents[second].name) +
            " stands there already";
  }
  if (!wrong.empty())
    failure = {file + ':' + std::to_string(number), "", wrong};
  return wrong.empty();
}

bool read_predictions(const std::string &file, ClassNames &classes,
                      Predictions &predictions, Failure &failure) {
  struct stat status = {};
  if (stat(file.c_str(), &status) != 0) {
    failure = {file, "", std::strerror(errno)};
    return false;
  }
  // Others may have no end.
  if (!S_ISREG(status.st_mode) || status.st_size > largest_file) {
    failure = {file, "",
               S_ISREG(status.st_mode) ? "it has more than 4 GiB"
                                       : "it is no regular file"};
    return false;
  }
  std::string text;
  if (read_file(file, text) != ReadResult::ok) {
    failure = {file, "", std::strerror(errno)};
    return false;
  }
  return parse_predictions(text, file, classes, predictions, failure);
}

bool find_predictions(const std::string &place, ClassNames &classes,
                      Predictions &predictions, Failure &failure) {
  if (!is_directory(place))
    return read_predictions(place, classes, predictions, failure);
  bool failed = false;
  const std::vector<std::string> files = predictions_files(place, failed);
  if (failed || files.empty()) {
    failure = {place, "",
               failed ? std::strerror(errno)
                      : "no predictions file; vek writes one of the test "
                        "documents with `predictions on' in its resource file"};
    return false;
  }
  // The names of files that are not chosen must not get among the classes.
  std::size_t chosen = 0;
  for (std::size_t i = 0; files.size() > 1 && i < files.size(); ++i) {
    ClassNames names;
    Predictions found;
    if (!read_predictions(files[i], names, found, failure))
      return false;
    if (found.has_judged()) {
      chosen = i;
      break;
    }
  }
  return read_predictions(files[chosen], classes, predictions, failure);
}

}  // namespace vek::reporting
