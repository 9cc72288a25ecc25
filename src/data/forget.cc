#include "data/forget.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "base/helpers.h"
#include "data/files.h"
#include "data/store_writer.h"
#include "model/storereader.h"
#include "store/datafiles.h"
#include "store/storeio.h"

namespace vek::keeping {
namespace {

// The name under which vek itself writes what is to be the index.
bool replace_index(const std::string &directory,
                   const StoreReader::Blocks &blocks, Failure &failure) {
  const std::string base = profile_store_path(directory);
  const std::string path = index_path(base.c_str());
  const std::string temporary = base + ".tmp";
  struct stat status = {};
  if (!get_index_status(base, status, failure))
    return false;
  NewFile file;
  if (!file.create(temporary, status, failure) ||
      !write_index(file, blocks, failure) ||
      !file.finish(NewFile::Sync::yes, failure)) {
    unlink(temporary.c_str());
    return false;
  }
  if (std::rename(temporary.c_str(), path.c_str()) != 0)
    return fails(path, failure);
  return sync_directory(directory, failure);
}

// The copy of an index whose writing was broken off would count more than an
// index with fewer entries. So what counts now becomes the index first.
bool settle_index(const std::string &directory,
                  const StoreReader::Blocks &blocks, Failure &failure) {
  const std::string base = profile_store_path(directory);
  const std::string copy = index_copy_path(base.c_str());
  const Presence presence = presence_of(copy);
  if (presence != Presence::there)
    return presence == Presence::missing || fails(copy, failure);
  if (!replace_index(directory, blocks, failure))
    return false;
  if (unlink(copy.c_str()) != 0)
    return fails(copy, failure);
  return sync_directory(directory, failure);
}

bool drop_name(StoreReader::Blocks &blocks, const std::string &name) {
  std::string stripped;
  strip_suffix(stripped, name, ".txt");
  return blocks.erase(name) != 0 || blocks.erase(stripped) != 0;
}

}  // namespace

bool forget_documents(const std::string &directory,
                      const std::vector<std::string> &names,
                      std::vector<std::string> &unknown, Failure &failure) {
  StoreReader store;
  if (!store.open(profile_store_path(directory), failure))
    return false;
  StoreReader::Blocks rest = store.blocks();
  for (const std::string &name : names) {
    if (!drop_name(rest, name))
      unknown.push_back(name);
  }
  return rest.size() == store.blocks().size() ||
         (settle_index(directory, store.blocks(), failure) &&
          replace_index(directory, rest, failure));
}

}  // namespace vek::keeping
