// zemctl: the command-line host program of ZemUVCExtApi.dll.
#include <windows.h>
// shellapi.h leans on windows.h.
#include <shellapi.h>

#include <cstdio>
#include <exception>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/exit_codes.h"
#include "tools/zemctl/frame/program.h"

namespace {

int Run() {
  SetConsoleOutputCP(CP_UTF8);
  int count = 0;
  wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  arguments.reserve(static_cast<std::size_t>(count));
  for (int index = 0; index < count; ++index) {
    arguments.push_back(zemctl::Narrow(words[index]));
  }
  LocalFree(words);
  return zemctl::Program().Run(std::move(arguments));
}

}  // namespace

int main() {
  try {
    return Run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zemctl: %s.\n", error.what());
    return zemctl::kInternalError;
  }
}
