// The index of a profile store, made from what a StoreReader has read.
#ifndef VEK_DATA_STORE_WRITER_H_
#define VEK_DATA_STORE_WRITER_H_

#include <sys/stat.h>

#include <cstdint>
#include <string>

#include "base/failure.h"
#include "data/files.h"
#include "model/storereader.h"

namespace vek::keeping {

// The status of the index file of a store or, if a broken-off run has left no
// more than that, of the copy of its index; `status` is all zero if there is
// neither. False, with `failure` filled in, if it is no regular file.
bool get_index_status(const std::string &base, struct stat &status,
                      Failure &failure);

// How many repository files an index of these blocks has to name.
std::uint32_t nr_repositories(const StoreReader::Blocks &blocks);

// Writes it to a file that is open for that.
bool write_index(NewFile &file, const StoreReader::Blocks &blocks,
                 Failure &failure);

}  // namespace vek::keeping

#endif  // VEK_DATA_STORE_WRITER_H_
