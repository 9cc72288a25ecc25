// The data directory, in which everything learnt is kept from run to run.
//
// Opens it, connects the vocabulary's tables to their files, keeps the store
// of document profiles and a cache of those read so far, and reads and writes
// the class table and the class profiles. Knows the files' names and the order
// of reading and writing; of their formats it knows none.
#ifndef VEK_STORE_DATABASE_H_
#define VEK_STORE_DATABASE_H_

#include <chrono>
#include <cstdint>
#include <set>
#include <string>

#include "classes/classtab.h"
#include "classes/termset.h"
#include "classes/weightfile.h"
#include "intake/documents.h"
#include "store/atomicfiles.h"
#include "store/directorylock.h"
#include "store/filestore.h"
#include "store/journal.h"
#include "store/reservedroom.h"
#include "store/syncinterval.h"
#include "store/tablefile.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/termtab.h"

namespace vek {

class DataBase : public Documents {
 public:
  // What the directory's files are read into and written from. All must outlive
  // this object, but that the tables may be destroyed first once the process
  // is ending: they are not touched any more then.
  DataBase(AtomTable &atoms, TermTable &terms, ClassTable &classes,
           const TermSet &active_terms);
  // Closes the store, if one was opened.
  ~DataBase() override;

  // Creates the directory if need be (one level), locks it for this process
  // alone and opens what is in it. Where another process has it, waits up to
  // `patience`, and then ends the run with EWOULDBLOCK before anything is read.
  // Where it cannot be locked there is a warning. At the end of the run, by
  // end_run(), what the vocabulary's files lack is saved; so there can be one
  // at a time.
  void open(const std::string &directory, std::chrono::seconds patience = {});

  // Reads atoms and terms, as far as their files exist, and, if asked to, the
  // class table and the class profiles. Without atoms.dat the directory counts
  // as new.
  void read(bool with_classes, const ClassFileFormat &format);

  // Reads the classifier's weights that the class profiles' files leave out,
  // for a run that does not train. Where they are missing or do not fit, a
  // warning names the file and the weights are 0; write() leaves that file
  // alone then.
  void read_weights(const ClassFileFormat &format);

  // The directory is none that counts as new.
  bool has_data() const { return has_data_; }
  // There is a class table to be read.
  bool has_classes() const;

  // Sets `text` to what write() was given for judging; false if there is none.
  bool read_judging(std::string &text);

  // Writes class table, class profiles, classifier weights, and the text for
  // judging, unless it is empty and there never was one. What is there is
  // replaced, all of it or, if the run ends in between, none.
  void write(const ClassFileFormat &format, const std::string &judging);

  // Has the store put on disk what it holds, the vocabulary first.
  void sync();

  // Keeps aside on the disk what their files lack of atoms and terms. A run
  // that gets to its end calls it: later a failure could not end it any more.
  void save_vocabulary();

  // Writes atoms and terms to their files; what was kept aside of them is no
  // longer needed. Not over a terms.dat that no atoms.dat gives a meaning to:
  // its damage would be hidden.
  void write_vocabulary();

  // The document is in the cache or in the store.
  bool exists(const std::string &name) const;

  // Stores a profile; a name that is in the cache is left alone. Now and then
  // syncs, so that no more than some seconds of work are lost whatever happens.
  // Ends the run if the disk is so full that a sync would be in danger.
  void put(const std::string &name, const DocProfile &profile);

  // Ends the run if the document is not stored, as get() does.
  void read_profile(const std::string &name, DocProfile &profile) override;

 private:
  void lock(std::chrono::seconds patience);
  void set_room_aside();
  static void save_at_end();
  bool save_journal();

  void read_atoms();
  void read_terms();
  bool read_class_weights(ClassData &data, const ClassFileFormat &format);
  void refuse_orphaned_terms() const;
  bool has_terms_file() const;
  void read_classes(const ClassFileFormat &format);
  void add_class_profile(std::uint32_t class_id, const ClassFileFormat &format);
  template <class Writer>
  void add_file(const std::string &name, Writer writer);

  // Released when all is written.
  DirectoryLock lock_;
  AtomTable &atoms_;
  TermTable &terms_;
  ClassTable &classes_;
  TableFile atoms_file_;
  TableFile terms_file_;
  Journal journal_;
  bool has_data_ = false;
  // The vocabulary is in memory as far as it is on disk. Before that, what
  // the tables hold is no more than a part of their files.
  bool has_vocabulary_ = false;
  // terms.dat has content that no atoms.dat gives a meaning to.
  bool has_orphaned_terms_ = false;
  // What the vocabulary's files lack could not be saved: the store's index
  // must not reach the disk.
  bool journal_failed_ = false;
  // Classes whose weights were missing: zeros must not take their place.
  std::set<std::uint32_t> classes_without_weights_;
  std::string data_dir_;
  AtomicFiles class_files_;
  FileStore *profile_store_P_ = nullptr;
  // For the journal and the index.
  ReservedRoom room_;
  SyncInterval sync_interval_;
};

}  // namespace vek

#endif  // VEK_STORE_DATABASE_H_
