#include "import/examples.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

#include "base/bytes.h"
#include "base/helpers.h"
#include "base/input_file.h"
#include "data/names.h"

namespace vek::importing {
namespace {

using keeping::unescape;

constexpr std::size_t number_size = 4 * 8 + 2 * nr_minima;  // bytes

void append_uint64(std::string &out, std::uint64_t number) {
  append_uint32(out, static_cast<std::uint32_t>(number));
  append_uint32(out, static_cast<std::uint32_t>(number >> 32));
}

std::uint64_t get_uint64(const unsigned char *bytes_P) {
  return get_uint32(bytes_P) | std::uint64_t{get_uint32(bytes_P + 4)} << 32;
}

void get_numbers(const unsigned char *bytes_P, Document &document) {
  document.key = get_uint64(bytes_P);
  document.content = get_uint64(bytes_P + 8);
  document.text = get_uint64(bytes_P + 16);
  document.group = get_uint64(bytes_P + 24);
  bytes_P += 32;
  for (std::uint16_t &minimum : document.minima) {
    minimum = static_cast<std::uint16_t>(bytes_P[0] | bytes_P[1] << 8);
    bytes_P += 2;
  }
}

bool load_settings(const ExamplesDirectory &directory, Examples &examples,
                   Failure &failure) {
  std::string text;
  if (read_file(directory.path_of(settings_file), text) != ReadResult::ok)
    return true;
  try {
    const nlohmann::json json = nlohmann::json::parse(text);
    if (json.at("version") == settings_version) {
      json.at("test").get_to(examples.test);
      json.at("share").get_to(examples.share);
      json.at("sources").get_to(examples.sources);
      return true;
    }
  } catch (const nlohmann::json::exception &) {
    // Reported below.
  }
  failure = {directory.path_of(settings_file), "",
             "no settings of this version"};
  return false;
}

bool load_classes(const ExamplesDirectory &directory, Examples &examples,
                  Failure &failure) {
  return for_each_line(
      directory.path_of(classes_file),
      [&examples](const std::string &line, std::size_t number) {
        const auto fields = fields_of(line);
        std::string original;
        return number == 1 ||
               (fields.size() == 2 && unescape(fields[1], original) &&
                examples.classes.enter_known(std::string(fields[0]), original));
      },
      failure);
}

bool load_documents(const ExamplesDirectory &directory, Examples &examples,
                    Failure &failure) {
  const std::string path = directory.path_of(numbers_file);
  std::ifstream numbers(path, std::ios::binary);
  std::string bytes(numbers_mark.size(), '\0');
  numbers.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  const bool has_mark = numbers.good() && bytes == numbers_mark;
  bytes.resize(number_size);
  bool fits = true;
  const auto take = [&](const std::string &line, std::size_t number) {
    if (number == 1)
      return true;
    const auto fields = fields_of(line);
    numbers.read(bytes.data(), number_size);
    fits = has_mark && numbers.good();
    if (fields.size() != 6 || !fits)
      return false;
    Document document;
    get_numbers(reinterpret_cast<const unsigned char *>(bytes.data()),
                document);
    const std::string_view first = fields[2].substr(0, fields[2].find(' '));
    document.class_id = static_cast<std::uint32_t>(
        examples.classes.find_name(std::string(first)));
    document.side = fields[1] == "test" ? Side::test : Side::train;
    if (document.class_id == ClassNames::most)
      return false;
    examples.add(document, fields[0], fields[2]);
    return true;
  };
  if (!for_each_line(directory.path_of(names_file), take, failure)) {
    if (!fits)
      failure = {path, "", "it does not belong to " + std::string(names_file)};
    return false;
  }
  return true;
}

// Names that somebody else has given are taken.
bool load_list(const char *file, const ExamplesDirectory &directory,
               Examples &examples, Failure &failure) {
  return for_each_line(
      directory.path_of(file),
      [&examples](const std::string &line, std::size_t) {
        std::string_view name(line);
        name = name.substr(0, name.find(' '));
        if (name.size() > 4 && name.ends_with(".txt"))
          name.remove_suffix(4);
        examples.names.insert(hash_of(name));
        return true;
      },
      failure);
}

bool load_rejects(const ExamplesDirectory &directory, Examples &examples,
                  Failure &failure) {
  return for_each_line(
      directory.path_of(rejects_file),
      [&examples](const std::string &line, std::size_t) {
        examples.reject_lines.insert(hash_of(line));
        return true;
      },
      failure);
}

}  // namespace

void Examples::add(const Document &document, std::string_view name,
                   std::string_view fields) {
  const auto place = static_cast<std::uint32_t>(documents.size());
  known.emplace(document.key, place);
  known.emplace(document.content, place);
  names.insert(hash_of(name));
  documents.push_back(document);
  const auto filed = filed_in.find(fields);
  if (filed == filed_in.end())
    filed_in.emplace(fields, 1);
  else
    ++filed->second;
  const auto nr_classes = static_cast<std::size_t>(
      std::count(fields.begin(), fields.end(), ' ') + 1);
  most_classes = std::max(most_classes, nr_classes);
  nr_with_several += nr_classes > 1;
}

bool load(const ExamplesDirectory &directory, Examples &examples,
          Failure &failure) {
  return load_settings(directory, examples, failure) &&
         load_classes(directory, examples, failure) &&
         load_documents(directory, examples, failure) &&
         load_list("train", directory, examples, failure) &&
         load_list("test", directory, examples, failure) &&
         load_rejects(directory, examples, failure);
}

void append_numbers(std::string &out, const Document &document) {
  for (const std::uint64_t number :
       {document.key, document.content, document.text, document.group})
    append_uint64(out, number);
  for (const std::uint16_t minimum : document.minima) {
    out += static_cast<char>(minimum & 0xFF);
    out += static_cast<char>(minimum >> 8);
  }
}

bool for_each_line(
    const std::string &path,
    const std::function<bool(const std::string &, std::size_t)> &take,
    Failure &failure) {
  std::ifstream file(path, std::ios::binary);
  std::string line;
  std::size_t number = 0;
  while (std::getline(file, line)) {
    ++number;
    if (!take(line, number)) {
      failure = {path, "line " + std::to_string(number), "it is damaged"};
      return false;
    }
  }
  if (file.bad()) {
    failure = {path, "", "it cannot be read"};
    return false;
  }
  return true;
}

}  // namespace vek::importing
