#include "tests/support/temporary_folder.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace zem::testing {

TemporaryFolder::TemporaryFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "zem_test_XXXXXX").string();
  folder_ = ::mkdtemp(pattern.data());
}

TemporaryFolder::~TemporaryFolder() { std::filesystem::remove_all(folder_); }

void TemporaryFolder::Write(const std::string& name, const std::vector<std::uint8_t>& bytes) const {
  std::ofstream(folder_ / name, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

std::vector<std::uint8_t> TemporaryFolder::Read(const std::string& name) const {
  std::ifstream file(folder_ / name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace zem::testing
