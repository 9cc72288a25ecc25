// Which documents are learnt from and which the model is tested with.
//
// Each group of documents has a fixed number, the hash of its name. A class has
// a limit: so that the wanted share of its documents, of all imports, have a
// number up to it. A new document whose group is up to the limit of its class
// goes to the test list.
//
// So the share holds in every class at the first import, as exactly as groups
// allow, and later in the mean. The limit of a class with many documents hardly
// moves. What was dealt once stays; a group stays where its first document
// went; and a class keeps at least one document to learn from.
#ifndef VEK_IMPORT_DEALING_H_
#define VEK_IMPORT_DEALING_H_

#include <cstddef>
#include <vector>

#include "import/document.h"

namespace vek::importing {

// Sets the side of the documents that have none yet. Those that have one stand
// before them. `share` is from 0 to 1.
void deal(std::vector<Document> &documents, double share);

// A group that was told can hold a text that another group has as well. Sets
// the side of new documents back to none if their text is on the other one, and
// returns how many there are.
std::size_t withdraw_doubles(std::vector<Document> &documents);

}  // namespace vek::importing

#endif  // VEK_IMPORT_DEALING_H_
