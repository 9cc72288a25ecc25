// An analyser that answers by a script, well behaved or not. Its first argument
// names the script; it answers a request with the text of the file, which the
// test writes as analysis text.
//
// Where a test has to know how far the process has got, there is a FIFO
// `signal` in the working directory, to which the process writes a byte; where
// the process has to wait for the test, it reads the FIFO `go on` to its end.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <utility>

namespace {

void write_bytes(const std::string &bytes) {
  std::cout.write(bytes.data(), std::ssize(bytes));
  std::cout.flush();
}

void signal_test() {
  const int fd = open("signal", O_WRONLY);
  if (fd < 0 || write(fd, "!", 1) != 1)
    std::exit(1);
  close(fd);
}

void wait_for_test() {
  std::ifstream fifo("go on");
  fifo.get();
}

// Answers one request. What a script does not know, it leaves to others.
void answer(const std::string &script, const std::string &path) {
  if (script == "asked") {
    signal_test();
    wait_for_test();
  }
  std::ifstream stream(path, std::ios::binary);
  std::string text(std::istreambuf_iterator<char>(stream), {});
  if (script == "die within") {
    write_bytes(text);
    std::exit(3);
  }
  if (script == "killed")
    raise(SIGKILL);
  if (script == "close") {
    close(STDOUT_FILENO);
    return;
  }
  if (script == "bytes") {
    for (const char byte : std::exchange(text, ""))
      write_bytes({byte});
  }
  if (script == "nul")
    text += std::string("\0 hidden", 8);
  if (script == "huge")
    text = std::string(std::stoul(text), 'x');
  text += '\x01';
  if (script == "behind")
    text += " behind\n";
  write_bytes(text);
  if (script.starts_with("late")) {
    wait_for_test();
    write_bytes(script == "late text" ? " late" : "\r\n");
    signal_test();
  }
}

}  // namespace

int main(int count, char **arguments_P) {
  // Whatever a test does, nothing of it stays behind.
  alarm(60);
  std::string script = count > 1 ? arguments_P[1] : "echo";
  std::replace(script.begin(), script.end(), '-', ' ');
  std::string path;
  while (std::getline(std::cin, path))
    answer(script, path);
  // The end of the input is the end of the run.
  if (script == "lingers") {
    wait_for_test();
    signal_test();
  }
}
