#include "params/rcparser.h"

#include <array>
#include <cmath>
#include <utility>

#include "run/helpers.h"
#include "run/log.h"

namespace vek {
namespace {

using Option = ChoiceValue::Option;

constexpr std::array training_options = {
    Option{Token::winnow,
           [](Params &p) { p.set_algorithm(Algorithm::winnow); }},
    Option{Token::rocchio,
           [](Params &p) { p.set_algorithm(Algorithm::rocchio); }},
    Option{Token::sbc, [](Params &p) { p.set_algorithm(Algorithm::sbc); }},
};

constexpr std::array selection_options = {
    Option{Token::none,
           [](Params &p) { p.set_term_selection(TermSelection::none); }},
    Option{Token::uncertainty,
           [](Params &p) { p.set_term_selection(TermSelection::uncertainty); }},
    Option{Token::termfreq,
           [](Params &p) { p.set_term_selection(TermSelection::termfreq); }},
    Option{Token::docfreq,
           [](Params &p) { p.set_term_selection(TermSelection::docfreq); }},
    Option{Token::tfidf,
           [](Params &p) { p.set_term_selection(TermSelection::tfidf); }},
    Option{Token::infogain,
           [](Params &p) { p.set_term_selection(TermSelection::infogain); }},
};

constexpr std::array strength_options = {
    Option{Token::freq, [](Params &p) { p.set_strength(Strength::freq); }},
    Option{Token::boolean,
           [](Params &p) { p.set_strength(Strength::boolean); }},
    Option{Token::sqrt, [](Params &p) { p.set_strength(Strength::sqrt); }},
    Option{Token::ltc, [](Params &p) { p.set_strength(Strength::ltc); }},
};

constexpr std::array normalize_options = {
    Option{Token::off, [](Params &p) { p.set_normalize(Normalize::off); }},
    Option{Token::linear,
           [](Params &p) { p.set_normalize(Normalize::linear); }},
    Option{Token::vector,
           [](Params &p) { p.set_normalize(Normalize::vector); }},
    // Another name of the same thing.
    Option{Token::cosine,
           [](Params &p) { p.set_normalize(Normalize::vector); }},
};

constexpr std::array general_keys = {
    ResourceKey{Token::fparameter, RationalValue{[](Params &p, double v) {
                  p.set_f_parameter(v);
                }}},
    ResourceKey{Token::selectivity, RationalValue{[](Params &p, double v) {
                  p.set_selectivity(v);
                }}},
    ResourceKey{Token::maxranks, NumberValue{[](Params &p, std::uint32_t v) {
                  p.set_max_ranks(v);
                }}},
    ResourceKey{Token::minranks, NumberValue{[](Params &p, std::uint32_t v) {
                  p.set_min_ranks(v);
                }}},
    ResourceKey{Token::training, ChoiceValue{"Training algorithm name expected",
                                             training_options}},
    ResourceKey{Token::termselection,
                ChoiceValue{"Term selection algorithm name expected",
                            selection_options}},
    ResourceKey{Token::incremental,
                OnOffValue{[](Params &p, bool v) { p.set_incremental(v); }}},
    ResourceKey{Token::save,
                OnOffValue{[](Params &p, bool v) { p.set_save(v); }}},
    ResourceKey{Token::scaling,
                OnOffValue{[](Params &p, bool v) { p.set_scaling(v); }}},
    ResourceKey{Token::datadirectory, StringValue{[](Params &p, std::string v) {
                  p.set_data_directory(std::move(v));
                }}},
    ResourceKey{Token::inputdirectory,
                StringValue{[](Params &p, std::string v) {
                  p.set_input_directory(std::move(v));
                }}},
    ResourceKey{Token::filedirectory, StringValue{[](Params &p, std::string v) {
                  p.set_file_directory(std::move(v));
                }}},
    ResourceKey{Token::analyser_command,
                StringValue{[](Params &p, std::string v) {
                  p.set_analyser(std::move(v));
                }}},
    ResourceKey{Token::strength,
                ChoiceValue{"Strength mode expected", strength_options}},
    ResourceKey{Token::normalize,
                ChoiceValue{"normalize mode expected", normalize_options}},
};

constexpr std::array winnow_keys = {
    ResourceKey{Token::alpha, RationalValue{[](Params &p, double v) {
                  p.winnow().set_alpha(v);
                }}},
    ResourceKey{Token::beta, RationalValue{[](Params &p, double v) {
                  p.winnow().set_beta(v);
                }}},
    ResourceKey{Token::thetaplus, RationalValue{[](Params &p, double v) {
                  p.winnow().set_theta_plus(v);
                }}},
    ResourceKey{Token::thetamin, RationalValue{[](Params &p, double v) {
                  p.winnow().set_theta_min(v);
                }}},
    ResourceKey{Token::maxiters, NumberValue{[](Params &p, std::uint32_t v) {
                  p.winnow().set_max_iters(v);
                }}},
    ResourceKey{Token::negativeweights, OnOffValue{[](Params &p, bool v) {
                  p.winnow().set_negative_weights(v);
                }}},
};

constexpr std::array rocchio_keys = {
    ResourceKey{Token::beta, RationalValue{[](Params &p, double v) {
                  p.rocchio().set_beta(v);
                }}},
    ResourceKey{Token::gamma, RationalValue{[](Params &p, double v) {
                  p.rocchio().set_gamma(v);
                }}},
    ResourceKey{Token::negativeweights, OnOffValue{[](Params &p, bool v) {
                  p.rocchio().set_negative_weights(v);
                }}},
    ResourceKey{Token::pivoted, OnOffValue{[](Params &p, bool v) {
                  p.rocchio().set_pivoted(v);
                }}},
};

constexpr std::array sbc_keys = {
    ResourceKey{Token::laplace,
                OnOffValue{[](Params &p, bool v) { p.sbc().set_laplace(v); }}},
    ResourceKey{Token::maxsignif, NumberValue{[](Params &p, std::uint32_t v) {
                  p.sbc().set_max_signif(v);
                }}},
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

RcParser::RcParser(Params *params_P, std::istream &input, const char *file_name)
    : Scanner(Mode::resource, input, file_name), params_P_(params_P) {}

RcParser::RcParser(Params *params_P, std::string_view input,
                   const char *file_name)
    : Scanner(Mode::resource, input, file_name), params_P_(params_P) {}

// file: section*
void RcParser::parse() {
  while (!at_end()) {
    parse_section();
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
  while (!at_end() && !has_error() && !is('['))
    parse_entry(section);
}

// entry: key value
void RcParser::parse_entry(const ResourceSection &section) {
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
  value.set(*params_P_, is(Token::on));
  advance();
}

void RcParser::parse_value(const NumberValue &value) {
  if (!is(Token::integer)) {
    parse_error("number expected");
    return;
  }
  value.set(*params_P_, int_value());
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
  value.set(*params_P_, number);
  advance();
}

void RcParser::parse_value(const StringValue &value) {
  if (!is(Token::string)) {
    parse_error("quoted string expected");
    return;
  }
  value.set(*params_P_, std::string(text().substr(0, text().find('\0'))));
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

unsigned read_parameters(const std::string &path) {
  std::string content;
  const ReadResult result = read_file(path, content);
  if (result == ReadResult::cannot_open) {
    report_file_error(path, FileError::open_for_reading);
    abort_run();
  }
  logf_if_verbose(2, "reading parameters from file `%s'", path.c_str());
  if (result == ReadResult::read_error) {
    report_file_error(path, FileError::read);
    abort_run();
  }
  RcParser parser(&params, std::string_view(content), path.c_str());
  parser.parse();
  return parser.nr_errors();
}

}  // namespace vek
