// zemctl rom load-updater, load-mini-uvc, load-memory, unpack
#include <optional>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/confirm.h"
#include "tools/zemctl/frame/files.h"
#include "tools/zemctl/frame/folders.h"
#include "tools/zemctl/frame/progress.h"
#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/rom_boot/burn_run.h"
#include "tools/zemctl/rom_boot/code_loading.h"
#include "tools/zemctl/rom_boot/returning_camera.h"
#include "tools/zemctl/rom_boot/rom_arguments.h"

namespace zemctl {
namespace {

// What 32-bit addresses reach, in memory and in a package.
constexpr std::uint64_t kMostMemory = 1ULL << 32;
constexpr std::uint64_t kLongestPackage = 1ULL << 32;

struct CodeArguments {
  RomSelection selection;
  std::string file;
  unsigned waitSeconds = 0;
};

struct MemoryArguments {
  RomSelection selection;
  std::string file;
  std::optional<std::uint32_t> address;
  bool jump = false;
  bool dryRun = false;
};

struct PackageArguments {
  std::string file;
  std::string folder = ".";
};

int LoadUpdaterFile(const Options& options, const CodeArguments& arguments, RomWatch& watch,
                    Report& report) {
  report["code"] = CodeSizeOf(arguments.file);
  Progress progress(options.json);
  const RomSession session = LoadUpdater(RomSession::Open(watch, arguments.selection),
                                         arguments.file, arguments.waitSeconds, progress);
  progress.Complete();
  ReportVolume(session, report);
  return kDone;
}

int LoadMiniUvc(const Options& options, const CodeArguments& arguments, RomWatch& watch,
                Report& report) {
  const std::uint32_t size = CodeSizeOf(arguments.file);
  report["code"] = size;
  watch.trail().PlanCode(size);
  const RomSession session = RomSession::Open(watch, arguments.selection);
  const ReturningCamera camera(options.device, "");
  session.Call("ZEMROMAPI_LoadMiniUVC", [&](void* handle) {
    return ZEMROMAPI_LoadMiniUVC(handle, Widen(arguments.file).c_str());
  });
  camera.Await(watch, arguments.waitSeconds, "the code was started").AddTo(report);
  return kDone;
}

int LoadMemory(const Options& options, const MemoryArguments& arguments, RomWatch& watch,
               Report& report) {
  const BurnPlan plan = ParseInputFile(arguments.file, kMostMemory,
                                       [](const Bytes& file) { return PlanPartial(file, 0); });
  const StorageChoice memory = {"dram"};
  if (arguments.dryRun) {
    Report rows = Report::array();
    if (arguments.address) {
      rows.push_back(CommandRow("download address", HexNumber(*arguments.address, 8), 0,
                                DownloadAddressCdb(*arguments.address)));
    }
    const Report writes = CommandRows(plan, memory);
    rows.insert(rows.end(), writes.begin(), writes.end());
    if (arguments.jump) {
      rows.push_back(CommandRow("jump", "", 0, kJumpCdb));
    }
    report["commands"] = rows;
    return kDone;
  }
  watch.trail().PlanWrites(memory.name, plan);
  const RomSession session = RomSession::Open(watch, arguments.selection);
  Confirm(options,
          "The memory of " + CameraWords(session) + " will be overwritten with " + arguments.file +
              " (" + std::to_string(plan.front().bytes.size()) + " bytes from 0x00000000" +
              (arguments.address ? ", download address " + HexNumber(*arguments.address, 8) : "") +
              ")" + (arguments.jump ? " and what is loaded will be started" : ""));
  if (arguments.address) {
    session.Call("ZEMROMAPI_SetFwDownloadAddr", [&](void* handle) {
      return ZEMROMAPI_SetFwDownloadAddr(handle, *arguments.address);
    });
    report["download address"] = HexNumber(*arguments.address, 8);
  }
  session.Select(memory);
  Progress progress(options.json);
  WritePlan(session, plan, progress, report, [&] {
    unsigned written = 0;
    session.Call("ZEMROMAPI_LoadFW2Memory", [&](void* handle) {
      return ZEMROMAPI_LoadFW2Memory(handle, Widen(arguments.file).c_str(), &written);
    });
  });
  if (arguments.jump) {
    session.Call("ZEMROMAPI_LongJump", ZEMROMAPI_LongJump);
    report["jump"] = "accepted";
  }
  return kDone;
}

// The library writes both files into the current folder.
int Unpack(const Options& options, const PackageArguments& arguments, Report& report) {
  const std::vector<PackageSection> sections =
      ParseInputFile(arguments.file, kLongestPackage, SectionsOf);
  const std::wstring package = WholePath(arguments.file);
  if (!EnterFolder(arguments.folder)) {
    throw UsageError("\"" + arguments.folder + "\" is no folder");
  }
  Report files = Report::array();
  for (const PackageSection& section : sections) {
    if (FileExists(section.file)) {
      Confirm(options, section.file + " is there already and will be overwritten");
    }
    files.push_back(
        {{"file", section.file}, {"offset", section.offset}, {"payload", section.payloadSize}});
  }
  const ZemResult result = ZEMROMAPI_DispackZemPcCamFw(nullptr, package.c_str());
  if (result < 0) {
    throw CallFailure("ZEMROMAPI_DispackZemPcCamFw", result,
                      {"ZEM_E_FAIL", arguments.file + " could not be taken apart",
                       "Check that the folder can be written to.", kBadFile});
  }
  for (const PackageSection& section : sections) {
    // 18 bytes of image header and a header block stand before the payload.
    if (SizeOfFile(section.file) != 18 + 4096 + std::uint64_t{section.payloadSize}) {
      throw ToolFailure(kBadFile, section.file + " was not written whole",
                        "Check that the folder can be written to.");
    }
  }
  report["files"] = files;
  return kDone;
}

}  // namespace

void AddRomLoadCommands(Program& program, CLI::App* rom) {
  constexpr const char* kCodeImage = "Code image, with its 18-byte header or without";
  constexpr unsigned kUpdaterSeconds = 5;
  constexpr unsigned kCameraSeconds = 10;
  const auto updater = std::make_shared<CodeArguments>();
  updater->waitSeconds = kUpdaterSeconds;
  CLI::App* const loadUpdater =
      AddRomCommand(program, rom, updater, "load-updater",
                    "Load the updater, start it and wait for its storage", LoadUpdaterFile);
  loadUpdater->add_option("file", updater->file, kCodeImage)->required();
  AddUpdaterWait(loadUpdater, updater->waitSeconds);

  const auto mini = std::make_shared<CodeArguments>();
  mini->waitSeconds = kCameraSeconds;
  CLI::App* const loadMini = AddRomCommand(
      program, rom, mini, "load-mini-uvc",
      "Load a small camera firmware, start it and wait for the camera", LoadMiniUvc, {});
  loadMini->add_option("file", mini->file, kCodeImage)->required();
  AddCameraWait(loadMini, mini->waitSeconds);

  const auto memory = std::make_shared<MemoryArguments>();
  CLI::App* const load =
      AddRomCommand(program, rom, memory, "load-memory", "Load a file into the camera's memory",
                    LoadMemory, kAsksWithoutSelection);
  load->add_option("file", memory->file, "Any file")->required();
  load->add_option("--address", memory->address, "Download address to set before");
  load->add_flag("--jump", memory->jump, "Start the loaded code behind it");
  AddDryRun(load, memory->dryRun);

  const auto package = std::make_shared<PackageArguments>();
  CLI::App* const unpack =
      program.AddCommand(rom, "unpack", "Take a firmware package apart; no camera is needed",
                         [package](const Options& options, Report& report) {
                           return Unpack(options, *package, report);
                         },
                         {.camera = false, .selection = false, .yes = true});
  unpack->add_option("file", package->file, "Firmware package")->required();
  unpack->add_option("--into", package->folder, "Folder for VSN_V3BC and VSN_V3FW")
      ->capture_default_str();
}

}  // namespace zemctl
