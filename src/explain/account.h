// The account of one document, and the ways to write it for a terminal and for
// programs.
#ifndef VEK_EXPLAIN_ACCOUNT_H_
#define VEK_EXPLAIN_ACCOUNT_H_

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "answering/kept_model.h"
#include "explain/decimals.h"
#include "explain/explanation.h"
#include "report/table.h"

namespace vek::explaining {

struct Account {
  // A step, and what the scores of some of its classes are made of.
  struct Part {
    Step step;
    std::vector<TermShares> shares;
  };

  const KeptModel &model;
  std::string document;
  bool is_stored = false;
  std::size_t nr_terms = 0;    // different ones
  std::size_t nr_unknown = 0;  // of these, not in the vocabulary
  bool is_product = false;
  bool is_significant = false;
  // The class that was asked for; null: all of the way.
  const ClassData *asked_P = nullptr;
  std::vector<LeafOutcome> leaves = {};
  std::vector<Part> parts = {};
};

// The terms that are listed for a class, and the column of what they do.
struct Listing {
  // At most `nr_terms` that favour the class and as many that speak against it,
  // the strongest first; 0: all, also those that do neither.
  Listing(const TermShares &shares, std::size_t nr_terms,
          Column::Precision precision);

  Column column;
  std::vector<const TermShare *> in_favour;
  std::vector<const TermShare *> against;
  std::size_t nr_others = 0;  // that are not listed
  // Of those, and what the machine's sum has rounded; empty if it is unknown.
  std::string rest;
};

// The path of a class; of the top class "the top".
std::string class_text(const Account &account, const ClassData &data);
// What the total of a listing is, as "score" or "logarithm of the score".
std::string total_name(const Account &account);
// A sentence on what is asked for, or on the outcome.
std::string conclusion(const Account &account);

std::string term_text(const Account &account, const TermShare &share);

// For a reader. Names are as they are.
reporting::Table leaf_table(const Account &account);
reporting::Table step_table(const Account &account, const Account::Part &part);
reporting::Table share_table(const Account &account, const TermShares &shares,
                             const Listing &listing);

void print_text(const Account &account, std::size_t nr_terms,
                Column::Precision precision, std::ostream &out);
void print_tsv(const Account &account, std::size_t nr_terms, std::ostream &out);
void print_json(const Account &account, std::size_t nr_terms,
                std::ostream &out);

}  // namespace vek::explaining

#endif  // VEK_EXPLAIN_ACCOUNT_H_
