// A source of documents, be it a file or a directory tree: which files it has,
// in which form they are, and the documents in them.
#ifndef VEK_CONVERT_SOURCE_H_
#define VEK_CONVERT_SOURCE_H_

#include <string>
#include <string_view>

#include "base/failure.h"
#include "convert/record.h"
#include "convert/rows.h"
#include "convert/settings.h"

namespace vek::convert {

// The source that is standard input.
inline constexpr char standard_input[] = "-";

// Sets what is not told of a source that is one file and can be found out: its
// form, by name and content, and the encoding of its rows. False if the form
// cannot be told, or if the source cannot be read.
bool find_out(const std::string &path, Settings &settings, Failure &failure);

// The form of a file without a setting, by the ending of its name; unknown for
// plain text.
Form form_by_name(std::string_view path);
// A file of that form has a document in each row, or message.
bool has_many_documents(Form form);

// Gives the sink all documents of a source, always in the same order. A
// directory is a tree of folders, or a maildir; the class of a file there is
// the path of its folder, or that of a directory without folders its own name,
// unless a field tells the class. What begins with a full stop, links to
// directories and all that is no regular file are rejected, as is each file
// that cannot be read. False if the source as a whole cannot be used.
bool read_source(const std::string &path, const Settings &settings, Sink &sink,
                 Failure &failure);

// One file, which read_source() uses for each: rows and mailboxes have many
// documents. `is_mail`: by its place, as in a maildir.
bool read_file(const FilePlace &file, const Settings &settings, bool is_mail,
               Sink &sink, Failure &failure);

}  // namespace vek::convert

#endif  // VEK_CONVERT_SOURCE_H_
