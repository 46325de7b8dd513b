#include <windows.h>
// These lean on windows.h.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/console.h"

namespace zemctl {

std::vector<std::string> CommandLine(int /*count*/, char** /*words*/) {
  int count = 0;
  wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> line;
  line.reserve(static_cast<std::size_t>(count));
  for (int index = 0; index < count; ++index) {
    line.push_back(Narrow(words[index]));
  }
  LocalFree(words);
  return line;
}

void PrepareTerminal() { SetConsoleOutputCP(CP_UTF8); }

bool IsTerminal(std::FILE* stream) { return _isatty(_fileno(stream)) != 0; }

void KeepLineEnds(std::FILE* stream) {
  std::fflush(stream);
  static_cast<void>(_setmode(_fileno(stream), _O_BINARY));
}

}  // namespace zemctl
