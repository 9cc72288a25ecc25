#include "convert/json_fields.h"

#include <cstddef>
#include <nlohmann/json.hpp>

namespace vek::convert {
namespace {

constexpr std::size_t deepest = 100;

// Called by the parser for each token; what returns false ends it.
class FieldCollector : public nlohmann::json_sax<nlohmann::json> {
 public:
  FieldCollector(const std::vector<std::string> &names,
                 std::vector<std::vector<std::string>> &values)
      : names_(names), values_(values) {}

  bool null() override { return check_depth(); }
  bool boolean(bool value) override { return add(value ? "true" : "false"); }
  bool number_integer(number_integer_t value) override {
    return add(std::to_string(value));
  }
  bool number_unsigned(number_unsigned_t value) override {
    return add(std::to_string(value));
  }
  bool number_float(number_float_t, const string_t &text) override {
    return add(text);
  }
  bool string(string_t &value) override { return add(value); }
  bool binary(binary_t &) override { return false; }

  bool start_object(std::size_t) override {
    ends_.push_back(path_.size());
    return check_depth();
  }
  bool key(string_t &name) override {
    path_.resize(ends_.back());
    if (!path_.empty())
      path_ += '.';
    path_ += name;
    return true;
  }
  bool end_object() override {
    path_.resize(ends_.back());
    ends_.pop_back();
    return true;
  }
  bool start_array(std::size_t) override {
    ++nr_arrays_;
    return check_depth();
  }
  bool end_array() override {
    --nr_arrays_;
    return true;
  }
  bool parse_error(std::size_t position, const std::string &,
                   const nlohmann::json::exception &) override {
    reason_ = "no JSON at byte " + std::to_string(position);
    return false;
  }

  const std::string &reason() const { return reason_; }

 private:
  bool check_depth() {
    // Outside of all objects is what begins with something else.
    if (ends_.empty())
      reason_ = "no object; one is wanted on each line";
    else if (ends_.size() + nr_arrays_ > deepest)
      reason_ = "nested more than 100 deep";
    return reason_.empty();
  }
  bool add(const std::string &value) {
    if (!check_depth())
      return false;
    for (std::size_t i = 0; i < names_.size(); ++i) {
      if (path_ == names_[i])
        values_[i].push_back(value);
    }
    return true;
  }

  const std::vector<std::string> &names_;
  std::vector<std::vector<std::string>> &values_;
  std::string path_;
  std::vector<std::size_t> ends_;  // of the path outside of each open object
  std::size_t nr_arrays_ = 0;
  std::string reason_;
};

}  // namespace

std::string read_json_fields(std::string_view text,
                             const std::vector<std::string> &names,
                             std::vector<std::vector<std::string>> &values) {
  values.assign(names.size(), {});
  FieldCollector collector(names, values);
  nlohmann::json::sax_parse(text.begin(), text.end(), &collector);
  return collector.reason();
}

}  // namespace vek::convert
