#include "store/blockwindow.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace vek {
namespace {

constexpr gint64 window_size = 65536;

bool holds_block(const BlockWindow &window, const FileStoreNode &node) {
  return window.repository_id == node.repository_id &&
         node.offset >= window.offset &&
         node.offset + gint64{node.size} <=
             window.offset + static_cast<gint64>(window.length);
}

// Fills the window from the block's first byte, with more the more of it was of
// use the last time. Whatever goes wrong here is left to the reading of the
// block itself.
void fill_window(BlockWindow &window, int fd, const FileStoreNode &node) {
  if (window.data == nullptr)
    window.data = static_cast<char *>(g_try_malloc(window_size));
  const gsize length = std::min<gsize>(
      window_size, std::max<gsize>(node.size, 4096 + 2 * window.used));
  const int errno_before = errno;
  const gssize count =
      window.data == nullptr ? 0 : pread(fd, window.data, length, node.offset);
  errno = errno_before;
  window.used = 0;
  window.length = static_cast<gsize>(std::max<gssize>(count, 0));
  window.repository_id = node.repository_id;
  window.offset = node.offset;
}

}  // namespace

const char *find_in_window(BlockWindow &window, int fd,
                           const FileStoreNode &node) {
  const gint64 distance = node.offset - window.last_offset;
  window.last_offset = node.offset;
  if (!holds_block(window, node)) {
    if (distance < 0 || distance >= window_size || node.size > window_size)
      return nullptr;
    fill_window(window, fd, node);
    if (!holds_block(window, node))
      return nullptr;
  }
  window.used += node.size;
  return window.data + (node.offset - window.offset);
}

void empty_window(BlockWindow &window) {
  window.length = 0;
}

}  // namespace vek
