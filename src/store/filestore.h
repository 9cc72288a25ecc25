// Many named blocks of bytes in a few large files.
//
// A store is an index file, "<base>.idx", and up to MAX_NR_STORES repository
// files, "<base>.000" and so on, which hold the blocks one behind the other.
// The index lies in memory while the store is open and is written back by
// filestore_sync() and filestore_close(). Blocks are only appended: one that
// is put again under its name leaves its old bytes behind, and nothing is ever
// removed. This is a plain function library on GLib; it knows nothing of what
// the blocks hold. The units that are called parts of the file store are for it
// alone.
//
// Conventions:
// 1. A null pointer as an argument is a programming error: g_assert() stops
//    the program with the argument's name.
// 2. There are no error results. A failed system call ends the program by
//    perror() and status 1, or ENOSPC for a full disk; so does, with a message
//    of its own, what the format cannot hold and an index that is damaged. A
//    read or write that moves too few bytes only warns on standard error, and
//    the rest is moved after it. The log has all this too, with the file's
//    name.
// 3. After such an end destructors may still call filestore_close(): it
//    saves the blocks that were put before, unless writing the index is what
//    failed.
// 4. Names are strings of any bytes but NUL, the empty one included.
// 5. One thread at a time uses a store, and one process: nothing is locked.
#ifndef VEK_STORE_FILESTORE_H_
#define VEK_STORE_FILESTORE_H_

#include <glib.h>
#include <stddef.h>

G_BEGIN_DECLS

enum {
  // Repository files of one store; their numbers are below this.
  MAX_NR_STORES = 8,
  // Bytes to which a repository file is filled up (1 GiB). One block that is
  // larger gets a repository file of its own.
  MAX_REPOSITORY_SIZE = 0x40000000,
  // Bytes of the largest block: what the system moves in one call. It keeps
  // every position within the signed 32 bits of the index.
  MAX_BLOCK_SIZE = 0x7ffff000
};

typedef struct FileStore FileStore;

// Where one block lies. Owned by the store and valid until it is closed, also
// when the name has been put again; then it shows the old block.
typedef struct FileStoreNode {
  char *name;
  guint32 repository_id;  // number of the repository file
  gint32 offset;          // of the block's first byte in that file
  guint32 size;           // in bytes
  guint32 time;           // of the put, in seconds since the Epoch
} FileStoreNode;

// Opens the store with the base name `fname`, a path without suffix. Without
// an index file, or with an empty one, the store is new, and an empty index
// file is created at once. The caller releases the store by filestore_close().
//
// An index that cannot be right ends the program before anything is written:
// by an assertion if it names more than MAX_NR_STORES repositories, else by a
// message and exit(1) if it is cut short or has bytes to spare, names a block
// twice, or leads to bytes that the repository files do not have. Bytes of a
// repository file that no entry leads to are left alone.
FileStore *filestore_open(const char *fname);

// Syncs, closes all files and frees the store.
void filestore_close(FileStore *fstore);

// Writes the index back, in place, and has the system put all files on the
// disk. If there is no room for the index, the old one is left as it was. Where
// nothing was put since the last sync, nothing is done.
void filestore_sync(FileStore *fstore);

// The bytes of the index as it would be written now, and by how many its file
// would grow.
guint64 filestore_index_size(FileStore *fstore);
guint64 filestore_index_growth(FileStore *fstore);

gboolean filestore_file_exists(FileStore *fstore, const char *fname);

// Appends the `len` bytes at `data` to the first repository with room for
// them, or to a new one, and enters them under `fname`, in place of what was
// there. Neither pointer is kept. The bytes are in the file on return, the name
// with the next sync. Ends the program if len > MAX_BLOCK_SIZE or all
// repositories are full.
void filestore_put_file(FileStore *fstore, const char *fname, const void *data,
                        unsigned int len);

// Sets `*data_ptr` to a new block with the bytes stored under `fname`, which
// the caller releases by g_free(), and `*len_ptr` to their number. An empty
// block is a null pointer. Bytes that cannot be read are 0. Returns FALSE for
// an unknown name and leaves both untouched.
gboolean filestore_get_file(FileStore *fstore, const char *fname,
                            void **data_ptr, size_t *len_ptr);

// Null for an unknown name.
const FileStoreNode *filestore_get_node(FileStore *fstore, const char *fname);

G_END_DECLS

#endif  // VEK_STORE_FILESTORE_H_
