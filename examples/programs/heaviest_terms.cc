// Prints the ten heaviest terms of a class of a kept model:
//   heaviest_terms DATA-DIRECTORY CLASS
#include <cstdio>
#include <map>

#include "model/model.h"

int main(int nr_arguments, char **arguments) {
  if (nr_arguments != 3)
    return 2;
  vek::Model model;
  vek::Failure failure;
  std::uint32_t id = 0;
  const vek::Classifier *classifier_P = nullptr;
  if (!model.open(arguments[1], failure) ||
      (classifier_P = model.find_classifier(failure)) == nullptr ||
      !model.read_classes(*classifier_P, failure) ||
      !model.find_class(arguments[2], id, failure)) {
    return std::fprintf(stderr, "%s\n", failure.text().c_str()), 1;
  }
  std::multimap<double, std::uint32_t, std::greater<>> terms;
  for (const auto &[term, entry] : model.classes().get_data(id).profile)
    terms.emplace(classifier_P->scoring.weight(entry, {}), term);
  int nr_left = 10;
  for (auto term = terms.begin(); term != terms.end() && nr_left-- > 0; ++term)
    std::printf("%g\t%s\n", term->first, model.term_text(term->second).c_str());
}
