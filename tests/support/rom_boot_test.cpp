#include "tests/support/rom_boot_test.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace zem::testing {

RomBootTest::RomBootTest() {
  platform::simulated::Reset();
  sendAddressDivider = 0;
  Attach(L'F', volume);
  const auto* const test = ::testing::UnitTest::GetInstance()->current_test_info();
  std::string name = std::string(test->test_suite_name()) + "." + test->name();
  std::replace(name.begin(), name.end(), '/', '_');
  folder_ = std::filesystem::path(::testing::TempDir()) / ("zem_" + name);
  std::filesystem::remove_all(folder_);
  std::filesystem::create_directories(folder_);
}

RomBootTest::~RomBootTest() {
  ZEMROMAPI_CloseDevice(&session_);
  EXPECT_EQ(system().OpenVolumePaths(), leftOpen) << "volumes left open";
  EXPECT_EQ(system().invalidVolumeCalls, invalidVolumeCalls) << "a volume used that is not open";
  std::filesystem::remove_all(folder_);
  platform::simulated::Reset();
  sendAddressDivider = 0;
}

void* RomBootTest::session() {
  if (session_ == nullptr) {
    session_ = ZEMROMAPI_OpenDevice(1);
    EXPECT_NE(session_, nullptr);
    TakeCommands();
    TakeDebuggerLines();
    TakeSleeps();
  }
  return session_;
}

Lines RomBootTest::TakeCommands() {
  Lines lines;
  for (const VolumeControl& control : std::exchange(volume.controls, {})) {
    lines.push_back((control.IsIn() ? "in " : "out ") + HexText(control.cdb) + " [" +
                    std::to_string(control.length) + "]" + (control.failed ? " failed" : ""));
  }
  return lines;
}

std::wstring RomBootTest::PathOf(const std::string& name) const {
  return (folder_ / name).wstring();
}

std::wstring RomBootTest::WriteFile(const std::string& name, const Bytes& bytes) const {
  std::ofstream file(folder_ / name, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  return PathOf(name);
}

Bytes RomBootTest::ReadFile(const std::wstring& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  EXPECT_TRUE(file.is_open());
  return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

Bytes SomeBytes(std::size_t size, std::uint8_t first) {
  Bytes bytes(size);
  std::uint32_t state = first;
  for (std::uint8_t& byte : bytes) {
    byte = static_cast<std::uint8_t>(state);
    state = (state + 7) % 251;
  }
  return bytes;
}

Bytes PaddedToSectors(Bytes bytes) {
  bytes.resize((bytes.size() + 511) / 512 * 512);
  return bytes;
}

Bytes PartOf(const Bytes& bytes, std::size_t offset, std::size_t size) {
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
  return Bytes(begin, begin + static_cast<std::ptrdiff_t>(size));
}

}  // namespace zem::testing
