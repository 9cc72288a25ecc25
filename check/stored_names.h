// Which documents a data directory has profiles of.
#ifndef VEK_CHECK_STORED_NAMES_H_
#define VEK_CHECK_STORED_NAMES_H_

#include <string>
#include <unordered_set>

namespace vek::checking {

using NameSet = std::unordered_set<std::string>;

// Adds the names in the profile store of a data directory to the empty set. A
// directory without a store has none. False if the store's index cannot be
// right, and vek would end with it.
//
// The directory is not changed.
bool read_stored_names(const std::string &data_directory, NameSet &names);

}  // namespace vek::checking

#endif  // VEK_CHECK_STORED_NAMES_H_
