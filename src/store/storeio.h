// The files of a store: their names, and the system's calls on them.
//
// A part of the file store, for its other parts. A call that a signal
// interrupts is repeated, and one that succeeds leaves errno alone. One that
// fails ends the program: by perror(), with the name of the function or
// primitive to which it belongs, and by end_run(): with ENOSPC for a full disk,
// and else with 1. All that is said on the screen is in the log too, behind a
// line that names the file, which the screen gets with -v.
#ifndef VEK_STORE_STOREIO_H_
#define VEK_STORE_STOREIO_H_

#include <glib.h>

#include <string>

#include "store/datafiles.h"

namespace vek {

// Of the file `path`, or of an open one; without a name if it is about none.
[[noreturn]] void fail(const char *function, const std::string &path = {});
[[noreturn]] void fail(const char *function, int fd);

// GLib aborts the program when it gets no memory, and with it all that was put
// since the last sync. So `size` bytes are tried here before GLib is asked for
// them; if there are none, this fails as a system call does.
void need_memory(const char *function, gsize size);

// More than the names and the node that an operation makes, and more than an
// allocator keeps at hand for a block of the size.
constexpr gsize small_memory = 65536;

// A regular file, for reading and writing. Returns the descriptor, or -1 with
// errno set.
int open_file(const char *path, int more_flags);

gint64 length_of(const char *function, int fd);
void seek(const char *function, int fd, gint64 offset);

// Has the system put a file's bytes on the disk.
void flush(int fd);

// Checks what a primitive has moved: ends the program if the count is -1, and
// warns if it is not what was wanted.
void check_read(const char *primitive, int fd, gssize count, gsize wanted);
void check_write(const char *primitive, int fd, gssize count, gsize wanted);

// Returns `size` bytes of a file from `offset` on, in a block of g_malloc()
// that the caller owns; null for 0 bytes. A short read is reported, and
// continued. Bytes that the file does not have are 0, so that no old memory is
// taken for a block.
void *read_data(int fd, gint64 offset, gsize size);

// A short write is reported, and the rest written all the same: with a gap the
// block would be wrong in every later run.
void write_data(int fd, const void *data, gsize size);

}  // namespace vek

#endif  // VEK_STORE_STOREIO_H_
