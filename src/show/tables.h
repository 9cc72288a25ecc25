// What a kept model knows of a class, a term, a document and the hierarchy, as
// tables. Names in them are as they are.
#ifndef VEK_SHOW_TABLES_H_
#define VEK_SHOW_TABLES_H_

#include <string>
#include <vector>

#include "answering/kept_model.h"
#include "base/failure.h"
#include "report/table.h"

namespace vek::showing {

// Whoever reads a tree sees it by its indents; a program needs the paths.
enum class Reader { person, program };

// Each appends its tables. False, with `failure` filled in, if there is nothing
// of that name, or if something is damaged.

// `class`, `terms` in favour and `against` it, the heaviest first, and
// `confusions` by the predictions in `place`; none if that is empty.
bool add_class_tables(const KeptModel &model, const std::string &path,
                      const std::string &place,
                      std::vector<reporting::Table> &tables, Failure &failure);

// `term`, its `classes`, and the `pairs` with a word. One word, or modifier and
// head, or else whatever the analyser makes of the words.
bool add_term_tables(KeptModel &model, const std::vector<std::string> &words,
                     std::vector<reporting::Table> &tables, Failure &failure);

// `document` and its `terms`, weighed against the top class.
bool add_document_tables(const KeptModel &model, const std::string &name,
                         std::vector<reporting::Table> &tables,
                         Failure &failure);

// `tree`.
void add_tree_table(const KeptModel &model, Reader reader,
                    std::vector<reporting::Table> &tables);

}  // namespace vek::showing

#endif  // VEK_SHOW_TABLES_H_
