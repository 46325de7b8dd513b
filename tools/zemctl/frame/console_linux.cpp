#include <unistd.h>

#include <csignal>

#include "tools/zemctl/frame/console.h"

namespace zemctl {

std::vector<std::string> CommandLine(int count, char** words) { return {words, words + count}; }

// Who no longer reads what is printed does not end what the camera is in the middle of.
void PrepareTerminal() { static_cast<void>(std::signal(SIGPIPE, SIG_IGN)); }

bool IsTerminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

void KeepLineEnds(std::FILE* /*stream*/) {}

}  // namespace zemctl
