#include "sort/stream.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/helpers.h"
#include "convert/lines.h"
#include "convert/rows.h"
#include "sort/text_reader.h"

namespace vek::sorting {
namespace {

using Json = nlohmann::ordered_json;

// As for the text.
constexpr int deepest = 100;

// The text of one line, composed as an import does it.
class LineText : public convert::Sink {
 public:
  bool wants(const std::string &, bool) override { return true; }
  void take(convert::Record &record) override {
    text = std::move(record.text);
    reason = fault_of_text(text);
  }
  void reject(const std::string &, const std::string &why,
              std::string_view) override {
    reason = why;
  }

  std::string text;
  std::string reason = "empty";
};

// The member of a line at a path with full stops; null if there is none, and if
// the line is no JSON or nested so deep that the stack would not do.
Json find_member(const std::string &line, const std::string &path) {
  bool is_deep = false;
  const Json json = Json::parse(
      line,
      [&is_deep](int depth, Json::parse_event_t, Json &) {
        is_deep |= depth > deepest;
        return !is_deep;
      },
      false);
  if (is_deep)
    return nullptr;
  const Json *member_P = &json;
  for (std::string_view rest = path;;) {
    const std::string_view name = rest.substr(0, rest.find('.'));
    if (!member_P->is_object() || !member_P->contains(std::string(name)))
      return nullptr;
    member_P = &(*member_P)[std::string(name)];
    if (name.size() == rest.size())
      return *member_P;
    rest.remove_prefix(name.size() + 1);
  }
}

Json answer_of(const Verdict &verdict) {
  Json classes = Json::array();
  Json scores = Json::array();
  for (const Verdict::Choice &choice : verdict.choices) {
    classes.push_back(choice.class_name);
    scores.push_back(choice.score);
  }
  Json answer = {{"result", verdict.is_sure ? "sorted" : "unsure"},
                 {"classes", std::move(classes)},
                 {"scores", scores}};
  if (verdict.has_probabilities)
    answer["probabilities"] = std::move(scores);
  return answer;
}

}  // namespace

bool answer_stream(Answers &answers, const StreamFields &fields,
                   std::ostream &out, std::size_t &nr_rejected,
                   Failure &failure) {
  convert::Lines lines([&out](char *to, std::size_t size) {
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    if (poll(&input, 1, 0) == 0)
      out.flush();
    return retry([&] { return read(STDIN_FILENO, to, size); });
  });
  convert::Settings settings;
  settings.text = fields.text.empty() ? answers.row_fields() : fields.text;
  std::string line;
  for (nr_rejected = 0; out;) {
    const convert::Lines::Result result = lines.next(line);
    if (result == convert::Lines::Result::end)
      break;
    if (result == convert::Lines::Result::failed) {
      failure = {"standard input", "", std::strerror(errno)};
      return false;
    }
    LineText text;
    convert::Lines one(convert::reader_of(line));
    if (result == convert::Lines::Result::too_long)
      text.reason = "a line of more than 40 MiB";
    else if (!convert::read_rows(convert::Form::jsonl, one, settings, {}, text,
                                 failure))
      text.reason = failure.reason;
    Json answer = {{"line", lines.number()}};
    // Of a line that is rejected as well, if it can be.
    if (result == convert::Lines::Result::line) {
      if (Json id = find_member(line, fields.id); !id.is_null())
        answer["id"] = std::move(id);
    }
    Verdict verdict;
    if (text.reason.empty()) {
      const Answers::Result answered =
          answers.answer(text.text, verdict, text.reason);
      if (answered == Answers::Result::system) {
        out.flush();
        failure = {"standard input", "line " + std::to_string(lines.number()),
                   text.reason};
        return false;
      }
      if (answered == Answers::Result::answered)
        answer.update(answer_of(verdict));
    }
    if (!text.reason.empty()) {
      ++nr_rejected;
      answer.update({{"result", "rejected"}, {"reason", text.reason}});
    } else {
      answer["model"] = answers.model_id();
    }
    out << answer.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
  }
  out.flush();
  if (!out)
    failure = {"standard output", "", std::strerror(errno)};
  return out.good();
}

}  // namespace vek::sorting
