// The profile store of a data directory, read without opening it as a store:
// nothing is created, written or restored.
#ifndef VEK_MODEL_STOREREADER_H_
#define VEK_MODEL_STOREREADER_H_

#include <cstdint>
#include <map>
#include <string>

#include "base/failure.h"

namespace vek {

// The bytes of a profile without terms: their number. Each takes eight more.
inline constexpr std::uint32_t empty_profile_size = 4;

class StoreReader {
 public:
  // Where the bytes of a name lie.
  struct Block {
    std::uint32_t repository_id;
    std::int64_t offset;
    std::uint32_t size;
    std::uint32_t time;  // of the put, in seconds since the Epoch
  };
  using Blocks = std::map<std::string, Block, std::less<>>;

  // Reads the index of the store with that base name. A copy that a broken-off
  // sync has left is used in the cases in which vek would restore it. Without
  // files the store is empty. False if the index cannot be right, or leads to
  // bytes that are not there.
  bool open(const std::string &base, Failure &failure);

  const Blocks &blocks() const { return blocks_; }

  // Sets `bytes` to the content of a block. False if it cannot be read whole.
  bool read(const Block &block, std::string &bytes, Failure &failure) const;

 private:
  std::string base_;
  Blocks blocks_;
};

}  // namespace vek

#endif  // VEK_MODEL_STOREREADER_H_
