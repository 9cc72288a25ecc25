// The account as one HTML page, with the text in which the terms are marked. It
// has no script, and asks for nothing from elsewhere.
#ifndef VEK_EXPLAIN_PAGE_H_
#define VEK_EXPLAIN_PAGE_H_

#include <cstddef>
#include <string>

#include "explain/account.h"
#include "explain/marks.h"

namespace vek::explaining {

// `words_P` is null where there is no text.
std::string make_page(const Account &account, std::size_t nr_terms,
                      const TextWords *words_P);

}  // namespace vek::explaining

#endif  // VEK_EXPLAIN_PAGE_H_
