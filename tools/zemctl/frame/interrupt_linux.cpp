#include <poll.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

#include "tools/zemctl/frame/interrupt.h"

namespace zemctl {
namespace {

// What ends a program that a person or a service no longer wants.
constexpr std::array<int, 3> kSignals = {SIGINT, SIGTERM, SIGHUP};

std::atomic<bool> interrupted = false;
std::array<struct sigaction, kSignals.size()> earlier;

// From the second on, signals do what they did before.
void Restore() {
  for (std::size_t index = 0; index < kSignals.size(); ++index) {
    sigaction(kSignals[index], &earlier[index], nullptr);
  }
}

void Note(int /*signal*/) {
  interrupted = true;
  Restore();
}

}  // namespace

InterruptGuard::InterruptGuard() {
  interrupted = false;
  struct sigaction noted = {};
  noted.sa_handler = Note;
  sigemptyset(&noted.sa_mask);
  for (std::size_t index = 0; index < kSignals.size(); ++index) {
    sigaction(kSignals[index], nullptr, &earlier[index]);
  }
  for (std::size_t index = 0; index < kSignals.size(); ++index) {
    // What is ignored stays so: nohup, and a shell's jobs in the background.
    if (earlier[index].sa_handler != SIG_IGN) {
      sigaction(kSignals[index], &noted, nullptr);
    }
  }
}

InterruptGuard::~InterruptGuard() { Restore(); }

bool StopRequested() { return interrupted; }

std::optional<std::string> ReadAnswer() {
  std::string line;
  bool hasLine = false;
  while (!StopRequested()) {
    constexpr int kPollMilliseconds = 50;
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    const int ready = poll(&input, 1, kPollMilliseconds);
    if (ready == 0 || (ready < 0 && errno == EINTR)) {
      continue;
    }
    char character = 0;
    if (ready < 0 || read(STDIN_FILENO, &character, 1) != 1) {
      break;
    }
    hasLine = true;
    if (character == '\n') {
      break;
    }
    line += character;
  }
  return hasLine && !StopRequested() ? std::optional(line) : std::nullopt;
}

}  // namespace zemctl
