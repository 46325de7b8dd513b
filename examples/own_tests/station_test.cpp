// Tests of the station without a camera: what does it say of a good one, and what when something
// goes wrong? Each test simulates a camera, lets the station check it, and looks at the report.
// Transfers are counted from 1: the firmware version is one write (1) and one read (2), and so is
// each register access.
#include <ZemSimulator.h>

#include <cstdio>
#include <string>

#include "camera_check.h"

namespace {

struct Case {
  const char* name;
  const char* cameras;  // the simulator's options
  Report wanted;
};

const Case kCases[] = {
    {"good_camera", "{}", {true, "01 02 03 04 05 06", ""}},
    // It takes the value and forgets it.
    {"wrong_value",
     R"({"cameras": [{"faults": ["drop@3"]}]})",
     {false, "01 02 03 04 05 06", "a register does not keep what is written to it"}},
    // The camera answers a transfer with a stall.
    {"stalled_transfer",
     R"({"cameras": [{"faults": ["fail@3"]}]})",
     {false, "01 02 03 04 05 06",
      "ZEMAPI_SetRegister: the command could not be written to the camera (ZEM_E_NO_DEVICE, "
      "0x80000003)"}},
    // Somebody pulls the cable before the version is read.
    {"unplugged",
     R"({"cameras": [{"faults": ["unplug@1"]}]})",
     {false, "",
      "ZEMAPI_GetFWVersion: the command could not be written to the camera (ZEM_E_NO_DEVICE, "
      "0x80000003)"}},
    {"no_camera",
     R"({"cameras": []})",
     {false, "", "ZEMAPI_OpenDevice: the library reports a failure (ZEM_E_FAIL, 0x80004005)"}},
};

bool IsSame(const char* what, const std::string& wanted, const std::string& found) {
  if (wanted != found) {
    std::printf("%s: wanted \"%s\", found \"%s\"\n", what, wanted.c_str(), found.c_str());
  }
  return wanted == found;
}

int Run(const Case& test) {
  if (ZemSimulatorStartPrivate(test.cameras) < 0) {
    std::printf("%s\n", ZemSimulatorLastError());
    return 1;
  }
  const Report report = CheckCamera();
  ZemSimulatorStop();
  const bool isVersionRight = IsSame("version", test.wanted.version, report.version);
  const bool isReasonRight = IsSame("reason", test.wanted.reason, report.reason);
  return isVersionRight && isReasonRight && report.isPassed == test.wanted.isPassed ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  for (const Case& test : kCases) {
    if (argc == 2 && std::string(argv[1]) == test.name) {
      return Run(test);
    }
  }
  std::printf("there is no such test\n");
  return 1;
}
