// zemctl reg get, zemctl reg set
#include <map>
#include <memory>
#include <optional>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

// One register space and width: what the library calls for it.
struct Space {
  const char* name;
  int valueBytes;
  std::uint32_t highestAddress;
  const char* getter;
  const char* setter;
  ZemResult (*get)(void* handle, std::uint32_t address, std::uint16_t& value);
  ZemResult (*set)(void* handle, std::uint32_t address, std::uint16_t value);
};

template <auto function>
ZemResult GetWord(void* handle, std::uint32_t address, std::uint16_t& value) {
  return function(handle, static_cast<std::uint16_t>(address), &value);
}

template <auto function>
ZemResult GetByte(void* handle, std::uint32_t address, std::uint16_t& value) {
  unsigned char byte = 0;
  const ZemResult result = function(handle, static_cast<std::uint16_t>(address), &byte);
  value = byte;
  return result;
}

template <auto function>
ZemResult SetWord(void* handle, std::uint32_t address, std::uint16_t value) {
  return function(handle, static_cast<std::uint16_t>(address), value);
}

template <auto function>
ZemResult SetByte(void* handle, std::uint32_t address, std::uint16_t value) {
  return function(handle, static_cast<std::uint16_t>(address), static_cast<unsigned char>(value));
}

const Space kSpaces[] = {
    {"isp", 2, 0xFFFFFF, "ZEMAPI_GetRegister", "ZEMAPI_SetRegister",
     [](void* handle, std::uint32_t address, std::uint16_t& value) {
       return ZEMAPI_GetRegister(handle, address, &value);
     },
     [](void* handle, std::uint32_t address, std::uint16_t value) {
       return ZEMAPI_SetRegister(handle, address, value);
     }},
    {"sensor", 1, 0xFFFF, "ZEMAPI_GetSensorRegister", "ZEMAPI_SetSensorRegister",
     GetByte<ZEMAPI_GetSensorRegister>, SetByte<ZEMAPI_SetSensorRegister>},
    {"sensor", 2, 0xFFFF, "ZEMAPI_GetSensorRegisterW", "ZEMAPI_SetSensorRegisterW",
     GetWord<ZEMAPI_GetSensorRegisterW>, SetWord<ZEMAPI_SetSensorRegisterW>},
    {"vcm", 2, 0xFFFF, "ZEMAPI_GetVCMRegister", "ZEMAPI_SetVCMRegister",
     GetWord<ZEMAPI_GetVCMRegister>, SetWord<ZEMAPI_SetVCMRegister>},
    {"codec", 1, 0xFFFF, "ZEMAPI_ReadCodecReg", "ZEMAPI_WriteCodecReg",
     GetByte<ZEMAPI_ReadCodecReg>, SetByte<ZEMAPI_WriteCodecReg>},
};

struct RegisterArguments {
  std::string space;
  std::uint32_t address = 0;
  std::uint32_t value = 0;
  std::optional<int> width;
};

// The space of that name, of the width asked for or else its first.
const Space& FindSpace(const RegisterArguments& arguments) {
  for (const Space& space : kSpaces) {
    if (arguments.space == space.name &&
        arguments.width.value_or(space.valueBytes) == space.valueBytes) {
      if (arguments.address > space.highestAddress) {
        throw UsageError("addresses of this space end at " + HexNumber(space.highestAddress, 4));
      }
      return space;
    }
  }
  throw UsageError("registers of the space \"" + arguments.space + "\" do not have that width");
}

void ShowRegister(const RegisterArguments& arguments, const Space& space, std::uint16_t value,
                  Report& report) {
  report["space"] = arguments.space;
  report["address"] = HexNumber(arguments.address, 4);
  report["value"] = HexNumber(value, 2 * space.valueBytes);
}

int GetRegister(const Options& options, const RegisterArguments& arguments, Report& report) {
  const Space& space = FindSpace(arguments);
  const Session session(options.device, Use::kReading);
  std::uint16_t value = 0;
  session.Call(space.getter,
               [&](void* device) { return space.get(device, arguments.address, value); });
  ShowRegister(arguments, space, value, report);
  return kDone;
}

int SetRegister(const Options& options, const RegisterArguments& arguments, Report& report) {
  const Space& space = FindSpace(arguments);
  const std::uint32_t highest = space.valueBytes == 1 ? 0xFF : 0xFFFF;
  if (arguments.value > highest) {
    throw UsageError("values of this space end at " + HexNumber(highest, 2));
  }
  const Session session(options.device, Use::kWriting);
  const auto value = static_cast<std::uint16_t>(arguments.value);
  session.Call(space.setter,
               [&](void* device) { return space.set(device, arguments.address, value); });
  ShowRegister(arguments, space, value, report);
  report["written"] = true;
  return kDone;
}

}  // namespace

void AddRegisterCommands(Program& program) {
  const auto arguments = std::make_shared<RegisterArguments>();
  CLI::App* const registers =
      program.app().add_subcommand("reg", "Read and write registers")->require_subcommand(1);
  registers->fallthrough();
  const auto addArguments = [&](CLI::App* command) {
    command->add_option("space", arguments->space, "isp, sensor, vcm or codec")
        ->required()
        ->check(CLI::IsMember({"isp", "sensor", "vcm", "codec"}));
    command->add_option("address", arguments->address, "Decimal or 0x hexadecimal")->required();
    command->add_option("--width", arguments->width, "Bytes of a sensor register (1 or 2)")
        ->check(CLI::IsMember({1, 2}));
  };
  addArguments(program.AddCommand(registers, "get", "Read a register",
                                  [arguments](const Options& options, Report& report) {
                                    return GetRegister(options, *arguments, report);
                                  }));
  CLI::App* const set = program.AddCommand(registers, "set", "Write a register",
                                           [arguments](const Options& options, Report& report) {
                                             return SetRegister(options, *arguments, report);
                                           });
  addArguments(set);
  set->add_option("value", arguments->value, "Decimal or 0x hexadecimal")->required();
}

}  // namespace zemctl
