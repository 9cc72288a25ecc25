// The names of the files of a data directory, in one place for runs and
// readers.
#ifndef VEK_STORE_DATAFILES_H_
#define VEK_STORE_DATAFILES_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "base/helpers.h"

namespace vek {

inline std::string atoms_path(const std::string &directory) {
  return Path(directory, "atoms", ".dat");
}
inline std::string terms_path(const std::string &directory) {
  return Path(directory, "terms", ".dat");
}
inline std::string journal_path(const std::string &directory) {
  return Path(directory, "journal", ".dat");
}
inline std::string classes_path(const std::string &directory) {
  return Path(directory, "classes", "");
}
// Without the suffixes of its files.
inline std::string profile_store_path(const std::string &directory) {
  return Path(directory, "profile-store", "");
}

// The index of the store with that base name, a repository, and a copy of the
// index that is there while that is being replaced.
inline std::string index_path(const char *base) {
  return std::string(base) + ".idx";
}
inline std::string repository_path(const char *base, std::uint32_t id) {
  return std::string(base) + ".00" + std::to_string(id);
}
inline std::string index_copy_path(const char *base) {
  return std::string(base) + ".new";
}

// "class", the id and the suffix, as class17.cpf.
inline constexpr char class_profile_suffix[] = ".cpf";
inline std::string class_file_name(std::uint32_t class_id,
                                   std::string_view suffix) {
  return "class" + std::to_string(class_id) + std::string(suffix);
}

// What was learnt about the scores of all classes (evaluation/judging.h).
inline constexpr char judging_name[] = "classes.cal";

// "classes", "classes.cal", or "class", a number, and ".cpf" or ".cwt".
inline bool is_class_file(std::string_view name) {
  if (name == "classes" || name == judging_name)
    return true;
  if (!name.starts_with("class") ||
      (!name.ends_with(".cpf") && !name.ends_with(".cwt"))) {
    return false;
  }
  name = name.substr(5, name.size() - 9);
  return !name.empty() &&
         name.find_first_not_of("0123456789") == std::string_view::npos;
}

// Class files that are being replaced (atomicfiles.h), with ".dat".
inline constexpr char class_set_name[] = "class-files";

}  // namespace vek

#endif  // VEK_STORE_DATAFILES_H_
