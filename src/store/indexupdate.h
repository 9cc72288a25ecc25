// The index file of a store while it is written, and after that was broken off.
//
// A part of the file store, which makes the bytes and reads them. The index is
// overwritten in place; to do that is to risk it, so a copy of its next content
// is on the disk meanwhile. It is written as "<base>.tmp", and renamed to
// "<base>.new" when it is complete. Failures end the program as those of
// filestore_open() and filestore_sync().
#ifndef VEK_STORE_INDEXUPDATE_H_
#define VEK_STORE_INDEXUPDATE_H_

#include <glib.h>

namespace vek {

// If there is a copy, a sync was broken off: makes the index equal to it, and
// removes it. The index is left alone if the copy is damaged, or if the index
// is good and has more entries: then the copy is no work of a broken sync, but
// was laid there. With neither of them good both stay.
//
// `idx_fd` is the open index file, or -1 if there is none. Returns it, or the
// file that was made, at its first byte.
int restore_index(const char *base, int idx_fd);

// Overwrites the index file with `image` and has the system put it on the disk.
// There is a copy of it meanwhile, but for want of the right or the room to
// make one. If there is no room for the index itself, the old one is left as it
// was.
void replace_index(const char *base, int idx_fd, const GString *image);

}  // namespace vek

#endif  // VEK_STORE_INDEXUPDATE_H_
