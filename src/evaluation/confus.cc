#include "evaluation/confus.h"

#include <algorithm>
#include <iomanip>

#include "base/require.h"

namespace vek {
namespace {

constexpr int item_width = 10;

// One value of a report: a count, or a measure shown in percent.
struct ReportItem {
  enum class Kind { count, percentage };
  Kind kind;
  std::uint32_t count;
  double percentage;
};

ReportItem count_item(std::uint32_t value) {
  return {ReportItem::Kind::count, value, 0.0};
}

ReportItem percentage_item(WeightType measure) {
  return {ReportItem::Kind::percentage, 0, measure * 100.0};
}

std::ostream &operator<<(std::ostream &os, const ReportItem &item) {
  os << std::right << std::setw(item_width);
  if (item.kind == ReportItem::Kind::count)
    return os << item.count << "  ";
  return os << std::fixed << std::setprecision(2) << item.percentage << "% ";
}

// A quotient that does not exist is shown as 0, never as NaN; the result tells
// the two apart.
bool divide(std::uint32_t a, std::uint32_t b, WeightType &value) {
  value = b == 0 ? 0.0 : double(a) / double(b);
  return b != 0;
}

}  // namespace

WeightType f_measure(WeightType precision, WeightType recall, double f) {
  // Beyond this it is the recall alone.
  const double square = std::min(f * f, 1e100);
  const double divisor = square * precision + recall;
  if (divisor == 0.0)
    return 0.0;
  return (square + 1.0) * precision * recall / divisor;
}

ConfusionMatrix::ConfusionMatrix(const ClassTable &classes,
                                 std::optional<std::uint32_t> nr_documents)
    : classes_(classes),
      nr_classes_(static_cast<std::uint32_t>(classes.size())),
      nr_documents_(nr_documents),
      cells_(std::size_t{nr_rows} * nr_classes_) {}

std::uint32_t ConfusionMatrix::nr_test_documents() const {
  return nr_documents_.value_or(
      static_cast<std::uint32_t>(classes_.get_data(0).test_docs.size()));
}

void ConfusionMatrix::enter(std::uint32_t row, std::uint32_t class_id) {
  // In size_t: rows times classes may be beyond 32 bits.
  const std::size_t start = std::size_t{row} * nr_classes_;
  const std::size_t pos = start + class_id;
  require(pos < size(), "pos < size()");
  ++cells_[pos];
  // The total of the row. For a document that is filed in the top class itself
  // both cells are the same, which then counts it twice.
  ++cells_[start];
}

std::uint32_t ConfusionMatrix::get_confusion(std::uint32_t row,
                                             std::uint32_t column) const {
  const std::size_t pos = std::size_t{row} * nr_classes_ + column;
  require(pos < size(), "pos < size()");
  return cells_[pos];
}

std::uint32_t ConfusionMatrix::nr_correct(std::uint32_t class_id) const {
  return get_confusion(row_rs, class_id);
}

std::uint32_t ConfusionMatrix::nr_missed(std::uint32_t class_id) const {
  return get_confusion(row_rns, class_id);
}

std::uint32_t ConfusionMatrix::nr_wrong(std::uint32_t class_id) const {
  return get_confusion(row_nrs, class_id);
}

bool ConfusionMatrix::precision(std::uint32_t class_id,
                                WeightType &value) const {
  const std::uint32_t correct = nr_correct(class_id);
  return divide(correct, correct + nr_wrong(class_id), value);
}

bool ConfusionMatrix::recall(std::uint32_t class_id, WeightType &value) const {
  const std::uint32_t correct = nr_correct(class_id);
  return divide(correct, correct + nr_missed(class_id), value);
}

void ConfusionMatrix::fallout(std::uint32_t class_id, WeightType &value) const {
  const std::uint32_t others =
      nr_test_documents() - nr_correct(class_id) - nr_missed(class_id);
  divide(nr_wrong(class_id), others, value);
}

void ConfusionMatrix::print(std::ostream &os, double f) const {
  os << "Contingency table:RS/RNS/NRS/NRNS\n";
  for (std::uint32_t id = 0; id < nr_classes_; ++id)
    print_counts(os, id);
  os << "\nPrecision/Recall/F-Measure/Fallout\n";
  for (std::uint32_t id = 0; id < nr_classes_; ++id)
    print_measures(os, id, f);
  os << '\n';
}

void ConfusionMatrix::print_counts(std::ostream &os,
                                   std::uint32_t class_id) const {
  os << classes_.full_name(class_id);
  os << "  ";
  std::uint32_t sum = 0;
  for (std::uint32_t row = 0; row < nr_rows; ++row) {
    const std::uint32_t count = get_confusion(row, class_id);
    sum += count;
    os << count_item(count) << "  ";
  }
  // NRNS. A document filed in several classes counts for each of them in the
  // totals, which can then be more than there are documents: the rest is 0.
  if (sum <= nr_test_documents()) {
    os << count_item(nr_test_documents() - sum);
  } else {
    os << '0';
  }
  os << '\n';
}

void ConfusionMatrix::print_measures(std::ostream &os, std::uint32_t class_id,
                                     double f) const {
  WeightType precision_value = 0.0;
  WeightType recall_value = 0.0;
  WeightType fallout_value = 0.0;
  const bool has_precision = precision(class_id, precision_value);
  const bool has_recall = recall(class_id, recall_value);
  // A class without either has no line: 0 % would say that all went wrong.
  if (!has_precision || !has_recall)
    return;
  fallout(class_id, fallout_value);
  if (class_id == 0) {
    os << "Total";
  } else {
    os << classes_.full_name(class_id);
  }
  for (const WeightType measure :
       {precision_value, recall_value,
        f_measure(precision_value, recall_value, f), fallout_value}) {
    os << "  " << percentage_item(measure);
  }
  os << '\n';
}

}  // namespace vek
