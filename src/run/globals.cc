// The global objects of a run, in their one order.
//
// They are built in this order and destroyed in the opposite one, on return
// from main() and on exit(), so also after abort_run(): the streams are closed
// first, then the analyser sees the end of its input, then the profile store is
// closed by the database. Last of all a run that was stopped ends by its
// signal. Parameters and options outlive everything, because everything reads
// them.
#include "run/globals.h"

#include "log/stop.h"

namespace vek {

EndBySignal end_by_signal;
Params params;
Options options;
StringPool string_pool;
AtomTable atom_table(string_pool);
DataBase data_base(atom_table, term_table, class_table, active_terms);
TermTable term_table;
ClassTable class_table;
Analyser analyser;
Log log_file;
TermSet active_terms;
Judging judging;
AnalysisReport analysis_report;
OutputFile scores;

std::time_t run_clock;
struct tms run_times;

}  // namespace vek
