// The ground of tests that look at the command log: a folder of their own for it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/support/device_test.h"
#include "tests/support/log_folder.h"

namespace zem::testing {

class LogTest : public DeviceTest {
 protected:
  std::filesystem::path LogPath() const { return folder_.LogPath(); }

  // Everything logged so far; the log starts anew.
  std::string TakeLog() {
    std::ifstream file(LogPath(), std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(file)), {});
    std::filesystem::remove(LogPath());
    return text;
  }

 private:
  const LogFolder folder_;
};

// The header of a log line at the simulated system's time of day.
inline std::string Header(const std::string& direction, const std::string& result = "00000000") {
  return "2024/3/5 7:8:9 : " + direction + " : HRESULT=0x" + result + " :";
}

}  // namespace zem::testing
