// The DLL and a simulated camera, met through the system's own device enumerator.
#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "include/ZemUVCExtApi.h"
#include "tests/windows/support/debugger_capture.h"
#include "tests/windows/support/opened_camera.h"
#include "tests/windows/support/simulator_guard.h"

namespace {

using zem::testing::DebuggerCapture;
using zem::testing::OpenedCamera;
using zem::testing::SimulatorGuard;

constexpr GUID kVendorUnit = ZEM_VENDOR_XU;
constexpr GUID kH264Unit = ZEM_H264_XU;

// Display name and device path of the simulator's first camera with the default ids.
constexpr const wchar_t* kDisplayName =
    L"@device:sw:{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\usb#vid_5a45&pid_8c00&mi_00#"
    L"zem-simulator&0";
constexpr const wchar_t* kDevicePath = L"\\\\?\\USB#VID_5A45&PID_8C00&mi_00#zem-simulator&0";

// A settings file beside this executable, for the length of a test.
class SettingsFile {
 public:
  explicit SettingsFile(const char* text) {
    std::array<wchar_t, MAX_PATH> path = {};
    GetModuleFileNameW(nullptr, path.data(), MAX_PATH);
    path_ = path.data();
    path_.resize(path_.rfind(L'\\') + 1);
    path_ += L"zem_setting.ini";
    std::FILE* const file = _wfopen(path_.c_str(), L"wb");
    EXPECT_NE(file, nullptr);
    std::fputs(text, file);
    std::fclose(file);
  }
  ~SettingsFile() { DeleteFileW(path_.c_str()); }
  SettingsFile(const SettingsFile&) = delete;
  SettingsFile& operator=(const SettingsFile&) = delete;

 private:
  std::wstring path_;
};

TEST(CameraTest, NoCameraAtAll) {
  const SimulatorGuard simulator(R"({"cameras": []})");
  const DebuggerCapture debugger;
  void* handle = &handle;
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), ZEM_E_FAIL);
  EXPECT_EQ(handle, &handle);
  EXPECT_EQ(ZEMAPI_OpenZemDevice(&handle), ZEM_E_FAIL);
  EXPECT_EQ(handle, &handle);
  EXPECT_EQ(ZEMAPI_OpenDeviceByPath(kDisplayName, &handle), ZEM_E_FAIL);
  EXPECT_EQ(handle, nullptr);
}

TEST(CameraTest, EmptyCategoryIsReportedByAllFindersButTheOneByIds) {
  const SimulatorGuard simulator(R"({"cameras": []})");
  DebuggerCapture debugger;
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), ZEM_E_FAIL);
  EXPECT_EQ(debugger.Take(), std::vector<std::wstring>());
  EXPECT_EQ(ZEMAPI_OpenZemDevice(&handle), ZEM_E_FAIL);
  EXPECT_EQ(debugger.Take(),
            std::vector<std::wstring>{L"No video capture device was detected.\r\n\r\n"});
}

TEST(CameraTest, DefaultCameraIsOpenedAndClosed) {
  const SimulatorGuard simulator;
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDevice(0, &handle), 0);
  ASSERT_NE(handle, nullptr);
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(ZEMAPI_OpenDevice(1, &handle), ZEM_E_FAIL);
}

TEST(CameraTest, IdsAndIndexChooseAmongSeveral) {
  const SimulatorGuard simulator(
      R"({"cameras": [{"productId": 4660}, {}, {"productId": 4660, "vendorUnit": false}]})");
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDeviceEx(0, &handle, 0x5A45, 0x1234), 0);
  EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(handle, &kVendorUnit), 0);
  ZEMAPI_CloseDevice(&handle);
  ASSERT_EQ(ZEMAPI_OpenDeviceEx(1, &handle, 0x5A45, 0x1234), 0);
  EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(handle, &kVendorUnit), 1);
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(ZEMAPI_OpenDeviceEx(2, &handle, 0x5A45, 0x1234), ZEM_E_FAIL);
  EXPECT_EQ(ZEMAPI_OpenDeviceEx(0, &handle, 0x5A45, 0x1235), ZEM_E_FAIL);
}

TEST(CameraTest, SettingsFileNamesTheDefaultCamera) {
  const SimulatorGuard simulator(R"({"cameras": [{"vendorId": 258, "productId": 772}]})");
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), ZEM_E_FAIL);
  const SettingsFile settings("[AP]\r\nDeviceVid=258\r\nDevicePid=0x304\r\n");
  ASSERT_EQ(ZEMAPI_OpenDevice(0, &handle), 0);
  ZEMAPI_CloseDevice(&handle);
}

TEST(CameraTest, OpenedByDisplayNameAndByDevicePathInAnyCase) {
  const SimulatorGuard simulator;
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDeviceByPath(kDisplayName, &handle), 0);
  ZEMAPI_CloseDevice(&handle);
  ASSERT_EQ(ZEMAPI_OpenDeviceByDevPath(kDevicePath, &handle), 0);
  ZEMAPI_CloseDevice(&handle);
}

TEST(CameraTest, CameraWithoutVendorUnitIsClosedAgain) {
  const SimulatorGuard simulator(R"({"cameras": [{"vendorUnit": false}]})");
  void* handle = &handle;
  EXPECT_EQ(ZEMAPI_OpenDeviceByPath(kDisplayName, &handle), 1);
  EXPECT_EQ(handle, nullptr);
}

TEST(CameraTest, RegistersOfAllSpacesKeepWhatIsWritten) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  unsigned short word = 0;
  unsigned char byte = 0;
  EXPECT_EQ(ZEMAPI_SetRegister(camera, 0x123456, 0xABCD), 0);
  EXPECT_EQ(ZEMAPI_GetRegister(camera, 0x123456, &word), 0);
  EXPECT_EQ(word, 0xABCD);
  EXPECT_EQ(ZEMAPI_GetRegister(camera, 0x3456, &word), 0);
  EXPECT_EQ(word, 0);
  EXPECT_EQ(ZEMAPI_SetSensorRegisterW(camera, 0x10, 0x1234), 0);
  EXPECT_EQ(ZEMAPI_GetSensorRegisterW(camera, 0x10, &word), 0);
  EXPECT_EQ(word, 0x1234);
  EXPECT_EQ(ZEMAPI_SetVCMRegister(camera, 0x20, 0x4321), 0);
  EXPECT_EQ(ZEMAPI_GetVCMRegister(camera, 0x20, &word), 0);
  EXPECT_EQ(word, 0x4321);
  EXPECT_EQ(ZEMAPI_WriteCodecReg(camera, 0x30, 0x77), 0);
  EXPECT_EQ(ZEMAPI_ReadCodecReg(camera, 0x30, &byte), 0);
  EXPECT_EQ(byte, 0x77);
}

TEST(CameraTest, BothVersionOverloads) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  std::array<unsigned char, 6> version = {};
  EXPECT_EQ(ZEMAPI_GetFWVersion(camera, version.data()), 0);
  EXPECT_EQ(version, (std::array<unsigned char, 6>{1, 2, 3, 4, 5, 6}));
  std::array<char, 8> reply = {};
  EXPECT_EQ(ZEMAPI_GetFWVersion(camera, reply.data()), 0);
  EXPECT_EQ(reply, (std::array<char, 8>{0, 0, 1, 2, 3, 4, 5, 6}));
}

TEST(CameraTest, EveryWriteGivesOneDebuggerLine) {
  const SimulatorGuard simulator(R"({"cameras": [{"faults": ["fail@3"]}]})");
  const OpenedCamera camera;
  DebuggerCapture debugger;
  EXPECT_EQ(ZEMAPI_SetRegister(camera, 1, 2), 0);
  EXPECT_EQ(debugger.Take(), std::vector<std::wstring>{L"[EXT_Set]Node ID = 2, hr = 0, Len:8\r\n"});
  EXPECT_EQ(ZEMAPI_SetRegister(camera, 1, 2), ZEM_E_NO_DEVICE);
  EXPECT_EQ(debugger.Take(),
            std::vector<std::wstring>{L"[EXT_Set]Node ID = 2, hr = 8007001F, Len:8\r\n"});
}

TEST(CameraTest, RawAccessReachesAbsentUnitsAtTheNodeCount) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  DebuggerCapture debugger;
  unsigned char data = 0;
  ZemULong moved = 7;
  EXPECT_EQ(ZEMAPI_UvcExtSet(camera, &kH264Unit, 1, &data, 1, &moved),
            static_cast<ZemResult>(0x80070490));
  EXPECT_EQ(moved, 0U);
  EXPECT_EQ(debugger.Take(),
            std::vector<std::wstring>{L"[EXT_Set]Node ID = 3, hr = 80070490, Len:1\r\n"});
  EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(camera, &kH264Unit), 1);
}

TEST(CameraTest, UnpluggedCameraFailsAndIsNoLongerListed) {
  const SimulatorGuard simulator(R"({"cameras": [{"faults": ["unplug@3"]}]})");
  const OpenedCamera camera;
  EXPECT_EQ(ZEMAPI_SetRegister(camera, 1, 2), 0);
  EXPECT_EQ(ZEMAPI_SetRegister(camera, 1, 2), ZEM_E_NO_DEVICE);
  std::array<unsigned char, 8> block = {};
  EXPECT_EQ(ZEMAPI_IspCommand(camera, block.data(), block.data()),
            static_cast<ZemResult>(0x8007048F));
  void* second = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &second), ZEM_E_FAIL);
}

TEST(CameraTest, SerialNumberEndsTheProcessOfAHostWithoutAHandler) {
  std::wstring command = L"serial_number_caller.exe";
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process = {};
  ASSERT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                             &startup, &process));
  WaitForSingleObject(process.hProcess, INFINITE);
  DWORD exitCode = 0;
  GetExitCodeProcess(process.hProcess, &exitCode);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  EXPECT_EQ(exitCode, 0xC0000417U) << "invalid parameter to a runtime function";
}

TEST(CameraTest, SerialNumberWithAHandlerThatReturns) {
  // This host's start-up code has installed such a handler.
  char serial[17] = "abcdefghijklmnop";
  EXPECT_EQ(ZEMAPI_GetSerialNumber(nullptr, serial), 16);
  EXPECT_EQ(serial[0], '\0');
}

}  // namespace
