// Which devices of this machine are cameras, what they are called, and how they are opened.
#include <linux/videodev2.h>

#include <cerrno>
#include <string>
#include <vector>

#include "device/extension_units.h"
#include "include/ZemUVC.hpp"
#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "tests/linux/linux_test.h"

namespace {

using zem::ComPtr;
using zem::testing::kAccessDeniedResult;
using zem::testing::kNotConnectedResult;
using zem::testing::LinuxTest;
using zem::testing::PortFolder;

class DiscoveryTest : public LinuxTest {
 protected:
  // Display name, device path and friendly name of each device of a category.
  static std::vector<std::wstring> List(const GUID& category, const wchar_t* property = nullptr) {
    ComPtr<ICreateDevEnum> system;
    EXPECT_EQ(zem::platform::CreateDeviceEnumerator(system.Receive()), S_OK);
    ComPtr<IEnumMoniker> devices;
    const HRESULT created = system->CreateClassEnumerator(category, devices.Receive(), 0);
    EXPECT_EQ(created, devices ? S_OK : S_FALSE);
    std::vector<std::wstring> texts;
    ComPtr<IMoniker> device;
    while (devices && devices->Next(1, device.Receive(), nullptr) == S_OK) {
      texts.push_back(property == nullptr ? NameOf(device.get())
                                          : PropertyOf(device.get(), property));
    }
    return texts;
  }

  static std::vector<std::wstring> Cameras(const wchar_t* property = nullptr) {
    return List(zem::CLSID_VideoInputDeviceCategory, property);
  }

 private:
  static std::wstring NameOf(IMoniker* device) {
    wchar_t* name = nullptr;
    EXPECT_EQ(device->GetDisplayName(nullptr, nullptr, &name), S_OK);
    std::wstring text = name;
    zem::platform::FreeTaskMemory(name);
    return text;
  }

  static std::wstring PropertyOf(IMoniker* device, const wchar_t* property) {
    ComPtr<IPropertyBag> bag;
    EXPECT_EQ(device->BindToStorage(nullptr, nullptr, zem::IID_IPropertyBag, bag.ReceiveVoid()),
              S_OK);
    VARIANT value;
    zem::platform::InitVariant(&value);
    const HRESULT read = bag->Read(property, &value, nullptr);
    std::wstring text = SUCCEEDED(read) ? value.bstrVal : L"none";
    zem::platform::ClearVariant(&value);
    return text;
  }
};

using Texts = std::vector<std::wstring>;

TEST_F(DiscoveryTest, NameIsIdsInterfaceAndPort) {
  AddCamera(0, "1-1.2");
  EXPECT_EQ(Cameras(), (Texts{L"usb#vid_5a45&pid_8c00&mi_00#1-1.2"}));
  EXPECT_EQ(Cameras(L"FriendlyName"), (Texts{L"Test Camera: Test Camera"}));
  EXPECT_EQ(Cameras(L"Color"), (Texts{L"none"}));
}

TEST_F(DiscoveryTest, DevicePathSaysThePortAndNoBusNumber) {
  AddCamera(0, "1-1.2");
  const Texts onFirst = Cameras(L"DevicePath");
  EXPECT_EQ(onFirst, (Texts{L"/dev/v4l/by-path/pci-0000:00:14.0-usbv2-0:1.2:1.0-video-index0"}));
  RemoveCamera(0, "1-1.2");
  AddCamera(7, "3-1.2");
  EXPECT_EQ(Cameras(L"DevicePath"), onFirst) << "after a start in which the bus is another one";
}

TEST_F(DiscoveryTest, TheListOfTheCppHeaderHasTheSameNames) {
  AddCamera(10, "1-1");
  AddCamera(2, "3-1.2", "5a46", "8c01");
  AddCamera(3, "1-4");
  kernel.Remove("devices/pci0000:00/0000:00:14.0/usb1/version");
  kernel.AddFile("class/video4linux/video2/name", "Cam\xC3\xA9ra \xFF\n");
  std::vector<zemuvc::CameraInfo> listed;
  zemuvc::detail::ListSystemCameras(listed, kernel.sysFolder(), kernel.sysFolder());
  Texts names;
  Texts paths;
  Texts friendlyNames;
  for (const zemuvc::CameraInfo& camera : listed) {
    names.push_back(camera.displayName);
    paths.push_back(camera.devicePath);
    friendlyNames.push_back(camera.name);
  }
  EXPECT_EQ(names.size(), 3U);
  EXPECT_EQ(names, Cameras());
  EXPECT_EQ(paths, Cameras(L"DevicePath"));
  EXPECT_EQ(friendlyNames, Cameras(L"FriendlyName"));
}

TEST_F(DiscoveryTest, AControllerWithoutSubsystemOrVersionStillHasAPath) {
  AddCamera(0, "1-4");
  kernel.Remove("devices/pci0000:00/0000:00:14.0/usb1/version");
  kernel.Remove("devices/pci0000:00/0000:00:14.0/subsystem");
  EXPECT_EQ(Cameras(L"DevicePath"),
            (Texts{L"/dev/v4l/by-path/-0000:00:14.0-usb-0:4:1.0-video-index0"}));
}

TEST_F(DiscoveryTest, InTheOrderOfTheirNumbers) {
  AddCamera(10, "1-1");
  AddCamera(9, "1-2");
  AddCamera(2, "1-3");
  EXPECT_EQ(Cameras(),
            (Texts{L"usb#vid_5a45&pid_8c00&mi_00#1-3", L"usb#vid_5a45&pid_8c00&mi_00#1-2",
                   L"usb#vid_5a45&pid_8c00&mi_00#1-1"}));
}

TEST_F(DiscoveryTest, WithoutDevicesTheCategoryIsEmpty) {
  ComPtr<ICreateDevEnum> system;
  ASSERT_EQ(zem::platform::CreateDeviceEnumerator(system.Receive()), S_OK);
  ComPtr<IEnumMoniker> none;
  EXPECT_EQ(system->CreateClassEnumerator(zem::CLSID_VideoInputDeviceCategory, none.Receive(), 0),
            S_FALSE);
  EXPECT_FALSE(none) << "as on Windows";
  EXPECT_EQ(Cameras(), Texts());
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), ZEM_E_FAIL);
  EXPECT_EQ(List(zem::CLSID_AudioInputDeviceCategory), Texts());
  EXPECT_EQ(List(zem::CLSID_SystemDeviceEnum), Texts()) << "a category that is none";
}

TEST_F(DiscoveryTest, FilesForMetadataAreNoCamerasAndFurtherCaptureFilesAre) {
  AddCamera(0, "1-1");
  AddVideoFile(1, "1-1", 1)->capabilities = V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING;
  AddVideoFile(2, "1-1", 2);
  EXPECT_EQ(Cameras(),
            (Texts{L"usb#vid_5a45&pid_8c00&mi_00#1-1", L"usb#vid_5a45&pid_8c00&mi_00#1-1&2"}));
  EXPECT_EQ(Cameras(L"DevicePath")[1],
            L"/dev/v4l/by-path/pci-0000:00:14.0-usbv2-0:1:1.0-video-index2");
}

TEST_F(DiscoveryTest, AsManyAsTheDriverNumbers) {
  AddCamera(0, "1-1");
  for (unsigned number = 1; number < 256; ++number) {
    kernel.AddLink("class/video4linux/video" + std::to_string(number),
                   PortFolder("1-1") + "/1-1:1.0/video4linux/video0");
  }
  EXPECT_EQ(Cameras(), Texts(256, L"usb#vid_5a45&pid_8c00&mi_00#1-1"));
}

TEST_F(DiscoveryTest, TheIndexIsADecimalNumber) {
  AddVideoFile(7, "1-1", 10);
  AddCamera(0, "1-1");
  EXPECT_EQ(Cameras(),
            (Texts{L"usb#vid_5a45&pid_8c00&mi_00#1-1", L"usb#vid_5a45&pid_8c00&mi_00#1-1&10"}));
}

TEST_F(DiscoveryTest, AFileWithoutAnIndexIsTheFirst) {
  AddCamera(0, "1-1");
  kernel.Remove("class/video4linux/video0/index");
  EXPECT_EQ(Cameras(), (Texts{L"usb#vid_5a45&pid_8c00&mi_00#1-1"}));
}

TEST_F(DiscoveryTest, OfFilesThatMayNotBeOpenedTheFirstCounts) {
  AddCamera(0, "1-1")->openResult = -EACCES;
  AddVideoFile(1, "1-1", 1)->openResult = -EACCES;
  EXPECT_EQ(Cameras(), (Texts{L"usb#vid_5a45&pid_8c00&mi_00#1-1"}));
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), kAccessDeniedResult);
}

TEST_F(DiscoveryTest, DevicesThatAreNoUsbVideoFunctionsAreNotListed) {
  // One without a USB interface behind it, one of another class.
  kernel.AddFile("devices/platform/virtual/video4linux/video0/index", "0\n");
  kernel.AddLink("class/video4linux/video0", "devices/platform/virtual/video4linux/video0");
  AddCamera(1, "1-1");
  kernel.AddFile(PortFolder("1-1") + "/1-1:1.0/bInterfaceClass", "ff\n");
  kernel.AddFile("class/video4linux/vbi0/index", "0\n");
  EXPECT_EQ(Cameras(), Texts());
}

TEST_F(DiscoveryTest, ADeviceWhoseAttributesCannotBeReadIsNotListed) {
  for (const char* const attribute : {"/idVendor", "/idProduct", "/bConfigurationValue",
                                      "/1-1:1.0/bInterfaceNumber", "/1-1:1.0/bInterfaceClass"}) {
    AddCamera(0, "1-1");
    kernel.AddFile(PortFolder("1-1") + attribute, "no number\n");
    EXPECT_EQ(Cameras(), Texts()) << attribute;
    RemoveCamera(0, "1-1");
  }
}

TEST_F(DiscoveryTest, OpenedByIdsIndexNameAndPath) {
  AddCamera(0, "1-1", "1234", "5678");
  AddCamera(1, "1-2");
  AddCamera(2, "1-3");
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), ZEM_OK);
  EXPECT_EQ(kernel.calls.back(), "open video1 2");
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(ZEMAPI_OpenDeviceEx(0, &handle, 0x1234, 0x5678), ZEM_OK);
  EXPECT_EQ(kernel.calls.back(), "open video0 2");
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(ZEMAPI_OpenDeviceByPath(L"USB#VID_5A45&pid_8c00&mi_00#1-3", &handle), ZEM_OK);
  EXPECT_EQ(kernel.calls.back(), "open video2 2");
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(ZEMAPI_OpenDeviceByDevPath(
                L"/dev/v4l/by-path/pci-0000:00:14.0-usbv2-0:2:1.0-video-index0", &handle),
            ZEM_OK);
  EXPECT_EQ(kernel.calls.back(), "open video1 2");
  ZEMAPI_CloseDevice(&handle);
}

TEST_F(DiscoveryTest, ADeviceThatIsThereAgainIsFoundAgain) {
  AddCamera(0, "1-1");
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDevice(0, &handle), ZEM_OK);
  RemoveCamera(0, "1-1");
  EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(handle, &zem::VendorXu), ZEM_OK) << "the descriptors are kept";
  void* second = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &second), ZEM_E_FAIL);
  AddCamera(4, "1-1");
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &second), ZEM_OK);
  ZEMAPI_CloseDevice(&second);
  ZEMAPI_CloseDevice(&handle);
}

TEST_F(DiscoveryTest, WithoutDescriptorsTheDeviceHasNoNodes) {
  AddCamera(0, "1-1");
  kernel.Remove(PortFolder("1-1") + "/descriptors");
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDevice(0, &handle), ZEM_OK);
  EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(handle, &zem::EncodingUnitXu), ZEM_OK)
      << "a device without any node counts as having every unit";
  ZEMAPI_CloseDevice(&handle);
}

// Each call of a search with its request for the device file failing, then the one for what it is.
TEST_F(DiscoveryTest, EveryCallOfAnOpenFails) {
  AddCamera(0, "1-1");
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDevice(0, &handle), ZEM_OK);
  ZEMAPI_CloseDevice(&handle);
  // The first two ask what the file is for; who may not ask takes it for a camera.
  ASSERT_EQ(kernel.calls,
            (std::vector<std::string>{"open video0 2", "video0 80685600", "open video0 2"}));
  const ZemResult kExpected[] = {ZEM_OK, ZEM_OK, kNotConnectedResult};
  for (int call = 0; call < 3; ++call) {
    kernel.calls.clear();
    kernel.failingCall = call;
    kernel.failure = -ENODEV;
    handle = nullptr;
    EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), kExpected[call]) << call;
    ZEMAPI_CloseDevice(&handle);
    EXPECT_EQ(kernel.openFiles(), 0) << call;
  }
}

}  // namespace
