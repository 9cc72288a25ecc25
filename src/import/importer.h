// From sources to an examples directory.
#ifndef VEK_IMPORT_IMPORTER_H_
#define VEK_IMPORT_IMPORTER_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "base/output_file.h"
#include "base/progress_line.h"
#include "convert/record.h"
#include "convert/settings.h"
#include "import/directory.h"
#include "import/document.h"
#include "import/examples.h"
#include "import/staging.h"

namespace vek::importing {

// What an import came to.
struct Summary {
  std::size_t nr_new = 0;
  std::size_t nr_known = 0;
  std::size_t nr_changed = 0;  // of those that are known: have another text
  std::map<std::string, std::size_t> rejects;  // by reason
  std::size_t nr_rejects = 0;
  std::size_t nr_train = 0;  // of all imports, like the following
  std::size_t nr_test = 0;
  std::size_t nr_classes = 0;
  std::size_t nr_inner = 0;  // documents in classes that have sons
  std::size_t nr_near = 0;
  bool has_new_resource_file = false;
};

class Importer : public convert::Sink {
 public:
  Importer(std::string program, bool is_quiet);

  // Opens the directory and reads what is known of it.
  bool open(const std::string &path, Failure &failure);

  // How much goes to the test list: "0.3", a share, or "500", a number of
  // documents; empty: as before, at first 0.3. False if it was something else
  // before.
  bool set_test(const std::string &test, Failure &failure);

  // Reads a source, with the settings that are kept of it where `told` is
  // silent, and keeps them.
  bool read_source(const std::string &path, const convert::Settings &told,
                   Failure &failure);

  // Deals the documents and puts everything in its place.
  bool finish(Failure &failure);

  const Summary &summary() const { return summary_; }

  bool wants(const std::string &key, bool is_id) override;
  void take(convert::Record &record) override;
  void reject(const std::string &place, const std::string &reason,
              std::string_view begin) override;

 private:
  bool set_classes(const convert::Record &record, Document &document,
                   std::string &fields);
  bool is_repeated(const convert::Record &record, const Document &document);
  bool write_text(const convert::Record &record, const Document &document,
                  std::string &name);
  std::uint64_t key_hash(const std::string &key, bool is_id) const;
  void withdraw(const std::string &line);
  bool stage_documents(Staging &staging, Failure &failure);
  void count_documents();

  ExamplesDirectory directory_;
  const std::string program_;
  ProgressLine progress_;
  Summary summary_;

  Examples examples_;
  std::size_t nr_old_ = 0;  // documents
  std::string source_;      // that is being read
  bool is_folder_ = false;
  const convert::Settings *settings_P_ = nullptr;

  OutputFile new_names_;
  OutputFile new_rejects_;
  std::size_t nr_new_rejects_ = 0;
  std::size_t nr_shown_ = 0;
  bool has_new_settings_ = false;
  bool has_failed_ = false;  // while a text was written
  Failure write_failure_;
};

}  // namespace vek::importing

#endif  // VEK_IMPORT_IMPORTER_H_
