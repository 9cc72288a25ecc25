// Data directories that are made from another one, whole or not at all
// (new_directory.h).
#ifndef VEK_DATA_COPIES_H_
#define VEK_DATA_COPIES_H_

#include <string>

#include "base/failure.h"

namespace vek::keeping {

// Copies the files as they are, byte for byte, to a directory that must not be
// there yet; it is written as "<destination>.part".
bool copy_directory(const std::string &directory,
                    const std::string &destination, Failure &failure);

// Puts a directory in the place of this one, from which the space that no
// document uses any more is gone: old blocks, and the files that broken-off
// runs have left. Documents, ids and all other files stay what they are. It is
// written as "<directory>.compact" and exchanged with the old one in one step
// of the system; then the old one is removed.
//
// Both return false, with `failure` filled in, if that cannot be done, and
// refuse a directory in which there is anything else than vek's files.
bool compact_directory(const std::string &directory, Failure &failure);

}  // namespace vek::keeping

#endif  // VEK_DATA_COPIES_H_
