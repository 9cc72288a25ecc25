// Mail: subject and body text of a message, and the messages of a mailbox.
//
// The text is the subject and, behind an empty line, all text parts that are
// not attached: of alternatives the plain one, else HTML without its markup. A
// message within a message is read as a part of it.
#ifndef VEK_CONVERT_MAIL_H_
#define VEK_CONVERT_MAIL_H_

#include <string>

#include "base/failure.h"
#include "convert/rows.h"

namespace vek::convert {

// Sets text, classes and group of the record; of the two last only what
// `settings` names a header for. The key becomes the message's id if it is
// empty. Returns what is wrong with the message, or an empty string.
std::string read_message(const std::string &bytes, const Settings &settings,
                         Record &record);

// The same for a page, with the encoding that is told or that it names.
std::string page_to_text(std::string &page, const std::string &encoding);

// Gives the sink a record for each message of a file with lines "From " in
// front of each. False if it cannot be read.
bool read_mbox(Lines &lines, const Settings &settings, const FilePlace &file,
               Sink &sink, Failure &failure);

}  // namespace vek::convert

#endif  // VEK_CONVERT_MAIL_H_
