// The global objects of a run, in their one order.
//
// They are built in this order and destroyed in the opposite one, on return
// from main() and on exit(), so also after abort_run(): the streams are closed
// first, then the analyser sees the end of its input, then the profile store is
// closed by the database. Parameters and options outlive everything, because
// everything reads them.
#include "classes/classtab.h"
#include "classes/termset.h"
#include "evaluation/scoretable.h"
#include "intake/analyser.h"
#include "params/params.h"
#include "run/log.h"
#include "run/options.h"
#include "run/statistics.h"
#include "store/database.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/stringpool.h"
#include "vocabulary/termtab.h"

namespace vek {

Params params;
Options options;
StringPool string_pool;
AtomTable atom_table;
DataBase data_base;
TermTable term_table;
ClassTable class_table;
Analyser analyser;
Log log_file;
TermSet active_terms;
OutputFile scores;

std::time_t run_clock;
struct tms run_times;

}  // namespace vek
