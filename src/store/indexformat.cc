#include "store/indexformat.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstring>
#include <vector>

namespace vek {
namespace {

// ---- Reading. Each field is read by the primitive of its type, whose name is
// what a report calls it by. They return false, with the fault noted, if the
// field is not there whole.

// An index as a row of fields. It comes in large pieces, because a store may
// have a million entries; the faults are those of reading each field by
// itself, and a name byte by byte.
class FieldSource {
 public:
  FieldSource(const IndexSource &source, IndexFault &fault)
      : source_(source), fault_(fault), buffer_(initial_size) {}

  bool read_number(const char *primitive, guint32 &value) {
    while (unread() < 4 && read_more(primitive)) {
    }
    if (unread() < 4)
      return end_early(primitive, unread(), 4);
    const unsigned char *bytes_P = buffer_.data() + begin_;
    begin_ += 4;
    value = bytes_P[0] | guint32{bytes_P[1]} << 8 | guint32{bytes_P[2]} << 16 |
            guint32{bytes_P[3]} << 24;
    return true;
  }

  // The caller owns the result.
  bool read_string(const char *primitive, char *&text_P) {
    gsize length = 0;
    for (;;) {
      const unsigned char *start_P = buffer_.data() + begin_;
      // Only what has come since the last search: a long name is searched once.
      const void *end_P = std::memchr(start_P + length, 0, unread() - length);
      if (end_P != nullptr) {
        length = static_cast<gsize>(static_cast<const unsigned char *>(end_P) -
                                    start_P);
        begin_ += length + 1;
        text_P = static_cast<char *>(g_memdup2(start_P, length + 1));
        return true;
      }
      length = unread();
      if (!read_more(primitive))
        return end_early(primitive, 0, 1);
    }
  }

  // True also if the source fails.
  bool at_end() { return unread() == 0 && !read_more("filestore_open"); }

  bool has_failed() const {
    return fault_.kind == IndexFault::Kind::cannot_read;
  }

 private:
  static constexpr gsize initial_size = gsize{1} << 16;

  gsize unread() const { return end_ - begin_; }

  // Gets bytes behind the unread ones, which move to the front. The buffer
  // grows only when it is full of them, that is for a name of its size, never
  // for what a number in the file claims. Returns false at the end and if the
  // source fails.
  bool read_more(const char *primitive) {
    std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
              buffer_.begin() + static_cast<std::ptrdiff_t>(end_),
              buffer_.begin());
    end_ -= begin_;
    begin_ = 0;
    if (end_ == buffer_.size())
      buffer_.resize(2 * buffer_.size());
    const gssize count = source_(buffer_.data() + end_, buffer_.size() - end_);
    if (count < 0) {
      fault_.kind = IndexFault::Kind::cannot_read;
      fault_.primitive = primitive;
      return false;
    }
    end_ += static_cast<gsize>(count);
    return count > 0;
  }

  bool end_early(const char *primitive, gsize count, gsize wanted) {
    if (has_failed())
      return false;
    fault_.kind = IndexFault::Kind::ends_early;
    fault_.primitive = primitive;
    fault_.count = count;
    fault_.wanted = wanted;
    return false;
  }

  const IndexSource &source_;
  IndexFault &fault_;
  std::vector<unsigned char> buffer_;
  gsize begin_ = 0;  // of the unread bytes in `buffer_`
  gsize end_ = 0;
};

bool read_unsigned(FieldSource &fields, guint32 &value) {
  return fields.read_number("read_unsigned", value);
}
bool read_off_t(FieldSource &fields, gint32 &value) {
  guint32 bits = 0;
  // In the file it is unsigned like the others; a position beyond 31 bits comes
  // out negative, and is refused later.
  const bool ok = fields.read_number("read_off_t", bits);
  value = static_cast<gint32>(bits);
  return ok;
}
bool read_size_t(FieldSource &fields, guint32 &value) {
  return fields.read_number("read_size_t", value);
}
bool read_time_t(FieldSource &fields, guint32 &value) {
  return fields.read_number("read_time_t", value);
}
bool read_str(FieldSource &fields, char *&text_P) {
  return fields.read_string("read_str", text_P);
}

[[gnu::format(printf, 2, 3)]] bool refuse(IndexFault &fault, const char *format,
                                          ...) {
  std::va_list values;
  va_start(values, format);
  char *text_P = g_strdup_vprintf(format, values);
  va_end(values);
  fault.kind = IndexFault::Kind::damaged;
  fault.text = text_P;
  g_free(text_P);
  return false;
}

// False, with the fault noted, for a number that no store can have.
bool check_limit(bool possible, IndexFault &fault) {
  if (!possible)
    fault.kind = IndexFault::Kind::impossible;
  return possible;
}

bool read_node(FieldSource &fields, FileStoreNode &node, IndexSummary &summary,
               IndexFault &fault) {
  if (!read_str(fields, node.name) ||
      !read_unsigned(fields, node.repository_id)) {
    return false;
  }
  summary.repository_id = node.repository_id;
  // Checked before the rest is read: an impossible number is reported as that,
  // even where the file ends behind it.
  return check_limit(node.repository_id < MAX_NR_STORES, fault) &&
         read_off_t(fields, node.offset) && read_size_t(fields, node.size) &&
         read_time_t(fields, node.time);
}

// `number` counts the entries from 1, for the messages.
bool enter_node(FileStoreNode &node, guint32 number, GTree *tree,
                IndexSummary &summary, IndexFault &fault) {
  // Below the limit, but not one of this store's repositories: block_ends has
  // room for it, the store no file.
  if (node.repository_id >= summary.nr_stores) {
    return refuse(fault, "entry %u lies in repository %u of %u", number,
                  node.repository_id, summary.nr_stores);
  }
  if (node.offset < 0)
    return refuse(fault, "entry %u has no position", number);
  // Inserting it would free neither the name nor the node of the other.
  if (g_tree_lookup(tree, node.name) != nullptr)
    return refuse(fault, "entry %u has the name of another", number);
  gint64 &block_end = summary.block_ends[node.repository_id];
  // In 64 bits: the sum of both may be beyond 32.
  block_end = std::max(block_end, gint64{node.offset} + node.size);
  g_tree_insert(tree, node.name, &node);
  return true;
}

bool read_entry(FieldSource &fields, guint32 number, GTree *tree,
                IndexSummary &summary, IndexFault &fault) {
  auto *node = g_new0(FileStoreNode, 1);
  if (read_node(fields, *node, summary, fault) &&
      enter_node(*node, number, tree, summary, fault)) {
    return true;
  }
  // The tree owns only what was entered.
  free_node(node);
  return false;
}

gint compare_names(gconstpointer left, gconstpointer right) {
  return std::strcmp(static_cast<const char *>(left),
                     static_cast<const char *>(right));
}

// ---- Writing.

void write_number(GString *out, guint32 value) {
  const char bytes[4] = {
      static_cast<char>(value & 0xFF), static_cast<char>(value >> 8 & 0xFF),
      static_cast<char>(value >> 16 & 0xFF), static_cast<char>(value >> 24)};
  g_string_append_len(out, bytes, sizeof bytes);
}

void write_unsigned(GString *out, guint32 value) {
  write_number(out, value);
}
void write_off_t(GString *out, gint32 value) {
  write_number(out, static_cast<guint32>(value));
}
void write_size_t(GString *out, guint32 value) {
  write_number(out, value);
}
void write_time_t(GString *out, guint32 value) {
  write_number(out, value);
}
void write_str(GString *out, const char *text) {
  g_string_append_len(out, text, static_cast<gssize>(std::strlen(text) + 1));
}

}  // namespace

GTree *new_index_tree() {
  return g_tree_new(compare_names);
}

void free_node(FileStoreNode *node_P) {
  g_free(node_P->name);
  g_free(node_P);
}

bool read_index(const IndexSource &source, GTree *tree, IndexSummary &summary,
                IndexFault &fault) {
  FieldSource fields(source, fault);
  guint32 nr_entries = 0;
  if (!read_unsigned(fields, summary.nr_stores) ||
      !check_limit(summary.nr_stores <= MAX_NR_STORES, fault) ||
      !read_unsigned(fields, nr_entries)) {
    return false;
  }
  for (guint32 nr_read = 0; nr_read < nr_entries; ++nr_read) {
    if (!read_entry(fields, nr_read + 1, tree, summary, fault))
      return false;
  }
  // Entries are never removed, so that no sync leaves bytes behind its own.
  if (!fields.at_end())
    return refuse(fault, "it has bytes behind its last entry");
  return !fields.has_failed();
}

void append_index_head(GString *out, guint32 nr_stores, guint32 nr_entries) {
  write_unsigned(out, nr_stores);
  write_unsigned(out, nr_entries);
}

void append_index_entry(GString *out, const FileStoreNode &node) {
  write_str(out, node.name);
  write_unsigned(out, node.repository_id);
  write_off_t(out, node.offset);
  write_size_t(out, node.size);
  write_time_t(out, node.time);
}

IndexField index_field_at(const GString *image, gsize position) {
  static constexpr std::array<const char *, 4> numbers = {
      "write_unsigned", "write_off_t", "write_size_t", "write_time_t"};
  // The head's two numbers.
  if (position < 8)
    return {"write_unsigned", position / 4 * 4, 4};
  // Names have any length, so an entry is found only by going through all
  // before it. This happens only for the report of a failed write.
  gsize start = 8;
  for (;;) {
    const gsize name_size = std::strlen(image->str + start) + 1;
    if (position < start + name_size)
      return {"write_str", start, name_size};
    start += name_size;
    for (const char *primitive : numbers) {
      if (position < start + 4)
        return {primitive, start, 4};
      start += 4;
    }
  }
}

}  // namespace vek
