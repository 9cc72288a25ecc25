// The hierarchy of classes into which documents are sorted.
//
// A tree whose top class, id 0, stands for the whole example collection. Each
// class is a ClassData record with all that is known of it: place in the tree,
// documents, counts, term statistics. Classes have dense ids in order of
// creation and are found by id or by the pair of name and father.
#ifndef VEK_CLASSES_CLASSTAB_H_
#define VEK_CLASSES_CLASSTAB_H_

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "base/helpers.h"
#include "classes/classprof.h"
#include "classes/termset.h"
#include "classes/termstats.h"

namespace vek {

struct ClassData;

// The identity of a class, ordered by father, then by name, bytewise. The
// father id is 0 for the top class and for the top class's sons alike.
struct ClassKey {
  std::uint32_t father_id = 0;
  std::string name;

  auto operator<=>(const ClassKey &) const = default;
};

// Document names, in bytewise order, each with a list of classes. Within a
// list the order is that of addition, and a class can stand there twice.
class DocumentMap {
 public:
  using ClassList = std::vector<ClassData *>;
  using Map = std::map<std::string, ClassList, std::less<>>;

  void add(const std::string &name, ClassData *class_data_P) {
    map_[name].push_back(class_data_P);
  }
  void add(const std::string &name, const ClassList &classes) {
    ClassList &list = map_[name];
    list.insert(list.end(), classes.begin(), classes.end());
  }
  bool contains(std::string_view name) const { return map_.contains(name); }

  std::size_t size() const { return map_.size(); }
  bool empty() const { return map_.empty(); }
  Map::const_iterator begin() const { return map_.begin(); }
  Map::const_iterator end() const { return map_.end(); }

 private:
  Map map_;
};

struct ClassData {
  std::uint32_t id = 0;
  // Number of training documents of this run's lists, descendants included.
  std::uint32_t nr_docs = 0;
  // Training documents of the father that are not in this class.
  std::uint32_t nr_others = 0;
  // Term occurrences in the training documents, less what selection removes.
  std::uint32_t nr_terms = 0;
  // Sum of the accumulated weights of the profile; set by Winnow.
  WeightType weight_sum = 0.0;
  ClassProfile profile;
  // Only between the gathering of statistics and term selection.
  TermStatsList term_stats;
  // Null for the top class.
  ClassData *father = nullptr;
  // Built at the first call of ClassTable::full_name(); empty before.
  mutable std::string full_name;
  // In order of entry.
  std::vector<ClassData *> sons;
  DocumentMap train_docs;
  DocumentMap test_docs;
};

class ClassTable {
 public:
  // A tree, whose records never move: fathers, sons, document lists and
  // `class_vec_` point to them.
  using Map = std::map<ClassKey, ClassData>;

  ClassTable() = default;
  ClassTable(const ClassTable &) = delete;
  ClassTable &operator=(const ClassTable &) = delete;

  // The id of the class of that name under that father, created if need be.
  // The first class entered is the top class.
  std::uint32_t enter(const std::string &name, std::uint32_t father_id);

  // Enters the components of a path, separated by runs of slashes, below the
  // father and returns the id of the last. A path that ends in slashes behind
  // its last component names a class that ends in them.
  std::uint32_t enter_path(const std::string &path, std::uint32_t father_id);

  // These four stop the program for an unknown id.
  ClassData &get_data(std::uint32_t id);
  const ClassData &get_data(std::uint32_t id) const;
  const std::string &get_name(std::uint32_t id) const;
  // The path without the top class; the top class's is its own name.
  const std::string &full_name(std::uint32_t id) const;

  void add_train_document(std::uint32_t id, const std::string &name);
  void add_test_document(std::uint32_t id, const std::string &name);

  // Brings the documents of every class up to its fathers. For a training
  // document, a father's list names the direct sons that hold it; for a test
  // document, the classes in which it was filed.
  void gather_documents();

  // There is a top class and it has training documents.
  bool has_training_documents() const;

  // The text form: the number of classes, then a line for each, by id, with six
  // fields separated by tabs: id, nr_docs, nr_others, nr_terms, the father's
  // id, and the name in double quotes. False if the stream fails.
  bool write(std::ostream &os) const;
  // Reads that form into the empty table. A class that stands there twice is
  // told apart from other damage: it stops a run by a failed assertion.
  enum class Parsed { good, damaged, repeated_class };
  Parsed parse(std::string_view text);

  // Whether a class of this name could be read back from the text form, which
  // escapes nothing and bounds a name's length.
  static bool is_storable_name(std::string_view name);
  // Whether that holds for every class of the table; otherwise the id of the
  // first for which it does not is set.
  bool all_names_storable(std::uint32_t &bad_id) const;

  std::size_t size() const { return classes_.size(); }
  // Walks go in the order of the keys.
  Map::iterator begin() { return classes_.begin(); }
  Map::iterator end() { return classes_.end(); }
  Map::const_iterator begin() const { return classes_.begin(); }
  Map::const_iterator end() const { return classes_.end(); }

 private:
  ClassData &append(Map::iterator position);

  Map classes_;
  std::vector<Map::iterator> class_vec_;
  std::uint32_t next_id_ = 0;
};

}  // namespace vek

#endif  // VEK_CLASSES_CLASSTAB_H_
