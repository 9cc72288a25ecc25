// Bytes of a repository file, read ahead of those who ask for their blocks: a
// run gets them mostly in the order in which they lie there.
//
// A part of the file store. It only saves calls of the system; where it has
// nothing to give, the store reads the block itself.
#ifndef VEK_STORE_BLOCKWINDOW_H_
#define VEK_STORE_BLOCKWINDOW_H_

#include "store/filestore.h"

namespace vek {

// At first all is 0.
struct BlockWindow {
  char *data;  // null before the first use; the owner frees it by g_free()
  gsize length;
  gsize used;  // bytes of it that were asked for
  guint32 repository_id;
  gint64 offset;
  gint64 last_offset;  // of the block that was asked for last
};

// The bytes of the node's block, in the repository file `fd`, if they can be
// had without a call of their own; else null. They are valid until the next
// call. The window is filled when the block lies a little behind the last one.
const char *find_in_window(BlockWindow &window, int fd,
                           const FileStoreNode &node);

// To be called before a file is written: the window may hold old bytes of it.
void empty_window(BlockWindow &window);

}  // namespace vek

#endif  // VEK_STORE_BLOCKWINDOW_H_
