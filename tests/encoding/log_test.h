// The ground of tests that look at the command log: a folder of their own for it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/support/device_test.h"

namespace zem::testing {

class LogTest : public DeviceTest {
 protected:
  LogTest() { setenv("TMPDIR", folder_.c_str(), 1); }
  ~LogTest() override {
    setenv("TMPDIR", before_.c_str(), 1);
    std::filesystem::remove_all(folder_);
  }

  std::filesystem::path LogPath() const { return folder_ / "ZemWrenCmdLog.txt"; }

  // Everything logged so far; the log starts anew.
  std::string TakeLog() {
    std::ifstream file(LogPath(), std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(file)), {});
    std::filesystem::remove(LogPath());
    return text;
  }

 private:
  static std::filesystem::path MakeFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "zem-log-XXXXXX").string();
    EXPECT_NE(mkdtemp(name.data()), nullptr);
    return name;
  }

  const std::filesystem::path before_ = std::filesystem::temp_directory_path();
  const std::filesystem::path folder_ = MakeFolder();
};

// The header of a log line at the simulated system's time of day.
inline std::string Header(const std::string& direction, const std::string& result = "00000000") {
  return "2024/3/5 7:8:9 : " + direction + " : HRESULT=0x" + result + " :";
}

}  // namespace zem::testing
