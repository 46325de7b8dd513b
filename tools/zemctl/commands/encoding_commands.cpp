// zemctl encoding get, set, probe and commit
#include <array>
#include <charconv>
#include <memory>
#include <span>

#include "tools/zemctl/commands/comparison.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

// `count` little-endian numbers of `width` bytes each.
struct Field {
  const char* name;
  std::size_t offset;
  std::size_t width;
  std::size_t count = 1;
};

constexpr Field kRateControlFields[] = {
    {"dwSliceMode", 0, 4},        {"dwAverageBitRate", 4, 4},    {"dwPeakBitRate", 8, 4},
    {"dwLeakyBucketSize", 12, 4}, {"dwQpPrime_I", 16, 1, 3},     {"dwQpPrime_P", 19, 1, 3},
    {"dwQpPrime_B", 22, 1, 3},    {"bRateControlMethod", 25, 1}, {"wLayerID", 26, 2},
};

constexpr Field kStreamFields[] = {
    {"bmHint", 0, 2},
    {"wIndex", 2, 2},
    {"dwInterval", 4, 4},
    {"wKeyFrameRate", 8, 2},
    {"wPFrameRate", 10, 2},
    {"wCompQuality", 12, 2},
    {"wCompWinSize", 14, 2},
    {"wDelay", 16, 2},
    {"dwMaxFrameSize", 18, 4},
    {"dwMaxPayloadSize", 22, 4},
    {"bmSetting", 26, 2},
    {"bUsage", 28, 1},
    {"dwMaxSliceMode", 29, 4},
    {"bBitDepthLumaMinus8", 33, 1},
    {"bMaxDecoderFrameBuffering", 34, 1},
    {"bMaxNumberOfReorderFrames", 35, 1},
    {"bMaxNumberOfRefFrames", 36, 1},
    {"bmSVCCapabilityModes", 37, 1, 8},
    {"wMaxNumberOfRefFrames", 45, 2},
    {"dwNumMacroBlocksperSeconds", 47, 4},
};
constexpr std::size_t kStreamBlockSize = 51;

// A control of the encoding unit. Those without fields are bytes to zemctl.
struct EncodingControl {
  const char* name;
  unsigned selector;
  unsigned short length;
  std::span<const Field> fields;
};

const EncodingControl kEncodingControls[] = {
    {"video-resolution", 1, 4, {}},
    {"frame-interval", 2, 4, {}},
    {"rate-control", 3, 28, kRateControlFields},
    {"sync-frame", 4, 4, {}},
    {"long-term-ref-frame", 5, 4, {}},
    {"priority-id", 6, 1, {}},
    {"start-layer", 7, 2, {}},
    {"stop-layer", 8, 2, {}},
};

const EncodingControl& FindEncodingControl(const std::string& name) {
  std::string known;
  for (const EncodingControl& control : kEncodingControls) {
    if (name == control.name || name == std::to_string(control.selector)) {
      return control;
    }
    known += std::string(known.empty() ? "" : ", ") + control.name;
  }
  throw UsageError("\"" + name + "\" is no control of the encoding unit; these are: " + known);
}

// A block and its fields by name.
class Block {
 public:
  Block(std::size_t size, std::span<const Field> fields) : bytes_(size), fields_(fields) {}

  std::vector<unsigned char>& bytes() { return bytes_; }

  // Changes the fields that the words "name=value" name; of several numbers, "name=1,2,3".
  void Apply(const std::vector<std::string>& words) {
    for (const std::string& word : words) {
      const std::size_t equals = word.find('=');
      if (equals == std::string::npos) {
        throw UsageError("\"" + word + "\" is not of the form field=value");
      }
      const Field& field = Find(word.substr(0, equals));
      std::string rest = word.substr(equals + 1);
      for (std::size_t index = 0; index < field.count; ++index) {
        const std::size_t end = std::min(rest.find(','), rest.size());
        Store(field, index, ParseNumber(rest.substr(0, end), field));
        rest.erase(0, end + 1);
      }
      if (!rest.empty()) {
        throw UsageError(std::string(field.name) + " takes " + std::to_string(field.count) +
                         (field.count == 1 ? " number" : " numbers"));
      }
    }
  }

  // One row a field, or the bytes when there are none.
  void Show(Report& report) const {
    if (fields_.empty()) {
      report["data"] = HexText(bytes_);
      return;
    }
    Report rows = Report::array();
    for (const Field& field : fields_) {
      std::string hexadecimal;
      std::string decimal;
      for (std::size_t index = 0; index < field.count; ++index) {
        const std::uint32_t number = Load(field, index);
        hexadecimal +=
            (index > 0 ? " " : "") + HexNumber(number, static_cast<int>(2 * field.width));
        decimal += (index > 0 ? " " : "") + std::to_string(number);
      }
      rows.push_back({{"field", field.name}, {"value", hexadecimal}, {"decimal", decimal}});
    }
    report["fields"] = rows;
  }

 private:
  const Field& Find(const std::string& name) const {
    for (const Field& field : fields_) {
      if (name == field.name) {
        return field;
      }
    }
    throw UsageError("the block has no field \"" + name + "\"");
  }

  static std::uint32_t ParseNumber(const std::string& text, const Field& field) {
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    const char* const end = text.data() + text.size();
    std::uint64_t number = 0;
    const auto [stop, error] =
        std::from_chars(text.data() + (hexadecimal ? 2 : 0), end, number, hexadecimal ? 16 : 10);
    if (error != std::errc() || stop != end || (number >> (8 * field.width)) != 0) {
      throw UsageError("\"" + text + "\" is not a number of " + std::to_string(field.width) +
                       (field.width == 1 ? " byte" : " bytes") + " for " + field.name);
    }
    return static_cast<std::uint32_t>(number);
  }

  std::uint32_t Load(const Field& field, std::size_t index) const {
    std::uint32_t number = 0;
    for (std::size_t byte = field.width; byte-- > 0;) {
      number = (number << 8) | bytes_[field.offset + index * field.width + byte];
    }
    return number;
  }

  void Store(const Field& field, std::size_t index, std::uint32_t number) {
    for (std::size_t byte = 0; byte < field.width; ++byte) {
      bytes_[field.offset + index * field.width + byte] =
          static_cast<unsigned char>(number >> (8 * byte));
    }
  }

  std::vector<unsigned char> bytes_;
  std::span<const Field> fields_;
};

// A session whose calls take the device object in place of a handle, as this family's do.
class EncodingSession : public Session {
 public:
  using Session::Session;

  void Move(const char* function, const Function& call) const {
    CallOnObject(function, call, [](ZemResult result) -> std::optional<ResultText> {
      if (result != ZEM_E_NO_DEVICE) {
        return std::nullopt;
      }
      return ResultText{"ZEM_E_NO_DEVICE", "the control could not be reached",
                        "Check that the camera is still attached and has the unit (zemctl info); "
                        "the platform's own code stands in ZemWrenCmdLog.txt.",
                        kTransferFailed};
    });
  }
};

struct EncodingArguments {
  std::string control;
  std::vector<std::string> values;
};

void ShowControl(const EncodingSession& session, const EncodingControl& control, Block& block,
                 Report& report) {
  session.Move("WREN_EuGet", [&](void* device) {
    return WREN_EuGet(device, control.selector, block.bytes().data(), control.length);
  });
  report["control"] = control.name;
  report["selector"] = control.selector;
  block.Show(report);
}

int GetEncoding(const Options& options, const EncodingArguments& arguments, Report& report) {
  const EncodingControl& control = FindEncodingControl(arguments.control);
  Block block(control.length, control.fields);
  const EncodingSession session(options.device, Use::kReading);
  ShowControl(session, control, block, report);
  return kDone;
}

int SetEncoding(const Options& options, const EncodingArguments& arguments, Report& report) {
  const EncodingControl& control = FindEncodingControl(arguments.control);
  Block block(control.length, control.fields);
  if (control.fields.empty()) {
    block.bytes() = ParseBlock(arguments.values, control.length);
  } else {
    Block(control.length, control.fields).Apply(arguments.values);
  }
  const EncodingSession session(options.device, Use::kWriting);
  if (!control.fields.empty()) {
    // Fields that are not named keep their value.
    session.Move("WREN_EuGet", [&](void* device) {
      return WREN_EuGet(device, control.selector, block.bytes().data(), control.length);
    });
    block.Apply(arguments.values);
  }
  session.Move("WREN_EuSet", [&](void* device) {
    return WREN_EuSet(device, control.selector, block.bytes().data(), control.length);
  });
  ReadBack("the control was written", [&] { ShowControl(session, control, block, report); });
  report["written"] = true;
  return kDone;
}

// The calls for one of the two stream blocks.
struct StreamBlock {
  const char* name;
  const char* getter;
  ZemResult (*get)(void* device, void* block);
  const char* setter;
  ZemResult (*set)(void* device, void* block);
};
const StreamBlock kProbe = {"probe", "WREN_ProbeGet", WREN_ProbeGet, "WREN_ProbeSet",
                            WREN_ProbeSet};
const StreamBlock kCommit = {"commit", "WREN_CommitGet", WREN_CommitGet, "WREN_CommitSet",
                             WREN_CommitSet};

// Reads the block; with fields, changes them, writes it and reads it again.
int UseStreamBlock(const Options& options, const StreamBlock& stream,
                   const EncodingArguments& arguments, Report& report) {
  Block block(kStreamBlockSize, kStreamFields);
  Block(kStreamBlockSize, kStreamFields).Apply(arguments.values);
  const EncodingSession session(options.device,
                                arguments.values.empty() ? Use::kReading : Use::kWriting);
  session.Move(stream.getter,
               [&](void* device) { return stream.get(device, block.bytes().data()); });
  if (!arguments.values.empty()) {
    block.Apply(arguments.values);
    session.Move(stream.setter,
                 [&](void* device) { return stream.set(device, block.bytes().data()); });
    ReadBack("the block was written", [&] {
      session.Move(stream.getter,
                   [&](void* device) { return stream.get(device, block.bytes().data()); });
    });
  }
  report["block"] = stream.name;
  block.Show(report);
  report["written"] = !arguments.values.empty();
  return kDone;
}

}  // namespace

void AddEncodingCommands(Program& program) {
  const auto arguments = std::make_shared<EncodingArguments>();
  CLI::App* const encoding =
      program.app()
          .add_subcommand("encoding", "Reach the encoding unit and the H.264 probe and commit")
          ->require_subcommand(1);
  encoding->fallthrough();
  const auto bind = [arguments](auto function) {
    return [arguments, function](const Options& options, Report& report) {
      return function(options, *arguments, report);
    };
  };
  const auto addControl = [arguments](CLI::App* command) {
    command
        ->add_option("control", arguments->control,
                     "Name or selector, such as rate-control or priority-id")
        ->required();
    return command;
  };
  addControl(program.AddCommand(encoding, "get", "Read a control", bind(GetEncoding)));
  addControl(program.AddCommand(encoding, "set", "Write a control", bind(SetEncoding)))
      ->add_option("values", arguments->values,
                   "field=value for rate-control, hexadecimal bytes for the others")
      ->required();
  for (const StreamBlock* const stream : {&kProbe, &kCommit}) {
    program
        .AddCommand(encoding, stream->name,
                    std::string("Read or change the ") + stream->name + " block",
                    [arguments, stream](const Options& options, Report& report) {
                      return UseStreamBlock(options, *stream, *arguments, report);
                    })
        ->add_option("fields", arguments->values, "field=value to change; none to read");
  }
}

}  // namespace zemctl
