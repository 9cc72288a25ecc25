#include "answering/manifest.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include "support/temporary_directory.h"

namespace vek {
namespace {

namespace fs = std::filesystem;

std::string replaced(std::string text, const std::string &what,
                     const std::string &with) {
  const std::size_t place = text.find(what);
  EXPECT_NE(place, std::string::npos) << what;
  return text.replace(place, what.size(), with);
}

class ManifestTest : public testing::Test {
 protected:
  ManifestTest() {
    for (const char *name :
         {"vek.rc", "data/atoms.dat", "data/terms.dat", "data/classes"}) {
      write_text(std::string("m/") + name, name);
      EXPECT_TRUE(sum_file(std::string("m/") + name, {}, manifest_.files[name],
                           failure_));
    }
    manifest_.version = packing_version();
    manifest_.date = "2026-01-31T23:59:59Z";
    manifest_.classifier = "Winnow";
    manifest_.documents = 72;
    manifest_.classes = 10;
    manifest_.test = {36, 91.67, 82.5, 86.84, 0.0};
    write_text("m/manifest.json", manifest_.text());
  }

  std::string fault_of(const std::string &text) const {
    Manifest manifest;
    std::string fault;
    return manifest.parse(text, fault) ? "" : fault;
  }
  std::string check() {
    return check_packed_model("m", failure_) ? "" : failure_.text();
  }

  TemporaryDirectory directory_;
  Manifest manifest_;
  Failure failure_;
};

TEST_F(ManifestTest, ReadsWhatItWrites) {
  EXPECT_EQ(manifest_.files["vek.rc"].sha256,
            // printf vek.rc | sha256sum
            "3a333c4c6bbd88fca69fcb5d067453f0cb068aa97714a439b1c4f43033fd88e0");
  Manifest found;
  ASSERT_TRUE(found.read("m", failure_)) << failure_.text();
  EXPECT_EQ(found, manifest_);
  EXPECT_EQ(check(), "");
  fs::remove("m/manifest.json");
  EXPECT_EQ(check(), "");
}

TEST_F(ManifestTest, RefusesOthers) {
  const std::string good = manifest_.text();
  const std::pair<const char *, const char *> changes[] = {
      {"\"format\": 1", "\"format\": 2"},
      {"\"format\": 1", "\"format\": -1"},
      {"\"vek\": \"1.4\"", "\"vek\": \"1.10\""},
      {"\"vek\": \"1.4\"", "\"vek\": \"new\""},
      {"\"vek\": \"1.4\"", "\"vek\": 1.4"},
      {"\"documents\": 72", "\"documents\": \"72\""},
      {"\"f\": 86.84", "\"g\": 86.84"},
      {"data/atoms.dat", "data/../../atoms.dat"},
      {"data/atoms.dat", "/etc/passwd"},
      {"data/atoms.dat", "data/class0.cpf"},
      {"\"sha256\": \"", "\"sha256\": \"x"},
      {"\"bytes\": ", "\"bytes\": -"},
      {"\n}", ""},
  };
  const std::string faults[] = {
      "its format is 2, and this program knows 1; use a later vek",
      "a member is missing or of the wrong kind",
      "packed by vek 1.10, a later one than this, 1.4",
      "`new' is no version of vek",
      "a member is missing or of the wrong kind",
      "a member is missing or of the wrong kind",
      "a member is missing or of the wrong kind",
      "`data/../../atoms.dat' is no file of a packed model",
      "`/etc/passwd' is no file of a packed model",
      "it does not name data/atoms.dat",
      "no SHA-256 of `data/atoms.dat'",
      "a member is missing or of the wrong kind",
      "no JSON at byte " + std::to_string(good.size() - 1),
  };
  for (std::size_t i = 0; i < std::size(changes); ++i) {
    EXPECT_EQ(fault_of(replaced(good, changes[i].first, changes[i].second)),
              faults[i]);
  }
  EXPECT_EQ(fault_of(""), "no JSON at byte 1");
  EXPECT_EQ(fault_of("[]"), "a member is missing or of the wrong kind");
  EXPECT_EQ(fault_of(std::string(1000000, '[')).substr(0, 7), "no JSON");
  std::string deep;
  for (int i = 0; i < 100000; ++i)
    deep += "{\"a\":";
  EXPECT_EQ(fault_of(deep + "1" + std::string(100000, '}')), "nested too deep");
}

TEST_F(ManifestTest, FindsWhatIsNotAsPacked) {
  const std::pair<std::function<void()>, std::string> cases[] = {
      {[] { write_text("m/vek.rc", "vek.rd"); },
       "m/vek.rc: it is not as it was packed"},
      {[] { write_text("m/vek.rc", "vek.rc "); },
       "m/vek.rc: it has 7 bytes and not the 6 that were packed"},
      {[] { fs::remove("m/data/classes"); },
       "m/data/classes: No such file or directory"},
      {[] {
         fs::remove("m/vek.rc");
         mkfifo("m/vek.rc", 0600);
       },
       "m/vek.rc: it has 0 bytes and not the 6 that were packed"},
      {[] { write_text("m/data/class3.cpf", ""); },
       "m/data/class3.cpf: it was not packed; a model that has learnt since "
       "needs no manifest.json"},
      {[] { write_text("m/data/class-files.dat", ""); },
       "m/data/class-files.dat: it was not packed; a model that has learnt "
       "since needs no manifest.json"},
      {[] { write_text("m/import.json", ""); },
       "m/import.json: it was not packed"},
      // What vek appends, and what judging does not read.
      {[] { write_text("m/data/atoms.dat", "data/atoms.datnew"); }, ""},
      {[] { write_text("m/data/atoms.dat", "data/atoms.da"); },
       "m/data/atoms.dat: it has 13 bytes and not the 14 that were packed"},
      {[] { write_text("m/data/atoms.dat", "Data/atoms.datnew"); },
       "m/data/atoms.dat: it is not as it was packed"},
      {[] { write_text("m/data/profile-store.000", "x"); }, ""},
      {[] { write_text("m/train", "x"); }, ""},
  };
  fs::copy("m", "before", fs::copy_options::recursive);
  for (const auto &[change, expected] : cases) {
    change();
    EXPECT_EQ(check(), expected);
    fs::remove_all("m");
    fs::copy("before", "m", fs::copy_options::recursive);
  }
}

}  // namespace
}  // namespace vek
