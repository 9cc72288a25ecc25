// Columns of numbers that add up as they stand.
//
// A sum of doubles rounds at each step, so that its parts as printed seldom
// give the total as printed. Here all numbers of a column are written with the
// same count of decimals, each correctly rounded, and what the parts lack of
// the total is taken from these texts without rounding. So a reader may add in
// any order, and comes to the total to its last digit.
#ifndef VEK_EXPLAIN_DECIMALS_H_
#define VEK_EXPLAIN_DECIMALS_H_

#include <span>
#include <string>

namespace vek::explaining {

class Column {
 public:
  enum class Precision {
    readable,  // six significant digits of the total, at least four decimals
    // All digits of the shortest text that reads back as the total, at least
    // fifteen decimals.
    exact,
  };

  // For parts that are to add up to `total`.
  Column(double total, Precision precision);

  // What is no finite number is `inf`, `-inf` or `nan`.
  std::string text(double value) const;

  // The total less the parts, as text() has them; empty if one of them is no
  // finite number.
  std::string rest(std::span<const double> parts) const;

  int nr_decimals() const { return nr_decimals_; }

 private:
  double total_;
  int nr_decimals_;
};

}  // namespace vek::explaining

#endif  // VEK_EXPLAIN_DECIMALS_H_
