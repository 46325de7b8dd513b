// What a small test station does with each camera.
#pragma once

#include <string>

struct Report {
  bool isPassed = false;
  std::string version;  // of the firmware; empty where it was not read
  std::string reason;   // why the camera did not pass
};

// Checks the first default camera: its firmware answers, and a register keeps what is written to
// it.
Report CheckCamera();
