#include "learning/winnow.h"

#include <cstdlib>
#include <numeric>
#include <string>
#include <utility>

#include "base/progress.h"
#include "base/require.h"
#include "learning/winnowpass.h"

namespace vek {
namespace {

// The difference is 1, so that before the first update a document whose terms
// the class all knows scores the sum of its strengths, divided by the mean of
// that sum: about 1.
constexpr WeightType start_pos_weight = 2.0;
constexpr WeightType start_neg_weight = 1.0;
// No mean is known; start weights this small leave all scores near 0.
constexpr WeightType mean_without_documents = 10000.0;

// Weighs the documents of a father against it and adds up all their weights.
// The strengths stay as they are while the father is trained. Returns the
// number of terms of all documents together.
std::size_t weigh_documents(const Training &training, ClassData &father) {
  std::size_t nr_terms = 0;
  Progress progress(training.messages, "Winnow Initialization",
                    training.classes.get_name(father.id),
                    father.train_docs.size());
  for (const auto &[name, classes] : father.train_docs) {
    DocProfile &doc = *training.documents.get(name);
    doc.weigh_and_add(father, training.params);
    nr_terms += doc.size();
    progress.count();
  }
  // By ascending term, over sums by term: this is the order of addition on
  // which the start weights depend to the last bit.
  for (const ClassProfile::Slot &slot : father.profile)
    father.weight_sum += slot.entry.weight;
  return nr_terms;
}

WeightType mean_weight_sum(const ClassData &father) {
  const WeightType mean = father.nr_docs == 0
                              ? mean_without_documents
                              : father.weight_sum / double(father.nr_docs);
  return mean == 0.0 ? mean_without_documents : mean;
}

std::vector<const std::string *> load_documents(const Training &training,
                                                WinnowPasses &passes,
                                                const ClassData &father) {
  std::vector<const std::string *> names;
  for (const auto &[name, classes] : father.train_docs) {
    passes.add_document(*training.documents.get(name), classes);
    names.push_back(&name);
  }
  return names;
}

struct PassCounts {
  int promotions = 0;
  int demotions = 0;
};

// Counts documents, not updates: a document that changed several sons counts
// once, on the side of the last. As no update leaves both counts 0, their sum
// tells whether the pass changed anything.
PassCounts winnow_pass(WinnowPasses &passes,
                       const std::vector<const std::string *> &names,
                       Messages &messages, RandomState &random) {
  PassCounts counts;
  // Asked once, so that a message that is not wanted costs no time for each
  // document of each pass.
  const bool names_are_told = messages.wants(4);
  for (const std::uint32_t number :
       make_training_list(static_cast<std::uint32_t>(names.size()), random)) {
    if (names_are_told) {
      messages.detail(
          4, formatted("training document `%s'", names[number]->c_str()));
    }
    const int result = passes.train_document(number);
    if (result >= 1)
      ++counts.promotions;
    if (result < 0)
      ++counts.demotions;
  }
  return counts;
}

}  // namespace

void train_winnow(const Training &training) {
  for_each_father(training, "winnow", [&](ClassData &father) {
    training.messages.detail(1,
                             formatted("trained %u iterations",
                                       train_winnow_class(training, father)));
  });
}

WeightType winnow_scoring_weight(const ClassProfileEntry &entry,
                                 const Params &params) {
  return params.winnow.negative_weights ? entry.pos_weight - entry.neg_weight
                                        : entry.pos_weight;
}

void write_winnow_settings(std::ostream &out, const Params &params) {
  const WinnowParams &settings = params.winnow;
  out << "[Winnow]\n"
      << "Alpha             " << settings.alpha << '\n'
      << "Beta              " << settings.beta << '\n'
      << "ThetaPlus         " << settings.theta_plus << '\n'
      << "ThetaMin          " << settings.theta_min << '\n'
      << "MaxIters          " << settings.max_iters
      << '\n'
      // One column short of the others; logs are compared byte for byte.
      << "NegativeWeights  " << on_off(settings.negative_weights) << '\n';
}

unsigned train_winnow_class(const Training &training, ClassData &father) {
  // The start weights need the documents' weight sum, and the passes take over
  // weights and documents as they find them; hence this order.
  const std::size_t nr_terms = weigh_documents(training, father);
  for (ClassData *son_P : father.sons)
    init_winnow_weights(training.params, *son_P);
  WinnowPasses passes(father, training.params);
  passes.reserve(father.train_docs.size(), nr_terms);
  const std::vector<const std::string *> names =
      load_documents(training, passes, father);
  unsigned nr_passes = 0;
  while (nr_passes < training.params.winnow.max_iters) {
    ++nr_passes;
    const PassCounts counts =
        winnow_pass(passes, names, training.messages, training.random);
    training.messages.note(
        3, formatted("iteration %u: %d promotions, %d demotions", nr_passes,
                     counts.promotions, counts.demotions));
    // Every document is on the right side of every theta; another pass would
    // find the same.
    if (counts.promotions + counts.demotions == 0)
      break;
  }
  return nr_passes;
}

void init_winnow_weights(const Params &params, ClassData &data) {
  require(data.father != nullptr, "data.father != 0");
  WeightType pos = start_pos_weight;
  WeightType neg = start_neg_weight;
  if (params.normalize != Normalize::linear) {
    const WeightType mean = mean_weight_sum(*data.father);
    pos = start_pos_weight / mean;
    neg = start_neg_weight / mean;
  }
  data.profile.set_init_weights(pos, neg);
  for (ClassProfile::Slot &slot : data.profile) {
    slot.entry.pos_weight = pos;
    slot.entry.neg_weight = neg;
  }
}

std::vector<std::uint32_t> make_training_list(std::uint32_t nr_docs,
                                              RandomState &random) {
  std::vector<std::uint32_t> list(nr_docs);
  std::iota(list.begin(), list.end(), 0U);
  // Fisher and Yates, from the front: behind step i the first i + 1 places are
  // shuffled. The remainder of 31 random bits favours small numbers by less
  // than nr_docs / 2^31, which is of no consequence here.
  for (std::uint32_t i = 1; i < nr_docs; ++i) {
    const auto other =
        static_cast<std::uint32_t>(nrand48(random.data()) % (long{i} + 1));
    std::swap(list[i], list[other]);
  }
  return list;
}

}  // namespace vek
