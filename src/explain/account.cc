#include "explain/account.h"

#include <algorithm>
#include <array>
#include <functional>
#include <iterator>
#include <optional>
#include <string_view>

#include "base/textio.h"
#include "data/names.h"
#include "report/json_writer.h"
#include "report/table.h"

namespace vek::explaining {
namespace {

using keeping::escaped;
using reporting::Cell;
using reporting::Digits;
using reporting::JsonWriter;
using reporting::Table;

// A reader is told of the best leaves and brothers.
constexpr std::size_t nr_leaves_shown = 8;
constexpr std::size_t nr_sons_shown = 10;

std::string exact(WeightType value) {
  std::string text;
  append_exact_real(text, value);
  return text;
}

bool has_two_weights(const Account &account) {
  return account.model.params().algorithm == Algorithm::winnow &&
         account.model.params().winnow.negative_weights;
}

bool has_probabilities(const Account &account) {
  return account.model.params().walk == WalkKind::path;
}

Cell cell_of(const std::optional<WeightType> &value) {
  return value ? Cell(*value) : Cell();
}

// Outside of tables, which do the second step themselves.
std::string shown(std::string_view name) {
  return reporting::shown_name(escaped(name));
}

// Names in tables are shown, and their control characters told.
void print_table(Table table, std::ostream &out) {
  reporting::escape_names(table, escaped);
  reporting::print_aligned({std::move(table)}, out);
}

}  // namespace

std::string term_text(const Account &account, const TermShare &share) {
  const Model &model = account.model.model();
  return share.term < model.terms().size() ? model.term_text(share.term)
                                           : std::string("(unknown)");
}

Table leaf_table(const Account &account) {
  Table table{"answer", {"class", "score", "threshold", "outcome"}, {}};
  if (account.model.params().walk == WalkKind::path)
    table.columns[1] = "probability";
  for (const LeafOutcome &leaf : account.leaves) {
    table.rows.push_back({class_text(account, *leaf.class_P), leaf.score,
                          leaf.threshold, leaf.reason});
  }
  // Whatever was assigned.
  const auto last =
      std::find_if(account.leaves.rbegin(), account.leaves.rend(),
                   [](const LeafOutcome &leaf) { return leaf.is_assigned; });
  table.nr_shown = std::max(
      nr_leaves_shown,
      static_cast<std::size_t>(std::distance(last, account.leaves.rend())));
  return table;
}

Table step_table(const Account &account, const Account::Part &part) {
  const std::vector<SonScore> &sons = part.step.sons;
  Table table{"step", {"", "class", "score"}, {}};
  const auto has = [&](auto member) {
    return std::ranges::any_of(
        sons, [&](const SonScore &son) { return (son.*member).has_value(); });
  };
  struct Optional {
    const char *name;
    std::optional<WeightType> SonScore::*member;
  };
  std::vector<Optional> wanted;
  for (const Optional &column :
       {Optional{"probability", &SonScore::probability},
        Optional{"threshold", &SonScore::threshold},
        Optional{"score/threshold", &SonScore::scaled}}) {
    if (has(column.member))
      wanted.push_back(column);
  }
  for (const Optional &column : wanted)
    table.columns.emplace_back(column.name);
  std::size_t nr_shown = nr_sons_shown;
  for (const SonScore &son : sons) {
    const bool is_asked = son.class_P == account.asked_P;
    std::vector<Cell> row = {std::string(is_asked        ? "*"
                                         : son.is_on_way ? ">"
                                                         : " "),
                             class_text(account, *son.class_P), son.score};
    for (const Optional &column : wanted)
      row.push_back(cell_of(son.*column.member));
    table.rows.push_back(std::move(row));
    if (is_asked || son.is_on_way)
      nr_shown = std::max(nr_shown, table.rows.size());
  }
  table.nr_shown = nr_shown;
  return table;
}

Table share_table(const Account &account, const TermShares &shares,
                  const Listing &listing) {
  const bool has_two = has_two_weights(account);
  Table table{"terms", {"term", "frequency"}, {}};
  if (!account.is_product)
    table.columns.emplace_back("in_document");
  table.columns.emplace_back(account.is_product ? "factor" : "in_class");
  if (has_two) {
    table.columns.emplace_back("positive");
    table.columns.emplace_back("negative");
  }
  table.columns.emplace_back("contribution");
  const auto add = [&](const std::string &name, const TermShare *share_P,
                       const std::string &contribution) {
    std::vector<Cell> row = {name};
    row.push_back(share_P != nullptr ? Cell(std::uint64_t{share_P->frequency})
                                     : Cell(Digits{""}));
    while (row.size() + 1 < table.columns.size())
      row.emplace_back(Digits{""});
    if (share_P != nullptr) {
      std::size_t place = 2;
      if (!account.is_product)
        row[place++] = share_P->strength;
      row[place++] = share_P->weight;
      if (has_two) {
        row[place++] = share_P->positive;
        row[place++] = share_P->negative;
      }
    }
    row.emplace_back(Digits{contribution});
    table.rows.push_back(std::move(row));
  };
  for (const auto *list_P : {&listing.in_favour, &listing.against}) {
    for (const TermShare *share_P : *list_P) {
      add(term_text(account, *share_P), share_P,
          listing.column.text(share_P->contribution));
    }
  }
  if (shares.bias != 0.0)
    add("(bias)", nullptr, listing.column.text(shares.bias));
  add(listing.nr_others == 0
          ? "(rounding of the sum)"
          : "(" + std::to_string(listing.nr_others) + " more terms)",
      nullptr, listing.rest.empty() ? "-" : listing.rest);
  add("= " + total_name(account), nullptr, listing.column.text(shares.total));
  return table;
}

Listing::Listing(const TermShares &shares, std::size_t nr_terms,
                 Column::Precision precision)
    : column(shares.total, precision) {
  for (const TermShare &share : shares.terms) {
    if (share.favour == 0.0 && nr_terms != 0)
      ++nr_others;
    else
      (share.favour < 0.0 ? against : in_favour).push_back(&share);
  }
  const auto strength = [](const TermShare *share_P) {
    return std::abs(share_P->favour);
  };
  std::vector<double> parts = {shares.bias};
  for (auto *list_P : {&in_favour, &against}) {
    std::ranges::stable_sort(*list_P, std::greater{}, strength);
    if (nr_terms != 0 && list_P->size() > nr_terms) {
      nr_others += list_P->size() - nr_terms;
      list_P->resize(nr_terms);
    }
    for (const TermShare *share_P : *list_P)
      parts.push_back(share_P->contribution);
  }
  rest = column.rest(parts);
}

std::string class_text(const Account &account, const ClassData &data) {
  return data.father == nullptr
             ? "the top"
             : account.model.model().classes().full_name(data.id);
}

std::string total_name(const Account &account) {
  if (!account.is_product)
    return "score";
  return account.model.params().walk == WalkKind::path
             ? "score, the logarithm of the odds for a term"
             : "logarithm of the score";
}

std::string conclusion(const Account &account) {
  if (account.asked_P != nullptr) {
    const std::string name = class_text(account, *account.asked_P);
    const auto place = std::ranges::find(account.leaves, account.asked_P,
                                         &LeafOutcome::class_P);
    if (place != account.leaves.end())
      return name + ": " + place->reason;
    const auto is_below = [&](const LeafOutcome &leaf) {
      const ClassData *class_P = leaf.class_P;
      while (class_P != nullptr && class_P != account.asked_P)
        class_P = class_P->father;
      return class_P != nullptr;
    };
    const auto best = std::ranges::find_if(account.leaves, is_below);
    return name + " is no leaf; of the leaves below it the best is " +
           class_text(account, *best->class_P) + ": " + best->reason;
  }
  std::string names;
  for (const LeafOutcome &leaf : account.leaves) {
    if (leaf.is_assigned)
      names += (names.empty() ? "" : ", ") + class_text(account, *leaf.class_P);
  }
  return names.empty() ? "no class is assigned; the best is " +
                             class_text(account, *account.leaves[0].class_P) +
                             ": " + account.leaves[0].reason
                       : "assigned: " + names;
}

void print_text(const Account &account, std::size_t nr_terms,
                Column::Precision precision, std::ostream &out) {
  out << shown(account.document) << ": "
      << (account.is_stored ? "stored" : "new") << ", " << account.nr_terms
      << " terms";
  if (account.nr_unknown > 0)
    out << ", " << account.nr_unknown << " of them unknown to the model";
  out << "; " << account.model.classifier().name << '\n'
      << shown(conclusion(account)) << "\n\n";
  for (const Account::Part &part : account.parts) {
    out << "Below " << shown(class_text(account, *part.step.father_P)) << ":\n";
    print_table(step_table(account, part), out);
    for (const TermShares &shares : part.shares) {
      const Listing listing(shares, nr_terms, precision);
      out << "\nWhat makes the score " << exact(shares.total) << " of "
          << shown(class_text(account, *shares.class_P));
      if (account.is_product && shares.rival_P != nullptr) {
        out << ", against " << shown(class_text(account, *shares.rival_P));
      }
      out << ":\n";
      print_table(share_table(account, shares, listing), out);
    }
    out << '\n';
  }
  out << "What became of the leaves:\n";
  print_table(leaf_table(account), out);
}

void print_tsv(const Account &account, std::size_t nr_terms,
               std::ostream &out) {
  constexpr std::array columns = {
      "kind",        "father",   "class",     "term",        "frequency",
      "in_document", "in_class", "positive",  "negative",    "contribution",
      "score",       "scaled",   "threshold", "probability", "outcome"};
  const auto print =
      [&](const std::vector<std::pair<std::string, std::string>> &fields) {
        std::string line;
        for (const char *const column : columns) {
          if (!line.empty())
            line += '\t';
          for (const auto &[name, text] : fields) {
            if (name == column)
              line += text;
          }
        }
        out << line << '\n';
      };
  std::string separator;
  for (const char *const column : columns) {
    out << separator << column;
    separator = "\t";
  }
  out << '\n';
  const auto name = [&](const ClassData &data) {
    return data.father == nullptr ? "" : escaped(class_text(account, data));
  };
  const auto optional = [](const std::optional<WeightType> &value) {
    return value ? exact(*value) : "";
  };
  for (const LeafOutcome &leaf : account.leaves) {
    print({{"kind", leaf.is_assigned ? "assigned" : "leaf"},
           {"father", name(*leaf.class_P->father)},
           {"class", name(*leaf.class_P)},
           {has_probabilities(account) ? "probability" : "score",
            exact(leaf.score)},
           {"threshold", exact(leaf.threshold)},
           {"outcome", leaf.reason}});
  }
  for (const Account::Part &part : account.parts) {
    const std::string father = name(*part.step.father_P);
    for (const SonScore &son : part.step.sons) {
      print({{"kind", son.is_on_way ? "way" : "brother"},
             {"father", father},
             {"class", name(*son.class_P)},
             {"score", exact(son.score)},
             {"scaled", optional(son.scaled)},
             {"threshold", optional(son.threshold)},
             {"probability", optional(son.probability)}});
    }
    for (const TermShares &shares : part.shares) {
      const Listing listing(shares, nr_terms, Column::Precision::exact);
      const std::string of = name(*shares.class_P);
      for (const auto *list_P : {&listing.in_favour, &listing.against}) {
        for (const TermShare *share_P : *list_P) {
          const bool has_two = has_two_weights(account);
          print({{"kind", "term"},
                 {"father", father},
                 {"class", of},
                 {"term", escaped(term_text(account, *share_P))},
                 {"frequency", std::to_string(share_P->frequency)},
                 {"in_document",
                  account.is_product ? "" : exact(share_P->strength)},
                 {"in_class", exact(share_P->weight)},
                 {"positive", has_two ? exact(share_P->positive) : ""},
                 {"negative", has_two ? exact(share_P->negative) : ""},
                 {"contribution", listing.column.text(share_P->contribution)}});
        }
      }
      print({{"kind", "rest"},
             {"father", father},
             {"class", of},
             {"frequency", std::to_string(listing.nr_others)},
             {"contribution", listing.rest}});
      print({{"kind", "bias"},
             {"father", father},
             {"class", of},
             {"contribution", listing.column.text(shares.bias)}});
      print({{"kind", "total"},
             {"father", father},
             {"class", of},
             {"contribution", exact(shares.total)}});
    }
  }
}

void print_json(const Account &account, std::size_t nr_terms,
                std::ostream &out) {
  JsonWriter json;
  constexpr int all_digits = 17;
  const auto real = [&](const char *name, WeightType value) {
    json.key(name);
    json.real(value, all_digits);
  };
  const auto optional = [&](const char *name,
                            const std::optional<WeightType> &value) {
    if (value)
      real(name, *value);
  };
  // Parts of a sum stand with all digits of their column.
  const auto digits = [&](const char *name, const std::string &text) {
    json.key(name);
    json.raw(text.empty() || text.find_first_of("in") != std::string::npos
                 ? "null"
                 : text);
  };
  const auto text = [&](const char *name, const std::string &value) {
    json.key(name);
    json.text(value);
  };
  const auto truth = [&](const char *name, bool value) {
    json.key(name);
    json.raw(value ? "true" : "false");
  };
  const auto class_name = [&](const char *name, const ClassData &data) {
    text(name, data.father == nullptr ? "" : class_text(account, data));
  };
  const auto count = [&](const char *name, std::uint64_t value) {
    json.key(name);
    json.count(value);
  };
  json.open('{');
  text("document", account.document);
  truth("stored", account.is_stored);
  count("terms", account.nr_terms);
  count("unknown", account.nr_unknown);
  text("classifier", account.model.classifier().name);
  truth("significant", account.is_significant);
  text("conclusion", conclusion(account));
  json.key("leaves");
  json.list(account.leaves, [&](const LeafOutcome &leaf) {
    json.open('{');
    class_name("class", *leaf.class_P);
    real(has_probabilities(account) ? "probability" : "score", leaf.score);
    real("threshold", leaf.threshold);
    truth("assigned", leaf.is_assigned);
    text("outcome", leaf.reason);
    json.close('}');
  });
  json.key("steps");
  json.list(account.parts, [&](const Account::Part &part) {
    json.open('{');
    class_name("father", *part.step.father_P);
    json.key("classes");
    json.list(part.step.sons, [&](const SonScore &son) {
      json.open('{');
      class_name("class", *son.class_P);
      real("score", son.score);
      optional("scaled", son.scaled);
      optional("threshold", son.threshold);
      optional("probability", son.probability);
      truth("on_way", son.is_on_way);
      json.close('}');
    });
    json.key("sums");
    json.list(part.shares, [&](const TermShares &shares) {
      const Listing listing(shares, nr_terms, Column::Precision::exact);
      json.open('{');
      class_name("class", *shares.class_P);
      if (account.is_product && shares.rival_P != nullptr)
        class_name("rival", *shares.rival_P);
      digits("total", listing.column.text(shares.total));
      digits("bias", listing.column.text(shares.bias));
      json.key("terms");
      json.open('[');
      for (const auto *list_P : {&listing.in_favour, &listing.against}) {
        for (const TermShare *share_P : *list_P) {
          json.open('{');
          text("term", term_text(account, *share_P));
          count("frequency", share_P->frequency);
          if (!account.is_product)
            real("in_document", share_P->strength);
          real("in_class", share_P->weight);
          if (has_two_weights(account)) {
            real("positive", share_P->positive);
            real("negative", share_P->negative);
          }
          digits("contribution", listing.column.text(share_P->contribution));
          json.close('}');
        }
      }
      json.close(']');
      count("other_terms", listing.nr_others);
      digits("rest", listing.rest);
      json.close('}');
    });
    json.close('}');
  });
  json.close('}');
  out << json.take() << '\n';
}

}  // namespace vek::explaining
