// One pass over the input directory: classifies the documents named there
// against the trained classes and leaves one rank file.
#ifndef VEK_RUN_POLLING_H_
#define VEK_RUN_POLLING_H_

#include <string>
#include <vector>

#include "evaluation/judge.h"

namespace vek {

// The whole pass. `input` is the parent of the directory `in` that is scanned;
// the class table must hold at least two classes. Ends the run if `in` is
// missing or a document's file is not where documents lie.
void poll_directory(const std::string &input, Judge &judge);

// Appends the documents of a directory, in the system's order: its entries
// for which is_input_document() holds. Each has a stored profile afterwards.
// One whose file cannot be read is left out, with a warning. Their texts come
// from where all documents lie; the directory supplies the names only.
void collect_input_documents(const std::string &directory,
                             std::vector<std::string> &names);

// Judges a document against the whole hierarchy, analysing it first if need
// be. Returns whether it is significant.
bool classify_new_document(const std::string &name, Judge &judge,
                           Answer &answer);

}  // namespace vek

#endif  // VEK_RUN_POLLING_H_
