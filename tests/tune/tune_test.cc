// Whole runs of vek-tune, beside a test list at which each of its readers ends.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <string>

#include "support/temporary_directory.h"

namespace vek::tuning {
namespace {

namespace fs = std::filesystem;

struct Outcome {
  int status;
  std::string output;
  std::string errors;
};

Outcome run(const std::string &command) {
  const int status =
      std::system(("{ " + command + "; } >output 2>errors").c_str());
  return {WEXITSTATUS(status), read_text("output"), read_text("errors")};
}

constexpr char tune[] = "timeout 60 " VEK_TUNE_PROGRAM " ";

// Of the last report on test documents or the first, which is that on held-out
// ones, in percent.
double f_in_log(bool last = true) {
  const std::string log = read_text("vek.log");
  const std::size_t line = last ? log.rfind("\nTotal") : log.find("\nTotal");
  double precision = 0.0;
  double recall = 0.0;
  double f = 0.0;
  std::sscanf(log.c_str() + line, "\nTotal %lf%% %lf%% %lf%%", &precision,
              &recall, &f);
  return f;
}

double f_in(const std::string &tuned) {
  return std::atof(tuned.c_str() + tuned.find("\n# F") + 5);
}

class TuneTest : public testing::Test {
 protected:
  // Each document has one word of its class, and a noise word many times.
  TuneTest() {
    const char *path = std::getenv("PATH");
    setenv("PATH", (VEK_PROGRAM_DIRECTORY ":" + std::string(path)).c_str(), 1);
    std::minstd_rand dice(7);
    const char *const classes[] = {"top", "k1", "k2", "k3"};
    for (int i = 0; i < 160; ++i) {
      const std::string name = "d" + std::to_string(i);
      const int number = i % 4;
      std::string text = "c" + std::to_string(number * 3 + int(dice() % 3));
      const std::string noise = " n" + std::to_string(dice() % 12);
      for (auto k = dice() % 40; k > 0; --k)
        text += noise;
      write_text("files/" + name + ".txt", text);
      (i < 120 ? train_ : test_) += name + ' ' + classes[number] + '\n';
    }
    write_text("train", train_);
    write_text("test", "d0\n");
    write_text("vek.rc", "[General] analyser \"\" strength freq\n");
  }

  std::string train_;
  std::string test_;

 private:
  TemporaryDirectory directory_;
};

TEST_F(TuneTest, FindsBetterSettingsForTheTestListThatItDoesNotOpen) {
  const Outcome outcome = run(tune + std::string("-o tuned ."));
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(outcome.errors.find("vek-tune"), std::string::npos);
  EXPECT_NE(outcome.output.find("\nlast\t120\t5\t"), std::string::npos);
  EXPECT_FALSE(fs::exists("vek.log"));
  fs::remove("test");
  write_text("test", test_);
  ASSERT_EQ(run(VEK_PROGRAM " .").status, 0);
  const double before = f_in_log();
  ASSERT_EQ(run(VEK_PROGRAM " -r tuned .").status, 0);
  const std::string tuned = read_text("tuned.rc");
  EXPECT_GT(f_in_log(), before + 10.0) << tuned;
  EXPECT_EQ(f_in(tuned), f_in_log(false));
}

TEST_F(TuneTest, FindsTheSameWithAnyNumberOfProcessors) {
  const Outcome first = run(tune + std::string("-o a.rc ."));
  const Outcome second = run("taskset -c 0 " + (tune + std::string("-o b ./")));
  EXPECT_EQ(first.output, second.output);
  std::string a = read_text("a.rc");
  EXPECT_EQ(a.substr(a.find("\n# How")), [] {
    const std::string b = read_text("b.rc");
    return b.substr(b.find("\n# How"));
  }());
}

// Where pairs are all different, each is but noise.
TEST_F(TuneTest, LeavesOutPairsThatHarm) {
  std::minstd_rand dice(7);
  const auto word = [](const char *start, unsigned number) {
    return start + std::string(1, char('a' + number / 20)) +
           std::string(1, char('a' + number % 20)) + "u ";
  };
  for (int i = 0; i < 120; ++i) {
    std::string text;
    for (int k = 0; k < 40; ++k) {
      text += word("noi", unsigned(dice() % 60));
      if (k == 20)
        text += word("cla", unsigned(i % 4) * 5 + unsigned(dice() % 5));
    }
    write_text("files/d" + std::to_string(i) + ".txt", text);
  }
  write_text("vek.rc", "[General] analyser \"" VEK_ANALYSE_PROGRAM
                       " -l none\" datadirectory \"known/\"\n");
  EXPECT_EQ(run(tune + std::string("-o tuned .")).status, 0);
  const std::string tuned = read_text("tuned.rc");
  EXPECT_NE(tuned.find(" -l none -t words\"\n"), std::string::npos) << tuned;
  EXPECT_NE(tuned.find("\ndatadirectory \"known-words\"\n"), std::string::npos);
  fs::remove("test");
  EXPECT_EQ(run(VEK_PROGRAM " -r tuned .").status, 0);
  EXPECT_EQ(f_in(tuned), f_in_log(false));
}

TEST_F(TuneTest, LeavesAKeptModelAlone) {
  fs::remove("test");
  write_text("vek.rc", "[General] analyser \"\" save on predictions on\n");
  ASSERT_EQ(run(VEK_PROGRAM " .").status, 0);
  const auto files_of = [] {
    std::map<std::string, std::string> files;
    for (const auto &entry : fs::directory_iterator("data"))
      files[entry.path()] = read_text(entry.path());
    files["log"] = read_text("vek.log");
    files["scores"] = read_text("scores.dat");
    return files;
  };
  const auto before = files_of();
  EXPECT_EQ(run(tune + std::string("-b 0.01 -o tuned .")).status, 0);
  EXPECT_EQ(files_of(), before);
  EXPECT_NE(read_text("tuned.rc").find("\nsave on\npredictions on\n"),
            std::string::npos);
  // A document more is analysed, and no class file changes.
  write_text("files/more.txt", "c1 other");
  write_text("train", train_ + "more k1\n");
  EXPECT_EQ(run(tune + std::string("-b 0.01 -o more .")).status, 0);
  auto after = files_of();
  EXPECT_NE(after, before);
  for (const char *name : {"data/atoms.dat", "data/terms.dat",
                           "data/profile-store.000", "data/profile-store.idx"})
    after[name] = before.at(name);
  EXPECT_EQ(after, before);
}

TEST_F(TuneTest, KeepsTheBestSoFarAtASignal) {
  ASSERT_EQ(run(tune + std::string("-b 0.01 -o x .")).status, 0);
  // A pipe too short for the whole table: the search waits in it.
  int ends[2] = {};
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  fcntl(ends[0], F_SETPIPE_SZ, 4096);
  const pid_t pid = fork();
  if (pid == 0) {
    dup2(ends[1], STDOUT_FILENO);
    execl(VEK_TUNE_PROGRAM, "vek-tune", "-o", "tuned", ".", nullptr);
    std::_Exit(99);
  }
  close(ends[1]);
  char bytes[512];
  ASSERT_GT(read(ends[0], bytes, 100), 0);
  kill(pid, SIGINT);
  while (read(ends[0], bytes, sizeof bytes) > 0) {
  }
  int status = 0;
  waitpid(pid, &status, 0);
  close(ends[0]);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
  EXPECT_NE(read_text("tuned.rc").find("\ntraining "), std::string::npos);
  EXPECT_FALSE(fs::exists("tuned.rc.part"));
}

TEST_F(TuneTest, TellsWhatIsWrong) {
  ASSERT_EQ(run(tune + std::string("-b 0.01 -o there .")).status, 0);
  write_text("one/train", "d0 a\nd1 a\n");
  write_text("bad/train", "d0 a\nd1\n");
  write_text("none/train", "d0 a\nd999 b\n");
  write_text("bad.rc", "[General]\nfoo 3\n");
  write_text("directory.rc/file", "");
  const int data = open("data", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const struct {
    const char *arguments;
    std::string message;
    int lock = LOCK_UN;
  } cases[] = {
      {"-o there .", "there.rc: it is there already; --force replaces it"},
      {"-f -o directory .", "directory.rc: Is a directory"},
      {"-b nan -o new .", "--budget: it is no number"},
      {"-o no/where .", "no/where.rc: No such file or directory"},
      {"-o new one", "one: the training list names fewer than two classes"},
      {"-o new bad", "bad/train: line 2: format error"},
      {"-o new files", "files/train: No such file or directory"},
      {"-o new none", "vek: the documents could not be analysed"},
      {"-o new -r bad .",
       "bad.rc: line 2: before `foo': parse error: invalid general parameter"},
      {"-o new .", "data: process " + std::to_string(getpid()) + " is using it",
       LOCK_EX},
  };
  for (const auto &[arguments, message, lock] : cases) {
    flock(data, lock);
    const Outcome outcome = run(tune + std::string(arguments));
    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(outcome.errors.ends_with("vek-tune: " + message + '\n'))
        << outcome.errors;
  }
  close(data);
  EXPECT_FALSE(fs::exists("new.rc"));
  EXPECT_EQ(run(tune + std::string("-f -b 0.01 -o there .")).status, 0);
}

}  // namespace
}  // namespace vek::tuning
