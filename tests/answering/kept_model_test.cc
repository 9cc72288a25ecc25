#include "answering/kept_model.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "store/directorylock.h"
#include "support/small_collection.h"
#include "support/temporary_directory.h"

namespace vek {
namespace {

class KeptModelTest : public testing::Test {
 protected:
  static void learn(const std::string &settings, bool is_tree) {
    write_small_collection(is_tree);
    write_text("vek.rc", "[General] save on " + settings);
    ASSERT_EQ(std::system(VEK_PROGRAM " . 2>errors"), 0) << read_text("errors");
  }

  static std::string open(KeptModel &model, const KeptModel::Place &place) {
    Failure failure;
    return model.open(place, failure) ? "" : failure.text();
  }

  TemporaryDirectory directory_;
};

// New documents, by their files, as `vek -p` with the same model; and then by
// the profiles that it has stored of them, to the last bit.
TEST_F(KeptModelTest, AnswersAsARunDoes) {
  for (const char *classifier : {"winnow", "rocchio", "sbc", "linear"}) {
    for (const char *walk :
         {"steps minranks 0 maxranks 3", "path", "path heldout 4 maxranks 2",
          "steps heldout 4 scaling off"}) {
      for (const bool is_tree : {false, true}) {
        const std::string settings = std::string("analyser \"\" training ") +
                                     classifier + " walk " + walk;
        std::filesystem::remove_all("data");
        learn(settings, is_tree);
        KeptModel model;
        ASSERT_EQ(open(model, {}), "") << settings;
        ASSERT_EQ(std::system(VEK_PROGRAM " -p 2>errors"), 0)
            << read_text("errors");
        const std::string lines = '\n' + read_text("rank0.dat");
        KeptModel after;
        ASSERT_EQ(open(after, {}), "");
        for (int i = 0; i < 12; ++i) {
          const std::string name = "n" + std::to_string(i);
          DocProfile profile;
          DocProfile stored;
          Failure failure;
          KeptModel::Cause cause{};
          ASSERT_TRUE(model.profile_file(model.text_path(name), profile,
                                         failure, cause))
              << failure.text();
          ASSERT_TRUE(after.model().read_profile(name, stored, failure));
          Answer answer;
          Answer expected;
          model.judge().judge(profile, answer);
          after.judge().judge(stored, expected);
          const std::string line =
              answer.ranks.line(name, model.model().classes());
          EXPECT_NE(lines.find('\n' + line), std::string::npos)
              << settings << ": " << line << lines;
          ASSERT_EQ(answer.scores.size(), expected.scores.size());
          for (std::size_t k = 0; k < answer.scores.size(); ++k)
            EXPECT_EQ(answer.scores[k].score, expected.scores[k].score)
                << settings << ' ' << name;
        }
      }
    }
  }
}

TEST_F(KeptModelTest, TellsWhatIsWrong) {
  learn("analyser \"\" training rocchio", false);
  write_text("bad.rc", "[General]\nmaxranks on\n");
  std::filesystem::create_directory("empty");
  const struct {
    KeptModel::Place place;
    std::string failure;
  } cases[] = {
      {{"nowhere", "", "", {}}, "nowhere: there is no such directory"},
      {{"", "none", "", {}}, "none.rc: No such file or directory"},
      {{"", "bad", "", {}},
       "bad.rc: line 2: before `on': parse error: number expected"},
      {{"", "", "none", {}}, "none: there is no such directory"},
      {{"", "", "empty", {}}, "empty/classes: No such file or directory"},
      {{"", "", "", Algorithm::winnow},
       "data/class1.cpf: line 2: no class profile of Winnow: "},
  };
  for (const auto &[place, expected] : cases) {
    KeptModel model;
    EXPECT_EQ(open(model, place).substr(0, expected.size()), expected);
  }
  DirectoryLock lock;
  lock.take("data", DirectoryLock::Mode::exclusive);
  KeptModel model;
  EXPECT_EQ(open(model, {}), "data: a run is using it");
}

TEST_F(KeptModelTest, TellsTextsFromAnAnalyserThatIsStartedAgain) {
  learn("analyser \"\"", false);
  std::filesystem::create_symlink(VEK_SCRIPTED_ANALYSER, "scripted");
  // Dies over its first text, and only then.
  write_text("once",
             "#!/bin/sh\nif mkdir seen 2>&-; then exit 3; fi\n"
             "exec ./scripted echo\n");
  std::filesystem::permissions("once", std::filesystem::perms(0700));
  const std::filesystem::path place = std::filesystem::current_path();
  for (const char *analyser : {"./once", "./none", "/bin/sleep 60"}) {
    std::filesystem::current_path(place);
    write_text("vek.rc", "[General] analysertimeout 1 analyser \"" +
                             std::string(analyser) + '"');
    std::filesystem::current_path("files");
    KeptModel model;
    ASSERT_EQ(open(model, {"..", "", "", {}}), "");
    DocProfile profile;
    std::vector<std::string> outcomes;
    for (const char *path : {"d0.txt", "none.txt", "d0.txt", "."}) {
      Failure failure;
      KeptModel::Cause cause{};
      if (model.profile_file(path, profile, failure, cause)) {
        EXPECT_NE(profile.size(), 0U);
        outcomes.emplace_back("good");
      } else {
        outcomes.push_back(
            (cause == KeptModel::Cause::text ? "text: " : "analyser: ") +
            failure.text());
      }
    }
    std::vector<std::string> expected = {
        "", "text: none.txt: No such file or directory", "",
        "text: .: no regular file"};
    const std::string fault =
        "analyser: d0.txt: analyser `" + std::string(analyser) + "' ";
    if (analyser == std::string("./once")) {
      expected[0] = fault +
                    "failed: it ended before its answer was complete; the "
                    "analyser ended with exit status 3";
      expected[2] = "good";
    } else if (analyser == std::string("./none")) {
      expected[0] = expected[2] =
          fault +
          "cannot be started: No such file or directory; give its full path "
          "with `analyser', it is not looked for on the PATH";
    } else {
      expected[0] = expected[2] =
          fault +
          "failed: no answer within 1 second, the limit set by "
          "`analysertimeout'";
    }
    EXPECT_EQ(outcomes, expected);
  }
  std::filesystem::current_path(place);
}

}  // namespace
}  // namespace vek
