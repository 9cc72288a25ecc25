#include "evaluation/calibration.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <tuple>
#include <utility>

#include "base/exponential.h"
#include "base/logarithm.h"

namespace vek {
namespace {

// A curve's parameters, which multiply what is known of a document: the slopes
// and the inclusion, none of which is negative, the intercept, which multiplies
// 1, and the factors of sons.
constexpr std::size_t nr_slopes = Calibration::nr_pieces + 1;
constexpr std::size_t nr_of_all = nr_slopes + 1;
using Parameters = std::vector<WeightType>;

// What each is drawn to its beginning with: 1 / variance of its prior.
WeightType precision_of(std::size_t parameter) {
  return parameter < nr_of_all ? 1.0 : 30.0;
}

// The sum of the logarithms of many numbers, by that of their product.
class LogarithmOfProduct {
 public:
  // From 1e-150 to 1e150.
  void multiply(WeightType x) {
    product_ *= x;
    if (product_ < 1e-150 || product_ > 1e150) {
      sum_ += natural_logarithm(product_);
      product_ = 1.0;
    }
  }
  WeightType value() const { return sum_ + natural_logarithm(product_); }

 private:
  WeightType sum_ = 0.0;
  WeightType product_ = 1.0;
};

// Logits beyond it are as good as certain.
constexpr WeightType largest_logit = 60.0;

WeightType bounded(WeightType logit) {
  return std::clamp(logit, -largest_logit, largest_logit);
}

// The parts of a logit that lie in each piece.
std::array<WeightType, Calibration::nr_pieces> pieces_of(WeightType z) {
  constexpr WeightType knot = Calibration::knot;
  return {std::min(z + knot, 0.0), std::clamp(z + knot, 0.0, 2.0 * knot),
          std::max(z - knot, 0.0)};
}

// A deviation of 0 counts as 1, and so does one that is but the rounding of
// the mean: numbers that are all the same say nothing.
std::pair<WeightType, WeightType> mean_and_deviation(
    std::span<const WeightType> values) {
  const auto n = static_cast<WeightType>(values.size());
  WeightType mean = 0.0;
  WeightType squares = 0.0;
  for (const WeightType value : values)
    mean += value / n;
  for (const WeightType value : values)
    squares += (value - mean) * (value - mean) / n;
  const WeightType deviation = std::sqrt(squares);
  return {mean, deviation > 1e-12 * std::abs(mean) ? deviation : 1.0};
}

// A feature in units in which it has the mean 0 and the deviation 1. What is no
// number counts as 0 before.
struct Units {
  Units() = default;
  explicit Units(std::span<const WeightType> values) {
    std::vector<WeightType> numbers;
    for (const WeightType value : values) {
      if (std::isfinite(value))
        numbers.push_back(value);
    }
    std::tie(mean, deviation) = mean_and_deviation(numbers);
    if (!std::isfinite(mean) || !std::isfinite(deviation)) {
      mean = 0.0;
      deviation = std::numeric_limits<WeightType>::infinity();
    }
  }
  WeightType operator()(WeightType value) const {
    return ((std::isfinite(value) ? value : 0.0) - mean) / deviation;
  }

  WeightType mean = 0.0;
  WeightType deviation = 1.0;
};

// One class's curve while it is fitted. A document has the probability
//   e^v / (rest + e^v)
// with the curve's value v, and `rest` 1 or the sum of e^v of its brothers.
class CurveFit {
 public:
  CurveFit(const Calibration &start, const CalibrationColumn &column,
           std::span<const WeightType> weights);

  std::size_t size() const { return shares_.size(); }
  // e^v of a document.
  WeightType power(std::size_t i) const { return powers_[i]; }

  // No document is in the class: it says nothing, and takes nothing.
  bool is_hopeless() const { return start_ == Calibration(); }

  // One step of Newton's method. Returns by how much the parameter moved that
  // moved most; 0 where no step makes it better.
  WeightType improve(std::span<const WeightType> rests);

  Calibration result() const;

 private:
  std::size_t nr_parameters() const { return parameters_.size(); }
  // What the parameters multiply.
  const WeightType *features(std::size_t i) const {
    return features_.data() + i * nr_parameters();
  }
  void add(const CalibrationColumn &column, std::size_t i, WeightType share);
  WeightType value(const Parameters &parameters, std::size_t i) const {
    const WeightType *const x_P = features(i);
    WeightType sum = 0.0;
    for (std::size_t k = 0; k < parameters.size(); ++k)
      sum += parameters[k] * x_P[k];
    return bounded(sum);
  }
  WeightType penalty(const Parameters &parameters) const {
    WeightType sum = 0.0;
    for (std::size_t k = 0; k < parameters.size(); ++k) {
      const WeightType distance = parameters[k] - prior_[k];
      sum += precision_of(k) * distance * distance;
    }
    return 0.5 * sum;
  }
  Parameters newton_step(std::span<const WeightType> rests) const;
  WeightType loss_of(const Parameters &parameters,
                     std::span<const WeightType> rests,
                     std::vector<WeightType> &powers) const;

  Calibration start_;
  Units units_;  // of the inclusive values
  std::vector<Units> units_of_sons_;
  Parameters parameters_;
  Parameters prior_;
  std::vector<WeightType> features_;  // of one document after the other
  std::vector<WeightType> shares_;
  std::vector<WeightType> powers_;
  std::vector<WeightType> trial_;
};

CurveFit::CurveFit(const Calibration &start, const CalibrationColumn &column,
                   std::span<const WeightType> weights)
    : start_(start) {
  prior_.assign(start.slopes.begin(), start.slopes.end());
  prior_.push_back(0.0);
  prior_.push_back(start.intercept);
  prior_.resize(nr_of_all + column.scores_of_sons.size());
  parameters_ = prior_;
  if (!column.inclusive.empty())
    units_ = Units(column.inclusive);
  for (const std::vector<WeightType> &scores : column.scores_of_sons)
    units_of_sons_.emplace_back(scores);
  const auto nr_docs =
      column.scores.size() - std::size_t(std::ranges::count(weights, 0.0));
  features_.reserve(nr_docs * nr_parameters());
  shares_.reserve(nr_docs);
  powers_.reserve(nr_docs);
  for (std::size_t i = 0; i < column.scores.size(); ++i) {
    if (weights[i] != 0.0)
      add(column, i, column.is_member[i] != 0 ? weights[i] : 0.0);
  }
}

// `share` is what the class has of the document: 1, or less of one that is in
// several sons, or 0.
void CurveFit::add(const CalibrationColumn &column, std::size_t i,
                   WeightType share) {
  const WeightType score = column.scores[i];
  const WeightType z = std::isfinite(score)
                           ? start_.factor * score + start_.offset
                           : Calibration::hopeless;
  const auto pieces = pieces_of(bounded(z));
  features_.insert(features_.end(), pieces.begin(), pieces.end());
  features_.push_back(column.inclusive.empty() ? 0.0
                                               : units_(column.inclusive[i]));
  features_.push_back(1.0);
  for (std::size_t son = 0; son < units_of_sons_.size(); ++son)
    features_.push_back(units_of_sons_[son](column.scores_of_sons[son][i]));
  shares_.push_back(share);
  powers_.push_back(exponential(value(parameters_, size() - 1)));
}

Calibration CurveFit::result() const {
  Calibration calibration = start_;
  std::copy_n(parameters_.begin(), calibration.slopes.size(),
              calibration.slopes.begin());
  calibration.inclusion = parameters_[nr_slopes - 1] / units_.deviation;
  calibration.intercept =
      parameters_[nr_slopes] - calibration.inclusion * units_.mean;
  for (std::size_t son = 0; son < units_of_sons_.size(); ++son) {
    const WeightType factor =
        parameters_[nr_of_all + son] / units_of_sons_[son].deviation;
    calibration.factors_of_sons.push_back(factor);
    calibration.intercept -= factor * units_of_sons_[son].mean;
  }
  return calibration;
}

// A symmetric positive definite matrix, of which only the upper half is used.
struct Matrix {
  explicit Matrix(std::size_t n) : size(n), values(n * n) {}
  WeightType *row(std::size_t k) { return values.data() + k * size; }

  std::size_t size;
  std::vector<WeightType> values;
};

// Solves the system for the parameters that are free, by elimination without
// pivots; the others get 0.
Parameters solve(Matrix &matrix, Parameters right,
                 const std::vector<bool> &free) {
  const std::size_t n = matrix.size;
  for (std::size_t k = 0; k < n; ++k) {
    if (free[k])
      continue;
    for (std::size_t j = 0; j < n; ++j)
      matrix.row(std::min(j, k))[std::max(j, k)] = 0.0;
    matrix.row(k)[k] = 1.0;
    right[k] = 0.0;
  }
  for (std::size_t k = 0; k < n; ++k) {
    for (std::size_t i = k + 1; i < n; ++i) {
      const WeightType factor = matrix.row(k)[i] / matrix.row(k)[k];
      for (std::size_t j = i; j < n; ++j)
        matrix.row(i)[j] -= factor * matrix.row(k)[j];
      right[i] -= factor * right[k];
    }
  }
  for (std::size_t k = n; k-- > 0;) {
    for (std::size_t j = k + 1; j < n; ++j)
      right[k] -= matrix.row(k)[j] * right[j];
    right[k] /= matrix.row(k)[k];
  }
  return right;
}

Parameters CurveFit::newton_step(std::span<const WeightType> rests) const {
  const std::size_t n = nr_parameters();
  Parameters gradient(n);
  Matrix curvature(n);
  for (std::size_t i = 0; i < size(); ++i) {
    const WeightType p = powers_[i] / (rests[i] + powers_[i]);
    const WeightType error = p - shares_[i];
    const WeightType weight = p * (1.0 - p);
    const WeightType *const x_P = features(i);
    for (std::size_t k = 0; k < n; ++k) {
      gradient[k] += error * x_P[k];
      const WeightType weighted = weight * x_P[k];
      WeightType *const row_P = curvature.row(k);
      for (std::size_t j = k; j < n; ++j)
        row_P[j] += weighted * x_P[j];
    }
  }
  std::vector<bool> free(n);
  for (std::size_t k = 0; k < n; ++k) {
    gradient[k] += precision_of(k) * (parameters_[k] - prior_[k]);
    curvature.row(k)[k] += precision_of(k);
    // A slope of 0 that wants to be less stays (Bertsekas, Projected Newton
    // methods, 1982).
    free[k] = k >= nr_slopes || parameters_[k] > 0.0 || gradient[k] < 0.0;
  }
  return solve(curvature, std::move(gradient), free);
}

// The negative logarithm of the likelihood, less that of the parameters that
// the powers were made with.
WeightType CurveFit::loss_of(const Parameters &parameters,
                             std::span<const WeightType> rests,
                             std::vector<WeightType> &powers) const {
  LogarithmOfProduct product;
  WeightType gain = 0.0;
  powers.resize(size());
  for (std::size_t i = 0; i < size(); ++i) {
    const WeightType v = value(parameters, i);
    powers[i] = exponential(v);
    product.multiply((rests[i] + powers[i]) / (rests[i] + powers_[i]));
    if (shares_[i] != 0.0)
      gain += shares_[i] * (v - value(parameters_, i));
  }
  return product.value() - gain + penalty(parameters) - penalty(parameters_);
}

WeightType CurveFit::improve(std::span<const WeightType> rests) {
  const Parameters step = newton_step(rests);
  constexpr WeightType shortest = 0x1p-10;
  for (WeightType length = 1.0; length >= shortest; length /= 2.0) {
    Parameters candidate = parameters_;
    WeightType moved = 0.0;
    for (std::size_t k = 0; k < nr_parameters(); ++k) {
      candidate[k] -= length * step[k];
      if (k < nr_slopes)
        candidate[k] = std::max(candidate[k], 0.0);
      moved = std::max(moved, std::abs(candidate[k] - parameters_[k]));
    }
    if (!(loss_of(candidate, rests, trial_) < 0.0))
      continue;
    parameters_ = std::move(candidate);
    powers_.swap(trial_);
    return moved;
  }
  return 0.0;
}

// Nobody sees a difference in a parameter that is less.
constexpr WeightType small_move = 1e-3;
constexpr unsigned most_rounds = 30;

void fit_alone(CurveFit &fit) {
  const std::vector<WeightType> rests(fit.size(), 1.0);
  for (unsigned round = 0; round < most_rounds; ++round) {
    if (fit.improve(rests) < small_move)
      return;
  }
}

// One class after the other, each against what its brothers have come to.
void fit_together(std::vector<CurveFit> &fits) {
  const std::size_t nr_docs = fits.front().size();
  std::vector<WeightType> sums(nr_docs);
  std::vector<WeightType> rests(nr_docs);
  for (unsigned round = 0; round < most_rounds; ++round) {
    // Afresh in each round: what is added and taken away again leaves a rest.
    std::ranges::fill(sums, 0.0);
    for (const CurveFit &fit : fits) {
      for (std::size_t i = 0; i < nr_docs; ++i)
        sums[i] += fit.power(i);
    }
    WeightType moved = 0.0;
    for (CurveFit &fit : fits) {
      if (fit.is_hopeless())
        continue;
      for (std::size_t i = 0; i < nr_docs; ++i) {
        rests[i] = sums[i] - fit.power(i);
        // Where one class has nearly all, the difference has no digits left.
        if (rests[i] < sums[i] * 1e-6) {
          rests[i] = 0.0;
          for (const CurveFit &other : fits) {
            if (&other != &fit)
              rests[i] += other.power(i);
          }
        }
      }
      moved = std::max(moved, fit.improve(rests));
      for (std::size_t i = 0; i < nr_docs; ++i)
        sums[i] = rests[i] + fit.power(i);
    }
    if (moved < small_move)
      return;
  }
}

}  // namespace

WeightType Calibration::logit(
    WeightType score, WeightType inclusive,
    std::span<const WeightType> scores_of_sons) const {
  if (!std::isfinite(score))
    return hopeless;
  const auto pieces = pieces_of(bounded(factor * score + offset));
  WeightType sum = intercept + inclusion * inclusive;
  for (std::size_t k = 0; k < pieces.size(); ++k)
    sum += slopes[k] * pieces[k];
  for (std::size_t son = 0; son < factors_of_sons.size(); ++son) {
    if (std::isfinite(scores_of_sons[son]))
      sum += factors_of_sons[son] * scores_of_sons[son];
  }
  // A stored curve can have numbers of any size.
  return std::isnan(sum) ? hopeless : bounded(sum);
}

// The fit of Platt's two parameters is that of a curve whose pieces have one
// slope; Lin, Lin and Weng, A note on Platt's probabilistic outputs, Machine
// Learning 68 (2007), make its steps safe.
Calibration fit_logistic(const CalibrationColumn &column) {
  Calibration calibration;
  const auto nr_members = static_cast<WeightType>(
      std::ranges::count_if(column.is_member, [](auto x) { return x != 0; }));
  const auto nr_others =
      static_cast<WeightType>(column.scores.size()) - nr_members;
  if (nr_members == 0.0)
    return calibration;
  const WeightType target_of_members = (nr_members + 1.0) / (nr_members + 2.0);
  const WeightType target_of_others = 1.0 / (nr_others + 2.0);
  std::vector<WeightType> x;
  std::vector<WeightType> targets;
  for (std::size_t i = 0; i < column.scores.size(); ++i) {
    if (!std::isfinite(column.scores[i]))
      continue;
    x.push_back(column.scores[i]);
    targets.push_back(column.is_member[i] != 0 ? target_of_members
                                               : target_of_others);
  }
  if (x.empty())
    return calibration;
  // In units in which scores have the mean 0 and the deviation 1.
  const auto [mean, deviation] = mean_and_deviation(x);
  if (!std::isfinite(deviation) || !std::isfinite(mean))
    return calibration;
  WeightType a = 0.0;
  WeightType b = natural_logarithm((nr_members + 1.0) / (nr_others + 1.0));
  for (WeightType &value : x)
    value = (value - mean) / deviation;
  // The loss at (c, d) less that at (a, b).
  const auto loss = [&](WeightType c, WeightType d) {
    LogarithmOfProduct product;
    WeightType sum = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
      const WeightType z = bounded(c * x[i] + d);
      product.multiply(1.0 + exponential(z));
      sum += targets[i] * z;
    }
    return product.value() - sum;
  };
  WeightType current = loss(a, b);
  for (unsigned round = 0; round < most_rounds; ++round) {
    WeightType ga = 0.0;
    WeightType gb = 0.0;
    WeightType haa = 1e-12;
    WeightType hab = 0.0;
    WeightType hbb = 1e-12;
    for (std::size_t i = 0; i < x.size(); ++i) {
      const WeightType p = logistic(bounded(a * x[i] + b));
      const WeightType error = p - targets[i];
      const WeightType weight = p * (1.0 - p);
      ga += error * x[i];
      gb += error;
      haa += weight * x[i] * x[i];
      hab += weight * x[i];
      hbb += weight;
    }
    const WeightType determinant = haa * hbb - hab * hab;
    if (!(determinant > 0.0))
      break;
    const WeightType da = (hbb * ga - hab * gb) / determinant;
    const WeightType db = (haa * gb - hab * ga) / determinant;
    WeightType length = 1.0;
    constexpr WeightType shortest = 0x1p-10;
    WeightType next = loss(a - da, b - db);
    while (!(next < current) && length > shortest) {
      length /= 2.0;
      next = loss(a - length * da, b - length * db);
    }
    if (!(next < current))
      break;
    a -= length * da;
    b -= length * db;
    current = next;
    if (std::max(std::abs(da), std::abs(db)) * length < 1e-6)
      break;
  }
  calibration.factor = a / deviation;
  calibration.offset = b - calibration.factor * mean;
  // A class that others score higher in than its own documents.
  if (calibration.factor < 0.0) {
    calibration.factor = 0.0;
    calibration.offset =
        natural_logarithm((nr_members + 1.0) / (nr_others + 1.0));
  }
  return calibration;
}

std::vector<Calibration> fit_sons(std::span<const CalibrationColumn> columns,
                                  bool share) {
  std::vector<CurveFit> fits;
  std::vector<Calibration> result;
  const std::size_t nr_docs = columns.empty() ? 0 : columns[0].scores.size();
  // What each of its classes has of a document.
  std::vector<WeightType> parts(nr_docs, 1.0);
  if (share) {
    for (std::size_t i = 0; i < nr_docs; ++i) {
      const auto nr_holders = std::ranges::count_if(
          columns,
          [&](const auto &column) { return column.is_member[i] != 0; });
      parts[i] = nr_holders == 0 ? 0.0 : 1.0 / WeightType(nr_holders);
    }
  }
  for (const CalibrationColumn &column : columns) {
    result.push_back(fit_logistic(column));
    fits.emplace_back(result.back(), column, parts);
    if (!share && !fits.back().is_hopeless())
      fit_alone(fits.back());
  }
  if (share && columns.size() > 1)
    fit_together(fits);
  for (std::size_t son = 0; son < columns.size(); ++son)
    result[son] = fits[son].result();
  return result;
}

WeightType inclusive_value(std::span<const WeightType> logits) {
  if (logits.empty())
    return 0.0;
  const WeightType largest = *std::ranges::max_element(logits);
  WeightType sum = 0.0;
  for (const WeightType logit : logits)
    sum += exponential(logit - largest);
  return largest + natural_logarithm(sum);
}

void logits_to_probabilities(std::span<WeightType> values, bool share) {
  if (values.empty())
    return;
  if (!share) {
    for (WeightType &value : values)
      value = logistic(value);
    return;
  }
  const WeightType largest = *std::ranges::max_element(values);
  WeightType sum = 0.0;
  for (WeightType &value : values) {
    value = exponential(value - largest);
    sum += value;
  }
  for (WeightType &value : values)
    value /= sum;
}

WeightType break_even(const CalibrationColumn &column) {
  constexpr WeightType none = std::numeric_limits<WeightType>::infinity();
  std::vector<WeightType> scores;
  std::size_t nr_members = 0;
  for (std::size_t i = 0; i < column.scores.size(); ++i) {
    if (!std::isfinite(column.scores[i]))
      continue;
    scores.push_back(column.scores[i]);
    nr_members += column.is_member[i];
  }
  if (nr_members == 0)
    return none;
  // As many documents are let in as are in the class: then each that is wrongly
  // let in has one of the class's own shut out.
  const auto first_out = scores.begin() + std::ptrdiff_t(nr_members);
  std::nth_element(scores.begin(), first_out - 1, scores.end(),
                   std::greater<>());
  const WeightType last_in = *(first_out - 1);
  return first_out == scores.end()
             ? last_in
             : 0.5 * (last_in + *std::max_element(first_out, scores.end()));
}

}  // namespace vek
