#include "data/store_writer.h"

#include <glib.h>

#include <algorithm>
#include <cerrno>

#include "base/helpers.h"
#include "store/indexformat.h"
#include "store/storeio.h"

namespace vek::keeping {

bool get_index_status(const std::string &base, struct stat &status,
                      Failure &failure) {
  status = {};
  for (const std::string &path :
       {index_path(base.c_str()), index_copy_path(base.c_str())}) {
    if (lstat(path.c_str(), &status) == 0) {
      failure = {path, "", "no regular file"};
      return S_ISREG(status.st_mode);
    }
    if (errno != ENOENT)
      return fails(path, failure);
  }
  return true;
}

std::uint32_t nr_repositories(const StoreReader::Blocks &blocks) {
  std::uint32_t count = 0;
  for (const auto &[name, block] : blocks)
    count = std::max(count, block.repository_id + 1);
  return count;
}

bool write_index(NewFile &file, const StoreReader::Blocks &blocks,
                 Failure &failure) {
  GString *const piece_P = g_string_new(nullptr);
  const auto write_piece = [&] {
    const bool ok = file.write({piece_P->str, piece_P->len}, failure);
    g_string_truncate(piece_P, 0);
    return ok;
  };
  append_index_head(piece_P, nr_repositories(blocks),
                    static_cast<guint32>(blocks.size()));
  bool ok = write_piece();
  for (auto place = blocks.begin(); ok && place != blocks.end(); ++place) {
    // The name is only read.
    append_index_entry(piece_P, {const_cast<char *>(place->first.c_str()),
                                 place->second.repository_id,
                                 static_cast<gint32>(place->second.offset),
                                 place->second.size, place->second.time});
    ok = write_piece();
  }
  g_string_free(piece_P, TRUE);
  return ok;
}

}  // namespace vek::keeping
