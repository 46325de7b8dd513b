// zemctl audio list, zemctl audio volume
#include <memory>

#include "tools/zemctl/camera/system_devices.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

struct AudioArguments {
  std::string microphone;
  int volume = 0;
};

std::vector<SystemDevice> ListMicrophones() {
  std::vector<SystemDevice> microphones = ListSystemDevices(DeviceCategory::kAudioInput);
  if (microphones.empty()) {
    throw CallFailure("audio", ZEM_E_FAIL,
                      {"ZEM_E_FAIL", "no audio input is attached",
                       "Plug a camera with a microphone in, or try a simulated one with "
                       "--simulator.",
                       kNoCamera});
  }
  return microphones;
}

int List(const Options& /*options*/, Report& report) {
  Report rows = Report::array();
  for (const SystemDevice& microphone : ListMicrophones()) {
    rows.push_back({{"name", microphone.name}, {"path", microphone.displayName}});
  }
  report["audio inputs"] = rows;
  return kDone;
}

// An opened audio input, released when it goes out of scope.
class AudioInput {
 public:
  explicit AudioInput(const std::wstring& displayName) {
    const ZemResult result = ZEMAPI_AudioOpenDeviceByPath(displayName.c_str(), &filter_);
    if (result == ZEM_E_FAIL) {
      throw CallFailure("ZEMAPI_AudioOpenDeviceByPath", result,
                        {"ZEM_E_FAIL", "no audio input has that name",
                         "\"zemctl audio list\" shows those that are attached.", kNoCamera});
    }
    Check("ZEMAPI_AudioOpenDeviceByPath", result);
  }
  ~AudioInput() { ZEMAPI_AudioCloseDevice(&filter_); }
  AudioInput(const AudioInput&) = delete;
  AudioInput& operator=(const AudioInput&) = delete;

  IBaseFilter* filter() const { return filter_; }

 private:
  IBaseFilter* filter_ = nullptr;
};

int SetVolume(const Options& /*options*/, const AudioArguments& arguments, Report& report) {
  const std::string name =
      arguments.microphone.empty() ? ListMicrophones().front().displayName : arguments.microphone;
  const AudioInput input(Widen(name));
  Check("ZEMAPI_AudioSetVolume", ZEMAPI_AudioSetVolume(input.filter(), arguments.volume));
  report["audio input"] = name;
  report["volume"] = arguments.volume;
  report["written"] = true;
  return kDone;
}

}  // namespace

void AddAudioCommands(Program& program) {
  const auto arguments = std::make_shared<AudioArguments>();
  CLI::App* const audio = program.app()
                              .add_subcommand("audio", "List microphones and set their level")
                              ->require_subcommand(1);
  audio->fallthrough();
  program.AddCommand(audio, "list", "List the audio inputs", List, {.selection = false});
  CLI::App* const volume = program.AddCommand(audio, "volume", "Set the recording level",
                                              [arguments](const Options& options, Report& report) {
                                                return SetVolume(options, *arguments, report);
                                              },
                                              {.selection = false});
  volume->add_option("percent", arguments->volume, "0 silence, 100 full level")->required();
  volume->add_option("--microphone", arguments->microphone,
                     "Display name, see list; the first one if not given");
}

}  // namespace zemctl
