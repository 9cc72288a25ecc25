#include "sort/sorter.h"

#include <unistd.h>

#include <chrono>
#include <ctime>

#include "base/textio.h"
#include "data/names.h"
#include "sort/folders.h"
#include "sort/signals.h"

namespace vek::sorting {
namespace {

using keeping::escaped;
using Clock = std::chrono::steady_clock;

// A batch is synced as a whole; it ends with so many texts, or when its first
// one has waited so long.
constexpr std::size_t batch_size = 512;
constexpr std::chrono::milliseconds batch_time(500);
// Failures that are not told twice; of more some are.
constexpr std::size_t most_told = 10000;

// Places are separated by blanks.
std::string escaped_place(const std::string &place) {
  std::string text = escaped(place);
  for (std::size_t at = text.find(' '); at != std::string::npos;
       at = text.find(' ', at + 1))
    text.replace(at, 1, "\\x20");
  return text;
}

struct LogFields {
  std::string name;
  const char *result = "";
  std::string reason;
};

std::string log_line(const LogFields &fields,
                     const std::vector<std::string> &places,
                     const Verdict &verdict, const std::string &model_id) {
  std::string line =
      keeping::date(static_cast<std::uint32_t>(std::time(nullptr)));
  line += '\t' + escaped(fields.name) + '\t' + fields.result + '\t';
  for (const std::string &place : places)
    line += (&place == &places.front() ? "" : " ") + escaped_place(place);
  std::string scores;
  line += '\t';
  for (const Verdict::Choice &choice : verdict.choices) {
    const char *between_P = &choice == &verdict.choices.front() ? "" : " ";
    line += between_P + escaped(choice.class_name);
    scores += between_P;
    append_real(scores, choice.score);
  }
  line += '\t' + scores + '\t' + (verdict.has_probabilities ? scores : "");
  return line + '\t' + model_id + '\t' + escaped(fields.reason);
}

}  // namespace

void Sorter::leave(const Failure &failure) {
  ++counts_.nr_failed;
  if (told_.size() > most_told)
    told_.clear();
  if (told_.insert(failure.text()).second)
    report_(failure);
}

Sorter::Read Sorter::judge(const Arrival &arrival, Delivery &delivery,
                           Failure &failure) {
  const std::string path = arrivals_.path_of(arrival.name);
  delivery = {path, arrival.identity, {}, "", Placing::State::begun, {}};
  LogFields fields = {arrival.name, "rejected", ""};
  std::string text;
  Verdict verdict;
  std::vector<std::string> folders = {rejected_folder};
  const TextReader::Result read =
      reader_.read(path, arrival.is_mail, text, fields.reason);
  if (read == TextReader::Result::gone)
    return Read::passed_over;
  if (read == TextReader::Result::system) {
    leave({path, "", fields.reason});
    return Read::passed_over;
  }
  std::size_t Counts::*result = &Counts::nr_rejected;
  if (read == TextReader::Result::read) {
    const Answers::Result answered =
        answers_.answer(text, verdict, fields.reason);
    if (answered == Answers::Result::system) {
      failure = {path, "", fields.reason};
      return Read::failed;
    }
    if (answered == Answers::Result::answered) {
      result = verdict.is_sure ? &Counts::nr_sorted : &Counts::nr_unsure;
      fields.result = verdict.is_sure ? "sorted" : "unsure";
      folders = {unsure_folder};
    }
  }
  if (verdict.is_sure) {
    folders.clear();
    for (const Verdict::Choice &choice : verdict.choices)
      folders.push_back(folder_of_class(choice.class_name));
  }
  // What may not be read can be moved, but not copied.
  if (mode_ == Mode::move || access(path.c_str(), R_OK) == 0)
    delivery.places = target_.find_places(folders, last_part(arrival.name));
  delivery.log_line =
      log_line(fields, delivery.places, verdict, answers_.model_id());
  results_.push_back(result);
  return Read::ready;
}

bool Sorter::sort(const std::vector<Arrival> &texts, ProgressLine &progress,
                  Failure &failure) {
  Clock::time_point begin;
  for (const Arrival &arrival : texts) {
    if (stop_signal() != 0)
      break;
    if (mode_ != Mode::move &&
        target_.known().has(arrivals_.path_of(arrival.name),
                            arrival.identity)) {
      progress.count(true);
      continue;
    }
    Delivery delivery;
    const Read read = judge(arrival, delivery, failure);
    if (read == Read::failed) {
      // What was read before is good.
      Failure second;
      deliver(progress, second);
      return stop_signal() != 0;
    }
    if (read == Read::passed_over)
      continue;
    if (batch_.empty())
      begin = Clock::now();
    batch_.push_back(std::move(delivery));
    if ((batch_.size() == batch_size || Clock::now() - begin > batch_time) &&
        !deliver(progress, failure))
      return false;
  }
  return deliver(progress, failure);
}

bool Sorter::deliver(ProgressLine &progress, Failure &failure) {
  const bool is_delivered = target_.deliver(batch_, failure);
  for (std::size_t i = 0; is_delivered && i < batch_.size(); ++i) {
    progress.count();
    if (batch_[i].state == Placing::State::done)
      ++(counts_.*results_[i]);
    else if (batch_[i].state == Placing::State::failed)
      leave(batch_[i].failure);
  }
  batch_.clear();
  results_.clear();
  return is_delivered;
}

}  // namespace vek::sorting
