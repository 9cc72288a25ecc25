// From an examples directory to classes with documents.
//
// Two list files name documents with their classes. Collection creates the
// classes, has every listed document analysed and stored, and files its name
// under its classes as a training or a testing document. It handles names
// only; where the texts lie is the analyser's business.
#ifndef VEK_INTAKE_COLLECTION_H_
#define VEK_INTAKE_COLLECTION_H_

#include <cstdint>
#include <functional>
#include <set>
#include <string>

#include "classes/classtab.h"
#include "intake/lists.h"

namespace vek {

// Makes sure that the document has a stored profile.
using ProfileDocument = std::function<void(const std::string &name)>;

// Collects both lists. Ends the run if a directory is missing, if a list is
// malformed, or if the class table belongs to another collection.
void collect_documents(const std::string &examples, ClassTable &classes,
                       const ProfileDocument &profile_document);

// The names of all documents in both lists, as far as these can be read:
// collection itself tells where they cannot.
std::set<std::string> listed_documents(const std::string &examples);

void collect_list(const std::string &examples, std::uint32_t top_id,
                  ListKind kind, ClassTable &classes,
                  const ProfileDocument &profile_document);

}  // namespace vek

#endif  // VEK_INTAKE_COLLECTION_H_
