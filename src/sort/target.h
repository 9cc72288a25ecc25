// The directory into which texts are sorted: what is brought there, the log of
// it, and what a killed process has left to do.
//
// A batch of texts is brought in steps, and each is on the disk before the next
// one: the journal says what is to be done, the texts get their places, the log
// and the list of what is known get their lines. A process that finds a journal
// does it all again; placing.h has why that is the same as once.
#ifndef VEK_SORT_TARGET_H_
#define VEK_SORT_TARGET_H_

#include <tsl/robin_map.h>
#include <tsl/robin_set.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "sort/known_texts.h"
#include "sort/placing.h"

namespace vek::sorting {

// What becomes of a text.
struct Delivery {
  std::string source;  // an absolute path
  Identity identity;   // when it was read
  // Below the target directory, the text's own first. Without any the text
  // stays where it is, and gets its line in the log alone.
  std::vector<std::string> places;
  std::string log_line;  // without its end

  // Set by Target::deliver().
  Placing::State state = Placing::State::begun;
  Failure failure;
};

class Target {
 public:
  // `path` is a directory, `log` a file, which need not be there.
  Target(std::string path, std::string log, Mode mode);

  // Makes the directory, if it is missing, and its state folder, whose lock has
  // to be taken before open() is called.
  bool make(Failure &failure);
  std::string state_path() const;

  // Does what the journal has, and reads what is known.
  bool open(Failure &failure);

  // Places, each free in its folder, for a text of that name: the first number
  // that is free in all of them. They are not given a second time before the
  // next batch.
  std::vector<std::string> find_places(const std::vector<std::string> &folders,
                                       std::string_view name);

  // All that can be delivered is. False if journal, log or disk fail; what was
  // begun is completed by the next open().
  bool deliver(std::vector<Delivery> &batch, Failure &failure);

  // Places that the journal names: texts that stand there have been brought,
  // even if they are not known yet.
  std::set<std::string> places_in_hand() const;

  const KnownTexts &known() const { return known_; }

 private:
  struct LogEnd {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
  };

  std::string path_of(std::string_view file) const;
  std::string journal_path() const;
  LogEnd find_log_end() const;
  bool write_journal(const std::vector<Delivery> &batch, const LogEnd &end,
                     Failure &failure) const;
  bool read_journal(Mode &mode, std::vector<Delivery> &batch,
                    LogEnd &end) const;
  bool complete(Mode mode, std::vector<Delivery> &batch, const LogEnd &end,
                bool is_again, Failure &failure);
  bool write_log(const std::vector<Delivery> &batch, const LogEnd &end,
                 Failure &failure) const;
  bool add_known(Mode mode, const std::vector<Delivery> &batch,
                 Failure &failure);

  const std::string path_;
  const std::string log_;
  const Mode mode_;
  KnownTexts known_;
  // Of this batch; and the numbers that names have got to, as a hint.
  tsl::robin_set<std::string> given_;
  tsl::robin_map<std::string, unsigned> numbers_;
};

}  // namespace vek::sorting

#endif  // VEK_SORT_TARGET_H_
