#include "sort/folders.h"

#include <algorithm>
#include <iterator>

#include "analyse/characters.h"

namespace vek::sorting {
namespace {

// Bytes of a name in a directory.
constexpr std::size_t longest_name = 255;

// A word that has another meaning, with or without "_" behind it.
bool is_taken(std::string_view part) {
  const std::size_t end = part.find_last_not_of('_') + 1;
  part = part.substr(0, end);
  return part == unsure_folder || part == rejected_folder || part == log_name;
}

bool is_hidden(std::string_view part) {
  const std::size_t begin = part.find_first_not_of('_');
  return begin != std::string_view::npos && part[begin] == '.';
}

// Calls `change` for each part, and for whether it is the first one.
template <class Change>
std::string changed(std::string_view path, Change change) {
  std::string result;
  while (true) {
    const std::size_t slash = path.find('/');
    if (!result.empty())
      result += '/';
    result += change(std::string(path.substr(0, slash)), result.empty());
    if (slash == std::string_view::npos)
      return result;
    path.remove_prefix(slash + 1);
  }
}

}  // namespace

std::string folder_of_class(std::string_view class_name) {
  return changed(class_name, [](std::string part, bool is_first) {
    if (is_hidden(part))
      part.insert(0, "_");
    if (is_first && is_taken(part))
      part += '_';
    return part;
  });
}

std::string class_of_folder(std::string_view folder) {
  bool is_of_class = true;
  std::string name = changed(folder, [&](std::string part, bool is_first) {
    const bool is_marked = is_hidden(part) || (is_first && is_taken(part));
    if (is_first && is_taken(part) && part.back() == '_')
      part.pop_back();
    else if (is_hidden(part) && part.front() == '_')
      part.erase(0, 1);
    else
      is_of_class &= !is_marked;
    return part;
  });
  return is_of_class ? name : "";
}

std::string choice_of_name(std::string_view name, unsigned number) {
  if (number == 1)
    return std::string(name);
  const std::size_t stop = name.rfind('.');
  std::string_view ending =
      stop == std::string_view::npos || stop == 0 ? "" : name.substr(stop);
  // What is so long is no ending.
  if (ending.size() > longest_name / 2)
    ending = "";
  name.remove_suffix(ending.size());
  const std::string middle = '-' + std::to_string(number);
  name = analysis::cut_at_character(
      name, longest_name - middle.size() - ending.size());
  return std::string(name) + middle + std::string(ending);
}

std::string_view last_part(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

std::string directory_of(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? "."
                                         : std::string(path.substr(0, slash));
}

}  // namespace vek::sorting
