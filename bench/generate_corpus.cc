// Writes an examples directory of any size, the same for the same arguments.
//
//   generate_corpus DIRECTORY NR-DOCUMENTS [SEED]
//
// The documents hold analysis text (words, and pairs of neighbours), so that a
// run over them needs no analyser. Word frequencies follow Zipf's law with
// Mandelbrot's shift over a vocabulary without end, lengths are log-normal
// around eighty words, and a third of a document's words come from its classes'
// own vocabularies. There are ten fathers with ten leaves each, of very
// different sizes; one document in ten has two leaves, one in ten is for
// testing.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr unsigned nr_fathers = 10;
constexpr unsigned nr_leaves_of_father = 10;
constexpr double mean_log_length = 4.3;
constexpr double deviation_of_log_length = 0.5;
constexpr double topical_share = 0.33;
constexpr unsigned documents_in_directory = 1000;
constexpr unsigned topic_size = 2000;

// The standard's distributions may differ from library to library; these do
// not.
class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}
  // In [0, 1).
  double uniform() { return static_cast<double>(engine_() >> 11) * 0x1.0p-53; }
  unsigned below(unsigned limit) {
    return static_cast<unsigned>(uniform() * limit);
  }
  double normal() {
    return std::sqrt(-2.0 * std::log(1.0 - uniform())) *
           std::cos(2.0 * M_PI * uniform());
  }
  // A rank from 0 with a probability of about 1 / (rank + 3).
  std::uint64_t zipf(double limit) {
    return static_cast<std::uint64_t>(3.0 * (std::pow(limit, uniform()) - 1.0));
  }

 private:
  std::mt19937_64 engine_;
};

std::string word(std::uint64_t number) {
  std::string text;
  do {
    text += static_cast<char>('a' + number % 26);
    number /= 26;
  } while (number != 0);
  return text + "o";
}

struct Leaf {
  unsigned father;
  unsigned number;

  std::string path() const {
    return "father" + std::to_string(father) + "/leaf" + std::to_string(number);
  }
  // Where the leaf's own words begin.
  std::uint64_t first_word() const {
    return 1000000000ULL +
           (father * nr_leaves_of_father + number) * std::uint64_t{topic_size};
  }
};

Leaf draw_leaf(Random &random) {
  // Squaring makes some classes some ten times as large as others.
  const double a = random.uniform();
  const double b = random.uniform();
  return {static_cast<unsigned>(a * a * nr_fathers),
          static_cast<unsigned>(b * b * nr_leaves_of_father)};
}

std::string document(Random &random, const std::vector<Leaf> &leaves) {
  const double length =
      std::exp(mean_log_length + deviation_of_log_length * random.normal());
  std::string text;
  std::string before;
  for (unsigned i = 0; i < static_cast<unsigned>(length) + 3; ++i) {
    std::string next;
    if (random.uniform() < topical_share) {
      const Leaf &leaf =
          leaves[random.below(static_cast<unsigned>(leaves.size()))];
      next = word(leaf.first_word() + random.zipf(topic_size / 3.0));
    } else {
      next = word(random.zipf(3e6));
    }
    text += next;
    if (!before.empty() && random.uniform() < 0.4) {
      text += " [ " + next + " , " + before + " ]";
    }
    text += i % 12 == 11 ? '\n' : ' ';
    before = next;
  }
  text += '\n';
  return text;
}

}  // namespace

int main(int argument_count, char **argument_vector) {
  if (argument_count < 3 || argument_count > 4) {
    std::cerr << "usage: generate_corpus DIRECTORY NR-DOCUMENTS [SEED]\n";
    return 2;
  }
  const std::filesystem::path directory(argument_vector[1]);
  const unsigned long nr_documents =
      std::strtoul(argument_vector[2], nullptr, 10);
  Random random(
      argument_count == 4 ? std::strtoull(argument_vector[3], nullptr, 10) : 1);
  std::filesystem::create_directories(directory / "files");
  std::ofstream train(directory / "train");
  std::ofstream test(directory / "test");
  for (unsigned long i = 0; i < nr_documents; ++i) {
    std::vector<Leaf> leaves{draw_leaf(random)};
    if (random.uniform() < 0.1)
      leaves.push_back(draw_leaf(random));
    const std::string folder = std::to_string(i / documents_in_directory);
    if (i % documents_in_directory == 0) {
      std::filesystem::create_directories(directory / "files" / folder);
    }
    const std::string name = folder + "/d" + std::to_string(i);
    std::ofstream(directory / "files" / (name + ".txt"))
        << document(random, leaves);
    std::ofstream &list = random.uniform() < 0.1 ? test : train;
    list << name;
    for (const Leaf &leaf : leaves)
      list << ' ' << leaf.path();
    list << '\n';
  }
  train.flush();
  test.flush();
  if (!train || !test) {
    std::cerr << "generate_corpus: cannot write the lists\n";
    return 1;
  }
  return 0;
}
