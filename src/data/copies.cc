#include "data/copies.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "base/helpers.h"
#include "base/progress_line.h"
#include "data/files.h"
#include "data/new_directory.h"
#include "data/store_writer.h"
#include "model/model.h"
#include "store/datafiles.h"
#include "store/filestore.h"
#include "store/storeio.h"

namespace vek::keeping {
namespace {

using Shown = ProgressLine::Shown;

// A file's bytes under the same name in another directory.
bool copy_file(const std::string &from, const std::string &to,
               const std::string &name, Failure &failure) {
  const Path source(from, name, "");
  struct stat status = {};
  NewFile file;
  if (!get_status(source, status, failure) ||
      !file.create(Path(to, name, ""), status, failure)) {
    return false;
  }
  const int fd = retry(
      [&] { return open(source.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC); });
  if (fd < 0)
    return fails(source, failure);
  const bool ok = file.write_from(fd, source, failure);
  close(fd);
  return ok && file.finish(NewFile::Sync::no, failure);
}

bool finish_like(const NewDirectory &made, const std::string &directory,
                 Failure &failure) {
  struct stat status = {};
  return get_status(directory + "/.", status, failure) &&
         made.finish(status, failure);
}

// Only regular files with names of vek's: nothing else would be copied, and
// what is not copied would be lost.
bool list_own_files(const std::string &directory,
                    std::vector<std::string> &names, Failure &failure) {
  std::vector<std::string> all;
  if (!list_directory(directory, all, failure))
    return false;
  for (const std::string &name : all) {
    const Path path(directory, name, "");
    struct stat status = {};
    if (!get_status(path, status, failure))
      return false;
    if (!is_own_file(name) || !S_ISREG(status.st_mode)) {
      failure = {path, "", "no file of vek's; move it away first"};
      return false;
    }
    if (!is_temporary_file(name))
      names.push_back(name);
  }
  return true;
}

bool is_of_store(std::string_view name) {
  return name.starts_with("profile-store.");
}

// ---- A store without gaps.

class StoreCopy {
 public:
  // The new files get the mode of an old one.
  StoreCopy(const StoreReader &store, const std::string &base,
            const struct stat &like)
      : store_(store), base_(base), like_(like) {}

  bool write(Failure &failure) {
    ProgressLine progress("vek-data", Shown::on_terminal,
                          store_.blocks().size());
    std::string bytes;
    for (const auto &[name_P, block_P] : by_position()) {
      if (!store_.read(*block_P, bytes, failure) ||
          !put(*name_P, *block_P, bytes, failure)) {
        return false;
      }
      progress.count();
    }
    progress.finish();
    for (std::uint32_t id = 0; id < nr_files_; ++id) {
      if (!files_[id].finish(NewFile::Sync::no, failure))
        return false;
    }
    NewFile index;
    return index.create(index_path(base_.c_str()), like_, failure) &&
           write_index(index, new_blocks_, failure) &&
           index.finish(NewFile::Sync::no, failure);
  }

 private:
  struct Entry {
    const std::string *name_P;
    const StoreReader::Block *block_P;
  };

  // The order in which they lie in the files is the one of reading.
  std::vector<Entry> by_position() const {
    std::vector<Entry> entries;
    for (const auto &[name, block] : store_.blocks())
      entries.push_back({&name, &block});
    std::sort(entries.begin(), entries.end(),
              [](const Entry &a, const Entry &b) {
                const auto place = [](const Entry &entry) {
                  return std::pair(entry.block_P->repository_id,
                                   entry.block_P->offset);
                };
                return place(a) < place(b);
              });
    return entries;
  }

  // Into the first file with room, as vek does.
  bool put(const std::string &name, const StoreReader::Block &block,
           const std::string &bytes, Failure &failure) {
    std::uint32_t id = 0;
    while (id < nr_files_ &&
           sizes_[id] + block.size > std::uint64_t{MAX_REPOSITORY_SIZE})
      ++id;
    if (id == nr_files_ && !begin_file(failure))
      return false;
    new_blocks_.emplace(
        name, StoreReader::Block{id, static_cast<std::int64_t>(sizes_[id]),
                                 block.size, block.time});
    sizes_[id] += block.size;
    return files_[id].write(bytes, failure);
  }

  bool begin_file(Failure &failure) {
    if (nr_files_ == files_.size()) {
      failure = {base_, "", "the documents do not fit into its files"};
      return false;
    }
    const std::uint32_t id = nr_files_++;
    return files_[id].create(repository_path(base_.c_str(), id), like_,
                             failure);
  }

  const StoreReader &store_;
  const std::string base_;
  const struct stat &like_;
  StoreReader::Blocks new_blocks_;
  std::array<NewFile, MAX_NR_STORES> files_;
  std::array<std::uint64_t, MAX_NR_STORES> sizes_{};
  std::uint32_t nr_files_ = 0;
};

bool copy_store(const std::string &directory, const std::string &to,
                Failure &failure) {
  const std::string base = profile_store_path(directory);
  StoreReader store;
  struct stat status = {};
  if (!store.open(base, failure) || !get_index_status(base, status, failure))
    return false;
  return status.st_mode == 0 ||
         StoreCopy(store, profile_store_path(to), status).write(failure);
}

bool write_compact(const std::string &directory,
                   const std::vector<std::string> &names,
                   const NewDirectory &made, Failure &failure) {
  for (const std::string &name : names) {
    if (!is_of_store(name) &&
        !copy_file(directory, made.path(), name, failure)) {
      return false;
    }
  }
  return copy_store(directory, made.path(), failure) &&
         finish_like(made, directory, failure);
}

// A directory that is damaged must not be replaced: more might be lost.
bool is_readable(const std::string &directory, Failure &failure) {
  Model model;
  return model.open(directory, failure);
}

// Without symbolic links, so that the directory itself is exchanged.
bool real_path(const std::string &directory, std::string &path,
               Failure &failure) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(
      realpath(directory.c_str(), nullptr), &std::free);
  if (resolved == nullptr)
    return fails(directory, failure);
  path = resolved.get();
  return true;
}

bool exchange(const std::string &one, const std::string &other,
              Failure &failure) {
  if (renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(),
                RENAME_EXCHANGE) == 0) {
    return true;
  }
  fails(other, failure);
  if (errno == EINVAL || errno == ENOSYS)
    failure.reason = "its file system cannot exchange two directories";
  return false;
}

}  // namespace

bool copy_directory(const std::string &directory,
                    const std::string &destination, Failure &failure) {
  const std::string path = without_slashes(destination);
  std::vector<std::string> names;
  if (!is_free(path, failure) || !list_own_files(directory, names, failure))
    return false;
  NewDirectory made(path + ".part");
  if (!made.make(failure))
    return false;
  for (const std::string &name : names) {
    if (!copy_file(directory, made.path(), name, failure)) {
      made.give_up();
      return false;
    }
  }
  if (finish_like(made, directory, failure) && made.put_at(path, failure))
    return true;
  made.give_up();
  return false;
}

bool compact_directory(const std::string &directory, Failure &failure) {
  std::string path;
  std::vector<std::string> names;
  if (!real_path(directory, path, failure) ||
      !list_own_files(path, names, failure) || !is_readable(path, failure)) {
    return false;
  }
  NewDirectory made(path + ".compact");
  if (!made.make(failure))
    return false;
  if (!write_compact(path, names, made, failure) ||
      !exchange(made.path(), path, failure)) {
    made.give_up();
    return false;
  }
  // It is the old one now, and goes when the new one is sure to stay.
  return sync_directory(parent_of(path), failure) &&
         remove_directory(made.path(), failure);
}

}  // namespace vek::keeping
