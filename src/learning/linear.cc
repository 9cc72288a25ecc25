#include "learning/linear.h"

#include <linear.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <memory>
#include <mutex>
#include <vector>

#include "base/helpers.h"
#include "base/progress.h"
#include "classes/termmap.h"

namespace vek {
namespace {

// By how much a document may miss its margin at the end: the library's own
// choice for these solvers. A tenth of it takes a third more time and finds no
// better planes.
constexpr double tolerance = 0.1;

constexpr int row_end = -1;

// The library draws on rand(), of which a process has one.
std::mutex library_mutex;

// Whom the library's signs of life are for: it knows plain functions only.
Messages *messages_P = nullptr;

void hear(const char * /*text*/) {
  if (messages_P != nullptr)
    messages_P->may_stop();
}

// All of them go over the documents one by one (Hsieh et al., A dual coordinate
// descent method for large-scale linear SVM, ICML 2008; Yu, Huang and Lin, Dual
// coordinate descent methods for logistic regression and maximum entropy
// models, Machine Learning 85, 2011). The other solvers call a BLAS library, of
// which a system may have any, each with its own order of adding up.
int solver_of(LinearLoss loss) {
  switch (loss) {
    case LinearLoss::hinge:
      return L2R_L1LOSS_SVC_DUAL;
    case LinearLoss::squared:
      break;
    case LinearLoss::logistic:
      return L2R_LR_DUAL;
  }
  return L2R_L2LOSS_SVC_DUAL;
}

const char *name_of(LinearLoss loss) {
  switch (loss) {
    case LinearLoss::hinge:
      return "hinge";
    case LinearLoss::squared:
      break;
    case LinearLoss::logistic:
      return "logistic";
  }
  return "squared";
}

struct FreeModel {
  void operator()(model *model_P) const { free_and_destroy_model(&model_P); }
};

// In single precision. What is too large for that, or no number, counts as 0.
WeightType rounded(WeightType value) {
  return std::abs(value) <= FLT_MAX ? static_cast<float>(value) : 0.0;
}

// The documents of a father, for one machine after the other.
class Examples {
 public:
  Examples(const Training &training, const ClassData &father);

  // Each sets the son's weights and bias.
  void separate(ClassData &son);
  void take_mean(ClassData &son);
  // False if all documents have no weight at all.
  bool has_weights() const { return length_ > 0.0; }

 private:
  struct Document {
    const DocProfile *profile_P = nullptr;
    const DocumentMap::ClassList *sons_P = nullptr;
  };

  void lay_out(const ClassData &son);
  WeightType score_on_plane(const double *weights_P) const;

  const LinearParams &params_;
  std::vector<Document> documents_;
  std::size_t nr_entries_ = 0;
  WeightType length_ = 0.0;  // the root of the mean squared length
  // For the son at hand: the places of its terms in its profile, and what the
  // library works on. The memory serves the next son.
  TermMap places_;
  std::vector<feature_node> nodes_;
  std::vector<feature_node *> rows_;
  std::vector<double> sides_;
};

Examples::Examples(const Training &training, const ClassData &father)
    : params_(training.params.linear) {
  WeightType sum = 0.0;
  for (const auto &[name, sons] : father.train_docs) {
    DocProfile &doc = *training.documents.get(name);
    doc.weigh(father, training.params);
    documents_.push_back({&doc, &sons});
    nr_entries_ += doc.size();
    for (const DocProfileEntry &entry : doc)
      sum += entry.weight * entry.weight;
  }
  length_ = std::sqrt(sum / static_cast<double>(documents_.size()));
}

// Only with the terms that the son knows: a score has no others. So a machine
// is as large as its class, and not as the vocabulary.
void Examples::lay_out(const ClassData &son) {
  const ClassProfile &profile = son.profile;
  places_ = {};
  places_.expect(profile.size(), profile.largest_term());
  std::uint32_t nr_places = 0;
  for (const ClassProfile::Slot &slot : profile)
    places_.find_or_insert(slot.term, nr_places++);
  const int bias_index = static_cast<int>(nr_places) + 1;
  nodes_.clear();
  rows_.clear();
  sides_.clear();
  // All at once: the rows point to nodes. Two more for each: the constant, and
  // the end of the row.
  nodes_.reserve(nr_entries_ + 2 * documents_.size());
  for (const Document &doc : documents_) {
    rows_.push_back(nodes_.data() + nodes_.size());
    for (const DocProfileEntry &entry : *doc.profile_P) {
      const std::uint32_t place = places_.find(entry.term);
      // Indices count from 1.
      if (place != TermMap::nowhere && entry.weight != 0.0)
        nodes_.push_back({static_cast<int>(place) + 1, entry.weight / length_});
    }
    nodes_.push_back({bias_index, 1.0});
    nodes_.push_back({row_end, 0.0});
    const bool is_member =
        std::ranges::find(*doc.sons_P, &son) != doc.sons_P->end();
    sides_.push_back(is_member ? 1.0 : -1.0);
  }
}

void Examples::separate(ClassData &son) {
  lay_out(son);
  const problem examples = {static_cast<int>(rows_.size()),
                            static_cast<int>(son.profile.size()) + 1,
                            sides_.data(), rows_.data(), 1.0};
  parameter settings = {};
  settings.solver_type = solver_of(params_.loss);
  settings.eps = tolerance;
  settings.C = params_.cost;
  // The solvers take documents in random order.
  std::srand(1);
  // Its logarithms and exponentials may leave something in errno.
  const KeepErrno keep;
  const std::unique_ptr<model, FreeModel> machine(
      ::train(&examples, &settings));
  const double *weight_P = machine->w;
  for (ClassProfile::Slot &slot : son.profile)
    slot.entry.pos_weight = rounded(*weight_P++ / length_);
  const WeightType plane = score_on_plane(machine->w);
  son.profile.set_bias(rounded(plane + *weight_P));
  son.profile.set_threshold(rounded(plane));
}

// What a document on the plane is to score.
WeightType Examples::score_on_plane(const double *weights_P) const {
  WeightType lowest = std::numeric_limits<WeightType>::infinity();
  for (const feature_node *node_P : rows_) {
    WeightType distance = 0.0;
    for (; node_P->index != row_end; ++node_P)
      distance += weights_P[node_P->index - 1] * node_P->value;
    lowest = std::min(lowest, distance);
  }
  const bool has_margin = params_.loss != LinearLoss::logistic;
  return has_margin ? std::min(1.0, -lowest) : -lowest;
}

void Examples::take_mean(ClassData &son) {
  // With m for the sum of n vectors, the weights are n m / |m|^2, and the
  // scores add up to n m m / |m|^2 = n.
  WeightType squares = 0.0;
  for (const Document &doc : documents_) {
    for (const DocProfileEntry &entry : *doc.profile_P) {
      ClassProfileEntry *const entry_P = son.profile.find(entry.term);
      if (entry_P != nullptr)
        entry_P->pos_weight += entry.weight;
    }
  }
  for (const ClassProfile::Slot &slot : son.profile)
    squares += slot.entry.pos_weight * slot.entry.pos_weight;
  const auto nr_docs = static_cast<WeightType>(documents_.size());
  for (ClassProfile::Slot &slot : son.profile)
    slot.entry.pos_weight = rounded(slot.entry.pos_weight * nr_docs / squares);
}

}  // namespace

void train_linear(const Training &training) {
  for_each_father(training, "linear", [&](ClassData &father) {
    train_linear_class(training, father);
  });
}

WeightType linear_scoring_weight(const ClassProfileEntry &entry,
                                 const Params & /*params*/) {
  return entry.pos_weight;
}

void write_linear_settings(std::ostream &out, const Params &params) {
  out << "[Linear]\n"
      << "Cost              " << params.linear.cost << '\n'
      << "Loss              " << name_of(params.linear.loss) << '\n';
}

void train_linear_class(const Training &training, ClassData &father) {
  const std::lock_guard lock(library_mutex);
  messages_P = &training.messages;
  set_print_string_function(hear);
  Progress progress(training.messages, "Linear Training",
                    training.classes.get_name(father.id), father.sons.size());
  Examples examples(training, father);
  for (ClassData *son_P : father.sons) {
    son_P->profile.set_bias(0.0);
    son_P->profile.set_threshold(1.0);
    for (ClassProfile::Slot &slot : son_P->profile)
      slot.entry.pos_weight = 0.0;
    if (!son_P->train_docs.empty() && examples.has_weights()) {
      if (son_P->nr_others == 0) {
        examples.take_mean(*son_P);
      } else if (training.params.linear.cost > 0.0) {
        examples.separate(*son_P);
      }
    }
    progress.count();
  }
  messages_P = nullptr;
}

}  // namespace vek
