#include "tune/workers.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>

#include "base/helpers.h"
#include "tune/stopping.h"

namespace vek::tuning {
namespace {

struct Worker {
  std::size_t trial = 0;
  pid_t pid = 0;
  int pipe = -1;
  std::string bytes;
};

bool write_all(int fd, const void *bytes_P, std::size_t size) {
  const char *rest_P = static_cast<const char *>(bytes_P);
  while (size > 0) {
    const ssize_t count = retry([=] { return ::write(fd, rest_P, size); });
    if (count <= 0)
      return false;
    rest_P += count;
    size -= std::size_t(count);
  }
  return true;
}

// The child's half. Only its parent reads, so records go as they are.
[[noreturn]] void work(const Examples &examples, const Trial &trial, int pipe,
                       pid_t parent) {
  forget_stop_signals();
  // Nobody would read what it finds.
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent)
    _exit(1);
  bool is_written = true;
  try {
    for (const Decisions &decisions : try_out(examples, trial)) {
      is_written = is_written && write_all(pipe, decisions.data(),
                                           decisions.size() * sizeof(Decision));
    }
  } catch (const std::exception &) {
    // As without memory.
    is_written = false;
  }
  // Past all destructors: what they would free is the parent's too.
  _exit(is_written ? 0 : 1);
}

bool start(const Examples &examples, const std::vector<Trial> &trials,
           std::size_t number, Worker &worker) {
  int ends[2] = {};
  if (pipe2(ends, O_CLOEXEC) != 0)
    return false;
  const pid_t parent = getpid();
  const pid_t pid = fork();
  if (pid == 0)
    work(examples, trials[number], ends[1], parent);
  close(ends[1]);
  if (pid < 0) {
    close(ends[0]);
    return false;
  }
  worker = {number, pid, ends[0], {}};
  return true;
}

// False at the end.
bool read_more(Worker &worker) {
  char buffer[65536];
  const ssize_t count =
      retry([&] { return ::read(worker.pipe, buffer, sizeof buffer); });
  if (count > 0)
    worker.bytes.append(buffer, std::size_t(count));
  return count > 0;
}

std::vector<Decisions> finish(const Worker &worker, const Trial &trial) {
  close(worker.pipe);
  int status = 0;
  retry([&] { return waitpid(worker.pid, &status, 0); });
  const std::size_t size = trial.nr_docs * sizeof(Decision);
  const std::size_t nr_ways = 1 + trial.other_judging.size();
  if (status != 0 || worker.bytes.size() != nr_ways * size)
    return {};
  std::vector<Decisions> results(nr_ways, Decisions(trial.nr_docs));
  for (std::size_t i = 0; i < nr_ways; ++i)
    std::memcpy(results[i].data(), worker.bytes.data() + i * size, size);
  return results;
}

}  // namespace

std::vector<std::vector<Decisions>> run_trials(
    const Examples &examples, const std::vector<Trial> &trials,
    const std::function<void(const Trial &trial)> &is_done) {
  std::vector<std::vector<Decisions>> results(trials.size());
  std::vector<Worker> workers;
  std::size_t next = 0;
  const std::size_t nr_processors =
      std::max(1U, std::thread::hardware_concurrency());
  while (stop_signal() == 0) {
    while (next < trials.size() && workers.size() < nr_processors) {
      Worker worker;
      if (start(examples, trials, next, worker)) {
        workers.push_back(std::move(worker));
      } else if (!workers.empty()) {
        break;  // when one of them has ended there may be room
      }
      ++next;
    }
    if (workers.empty())
      return results;
    std::vector<pollfd> pipes;
    for (const Worker &worker : workers)
      pipes.push_back({worker.pipe, POLLIN, 0});
    if (poll(pipes.data(), pipes.size(), -1) < 0)
      continue;
    for (std::size_t i = workers.size(); i-- > 0;) {
      if (pipes[i].revents == 0 || read_more(workers[i]))
        continue;
      results[workers[i].trial] = finish(workers[i], trials[workers[i].trial]);
      is_done(trials[workers[i].trial]);
      workers.erase(workers.begin() + std::ptrdiff_t(i));
    }
  }
  for (const Worker &worker : workers) {
    kill(worker.pid, SIGKILL);
    close(worker.pipe);
    retry([&] { return waitpid(worker.pid, nullptr, 0); });
  }
  return results;
}

}  // namespace vek::tuning
