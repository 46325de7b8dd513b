// Sound cards that record, and their level over ALSA's control interface.
#include <sound/asound.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "tests/linux/linux_test.h"
#include "tests/support/memory_limit.h"

namespace {

using zem::ComPtr;
using zem::testing::BeforeAllocation;
using zem::testing::FakeDevice;
using zem::testing::kAccessDeniedResult;
using zem::testing::kInvalidParameterResult;
using zem::testing::kNoInterfaceResult;
using zem::testing::kNotConnectedResult;
using zem::testing::kNotImplementedResult;
using zem::testing::kOutOfMemoryResult;
using zem::testing::kPointerResult;
using zem::testing::LinuxTest;
using zem::testing::MemoryExhausted;
using zem::testing::PortFolder;

struct FakeElement {
  std::string name;
  long minimum = 0;
  long maximum = 0;
  std::vector<long> values;
  int type = SNDRV_CTL_ELEM_TYPE_INTEGER;
  unsigned access = SNDRV_CTL_ELEM_ACCESS_READWRITE;
  int iface = SNDRV_CTL_ELEM_IFACE_MIXER;
};

// A card's control file.
class FakeCard : public FakeDevice {
 public:
  int Control(unsigned long request, void* argument) override {
    if (request == SNDRV_CTL_IOCTL_ELEM_LIST) {
      auto& list = *static_cast<snd_ctl_elem_list*>(argument);
      list.count = static_cast<unsigned>(elements.size());
      list.used = std::min(list.space, list.count);
      for (unsigned index = 0; index < list.used; ++index) {
        list.pids[index] = {};
        list.pids[index].numid = index + 1;
        list.pids[index].iface = elements[index].iface;
        std::memcpy(list.pids[index].name, elements[index].name.data(),
                    elements[index].name.size());
      }
      return 0;
    }
    if (request == SNDRV_CTL_IOCTL_ELEM_INFO) {
      auto& info = *static_cast<snd_ctl_elem_info*>(argument);
      const FakeElement& element = elements.at(info.id.numid - 1);
      info.type = element.type;
      info.access = element.access;
      info.count = static_cast<unsigned>(element.values.size());
      info.value.integer.min = element.minimum;
      info.value.integer.max = element.maximum;
      return 0;
    }
    auto& value = *static_cast<snd_ctl_elem_value*>(argument);
    FakeElement& element = elements.at(value.id.numid - 1);
    for (std::size_t channel = 0; channel < element.values.size() && channel < 128; ++channel) {
      if (request == SNDRV_CTL_IOCTL_ELEM_WRITE) {
        element.values[channel] = value.value.integer.value[channel];
      } else {
        value.value.integer.value[channel] = element.values[channel];
      }
    }
    return request == SNDRV_CTL_IOCTL_ELEM_WRITE || request == SNDRV_CTL_IOCTL_ELEM_READ ? 0
                                                                                         : -ENOTTY;
  }

  std::vector<FakeElement> elements;
};

class MicrophonesTest : public LinuxTest {
 protected:
  // A card that records; `parent` is what it hangs on.
  std::shared_ptr<FakeCard> AddCard(unsigned number, const std::string& parent,
                                    bool records = true) {
    const std::string control = "controlC" + std::to_string(number);
    const std::string folder = parent + "/sound/card" + std::to_string(number);
    kernel.AddFile(folder + "/id", "Webcam\n");
    kernel.AddLink(folder + "/device", parent);
    kernel.AddLink("class/sound/" + control + "/device", folder);
    kernel.AddFile(
        "class/sound/pcmC" + std::to_string(number) + "D1" + (records ? "c" : "p") + "/dev",
        "116:24\n");
    auto card = std::make_shared<FakeCard>();
    kernel.devices["snd/" + control] = card;
    return card;
  }

  // One that is a function of the camera on `port`.
  std::shared_ptr<FakeCard> AddUsbCard(unsigned number, const std::string& port) {
    AddCamera(0, port);
    const std::string interface = PortFolder(port) + "/" + port + ":1.2";
    kernel.AddFile(interface + "/bInterfaceNumber", "02\n");
    kernel.AddFile(interface + "/bInterfaceClass", "01\n");
    return AddCard(number, interface);
  }

  // Opens the microphone, sets its level and closes it.
  static ZemResult SetVolume(const wchar_t* name, int volume) {
    IBaseFilter* audio = nullptr;
    if (const ZemResult opened = ZEMAPI_AudioOpenDeviceByPath(name, &audio); opened != ZEM_OK) {
      return opened;
    }
    const ZemResult result = ZEMAPI_AudioSetVolume(audio, volume);
    ZEMAPI_AudioCloseDevice(&audio);
    return result;
  }

  // The mixer of a camera's microphone whose filter is closed again; null when it could not be
  // opened.
  ComPtr<IAMAudioInputMixer> OpenMixer() {
    AddUsbCard(3, "1-1")->elements = {{"Mic Capture Volume", 0, 100, {10, 10}}};
    IBaseFilter* audio = nullptr;
    EXPECT_EQ(ZEMAPI_AudioOpenDeviceByPath(kUsbName, &audio), ZEM_OK);
    ComPtr<IAMAudioInputMixer> mixer;
    if (audio != nullptr) {
      EXPECT_EQ(audio->QueryInterface(zem::IID_IAMAudioInputMixer, mixer.ReceiveVoid()), S_OK);
      ZEMAPI_AudioCloseDevice(&audio);
    }
    return mixer;
  }

  static constexpr const wchar_t* kUsbName = L"usb#vid_5a45&pid_8c00&mi_02#1-1";
};

TEST_F(MicrophonesTest, ACamerasMicrophoneIsNamedAsTheCamera) {
  const auto card = AddUsbCard(3, "1-1");
  card->elements = {{"Mic Capture Volume", 0, 100, {10, 10}}};
  EXPECT_EQ(SetVolume(kUsbName, 40), ZEM_OK);
  EXPECT_EQ(card->elements[0].values, (std::vector<long>{40, 40}));
}

TEST_F(MicrophonesTest, AnotherCardIsNamedByItsId) {
  const auto card = AddCard(0, "devices/pci0000:00/0000:00:1f.3");
  card->elements = {{"Capture Volume", -10, 10, {0}}};
  EXPECT_EQ(SetVolume(L"SOUND#webcam", 75), ZEM_OK);
  EXPECT_EQ(card->elements[0].values, (std::vector<long>{5}));
}

TEST_F(MicrophonesTest, ItsObjectsTellTheirInterfaces) {
  AddUsbCard(3, "1-1")->elements = {{"Mic Capture Volume", 0, 100, {10, 10}}};
  IBaseFilter* audio = nullptr;
  ASSERT_EQ(ZEMAPI_AudioOpenDeviceByPath(kUsbName, &audio), ZEM_OK);
  EXPECT_EQ(audio->QueryInterface(zem::IID_IBaseFilter, nullptr), kPointerResult);
  void* object = &object;
  EXPECT_EQ(audio->QueryInterface(zem::IID_IKsTopologyInfo, &object), kNoInterfaceResult);
  EXPECT_EQ(object, nullptr);
  for (const GUID& own : {zem::IID_IBaseFilter, zem::IID_IUnknown}) {
    ComPtr<IUnknown> same;
    EXPECT_EQ(audio->QueryInterface(own, same.ReceiveVoid()), S_OK);
    EXPECT_EQ(same.get(), audio);
  }
  ComPtr<IAMAudioInputMixer> mixer;
  ASSERT_EQ(audio->QueryInterface(zem::IID_IAMAudioInputMixer, mixer.ReceiveVoid()), S_OK);
  for (const GUID& own : {zem::IID_IAMAudioInputMixer, zem::IID_IUnknown}) {
    ComPtr<IUnknown> same;
    EXPECT_EQ(mixer->QueryInterface(own, same.ReceiveVoid()), S_OK);
    EXPECT_EQ(same.get(), mixer.get());
  }
  EXPECT_EQ(mixer->get_MixLevel(nullptr), kPointerResult);
  object = &object;
  EXPECT_EQ(mixer->QueryInterface(zem::IID_IBaseFilter, &object), kNoInterfaceResult);
  EXPECT_EQ(object, nullptr);
  ZEMAPI_AudioCloseDevice(&audio);
  double level = 0;
  EXPECT_EQ(mixer->get_MixLevel(&level), S_OK) << "the mixer keeps the card open";
  EXPECT_EQ(kernel.openFiles(), 1);
  mixer.Reset();
  EXPECT_EQ(kernel.openFiles(), 0);
}

TEST_F(MicrophonesTest, AMixerHasALevelOnly) {
  const ComPtr<IAMAudioInputMixer> mixer = OpenMixer();
  ASSERT_NE(mixer.get(), nullptr);
  EXPECT_EQ(mixer->put_Enable(1), kNotImplementedResult);
  EXPECT_EQ(mixer->get_Enable(nullptr), kNotImplementedResult);
  EXPECT_EQ(mixer->put_Mono(1), kNotImplementedResult);
  EXPECT_EQ(mixer->get_Mono(nullptr), kNotImplementedResult);
  EXPECT_EQ(mixer->put_Pan(0), kNotImplementedResult);
  EXPECT_EQ(mixer->get_Pan(nullptr), kNotImplementedResult);
  EXPECT_EQ(mixer->put_Loudness(1), kNotImplementedResult);
  EXPECT_EQ(mixer->get_Loudness(nullptr), kNotImplementedResult);
  EXPECT_EQ(mixer->put_Treble(0), kNotImplementedResult);
  EXPECT_EQ(mixer->get_Treble(nullptr), kNotImplementedResult);
  EXPECT_EQ(mixer->get_TrebleRange(nullptr), kNotImplementedResult);
  EXPECT_EQ(mixer->put_Bass(0), kNotImplementedResult);
  EXPECT_EQ(mixer->get_Bass(nullptr), kNotImplementedResult);
  EXPECT_EQ(mixer->get_BassRange(nullptr), kNotImplementedResult);
}

TEST_F(MicrophonesTest, WithoutMemoryNothingStaysOpen) {
  AddUsbCard(3, "1-1")->elements = {{"Mic Capture Volume", 0, 100, {10, 10}}};
  IBaseFilter* audio = nullptr;
  ASSERT_EQ(ZEMAPI_AudioOpenDeviceByPath(kUsbName, &audio), ZEM_OK);
  // First the list of the card's elements, then the mixer has no memory.
  for (const int served : {0, 1}) {
    void* object = &object;
    int asked = 0;
    std::optional<MemoryExhausted> exhausted;
    const BeforeAllocation count([&] {
      if (asked++ == served) {
        exhausted.emplace();
      }
    });
    EXPECT_EQ(audio->QueryInterface(zem::IID_IAMAudioInputMixer, &object), kOutOfMemoryResult);
    EXPECT_EQ(asked, served + 1);
    EXPECT_EQ(object, nullptr);
  }
  ZEMAPI_AudioCloseDevice(&audio);
  EXPECT_EQ(kernel.openFiles(), 0);
}

TEST_F(MicrophonesTest, WithoutMemoryNoneIsListedOrBound) {
  AddUsbCard(3, "1-1");
  ComPtr<ICreateDevEnum> system;
  ASSERT_EQ(zem::platform::CreateDeviceEnumerator(system.Receive()), S_OK);
  IEnumMoniker* none = nullptr;
  {
    const MemoryExhausted exhausted;
    EXPECT_EQ(system->CreateClassEnumerator(zem::CLSID_AudioInputDeviceCategory, &none, 0),
              kOutOfMemoryResult);
  }
  EXPECT_EQ(none, nullptr);
  ComPtr<IEnumMoniker> devices;
  ASSERT_EQ(
      system->CreateClassEnumerator(zem::CLSID_AudioInputDeviceCategory, devices.Receive(), 0),
      S_OK);
  ComPtr<IMoniker> microphone;
  ASSERT_EQ(devices->Next(1, microphone.Receive(), nullptr), S_OK);
  void* filter = nullptr;
  const MemoryExhausted exhausted;
  EXPECT_EQ(microphone->BindToObject(nullptr, nullptr, zem::IID_IBaseFilter, &filter),
            kOutOfMemoryResult);
  EXPECT_EQ(filter, nullptr);
  EXPECT_EQ(kernel.openFiles(), 0);
}

TEST_F(MicrophonesTest, ALevelThatCannotBeReadSaysWhy) {
  const ComPtr<IAMAudioInputMixer> mixer = OpenMixer();
  ASSERT_NE(mixer.get(), nullptr);
  double level = 0.75;
  kernel.failingCall = static_cast<int>(kernel.calls.size());
  kernel.failure = -EPERM;
  EXPECT_EQ(mixer->get_MixLevel(&level), kAccessDeniedResult);
  kernel.failingCall = static_cast<int>(kernel.calls.size());
  EXPECT_EQ(mixer->put_MixLevel(0.5), kAccessDeniedResult);
}

TEST_F(MicrophonesTest, ACardThatOnlyPlaysIsNoMicrophone) {
  AddCard(0, "devices/pci0000:00/0000:00:1f.3", false);
  EXPECT_EQ(SetVolume(L"sound#Webcam", 75), ZEM_E_FAIL);
}

TEST_F(MicrophonesTest, AnyOfTheStreamsThatACardMayHaveMakesAMicrophone) {
  AddCard(0, "devices/pci0000:00/0000:00:1f.3", false)->elements = {
      {"Capture Volume", 0, 100, {0}}};
  kernel.AddFile("class/sound/pcmC0D32c/dev", "116:24\n");
  EXPECT_EQ(SetVolume(L"sound#Webcam", 75), ZEM_E_FAIL);
  for (const char* const stream : {"0", "31"}) {
    const std::string folder = std::string("class/sound/pcmC0D") + stream + "c";
    kernel.AddFile(folder + "/dev", "116:24\n");
    EXPECT_EQ(SetVolume(L"sound#Webcam", 75), ZEM_OK) << stream;
    kernel.Remove(folder);
  }
}

TEST_F(MicrophonesTest, PropertiesOfEitherKind) {
  AddUsbCard(3, "1-1");
  AddCard(4, "devices/pci0000:00/0000:00:1f.3");
  ComPtr<ICreateDevEnum> system;
  ASSERT_EQ(zem::platform::CreateDeviceEnumerator(system.Receive()), S_OK);
  ComPtr<IEnumMoniker> devices;
  ASSERT_EQ(
      system->CreateClassEnumerator(zem::CLSID_AudioInputDeviceCategory, devices.Receive(), 0),
      S_OK);
  std::vector<std::wstring> texts;
  ComPtr<IMoniker> device;
  while (devices->Next(1, device.Receive(), nullptr) == S_OK) {
    ComPtr<IPropertyBag> bag;
    ASSERT_EQ(device->BindToStorage(nullptr, nullptr, zem::IID_IPropertyBag, bag.ReceiveVoid()),
              S_OK);
    for (const wchar_t* const name : {L"DevicePath", L"FriendlyName"}) {
      VARIANT value;
      zem::platform::InitVariant(&value);
      EXPECT_EQ(bag->Read(name, &value, nullptr), S_OK);
      texts.emplace_back(value.bstrVal);
      zem::platform::ClearVariant(&value);
    }
  }
  EXPECT_EQ(texts, (std::vector<std::wstring>{L"/dev/snd/by-path/pci-0000:00:14.0-usbv2-0:1:1.2",
                                              L"Test Camera", L"/dev/snd/controlC4", L"Webcam"}));
}

TEST_F(MicrophonesTest, EveryPercentIsTheNearestStep) {
  const auto card = AddUsbCard(0, "1-1");
  card->elements = {{"Mic Capture Volume", 10, 17, {0}}};
  const std::pair<int, long> kCases[] = {{0, 10},  {7, 10},  {8, 11},  {50, 14},
                                         {92, 16}, {93, 17}, {100, 17}};
  for (const auto& [percent, expected] : kCases) {
    EXPECT_EQ(SetVolume(kUsbName, percent), ZEM_OK);
    EXPECT_EQ(card->elements[0].values[0], expected) << percent;
  }
}

TEST_F(MicrophonesTest, LevelsOutside0To100AreRefused) {
  const auto card = AddUsbCard(0, "1-1");
  card->elements = {{"Mic Capture Volume", 0, 100, {50}}};
  for (const int percent : {-1, 101, 150, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(SetVolume(kUsbName, percent), kInvalidParameterResult) << percent;
  }
  EXPECT_EQ(card->elements[0].values[0], 50);
}

TEST_F(MicrophonesTest, TheLevelIsReadOfTheFirstChannel) {
  const auto card = AddUsbCard(0, "1-1");
  card->elements = {{"Mic Capture Volume", 10, 20, {15, 20}}};
  IBaseFilter* audio = nullptr;
  ASSERT_EQ(ZEMAPI_AudioOpenDeviceByPath(kUsbName, &audio), ZEM_OK);
  ComPtr<IAMAudioInputMixer> mixer;
  ASSERT_EQ(audio->QueryInterface(zem::IID_IAMAudioInputMixer, mixer.ReceiveVoid()), S_OK);
  // The mixer outlives the caller's own reference.
  ZEMAPI_AudioCloseDevice(&audio);
  double level = 0;
  EXPECT_EQ(mixer->get_MixLevel(&level), S_OK);
  EXPECT_DOUBLE_EQ(level, 0.5);
  EXPECT_EQ(mixer->get_MixLevel(nullptr), static_cast<HRESULT>(0x80004003U));
  EXPECT_EQ(mixer->put_MixLevel(std::numeric_limits<double>::quiet_NaN()), kInvalidParameterResult);
}

TEST_F(MicrophonesTest, TheLevelIsTheElementOfThatNameElseTheFirstThatEndsSo) {
  const auto card = AddUsbCard(0, "1-1");
  const FakeElement boost = {"Boost Capture Volume", 0, 100, {1}};
  const FakeElement mic = {"Mic Capture Volume", 0, 100, {1}};
  const FakeElement exact = {"Capture Volume", 0, 100, {1}};
  card->elements = {boost, mic, exact};
  EXPECT_EQ(SetVolume(kUsbName, 40), ZEM_OK);
  EXPECT_EQ(card->elements[2].values[0], 40);
  card->elements = {boost, mic};
  EXPECT_EQ(SetVolume(kUsbName, 40), ZEM_OK);
  EXPECT_EQ(card->elements[0].values[0], 40);
  EXPECT_EQ(card->elements[1].values[0], 1);
}

TEST_F(MicrophonesTest, ElementsThatAreNoLevelAreNone) {
  const auto card = AddUsbCard(0, "1-1");
  FakeElement playback = {"Speaker Playback Volume", 0, 100, {1}};
  FakeElement boolean = {"Capture Volume", 0, 1, {1}, SNDRV_CTL_ELEM_TYPE_BOOLEAN};
  FakeElement readOnly = {"Capture Volume",          0, 100, {1}, SNDRV_CTL_ELEM_TYPE_INTEGER,
                          SNDRV_CTL_ELEM_ACCESS_READ};
  FakeElement ofPcm = {"Capture Volume",
                       0,
                       100,
                       {1},
                       SNDRV_CTL_ELEM_TYPE_INTEGER,
                       SNDRV_CTL_ELEM_ACCESS_READWRITE,
                       SNDRV_CTL_ELEM_IFACE_PCM};
  FakeElement still = {"Capture Volume", 5, 5, {5}};
  card->elements = {playback, boolean, readOnly, ofPcm, still};
  EXPECT_EQ(SetVolume(kUsbName, 40), kNoInterfaceResult);
  card->elements.clear();
  EXPECT_EQ(SetVolume(kUsbName, 40), kNoInterfaceResult);
}

TEST_F(MicrophonesTest, MoreChannelsThanARequestHoldsAreCut) {
  const auto card = AddUsbCard(0, "1-1");
  card->elements = {{"Mic Capture Volume", 0, 100, std::vector<long>(200, 1)}};
  EXPECT_EQ(SetVolume(kUsbName, 40), ZEM_OK);
  EXPECT_EQ(card->elements[0].values[127], 40);
}

TEST_F(MicrophonesTest, EveryCallFails) {
  const auto card = AddUsbCard(0, "1-1");
  card->elements = {{"Mic Capture Volume", 0, 100, {1}}};
  ASSERT_EQ(SetVolume(kUsbName, 40), ZEM_OK);
  // Open, both lists, the description, the setting. What cannot be described is no level.
  constexpr int kDescription = 3;
  ASSERT_EQ(kernel.calls.size(), 5U);
  for (const auto& [error, expected] :
       {std::pair(ENODEV, kNotConnectedResult), std::pair(EPERM, kAccessDeniedResult)}) {
    for (int call = 0; call < 5; ++call) {
      kernel.calls.clear();
      kernel.failingCall = call;
      kernel.failure = -error;
      EXPECT_EQ(SetVolume(kUsbName, 50), call == kDescription ? kNoInterfaceResult : expected)
          << call;
    }
  }
  EXPECT_EQ(card->elements[0].values[0], 40);
}

}  // namespace
