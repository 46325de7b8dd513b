// A folder of the test's own, removed with all its files when it goes out of scope.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace zem::testing {

class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return folder_; }

  // Path of a file in the folder, as the library takes it.
  std::wstring Path(const std::string& name) const { return (folder_ / name).wstring(); }
  bool Exists(const std::string& name) const { return std::filesystem::exists(folder_ / name); }

  void Write(const std::string& name, const std::vector<std::uint8_t>& bytes) const;
  std::vector<std::uint8_t> Read(const std::string& name) const;

 private:
  std::filesystem::path folder_;
};

}  // namespace zem::testing
