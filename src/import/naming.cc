#include "import/naming.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "analyse/characters.h"

namespace vek::importing {
namespace {

constexpr std::size_t longest_plain = 120;
constexpr std::size_t longest_part = 60;  // in front of a hash
constexpr std::size_t hash_digits = 10;
constexpr int deepest_class = 20;

bool is_safe(char character) {
  return std::isalnum(character & 0xFF) != 0 || character == '_' ||
         character == '-' || character == '.';
}

// No part may be hidden, an option, or a file that another document has.
bool is_plain_path(std::string_view path) {
  if (path.empty() || path.size() > longest_plain)
    return false;
  while (true) {
    const std::size_t slash = path.find('/');
    const std::string_view part = path.substr(0, slash);
    if (part.empty() || part.front() == '.' || part.front() == '-' ||
        part.ends_with(".txt") ||
        !std::all_of(part.begin(), part.end(), is_safe))
      return false;
    if (slash == std::string_view::npos)
      return true;
    path.remove_prefix(slash + 1);
  }
}

// Runs of other characters become one "-".
std::string safe_part(std::string_view key) {
  std::string part;
  for (const char character : key) {
    const char safe = is_safe(character) && character != '.' ? character : '-';
    if (safe != '-' || (!part.empty() && part.back() != '-'))
      part += safe;
    if (part.size() == longest_part)
      break;
  }
  return part;
}

std::string class_part(std::string_view part) {
  std::string name;
  for (const char character : part) {
    const auto byte = static_cast<unsigned char>(character);
    const bool is_bad =
        byte <= ' ' || byte == 0x7F ||
        std::string_view("\"\\:`/").find(character) != std::string_view::npos;
    name += is_bad ? '_' : character;
  }
  if (name.starts_with('?') || name.starts_with('.'))
    name.front() = '_';
  return name;
}

std::string class_name(std::string_view original, const std::string &path) {
  std::string name;
  for (int depth = 1;; ++depth) {
    const std::size_t end = path.empty() || depth == deepest_class
                                ? std::string_view::npos
                                : original.find(path);
    std::string_view part = original.substr(0, end);
    while (!part.empty() && part.front() == ' ')
      part.remove_prefix(1);
    while (!part.empty() && part.back() == ' ')
      part.remove_suffix(1);
    if (!part.empty())
      name.append(name.empty() ? "" : "/").append(class_part(part));
    if (end == std::string_view::npos)
      break;
    original.remove_prefix(end + path.size());
  }
  return name;
}

}  // namespace

std::uint64_t hash_of(std::string_view text, std::uint64_t seed) {
  return XXH3_64bits_withSeed(text.data(), text.size(), seed);
}

std::string hexadecimal(std::uint64_t number) {
  char text[17];
  std::snprintf(text, sizeof text, "%016llx",
                static_cast<unsigned long long>(number));
  return text;
}

std::string document_name(std::string_view key, std::uint64_t hash,
                          unsigned attempt) {
  const std::string digits =
      hexadecimal(attempt < 2 ? hash : hash_of(std::to_string(attempt), hash));
  if (key.empty())
    return digits.substr(0, 2) + '/' + digits.substr(2);
  if (key.size() > 4 && key.ends_with(".txt"))
    key.remove_suffix(4);
  if (attempt == 0 && is_plain_path(key))
    return std::string(key);
  std::string name = safe_part(key);
  if (!name.empty() && name.back() != '-')
    name += '-';
  return name + digits.substr(0, hash_digits);
}

std::size_t ClassNames::enter(const std::string &original,
                              const std::string &path) {
  const auto found = by_original_.find(original);
  if (found != by_original_.end())
    return found->second;
  std::string name = class_name(original, path);
  if (entries_.size() == most || name.empty())
    return most;
  const std::string suffix = '-' + hexadecimal(hash_of(original));
  if (name.size() > longest) {
    name = std::string(analysis::cut_at_character(name, longest)) + suffix;
  }
  while (by_name_.contains(name))
    name += suffix.substr(0, 5);
  enter_known(name, original);
  return entries_.size() - 1;
}

bool ClassNames::enter_known(const std::string &name,
                             const std::string &original) {
  if (entries_.size() == most || by_name_.contains(name) ||
      !by_original_.emplace(original, entries_.size()).second)
    return false;
  by_name_.emplace(name, entries_.size());
  entries_.push_back({name, original});
  return true;
}

std::size_t ClassNames::find_name(const std::string &name) const {
  const auto found = by_name_.find(name);
  return found == by_name_.end() ? most : found->second;
}

}  // namespace vek::importing
