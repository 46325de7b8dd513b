// One run of the tool.
#pragma once

#include <string>
#include <vector>

namespace zemctl {

// Runs a command line (UTF-8, the program's name first) and returns the exit code.
int Run(std::vector<std::string> commandLine);

}  // namespace zemctl
