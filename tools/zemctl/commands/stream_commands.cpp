// zemctl stream version, select, probe, commit, layer
#include <memory>
#include <optional>

#include "tools/zemctl/camera/required_unit.h"
#include "tools/zemctl/commands/comparison.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

// How the library names what is done with a format.
enum Operation : unsigned { kWriteProbe = 0, kReadProbe = 1, kWriteCommit = 2, kReadCommit = 3 };

struct StreamArguments {
  std::optional<std::uint8_t> stream;
  std::uint8_t value = 0;
  std::optional<std::uint8_t> format;
  std::optional<std::uint16_t> width;
  std::optional<std::uint16_t> height;
  std::optional<std::uint32_t> interval;
  std::optional<std::uint32_t> bitRate;

  bool ChangesFormat() const { return format || width || height || interval || bitRate; }
};

// A session on a camera that has the stream unit.
class StreamSession : public Session {
 public:
  StreamSession(const Options& options, Use use) : Session(options.device, use) {
    RequireUnit(*this, "orva");
  }

  void Select(std::uint8_t stream) const {
    Call("ORVAAPI_SetStreamID", [&](void* device) { return ORVAAPI_SetStreamID(device, stream); });
  }

  void Move(OrvaStreamFormat& format, Operation operation) const {
    Call("ORVAAPI_StreamFormatProbeCommit",
         [&](void* device) { return ORVAAPI_StreamFormatProbeCommit(device, &format, operation); });
  }
};

int ShowVersion(const Options& options, const StreamArguments& /*arguments*/, Report& report) {
  const StreamSession session(options, Use::kReading);
  unsigned char version = 0;
  session.Call("ORVAAPI_GetVersion",
               [&](void* device) { return ORVAAPI_GetVersion(device, &version); });
  unsigned short day = 0;
  session.Call("ORVAAPI_FirmwareBuildDay",
               [&](void* device) { return ORVAAPI_FirmwareBuildDay(device, &day); });
  unsigned char endpoint = 0;
  session.Call("ORVAAPI_GetEndpointSetting",
               [&](void* device) { return ORVAAPI_GetEndpointSetting(device, &endpoint); });
  report["version"] = HexNumber(version, 2);
  report["firmware build day"] = HexNumber(day, 4);
  report["endpoint setting"] = HexNumber(endpoint, 2);
  return kDone;
}

int SelectStream(const Options& options, const StreamArguments& arguments, Report& report) {
  const StreamSession session(options, Use::kWriting);
  session.Select(arguments.value);
  report["stream"] = arguments.value;
  return kDone;
}

int SetLayer(const Options& options, const StreamArguments& arguments, Report& report) {
  const StreamSession session(options, Use::kWriting);
  session.Call("ORVAAPI_ToggleLayerControl",
               [&](void* device) { return ORVAAPI_ToggleLayerControl(device, arguments.value); });
  report["layer"] = arguments.value;
  return kDone;
}

// Shows a format; first changes what the command line gives of it and keeps the rest.
int MoveFormat(const Options& options, const StreamArguments& arguments, Operation write,
               Operation read, Report& report) {
  const StreamSession session(
      options, arguments.ChangesFormat() || arguments.stream ? Use::kWriting : Use::kReading);
  if (arguments.stream) {
    session.Select(*arguments.stream);
    report["stream"] = *arguments.stream;
  }
  OrvaStreamFormat format = {};
  session.Move(format, read);
  if (arguments.ChangesFormat()) {
    format.bStreamFormat = arguments.format.value_or(format.bStreamFormat);
    format.wWidth = arguments.width.value_or(format.wWidth);
    format.wHeight = arguments.height.value_or(format.wHeight);
    format.dwFrameInterval = arguments.interval.value_or(format.dwFrameInterval);
    format.dwBitRate = arguments.bitRate.value_or(format.dwBitRate);
    session.Move(format, write);
    ReadBack("the format was written", [&] { session.Move(format, read); });
  }
  report["format"] = format.bStreamFormat;
  report["width"] = format.wWidth;
  report["height"] = format.wHeight;
  report["frame interval"] = format.dwFrameInterval;
  report["bit rate"] = format.dwBitRate;
  report["written"] = arguments.ChangesFormat();
  return kDone;
}

int Probe(const Options& options, const StreamArguments& arguments, Report& report) {
  return MoveFormat(options, arguments, kWriteProbe, kReadProbe, report);
}

int Commit(const Options& options, const StreamArguments& arguments, Report& report) {
  return MoveFormat(options, arguments, kWriteCommit, kReadCommit, report);
}

}  // namespace

void AddStreamCommands(Program& program) {
  const auto arguments = std::make_shared<StreamArguments>();
  CLI::App* const streams = program.app()
                                .add_subcommand("stream", "Reach the stream and endpoint unit")
                                ->require_subcommand(1);
  streams->fallthrough();
  const auto add = [&](const std::string& name, const std::string& description, auto function) {
    return program.AddCommand(streams, name, description,
                              [arguments, function](const Options& options, Report& report) {
                                return function(options, *arguments, report);
                              });
  };
  const auto addFormat = [arguments](CLI::App* command) {
    command->add_option("--stream", arguments->stream, "Select this stream first");
    command->add_option("--format", arguments->format, "Kind of stream");
    command->add_option("--width", arguments->width, "Pixels");
    command->add_option("--height", arguments->height, "Pixels");
    command->add_option("--interval", arguments->interval, "Frame interval in 100 ns");
    command->add_option("--bit-rate", arguments->bitRate, "Bit/s");
  };
  add("version", "Show version, firmware build day and endpoint setting", ShowVersion);
  add("select", "Select the stream that the others act on", SelectStream)
      ->add_option("stream", arguments->value, "Stream id")
      ->required();
  addFormat(add("probe", "Show the probed format; write it with what is given", Probe));
  addFormat(add("commit", "Show the committed format; write it with what is given", Commit));
  add("layer", "Switch a layer", SetLayer)
      ->add_option("value", arguments->value, "Layer value")
      ->required();
}

}  // namespace zemctl
