#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "data/small_data.h"
#include "support/small_collection.h"

namespace vek::keeping {
namespace {

using Json = nlohmann::json;

std::string text_of(const Outcome &outcome) {
  return std::to_string(outcome.status) + ' ' + outcome.output + outcome.errors;
}

Json info(const std::string &directory) {
  const Outcome outcome = vek_data("info -j " + directory);
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  return Json::parse(outcome.output);
}

// What the documents of input/in get with that model.
std::string polled(const std::string &directory) {
  fs::copy("files", directory + "/files",
           fs::copy_options::recursive | fs::copy_options::skip_existing);
  fs::copy("input", directory + "/input",
           fs::copy_options::recursive | fs::copy_options::skip_existing);
  const Outcome outcome = run("cd " + directory + " && " VEK_PROGRAM " -p");
  EXPECT_EQ(outcome.status, 0) << read_text(directory + "/vek.log");
  return read_text(directory + "/predictions0.tsv");
}

class PackTest : public testing::Test {
 protected:
  PackTest() {
    write_small_collection(true);
    setenv("SOURCE_DATE_EPOCH", "1767225599", 1);
  }

  TemporaryDirectory directory_;
};

TEST_F(PackTest, AnswersAsTheModelThatWasPacked) {
  const std::pair<const char *, const char *> cases[] = {
      {"W", "walk path heldout 3"},
      {"R", "strength ltc normalize vector"},
      {"S", "maxranks 3"},
      {"L", "walk path normalize vector heldout 2"},
  };
  for (const auto &[letter, keys] : cases) {
    for (const char *name : {"data", "model", "model2", "plain"})
      fs::remove_all(name);
    write_text("own.rc", "[general] analyser \"\" save on predictions on " +
                             std::string(keys) + "\n# the end\n");
    const std::string classifier = " -a " + std::string(letter);
    ASSERT_EQ(run(VEK_PROGRAM " -r own . -d ./data" + classifier).status, 0);
    EXPECT_EQ(text_of(vek_data("pack -r own -d ./data . model" + classifier)),
              "0 ");
    // The same once more, with vek's own road to the answers.
    fs::create_directory("plain");
    fs::copy("data", "plain/data");
    write_text("plain/vek.rc",
               read_text("own.rc") + "[general] training " +
                   info("model")["classifier"].get<std::string>());
    const std::string expected = polled("plain");
    EXPECT_EQ(polled("model"), expected) << letter;
    // Polling has stored profiles and new words, and the model is good still.
    EXPECT_EQ(text_of(vek_data("verify model")), "0 ");
    EXPECT_EQ(text_of(vek_data("pack model model2")), "0 ");
    EXPECT_EQ(polled("model2"), expected) << letter;
  }
}

TEST_F(PackTest, TellsWhatWasPacked) {
  write_text("vek.rc",
             "[general] analyser \"\" save on heldout 3 fparameter 2");
  write_text("import.json", "{}");
  ASSERT_EQ(run_vek().status, 0);
  ASSERT_EQ(text_of(vek_data("pack -c './mine -l en' . model/")),
            "0 vek-data: warning: the analyser `./mine -l en' is not packed "
            "and has a relative path; --analyser names another\n");
  const Json found = info("model");
  EXPECT_EQ(found["packed"], "2025-12-31T23:59:59Z");
  EXPECT_EQ(found["analyser"], "./mine -l en");
  EXPECT_EQ(found["learnt_documents"], 80);
  EXPECT_EQ(found["test_documents"], 12);
  EXPECT_EQ(found["heldout_documents"], 80);
  const std::string log = read_text("vek.log");
  for (const char *kind : {"heldout", "test"}) {
    char line[100];
    const auto value = [&](const char *name) {
      return found[kind + std::string(name)].get<double>();
    };
    std::snprintf(line, sizeof line, "Total  %10.2f%%   %10.2f%%   %10.2f%%",
                  value("_precision"), value("_recall"), value("_f"));
    EXPECT_NE(log.find(line), std::string::npos) << line << log;
  }
  EXPECT_EQ(read_text("model/import.json"), "{}");
  // Repeatable, by way of itself too; and without texts and profiles.
  ASSERT_EQ(vek_data("pack -c './mine -l en' . again").status, 0);
  ASSERT_EQ(vek_data("pack again third").status, 0);
  EXPECT_EQ(files_of("third/data"), files_of("model/data"));
  EXPECT_EQ(read_text("again/manifest.json"), read_text("model/manifest.json"));
  EXPECT_EQ(read_text("third/manifest.json"), read_text("model/manifest.json"));
  EXPECT_FALSE(fs::exists("model/files"));
  EXPECT_EQ(found["documents"], 0);
  // A log of other settings tells nothing of this model.
  write_text("vek.log", "no log");
  ASSERT_EQ(vek_data("pack . other").status, 0);
  EXPECT_TRUE(info("other")["test_f"].is_null());
}

TEST_F(PackTest, RefusesInWords) {
  write_text("vek.rc", "[general] analyser \"\" save on");
  ASSERT_EQ(run_vek().status, 0);
  ASSERT_EQ(vek_data("pack . model").status, 0);
  fs::copy("model", "bad", fs::copy_options::recursive);
  write_text("bad/vek.rc", read_text("bad/vek.rc") + " ");
  write_text("mine.part/notes", "mine");
  write_text("broken.rc", "[general] analyser on");
  fs::create_directory("empty");
  const std::pair<std::string, std::string> cases[] = {
      {"pack . model", "2 vek-data: model: it is there already\n"},
      {"pack bad new", "2 vek-data: bad/vek.rc: it has "},
      {"verify bad", "1 damage: bad/vek.rc: it has "},
      {"pack -a L . new", "2 vek-data: data/class1.cpf: line 8: no class "},
      {"pack . mine", "2 vek-data: mine.part: Directory not empty\n"},
      {"pack -r broken . new", "2 vek-data: broken.rc: line 1: "},
      {"pack -d none . new", "2 vek-data: none: No such file"},
      {"pack -d empty . new", "2 vek-data: empty/classes: No such file"},
      {"pack -c 'a\"b' . new", "2 vek-data: a\"b: a resource file cannot "},
      {"pack . none/new", "2 vek-data: none/new.part: No such file"},
  };
  for (const auto &[command, expected] : cases) {
    EXPECT_EQ(text_of(vek_data(command)).substr(0, expected.size()), expected)
        << command;
    EXPECT_FALSE(fs::exists("new") || fs::exists("new.part")) << command;
  }
}

}  // namespace
}  // namespace vek::keeping
