// Names that lists, files and shells can hold.
#ifndef VEK_IMPORT_NAMING_H_
#define VEK_IMPORT_NAMING_H_

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vek::importing {

std::uint64_t hash_of(std::string_view text, std::uint64_t seed = 0);

// 16 hexadecimal digits.
std::string hexadecimal(std::uint64_t number);

// The name of a document with that key: the key itself, without ".txt", if it
// is a path of letters, digits and the signs . _ - that is not too long; else
// what is left of it and a hash. Without a key a hash alone, spread over
// directories. `attempt` makes another one of it, if the last was taken.
std::string document_name(std::string_view key, std::uint64_t hash,
                          unsigned attempt);

// The classes of an examples directory: each by its name in the source and its
// name in the lists. There, blanks, colons, quotes, control characters and the
// like become "_"; names that come out the same get a hash behind them.
class ClassNames {
 public:
  // In a source with more the field is hardly that of a class.
  static constexpr std::size_t most = 100000;
  // A name in the lists, in bytes, without the hash of a longer one.
  static constexpr std::size_t longest = 200;

  struct Entry {
    std::string name;      // in the lists
    std::string original;  // in the source
  };

  // The id of a class, from 0; `most` if there are too many, or if nothing is
  // left of its name. `path`: what divides it into a path; empty: nothing.
  std::size_t enter(const std::string &original, const std::string &path);
  // The same for one whose name was settled. False if either is there already.
  bool enter_known(const std::string &name, const std::string &original);
  // Its id, `most` if there is none.
  std::size_t find_name(const std::string &name) const;

  const std::vector<Entry> &entries() const { return entries_; }

 private:
  std::vector<Entry> entries_;
  std::map<std::string, std::size_t, std::less<>> by_original_;
  std::map<std::string, std::size_t, std::less<>> by_name_;
};

}  // namespace vek::importing

#endif  // VEK_IMPORT_NAMING_H_
