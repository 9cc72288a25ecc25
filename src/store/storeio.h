// The files of a store: their names, and the system's calls on them.
//
// A part of the file store, for its other parts. A call that a signal
// interrupts is made anew, and one that succeeds leaves errno alone. One that
// fails ends the program: by perror(), with the name of the function or
// primitive to which it belongs, a line in the log, and exit(): with ENOSPC for
// a full disk, and else with 1.
#ifndef VEK_STORE_STOREIO_H_
#define VEK_STORE_STOREIO_H_

#include <glib.h>

#include <string>

namespace vek {

// The index and a repository of the store with that base name.
std::string index_path(const char *base);
std::string repository_path(const char *base, guint32 id);
// A copy of the index, while that is being replaced.
std::string index_copy_path(const char *base);

[[noreturn]] void fail(const char *function);

// GLib aborts the program where it gets no memory, with what was put since the
// last sync. So it is asked for `size` bytes only after this, which fails in
// the manner of a system call.
void need_memory(const char *function, gsize size);

// More than the names and the node that an operation makes, and more than an
// allocator keeps at hand for a block of the size.
constexpr gsize small_memory = 65536;

// For reading and writing. Returns the descriptor, or -1 with errno set.
int open_file(const char *path, int more_flags);

gint64 length_of(const char *function, int fd);
void seek(const char *function, int fd, gint64 offset);

// Has the system put a file's bytes on the disk.
void flush(int fd);

// What a primitive has moved: ends the program if it is -1, and warns if it is
// not what was wanted.
void check_read(const char *primitive, gssize count, gsize wanted);
void check_write(const char *primitive, gssize count, gsize wanted);

// Returns `size` bytes of a file from `offset` on, in a block of g_malloc()
// that the caller owns, or null for none. What comes short is told, and read
// on. What the file does not have is 0, so that no old memory is taken for a
// block.
void *read_data(int fd, gint64 offset, gsize size);

// What falls short is told, and the rest written all the same: with a gap the
// block would be a wrong one in every later run.
void write_data(int fd, const void *data, gsize size);

}  // namespace vek

#endif  // VEK_STORE_STOREIO_H_
