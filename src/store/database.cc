#include "store/database.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <sstream>
#include <thread>

#include "base/helpers.h"
#include "base/input_file.h"
#include "base/require.h"
#include "log/log.h"
#include "log/memory.h"
#include "log/stop.h"
#include "store/datafiles.h"

namespace vek {
namespace {

// A block of the store, freed in the manner of its library.
struct FreeBlock {
  void operator()(void *block_P) const { g_free(block_P); }
};
using Block = std::unique_ptr<void, FreeBlock>;

// Whose journal is to be saved when the process ends.
DataBase *open_data_base_P = nullptr;

}  // namespace

DataBase::DataBase(AtomTable &atoms, TermTable &terms, ClassTable &classes,
                   const TermSet &active_terms)
    : Documents(active_terms),
      atoms_(atoms),
      terms_(terms),
      classes_(classes),
      journal_(atoms, terms, atoms_file_, terms_file_),
      sync_interval_(SyncInterval::Clock::now()) {}

DataBase::~DataBase() {
  open_data_base_P = nullptr;
  if (profile_store_P_ == nullptr || journal_failed_)
    return;
  filestore_close(profile_store_P_);
}

void DataBase::open(const std::string &directory,
                    std::chrono::seconds patience) {
  data_dir_ = directory;
  if (!is_directory(directory)) {
    logf_if_verbose(1, "creating data directory `%s'", directory.c_str());
    if (mkdir(directory.c_str(), 0770) != 0) {
      report_file_error(directory, FileError::make_directory);
      abort_run();
    }
  }
  lock(patience);
  class_files_.set_place(directory, class_set_name);
  class_files_.recover();
  profile_store_P_ = filestore_open(profile_store_path(directory).c_str());
  atoms_file_.set_name(atoms_path(directory));
  terms_file_.set_name(terms_path(directory));
  journal_.set_directory(directory);
  has_data_ = file_is_there(atoms_file_.name());
  if (!has_data_ && !journal_.exists()) {
    const KeepErrno keep;
    has_orphaned_terms_ =
        has_terms_file() && file_size(terms_file_.name()) != 0;
  }
  // The tables are destroyed before this object, so its destructor comes too
  // late to save what they hold.
  if (open_data_base_P == nullptr)
    at_end(save_at_end);
  open_data_base_P = this;
}

void DataBase::lock(std::chrono::seconds patience) {
  using Outcome = DirectoryLock::Outcome;
  using Clock = std::chrono::steady_clock;
  const KeepErrno keep;
  const Clock::time_point end = Clock::now() + patience;
  bool is_told = false;
  for (;;) {
    const Outcome outcome =
        lock_.take(data_dir_, DirectoryLock::Mode::exclusive);
    if (outcome == Outcome::locked)
      return;
    if (outcome == Outcome::failed) {
      warning("cannot lock data directory `%s': %s", data_dir_.c_str(),
              std::strerror(errno));
      return;
    }
    const std::string user = lock_.holder() == 0
                                 ? "another process"
                                 : "process " + std::to_string(lock_.holder());
    if (Clock::now() >= end) {
      error("data directory `%s' is in use by %s", data_dir_.c_str(),
            user.c_str());
      abort_run(EWOULDBLOCK);
    }
    if (!is_told) {
      logf_always(1, "waiting for data directory `%s', in use by %s",
                  data_dir_.c_str(), user.c_str());
    }
    is_told = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    stop_if_requested();
  }
}

void DataBase::read(bool with_classes, const ClassFileFormat &format) {
  const bool has_journal = journal_.exists();
  if (has_journal)
    journal_.prepare_tables();
  if (has_data_) {
    log_always(1, "reading profiles...");
    read_atoms();
    // The very first writing of the tables may have been stopped between the
    // two.
    if (!has_journal || has_terms_file())
      read_terms();
  }
  if (has_journal)
    journal_.enter_pending();
  has_vocabulary_ = !has_orphaned_terms_;
  if (!has_data_)
    return;
  logf_always(2, "read %u terms", terms_.size());
  if (with_classes)
    read_classes(format);
}

void DataBase::read_atoms() {
  const std::string text = atoms_file_.load();
  if (!atoms_.parse(text))
    atoms_file_.reject(atoms_.fault(text));
  atoms_file_.accept(atoms_.size());
}

void DataBase::read_terms() {
  const std::string text = terms_file_.load();
  if (!terms_.parse(text, atoms_.size()))
    terms_file_.reject(terms_.fault(text, atoms_.size()));
  terms_file_.accept(terms_.size());
}

bool DataBase::has_terms_file() const {
  const KeepErrno keep;
  return file_is_there(terms_file_.name());
}

bool DataBase::has_classes() const {
  const KeepErrno keep;
  return has_data_ && file_is_there(classes_path(data_dir_));
}

void DataBase::read_classes(const ClassFileFormat &format) {
  const std::string path = classes_path(data_dir_);
  std::string text;
  must_read(path, text);
  const ClassTable::Parsed parsed = classes_.parse(text);
  require(parsed != ClassTable::Parsed::repeated_class, "p.second");
  if (parsed != ClassTable::Parsed::good) {
    // The first line has the number of classes.
    const LineFault fault{classes_.size() + 2, "it is damaged"};
    report_file_error(path, FileError::read, fault.text());
    abort_run(no_cause);
  }
  log_always(1, "reading class profiles...");
  for (auto &[key, data] : classes_) {
    const Path profile(data_dir_,
                       class_file_name(data.id, class_profile_suffix), "");
    must_read(profile, text);
    LineFault fault;
    if (!data.profile.parse(text, data.nr_terms, format.columns, terms_.size(),
                            fault)) {
      report_file_error(profile, FileError::read, fault.text());
      abort_run(no_cause);
    }
  }
  logf_always(2, "read %zu classes", classes_.size());
}

void DataBase::read_weights(const ClassFileFormat &format) {
  if (format.weights_suffix == nullptr)
    return;
  for (auto &[key, data] : classes_) {
    if (!read_class_weights(data, format))
      classes_without_weights_.insert(data.id);
  }
}

bool DataBase::read_class_weights(ClassData &data,
                                  const ClassFileFormat &format) {
  const Path path(data_dir_, class_file_name(data.id, format.weights_suffix),
                  "");
  const KeepErrno keep;
  std::string text;
  std::string reason;
  if (read_file(path, text, reason) != ReadResult::ok) {
    if (is_system_failure()) {
      report_file_error(path, FileError::read, reason);
      abort_run();
    }
    explain(path, reason);
    warning("cannot read classifier weights from file `%s', using 0",
            path.c_str());
    return false;
  }
  if (!format.parse_weights(text, data.profile)) {
    warning("classifier weights in file `%s' do not fit the class, using 0",
            path.c_str());
    return false;
  }
  return true;
}

bool DataBase::read_judging(std::string &text) {
  const Path path(data_dir_, judging_name, "");
  const KeepErrno keep;
  if (!has_data_ || !file_is_there(path))
    return false;
  must_read(path, text);
  return true;
}

void DataBase::write(const ClassFileFormat &format,
                     const std::string &judging) {
  std::uint32_t bad_id = 0;
  if (!classes_.all_names_storable(bad_id)) {
    error("class name `%s' cannot be stored, class files are not written",
          classes_.get_name(bad_id).c_str());
    abort_run(no_cause);
  }
  log_always(1, "writing class profiles...");
  class_files_.begin();
  add_file("classes", [&](std::ostream &os) { return classes_.write(os); });
  for (auto &[key, data] : classes_)
    add_class_profile(data.id, format);
  std::string old_judging;
  if (!judging.empty() || read_judging(old_judging))
    class_files_.add(judging_name, judging);
  class_files_.replace();
}

void DataBase::add_class_profile(std::uint32_t class_id,
                                 const ClassFileFormat &format) {
  const ClassData &data = classes_.get_data(class_id);
  add_file(class_file_name(class_id, class_profile_suffix),
           [&](std::ostream &os) {
             return data.profile.write(os, data.nr_terms, format.columns);
           });
  if (format.weights_suffix == nullptr ||
      classes_without_weights_.contains(class_id)) {
    return;
  }
  add_file(
      class_file_name(class_id, format.weights_suffix),
      [&](std::ostream &os) { return format.write_weights(os, data.profile); });
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

void DataBase::sync() {
  require(profile_store_P_ != nullptr, "profile_store");
  const SyncInterval::Clock::time_point begin = SyncInterval::Clock::now();
  room_.give_back();
  save_vocabulary();
  filestore_sync(profile_store_P_);
  sync_interval_.note_sync(begin, SyncInterval::Clock::now());
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
  report_file_error(std::string(journal_path(data_dir_)), FileError::write);
  return false;
}

// The tables are destroyed before the store is closed, and the log too. So all
// is saved here, and closing finds nothing left to do.
void DataBase::save_at_end() {
  give_back_reserve();
  const KeepErrno keep;
  DataBase *const data_base_P = open_data_base_P;
  if (data_base_P == nullptr || data_base_P->profile_store_P_ == nullptr)
    return;
  set_all_saved(false);
  data_base_P->room_.give_back();
  if (data_base_P->journal_failed_)
    return;
  // Should it not come back from there, for want of memory, the index must not
  // be written either.
  data_base_P->journal_failed_ = true;
  data_base_P->journal_failed_ = !data_base_P->save_journal();
  if (data_base_P->journal_failed_)
    return;
  filestore_sync(data_base_P->profile_store_P_);
  set_all_saved(true);
}

void DataBase::write_vocabulary() {
  if (has_orphaned_terms_)
    return;
  atoms_file_.append(atoms_.size(), "atoms",
                     [this](std::string &out, std::uint32_t id) {
                       atoms_.append_line(out, id);
                     });
  terms_file_.append(terms_.size(), "terms",
                     [this](std::string &out, std::uint32_t id) {
                       terms_.append_line(out, id);
                     });
  journal_.drop();
}

bool DataBase::exists(const std::string &name) const {
  return cache().contains(name) ||
         filestore_file_exists(profile_store_P_, name.c_str());
}

// Without the atoms nobody knows what the lines of terms.dat stand for, and
// new terms would land behind them under ids that belong to others.
void DataBase::refuse_orphaned_terms() const {
  if (!has_orphaned_terms_)
    return;
  report_file_error(terms_file_.name(), FileError::format,
                    "there is no atoms.dat to it");
  abort_run(no_cause);
}

void DataBase::put(const std::string &name, const DocProfile &profile) {
  if (cache().contains(name))
    return;
  refuse_orphaned_terms();
  std::string block;
  if (!profile.write(block)) {
    error("could not build stream for profile of document \"%s\"",
          name.c_str());
    abort_run(no_cause);
  }
  set_room_aside();
  filestore_put_file(profile_store_P_, name.c_str(), block.data(),
                     static_cast<unsigned>(block.size()));
  if (sync_interval_.is_due(SyncInterval::Clock::now()))
    sync();
}

void DataBase::set_room_aside() {
  // What files take beyond their bytes, and what one more document may bring.
  constexpr std::uint64_t spare = 128 << 10;
  const std::uint64_t needed =
      journal_.length() + filestore_index_growth(profile_store_P_) + spare;
  // With a copy of the index, and for a while.
  const std::uint64_t wanted =
      needed + needed / 4 + 2 * spare + filestore_index_size(profile_store_P_);
  if (room_.reserve(data_dir_, needed, wanted))
    return;
  error("no room is left for what data directory `%s' needs",
        data_dir_.c_str());
  abort_run();
}

void DataBase::read_profile(const std::string &name, DocProfile &profile) {
  stop_if_requested();
  void *data_P = nullptr;
  std::size_t size = 0;
  if (!filestore_get_file(profile_store_P_, name.c_str(), &data_P, &size)) {
    error("could not retrieve profile for \"%s\" from profile store",
          name.c_str());
    abort_run(no_cause);
  }
  const Block block(data_P);
  if (size < sizeof(std::uint32_t) ||
      !profile.read(block.get(), static_cast<unsigned>(size))) {
    error("could not build profile from stored data for document \"%s\"",
          name.c_str());
    abort_run(no_cause);
  }
  if (profile.drop_unknown(terms_.size()) != 0) {
    warning("stored profile of document \"%s\" has terms that are not known",
            name.c_str());
  }
}

}  // namespace vek
