// The command line and the terminal, as the system has them.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace zemctl {

// The words of the command line in UTF-8, the program's name first. What main got is of use where
// that is UTF-8 already.
std::vector<std::string> CommandLine(int count, char** words);

// Lets the terminal take what is printed, as UTF-8.
void PrepareTerminal();

bool IsTerminal(std::FILE* stream);

// From here on, the line ends of what is written stay as they are.
void KeepLineEnds(std::FILE* stream);

}  // namespace zemctl
