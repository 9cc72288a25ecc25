#include "convert/source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "base/helpers.h"
#include "convert/encoding.h"
#include "convert/filter.h"
#include "convert/mail.h"

namespace vek::convert {
namespace {

// More than any honest tree has, and few enough for the stack.
constexpr int deepest_folder = 100;
// To tell form and encoding from.
constexpr std::size_t sample_size = std::size_t{1} << 20;

class File {
 public:
  ~File() {
    if (descriptor_ > STDIN_FILENO)
      close(descriptor_);
  }
  File() = default;
  File(const File &) = delete;
  File &operator=(const File &) = delete;

  // Returns why not, or an empty string.
  std::string open(const std::string &path) {
    if (path == standard_input) {
      descriptor_ = STDIN_FILENO;
      return "";
    }
    // Without waiting for the other end of a pipe.
    descriptor_ = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat status = {};
    if (descriptor_ < 0 || fstat(descriptor_, &status) != 0)
      return std::strerror(errno);
    return S_ISREG(status.st_mode) ? "" : "no regular file";
  }

  ByteReader reader() const {
    return [descriptor = descriptor_](char *to, std::size_t size) {
      return retry([&] { return read(descriptor, to, size); });
    };
  }

  std::string read_all(std::string &text) const {
    const ByteReader read_piece = reader();
    text.clear();
    while (true) {
      const std::size_t size = text.size();
      const std::size_t room = std::max<std::size_t>(size, 65536);
      text.resize(size + room);
      const std::ptrdiff_t count = read_piece(text.data() + size, room);
      text.resize(size +
                  static_cast<std::size_t>(std::max(count, std::ptrdiff_t{0})));
      if (count < 0)
        return std::strerror(errno);
      if (text.size() > longest_text)
        return "more than 40 MiB";
      if (count == 0)
        return "";
    }
  }

 private:
  int descriptor_ = -1;
};

bool is_rows(Form form) {
  return form == Form::csv || form == Form::tsv || form == Form::jsonl ||
         form == Form::fasttext;
}

Form form_by_content(std::string_view begin) {
  if (begin.starts_with("\xEF\xBB\xBF"))
    begin.remove_prefix(3);
  if (begin.starts_with("__label__"))
    return Form::fasttext;
  if (begin.starts_with("From "))
    return Form::mbox;
  return begin.starts_with("{") ? Form::jsonl : Form::unknown;
}

// That of rows. Not the first bytes alone decide: a long table can have its
// first foreign letter late, and a broken line among many good ones does not
// make it something else. Empty while there is nothing to tell it from.
std::string encoding_of_rows(const File &file) {
  Lines lines(file.reader());
  std::string line;
  std::string sample;
  std::size_t nr_valid = 0;
  std::size_t nr_lines = 0;
  while (sample.size() < sample_size) {
    const Lines::Result result = lines.next(line);
    if (result != Lines::Result::line && result != Lines::Result::too_long)
      break;
    if (lines.number() == 1 || line.find('\0') != std::string::npos) {
      const std::string found = detect_encoding(line);
      if (found.starts_with("UTF-16") || found.starts_with("UTF-32"))
        return found;
    }
    if (std::all_of(line.begin(), line.end(),
                    [](char byte) { return (byte & 0x80) == 0; }))
      continue;
    sample += line;
    ++nr_lines;
    nr_valid += is_utf8(line);
  }
  if (nr_lines == 0)
    return "";
  return nr_valid * 2 > nr_lines ? "UTF-8" : detect_encoding(sample);
}

std::string base_name_of(const std::string &path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string joined(const std::string &folder, const std::string &name) {
  return folder.empty() ? name : folder + '/' + name;
}

std::string without_extension(const std::string &name) {
  const std::string extension = extension_of(name);
  return extension.empty() ? name
                           : name.substr(0, name.size() - extension.size() - 1);
}

// A file that is one document: its text, or what is wrong.
std::string read_document(const FilePlace &file, const Settings &settings,
                          Form form, Record &record) {
  const std::string filter = settings.filter_for(file.path);
  File input;
  std::string reason = input.open(file.path);
  if (!reason.empty())
    return reason;
  if (!filter.empty()) {
    reason = run_filter(filter, file.path, record.text);
    return reason.empty() ? to_utf8(record.text, "") : reason;
  }
  std::string bytes;
  reason = input.read_all(bytes);
  if (!reason.empty())
    return reason;
  if (form == Form::mail)
    return read_message(bytes, settings, record);
  if (!settings.group.empty())
    return "no field `" + settings.group + "' in a file of this form";
  reason = form == Form::html ? page_to_text(bytes, settings.encoding)
                              : to_utf8(bytes, settings.encoding);
  record.text.swap(bytes);
  if (reason.starts_with("NUL") && !extension_of(file.path).empty()) {
    reason +=
        "; a --filter for `" + extension_of(file.path) + "' may make it one";
  }
  return reason;
}

class Tree {
 public:
  Tree(const std::string &top, const Settings &settings, Sink &sink,
       Failure &failure)
      : top_(top), settings_(settings), sink_(sink), failure_(failure) {}

  // `folder`: its path within the source, `class_path`: the class of its files.
  bool read(const std::string &folder, const std::string &class_path,
            int depth) {
    std::vector<std::string> names;
    if (!list(folder, names))
      return true;
    const bool is_maildir =
        std::binary_search(names.begin(), names.end(), "cur") &&
        std::binary_search(names.begin(), names.end(), "new");
    std::string own_class = class_path;
    if (depth == 0 && (is_maildir || !has_folders(names)))
      own_class = base_name_of(top_);
    for (const std::string &name : names) {
      const std::string path = joined(folder, name);
      const bool is_mail_folder = is_maildir && name.starts_with('.');
      if (is_maildir && name == "tmp")
        continue;  // what is being delivered
      if (name.starts_with('.') && !is_mail_folder) {
        sink_.reject(path, "hidden", "");
      } else if (!is_folder(path)) {
        if (!is_maildir && !read_entry(path, own_class, false))
          return false;  // a maildir has files of the mail program beside it
      } else if (depth == deepest_folder) {
        sink_.reject(path, "nested more than 100 deep", "");
      } else if (is_maildir && (name == "cur" || name == "new")) {
        if (!read_mails(path, folder, own_class))
          return false;
      } else if (!read(path,
                       is_mail_folder ? mail_class(name)
                                      : joined(class_path, name),
                       depth + 1)) {
        return false;
      }
    }
    return true;
  }

 private:
  // Maildir++: the folder ".Work.Travel" is Work/Travel.
  static std::string mail_class(const std::string &name) {
    std::string path = name.substr(1);
    std::replace(path.begin(), path.end(), '.', '/');
    return path;
  }

  std::string full(const std::string &path) const {
    return path.empty() ? top_ : top_ + '/' + path;
  }

  // Sorted, so that a tree is read in the same order everywhere.
  bool list(const std::string &folder, std::vector<std::string> &names) {
    Directory directory(full(folder));
    std::string name;
    while (!directory.failed() && directory.read(name)) {
      if (name != "." && name != "..")
        names.push_back(name);
    }
    if (directory.failed() || directory.read_failed()) {
      sink_.reject(folder, std::strerror(errno), "");
      return false;
    }
    std::sort(names.begin(), names.end());
    return true;
  }

  // Not through a link, which could lead in a circle.
  bool is_folder(const std::string &path) const {
    struct stat status = {};
    return lstat(full(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
  }

  bool has_folders(const std::vector<std::string> &names) const {
    return std::any_of(names.begin(), names.end(), [this](const auto &name) {
      return !name.starts_with('.') && is_folder(name);
    });
  }

  bool read_mails(const std::string &path, const std::string &folder,
                  const std::string &class_path) {
    std::vector<std::string> names;
    if (!list(path, names))
      return true;
    for (const std::string &name : names) {
      // It moves from `new` to `cur`, and flags behind a colon come and go.
      key_ = joined(folder, name.substr(0, name.find(':')));
      const bool is_done = read_entry(joined(path, name), class_path, true);
      key_.clear();
      if (!is_done)
        return false;
    }
    return true;
  }

  bool read_entry(const std::string &path, const std::string &class_path,
                  bool is_mail) {
    const FilePlace file = {full(path), path, class_path, key_};
    return read_file(file, settings_, is_mail, sink_, failure_);
  }

  const std::string &top_;
  const Settings &settings_;
  Sink &sink_;
  Failure &failure_;
  std::string key_;
};

}  // namespace

Form form_by_name(std::string_view path) {
  const std::string extension = extension_of(path);
  constexpr std::pair<const char *, Form> known[] = {
      {"csv", Form::csv},           {"tsv", Form::tsv},
      {"tab", Form::tsv},           {"jsonl", Form::jsonl},
      {"ndjson", Form::jsonl},      {"json", Form::jsonl},
      {"mbox", Form::mbox},         {"mbx", Form::mbox},
      {"eml", Form::mail},          {"html", Form::html},
      {"htm", Form::html},          {"xhtml", Form::html},
      {"fasttext", Form::fasttext}, {"ft", Form::fasttext}};
  for (const auto &[name, form] : known) {
    if (extension == name)
      return form;
  }
  return Form::unknown;
}

bool has_many_documents(Form form) {
  return is_rows(form) || form == Form::mbox;
}

bool find_out(const std::string &path, Settings &settings, Failure &failure) {
  if (path != standard_input && is_directory(path))
    return true;
  const auto fail = [&](const std::string &reason) {
    failure = {path, "", reason};
    return false;
  };
  if (settings.form == Form::unknown)
    settings.form = form_by_name(path);
  if (path == standard_input)
    return settings.form != Form::unknown || fail("its form is to be told");
  File file;
  if (const std::string reason = file.open(path); !reason.empty())
    return fail(reason);
  if (settings.form == Form::unknown && settings.filter_for(path).empty()) {
    char begin[16] = "";
    const std::ptrdiff_t count = file.reader()(begin, sizeof begin);
    settings.form = form_by_content(
        {begin, static_cast<std::size_t>(std::max(count, std::ptrdiff_t{0}))});
    if (settings.form == Form::unknown)
      return fail("its form cannot be told; see --form");
  }
  if (is_rows(settings.form) && settings.encoding.empty()) {
    File again;
    if (const std::string reason = again.open(path); !reason.empty())
      return fail(reason);
    settings.encoding = encoding_of_rows(again);
  }
  return true;
}

bool read_file(const FilePlace &file, const Settings &settings, bool is_mail,
               Sink &sink, Failure &failure) {
  Form form = settings.form;
  if (form == Form::unknown)
    form = is_mail ? Form::mail : form_by_name(file.path);
  const std::string name =
      file.name.empty() ? base_name_of(file.path) : file.name;
  const bool is_filtered = !settings.filter_for(file.path).empty();
  if (!is_filtered && has_many_documents(form)) {
    File input;
    if (const std::string reason = input.open(file.path); !reason.empty()) {
      sink.reject(file.name, reason, "");
      return true;
    }
    if (form == Form::mbox) {
      FilePlace box = file;
      box.folder = joined(file.name.empty() ? "" : file.folder,
                          without_extension(base_name_of(file.path)));
      Lines lines(input.reader());
      return read_mbox(lines, settings, box, sink, failure);
    }
    std::string encoding = settings.encoding;
    if (encoding.empty() && file.path != standard_input) {
      File sample;
      if (sample.open(file.path).empty())
        encoding = encoding_of_rows(sample);
    }
    Lines lines(input.reader(), encoding);
    return read_rows(form, lines, settings, file, sink, failure);
  }
  Record record;
  record.place = file.name;
  record.key = file.key.empty() ? name : file.key;
  if (!sink.wants(record.key, false))
    return true;
  const std::string reason = read_document(file, settings, form, record);
  if (!reason.empty()) {
    sink.reject(file.name, reason, "");
    return true;
  }
  if (form != Form::mail || settings.classes.empty()) {
    if (!file.folder.empty())
      record.classes = {file.folder};
    record.has_folder_class = true;
  }
  sink.take(record);
  return true;
}

bool read_source(const std::string &path, const Settings &settings, Sink &sink,
                 Failure &failure) {
  if (path != standard_input && is_directory(path))
    return Tree(path, settings, sink, failure).read("", "", 0);
  FilePlace file = {path, "", "", ""};
  // A file alone has its own name as its class, if nothing else tells one.
  if (!is_rows(settings.form))
    file.folder = without_extension(base_name_of(path));
  return read_file(file, settings, false, sink, failure);
}

}  // namespace vek::convert
