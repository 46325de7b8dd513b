// The simulator's COM objects refuse null pointers, as a real system's do; and what they answer
// that the library does not ask for.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "simulator/camera.h"
#include "simulator/com_camera.h"
#include "simulator/com_microphone.h"
#include "simulator/device_list.h"
#include "simulator/standard_controls.h"

namespace {

using zem::ComPtr;
using zem::simulator::Camera;
using zem::simulator::ControlFamily;
using zem::simulator::ListedDevice;
using zem::simulator::Microphone;

void ExpectAllRefused(const std::vector<std::function<HRESULT()>>& calls) {
  for (std::size_t index = 0; index < calls.size(); ++index) {
    EXPECT_EQ(calls[index](), E_POINTER) << index;
  }
}

class ComObjectsTest : public ::testing::Test {
 protected:
  ComObjectsTest() {
    camera->AddPlainNode();
    camera->AddControls(ControlFamily::kVideoProcessing,
                        zem::simulator::DefaultControls(ControlFamily::kVideoProcessing));
  }
  ~ComObjectsTest() override { EXPECT_EQ(zem::simulator::liveComObjects, 0); }

  ComPtr<IBaseFilter> Filter() const {
    return ComPtr<IBaseFilter>::Adopt(zem::simulator::MakeCameraFilter(camera, nullptr));
  }

  std::shared_ptr<Camera> camera = std::make_shared<Camera>();
};

TEST_F(ComObjectsTest, CameraAndItsInterfaces) {
  const ComPtr<IBaseFilter> filter = Filter();
  ComPtr<IKsTopologyInfo> topology;
  ASSERT_EQ(filter->QueryInterface(zem::IID_IKsTopologyInfo, topology.ReceiveVoid()), S_OK);
  ComPtr<IKsControl> node;
  ASSERT_EQ(topology->CreateNodeInstance(0, zem::IID_IKsControl, node.ReceiveVoid()), S_OK);
  ComPtr<IAMVideoProcAmp> amplifier;
  ASSERT_EQ(filter->QueryInterface(zem::IID_IAMVideoProcAmp, amplifier.ReceiveVoid()), S_OK);
  KSP_NODE request = {};
  ULONG moved = 0;
  LONG number = 0;
  ExpectAllRefused({
      [&] { return filter->QueryInterface(zem::IID_IKsTopologyInfo, nullptr); },
      [&] { return filter->QueryInterface(zem::IID_IAMVideoProcAmp, nullptr); },
      [&] { return topology->get_NumCategories(nullptr); },
      [&] { return topology->get_NumConnections(nullptr); },
      [&] { return topology->get_NumNodes(nullptr); },
      [&] { return topology->get_NodeType(0, nullptr); },
      [&] { return topology->CreateNodeInstance(0, zem::IID_IKsControl, nullptr); },
      [&] { return node->QueryInterface(zem::IID_IKsControl, nullptr); },
      [&] { return node->KsProperty(nullptr, sizeof(request), nullptr, 0, &moved); },
      [&] {
        return node->KsProperty(reinterpret_cast<PKSPROPERTY>(&request), sizeof(request), nullptr,
                                0, nullptr);
      },
      [&] { return amplifier->QueryInterface(zem::IID_IAMVideoProcAmp, nullptr); },
      [&] { return amplifier->Get(0, nullptr, &number); },
      [&] { return amplifier->Get(0, &number, nullptr); },
      [&] { return amplifier->GetRange(0, &number, &number, nullptr, &number, &number); },
  });
}

TEST_F(ComObjectsTest, Microphone) {
  const auto filter = ComPtr<IBaseFilter>::Adopt(
      zem::simulator::MakeMicrophoneFilter(std::make_shared<Microphone>(), nullptr));
  ComPtr<IAMAudioInputMixer> mixer;
  ASSERT_EQ(filter->QueryInterface(zem::IID_IAMAudioInputMixer, mixer.ReceiveVoid()), S_OK);
  ExpectAllRefused({
      [&] { return filter->QueryInterface(zem::IID_IAMAudioInputMixer, nullptr); },
      [&] { return mixer->get_MixLevel(nullptr); },
  });
}

TEST_F(ComObjectsTest, ListedDeviceHasTheTextsThatItWasGiven) {
  const auto read = [](const ListedDevice& listed, const wchar_t* name) -> std::wstring {
    const auto system =
        ComPtr<ICreateDevEnum>::Adopt(zem::simulator::MakeDeviceEnumerator({listed}, nullptr));
    ComPtr<IEnumMoniker> devices;
    system->CreateClassEnumerator(zem::CLSID_VideoInputDeviceCategory, devices.Receive(), 0);
    ComPtr<IMoniker> moniker;
    devices->Next(1, moniker.Receive(), nullptr);
    ComPtr<IPropertyBag> bag;
    moniker->BindToStorage(nullptr, nullptr, zem::IID_IPropertyBag, bag.ReceiveVoid());
    VARIANT value = {};
    if (bag->Read(name, &value, nullptr) != S_OK) {
      return L"(none)";
    }
    EXPECT_EQ(value.vt, VT_BSTR);
    std::wstring text = value.bstrVal;
    zem::platform::ClearVariant(&value);
    return text;
  };
  ListedDevice device;
  EXPECT_EQ(read(device, L"FriendlyName"), L"(none)");
  EXPECT_EQ(read(device, L"DevicePath"), L"(none)");
  device.devicePath = L"path";
  device.friendlyName = L"name";
  EXPECT_EQ(read(device, L"FriendlyName"), L"name");
  EXPECT_EQ(read(device, L"DevicePath"), L"path");
  EXPECT_EQ(read(device, L"CLSID"), L"(none)");
}

TEST_F(ComObjectsTest, DeviceList) {
  ListedDevice device;
  device.displayName = L"name";
  device.devicePath = L"path";
  device.bind = [this] { return Filter().Detach(); };
  const auto system =
      ComPtr<ICreateDevEnum>::Adopt(zem::simulator::MakeDeviceEnumerator({device}, nullptr));
  ComPtr<IEnumMoniker> devices;
  ASSERT_EQ(
      system->CreateClassEnumerator(zem::CLSID_VideoInputDeviceCategory, devices.Receive(), 0),
      S_OK);
  ExpectAllRefused({[&] { return devices->Next(1, nullptr, nullptr); }});
  ComPtr<IMoniker> moniker;
  ASSERT_EQ(devices->Next(1, moniker.Receive(), nullptr), S_OK);
  ComPtr<IPropertyBag> bag;
  ASSERT_EQ(moniker->BindToStorage(nullptr, nullptr, zem::IID_IPropertyBag, bag.ReceiveVoid()),
            S_OK);
  VARIANT value = {};
  ExpectAllRefused({
      [&] { return system->QueryInterface(zem::IID_ICreateDevEnum, nullptr); },
      [&] {
        return system->CreateClassEnumerator(zem::CLSID_VideoInputDeviceCategory, nullptr, 0);
      },
      [&] { return devices->QueryInterface(zem::IID_IUnknown, nullptr); },
      [&] { return moniker->QueryInterface(zem::IID_IUnknown, nullptr); },
      [&] { return moniker->BindToObject(nullptr, nullptr, zem::IID_IBaseFilter, nullptr); },
      [&] { return moniker->BindToStorage(nullptr, nullptr, zem::IID_IPropertyBag, nullptr); },
      [&] { return moniker->GetDisplayName(nullptr, nullptr, nullptr); },
      [&] { return bag->QueryInterface(zem::IID_IPropertyBag, nullptr); },
      [&] { return bag->Read(nullptr, &value, nullptr); },
      [&] { return bag->Read(L"DevicePath", nullptr, nullptr); },
  });
}

}  // namespace
