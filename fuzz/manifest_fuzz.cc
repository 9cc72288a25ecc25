// Any bytes as the manifest of a packed model: what is taken names files of
// such a model alone, and is written and read again as the same.
#include <string>

#include "answering/manifest.h"
#include "target.h"

using vek::fuzzing::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  vek::Manifest manifest;
  std::string fault;
  if (!manifest.parse(vek::fuzzing::text_of(data, size), fault)) {
    require(!fault.empty());
    return 0;
  }
  for (const auto &[path, file] : manifest.files)
    require(vek::is_packed_file(path) && path.find("..") == std::string::npos);
  vek::Manifest again;
  require(again.parse(manifest.text(), fault) && again == manifest);
  return 0;
}
