// Answers to texts in JSON lines, as JSON lines: one for each, in their order.
#ifndef VEK_SORT_STREAM_H_
#define VEK_SORT_STREAM_H_

#include <ostream>
#include <string>
#include <vector>

#include "base/failure.h"
#include "sort/answers.h"

namespace vek::sorting {

struct StreamFields {
  // With the text, one behind the other; empty: those of the rows that the
  // model was learnt from, or `text`.
  std::vector<std::string> text;
  std::string id = "id";  // is in the answer as it is
};

// Reads standard input to its end. What is written is flushed whenever there is
// nothing to be read. Sets the number of lines without an answer, which say
// why. False if standard input cannot be read, if `out` cannot be written, or
// if the analyser fails on all texts.
bool answer_stream(Answers &answers, const StreamFields &fields,
                   std::ostream &out, std::size_t &nr_rejected,
                   Failure &failure);

}  // namespace vek::sorting

#endif  // VEK_SORT_STREAM_H_
