// The index of a profile store, made from what a StoreReader has read.
#ifndef VEK_DATA_STORE_WRITER_H_
#define VEK_DATA_STORE_WRITER_H_

#include <cstdint>
#include <string>

#include "base/failure.h"
#include "data/files.h"
#include "model/storereader.h"

namespace vek::keeping {

// How many repository files an index of these blocks has to name.
std::uint32_t nr_repositories(const StoreReader::Blocks &blocks);

// Writes it to a file that is open for that.
bool write_index(NewFile &file, const StoreReader::Blocks &blocks,
                 Failure &failure);

}  // namespace vek::keeping

#endif  // VEK_DATA_STORE_WRITER_H_
