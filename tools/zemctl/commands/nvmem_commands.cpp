// zemctl nvmem read, zemctl nvmem write, zemctl led
#include <memory>

#include "tools/zemctl/camera/required_unit.h"
#include "tools/zemctl/commands/comparison.h"
#include "tools/zemctl/commands/payload.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/confirm.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

constexpr std::uint32_t kVendorAddresses = 0x10000;
constexpr std::uint32_t kTirellaSize = 256;

struct NvmemArguments {
  std::string unit = "vendor";
  std::uint32_t address = 0;
  std::uint32_t length = 0;
  std::vector<std::string> bytes;
  std::string input;
  std::string output;
  unsigned short ledValue = 0;
  bool dryRun = false;

  bool isTirella() const { return unit == "tirella"; }
  // Of the memory's addresses.
  std::uint32_t end() const { return isTirella() ? kTirellaSize : kVendorAddresses; }
};

void RequireInside(const NvmemArguments& arguments, std::uint64_t length) {
  if (arguments.address + length > arguments.end()) {
    throw UsageError("the memory's addresses end at " + HexNumber(arguments.end() - 1, 4));
  }
}

void ShowPlace(const NvmemArguments& arguments, std::size_t length, Report& report) {
  report["unit"] = arguments.unit;
  report["address"] = HexNumber(arguments.address, 4);
  report["bytes"] = length;
}

std::vector<unsigned char> ReadMemory(const Session& session, const NvmemArguments& arguments) {
  std::uint32_t moved = 0;
  if (!arguments.isTirella()) {
    std::vector<unsigned char> bytes(arguments.length);
    session.Call("ZEMAPI_ReadNVMEM", [&](void* device) {
      return ZEMAPI_ReadNVMEM(device, static_cast<std::uint16_t>(arguments.address), bytes.data(),
                              arguments.length, &moved);
    });
    return bytes;
  }
  RequireUnit(session, "tirella");
  // Can be read from its beginning only.
  std::vector<unsigned char> bytes(arguments.address + arguments.length);
  session.Call("ZEMAPI_TIRELLA_ReadNVMEM", [&](void* device) {
    return ZEMAPI_TIRELLA_ReadNVMEM(device, bytes.data(), static_cast<std::uint32_t>(bytes.size()),
                                    &moved);
  });
  bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(arguments.address));
  return bytes;
}

int ReadNvmem(const Options& options, const NvmemArguments& arguments, Report& report) {
  RequireInside(arguments, arguments.length);
  const Session session(options.device, Use::kReading);
  const std::vector<unsigned char> bytes = ReadMemory(session, arguments);
  ShowPlace(arguments, bytes.size(), report);
  ShowPayload(bytes, arguments.output, report);
  return kDone;
}

std::vector<unsigned char> BytesToWrite(const NvmemArguments& arguments) {
  std::vector<unsigned char> bytes = TakePayload(arguments.bytes, arguments.input, arguments.end());
  if (bytes.empty()) {
    throw ToolFailure(kBadFile, "there are no bytes to write", "Nothing was sent.");
  }
  RequireInside(arguments, bytes.size());
  if (arguments.isTirella() && bytes.size() != kTirellaSize) {
    throw UsageError("the TIRELLA unit's memory is written whole: give 256 bytes from address 0");
  }
  return bytes;
}

int WriteNvmem(const Options& options, const NvmemArguments& arguments, Report& report) {
  const std::vector<unsigned char> bytes = BytesToWrite(arguments);
  ShowPlace(arguments, bytes.size(), report);
  if (arguments.dryRun) {
    report["would be written"] = HexText(bytes);
    return kDone;
  }
  const Session session(options.device, Use::kWriting);
  if (arguments.isTirella()) {
    RequireUnit(session, "tirella");
  }
  Confirm(options, "The camera " + NameOf(session.device()) + ": " + std::to_string(bytes.size()) +
                       " bytes of its " + arguments.unit +
                       " unit's non-volatile memory will be overwritten from " +
                       HexNumber(arguments.address, 4) + " on");
  const auto length = static_cast<std::uint32_t>(bytes.size());
  std::uint32_t written = 0;
  if (arguments.isTirella()) {
    session.Call("ZEMAPI_TIRELLA_WriteNVMEM", [&](void* device) {
      return ZEMAPI_TIRELLA_WriteNVMEM(device, bytes.data(), length, &written);
    });
  } else {
    session.Call("ZEMAPI_WriteNVMEM", [&](void* device) {
      return ZEMAPI_WriteNVMEM(device, static_cast<std::uint16_t>(arguments.address), bytes.data(),
                               length, &written);
    });
  }
  NvmemArguments place = arguments;
  place.length = length;
  RequireSame(bytes, ReadBack("the bytes were written", [&] { return ReadMemory(session, place); }),
              "the memory");
  report["written and compared"] = true;
  return kDone;
}

int SetLed(const Options& options, const NvmemArguments& arguments, Report& report) {
  report["led"] = HexNumber(arguments.ledValue, 2);
  if (arguments.dryRun) {
    report["would be sent"] =
        HexText(std::vector<unsigned char>(1, static_cast<unsigned char>(arguments.ledValue)));
    return kDone;
  }
  const Session session(options.device, Use::kWriting);
  // The library does not report a unit that is absent.
  RequireUnit(session, "tirella");
  session.Call("ZEMAPI_TIRELLA_LedCtrl", [&](void* device) {
    return ZEMAPI_TIRELLA_LedCtrl(device, static_cast<std::uint8_t>(arguments.ledValue));
  });
  return kDone;
}

}  // namespace

void AddNvmemCommands(Program& program) {
  const auto arguments = std::make_shared<NvmemArguments>();
  const auto bind = [arguments](auto function) {
    return [arguments, function](const Options& options, Report& report) {
      return function(options, *arguments, report);
    };
  };
  CLI::App* const nvmem = program.app()
                              .add_subcommand("nvmem", "Read and write the non-volatile memory")
                              ->require_subcommand(1);
  nvmem->fallthrough();
  const auto addPlace = [arguments](CLI::App* command) {
    command->add_option("address", arguments->address, "Decimal or 0x hexadecimal")->required();
    command->add_option("--unit", arguments->unit, "vendor or tirella")
        ->check(CLI::IsMember({"vendor", "tirella"}));
    return command;
  };
  CLI::App* const read = addPlace(program.AddCommand(nvmem, "read", "Read bytes", bind(ReadNvmem)));
  read->add_option("length", arguments->length, "Bytes to read")
      ->required()
      ->check(CLI::Range(std::uint32_t{1}, kVendorAddresses));
  read->add_option("--output", arguments->output, "Write them to this file");
  CLI::App* const write = addPlace(program.AddCommand(nvmem, "write", "Write bytes, and compare",
                                                      bind(WriteNvmem), {.yes = true}));
  write->add_option("bytes", arguments->bytes, "Hexadecimal");
  write->add_option("--input", arguments->input, "Take them from this file");
  write->add_flag("--dry-run", arguments->dryRun, "Print what would be written, and stop");

  CLI::App* const led = program.AddCommand(&program.app(), "led",
                                           "Hand a value to the TIRELLA unit's LED", bind(SetLed));
  led->add_option("value", arguments->ledValue, "0 to 255; its meaning is the firmware's")
      ->required()
      ->check(CLI::Range(255));
  led->add_flag("--dry-run", arguments->dryRun, "Print what would be sent, and stop");
}

}  // namespace zemctl
