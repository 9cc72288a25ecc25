// What a data directory holds, on standard output: as lines of fields with tabs
// between them, in which names are escaped (names.h), or as JSON, in which
// bytes that are no UTF-8 are replaced by U+FFFD.
#ifndef VEK_DATA_CONTENTS_H_
#define VEK_DATA_CONTENTS_H_

#include <ostream>
#include <string>

#include "base/failure.h"

namespace vek::keeping {

enum class Format { lines, json };
enum class Which { all, empty };

// Counts, sizes in bytes and dates: a line for each, or one object. The
// directory may also be a packed model, of which its manifest tells first.
// False, as from the others, with `failure` filled in, if the directory cannot
// be read.
bool print_info(const std::string &directory, Format format, std::ostream &out,
                Failure &failure);

// A line or object for each stored document, by the order of the names: name,
// terms, bytes, date. `empty` are those without terms.
bool print_list(const std::string &directory, Which which, Format format,
                std::ostream &out, Failure &failure);

// The profiles, by the order of the names: as a line for each term, with the
// name, the term and its frequency, or an object for each document.
bool print_profiles(const std::string &directory, Format format,
                    std::ostream &out, Failure &failure);

}  // namespace vek::keeping

#endif  // VEK_DATA_CONTENTS_H_
