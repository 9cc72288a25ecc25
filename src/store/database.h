// The data directory, in which everything learnt is kept from run to run.
//
// Opens it, connects the vocabulary's tables to their files, keeps the store
// of document profiles and a cache of those read so far, and reads and writes
// the class table and the class profiles. Knows the files' names and the order
// of reading and writing; of their formats it knows none.
#ifndef VEK_STORE_DATABASE_H_
#define VEK_STORE_DATABASE_H_

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "intake/docprof.h"
#include "store/fileset.h"
#include "store/filestore.h"
#include "store/journal.h"

namespace vek {

class DataBase {
 public:
  using Cache = std::map<std::string, std::unique_ptr<DocProfile>, std::less<>>;

  DataBase() = default;
  // Closes the store, if one was opened.
  ~DataBase();
  DataBase(const DataBase &) = delete;
  DataBase &operator=(const DataBase &) = delete;

  // Creates the directory if need be (one level) and opens what is in it.
  void open(const std::string &directory);

  // Reads atoms and terms, as far as their files exist, and, if asked to, the
  // class table and the class profiles. Without atoms.dat the directory counts
  // as new.
  void read(bool with_classes);

  // Reads the classifier's weights that the class profiles' files leave out,
  // for a run that does not train. Where they are missing or do not fit, a
  // warning names the file and the weights are 0; write() leaves that file
  // alone then.
  void read_weights();

  // There is a class table to be read.
  bool has_classes() const;

  // Writes class table, class profiles and classifier weights, if the flag is
  // set. What is there is replaced, all of it or, if the run ends in between,
  // none.
  void write(bool save);

  // Has the store put on disk what it holds, the vocabulary first.
  void sync();

  // Keeps aside on the disk what their files lack of atoms and terms. A run
  // that gets to its end calls it: later a failure could not end it any more.
  void save_vocabulary();

  // Writes atoms and terms to their files. Not over a terms.dat that no
  // atoms.dat gives a meaning to: its damage would be hidden.
  void write_vocabulary();
  // To be called when they have been written: what was kept aside of them is
  // no longer needed.
  void vocabulary_written();

  // The document is in the cache or in the store.
  bool exists(const std::string &name) const;

  // Stores a profile; a name that is in the cache is left alone.
  void put(const std::string &name, const DocProfile &profile);

  // The document's profile, with only its active terms. Owned by the cache and
  // valid until it is cleared. Ends the run if the document is not stored.
  DocProfile *get(const std::string &name);

  // Fills the empty profile with all of the document's terms, past the cache.
  void read_profile(const std::string &name, DocProfile &profile);

  // The profiles read so far, by document name.
  const Cache &cache() const { return cache_; }
  void clear_cache();
  // Frees the profiles and leaves their names.
  void release_profiles();

 private:
  static void save_journal_at_exit();
  bool save_journal();

  Cache::iterator cache_place(const std::string &name);
  bool read_class_weights(ClassData &data);
  void refuse_orphaned_terms() const;
  bool has_terms_file() const;
  void read_classes();
  void read_class_profile(std::uint32_t class_id, const std::string &path);
  void add_class_profile(std::uint32_t class_id);
  template <class Writer>
  void add_file(const std::string &name, Writer writer);
  static std::string class_name(std::uint32_t class_id, const char *extension);
  std::string class_path(std::uint32_t class_id, const char *extension) const;

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
  Journal journal_;
  FileSet class_files_;
  Cache cache_;
  Cache::iterator last_ = cache_.end();  // asked for
  FileStore *profile_store_P_ = nullptr;
};

extern DataBase data_base;

}  // namespace vek

#endif  // VEK_STORE_DATABASE_H_
