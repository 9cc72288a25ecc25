// Which texts are the same, and which nearly so.
//
// Two texts are the same if they have the same words in the same order, small
// and capital ASCII letters, punctuation and white space aside.
//
// Near ones are found by min-wise hashing (Broder, On the resemblance and
// containment of documents, 1997): of all sequences of three words of a text,
// the least one in each of 15 random orders. Two texts agree in as large a part
// of these minima, on average, as the sequences that they share are of all that
// they have. Of a minimum 16 bits are kept (Li and Koenig, b-bit minwise
// hashing, 2010), and only texts that agree in three neighbouring minima are
// compared, so that a million texts are no million times a million pairs.
#ifndef VEK_IMPORT_LIKENESS_H_
#define VEK_IMPORT_LIKENESS_H_

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "import/document.h"

namespace vek::importing {

struct Fingerprint {
  std::uint64_t words = 0;  // equal for texts that are the same
  std::size_t nr_words = 0;
  Minima minima = {};
};

Fingerprint fingerprint_of(std::string_view text);

// A test document and the training document that it is most like, by their
// places.
struct NearPair {
  std::uint32_t test = 0;
  std::uint32_t train = 0;
  std::uint32_t nr_equal = 0;  // of nr_minima
};

// From this many equal minima on two texts are near: four of five sequences.
inline constexpr std::uint32_t least_equal = 12;

// The test documents that are near a training document, in their order. A pair
// that shares four of five sequences is found with a probability of 97 %, one
// that shares nine of ten with 99.8 %. Of many texts with the same begin only
// some are compared with each other.
std::vector<NearPair> find_near(const std::vector<Document> &documents);

}  // namespace vek::importing

#endif  // VEK_IMPORT_LIKENESS_H_
