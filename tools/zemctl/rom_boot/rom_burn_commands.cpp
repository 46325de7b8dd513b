// zemctl rom burn, burn-package, update-linux, update-partial, erase, read, verify
#include <algorithm>
#include <functional>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/confirm.h"
#include "tools/zemctl/frame/files.h"
#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/rom_boot/burn_run.h"
#include "tools/zemctl/rom_boot/rom_arguments.h"

namespace zemctl {
namespace {

struct BurnArguments {
  RomSelection selection;
  StorageChoice storage;
  BurnRequest request;
  std::string dumpFile;
  bool dryRun = false;
};

struct RangeArguments {
  RomSelection selection;
  StorageChoice storage;
  std::uint32_t address = 0;
  std::uint32_t size = 0;
  std::string file;
  bool dryRun = false;
};

// The address behind the last byte that a plan writes.
std::uint64_t EndOf(const BurnPlan& plan) {
  std::uint64_t end = 0;
  for (const PlannedWrite& write : plan) {
    end = std::max(end, write.address + std::uint64_t{write.bytes.size()});
  }
  return end;
}

// Shows the plan, or asks, carries it out and compares.
int RunPlan(const Options& options, const BurnArguments& arguments, const BurnPlan& plan,
            RomWatch& watch, const std::function<void(const RomSession&)>& carryOut,
            Report& report) {
  static_cast<void>(SelectCdb(arguments.storage));
  if (arguments.dryRun) {
    report["commands"] = CommandRows(plan, arguments.storage);
    return kDone;
  }
  watch.trail().PlanWrites(arguments.storage.name, plan);
  const RomSession session = RomSession::Open(watch, arguments.selection);
  Confirm(options, DescribeLoss(plan, {CameraWords(session), arguments.storage.name,
                                       arguments.request.path}));
  ReportVolume(session, report);
  session.Select(arguments.storage);
  report["storage"] = arguments.storage.name;
  if (!arguments.dumpFile.empty()) {
    session.Call("ZEMROMAPI_CreateDumpFile", [&](void* handle) {
      return ZEMROMAPI_CreateDumpFile(handle, Widen(arguments.dumpFile).c_str(),
                                      static_cast<int>(EndOf(plan)));
    });
  }
  Progress progress(options.json);
  WritePlan(session, plan, progress, report, [&] { carryOut(session); });
  Verify(session, plan, progress, report);
  return kDone;
}

int BurnFile(const Options& options, const BurnArguments& arguments, RomWatch& watch,
             Report& report) {
  return RunPlan(
      options, arguments, PlanOf(arguments.request), watch,
      [&](const RomSession& session) { Burn(session, arguments.request); }, report);
}

int EraseRange(const Options& options, const RangeArguments& arguments, RomWatch& watch,
               Report& report) {
  const BurnPlan plan = [&] {
    try {
      return PlanErase(arguments.address, arguments.size);
    } catch (const MalformedFile& tooLong) {
      throw UsageError(std::string("the range ") + tooLong.what());
    }
  }();
  BurnArguments erase;
  erase.selection = arguments.selection;
  erase.storage = arguments.storage;
  erase.dryRun = arguments.dryRun;
  const auto carryOut = [&](const RomSession& session) {
    session.Call("ZEMROMAPI_Erase", [&](void* handle) {
      return ZEMROMAPI_Erase(handle, arguments.address, arguments.size);
    });
  };
  return RunPlan(options, erase, plan, watch, carryOut, report);
}

int ReadRange(const Options& options, const RangeArguments& arguments, RomWatch& watch,
              Report& report) {
  constexpr std::uint64_t kEnd = 1ULL << 32;
  // The camera is asked for whole sectors.
  const std::uint64_t sectors = (std::uint64_t{arguments.size} + kSectorSize - 1) / kSectorSize;
  if (arguments.address + sectors * kSectorSize > kEnd) {
    throw UsageError("the range ends behind the last address of a storage, 0xFFFFFFFF");
  }
  static_cast<void>(SelectCdb(arguments.storage));
  if (FileExists(arguments.file)) {
    Confirm(options, arguments.file + " is there already and will be overwritten");
  }
  const RomSession session = RomSession::Open(watch, arguments.selection);
  session.Select(arguments.storage);
  Bytes bytes(arguments.size);
  Progress progress(options.json);
  progress.Begin("read");
  for (std::size_t done = 0; done < bytes.size();) {
    const std::size_t size = std::min<std::size_t>(kPieceSize, bytes.size() - done);
    session.Read(arguments.address + static_cast<std::uint32_t>(done),
                 std::span(bytes).subspan(done, size));
    done += size;
    progress.UpdateBytes(done, bytes.size());
  }
  progress.Complete();
  WriteOutputFile(arguments.file, bytes);
  report["storage"] = arguments.storage.name;
  report["address"] = HexNumber(arguments.address, 8);
  report["bytes read"] = bytes.size();
  report["file"] = arguments.file;
  return kDone;
}

int VerifyFile(const Options& options, const BurnArguments& arguments, RomWatch& watch,
               Report& report) {
  const BurnPlan plan = PlanOf(arguments.request);
  static_cast<void>(SelectCdb(arguments.storage));
  const RomSession session = RomSession::Open(watch, arguments.selection);
  session.Select(arguments.storage);
  report["storage"] = arguments.storage.name;
  Progress progress(options.json);
  Verify(session, plan, progress, report);
  return kDone;
}

// A command that burns with one method, which its options may still change.
struct BurnCommand {
  CLI::App* command;
  std::shared_ptr<BurnArguments> arguments;
};

BurnCommand AddBurnCommand(Program& program, CLI::App* rom, const std::string& name,
                           const std::string& description, const std::string& method) {
  const auto arguments = std::make_shared<BurnArguments>();
  arguments->request.method = method;
  CLI::App* const command =
      AddRomCommand(program, rom, arguments, name, description, BurnFile, kAsksWithoutSelection);
  command->add_option("file", arguments->request.path, "File to burn")->required();
  AddStorageOptions(command, arguments->storage);
  AddDryRun(command, arguments->dryRun);
  return {command, arguments};
}

void AddDumpFile(const BurnCommand& burn) {
  burn.command->add_option("--dump", burn.arguments->dumpFile,
                           "File that mirrors what the library erases and writes");
}

}  // namespace

void AddRomBurnCommands(Program& program, CLI::App* rom) {
  const BurnCommand image =
      AddBurnCommand(program, rom, "burn", "Burn an image, read it back and compare", "image");
  image.command->add_option("--address", image.arguments->request.address, "Storage address");

  const BurnCommand package =
      AddBurnCommand(program, rom, "burn-package", "Burn a package at address 0", "package");
  package.command->add_flag_callback(
      "--v2", [package] { package.arguments->request.method = "package-v2"; },
      "The package has a header block, which is written last");

  const BurnCommand linux =
      AddBurnCommand(program, rom, "update-linux", "Burn a Linux firmware package", "linux");
  linux.command->add_option("--header-address", linux.arguments->request.address)->required();
  linux.command->add_option("--body-address", linux.arguments->request.bodyAddress,
                            "Otherwise the one in the package's header");
  AddDumpFile(linux);

  const BurnCommand partial =
      AddBurnCommand(program, rom, "update-partial", "Write any file to storage", "partial");
  partial.command->add_option("--address", partial.arguments->request.address)->required();
  partial.command->add_flag_callback(
      "--with-header", [partial] { partial.arguments->request.method = "partial-with-header"; },
      "Its first 4096 bytes are written last");
  AddDumpFile(partial);

  const auto erase = std::make_shared<RangeArguments>();
  CLI::App* const eraseCommand = AddRomCommand(
      program, rom, erase, "erase", "Write 0xFF to storage", EraseRange, kAsksWithoutSelection);
  AddStorageOptions(eraseCommand, erase->storage);
  AddDryRun(eraseCommand, erase->dryRun);
  eraseCommand->add_option("address", erase->address, "Storage address")->required();
  eraseCommand->add_option("size", erase->size, "Bytes; whole sectors of 512 are erased")
      ->required()
      ->check(CLI::Range(1U, 0xFFFFFFFFU));

  const auto read = std::make_shared<RangeArguments>();
  CLI::App* const readCommand = AddRomCommand(
      program, rom, read, "read", "Read storage into a file", ReadRange, kAsksWithoutSelection);
  AddStorageOptions(readCommand, read->storage);
  readCommand->add_option("file", read->file, "File to write")->required();
  readCommand->add_option("--address", read->address, "Storage address");
  readCommand->add_option("--size", read->size, "Bytes")
      ->required()
      ->check(CLI::Range(1U, 1U << 30));

  const auto verify = std::make_shared<BurnArguments>();
  CLI::App* const verifyCommand =
      AddRomCommand(program, rom, verify, "verify",
                    "Compare storage with what burning a file leaves there", VerifyFile);
  AddStorageOptions(verifyCommand, verify->storage);
  verifyCommand->add_option("file", verify->request.path, "File that was burned")->required();
  AddBurnOptions(verifyCommand, verify->request);
}

}  // namespace zemctl
