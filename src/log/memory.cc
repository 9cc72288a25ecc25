#include "log/memory.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <string_view>

#include "log/log.h"

namespace vek {
namespace {

constexpr std::size_t reserve_size = std::size_t{4} << 20;

// Not owned by an object: it is there until the very end of the process.
char *reserve_P = nullptr;
bool is_ending = false;

[[noreturn]] void end_at_once() {
  constexpr std::string_view text = "ERROR: out of memory, not all is saved\n";
  [[maybe_unused]] const ssize_t ignored =
      write(STDERR_FILENO, text.data(), text.size());
  _exit(ENOMEM);
}

}  // namespace

void give_back_reserve() {
  is_ending = true;
  delete[] reserve_P;
  reserve_P = nullptr;
}

namespace {

// While exit() is under way it must not be called again: the reserve may be
// enough to go on.
void end_run() {
  // The others know better what to do without (learning/heldout.cc), and exit()
  // is for the first alone.
  if (gettid() != getpid())
    throw std::bad_alloc();
  if (reserve_P == nullptr)
    end_at_once();
  const bool was_ending = is_ending;
  give_back_reserve();
  if (was_ending)
    return;
  error("out of memory");
  errno = ENOMEM;
  abort_run();
}

}  // namespace

void watch_memory() {
  std::set_new_handler(end_run);
  reserve_P = new (std::nothrow) char[reserve_size];
  std::atexit([] { is_ending = true; });
}

}  // namespace vek
