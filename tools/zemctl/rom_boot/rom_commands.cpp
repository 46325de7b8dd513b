// zemctl rom enter, info, reset, reg get, reg set, command
#include <algorithm>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/confirm.h"
#include "tools/zemctl/frame/files.h"
#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/rom_boot/burn_run.h"
#include "tools/zemctl/rom_boot/rom_arguments.h"

namespace zemctl {
namespace {

// ---- Arguments ----

struct EntryArguments {
  RomSelection selection = {std::nullopt, 10, false, ""};
  std::string way = "both";
};

struct PlainArguments {
  RomSelection selection;
};

struct RegisterArguments {
  RomSelection selection;
  std::uint32_t address = 0;
  unsigned value = 0;
};

struct CommandArguments {
  RomSelection selection;
  std::vector<std::string> bytes;
  std::uint32_t bytesToRead = 0;
  std::string fileToSend;
};

// ---- Going there and coming back ----

struct EntryWay {
  const char* name;
  const char* function;
  ZemResult (*enter)(void* handle);
};
const EntryWay kEntryWays[] = {
    {"both", "ZEMAPI_ResetToRomboot", ZEMAPI_ResetToRomboot},
    {"vcp8", "ZEMAPI_ResetToRomboot_VCP8", ZEMAPI_ResetToRomboot_VCP8},
    {"vcp16", "ZEMAPI_ResetToRomboot_VCP16", ZEMAPI_ResetToRomboot_VCP16},
};

int Enter(const Options& options, const EntryArguments& arguments, RomWatch& watch,
          Report& report) {
  const auto* const way =
      std::find_if(std::begin(kEntryWays), std::end(kEntryWays),
                   [&](const EntryWay& candidate) { return arguments.way == candidate.name; });
  // What is in ROM boot already is another camera.
  for (const RomVolume& volume : watch.Survey()) {
    watch.LeaveAlone(volume.drive);
  }
  {
    const Session camera(options.device, Use::kWriting);
    report["camera"] = NameOf(camera.device());
    watch.trail().OnRunning();
    camera.Call(way->function, [&](void* device) { return way->enter(device); });
    watch.trail().OnEntered();
  }
  ReportVolume(RomSession::Open(watch, arguments.selection), report);
  return kDone;
}

int Reset(const Options& /*options*/, const PlainArguments& arguments, RomWatch& watch,
          Report& report) {
  const RomSession session = RomSession::Open(watch, arguments.selection);
  ReportVolume(session, report);
  report["reset"] = session.Reset() ? "accepted" : "sent; the camera left before it answered";
  return kDone;
}

// ---- What it is ----

constexpr std::size_t kIdentitySize = 16;

int ShowInfo(const Options& /*options*/, const PlainArguments& arguments, RomWatch& watch,
             Report& report) {
  const RomSession session = RomSession::Open(watch, arguments.selection);
  ReportVolume(session, report);
  if (session.kind() == RomKind::kBootLoader) {
    report["signature"] = session.volume().Signature();
  }
  const auto& identity = session.volume().identity;
  report["identity"] = HexText(identity);
  if (identity.size() < kIdentitySize) {
    throw PartialFailure(ToolFailure(kTransferFailed,
                                     "the camera told " + std::to_string(identity.size()) + " of " +
                                         std::to_string(kIdentitySize) + " bytes of its identity",
                                     "Run this command once more; if it fails again, check the "
                                     "cable.")
                             .failure());
  }
  return kDone;
}

// ---- Registers and raw commands ----

int GetRegister(const Options& /*options*/, const RegisterArguments& arguments, RomWatch& watch,
                Report& report) {
  const RomSession session = RomSession::Open(watch, arguments.selection);
  unsigned char value = 0;
  session.Call("ZEMROMAPI_ReadRegister", [&](void* handle) {
    return ZEMROMAPI_ReadRegister(handle, arguments.address, &value);
  });
  report["address"] = HexNumber(arguments.address, 8);
  report["value"] = HexNumber(value, 2);
  return kDone;
}

int SetRegister(const Options& /*options*/, const RegisterArguments& arguments, RomWatch& watch,
                Report& report) {
  const RomSession session = RomSession::Open(watch, arguments.selection);
  session.Call("ZEMROMAPI_WriteRegister", [&](void* handle) {
    return ZEMROMAPI_WriteRegister(handle, arguments.address,
                                   static_cast<unsigned char>(arguments.value));
  });
  report["address"] = HexNumber(arguments.address, 8);
  report["value"] = HexNumber(arguments.value, 2);
  report["written"] = true;
  return kDone;
}

// Whatever does not read may erase: its meaning is the device's.
int SendCommand(const Options& options, const CommandArguments& arguments, RomWatch& watch,
                Report& report) {
  std::vector<unsigned char> cdb = ParseBlock(arguments.bytes, Cdb().size());
  std::vector<unsigned char> data;
  const bool reads = arguments.bytesToRead > 0;
  if (reads) {
    data.resize(arguments.bytesToRead);
  } else if (!arguments.fileToSend.empty()) {
    data = ReadInputFile(arguments.fileToSend, 0xFFFFFFFF);
  }
  const RomSession session = RomSession::Open(watch, arguments.selection);
  if (!reads) {
    Confirm(options, "The raw command " + HexText(cdb) + " with " + std::to_string(data.size()) +
                         " bytes of data goes to " + CameraWords(session) + " as it is");
  }
  const std::string sent = HexText(cdb);
  const ZemResult result = session.Observe([&](void* handle) {
    return ZEMROMAPI_ScsiCommand(handle, reads ? 1 : 0, static_cast<unsigned>(data.size()),
                                 cdb.data(), data.data());
  });
  const std::vector<ScsiCommand>& commands = watch.record().commands();
  if (result < 0 || commands.empty()) {
    session.Judge("ZEMROMAPI_ScsiCommand", result < 0 ? result : ZEM_E_FAIL);
  }
  report["sent"] = sent;
  if (reads) {
    // As many as came: what a raw command brings is not known here.
    report["data"] = HexText(commands.back().data);
  } else {
    report["bytes sent"] = data.size();
  }
  return kDone;
}

void AddRegisterCommands(Program& program, CLI::App* rom) {
  const auto arguments = std::make_shared<RegisterArguments>();
  CLI::App* const registers = rom->add_subcommand("reg", "Read and write one-byte registers")
                                  ->require_subcommand(1)
                                  ->fallthrough();
  const auto addAddress = [&](CLI::App* command) {
    command->add_option("address", arguments->address, "Decimal or 0x hexadecimal")->required();
    return command;
  };
  addAddress(AddRomCommand(program, registers, arguments, "get", "Read a register", GetRegister));
  addAddress(AddRomCommand(program, registers, arguments, "set", "Write a register", SetRegister))
      ->add_option("value", arguments->value, "0 to 255")
      ->required()
      ->check(CLI::Range(255));
}

}  // namespace

void AddRomCommands(Program& program) {
  CLI::App* const rom = program.app()
                            .add_subcommand("rom", "Reach a camera in ROM boot")
                            ->require_subcommand(1)
                            ->fallthrough();

  const auto entry = std::make_shared<EntryArguments>();
  AddRomCommand(program, rom, entry, "enter", "Send a running camera into ROM boot", Enter, {})
      ->add_option("--way", entry->way, "both, vcp8 or vcp16: by which command")
      ->check(CLI::IsMember({"both", "vcp8", "vcp16"}))
      ->capture_default_str();

  const auto plain = std::make_shared<PlainArguments>();
  AddRomCommand(program, rom, plain, "info", "Show what answers, and how it identifies itself",
                ShowInfo);
  AddRomCommand(program, rom, plain, "reset", "Reset the camera", Reset);

  AddRegisterCommands(program, rom);
  AddRomLoadCommands(program, rom);
  AddRomBurnCommands(program, rom);
  AddRomEmmcCommands(program, rom);

  const auto raw = std::make_shared<CommandArguments>();
  CLI::App* const command =
      AddRomCommand(program, rom, raw, "command", "Send a raw SCSI command; asks unless it reads",
                    SendCommand, kAsksWithoutSelection);
  command->add_option("bytes", raw->bytes, "Hexadecimal; zeros fill the 16 bytes up")->required();
  auto* const in =
      command->add_option("--in", raw->bytesToRead, "Bytes to read")->check(CLI::Range(1, 65536));
  command->add_option("--out", raw->fileToSend, "File whose bytes are sent")->excludes(in);
}

}  // namespace zemctl
