// zemctl command, zemctl xu get, zemctl xu set, zemctl xu check
#include <algorithm>
#include <memory>
#include <optional>

#include "tools/zemctl/camera/extension_unit_names.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

struct Channel {
  const char* name;
  std::size_t blockSize;
  const char* function;
  ZemResult (*send)(void* handle, unsigned char* command, unsigned char* reply);
};

const Channel kChannels[] = {
    {"isp", 8, "ZEMAPI_IspCommand", ZEMAPI_IspCommand},
    {"vcp", 8, "ZEMAPI_VcpCommand", ZEMAPI_VcpCommand},
    {"isp-ex", 16, "ZEMAPI_IspCommandEx", ZEMAPI_IspCommandEx},
    {"vcp-ex", 16, "ZEMAPI_VcpCommandEx", ZEMAPI_VcpCommandEx},
};

struct RawArguments {
  std::string channel;
  std::string unit;
  unsigned short selector = 0;
  std::uint32_t length = 0;
  std::vector<std::string> bytes;
};

int SendCommand(const Options& options, const RawArguments& arguments, Report& report) {
  for (const Channel& channel : kChannels) {
    if (arguments.channel != channel.name) {
      continue;
    }
    std::vector<unsigned char> command = ParseBlock(arguments.bytes, channel.blockSize);
    std::vector<unsigned char> reply(channel.blockSize);
    const Session session(options.device, Use::kWriting);
    session.Call(channel.function,
                 [&](void* device) { return channel.send(device, command.data(), reply.data()); });
    report["channel"] = channel.name;
    report["sent"] = HexText(command);
    report["reply"] = HexText(reply);
    return kDone;
  }
  throw UsageError("the channels are isp, vcp, isp-ex and vcp-ex");
}

GUID ParseUnit(const std::string& text) {
  for (const NamedUnit& unit : kUnits) {
    if (text == unit.name) {
      return unit.id;
    }
  }
  const auto id = ParseGuid(text);
  if (!id) {
    throw UsageError("\"" + text + "\" is neither the name of a unit nor a {GUID}");
  }
  return *id;
}

int GetUnitControl(const Options& options, const RawArguments& arguments, Report& report) {
  const GUID unit = ParseUnit(arguments.unit);
  std::vector<unsigned char> data(arguments.length);
  ZemULong moved = 0;
  const Session session(options.device, Use::kReading);
  std::optional<Failure> shortAnswer;
  try {
    session.Call("ZEMAPI_UvcExtGet", [&](void* device) {
      return ZEMAPI_UvcExtGet(device, &unit, arguments.selector, data.data(),
                              static_cast<ZemULong>(data.size()), &moved);
    });
  } catch (const CallFailure& failure) {
    if (failure.result() < 0 || moved == 0) {
      throw;
    }
    // The control has fewer bytes than were asked for: those are shown.
    shortAnswer = failure.failure();
  }
  data.resize(std::min<std::size_t>(data.size(), moved));
  report["unit"] = GuidText(unit);
  report["selector"] = arguments.selector;
  report["bytes moved"] = moved;
  report["data"] = HexText(data);
  if (shortAnswer) {
    throw PartialFailure(*shortAnswer);
  }
  return kDone;
}

int SetUnitControl(const Options& options, const RawArguments& arguments, Report& report) {
  const GUID unit = ParseUnit(arguments.unit);
  std::vector<unsigned char> data = ParseBytes(arguments.bytes);
  ZemULong moved = 0;
  const Session session(options.device, Use::kWriting);
  session.Call("ZEMAPI_UvcExtSet", [&](void* device) {
    return ZEMAPI_UvcExtSet(device, &unit, arguments.selector, data.data(),
                            static_cast<ZemULong>(data.size()), &moved);
  });
  report["unit"] = GuidText(unit);
  report["selector"] = arguments.selector;
  report["bytes moved"] = moved;
  return kDone;
}

int CheckUnit(const Options& options, const RawArguments& arguments, Report& report) {
  const GUID unit = ParseUnit(arguments.unit);
  const Session session(options.device, Use::kReading);
  const ZemResult present = session.Call(
      "ZEMAPI_UvcCheckXuGuid", [&](void* device) { return ZEMAPI_UvcCheckXuGuid(device, &unit); });
  report["unit"] = GuidText(unit);
  report["present"] = present == 0;
  return present == 0 ? kDone : kUnitAbsent;
}

}  // namespace

void AddRawCommands(Program& program) {
  const auto arguments = std::make_shared<RawArguments>();
  const auto bind = [arguments](auto function) {
    return [arguments, function](const Options& options, Report& report) {
      return function(options, *arguments, report);
    };
  };
  CLI::App* const command =
      program.AddCommand(&program.app(), "command", "Send a raw command block", bind(SendCommand));
  command->add_option("channel", arguments->channel, "isp, vcp, isp-ex or vcp-ex")->required();
  command->add_option("bytes", arguments->bytes, "Hexadecimal; zeros fill the block up")
      ->required();

  CLI::App* const units = program.app()
                              .add_subcommand("xu", "Reach the controls of an extension unit")
                              ->require_subcommand(1);
  units->fallthrough();
  const auto addUnit = [arguments](CLI::App* subcommand) {
    subcommand->add_option("unit", arguments->unit, "Name of a unit (see info) or {GUID}")
        ->required();
    return subcommand;
  };
  const auto addSelector = [arguments](CLI::App* subcommand) {
    subcommand->add_option("selector", arguments->selector, "Control selector")->required();
    return subcommand;
  };
  addSelector(addUnit(program.AddCommand(units, "get", "Read a control", bind(GetUnitControl))))
      ->add_option("length", arguments->length, "Bytes to read")
      ->required()
      ->check(CLI::Range(65536));
  addSelector(addUnit(program.AddCommand(units, "set", "Write a control", bind(SetUnitControl))))
      ->add_option("bytes", arguments->bytes, "Hexadecimal");
  addUnit(
      program.AddCommand(units, "check", "Tell whether the camera has a unit", bind(CheckUnit)));
}

}  // namespace zemctl
