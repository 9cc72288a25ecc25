// Whether vek can use its data directory and its log.
#ifndef VEK_CHECK_DATA_CHECK_H_
#define VEK_CHECK_DATA_CHECK_H_

#include "check/findings.h"
#include "data/verify.h"
#include "params/params.h"

namespace vek::checking {

// Looks at the data directory of the settings, for which `verification` was
// made: whether it may be used, whether a run is using it, and whether it is
// damaged. A directory that is missing or empty is a new one.
void check_data(const Params &settings, keeping::Verification &verification,
                Findings &findings);

// What the verification reports, as a finding; its notes are none.
void add_damage(const Params &settings, const keeping::Finding &damage,
                Findings &findings);

// Whether vek.log can be written.
void check_log(Findings &findings);

}  // namespace vek::checking

#endif  // VEK_CHECK_DATA_CHECK_H_
