// The manifest of a packed model: what it is, how good it was in its test, and
// the size and sum of each file that judging reads, so that a model that came
// over a network or was tampered with is told from the one that was packed.
//
// A packed model is a directory that looks like the one in which vek is called:
// `vek.rc`, `data` with vocabulary and class files, `import.json` if texts are
// converted, and `manifest.json`. vek may work in it: the tables of the
// vocabulary only grow, so that the sum of their begin stays good, and the
// profile store is not part of the model.
#ifndef VEK_ANSWERING_MANIFEST_H_
#define VEK_ANSWERING_MANIFEST_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "base/failure.h"

namespace vek {

inline constexpr char manifest_name[] = "manifest.json";

// Where the parts of a packed model lie in it.
inline constexpr char packed_settings[] = "vek.rc";
inline constexpr char packed_conversion[] = "import.json";
inline constexpr char packed_data[] = "data";

struct Manifest {
  // Of a test: the line `Total` of its report, in percent.
  struct Figures {
    std::uint64_t documents = 0;
    double precision = 0.0;
    double recall = 0.0;
    double f = 0.0;
    double fallout = 0.0;

    bool operator==(const Figures &) const = default;
  };
  struct File {
    std::uint64_t size = 0;  // bytes
    std::string sha256;      // 64 hexadecimal digits, in small letters

    bool operator==(const File &) const = default;
  };

  std::string version;  // of the vek that packed it: "1.4"
  std::string date;     // as 2026-01-31T23:59:59Z
  std::string classifier;
  std::uint64_t documents = 0;  // that were learnt from
  std::uint64_t classes = 0;    // with the top class
  // Nothing if no report of that kind is known.
  std::optional<Figures> test;
  std::optional<Figures> held_out;
  // By their paths in the packed model.
  std::map<std::string, File> files;

  bool operator==(const Manifest &) const = default;

  // The content of its file.
  std::string text() const;
  // Replaces all by what the text says. False, with `fault` filled in, if it is
  // no manifest, one of a later format or vek, or names a file that is no part
  // of a packed model.
  bool parse(std::string_view text, std::string &fault);

  // Reads that of a directory. False, with `failure` filled in, if it is
  // missing or bad.
  bool read(const std::string &directory, Failure &failure);
  // Compares the files of a directory with it: first what is there and all
  // sizes, then the sums. False, with `failure` filled in, at the first file
  // that is missing, damaged or one too many.
  bool verify(const std::string &directory, Failure &failure) const;
};

// Judging reads a file of that path in a packed model.
bool is_packed_file(std::string_view path);

// The size and sum of a file, or of its first bytes. False, with `failure`
// filled in, if it cannot be read or is shorter.
bool sum_file(const std::string &path, std::optional<std::uint64_t> size,
              Manifest::File &file, Failure &failure);

// Of this program: "1.4".
std::string_view packing_version();

// There is a manifest in the directory.
bool is_packed_model(const std::string &directory);

// Verifies a directory with a manifest. One without is no packed model, and
// good.
bool check_packed_model(const std::string &directory, Failure &failure);

}  // namespace vek

#endif  // VEK_ANSWERING_MANIFEST_H_
