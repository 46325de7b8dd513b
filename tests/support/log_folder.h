// A folder of the test's own for the command log, which goes where temporary files go.
#pragma once

#include <cstdlib>
#include <filesystem>

#include "tests/support/temporary_folder.h"

namespace zem::testing {

class LogFolder {
 public:
  LogFolder() { setenv("TMPDIR", folder_.path().c_str(), 1); }
  ~LogFolder() { setenv("TMPDIR", before_.c_str(), 1); }
  LogFolder(const LogFolder&) = delete;
  LogFolder& operator=(const LogFolder&) = delete;

  std::filesystem::path LogPath() const { return folder_.path() / "ZemWrenCmdLog.txt"; }

 private:
  const std::filesystem::path before_ = std::filesystem::temp_directory_path();
  const TemporaryFolder folder_;
};

}  // namespace zem::testing
