#include "store/database.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cassert>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>
#include <sstream>
#include <utility>

#include "classes/classtab.h"
#include "classes/termset.h"
#include "learning/weightfile.h"
#include "params/params.h"
#include "run/helpers.h"
#include "run/log.h"
#include "run/memory.h"
#include "run/output_file.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/termtab.h"

namespace vek {
namespace {

constexpr char table_suffix[] = ".dat";
constexpr char profile_suffix[] = ".cpf";
constexpr char weights_suffix[] = ".cwt";
constexpr char class_files_name[] = "class-files";

// A block of the store, freed in the manner of its library.
struct FreeBlock {
  void operator()(void *block_P) const { g_free(block_P); }
};
using Block = std::unique_ptr<void, FreeBlock>;

void fill_profile(FileStore *store_P, const std::string &name,
                  DocProfile &profile) {
  void *data_P = nullptr;
  std::size_t size = 0;
  if (!filestore_get_file(store_P, name.c_str(), &data_P, &size)) {
    error("could not retrieve profile for \"%s\" from profile store",
          name.c_str());
    abort_run();
  }
  const Block block(data_P);
  if (size < sizeof(std::uint32_t) ||
      !profile.read(block.get(), static_cast<unsigned>(size))) {
    error("could not build profile from stored data for document \"%s\"",
          name.c_str());
    abort_run();
  }
  if (profile.drop_unknown(term_table.size()) != 0) {
    warning("stored profile of document \"%s\" has terms that are not known",
            name.c_str());
  }
}

}  // namespace

DataBase::~DataBase() {
  if (profile_store_P_ == nullptr || journal_failed_)
    return;
  filestore_close(profile_store_P_);
}

void DataBase::open(const std::string &directory) {
  data_dir_ = directory;
  if (!is_directory(directory)) {
    logf_if_verbose(1, "creating data directory `%s'", directory.c_str());
    if (mkdir(directory.c_str(), 0770) != 0) {
      report_file_error(directory, FileError::make_directory);
      abort_run();
    }
  }
  class_files_.set_place(directory, class_files_name);
  class_files_.recover();
  const Path store(directory, "profile-store", "");
  profile_store_P_ = filestore_open(store.c_str());
  const Path atoms(directory, "atoms", table_suffix);
  const Path terms(directory, "terms", table_suffix);
  atom_table.set_file(atoms);
  term_table.set_file(terms);
  journal_.set_directory(directory);
  has_data_ = file_is_there(atoms);
  if (!has_data_ && !journal_.exists()) {
    const KeepErrno keep;
    has_orphaned_terms_ = file_is_there(terms) && file_size(terms) != 0;
  }
  // The tables are destroyed before this object, so its destructor comes too
  // late to save what they hold.
  std::atexit(save_journal_at_exit);
}

void DataBase::read(bool with_classes) {
  const bool has_journal = journal_.exists();
  if (has_journal)
    journal_.prepare_tables();
  if (has_data_) {
    log_always(1, "reading profiles...");
    atom_table.read();
    // The very first writing of the tables may have been stopped between the
    // two.
    if (!has_journal || has_terms_file())
      term_table.read();
  }
  if (has_journal)
    journal_.enter_pending();
  has_vocabulary_ = !has_orphaned_terms_;
  if (!has_data_)
    return;
  logf_always(2, "read %u terms", term_table.size());
  if (with_classes)
    read_classes();
}

bool DataBase::has_terms_file() const {
  const KeepErrno keep;
  return file_is_there(Path(data_dir_, "terms", table_suffix));
}

bool DataBase::has_classes() const {
  const KeepErrno keep;
  return has_data_ && file_is_there(Path(data_dir_, "classes", ""));
}

void DataBase::read_classes() {
  const Path path(data_dir_, "classes", "");
  std::ifstream stream(path.c_str(), std::ios::in | std::ios::binary);
  if (!stream) {
    report_file_error(path, FileError::open_for_reading);
    abort_run();
  }
  if (!class_table.read(stream)) {
    report_file_error(path, FileError::read);
    abort_run();
  }
  log_always(1, "reading class profiles...");
  for (auto &[key, data] : class_table) {
    read_class_profile(data.id, class_path(data.id, profile_suffix));
  }
  logf_always(2, "read %zu classes", class_table.size());
}

void DataBase::read_class_profile(std::uint32_t class_id,
                                  const std::string &path) {
  ClassData &data = class_table.get_data(class_id);
  std::ifstream stream(path, std::ios::in | std::ios::binary);
  if (!stream) {
    report_file_error(path, FileError::open_for_reading);
    abort_run();
  }
  if (!data.profile.read(stream, data.nr_terms)) {
    report_file_error(path, FileError::read);
    abort_run();
  }
}

void DataBase::read_weights() {
  if (params.algorithm() != Algorithm::winnow)
    return;
  for (auto &[key, data] : class_table) {
    if (!read_class_weights(data))
      classes_without_weights_.insert(data.id);
  }
}

bool DataBase::read_class_weights(ClassData &data) {
  const std::string path = class_path(data.id, weights_suffix);
  const KeepErrno keep;
  std::string text;
  if (read_file(path, text) != ReadResult::ok) {
    if (is_system_failure()) {
      report_file_error(path, FileError::read);
      abort_run();
    }
    warning("cannot read classifier weights from file `%s', using 0",
            path.c_str());
    return false;
  }
  if (!parse_winnow_weights(text, data.profile)) {
    warning("classifier weights in file `%s' do not fit the class, using 0",
            path.c_str());
    return false;
  }
  return true;
}

void DataBase::write(bool save) {
  if (!save)
    return;
  std::uint32_t bad_id = 0;
  if (!class_table.all_names_storable(bad_id)) {
    error("class name `%s' cannot be stored, class files are not written",
          class_table.get_name(bad_id).c_str());
    abort_run();
  }
  log_always(1, "writing class profiles...");
  class_files_.begin();
  add_file("classes", [](std::ostream &os) { return class_table.write(os); });
  for (auto &[key, data] : class_table)
    add_class_profile(data.id);
  class_files_.replace();
}

void DataBase::add_class_profile(std::uint32_t class_id) {
  const ClassData &data = class_table.get_data(class_id);
  add_file(class_name(class_id, profile_suffix), [&](std::ostream &os) {
    return data.profile.write(os, data.nr_terms);
  });
  if (params.algorithm() != Algorithm::winnow ||
      classes_without_weights_.contains(class_id)) {
    return;
  }
  add_file(class_name(class_id, weights_suffix), [&](std::ostream &os) {
    return write_winnow_weights(os, data.profile);
  });
}

template <class Writer>
void DataBase::add_file(const std::string &name, Writer writer) {
  std::ostringstream stream;
  if (!writer(stream)) {
    report_file_error(Path(data_dir_, name, ""), FileError::write);
    abort_run();
  }
  class_files_.add(name, stream.view());
}

std::string DataBase::class_name(std::uint32_t class_id,
                                 const char *extension) {
  return "class" + std::to_string(class_id) + extension;
}

std::string DataBase::class_path(std::uint32_t class_id,
                                 const char *extension) const {
  return Path(data_dir_, class_name(class_id, extension), "");
}

void DataBase::sync() {
  FileStore *const profile_store = profile_store_P_;
  assert(profile_store);
  save_vocabulary();
  filestore_sync(profile_store);
}

void DataBase::save_vocabulary() {
  if (!save_journal())
    abort_run();
}

// False if what the vocabulary's files lack could not be saved.
bool DataBase::save_journal() {
  if (!has_vocabulary_ || journal_.save())
    return true;
  journal_failed_ = true;
  report_file_error(Path(data_dir_, "journal", table_suffix), FileError::write);
  return false;
}

void DataBase::save_journal_at_exit() {
  give_back_reserve();
  const KeepErrno keep;
  if (data_base.profile_store_P_ == nullptr || data_base.journal_failed_) {
    return;
  }
  // Should it not come back from there, for want of memory, the index must not
  // be written either.
  data_base.journal_failed_ = true;
  data_base.journal_failed_ = !data_base.save_journal();
}

void DataBase::write_vocabulary() {
  if (has_orphaned_terms_)
    return;
  atom_table.write();
  term_table.write();
  vocabulary_written();
}

void DataBase::vocabulary_written() {
  journal_.drop();
}

bool DataBase::exists(const std::string &name) const {
  return cache_.contains(name) ||
         filestore_file_exists(profile_store_P_, name.c_str());
}

// Without the atoms nobody knows what the lines of terms.dat stand for, and
// new terms would land behind them under ids that belong to others.
void DataBase::refuse_orphaned_terms() const {
  if (!has_orphaned_terms_)
    return;
  report_file_error(Path(data_dir_, "terms", table_suffix), FileError::format);
  abort_run();
}

void DataBase::put(const std::string &name, const DocProfile &profile) {
  if (cache_.contains(name))
    return;
  refuse_orphaned_terms();
  // Kept from call to call, so that a run does not allocate for each document.
  static std::string block;
  if (!profile.write(block)) {
    error("could not build stream for profile of document \"%s\"",
          name.c_str());
    abort_run();
  }
  filestore_put_file(profile_store_P_, name.c_str(), block.data(),
                     static_cast<unsigned>(block.size()));
}

// Documents are mostly asked for in the order of their names.
DataBase::Cache::iterator DataBase::cache_place(const std::string &name) {
  if (last_ != cache_.end() && last_->first < name) {
    const auto next = std::next(last_);
    if (next == cache_.end() || name <= next->first)
      return next;
  }
  return cache_.lower_bound(name);
}

DocProfile *DataBase::get(const std::string &name) {
  const auto place = cache_place(name);
  if (place != cache_.end() && place->first == name) {
    last_ = place;
    return place->second.get();
  }
  // The copy that is kept has no room for the terms that were dropped.
  static DocProfile profile;
  profile.clear();
  fill_profile(profile_store_P_, name, profile);
  profile.select_active(active_terms);
  last_ =
      cache_.emplace_hint(place, name, std::make_unique<DocProfile>(profile));
  return last_->second.get();
}

void DataBase::read_profile(const std::string &name, DocProfile &profile) {
  fill_profile(profile_store_P_, name, profile);
}

void DataBase::clear_cache() {
  cache_.clear();
  last_ = cache_.end();
}

void DataBase::release_profiles() {
  for (auto &[name, profile] : cache_)
    profile.reset();
}

}  // namespace vek
