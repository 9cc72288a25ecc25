#include "report/excerpt.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/helpers.h"

namespace vek::reporting {
namespace {

bool leads_out(const std::string &name) {
  const std::string path = '/' + name + '/';
  return path.find("/../") != std::string::npos;
}

// Nothing but regular files: others may block, or have no end.
std::string read_start(const std::string &path, std::size_t size) {
  const int fd = retry(
      [&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); });
  if (fd < 0)
    return "";
  struct stat status = {};
  std::string text(size, '\0');
  ssize_t nr_read = 0;
  if (fstat(fd, &status) == 0 && S_ISREG(status.st_mode))
    nr_read = retry([&] { return read(fd, text.data(), size); });
  close(fd);
  text.resize(nr_read > 0 ? static_cast<std::size_t>(nr_read) : 0);
  return text;
}

}  // namespace

std::string excerpt(const std::string &directory, const std::string &name,
                    std::size_t longest) {
  if (leads_out(name))
    return "";
  std::string text = read_start(Path(directory, name, ".txt"), longest + 1);
  if (text.size() <= longest)
    return text;
  const auto is_inside_character = [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
  };
  std::size_t end = longest;
  while (end > 0 && longest - end < 4 && is_inside_character(text[end]))
    --end;
  text.resize(end);
  return text + "...";
}

}  // namespace vek::reporting
