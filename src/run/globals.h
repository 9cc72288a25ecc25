// The global objects of a run.
//
// Only the driver's own folder knows them; what lies below is handed what it
// needs. globals.cc has their order, and why it matters.
#ifndef VEK_RUN_GLOBALS_H_
#define VEK_RUN_GLOBALS_H_

#include "base/output_file.h"
#include "classes/classtab.h"
#include "classes/termset.h"
#include "evaluation/judging.h"
#include "intake/analyser.h"
#include "log/log.h"
#include "params/params.h"
#include "run/analysis_report.h"
#include "run/options.h"
#include "run/statistics.h"
#include "store/database.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/stringpool.h"
#include "vocabulary/termtab.h"

namespace vek {

extern Params params;
extern Options options;
extern StringPool string_pool;
extern AtomTable atom_table;
extern DataBase data_base;
extern TermTable term_table;
extern ClassTable class_table;
extern Analyser analyser;
// The terms that passed selection in some class. Empty means that no selection
// has been made, and then no term is filtered out.
extern TermSet active_terms;
// What the scores of all classes stand for; empty unless it was learnt.
extern Judging judging;
// What is told of the analysis of new documents.
extern AnalysisReport analysis_report;
// scores.dat, open while a training run trains and tests.
extern OutputFile scores;

}  // namespace vek

#endif  // VEK_RUN_GLOBALS_H_
