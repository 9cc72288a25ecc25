// Micro benchmarks of what a run does most often. Prints rates; compares
// nothing by the clock.
#include <benchmark/benchmark.h>
#include <glib.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "base/messages.h"
#include "classes/classtab.h"
#include "classes/termset.h"
#include "evaluation/scorer.h"
#include "evaluation/scoring.h"
#include "evaluation/thresholds.h"
#include "intake/DocParser.h"
#include "intake/docprof.h"
#include "intake/documents.h"
#include "intake/termbag.h"
#include "learning/training.h"
#include "learning/winnow.h"
#include "learning/winnowpass.h"
#include "params/params.h"
#include "params/scanner.h"
#include "store/filestore.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/stringpool.h"
#include "vocabulary/termtab.h"

namespace vek {
namespace {

std::uint32_t draw_rank(std::mt19937 &random, double limit) {
  const double u = static_cast<double>(random()) / 4294967296.0;
  return static_cast<std::uint32_t>(3.0 * (std::pow(limit, u) - 1.0));
}

std::string make_word(std::uint32_t number) {
  return "word" + std::to_string(number);
}

// A document of words and pairs, with a frequency for each rank like that of
// real text.
std::string make_analysis(std::mt19937 &random, double vocabulary,
                          int nr_words) {
  std::string text;
  std::string before = "first";
  for (int i = 0; i < nr_words; ++i) {
    const std::string next = make_word(draw_rank(random, vocabulary));
    text += next + " [ " + next + " , " + before + " ]\n";
    before = next;
  }
  return text;
}

void set_bytes(benchmark::State &state, std::size_t size) {
  state.SetBytesProcessed(static_cast<std::int64_t>(size) * state.iterations());
}

void scan_analysis(benchmark::State &state) {
  std::mt19937 random(1);
  const std::string text = make_analysis(random, 1e5, 2000);
  Messages messages;
  for (auto _ : state) {
    Scanner scanner(Scanner::Mode::document, text, "bench", messages);
    while (!scanner.at_end())
      scanner.advance();
  }
  set_bytes(state, text.size());
}
BENCHMARK(scan_analysis);

// Parsing into a bag, with a vocabulary of up to that many atoms.
void parse_into_bag(benchmark::State &state) {
  std::mt19937 random(1);
  const double vocabulary = static_cast<double>(state.range(0));
  std::vector<std::string> texts;
  std::size_t size = 0;
  for (int i = 0; i < 200; ++i) {
    texts.push_back(make_analysis(random, vocabulary, 200));
    size += texts.back().size();
  }
  StringPool pool;
  AtomTable atoms(pool);
  for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(vocabulary); ++i)
    atoms.enter(make_word(i));
  Messages messages;
  for (auto _ : state) {
    for (const std::string &text : texts) {
      TermBag bag;
      DocParser(atoms, bag, text, "bench", messages).parse();
      benchmark::DoNotOptimize(bag.size());
    }
  }
  set_bytes(state, size);
}
BENCHMARK(parse_into_bag)->Arg(10000)->Arg(1000000);

void enter_known_atoms(benchmark::State &state) {
  std::vector<std::string> words;
  for (std::uint32_t i = 0; i < 100000; ++i)
    words.push_back(make_word(i));
  StringPool pool;
  AtomTable atoms(pool);
  for (auto _ : state) {
    for (const std::string &word : words)
      benchmark::DoNotOptimize(atoms.enter(word));
  }
  state.SetItemsProcessed(state.iterations() * std::ssize(words));
}
BENCHMARK(enter_known_atoms);

// Entering fifty thousand pairs, heads with so many modifiers each.
void enter_modifiers(benchmark::State &state) {
  constexpr std::uint32_t nr_pairs = 50000;
  const auto nr_heads = nr_pairs / static_cast<std::uint32_t>(state.range(0));
  for (auto _ : state) {
    TermTable table;
    for (std::uint32_t i = 0; i < nr_pairs; ++i) {
      table.enter(i % nr_heads, i / nr_heads * 2654435761U);
    }
    benchmark::DoNotOptimize(table.get_term(0).next);
  }
  state.SetItemsProcessed(state.iterations() * nr_pairs);
}
BENCHMARK(enter_modifiers)->Arg(50)->Arg(50000);

class StoreFixture : public benchmark::Fixture {
 public:
  void SetUp(benchmark::State &) override {
    std::string path = std::filesystem::temp_directory_path() / "bench-XXXXXX";
    directory_ = mkdtemp(path.data());
    base_ = directory_ + "/store";
  }
  void TearDown(benchmark::State &) override {
    std::filesystem::remove_all(directory_);
  }

 protected:
  void fill(FileStore *store_P, int nr_blocks, std::size_t size = 800) {
    const std::string block(size, 'x');
    for (int i = 0; i < nr_blocks; ++i) {
      filestore_put_file(store_P, ("document-" + std::to_string(i)).c_str(),
                         block.data(), static_cast<unsigned>(block.size()));
    }
  }

  std::string directory_;
  std::string base_;
};

BENCHMARK_DEFINE_F(StoreFixture, put)(benchmark::State &state) {
  FileStore *store_P = filestore_open(base_.c_str());
  for (auto _ : state)
    fill(store_P, 10000);
  state.SetItemsProcessed(state.iterations() * 10000);
  filestore_close(store_P);
}
BENCHMARK_REGISTER_F(StoreFixture, put)->Iterations(10);

BENCHMARK_DEFINE_F(StoreFixture, get)(benchmark::State &state) {
  FileStore *store_P = filestore_open(base_.c_str());
  fill(store_P, 10000);
  int i = 0;
  for (auto _ : state) {
    void *data_P = nullptr;
    std::size_t size = 0;
    i = (i + 7919) % 10000;
    filestore_get_file(store_P, ("document-" + std::to_string(i)).c_str(),
                       &data_P, &size);
    g_free(data_P);
  }
  state.SetItemsProcessed(state.iterations());
  filestore_close(store_P);
}
BENCHMARK_REGISTER_F(StoreFixture, get);

BENCHMARK_DEFINE_F(StoreFixture, open)(benchmark::State &state) {
  FileStore *store_P = filestore_open(base_.c_str());
  fill(store_P, static_cast<int>(state.range(0)), 8);
  filestore_close(store_P);
  for (auto _ : state) {
    store_P = filestore_open(base_.c_str());
    state.PauseTiming();
    filestore_close(store_P);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK_REGISTER_F(StoreFixture, open)->Arg(10000)->Arg(1000000);

BENCHMARK_DEFINE_F(StoreFixture, sync)(benchmark::State &state) {
  FileStore *store_P = filestore_open(base_.c_str());
  fill(store_P, static_cast<int>(state.range(0)), 8);
  // Without anything new there is nothing to sync.
  for (auto _ : state) {
    fill(store_P, 1);
    filestore_sync(store_P);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  filestore_close(store_P);
}
BENCHMARK_REGISTER_F(StoreFixture, sync)
    ->Arg(10000)
    ->Arg(1000000)
    ->UseRealTime();

// A father with a hundred sons and two thousand documents of eighty terms.
class Collection : public Documents {
 public:
  static constexpr std::uint32_t nr_sons = 100;
  static constexpr std::uint32_t nr_docs = 2000;

  Collection() : Documents(active_terms_) {
    std::mt19937 random(1);
    classes_.enter("top", 0);
    for (std::uint32_t son = 0; son < nr_sons; ++son)
      classes_.enter("son" + std::to_string(son), 0);
    for (std::uint32_t i = 0; i < nr_docs; ++i) {
      DocProfile doc;
      for (int k = 0; k < 80; ++k)
        doc.add_term(draw_rank(random, 3000.0), 1);
      ClassData *son_P = top().sons[random() % nr_sons];
      classes_.add_train_document(son_P->id, std::to_string(i));
      docs_.push_back(doc);
      members_.push_back({son_P});
    }
    classes_.gather_documents();
    params_.term_selection = TermSelection::none;
    std::ostringstream scores;
    Messages messages;
    update_profiles({classes_, *this, active_terms_, params_, scores, messages},
                    10000);
    for (DocProfile &doc : docs_)
      doc.weigh_and_add(top(), params_);
    for (const ClassProfile::Slot &slot : top().profile)
      top().weight_sum += slot.entry.weight;
    for (ClassData *son_P : top().sons)
      init_winnow_weights(params_, *son_P);
  }

  static Collection &instance() {
    static Collection collection;
    return collection;
  }
  void read_profile(const std::string &name, DocProfile &profile) override {
    profile = docs_[std::stoul(name)];
  }
  const Params &params() const { return params_; }
  ClassData &top() { return classes_.get_data(0); }
  std::vector<DocProfile> &docs() { return docs_; }
  const DocumentMap::ClassList &members(std::size_t i) { return members_[i]; }

 private:
  Params params_;
  TermSet active_terms_;
  ClassTable classes_;
  std::vector<DocProfile> docs_;
  std::vector<DocumentMap::ClassList> members_;
};

void set_documents(benchmark::State &state) {
  state.SetItemsProcessed(state.iterations() * Collection::nr_docs);
}

void weigh_documents(benchmark::State &state) {
  Collection &collection = Collection::instance();
  for (auto _ : state) {
    for (DocProfile &doc : collection.docs())
      doc.weigh(collection.top(), collection.params());
  }
  set_documents(state);
}
BENCHMARK(weigh_documents);

void winnow_pass(benchmark::State &state) {
  Collection &collection = Collection::instance();
  WinnowPasses passes(collection.top(), collection.params());
  for (std::uint32_t i = 0; i < Collection::nr_docs; ++i) {
    passes.add_document(collection.docs()[i], collection.members(i));
  }
  for (auto _ : state) {
    for (std::uint32_t i = 0; i < Collection::nr_docs; ++i) {
      benchmark::DoNotOptimize(passes.train_document(i));
    }
  }
  set_documents(state);
}
BENCHMARK(winnow_pass);

// One document against all sons, by the index and by the plain rule.
void score_by_index(benchmark::State &state) {
  Collection &collection = Collection::instance();
  const ClassScorer scorer(collection.top().sons, winnow_scoring,
                           collection.params());
  std::vector<WeightType> values;
  for (auto _ : state) {
    for (const DocProfile &doc : collection.docs())
      scorer.score(doc, values);
  }
  set_documents(state);
}
BENCHMARK(score_by_index);

void score_one_by_one(benchmark::State &state) {
  Collection &collection = Collection::instance();
  for (auto _ : state) {
    for (const DocProfile &doc : collection.docs()) {
      for (const ClassData *son_P : collection.top().sons) {
        benchmark::DoNotOptimize(score_document(
            winnow_scoring, collection.params(), son_P->profile, doc));
      }
    }
  }
  set_documents(state);
}
BENCHMARK(score_one_by_one);

void determine_threshold(benchmark::State &state) {
  std::mt19937 random(1);
  ScoreTable table;
  for (int i = 0; i < state.range(0); ++i) {
    (i % 10 == 0 ? table.pos : table.neg)
        .push_back(static_cast<double>(random()) / 4e9 + (i % 10 == 0));
  }
  table.complete();
  for (auto _ : state) {
    benchmark::DoNotOptimize(table.threshold());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(determine_threshold)->Arg(10000)->Arg(1000000);

}  // namespace
}  // namespace vek

BENCHMARK_MAIN();
