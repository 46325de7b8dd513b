#include "tools/zemctl/frame/confirm.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "tools/zemctl/frame/interrupt.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {

void Confirm(const Options& options, const std::string& what) {
  if (options.yes) {
    return;
  }
  std::fprintf(stderr, "%s. Go on? [y/N] ", what.c_str());
  std::fflush(stderr);
  std::string answer = ReadAnswer().value_or("");
  if (StopRequested()) {
    std::fputc('\n', stderr);
    throw Stopped("nothing was done");
  }
  answer.erase(answer.find_last_not_of("\r\n ") + 1);
  answer.erase(0, answer.find_first_not_of(' '));
  std::transform(answer.begin(), answer.end(), answer.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  if (answer != "y" && answer != "yes") {
    throw ToolFailure(kCancelled, "nothing was done", "Answer y, or give --yes.");
  }
}

}  // namespace zemctl
