#include "tests/support/rom_boot_test.h"

#include <array>
#include <cstdio>
#include <cwchar>
#include <fstream>
#include <iterator>

#include "platform/bytes.h"
#include "romboot/rom_boot_config.h"

namespace zem::testing {

namespace {

std::string TextOf(const VolumeControl& control) {
  return (control.IsIn() ? "in " : "out ") + HexText(control.cdb) + " [" +
         std::to_string(control.length) + "]" + (control.failed ? " failed" : "");
}

}  // namespace

RomBootTest::RomBootTest() {
  platform::simulated::Reset();
  ListenToSystem([this](std::string event) { events_.push_back(std::move(event)); });
  sendAddressDivider = 0;
  Attach(L'F', volume);
}

RomBootTest::~RomBootTest() {
  ZEMROMAPI_CloseDevice(&session_);
  EXPECT_EQ(system().OpenVolumePaths(), leftOpen) << "volumes left open";
  EXPECT_EQ(system().invalidVolumeCalls, invalidVolumeCalls) << "a volume used that is not open";
  platform::simulated::Reset();
  sendAddressDivider = 0;
}

void* RomBootTest::session() {
  if (session_ == nullptr) {
    session_ = ZEMROMAPI_OpenDevice(1);
    EXPECT_NE(session_, nullptr);
    TakeEvents();
  }
  return session_;
}

void RomBootTest::Attach(wchar_t letter, ScriptedVolume& scripted) {
  scripted.onControl = [this](const VolumeControl& control) { events_.push_back(TextOf(control)); };
  system().volumes[VolumePath(letter)] = scripted.Answer();
}

Lines RomBootTest::TakeEvents() {
  Lines events = std::exchange(events_, {});
  TakeCommands();
  TakeDebuggerLines();
  TakeSleeps();
  return events;
}

Lines RomBootTest::TakeCommands() {
  ForgetEvents("in ");
  ForgetEvents("out ");
  Lines lines;
  for (const VolumeControl& control : std::exchange(volume.controls, {})) {
    lines.push_back(TextOf(control));
  }
  return lines;
}

WideLines RomBootTest::TakeDebuggerLines() {
  ForgetEvents("line ");
  return std::exchange(system().debuggerLines, {});
}

std::vector<std::uint32_t> RomBootTest::TakeSleeps() {
  ForgetEvents("sleep ");
  return std::exchange(system().sleeps, {});
}

void RomBootTest::ForgetEvents(std::string_view start) {
  std::erase_if(events_, [start](const std::string& event) { return event.starts_with(start); });
}

Bytes RomBootTest::Stored(std::uint32_t address, std::size_t size) const {
  constexpr std::uint8_t kWriteStorage = 0x08;
  Bytes stored(size, 0xCC);
  for (const VolumeControl& control : volume.controls) {
    if (control.IsIn() || control.failed || control.cdb[3] != kWriteStorage) {
      continue;
    }
    const std::uint32_t start = LoadBe32(&control.cdb[4]);
    for (std::size_t index = 0; index < control.sent.size(); ++index) {
      const std::uint64_t place = std::uint64_t{start} + index - address;
      if (place < size) {
        stored[static_cast<std::size_t>(place)] = control.sent[index];
      }
    }
  }
  return stored;
}

void RomBootTest::SetAddressDivider(std::uint32_t divider) {
  static_cast<ZemRomBootConfig*>(session())->scsi.addressDivider = divider;
}

std::wstring RomBootTest::WriteFile(const std::string& name, const Bytes& bytes) const {
  folder_.Write(name, bytes);
  return PathOf(name);
}

Bytes RomBootTest::ReadFile(const std::wstring& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  EXPECT_TRUE(file.is_open());
  return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::wstring RomBootTest::WriteLongFile(const std::string& name, const Bytes& start,
                                        std::uint64_t size) const {
  std::wstring path = WriteFile(name, start);
  std::filesystem::resize_file(path, size);
  return path;
}

Bytes RomBootTest::ReadPart(const std::wstring& path, std::uint64_t offset, std::size_t size) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  file.seekg(static_cast<std::streamoff>(offset));
  Bytes part(size);
  file.read(reinterpret_cast<char*>(part.data()), static_cast<std::streamsize>(size));
  EXPECT_EQ(file.gcount(), static_cast<std::streamsize>(size));
  return part;
}

std::string WriteCommand(std::uint32_t address, std::uint32_t sectors, unsigned flag) {
  std::array<char, 80> text = {};
  std::snprintf(text.data(), text.size(),
                "out fa 55 66 08 %02x %02x %02x %02x %02x %02x %02x 00 00 00 00 00 [%u]",
                address >> 24, address >> 16 & 0xFF, address >> 8 & 0xFF, address & 0xFF,
                sectors >> 8, sectors & 0xFF, flag, sectors * 512);
  return text.data();
}

std::wstring AddressLine(std::uint32_t address, std::uint32_t length, unsigned flag) {
  std::array<wchar_t, 80> text = {};
  std::swprintf(text.data(), text.size(), L"Adr=0x%X, Len=0x%X Flag=0x%X\r\n", address, length,
                flag);
  return text.data();
}

Lines InOrder(std::initializer_list<Lines> parts) {
  Lines events;
  for (const Lines& part : parts) {
    events.insert(events.end(), part.begin(), part.end());
  }
  return events;
}

Lines Written(std::uint32_t address, std::uint32_t sectors, unsigned flag) {
  return {LineEvent(AddressLine(address, sectors * 512, flag)), "sleep 10",
          WriteCommand(address, sectors, flag)};
}

Lines NotWritten(std::uint32_t address, std::uint32_t sectors, unsigned flag) {
  return {LineEvent(AddressLine(address, sectors * 512, flag)), "sleep 10",
          WriteCommand(address, sectors, flag) + " failed", kSendFailedEvent};
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
