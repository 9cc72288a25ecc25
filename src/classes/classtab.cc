#include "classes/classtab.h"

#include <iterator>
#include <limits>
#include <optional>
#include <utility>

#include "base/require.h"
#include "base/textio.h"

namespace vek {
namespace {

// A quoted name is read in at most this many steps; a backslash and the
// character behind it are one step, and so is the closing quote.
constexpr int longest_name = 1024;

// Takes a quoted name from the front of `text`, after white space. Nothing
// is unescaped: a backslash only keeps the character behind it from ending
// the name.
bool read_quoted_name(FieldReader &fields, std::string &name) {
  fields.skip_space();
  std::string_view text = fields.rest();
  if (text.empty() || text.front() != '"')
    return false;
  text.remove_prefix(1);
  name.clear();
  for (int step = 0; step < longest_name; ++step) {
    if (text.empty())
      return false;
    const char character = text.front();
    if (character == '"') {
      fields.set_rest(text.substr(1));
      return true;
    }
    if (character == '\n' || character == '\0')
      return false;
    // With a backslash the next character belongs to the name, a quote or line
    // end too.
    const std::size_t width = character == '\\' ? 2 : 1;
    if (text.size() < width)
      return false;
    name += text.substr(0, width);
    text.remove_prefix(width);
  }
  return false;
}

void append_class(std::string &out, const ClassKey &key,
                  const ClassData &data) {
  for (const std::uint32_t number :
       {data.id, data.nr_docs, data.nr_others, data.nr_terms, key.father_id}) {
    append_number(out, number);
    out += '\t';
  }
  out += '"';
  out += key.name;
  out += "\"\n";
}

// Adds the documents of a class to its father.
void merge_into_father(ClassData &son) {
  ClassData &father = *son.father;
  for (const auto &[name, classes] : son.train_docs) {
    // Training asks which sons hold a document, and testing in which classes it
    // was filed; so the former lists the son, the latter what the son lists.
    father.train_docs.add(name, &son);
  }
  for (const auto &[name, classes] : son.test_docs) {
    father.test_docs.add(name, classes);
  }
}

}  // namespace

std::uint32_t ClassTable::enter(const std::string &name,
                                std::uint32_t father_id) {
  const auto [position, is_new] =
      classes_.try_emplace(ClassKey{father_id, name});
  if (!is_new)
    return position->second.id;
  position->second.id = next_id_++;
  return append(position).id;
}

// Makes a class reachable by its id and links it to its father.
ClassData &ClassTable::append(Map::iterator position) {
  ClassData &data = position->second;
  class_vec_.push_back(position);
  // The first class is the top class and has no father: its father_id of 0
  // would name itself.
  if (size() >= 2) {
    data.father = &get_data(position->first.father_id);
    data.father->sons.push_back(&data);
  }
  return data;
}

std::uint32_t ClassTable::enter_path(const std::string &path,
                                     std::uint32_t father_id) {
  std::string rest = path;
  std::string component;
  for (;;) {
    // The last component is all that is left, with the slashes behind it:
    // split_word() would drop those, and with them the difference between two
    // names.
    const std::string whole = rest;
    if (!split_word(rest, '/', component, rest)) {
      return enter(whole, father_id);
    }
    father_id = enter(component, father_id);
  }
}

ClassData &ClassTable::get_data(std::uint32_t id) {
  require(id < size(), "unsigned(id) < size()");
  return class_vec_[id]->second;
}

const ClassData &ClassTable::get_data(std::uint32_t id) const {
  require(id < size(), "unsigned(id) < size()");
  return class_vec_[id]->second;
}

const std::string &ClassTable::get_name(std::uint32_t id) const {
  require(id < size(), "unsigned(id) < size()");
  return class_vec_[id]->first.name;
}

const std::string &ClassTable::full_name(std::uint32_t id) const {
  // Each rank file asks for the same names for each document.
  std::string &text = get_data(id).full_name;
  if (!text.empty())
    return text;
  std::vector<const std::string *> names;
  std::uint32_t next = id;
  // From the class upwards, leaving out the top class unless the class is that.
  do {
    names.push_back(&get_name(next));
    next = class_vec_[next]->first.father_id;
  } while (next != 0);
  for (std::size_t i = names.size(); i-- > 0;) {
    text += *names[i];
    if (i > 0)
      text += '/';
  }
  return text;
}

void ClassTable::add_train_document(std::uint32_t id, const std::string &name) {
  ClassData &data = get_data(id);
  data.train_docs.add(name, &data);
}

void ClassTable::add_test_document(std::uint32_t id, const std::string &name) {
  ClassData &data = get_data(id);
  data.test_docs.add(name, &data);
}

// A son is merged into its father after all that is below the son, and the sons
// of a father in their order. An explicit stack, because a stored table can be
// thousands of levels deep.
void ClassTable::gather_documents() {
  if (classes_.empty())
    return;
  struct Level {
    ClassData *class_data_P;
    std::size_t next_son;
  };
  std::vector<Level> levels{{&get_data(0), 0}};
  while (!levels.empty()) {
    Level &level = levels.back();
    if (level.next_son < level.class_data_P->sons.size()) {
      ClassData *son_P = level.class_data_P->sons[level.next_son++];
      // `level` is not valid behind this.
      levels.push_back({son_P, 0});
    } else {
      ClassData &done = *level.class_data_P;
      levels.pop_back();
      if (!levels.empty())
        merge_into_father(done);
    }
  }
}

bool ClassTable::has_training_documents() const {
  return !classes_.empty() && !class_vec_[0]->second.train_docs.empty();
}

bool ClassTable::write(std::ostream &os) const {
  std::string line;
  append_number(line, size());
  line += '\n';
  if (!os.write(line.data(), std::ssize(line)))
    return false;
  for (const Map::iterator &position : class_vec_) {
    line.clear();
    append_class(line, position->first, position->second);
    if (!os.write(line.data(), std::ssize(line)))
      return false;
  }
  return os.good();
}

ClassTable::Parsed ClassTable::parse(std::string_view text) {
  FieldReader fields(text);
  std::uint32_t nr_classes = 0;
  if (!fields.read(nr_classes))
    return Parsed::damaged;
  for (std::uint32_t i = 0; i < nr_classes; ++i) {
    ClassData record;
    ClassKey key;
    if (!fields.read(record.id) || !fields.read(record.nr_docs) ||
        !fields.read(record.nr_others) || !fields.read(record.nr_terms) ||
        !fields.read(key.father_id) || !read_quoted_name(fields, key.name)) {
      return Parsed::damaged;
    }
    const std::uint32_t id = record.id;
    const std::uint32_t father_id = key.father_id;
    const auto p = classes_.try_emplace(std::move(key), std::move(record));
    if (!p.second)
      return Parsed::repeated_class;
    // Ids are positions, and a father stands before its sons; anything else
    // would lead out of the table.
    if (id != i || (i > 0 ? father_id >= i : father_id != 0)) {
      classes_.erase(p.first);
      return Parsed::damaged;
    }
    next_id_ = i + 1;
    append(p.first);
  }
  return fields.at_end() ? Parsed::good : Parsed::damaged;
}

bool ClassTable::is_storable_name(std::string_view name) {
  // By reading it, so that the rule is stated in one place only.
  const std::string quoted = '"' + std::string(name) + '"';
  FieldReader fields(quoted);
  std::string read_back;
  return read_quoted_name(fields, read_back) && fields.rest().empty() &&
         read_back == name;
}

bool ClassTable::all_names_storable(std::uint32_t &bad_id) const {
  for (std::uint32_t id = 0; id < next_id_; ++id) {
    if (!is_storable_name(get_name(id))) {
      bad_id = id;
      return false;
    }
  }
  return true;
}

}  // namespace vek
