// Gives a fuzz target each of the files and directories named as arguments,
// where there is no fuzzing compiler: what a fuzzer once found stays a test.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "target.h"

namespace {

void replay(const std::filesystem::path &path) {
  std::ifstream stream(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(text.data()),
                         text.size());
}

}  // namespace

int main(int argument_count, char **argument_vector) {
  std::size_t nr_inputs = 0;
  for (int i = 1; i < argument_count; ++i) {
    const std::filesystem::path path(argument_vector[i]);
    if (!std::filesystem::is_directory(path)) {
      replay(path);
      ++nr_inputs;
      continue;
    }
    for (const auto &entry :
         std::filesystem::recursive_directory_iterator(path)) {
      if (!entry.is_regular_file())
        continue;
      replay(entry.path());
      ++nr_inputs;
    }
  }
  std::cout << nr_inputs << " inputs replayed\n";
  return nr_inputs > 0 ? 0 : 1;
}
