// zemctl: the command-line host program of the library.
#include <cstdio>
#include <exception>

#include "tools/zemctl/frame/console.h"
#include "tools/zemctl/frame/exit_codes.h"
#include "tools/zemctl/frame/run.h"

int main(int count, char** words) {
  try {
    zemctl::PrepareTerminal();
    return zemctl::Run(zemctl::CommandLine(count, words));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zemctl: %s.\n", error.what());
    return zemctl::kInternalError;
  }
}
