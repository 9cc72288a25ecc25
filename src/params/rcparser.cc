#include "params/rcparser.h"

#include <array>
#include <cmath>

namespace vek {
namespace {

using Option = ChoiceValue::Option;

// The tables are constants. A field of Params is named by a function that
// returns its address, because a pointer to member cannot reach into the
// classifiers' records.
constexpr std::array training_options = {
    Option{Token::winnow, [](Params &p) { p.algorithm = Algorithm::winnow; }},
    Option{Token::rocchio, [](Params &p) { p.algorithm = Algorithm::rocchio; }},
    Option{Token::sbc, [](Params &p) { p.algorithm = Algorithm::sbc; }},
    Option{Token::linear, [](Params &p) { p.algorithm = Algorithm::linear; }},
};

constexpr std::array selection_options = {
    Option{Token::none,
           [](Params &p) { p.term_selection = TermSelection::none; }},
    Option{Token::uncertainty,
           [](Params &p) { p.term_selection = TermSelection::uncertainty; }},
    Option{Token::termfreq,
           [](Params &p) { p.term_selection = TermSelection::termfreq; }},
    Option{Token::docfreq,
           [](Params &p) { p.term_selection = TermSelection::docfreq; }},
    Option{Token::tfidf,
           [](Params &p) { p.term_selection = TermSelection::tfidf; }},
    Option{Token::infogain,
           [](Params &p) { p.term_selection = TermSelection::infogain; }},
};

constexpr std::array strength_options = {
    Option{Token::freq, [](Params &p) { p.strength = Strength::freq; }},
    Option{Token::boolean, [](Params &p) { p.strength = Strength::boolean; }},
    Option{Token::sqrt, [](Params &p) { p.strength = Strength::sqrt; }},
    Option{Token::ltc, [](Params &p) { p.strength = Strength::ltc; }},
};

constexpr std::array normalize_options = {
    Option{Token::off, [](Params &p) { p.normalize = Normalize::off; }},
    Option{Token::linear, [](Params &p) { p.normalize = Normalize::linear; }},
    Option{Token::vector, [](Params &p) { p.normalize = Normalize::vector; }},
    // Another name of the same thing.
    Option{Token::cosine, [](Params &p) { p.normalize = Normalize::vector; }},
};

constexpr std::array walk_options = {
    Option{Token::steps, [](Params &p) { p.walk = WalkKind::steps; }},
    Option{Token::path, [](Params &p) { p.walk = WalkKind::path; }},
};

constexpr std::array insignificant_options = {
    Option{Token::none,
           [](Params &p) { p.insignificant = Insignificant::none; }},
    Option{Token::best,
           [](Params &p) { p.insignificant = Insignificant::best; }},
};

constexpr std::array loss_options = {
    Option{Token::hinge, [](Params &p) { p.linear.loss = LinearLoss::hinge; }},
    Option{Token::squared,
           [](Params &p) { p.linear.loss = LinearLoss::squared; }},
    Option{Token::logistic,
           [](Params &p) { p.linear.loss = LinearLoss::logistic; }},
};

constexpr std::array general_keys = {
    ResourceKey{Token::fparameter,
                RationalValue{[](Params &p) { return &p.f_parameter; }}},
    ResourceKey{Token::selectivity,
                RationalValue{[](Params &p) { return &p.selectivity; }}},
    ResourceKey{Token::maxranks,
                NumberValue{[](Params &p) { return &p.max_ranks; }}},
    ResourceKey{Token::minranks,
                NumberValue{[](Params &p) { return &p.min_ranks; }}},
    ResourceKey{Token::training, ChoiceValue{"Training algorithm name expected",
                                             training_options}},
    ResourceKey{Token::termselection,
                ChoiceValue{"Term selection algorithm name expected",
                            selection_options}},
    ResourceKey{Token::incremental,
                OnOffValue{[](Params &p) { return &p.incremental; }}},
    ResourceKey{Token::save, OnOffValue{[](Params &p) { return &p.save; }}},
    ResourceKey{Token::scaling,
                OnOffValue{[](Params &p) { return &p.scaling; }}},
    ResourceKey{Token::datadirectory,
                StringValue{[](Params &p) { return &p.data_directory; }}},
    ResourceKey{Token::inputdirectory,
                StringValue{[](Params &p) { return &p.input_directory; }}},
    ResourceKey{Token::filedirectory,
                StringValue{[](Params &p) { return &p.file_directory; }}},
    ResourceKey{Token::analyser_command,
                StringValue{[](Params &p) { return &p.analyser; }}},
    ResourceKey{Token::analysertimeout,
                NumberValue{[](Params &p) { return &p.analyser_timeout; }}},
    ResourceKey{Token::strength,
                ChoiceValue{"Strength mode expected", strength_options}},
    ResourceKey{Token::normalize,
                ChoiceValue{"normalize mode expected", normalize_options}},
    ResourceKey{Token::heldout,
                NumberValue{[](Params &p) { return &p.held_out; }}},
    ResourceKey{Token::predictions,
                OnOffValue{[](Params &p) { return &p.predictions; }}},
    ResourceKey{Token::walk,
                ChoiceValue{"`steps' or `path' expected", walk_options}},
    ResourceKey{Token::insignificant, ChoiceValue{"`none' or `best' expected",
                                                  insignificant_options}},
};

constexpr std::array winnow_keys = {
    ResourceKey{Token::alpha,
                RationalValue{[](Params &p) { return &p.winnow.alpha; }}},
    ResourceKey{Token::beta,
                RationalValue{[](Params &p) { return &p.winnow.beta; }}},
    ResourceKey{Token::thetaplus,
                RationalValue{[](Params &p) { return &p.winnow.theta_plus; }}},
    ResourceKey{Token::thetamin,
                RationalValue{[](Params &p) { return &p.winnow.theta_min; }}},
    ResourceKey{Token::maxiters,
                NumberValue{[](Params &p) { return &p.winnow.max_iters; }}},
    ResourceKey{Token::negativeweights, OnOffValue{[](Params &p) {
                  return &p.winnow.negative_weights;
                }}},
};

constexpr std::array rocchio_keys = {
    ResourceKey{Token::beta,
                RationalValue{[](Params &p) { return &p.rocchio.beta; }}},
    ResourceKey{Token::gamma,
                RationalValue{[](Params &p) { return &p.rocchio.gamma; }}},
    ResourceKey{Token::negativeweights, OnOffValue{[](Params &p) {
                  return &p.rocchio.negative_weights;
                }}},
    ResourceKey{Token::pivoted,
                OnOffValue{[](Params &p) { return &p.rocchio.pivoted; }}},
};

constexpr std::array sbc_keys = {
    ResourceKey{Token::laplace,
                OnOffValue{[](Params &p) { return &p.sbc.laplace; }}},
    ResourceKey{Token::maxsignif,
                NumberValue{[](Params &p) { return &p.sbc.max_signif; }}},
};

constexpr std::array linear_keys = {
    ResourceKey{Token::cost,
                RationalValue{[](Params &p) { return &p.linear.cost; }}},
    ResourceKey{Token::loss, ChoiceValue{"Loss expected", loss_options}},
};

constexpr std::array section_table = {
    ResourceSection{Token::general, "invalid general parameter",
                    "general parameter expected", general_keys},
    ResourceSection{Token::winnow, "invalid Winnow parameter",
                    "Winnow parameter expected", winnow_keys},
    ResourceSection{Token::rocchio, "invalid Rocchio parameter",
                    "Rocchio parameter expected", rocchio_keys},
    ResourceSection{Token::sbc, "invalid SBC parameter",
                    "SBC parameter expected", sbc_keys},
    ResourceSection{Token::linear, "invalid Linear parameter",
                    "Linear parameter expected", linear_keys},
};

// The element of one of the tables that `token` names, null if none.
template <typename Element>
const Element *find_keyword(std::span<const Element> table, int token) {
  for (const Element &element : table) {
    if (element.keyword == token)
      return &element;
  }
  return nullptr;
}

}  // namespace

std::span<const ResourceSection> resource_sections() {
  return section_table;
}

ReadResult read_resource_file(const std::string &path, std::string &text,
                              std::string &reason) {
  constexpr std::uint64_t largest_resource_file = std::uint64_t{1} << 26;
  return read_file(path, text, reason, largest_resource_file);
}

RcParser::RcParser(Params *params_P, std::string_view input,
                   const char *file_name, Messages &messages)
    : Scanner(Mode::resource, input, file_name, messages),
      params_P_(params_P) {}

// file: section*
void RcParser::parse() {
  while (!at_end()) {
    parse_section();
    // The bracket stays unread and begins the next section.
    if (has_error())
      skip_to('[');
  }
}

// section: header entry*
void RcParser::parse_section() {
  const ResourceSection *section_P = parse_header();
  if (section_P != nullptr)
    parse_entries(*section_P);
}

// header: '[' name ']'. Null after an error.
const ResourceSection *RcParser::parse_header() {
  if (!expect('[', "section header expected"))
    return nullptr;
  const ResourceSection *section_P = find_keyword(resource_sections(), token());
  if (section_P == nullptr) {
    parse_error(is(Token::identifier) ? "invalid section name"
                                      : "section name expected");
    return nullptr;
  }
  advance();
  return expect(']', "`]' expected") ? section_P : nullptr;
}

void RcParser::parse_entries(const ResourceSection &section) {
  // One message for each section: behind an error the rest of it would only
  // give more of them.
  while (!at_end() && !has_error() && !is('['))
    parse_entry(section);
}

// entry: key value
void RcParser::parse_entry(const ResourceSection &section) {
  // By its token: a keyword of another section is none here, and is reported as
  // if it were no name at all.
  const ResourceKey *key_P = find_keyword(section.keys, token());
  if (key_P == nullptr) {
    parse_error(is(Token::identifier) ? section.unknown_key
                                      : section.missing_key);
    return;
  }
  advance();
  std::visit([this](const auto &value) { parse_value(value); }, key_P->value);
}

void RcParser::parse_value(const OnOffValue &value) {
  if (!is(Token::on) && !is(Token::off)) {
    parse_error("`on' or `off' expected");
    return;
  }
  *value.field(*params_P_) = is(Token::on);
  advance();
}

void RcParser::parse_value(const NumberValue &value) {
  if (!is(Token::integer)) {
    parse_error("number expected");
    return;
  }
  *value.field(*params_P_) = int_value();
  advance();
}

void RcParser::parse_value(const RationalValue &value) {
  const bool is_number = is(Token::integer) || is(Token::rational);
  const double number = is_number ? real_value() : 0.0;
  // Infinity would come out of the run's arithmetic as NaN.
  if (!is_number || !std::isfinite(number)) {
    parse_error("rational number expected");
    return;
  }
  *value.field(*params_P_) = number;
  advance();
}

void RcParser::parse_value(const StringValue &value) {
  if (!is(Token::string)) {
    parse_error("quoted string expected");
    return;
  }
  *value.field(*params_P_) = text().substr(0, text().find('\0'));
  advance();
}

void RcParser::parse_value(const ChoiceValue &value) {
  const Option *option_P = find_keyword(value.options, token());
  if (option_P == nullptr) {
    parse_error(value.message);
    return;
  }
  option_P->set(*params_P_);
  advance();
}

}  // namespace vek
