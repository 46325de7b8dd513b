// The ground of every native test of a camera in ROM boot: a fresh simulated system, a boot loader
// on volume F:, a folder for files, and a check that no volume is used behind its closing.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "include/ZemUVCExtApi.h"
#include "platform/simulated/simulated_platform.h"
#include "romboot/usb_scsi_cmd.h"
#include "tests/support/device_test.h"
#include "tests/support/event_log.h"
#include "tests/support/scripted_volume.h"
#include "tests/support/temporary_folder.h"

namespace zem::testing {

using Bytes = std::vector<std::uint8_t>;

// The system's error codes.
inline constexpr std::uint32_t kGeneralFailure = 31;
inline constexpr std::uint32_t kTimeout = 121;

// "\\.\F:"
inline std::wstring VolumePath(wchar_t letter) { return std::wstring(L"\\\\.\\") + letter + L":"; }

class RomBootTest : public ::testing::Test {
 protected:
  RomBootTest();
  // Closes the session and requires that no volume is left open, but for those in `leftOpen`.
  ~RomBootTest() override;

  platform::simulated::System& system() { return platform::simulated::TheSystem(); }

  // Puts a scripted volume behind a drive letter.
  void Attach(wchar_t letter, ScriptedVolume& scripted);

  // A session on the boot loader, opened on first use; what that did is forgotten.
  void* session();

  // All that happened since the last call, in order: the controls of the attached volumes,
  // debugger texts, sleeps, closings of volumes. A control is direction, CDB, length of the data,
  // and " failed" behind those that did: "out fa 55 66 08 ... [512]". What is taken below by kind
  // is not among them.
  Lines TakeEvents();

  // The controls of `volume` alone, the debugger texts, the sleeps. Where their order matters,
  // TakeEvents says it.
  Lines TakeCommands();
  WideLines TakeDebuggerLines();
  std::vector<std::uint32_t> TakeSleeps();

  // What the writes that did not fail have put into storage, from an address on; 0xCC where nothing
  // was written.
  Bytes Stored(std::uint32_t address, std::size_t size) const;

  // Of the session's channel.
  void SetAddressDivider(std::uint32_t divider);

  // A path in the test's own folder; a file with these bytes there; a file's bytes.
  std::wstring PathOf(const std::string& name) const { return folder_.Path(name); }
  std::wstring WriteFile(const std::string& name, const Bytes& bytes) const;
  static Bytes ReadFile(const std::wstring& path);
  // A file of any size that takes no room on the disk: these bytes, and zeros behind them.
  std::wstring WriteLongFile(const std::string& name, const Bytes& start, std::uint64_t size) const;
  // `size` bytes of a file that is too long to be read whole.
  static Bytes ReadPart(const std::wstring& path, std::uint64_t offset, std::size_t size);
  bool Exists(const std::string& name) const { return folder_.Exists(name); }
  const std::filesystem::path& folder() const { return folder_.path(); }

  // The boot loader.
  ScriptedVolume volume;

  // Volumes that the test expects to stay open.
  std::vector<std::wstring> leftOpen;
  // Controls of a null or closed volume that it expects.
  int invalidVolumeCalls = 0;

 private:
  // Forgets the events that begin so.
  void ForgetEvents(std::string_view start);

  Lines events_;
  TemporaryFolder folder_;
  void* session_ = nullptr;
};

// A storage write as TakeCommands gives it: the same bytes as the literal ones elsewhere.
std::string WriteCommand(std::uint32_t address, std::uint32_t sectors, unsigned flag = 0);

// The debugger line of a storage write.
std::wstring AddressLine(std::uint32_t address, std::uint32_t length, unsigned flag = 0);

// Events one behind the other.
Lines InOrder(std::initializer_list<Lines> parts);

// The events of a storage write: its line, the pause before data goes out, its command; and of one
// that fails with kTimeout, which is reported by the channel.
Lines Written(std::uint32_t address, std::uint32_t sectors, unsigned flag = 0);
Lines NotWritten(std::uint32_t address, std::uint32_t sectors, unsigned flag = 0);

// The reports of the channel that cannot send, and of a storage write that has failed.
inline const std::string kSendFailedEvent = "line SendScsiCmdIOut Failed, Erroe=0x79 \r\n";
inline const std::string kTransferFailedEvent = "line Failed to transfer data to device.\r\n";

// Bytes without a pattern of any power of two.
Bytes SomeBytes(std::size_t size, std::uint8_t first = 1);

// `bytes`, and zeros up to a whole number of sectors.
Bytes PaddedToSectors(Bytes bytes);

// One part of `bytes`.
Bytes PartOf(const Bytes& bytes, std::size_t offset, std::size_t size);

}  // namespace zem::testing
