// Every command of the tool as it is run by the sweep.
#pragma once

#include <string>
#include <vector>

struct SweptCommand {
  std::string line;         // the arguments, separated by blanks
  std::string camera = {};  // members of the camera's options, as JSON
  std::string boot = {};    // members of the boot loader's options; empty for none
  bool verifies = false;    // reads back what it wrote: it sees garbage
  bool mayBeShort = false;  // shows what came, however little
  std::string before = {};  // the arguments of what must be done first, if anything
};

const std::vector<SweptCommand>& SweptCommands();

// Writes the files that the commands read to the present folder.
void MakeInputFiles();

// What commands leave in that folder: files that they write, the camera's kept memory, the boot
// loader's storages.
const std::vector<std::string>& OutputFiles();
