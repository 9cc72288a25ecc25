#include "data/class_files.h"

#include <vector>

#include "base/input_file.h"
#include "data/files.h"
#include "store/datafiles.h"
#include "store/filesetformat.h"

namespace vek::keeping {

bool ClassFiles::open(const std::string &directory, Failure &failure) {
  directory_ = directory;
  const Path path(directory, class_set_name, ".dat");
  const Presence presence = presence_of(path);
  if (presence != Presence::there)
    return presence == Presence::missing || fails(path, failure);
  std::string text;
  failure = {path, "", ""};
  if (read_file(path, text, failure.reason) != ReadResult::ok)
    return false;
  std::vector<FileSetMember> members;
  if (!parse_file_set(text, members)) {
    failure = {path, "", "format error"};
    return false;
  }
  for (const FileSetMember &member : members)
    waiting_[std::string(member.name)] = member.content;
  return true;
}

std::string ClassFiles::path(const std::string &name) const {
  return Path(directory_, name, "");
}

Presence ClassFiles::presence(const std::string &name) const {
  return waiting_.contains(name) ? Presence::there : presence_of(path(name));
}

bool ClassFiles::read(const std::string &name, std::string &text,
                      Failure &failure) const {
  const auto place = waiting_.find(name);
  if (place == waiting_.end()) {
    failure = {path(name), "", ""};
    return read_file(path(name), text, failure.reason) == ReadResult::ok;
  }
  text = place->second;
  return true;
}

bool ClassFiles::read_table(ClassTable &classes, Failure &failure) const {
  std::string text;
  if (!read("classes", text, failure))
    return false;
  if (classes.parse(text) == ClassTable::Parsed::good)
    return true;
  failure = {path("classes"), "line " + std::to_string(classes.size() + 2),
             "format error"};
  return false;
}

}  // namespace vek::keeping
