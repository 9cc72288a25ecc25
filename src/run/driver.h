// The run: a fixed list of phases, gone through once, in one thread.
//
// This unit is the table of contents. The order of the phases and the
// conditions under which each runs stand here and nowhere else; what a phase
// does is found in its own unit. A run ends by returning 0 or through
// abort_run().
#ifndef VEK_RUN_DRIVER_H_
#define VEK_RUN_DRIVER_H_

#include <string>

#include "evaluation/judge.h"

namespace vek {

// The whole run. Returns the exit status 0.
int run(int argument_count, char **argument_vector);

// Options and parameters are final afterwards; the settings are in the log.
void process_command_line(int argument_count, char **argument_vector);
// Reads the resource file that was asked for, or the default one if there is
// one. Ends the run if it has an error.
void read_resources();
// Reads the file `path` into the global record and returns the number of parse
// errors, each of which has been reported. Ends the run if the file cannot be
// opened or read.
unsigned read_parameters(const std::string &path);
// Lets the command line override the parameters.
void merge_options();
void report_parameters();

void start_analyser();
void open_data_base();
// Reads what a kept model has learnt about its scores, if it has.
void read_judging();
// The test run, over the top class: writes a rank file into the examples
// directory, which gets its final name when it is complete. Without sons or
// test documents nothing happens.
void test_classes(Judge &judge);
// Polls if asked to. Ends the run if there are no classes to classify with.
void poll_input(Judge &judge);

}  // namespace vek

#endif  // VEK_RUN_DRIVER_H_
