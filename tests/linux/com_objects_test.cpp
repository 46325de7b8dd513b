// The Linux platform's objects as a caller of their interfaces may misuse them, and without memory.
#include <optional>
#include <vector>

#include "device/extension_units.h"
#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "tests/linux/linux_test.h"
#include "tests/support/memory_limit.h"

namespace {

using zem::ComPtr;
using zem::testing::BeforeAllocation;
using zem::testing::kInvalidParameterResult;
using zem::testing::kNoInterfaceResult;
using zem::testing::kNotFoundResult;
using zem::testing::kNotImplementedResult;
using zem::testing::kOutOfMemoryResult;
using zem::testing::kPointerResult;
using zem::testing::LinuxTest;
using zem::testing::MemoryExhausted;

constexpr GUID kUnknownInterface = {0x12345678, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};

class ComObjectsTest : public LinuxTest {
 protected:
  ComObjectsTest() { AddCamera(0, "1-1"); }

  static ComPtr<IEnumMoniker> Cameras() {
    ComPtr<ICreateDevEnum> system;
    EXPECT_EQ(zem::platform::CreateDeviceEnumerator(system.Receive()), S_OK);
    ComPtr<IEnumMoniker> devices;
    EXPECT_EQ(
        system->CreateClassEnumerator(zem::CLSID_VideoInputDeviceCategory, devices.Receive(), 0),
        S_OK);
    return devices;
  }

  static ComPtr<IMoniker> Moniker() {
    ComPtr<IMoniker> moniker;
    EXPECT_EQ(Cameras()->Next(1, moniker.Receive(), nullptr), S_OK);
    return moniker;
  }

  static ComPtr<IBaseFilter> Filter() {
    ComPtr<IBaseFilter> filter;
    EXPECT_EQ(Moniker()->BindToObject(nullptr, nullptr, zem::IID_IBaseFilter, filter.ReceiveVoid()),
              S_OK);
    return filter;
  }

  static ComPtr<IKsTopologyInfo> Topology() {
    ComPtr<IKsTopologyInfo> topology;
    EXPECT_EQ(Filter()->QueryInterface(zem::IID_IKsTopologyInfo, topology.ReceiveVoid()), S_OK);
    return topology;
  }

  static ComPtr<IKsControl> Node() {
    ComPtr<IKsControl> node;
    EXPECT_EQ(Topology()->CreateNodeInstance(2, zem::IID_IKsControl, node.ReceiveVoid()), S_OK);
    return node;
  }

  // Null is refused, an unknown interface leaves null; each of `known` is there.
  template <class Interface>
  static void ExpectInterfaces(const ComPtr<Interface>& object, const std::vector<GUID>& known) {
    EXPECT_EQ(object->QueryInterface(zem::IID_IUnknown, nullptr), kPointerResult);
    void* other = &other;
    EXPECT_EQ(object->QueryInterface(kUnknownInterface, &other), kNoInterfaceResult);
    EXPECT_EQ(other, nullptr);
    for (const GUID& id : known) {
      ComPtr<IUnknown> unknown;
      EXPECT_EQ(object->QueryInterface(id, unknown.ReceiveVoid()), S_OK);
      EXPECT_TRUE(unknown);
    }
  }
};

TEST_F(ComObjectsTest, EachTellsItsInterfaces) {
  ComPtr<ICreateDevEnum> system;
  ASSERT_EQ(zem::platform::CreateDeviceEnumerator(system.Receive()), S_OK);
  ExpectInterfaces(system, {zem::IID_IUnknown, zem::IID_ICreateDevEnum});
  ExpectInterfaces(Cameras(), {});
  ExpectInterfaces(Moniker(), {});
  ExpectInterfaces(Filter(), {zem::IID_IUnknown, zem::IID_IBaseFilter, zem::IID_IKsTopologyInfo});
  ExpectInterfaces(Node(), {zem::IID_IUnknown, zem::IID_IKsControl});
  ComPtr<IPropertyBag> properties;
  ASSERT_EQ(
      Moniker()->BindToStorage(nullptr, nullptr, zem::IID_IPropertyBag, properties.ReceiveVoid()),
      S_OK);
  ExpectInterfaces(properties, {zem::IID_IUnknown, zem::IID_IPropertyBag});
  ComPtr<IAMVideoProcAmp> controls;
  ASSERT_EQ(Filter()->QueryInterface(zem::IID_IAMVideoProcAmp, controls.ReceiveVoid()), S_OK);
  ExpectInterfaces(controls, {zem::IID_IUnknown, zem::IID_IAMVideoProcAmp});
}

TEST_F(ComObjectsTest, OutputsThatAreNullAreRefused) {
  ComPtr<ICreateDevEnum> system;
  ASSERT_EQ(zem::platform::CreateDeviceEnumerator(system.Receive()), S_OK);
  EXPECT_EQ(system->CreateClassEnumerator(zem::CLSID_VideoInputDeviceCategory, nullptr, 0),
            kPointerResult);
  EXPECT_EQ(Cameras()->Next(1, nullptr, nullptr), kPointerResult);
  const ComPtr<IMoniker> moniker = Moniker();
  EXPECT_EQ(moniker->BindToObject(nullptr, nullptr, zem::IID_IBaseFilter, nullptr), kPointerResult);
  EXPECT_EQ(moniker->BindToStorage(nullptr, nullptr, zem::IID_IPropertyBag, nullptr),
            kPointerResult);
  EXPECT_EQ(moniker->GetDisplayName(nullptr, nullptr, nullptr), kPointerResult);
  ComPtr<IPropertyBag> properties;
  ASSERT_EQ(
      moniker->BindToStorage(nullptr, nullptr, zem::IID_IPropertyBag, properties.ReceiveVoid()),
      S_OK);
  VARIANT value;
  EXPECT_EQ(properties->Read(L"DevicePath", nullptr, nullptr), kPointerResult);
  EXPECT_EQ(properties->Read(nullptr, &value, nullptr), kPointerResult);
  const ComPtr<IKsTopologyInfo> topology = Topology();
  EXPECT_EQ(topology->get_NumNodes(nullptr), kPointerResult);
  EXPECT_EQ(topology->get_NodeType(0, nullptr), kPointerResult);
  EXPECT_EQ(topology->CreateNodeInstance(0, zem::IID_IKsControl, nullptr), kPointerResult);
  KSP_NODE request = {};
  ULONG moved = 0;
  std::uint8_t data[8] = {};
  auto* const property = reinterpret_cast<PKSPROPERTY>(&request);
  EXPECT_EQ(Node()->KsProperty(nullptr, sizeof(request), data, 8, &moved), kPointerResult);
  EXPECT_EQ(Node()->KsProperty(property, sizeof(request), data, 8, nullptr), kPointerResult);
  EXPECT_EQ(Node()->KsProperty(property, sizeof(KSPROPERTY), data, 8, &moved),
            kInvalidParameterResult);
}

TEST_F(ComObjectsTest, OtherInterfacesAreNotMade) {
  const ComPtr<IMoniker> moniker = Moniker();
  void* object = &object;
  EXPECT_EQ(moniker->BindToObject(nullptr, nullptr, kUnknownInterface, &object),
            kNoInterfaceResult);
  EXPECT_EQ(object, nullptr);
  object = &object;
  EXPECT_EQ(moniker->BindToStorage(nullptr, nullptr, kUnknownInterface, &object),
            kNoInterfaceResult);
  EXPECT_EQ(object, nullptr);
  object = &object;
  EXPECT_EQ(Topology()->CreateNodeInstance(2, kUnknownInterface, &object), kNoInterfaceResult);
  EXPECT_EQ(object, nullptr);
}

TEST_F(ComObjectsTest, AnEnumeratorTellsHowManyCame) {
  AddCamera(1, "1-2");
  const ComPtr<IEnumMoniker> devices = Cameras();
  IMoniker* monikers[3] = {};
  ULONG fetched = 9;
  EXPECT_EQ(devices->Next(3, monikers, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 2U);
  ASSERT_NE(monikers[1], nullptr);
  EXPECT_EQ(monikers[2], nullptr);
  monikers[0]->Release();
  monikers[1]->Release();
  EXPECT_EQ(devices->Next(1, monikers, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 0U);
}

TEST_F(ComObjectsTest, AnotherCategoryIsEmpty) {
  ComPtr<ICreateDevEnum> system;
  ASSERT_EQ(zem::platform::CreateDeviceEnumerator(system.Receive()), S_OK);
  IEnumMoniker* none = reinterpret_cast<IEnumMoniker*>(&system);
  EXPECT_EQ(system->CreateClassEnumerator(kUnknownInterface, &none, 0), S_FALSE);
  EXPECT_EQ(none, nullptr);
}

TEST_F(ComObjectsTest, EveryKindOfEntityHasItsNodeType) {
  // Configuration 1 with one interface: an input terminal that is no camera, a selector, a unit of
  // the encoding kind.
  static constexpr unsigned char kDescriptors[] = {
      18, 1,    0,  2, 0xEF, 2,    1, 64,   0x45, 0x5A, 0x00, 0x8C, 0,  //
      1,  1,    2,  0, 1,                                               //
      9,  2,    46, 0, 1,    1,    0, 0x80, 50,                         //
      9,  4,    0,  0, 1,    0x0E, 1, 0,    0,                          //
      8,  0x24, 2,  1, 0x01, 0x04, 0, 0,                                //
      7,  0x24, 4,  8, 1,    1,    0,                                   //
      13, 0x24, 7,  6, 2,    0,    3, 0,    0,    0,    0,    0,    0};
  kernel.AddFile(zem::testing::PortFolder("1-1") + "/descriptors",
                 {reinterpret_cast<const char*>(kDescriptors), sizeof(kDescriptors)});
  const ComPtr<IKsTopologyInfo> topology = Topology();
  DWORD count = 0;
  EXPECT_EQ(topology->get_NumNodes(&count), S_OK);
  ASSERT_EQ(count, 3U);
  const GUID expected[] = {
      {0xDFF229E2, 0xF70F, 0x11D0, {0xB9, 0x17, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}},
      {0xDFF229E4, 0xF70F, 0x11D0, {0xB9, 0x17, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}},
      {0x941C7AC0, 0xC559, 0x11D0, {0x8A, 0x2B, 0x00, 0xA0, 0xC9, 0x25, 0x5A, 0xC1}}};
  for (DWORD node = 0; node < count; ++node) {
    GUID type = {};
    EXPECT_EQ(topology->get_NodeType(node, &type), S_OK);
    EXPECT_TRUE(type == expected[node]) << node;
  }
}

TEST_F(ComObjectsTest, PropertiesAreNotWritten) {
  ComPtr<IPropertyBag> properties;
  ASSERT_EQ(
      Moniker()->BindToStorage(nullptr, nullptr, zem::IID_IPropertyBag, properties.ReceiveVoid()),
      S_OK);
  VARIANT value;
  zem::platform::InitVariant(&value);
  EXPECT_EQ(properties->Write(L"FriendlyName", &value), kNotImplementedResult);
}

TEST_F(ComObjectsTest, AFilterHasNoStreams) {
  const ComPtr<IBaseFilter> filter = Filter();
  EXPECT_EQ(filter->GetClassID(nullptr), kNotImplementedResult);
  EXPECT_EQ(filter->Stop(), kNotImplementedResult);
  EXPECT_EQ(filter->Pause(), kNotImplementedResult);
  EXPECT_EQ(filter->Run(0), kNotImplementedResult);
  EXPECT_EQ(filter->GetState(0, nullptr), kNotImplementedResult);
  EXPECT_EQ(filter->SetSyncSource(nullptr), kNotImplementedResult);
  EXPECT_EQ(filter->GetSyncSource(nullptr), kNotImplementedResult);
  EXPECT_EQ(filter->EnumPins(nullptr), kNotImplementedResult);
  EXPECT_EQ(filter->FindPin(L"pin", nullptr), kNotImplementedResult);
  EXPECT_EQ(filter->QueryFilterInfo(nullptr), kNotImplementedResult);
  EXPECT_EQ(filter->JoinFilterGraph(nullptr, L"name"), kNotImplementedResult);
  EXPECT_EQ(filter->QueryVendorInfo(nullptr), kNotImplementedResult);
}

TEST_F(ComObjectsTest, AMonikerIsNamedAndBoundOnly) {
  const ComPtr<IMoniker> moniker = Moniker();
  EXPECT_EQ(moniker->GetClassID(nullptr), kNotImplementedResult);
  EXPECT_EQ(moniker->IsDirty(), kNotImplementedResult);
  EXPECT_EQ(moniker->Load(nullptr), kNotImplementedResult);
  EXPECT_EQ(moniker->Save(nullptr, 0), kNotImplementedResult);
  EXPECT_EQ(moniker->GetSizeMax(nullptr), kNotImplementedResult);
  EXPECT_EQ(moniker->Reduce(nullptr, 0, nullptr, nullptr), kNotImplementedResult);
  EXPECT_EQ(moniker->ComposeWith(nullptr, 0, nullptr), kNotImplementedResult);
  EXPECT_EQ(moniker->Enum(1, nullptr), kNotImplementedResult);
  EXPECT_EQ(moniker->IsEqual(nullptr), kNotImplementedResult);
  EXPECT_EQ(moniker->Hash(nullptr), kNotImplementedResult);
  EXPECT_EQ(moniker->IsRunning(nullptr, nullptr, nullptr), kNotImplementedResult);
  EXPECT_EQ(moniker->GetTimeOfLastChange(nullptr, nullptr, nullptr), kNotImplementedResult);
  EXPECT_EQ(moniker->Inverse(nullptr), kNotImplementedResult);
  EXPECT_EQ(moniker->CommonPrefixWith(nullptr, nullptr), kNotImplementedResult);
  EXPECT_EQ(moniker->RelativePathTo(nullptr, nullptr), kNotImplementedResult);
  EXPECT_EQ(moniker->ParseDisplayName(nullptr, nullptr, nullptr, nullptr, nullptr),
            kNotImplementedResult);
  EXPECT_EQ(moniker->IsSystemMoniker(nullptr), kNotImplementedResult);
}

TEST_F(ComObjectsTest, AnEnumeratorOnlyGoesForward) {
  const ComPtr<IEnumMoniker> devices = Cameras();
  EXPECT_EQ(devices->Skip(1), kNotImplementedResult);
  EXPECT_EQ(devices->Reset(), kNotImplementedResult);
  EXPECT_EQ(devices->Clone(nullptr), kNotImplementedResult);
}

TEST_F(ComObjectsTest, ATopologyHasNodesOnlyAndTheyTakePropertiesOnly) {
  const ComPtr<IKsTopologyInfo> topology = Topology();
  DWORD count = 7;
  EXPECT_EQ(topology->get_NumCategories(&count), S_OK);
  EXPECT_EQ(count, 0U);
  count = 7;
  EXPECT_EQ(topology->get_NumConnections(&count), S_OK);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(topology->get_NumCategories(nullptr), kPointerResult);
  EXPECT_EQ(topology->get_NumConnections(nullptr), kPointerResult);
  GUID category = {};
  EXPECT_EQ(topology->get_Category(0, &category), kNotFoundResult);
  EXPECT_EQ(topology->get_ConnectionInfo(0, nullptr), kNotFoundResult);
  EXPECT_EQ(topology->get_NodeName(0, nullptr, 0, nullptr), kNotFoundResult);
  const ComPtr<IKsControl> node = Node();
  EXPECT_EQ(node->KsMethod(nullptr, 0, nullptr, 0, nullptr), kNotImplementedResult);
  EXPECT_EQ(node->KsEvent(nullptr, 0, nullptr, 0, nullptr), kNotImplementedResult);
}

// Every allocation of an operation fails in turn, all behind it succeed.
template <class Operation>
std::vector<ZemResult> ResultsWithoutMemory(Operation operation) {
  std::vector<ZemResult> results;
  for (int failing = 0;; ++failing) {
    int asked = 0;
    std::optional<MemoryExhausted> exhausted;
    const BeforeAllocation count([&] {
      exhausted.reset();
      if (asked++ == failing) {
        exhausted.emplace();
      }
    });
    const ZemResult result = operation();
    if (asked <= failing) {
      EXPECT_EQ(result, ZEM_OK) << "all of the memory was there";
      return results;
    }
    results.push_back(result);
  }
}

TEST_F(ComObjectsTest, OpeningWithoutMemoryLeavesNothingOpen) {
  const auto results = ResultsWithoutMemory([] {
    void* device = nullptr;
    const ZemResult opened = ZEMAPI_OpenDeviceByPath(L"usb#vid_5a45&pid_8c00&mi_00#1-1", &device);
    EXPECT_EQ(device != nullptr, opened == ZEM_OK);
    if (device != nullptr) {
      ZEMAPI_CloseDevice(&device);
    }
    return opened;
  });
  // The system's objects, the device's name, without which it is passed over, the camera's
  // descriptors and its filter, the handle, and the nodes' controls that the look for the vendor
  // unit asks for: to that look a unit that cannot be asked is none.
  std::vector<ZemResult> expected(4, kOutOfMemoryResult);
  expected.insert(expected.end(),
                  {ZEM_E_FAIL, kOutOfMemoryResult, kOutOfMemoryResult, ZEM_E_FAIL, 1, 1, 1});
  EXPECT_EQ(results, expected);
  EXPECT_EQ(kernel.openFiles(), 0);
}

TEST_F(ComObjectsTest, AControlWithoutMemoryIsOutOfMemory) {
  const ComPtr<IBaseFilter> filter = Filter();
  const ComPtr<IKsTopologyInfo> topology = Topology();
  const ComPtr<IMoniker> moniker = Moniker();
  ComPtr<IPropertyBag> properties;
  ASSERT_EQ(
      moniker->BindToStorage(nullptr, nullptr, zem::IID_IPropertyBag, properties.ReceiveVoid()),
      S_OK);
  const MemoryExhausted exhausted;
  VARIANT value;
  zem::platform::InitVariant(&value);
  EXPECT_EQ(properties->Read(L"DevicePath", &value, nullptr), kOutOfMemoryResult);
  void* object = nullptr;
  EXPECT_EQ(moniker->BindToStorage(nullptr, nullptr, zem::IID_IPropertyBag, &object),
            kOutOfMemoryResult);
  EXPECT_EQ(topology->CreateNodeInstance(2, zem::IID_IKsControl, &object), kOutOfMemoryResult);
  EXPECT_EQ(filter->QueryInterface(zem::IID_IAMVideoProcAmp, &object), kOutOfMemoryResult);
  EXPECT_EQ(filter->QueryInterface(zem::IID_IAMCameraControl, &object), kOutOfMemoryResult);
  ICreateDevEnum* system = nullptr;
  EXPECT_EQ(zem::platform::CreateDeviceEnumerator(&system), kOutOfMemoryResult);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(system, nullptr);
}

}  // namespace
