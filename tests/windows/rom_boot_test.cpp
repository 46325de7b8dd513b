// ROM boot as the system sees the DLL: the calls it makes on a volume, argument by argument; and a
// simulated boot loader from one end to the other.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "include/ZemUVCExtApi.h"
#include "simulator/windows/volume_imports.h"
#include "tests/support/request_block.h"
#include "tests/windows/support/debugger_capture.h"
#include "tests/windows/support/simulator_guard.h"

namespace {

using Bytes = std::vector<unsigned char>;
using Lines = std::vector<std::wstring>;
using zem::simulator::ImportHook;
using zem::simulator::VolumeImports;
using zem::testing::DebuggerCapture;
using zem::testing::RequestBlock;
using zem::testing::SimulatorGuard;

// ---- A volume behind the DLL's imports ----

struct Open {
  std::wstring path;
  DWORD access;
  DWORD share;
  LPSECURITY_ATTRIBUTES security;
  DWORD disposition;
  DWORD flags;
  HANDLE pattern;
};

struct Control {
  HANDLE volume;
  DWORD code;
  DWORD inputLength;
  DWORD outputLength;
  bool sameBlock;    // for what goes in and what comes back
  bool countsBytes;  // a place for the number of bytes
  OVERLAPPED* overlapped;
  Bytes block;  // its first 96 bytes
  Bytes sent;   // the data that goes out
};

// What the DLL asked the system for.
struct Calls {
  std::vector<Open> opens;
  std::vector<Control> controls;
  std::vector<HANDLE> closes;
  DWORD error = 0;  // of all controls behind the first two; 0 for none
} calls;

HANDLE const kVolume = reinterpret_cast<HANDLE>(0x5A450);

HANDLE WINAPI RecordOpen(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                         DWORD disposition, DWORD flags, HANDLE pattern) {
  calls.opens.push_back({path, access, share, security, disposition, flags, pattern});
  SetLastError(ERROR_FILE_NOT_FOUND);
  return calls.opens.back().path == L"\\\\.\\F:" ? kVolume : INVALID_HANDLE_VALUE;
}

BOOL WINAPI RecordControl(HANDLE volume, DWORD code, LPVOID input, DWORD inputLength, LPVOID output,
                          DWORD outputLength, LPDWORD returned, LPOVERLAPPED overlapped) {
  auto* const block = static_cast<unsigned char*>(input);
  Control control = {volume,
                     code,
                     inputLength,
                     outputLength,
                     input == output,
                     returned != nullptr,
                     overlapped,
                     Bytes(block, block + 96),
                     {}};
  constexpr DWORD kDirect = 0x4D014;
  if (code == kDirect) {
    ULONG length = 0;
    const unsigned char* data = nullptr;
    std::memcpy(&length, block + 12, sizeof(length));
    std::memcpy(&data, block + 24, sizeof(data));
    control.sent.assign(data, data + length);
    std::memset(&control.block[24], 0, 8);
  }
  calls.controls.push_back(control);
  if (calls.controls.size() > 2 && calls.error != 0) {
    SetLastError(calls.error);
    return FALSE;
  }
  if (code != kDirect) {
    // An inquiry or an identify that a boot loader answers.
    block[92] = 0xAA;
    block[93] = 0x55;
    block[95] = 1;
  }
  return TRUE;
}

BOOL WINAPI RecordClose(HANDLE handle) {
  calls.closes.push_back(handle);
  return TRUE;
}

template <class Function>
FARPROC AsImport(Function* function) {
  return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

class RecordedVolumeTest : public ::testing::Test {
 protected:
  RecordedVolumeTest()
      : library_(GetModuleHandleW(L"ZemUVCExtApi.dll")),
        imports_({RecordOpen, RecordControl, RecordClose}) {
    calls = {};
  }

  HMODULE library_;

 private:
  VolumeImports imports_;
};

TEST_F(RecordedVolumeTest, ProbeOpensVolumesSharedForReadingAndWriting) {
  void* device = ZEMROMAPI_OpenDevice(1);
  ASSERT_NE(device, nullptr);
  const std::vector<std::wstring> paths = {L"\\\\.\\C:", L"\\\\.\\D:", L"\\\\.\\E:", L"\\\\.\\F:"};
  ASSERT_EQ(calls.opens.size(), paths.size());
  for (std::size_t index = 0; index < paths.size(); ++index) {
    const Open& open = calls.opens[index];
    EXPECT_EQ(open.path, paths[index]);
    EXPECT_EQ(open.access, 0xC0000000U);
    EXPECT_EQ(open.share, 3U);
    EXPECT_EQ(open.security, nullptr);
    EXPECT_EQ(open.disposition, 3U);
    EXPECT_EQ(open.flags, 0U);
    EXPECT_EQ(open.pattern, nullptr);
  }
  EXPECT_TRUE(calls.closes.empty());
  ZEMROMAPI_CloseDevice(&device);
  EXPECT_EQ(calls.closes, std::vector<HANDLE>{kVolume});
}

TEST_F(RecordedVolumeTest, InquiryAndIdentifyBlocks) {
  void* device = ZEMROMAPI_OpenDevice(1);
  ASSERT_EQ(calls.controls.size(), 2U);
  for (const Control& control : calls.controls) {
    EXPECT_EQ(control.volume, kVolume);
    EXPECT_EQ(control.code, 0x4D004U);
    EXPECT_EQ(control.inputLength, 56U);
    EXPECT_TRUE(control.sameBlock);
    EXPECT_TRUE(control.countsBytes);
    EXPECT_EQ(control.overlapped, nullptr);
  }
  EXPECT_EQ(calls.controls[0].outputLength, 128U);
  EXPECT_EQ(calls.controls[0].block, RequestBlock({.cdbLength = 6,
                                                   .dataIn = 1,
                                                   .length = {36},
                                                   .seconds = 2,
                                                   .dataOffset = 92,
                                                   .cdb = {0x12, 0, 0, 0, 0x24, 0}}));
  EXPECT_EQ(calls.controls[1].outputLength, 108U);
  EXPECT_EQ(calls.controls[1].block, RequestBlock({.dataIn = 1,
                                                   .length = {16},
                                                   .seconds = 2,
                                                   .dataOffset = 92,
                                                   .cdb = {0xFA, 0x55, 0x66, 0x01},
                                                   .firstData = 0x33}));
  ZEMROMAPI_CloseDevice(&device);
}

TEST_F(RecordedVolumeTest, DirectBlock) {
  void* device = ZEMROMAPI_OpenDevice(1);
  std::array<unsigned char, 16> cdb = {0xE0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  Bytes data = {1, 2, 3, 4, 5};
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(device, 0, 5, cdb.data(), data.data()), 0);
  const Control& control = calls.controls.at(2);
  EXPECT_EQ(control.code, 0x4D014U);
  EXPECT_EQ(control.inputLength, 96U);
  EXPECT_EQ(control.outputLength, 96U);
  EXPECT_TRUE(control.sameBlock);
  EXPECT_EQ(control.block, RequestBlock({.dataIn = 0, .length = {5}, .seconds = 10, .cdb = cdb}));
  EXPECT_EQ(control.sent, data);
  ZEMROMAPI_CloseDevice(&device);
}

TEST_F(RecordedVolumeTest, MemoryIsSelectedUnderTheDecoratedNameAlone) {
  const auto byDecoratedName = reinterpret_cast<long (*)(void*)>(reinterpret_cast<void*>(
      GetProcAddress(library_, "?ZEMROMAPI_SwitchModePCAM_DRAM@@YAJPEAX@Z")));
  ASSERT_NE(byDecoratedName, nullptr);
  EXPECT_EQ(GetProcAddress(library_, "ZEMROMAPI_SwitchModePCAM_DRAM"), nullptr);
  EXPECT_EQ(byDecoratedName(nullptr), ZEM_E_FAIL);
  void* device = ZEMROMAPI_OpenDevice(1);
  EXPECT_EQ(byDecoratedName(device), 0);
  EXPECT_EQ(ZEMROMAPI_SwitchModePCAM_DRAM(device), 0);
  for (const std::size_t index : {std::size_t{2}, std::size_t{3}}) {
    EXPECT_EQ(calls.controls.at(index).block,
              RequestBlock({.dataIn = 1,
                            .length = {4},
                            .seconds = 2,
                            .dataOffset = 92,
                            .cdb = {0xFA, 0x55, 0x66, 0x06, 0x80}}));
  }
  ZEMROMAPI_CloseDevice(&device);
}

TEST_F(RecordedVolumeTest, FailureIsReportedInTheSystemsWords) {
  void* device = ZEMROMAPI_OpenDevice(1);
  calls.error = ERROR_SEM_TIMEOUT;
  wchar_t* text = nullptr;
  FormatMessageW(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      nullptr, ERROR_SEM_TIMEOUT, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
      reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  ASSERT_NE(text, nullptr);
  const std::wstring words = text;
  LocalFree(text);
  EXPECT_GT(words.size(), 5U);
  DebuggerCapture debugger;
  EXPECT_EQ(ZEMROMAPI_LongJump(device), ZEM_E_FAIL);
  EXPECT_EQ(debugger.Take(), Lines{L"SendScsiCmdIOut Failed, Erroe=0x79 " + words + L"\r\n"});
  EXPECT_EQ(ZEMROMAPI_SwitchModePCAM_EMMC(device, 0), ZEM_E_FAIL);
  EXPECT_EQ(debugger.Take(), (Lines{L"SendScsiCmdIIn Failed, Erroe=0x79 " + words + L"\r\n",
                                    L"Failed to select storage type -> ZEM_STORAGE_EMMC.\r\n"}));
  EXPECT_EQ(calls.controls.size(), 4U) << "this error is not retried";
  ZEMROMAPI_CloseDevice(&device);
}

// ---- The system's texts for its errors ----

// What the DLL asked for and what it was given, all since the last reset.
struct TextCalls {
  struct Format {
    DWORD flags;
    LPCVOID source;
    DWORD code;
    DWORD language;
    DWORD size;
    va_list* arguments;
  };
  std::vector<Format> formats;
  HLOCAL given = nullptr;
  std::vector<HLOCAL> freed;
  std::wstring text;  // what there is; none for no text
} textCalls;

DWORD WINAPI GiveText(DWORD flags, LPCVOID source, DWORD code, DWORD language, LPWSTR buffer,
                      DWORD size, va_list* arguments) {
  textCalls.formats.push_back({flags, source, code, language, size, arguments});
  const std::wstring& text = textCalls.text;
  if (text.empty()) {
    return 0;
  }
  textCalls.given = LocalAlloc(LMEM_FIXED, (text.size() + 1) * sizeof(wchar_t));
  std::memcpy(textCalls.given, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
  // With FORMAT_MESSAGE_ALLOCATE_BUFFER the buffer is the place of a pointer.
  std::memcpy(static_cast<void*>(buffer), &textCalls.given, sizeof(textCalls.given));
  return static_cast<DWORD>(text.size());
}

HLOCAL WINAPI RecordFree(HLOCAL memory) {
  textCalls.freed.push_back(memory);
  return LocalFree(memory);
}

class ErrorTextTest : public RecordedVolumeTest {
 protected:
  ErrorTextTest()
      : format_(library_, "FormatMessageW", AsImport(GiveText)),
        free_(library_, "LocalFree", AsImport(RecordFree)) {
    textCalls = {};
  }

  // The one line of a command that fails with `error`, for which the system has `text`.
  static std::wstring LineFor(DWORD error, const std::wstring& text) {
    calls = {};
    void* device = ZEMROMAPI_OpenDevice(1);
    calls.error = error;
    textCalls = {};
    textCalls.text = text;
    DebuggerCapture debugger;
    EXPECT_EQ(ZEMROMAPI_LongJump(device), ZEM_E_FAIL);
    const Lines lines = debugger.Take();
    ZEMROMAPI_CloseDevice(&device);
    EXPECT_EQ(lines.size(), 1U);
    return lines.empty() ? std::wstring() : lines[0];
  }

 private:
  ImportHook format_;
  ImportHook free_;
};

TEST_F(ErrorTextTest, IsAskedForAsItStandsInTheSystemsLanguage) {
  EXPECT_EQ(LineFor(0x45D, L"100 %1 of %n\r\n"),
            L"SendScsiCmdIOut Failed, Erroe=0x45D 100 %1 of %n\r\n\r\n");
  ASSERT_EQ(textCalls.formats.size(), 1U);
  const TextCalls::Format& format = textCalls.formats[0];
  EXPECT_EQ(format.flags, 0x1300U) << "allocate, from the system, ignore inserts";
  EXPECT_EQ(format.source, nullptr);
  EXPECT_EQ(format.code, 0x45DU);
  EXPECT_EQ(format.language, 0x400U) << "neutral, the default one";
  EXPECT_EQ(format.size, 0U);
  EXPECT_EQ(format.arguments, nullptr);
  EXPECT_EQ(textCalls.freed, std::vector<HLOCAL>{textCalls.given});
}

TEST_F(ErrorTextTest, OfUpTo1023CharactersIsKeptAndALongerOneLeftOutAndFreed) {
  const std::wstring start = L"SendScsiCmdIOut Failed, Erroe=0x79 ";
  EXPECT_EQ(LineFor(ERROR_SEM_TIMEOUT, std::wstring(1023, L'x')),
            start + std::wstring(1023 - start.size(), L'x'))
      << "the line itself is cut";
  EXPECT_EQ(textCalls.freed, std::vector<HLOCAL>{textCalls.given});
  for (const std::size_t size : {std::size_t{1024}, std::size_t{1025}, std::size_t{30000}}) {
    EXPECT_EQ(LineFor(ERROR_SEM_TIMEOUT, std::wstring(size, L'x')), start + L"\r\n") << size;
    EXPECT_EQ(textCalls.freed, std::vector<HLOCAL>{textCalls.given}) << size;
  }
}

TEST_F(ErrorTextTest, ThatTheSystemDoesNotHaveIsEmptyAndNothingIsFreed) {
  EXPECT_EQ(LineFor(ERROR_SEM_TIMEOUT, L""), L"SendScsiCmdIOut Failed, Erroe=0x79 \r\n");
  EXPECT_EQ(textCalls.formats.size(), 1U);
  EXPECT_TRUE(textCalls.freed.empty());
}

TEST_F(RecordedVolumeTest, Error31IsRetriedHalfASecondApart) {
  void* device = ZEMROMAPI_OpenDevice(1);
  calls.error = ERROR_GEN_FAILURE;
  const DWORD before = GetTickCount();
  EXPECT_EQ(ZEMROMAPI_LongJump(device), ZEM_E_FAIL);
  EXPECT_GE(GetTickCount() - before, 2400U);
  EXPECT_EQ(calls.controls.size(), 8U);
  ZEMROMAPI_CloseDevice(&device);
}

// ---- Files ----

// A file in the current folder for the length of a test.
class TestFile {
 public:
  TestFile(const wchar_t* path, const Bytes& bytes) : path_(path) {
    std::FILE* const file = _wfopen(path, L"wb");
    EXPECT_NE(file, nullptr);
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
  }
  ~TestFile() { DeleteFileW(path_); }
  TestFile(const TestFile&) = delete;
  TestFile& operator=(const TestFile&) = delete;

  Bytes Read() const {
    std::FILE* const file = _wfopen(path_, L"rb");
    EXPECT_NE(file, nullptr);
    Bytes bytes(1 << 20);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    std::fclose(file);
    return bytes;
  }

 private:
  const wchar_t* path_;
};

// An image with a header block of 0x11 and `payload`.
Bytes BootImage(const Bytes& payload) {
  Bytes image = {'V', 'S', 'N', '_', 'V', '2', 'F', 'W', 1, 0, 0, 0, 0, 0};
  const auto length = static_cast<unsigned>(payload.size());
  for (unsigned index = 0; index < 4; ++index) {
    image.push_back(static_cast<unsigned char>(length >> (8 * index)));
  }
  image.insert(image.end(), 4096, 0x11);
  image.insert(image.end(), payload.begin(), payload.end());
  return image;
}

TEST_F(RecordedVolumeTest, BurnedImageByteByByte) {
  const TestFile file(L"rom_boot_test.image", BootImage(Bytes(5000, 0x22)));
  void* device = ZEMROMAPI_OpenDevice(1);
  DebuggerCapture debugger;
  unsigned int address = 0x10000;
  EXPECT_EQ(ZEMROMAPI_BurnFw(device, L"rom_boot_test.image", &address), 1);
  EXPECT_EQ(address, 0x13000U);
  ASSERT_EQ(calls.controls.size(), 5U);
  EXPECT_EQ(calls.controls[2].sent, Bytes(4096, 0xFF));
  Bytes payload(5000, 0x22);
  payload.resize(5120);
  EXPECT_EQ(calls.controls[3].sent, payload);
  EXPECT_EQ(calls.controls[4].sent, Bytes(4096, 0x11));
  EXPECT_EQ(debugger.Take(),
            (Lines{L"Adr=0x10000, Len=0x1000 Flag=0x0\r\n", L"Adr=0x11000, Len=0x1400 Flag=0x0\r\n",
                   L"Adr=0x10000, Len=0x1000 Flag=0x0\r\n"}));
  ZEMROMAPI_CloseDevice(&device);
}

TEST_F(RecordedVolumeTest, DumpFileAtItsAddresses) {
  const TestFile dump(L"rom_boot_test.dump", {});
  void* device = ZEMROMAPI_OpenDevice(1);
  EXPECT_EQ(ZEMROMAPI_CreateDumpFile(device, L"rom_boot_test.dump", 5000), 0);
  EXPECT_EQ(dump.Read(), Bytes(8192, 0xFF));
  const TestFile file(L"rom_boot_test.part", Bytes(100, 0x22));
  unsigned int address = 0x1000;
  EXPECT_EQ(ZEMROMAPI_PartialUpdate(device, L"rom_boot_test.part", &address), 1);
  Bytes mirrored(8192, 0xFF);
  std::fill_n(mirrored.begin() + 0x1000, 100, static_cast<unsigned char>(0x22));
  EXPECT_EQ(dump.Read(), mirrored);
  ZEMROMAPI_CloseDevice(&device);
}

// A sparse file of any size in the current folder for the length of a test.
class LongFile {
 public:
  LongFile(const wchar_t* path, LONGLONG size) : path_(path) {
    HANDLE const file =
        CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    LARGE_INTEGER end = {};
    end.QuadPart = size;
    EXPECT_TRUE(SetFilePointerEx(file, end, nullptr, FILE_BEGIN) && SetEndOfFile(file));
    CloseHandle(file);
  }
  ~LongFile() { DeleteFileW(path_); }
  LongFile(const LongFile&) = delete;
  LongFile& operator=(const LongFile&) = delete;

 private:
  const wchar_t* path_;
};

TEST_F(RecordedVolumeTest, FilesFrom2GiBOnGoAsFarAsTheLastAddress) {
  void* device = ZEMROMAPI_OpenDevice(1);
  calls.error = ERROR_SEM_TIMEOUT;
  std::size_t controls = 2;
  for (const LONGLONG size : {0x7FFFFFFFLL, 0x80000000LL, 0xFFFFF000LL}) {
    const LongFile file(L"rom_boot_test.long", size);
    unsigned int address = 0x1000;
    EXPECT_EQ(ZEMROMAPI_PartialUpdate(device, L"rom_boot_test.long", &address), ZEM_E_FAIL);
    EXPECT_EQ(calls.controls.size(), ++controls) << size << ": sent, and refused by the device";
  }
  // The lower 32 bits of the last two are those of a short file.
  for (const LONGLONG size : {0xFFFFF001LL, 0x100000000LL, 0x100000200LL}) {
    const LongFile file(L"rom_boot_test.long", size);
    unsigned int address = 0x1000;
    EXPECT_EQ(ZEMROMAPI_PartialUpdate(device, L"rom_boot_test.long", &address), ZEM_E_FAIL);
    EXPECT_EQ(calls.controls.size(), controls) << size << ": nothing is sent";
  }
  ZEMROMAPI_CloseDevice(&device);
}

// ---- The simulated boot loader ----

TEST(RomBootTest, WhatIsBurnedIsReadBack) {
  const SimulatorGuard simulator(R"({"bootLoader": {}})");
  EXPECT_EQ(ZEMROMAPI_OpenDevice(2), nullptr) << "it is a boot loader";
  void* device = ZEMROMAPI_OpenDevice(1);
  if (device == nullptr) {
    device = ZEMROMAPI_OpenDevice(1);  // absent for one attempt
  }
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(ZEMROMAPI_SwitchModePCAM_SF(device), 0);
  const TestFile image(L"rom_boot_test.image", BootImage(Bytes(40000, 0x22)));
  unsigned int address = 0;
  EXPECT_EQ(ZEMROMAPI_BurnFw(device, L"rom_boot_test.image", &address), 1);
  EXPECT_EQ(address, 0xB000U);
  const TestFile copy(L"rom_boot_test.copy", {});
  unsigned int read = 0;
  EXPECT_EQ(ZEMROMAPI_PartialRead(device, L"rom_boot_test.copy", &read, 4096 + 40000), 1);
  EXPECT_EQ(read, 4096U + 40448U);
  Bytes content(4096, 0x11);
  content.insert(content.end(), 40000, 0x22);
  content.insert(content.end(), 448, 0x00);
  EXPECT_EQ(copy.Read(), content);
  ZEMROMAPI_CloseDevice(&device);
}

TEST(RomBootTest, WithoutACameraThereIsNoSession) {
  const SimulatorGuard simulator(R"({"bootLoader": {"start": "gone"}})");
  EXPECT_EQ(ZEMROMAPI_OpenDevice(1), nullptr);
}

}  // namespace
