// From a document's name to its profile: here the analyser, the vocabulary and
// the data directory meet.
#ifndef VEK_RUN_PROFILING_H_
#define VEK_RUN_PROFILING_H_

#include <string>

#include "intake/docprof.h"
#include "intake/termbag.h"

namespace vek {

// Fills the bag with the terms of a document. Errors in the analysis text are
// reported and cost only what they spoil.
void analyse_document(const std::string &name, TermBag &bag);

// Enters the pairs of the bag in the term table, in the bag's order, and adds
// them to the profile.
void add_to_profile(const TermBag &bag, DocProfile &profile);

// Sees to it that the document has a stored profile. A name that is in the
// store is not analysed again.
void profile_document(const std::string &name);

// The profile of a document, analysed first if need be. Owned by the cache of
// the database.
DocProfile *document_profile(const std::string &name);

}  // namespace vek

#endif  // VEK_RUN_PROFILING_H_
