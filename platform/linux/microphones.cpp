#include "platform/linux/microphones.h"

#include <fcntl.h>
#include <sound/asound.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

#include "platform/any_null.h"
#include "platform/com_object.h"
#include "platform/com_ptr.h"
#include "platform/com_unused.h"
#include "platform/linux/errors.h"

namespace zem::platform {
namespace {

// As many as ALSA numbers at most.
constexpr std::size_t kMaxCards = 256;
constexpr unsigned kMaxStreams = 32;

constexpr std::string_view kLevelName = "Capture Volume";

PathText SoundFolder(std::string_view entry, unsigned card) {
  PathText folder({kernel::SysFolder(), "/class/sound/", entry});
  folder.AppendNumber(card);
  return folder;
}

PathText CardFolder(unsigned card) { return {SoundFolder("controlC", card).view(), "/device"}; }

bool Records(unsigned card) {
  for (unsigned stream = 0; stream < kMaxStreams; ++stream) {
    PathText folder = SoundFolder("pcmC", card);
    folder.Append({"D"});
    folder.AppendNumber(stream);
    folder.Append({"c"});
    if (!ReadAttribute(folder, "dev").empty()) {
      return true;
    }
  }
  return false;
}

std::string_view NameOf(const snd_ctl_elem_id& id) {
  const auto* const name = reinterpret_cast<const char*>(id.name);
  return {name, strnlen(name, sizeof(id.name))};
}

// The recording level of one card.
class Level {
 public:
  // Looks for it among the card's controls: the one named just so, else the first whose name ends
  // so. An errno value when there is none, or 0.
  int Find(const DeviceFile& file) {
    snd_ctl_elem_list list = {};
    if (const int result = file.Control(SNDRV_CTL_IOCTL_ELEM_LIST, &list); result < 0) {
      return result;
    }
    const std::unique_ptr<snd_ctl_elem_id[]> ids(new (std::nothrow) snd_ctl_elem_id[list.count]());
    if (ids == nullptr) {
      return -ENOMEM;
    }
    list.space = list.count;
    list.pids = ids.get();
    if (const int result = file.Control(SNDRV_CTL_IOCTL_ELEM_LIST, &list); result < 0) {
      return result;
    }
    int found = -ENOENT;
    for (unsigned index = 0; index < std::min(list.used, list.space); ++index) {
      const std::string_view name = NameOf(ids[index]);
      const bool exact = name == kLevelName;
      if ((exact || (found < 0 && name.ends_with(kLevelName))) && Take(file, ids[index])) {
        found = 0;
        if (exact) {
          break;
        }
      }
    }
    return found;
  }

  int Set(const DeviceFile& file, double level) const {
    snd_ctl_elem_value value = {};
    value.id = info_.id;
    const auto& range = info_.value.integer;
    const double steps = level * (static_cast<double>(range.max) - static_cast<double>(range.min));
    auto whole = static_cast<long>(steps);
    whole += steps - static_cast<double>(whole) >= 0.5 ? 1 : 0;
    std::fill_n(value.value.integer.value, channels(), std::min(range.min + whole, range.max));
    return file.Control(SNDRV_CTL_IOCTL_ELEM_WRITE, &value);
  }

  // That of the first channel.
  int Get(const DeviceFile& file, double& level) const {
    snd_ctl_elem_value value = {};
    value.id = info_.id;
    const int result = file.Control(SNDRV_CTL_IOCTL_ELEM_READ, &value);
    const auto& range = info_.value.integer;
    level = (static_cast<double>(value.value.integer.value[0]) - static_cast<double>(range.min)) /
            (static_cast<double>(range.max) - static_cast<double>(range.min));
    return result;
  }

 private:
  unsigned channels() const {
    return std::min<unsigned>(info_.count, std::size(snd_ctl_elem_value().value.integer.value));
  }

  // Whether the control is a level that can be set.
  bool Take(const DeviceFile& file, const snd_ctl_elem_id& id) {
    snd_ctl_elem_info info = {};
    info.id = id;
    if (id.iface != SNDRV_CTL_ELEM_IFACE_MIXER ||
        file.Control(SNDRV_CTL_IOCTL_ELEM_INFO, &info) < 0 ||
        info.type != SNDRV_CTL_ELEM_TYPE_INTEGER ||
        (info.access & SNDRV_CTL_ELEM_ACCESS_WRITE) == 0 ||
        info.value.integer.min >= info.value.integer.max) {
      return false;
    }
    info_ = info;
    return true;
  }

  snd_ctl_elem_info info_ = {};
};

class Mixer : public LevelOnlyMixer<CountedObject<IAMAudioInputMixer>> {
 public:
  Mixer(IUnknown* owner, const DeviceFile& file, const Level& level)
      : owner_(ComPtr<IUnknown>::Share(owner)), file_(file), level_(level) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<IAMAudioInputMixer>(this, IID_IAMAudioInputMixer, iid, object);
  }

  HRESULT STDMETHODCALLTYPE put_MixLevel(double level) override {
    // Written so that what is no number is refused too.
    if (!(level >= 0 && level <= 1)) {
      return ResultOfError(kInvalidParameter);
    }
    const int result = level_.Set(file_, level);
    return result < 0 ? ResultOfErrno(result) : S_OK;
  }

  HRESULT STDMETHODCALLTYPE get_MixLevel(double* level) override {
    if (level == nullptr) {
      return E_POINTER;
    }
    const int result = level_.Get(file_, *level);
    return result < 0 ? ResultOfErrno(result) : S_OK;
  }

 private:
  ComPtr<IUnknown> owner_;
  const DeviceFile& file_;
  Level level_;
};

class MicrophoneFilter : public StreamlessFilter<CountedObject<IBaseFilter>> {
 public:
  explicit MicrophoneFilter(DeviceFile file) : file_(std::move(file)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    return iid == IID_IAMAudioInputMixer
               ? MakeMixer(object)
               : QueryOne<IBaseFilter>(this, IID_IBaseFilter, iid, object);
  }

 private:
  HRESULT MakeMixer(void** object) {
    Level level;
    if (const int result = level.Find(file_); result < 0) {
      return result == -ENOENT ? E_NOINTERFACE : ResultOfErrno(result);
    }
    IAMAudioInputMixer* const mixer = new (std::nothrow) Mixer(this, file_, level);
    *object = mixer;
    return mixer != nullptr ? S_OK : ResultOfError(kOutOfMemory);
  }

  DeviceFile file_;
};

}  // namespace

DeviceFile Microphone::Open() const {
  PathText path({kernel::DeviceFolder(), "/snd/controlC"});
  path.AppendNumber(card);
  return DeviceFile(kernel::Open(path.c_str(), O_RDWR | O_NONBLOCK));
}

PathText Microphone::DisplayName() const {
  return usb ? UsbDisplayName(*usb)
             : PathText({"sound#", ReadAttribute(CardFolder(card), "id").view()});
}

PathText Microphone::DevicePath() const {
  if (usb) {
    return {"/dev/snd/by-path/", UsbPortPath(*usb).view()};
  }
  PathText path({"/dev/snd/controlC"});
  path.AppendNumber(card);
  return path;
}

PathText Microphone::FriendlyName() const {
  const PathText product = usb ? ReadAttribute(usb->device, "product") : PathText();
  return product.empty() ? ReadAttribute(CardFolder(card), "id") : product;
}

MicrophoneList ListMicrophones() {
  std::array<unsigned, kMaxCards> cards = {};
  const std::size_t found = ListNumbered({kernel::SysFolder(), "/class/sound"}, "controlC", cards);
  MicrophoneList list;
  list.devices.reset(new (std::nothrow) Microphone[found]);
  for (std::size_t index = 0; list.devices != nullptr && index < found; ++index) {
    if (Records(cards[index])) {
      Microphone& microphone = list.devices[list.count++];
      microphone.card = cards[index];
      microphone.usb = ReadUsbInterface({CardFolder(cards[index]).view(), "/device"});
    }
  }
  return list;
}

HRESULT BindMicrophone(const Microphone& device, IBaseFilter** filter) {
  *filter = nullptr;
  DeviceFile file = device.Open();
  if (!file) {
    return ResultOfErrno(file.descriptor());
  }
  *filter = new (std::nothrow) MicrophoneFilter(std::move(file));
  return *filter != nullptr ? S_OK : ResultOfError(kOutOfMemory);
}

}  // namespace zem::platform
