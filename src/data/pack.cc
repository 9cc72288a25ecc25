#include "data/pack.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <map>
#include <string_view>
#include <vector>

#include "answering/kept_model.h"
#include "answering/manifest.h"
#include "base/helpers.h"
#include "base/input_file.h"
#include "base/textio.h"
#include "data/class_files.h"
#include "data/directory_lock.h"
#include "data/files.h"
#include "data/names.h"
#include "data/new_directory.h"
#include "data/store_writer.h"
#include "learning/classifiers.h"
#include "params/resources.h"
#include "store/datafiles.h"

namespace vek::keeping {
namespace {

constexpr char log_name[] = "vek.log";
constexpr char own_settings[] =
    "# Of the packed model; written by vek-data pack.\n";

// ---- Settings

bool read_text(const std::string &path, std::string &text, Failure &failure) {
  failure = {path, "", ""};
  return read_file(path, text, failure.reason) == ReadResult::ok;
}

// The resource file as it is, and behind it what differs in the packed model:
// of a key that is set twice the last value holds.
bool make_settings(const Packing &packing, const Params &params,
                   std::string &text, Failure &failure) {
  const std::string &name = packing.place.resource_file;
  const std::string path = path_from(
      packing.place.directory, Path("", name.empty() ? "vek" : name, ".rc"));
  if ((!name.empty() || file_exists(path)) && !read_text(path, text, failure))
    return false;
  // That of a model that is packed again.
  text.resize(std::min(text.find(own_settings), text.size()));
  if (!text.empty() && text.back() != '\n')
    text += '\n';
  std::string training = classifier_of(params.algorithm).name;
  for (char &letter : training)
    letter = static_cast<char>(letter | 0x20);
  const std::string analyser = packing.analyser.value_or(params.analyser);
  text += std::string(own_settings) + "[general]\nanalyser \"" + analyser +
          "\"\ndatadirectory \"" + packed_data +
          "\"\nfiledirectory \"files\"\ninputdirectory \"input\"\ntraining " +
          training + '\n';
  return true;
}

// A relative one was seen from the old directory, and does not go with the
// model.
std::string warning_of(const std::string &analyser) {
  if (analyser.empty() || analyser.front() == '/')
    return "";
  return "the analyser `" + analyser +
         "' is not packed and has a relative path; --analyser names another";
}

// ---- Figures of the last test

// The measures of the first report in a part of the log.
std::optional<Manifest::Figures> figures_in(std::string_view log,
                                            std::uint64_t documents) {
  const std::size_t begin = log.find("\nPrecision/Recall/F-Measure/Fallout\n");
  if (begin == std::string_view::npos)
    return {};
  log = log.substr(begin + 1);
  log = log.substr(0, log.find("\n\n") + 1);
  constexpr std::string_view total = "\nTotal ";
  const std::size_t place = log.find(total);
  if (place == std::string_view::npos)
    return {};
  log.remove_prefix(place + total.size());
  std::string line(log.substr(0, log.find('\n')));
  std::ranges::replace(line, '%', ' ');
  Manifest::Figures figures;
  figures.documents = documents;
  FieldReader fields(line);
  if (!fields.read(figures.precision) || !fields.read(figures.recall) ||
      !fields.read(figures.f) || !fields.read(figures.fallout)) {
    return {};
  }
  return figures;
}

// The report behind a message with the number of documents, up to `end`.
std::optional<Manifest::Figures> figures_behind(std::string_view log,
                                                std::string_view message,
                                                std::string_view before_number,
                                                std::string_view end) {
  const std::size_t place = log.find(message);
  if (place == std::string_view::npos)
    return {};
  log.remove_prefix(place + 1);
  const std::string_view line = log.substr(0, log.find('\n'));
  const std::size_t number = line.find(before_number);
  std::uint64_t documents = 0;
  if (number == std::string_view::npos ||
      std::from_chars(line.data() + number + before_number.size(),
                      line.data() + line.size(), documents)
              .ec != std::errc()) {
    return {};
  }
  return figures_in(log.substr(0, log.find(end)), documents);
}

// The log counts if it is that of a run with just these settings.
void find_figures(const Packing &packing, const Params &params,
                  Manifest &manifest) {
  std::string log;
  Failure ignored;
  if (!read_text(path_from(packing.place.directory, log_name), log, ignored))
    return;
  const std::size_t place =
      log.find(params.general_text(classifier_of(params.algorithm).name));
  if (place == std::string::npos)
    return;
  const std::string_view rest = std::string_view(log).substr(place);
  manifest.held_out =
      figures_behind(rest, "\njudged ", "judged ", "\ntesting ");
  manifest.test = figures_behind(rest, "\ntesting ", "' with ", "\npolling ");
}

// ---- The files

// All of it, with the ids as they are, and with what a journal has. A
// document's words that no class knows count as well, in the order of their
// ids.
void make_vocabulary(const Model &model, std::string &atoms,
                     std::string &terms) {
  for (std::uint32_t id = 0; id < model.atoms().size(); ++id)
    model.atoms().append_line(atoms, id);
  for (std::uint32_t id = 0; id < model.terms().size(); ++id)
    model.terms().append_line(terms, id);
}

using Files = std::map<std::string, std::string>;  // contents by path

bool collect_class_files(const KeptModel &kept, Files &files,
                         Failure &failure) {
  ClassFiles class_files;
  if (!class_files.open(kept.data_directory(), failure))
    return false;
  std::vector<std::string> names = {"classes"};
  if (class_files.presence(judging_name) != Presence::missing)
    names.emplace_back(judging_name);
  const char *const weights_P = kept.classifier().files.weights_suffix;
  for (const auto &[key, data] : kept.model().classes()) {
    names.push_back(class_file_name(data.id, class_profile_suffix));
    if (weights_P != nullptr)
      names.push_back(class_file_name(data.id, weights_P));
  }
  return std::ranges::all_of(names, [&](const std::string &name) {
    return class_files.read(name, files[Path(packed_data, name, "")], failure);
  });
}

bool collect_files(const Packing &packing, const KeptModel &kept, Files &files,
                   Failure &failure) {
  make_vocabulary(kept.model(), files[atoms_path(packed_data)],
                  files[terms_path(packed_data)]);
  const std::string conversion =
      path_from(packing.place.directory, packed_conversion);
  return collect_class_files(kept, files, failure) &&
         make_settings(packing, kept.params(), files[packed_settings],
                       failure) &&
         (!file_exists(conversion) ||
          read_text(conversion, files[packed_conversion], failure));
}

// ---- Writing

struct stat status_like(mode_t mode) {
  const mode_t mask = umask(0);
  umask(mask);
  struct stat status = {};
  status.st_mode = mode & ~mask;
  status.st_uid = geteuid();
  status.st_gid = getegid();
  return status;
}

bool write_file(const std::string &path, const std::string &content,
                Failure &failure) {
  NewFile file;
  return file.create(path, status_like(0666), failure) &&
         file.write(content, failure) &&
         file.finish(NewFile::Sync::no, failure);
}

bool write_files(const std::string &directory, const Files &files,
                 Manifest &manifest, Failure &failure) {
  const std::string data = Path(directory, packed_data, "");
  if (mkdir(data.c_str(), 0777) != 0)
    return fails(data, failure);
  for (const auto &[name, content] : files) {
    const std::string path = Path(directory, name, "");
    if (!write_file(path, content, failure) ||
        !sum_file(path, {}, manifest.files[name], failure)) {
      return false;
    }
  }
  // So that vek finds a whole data directory.
  NewFile index;
  const std::string base = profile_store_path(data);
  return index.create(index_path(base.c_str()), status_like(0640), failure) &&
         write_index(index, {}, failure) &&
         index.finish(NewFile::Sync::no, failure) &&
         write_file(Path(directory, manifest_name, ""), manifest.text(),
                    failure);
}

bool remove_packed(const std::string &path, Failure &failure) {
  const std::string data = Path(path, packed_data, "");
  if (file_exists(data) && !remove_directory(data, failure))
    return false;
  for (const char *name : {packed_settings, packed_conversion, manifest_name}) {
    const Path file(path, name, "");
    if (unlink(file.c_str()) != 0 && errno != ENOENT)
      return fails(file, failure);
  }
  return rmdir(path.c_str()) == 0 || fails(path, failure);
}

bool set_date(Manifest &manifest, Failure &failure) {
  std::uint64_t seconds = static_cast<std::uint64_t>(std::time(nullptr));
  if (const char *const text_P = std::getenv("SOURCE_DATE_EPOCH")) {
    FieldReader fields(text_P);
    if (!fields.read(seconds) || !fields.at_end()) {
      failure = {"SOURCE_DATE_EPOCH", "", "no number of seconds"};
      return false;
    }
  }
  manifest.date = date(static_cast<std::uint32_t>(seconds));
  return true;
}

// The strings of a resource file have no way to write everything.
bool can_be_set(const std::string &analyser, Failure &failure) {
  if (analyser.find_first_of("\"\n") == std::string::npos &&
      !analyser.ends_with('\\')) {
    return true;
  }
  failure = {analyser, "", "a resource file cannot have that as its analyser"};
  return false;
}

// Opens what was written as whoever gets it will.
bool try_packed(const std::string &directory, Failure &failure) {
  KeptModel packed;
  return packed.open({directory, "", "", {}}, failure);
}

// The data directory is locked from here on.
bool open_model(const KeptModel::Place &place, KeptModel &kept,
                DirectoryLock &lock, std::string &warning, Failure &failure) {
  Params params;
  if (!read_resources(place.directory, place.resource_file, params, failure))
    return false;
  const std::string data = path_from(
      place.directory, place.data_directory.empty() ? params.data_directory
                                                    : place.data_directory);
  return take_lock(lock, data, DirectoryLock::Mode::shared, warning, failure) &&
         kept.open(place, failure);
}

// Those of a model that is packed again are in its manifest.
bool fill_manifest(const Packing &packing, const KeptModel &kept,
                   Manifest &manifest, Failure &failure) {
  if (is_packed_model(packing.place.directory)) {
    Manifest old;
    if (!old.read(packing.place.directory, failure))
      return false;
    manifest.test = old.test;
    manifest.held_out = old.held_out;
  } else {
    find_figures(packing, kept.params(), manifest);
  }
  manifest.version = packing_version();
  manifest.classifier = kept.classifier().name;
  manifest.classes = kept.model().classes().size();
  manifest.documents = kept.model().classes().get_data(0).nr_docs;
  return set_date(manifest, failure);
}

}  // namespace

bool pack_model(const Packing &packing, std::string &warning,
                Failure &failure) {
  const std::string path = without_slashes(packing.destination);
  KeptModel kept;
  DirectoryLock lock;
  Files files;
  Manifest manifest;
  if (!is_free(path, failure) ||
      !can_be_set(packing.analyser.value_or(""), failure) ||
      !open_model(packing.place, kept, lock, warning, failure) ||
      !collect_files(packing, kept, files, failure) ||
      !fill_manifest(packing, kept, manifest, failure)) {
    return false;
  }
  NewDirectory made(path + ".part", remove_packed);
  if (!made.make(failure))
    return false;
  if (write_files(made.path(), files, manifest, failure) &&
      try_packed(made.path(), failure) &&
      made.finish(status_like(0777), failure) && made.put_at(path, failure)) {
    if (warning.empty())
      warning = warning_of(packing.analyser.value_or(kept.params().analyser));
    return true;
  }
  made.give_up();
  return false;
}

}  // namespace vek::keeping
