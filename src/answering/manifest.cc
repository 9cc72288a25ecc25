#include "answering/manifest.h"

#include <nettle/sha2.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <nlohmann/json.hpp>
#include <vector>

#include "base/helpers.h"
#include "base/input_file.h"
#include "store/datafiles.h"

namespace vek {
namespace {

// Objects keep the order in which their members came.
using Json = nlohmann::ordered_json;
using Figures = std::optional<Manifest::Figures>;

constexpr int format = 1;
// Enough for a hundred thousand classes.
constexpr std::uint64_t largest_manifest = std::uint64_t{1} << 25;
// Of the text's own objects in each other.
constexpr int deepest = 3;
constexpr std::size_t piece_size = std::size_t{1} << 18;

constexpr char atoms_file[] = "data/atoms.dat";
constexpr char terms_file[] = "data/terms.dat";

// Their begin is what was packed, when vek has appended to them since.
bool is_vocabulary(std::string_view path) {
  return path == atoms_file || path == terms_file;
}

Json json_of(const Figures &figures) {
  if (!figures)
    return nullptr;
  return {{"documents", figures->documents},
          {"precision", figures->precision},
          {"recall", figures->recall},
          {"f", figures->f},
          {"fallout", figures->fallout}};
}

// What a member is, or an exception of the library's.
template <typename Value>
Value member(const Json &json, const char *name) {
  const Json &value = json.at(name);
  if constexpr (std::is_same_v<Value, std::uint64_t>) {
    // get() would turn other numbers into one.
    return value.get_ref<const Json::number_unsigned_t &>();
  } else {
    return value.get<Value>();
  }
}

Figures figures_of(const Json &json) {
  if (json.is_null())
    return {};
  return Manifest::Figures{
      member<std::uint64_t>(json, "documents"),
      member<double>(json, "precision"), member<double>(json, "recall"),
      member<double>(json, "f"), member<double>(json, "fallout")};
}

// Numbers with a full stop between them. False for anything else.
bool parse_version(std::string_view text, std::array<std::uint32_t, 2> &parts) {
  const char *const end_P = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end_P, parts[0]);
  if (first.ec != std::errc() || first.ptr == end_P || *first.ptr != '.')
    return false;
  const auto second = std::from_chars(first.ptr + 1, end_P, parts[1]);
  return second.ec == std::errc() && second.ptr == end_P;
}

bool is_sum(const std::string &text) {
  return text.size() == 64 &&
         text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

bool fails(const std::string &path, Failure &failure) {
  failure = {path, "", std::strerror(errno)};
  return false;
}

std::string digits_of(sha256_ctx &sum) {
  std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest = {};
  sha256_digest(&sum, digest.size(), digest.data());
  std::string digits;
  for (const std::uint8_t byte : digest) {
    digits += "0123456789abcdef"[byte >> 4];
    digits += "0123456789abcdef"[byte & 15];
  }
  return digits;
}

// Text of whoever wrote the file, for a message.
std::string in_quotes(const std::string &text) {
  return '`' + printable(text.substr(0, 100)) + '\'';
}

// Empty if the manifest can be used.
std::string read_members(const Json &json, Manifest &manifest) {
  const auto number = member<std::uint64_t>(json, "format");
  if (number != format) {
    return "its format is " + std::to_string(number) +
           ", and this program knows 1; use a later vek";
  }
  manifest.version = member<std::string>(json, "vek");
  std::array<std::uint32_t, 2> version = {};
  std::array<std::uint32_t, 2> own = {};
  if (!parse_version(manifest.version, version))
    return in_quotes(manifest.version) + " is no version of vek";
  parse_version(packing_version(), own);
  if (version > own) {
    return "packed by vek " + manifest.version + ", a later one than this, " +
           std::string(packing_version());
  }
  manifest.date = member<std::string>(json, "date");
  manifest.classifier = member<std::string>(json, "classifier");
  manifest.documents = member<std::uint64_t>(json, "documents");
  manifest.classes = member<std::uint64_t>(json, "classes");
  manifest.test = figures_of(json.at("test"));
  manifest.held_out = figures_of(json.at("heldout"));
  for (const auto &[path, value] : json.at("files").items()) {
    if (!is_packed_file(path))
      return in_quotes(path) + " is no file of a packed model";
    const Manifest::File file = {member<std::uint64_t>(value, "bytes"),
                                 member<std::string>(value, "sha256")};
    if (!is_sum(file.sha256))
      return "no SHA-256 of " + in_quotes(path);
    manifest.files[path] = file;
  }
  for (const char *path :
       {packed_settings, atoms_file, terms_file, "data/classes"}) {
    if (!manifest.files.contains(path))
      return "it does not name " + std::string(path);
  }
  return "";
}

// What lies in a packed model and is none of its files, though judging reads
// it.
bool has_other_file(const std::string &directory, const Manifest &manifest,
                    Failure &failure) {
  const std::string data = Path(directory, packed_data, "");
  const auto is_other = [&](const std::string &path) {
    return is_packed_file(path) && !manifest.files.contains(path);
  };
  Directory entries(data);
  if (entries.failed())
    return !fails(data, failure);
  std::string name;
  while (entries.read(name)) {
    const std::string path = packed_data + ('/' + name);
    if (name == std::string(class_set_name) + ".dat" || is_other(path)) {
      failure = {Path(directory, path, ""), "",
                 "it was not packed; a model that has learnt since needs no " +
                     std::string(manifest_name)};
      return true;
    }
  }
  if (entries.read_failed())
    return !fails(data, failure);
  const std::string path = Path(directory, packed_conversion, "");
  if (!is_other(packed_conversion) || !file_exists(path))
    return false;
  failure = {path, "", "it was not packed"};
  return true;
}

bool check_size(const std::string &directory, const std::string &name,
                const Manifest::File &file, Failure &failure) {
  const std::string path = Path(directory, name, "");
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0)
    return fails(path, failure);
  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (size == file.size || (is_vocabulary(name) && size > file.size))
    return true;
  failure = {path, "",
             "it has " + std::to_string(size) + " bytes and not the " +
                 std::to_string(file.size) + " that were packed"};
  return false;
}

}  // namespace

std::string_view packing_version() {
  return VEK_VERSION;
}

bool is_packed_file(std::string_view path) {
  if (path == packed_settings || path == packed_conversion ||
      is_vocabulary(path)) {
    return true;
  }
  constexpr std::string_view data = "data/";
  return path.starts_with(data) && is_class_file(path.substr(data.size()));
}

std::string Manifest::text() const {
  Json json = {{"format", format},       {"vek", version},
               {"date", date},           {"classifier", classifier},
               {"documents", documents}, {"classes", classes},
               {"test", json_of(test)},  {"heldout", json_of(held_out)},
               {"files", Json::object()}};
  for (const auto &[path, file] : files)
    json["files"][path] = {{"bytes", file.size}, {"sha256", file.sha256}};
  return json.dump(1) + '\n';
}

bool Manifest::parse(std::string_view text, std::string &fault) {
  *this = Manifest();
  bool is_deep = false;
  const auto check_depth = [&](int depth, Json::parse_event_t, Json &) {
    is_deep = is_deep || depth > deepest;
    return !is_deep;
  };
  try {
    const Json json = Json::parse(text, check_depth);
    fault = is_deep ? "nested too deep" : read_members(json, *this);
  } catch (const Json::parse_error &error) {
    fault = "no JSON at byte " + std::to_string(error.byte);
  } catch (const Json::exception &) {
    fault = "a member is missing or of the wrong kind";
  }
  return fault.empty();
}

bool Manifest::read(const std::string &directory, Failure &failure) {
  const std::string path = Path(directory, manifest_name, "");
  std::string content;
  failure = {path, "", ""};
  return read_file(path, content, failure.reason, largest_manifest) ==
             ReadResult::ok &&
         parse(content, failure.reason);
}

bool Manifest::verify(const std::string &directory, Failure &failure) const {
  for (const auto &[name, file] : files) {
    if (!check_size(directory, name, file, failure))
      return false;
  }
  if (has_other_file(directory, *this, failure))
    return false;
  for (const auto &[name, file] : files) {
    const std::string path = Path(directory, name, "");
    File found;
    if (!sum_file(path, file.size, found, failure))
      return false;
    if (found != file) {
      failure = {path, "", "it is not as it was packed"};
      return false;
    }
  }
  return true;
}

bool sum_file(const std::string &path, std::optional<std::uint64_t> size,
              Manifest::File &file, Failure &failure) {
  failure = {path, "", ""};
  const int fd = open_input(path, failure.reason);
  if (fd < 0)
    return false;
  sha256_ctx sum = {};
  sha256_init(&sum);
  std::vector<unsigned char> piece(piece_size);
  file.size = 0;
  ssize_t count = 1;
  while (count > 0 && file.size != size) {
    const std::uint64_t wanted =
        size ? std::min<std::uint64_t>(*size - file.size, piece.size())
             : piece.size();
    count = retry([&] { return ::read(fd, piece.data(), wanted); });
    if (count > 0) {
      const auto size_read = static_cast<std::size_t>(count);
      sha256_update(&sum, size_read, piece.data());
      file.size += size_read;
    }
  }
  if (count < 0)
    fails(path, failure);
  else if (size && file.size != *size)
    failure.reason = "it has become shorter";
  close(fd);
  file.sha256 = digits_of(sum);
  return count >= 0 && (!size || file.size == *size);
}

bool is_packed_model(const std::string &directory) {
  return file_exists(Path(directory, manifest_name, ""));
}

bool check_packed_model(const std::string &directory, Failure &failure) {
  const std::string path = Path(directory, manifest_name, "");
  const Presence presence = presence_of(path);
  if (presence != Presence::there)
    return presence == Presence::missing || fails(path, failure);
  Manifest manifest;
  return manifest.read(directory, failure) &&
         manifest.verify(directory, failure);
}

}  // namespace vek
