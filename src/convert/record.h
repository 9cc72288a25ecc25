// What a source of documents is read into, and who takes it.
#ifndef VEK_CONVERT_RECORD_H_
#define VEK_CONVERT_RECORD_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vek::convert {

// No text, row, line or message is longer, in bytes; what is, is rejected. It
// bounds the memory: a few times as much is used on the way to the text.
inline constexpr std::size_t longest_text = std::size_t{40} << 20;

struct Record {
  // In the source: "a/x.txt", "17" (a line), "a/m.mbox:17"; empty: all of it.
  std::string place;
  // What the document is known by. With is_id it is the same document in every
  // source. Empty: it has nothing but its text.
  std::string key;
  bool is_id = false;
  std::string text;                  // UTF-8 without NUL
  std::vector<std::string> classes;  // as they stand in the source
  bool has_folder_class = false;     // a path with slashes between its folders
  std::string group;                 // the value of that field
};

class Sink {
 public:
  virtual ~Sink() = default;

  // Whether a document is worth reading: not if it is known already.
  virtual bool wants(const std::string &key, bool is_id) = 0;
  // May move from the record.
  virtual void take(Record &record) = 0;
  // Something that comes to no document. `begin` is what it begins with.
  virtual void reject(const std::string &place, const std::string &reason,
                      std::string_view begin) = 0;
};

}  // namespace vek::convert

#endif  // VEK_CONVERT_RECORD_H_
