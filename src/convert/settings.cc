#include "convert/settings.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

namespace vek::convert {
namespace {

constexpr std::pair<const char *, Form> forms[] = {
    {"text", Form::text},   {"html", Form::html},        {"mail", Form::mail},
    {"mbox", Form::mbox},   {"csv", Form::csv},          {"tsv", Form::tsv},
    {"jsonl", Form::jsonl}, {"fasttext", Form::fasttext}};

bool is_alphanumeric(char character) {
  return std::isalnum(static_cast<unsigned char>(character)) != 0;
}

// Calls `visit(name, member)` for each member but the form.
template <class AnySettings, class Visit>
void for_each_member(AnySettings &settings, Visit visit) {
  visit("text", settings.text);
  visit("class", settings.classes);
  visit("id", settings.id);
  visit("group", settings.group);
  visit("separator", settings.separator);
  visit("path", settings.path);
  visit("encoding", settings.encoding);
  visit("header", settings.has_header);
  visit("quotes", settings.has_quotes);
  visit("filters", settings.filters);
}

}  // namespace

Form find_form(std::string_view name) {
  for (const auto &[known, form] : forms) {
    if (name == known)
      return form;
  }
  return Form::unknown;
}

const char *form_name(Form form) {
  const auto *entry_P =
      std::find_if(std::begin(forms), std::end(forms),
                   [form](const auto &entry) { return entry.second == form; });
  return entry_P == std::end(forms) ? "unknown" : entry_P->first;
}

std::string Settings::filter_for(std::string_view file) const {
  const std::string extension = extension_of(file);
  for (auto filter = filters.rbegin(); filter != filters.rend(); ++filter) {
    const auto end =
        std::find_if_not(filter->begin(), filter->end(), is_alphanumeric);
    if (end == filter->begin() || end == filter->end() || *end != '=')
      return *filter;
    if (extension == std::string(filter->begin(), end))
      return {std::next(end), filter->end()};
  }
  return "";
}

void to_json(nlohmann::json &json, const Settings &settings) {
  json = nlohmann::json::object();
  if (settings.form != Form::unknown)
    json["form"] = form_name(settings.form);
  const Settings defaults;
  nlohmann::json all = nlohmann::json::object();
  for_each_member(defaults, [&all](const char *name, const auto &member) {
    all[name] = member;
  });
  for_each_member(settings, [&](const char *name, const auto &member) {
    if (all[name] != member)
      json[name] = member;
  });
}

void from_json(const nlohmann::json &json, Settings &settings) {
  settings = {};
  settings.form = find_form(json.value("form", ""));
  for_each_member(settings, [&json](const char *name, auto &member) {
    if (const auto found = json.find(name); found != json.end())
      found->get_to(member);
  });
}

std::string extension_of(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  if (slash != std::string_view::npos)
    path.remove_prefix(slash + 1);
  const std::size_t stop = path.rfind('.');
  if (stop == std::string_view::npos || stop == 0)
    return "";
  std::string extension(path.substr(stop + 1));
  for (char &character : extension)
    character = static_cast<char>(std::tolower(character & 0xFF));
  return extension;
}

}  // namespace vek::convert
