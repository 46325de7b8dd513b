// zemctl rom load-updater, load-mini-uvc, load-memory, unpack
#include <windows.h>

#include <array>
#include <optional>

#include "tools/zemctl/camera/camera_wait.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/confirm.h"
#include "tools/zemctl/frame/files.h"
#include "tools/zemctl/frame/progress.h"
#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/rom_boot/code_loading.h"
#include "tools/zemctl/rom_boot/rom_arguments.h"

namespace zemctl {
namespace {

// What 32-bit addresses reach, in memory and in a package.
constexpr std::uint64_t kMostMemory = 1ULL << 32;
constexpr std::uint64_t kLongestPackage = 1ULL << 32;

struct CodeArguments {
  RomSelection selection;
  std::string file;
};

struct MemoryArguments {
  RomSelection selection;
  std::string file;
  std::optional<std::uint32_t> address;
  bool jump = false;
};

struct PackageArguments {
  std::string file;
  std::string folder = ".";
};

int LoadUpdaterFile(const Options& options, const CodeArguments& arguments, Report& report) {
  report["code"] = CodeSizeOf(arguments.file);
  Progress progress(options.json);
  progress.Begin("updater");
  const RomSession session = LoadUpdater(RomSession::Open(arguments.selection), arguments.file);
  progress.Complete();
  report["found"] = NameOf(session.kind());
  return kDone;
}

int LoadMiniUvc(const Options& options, const CodeArguments& arguments, Report& report) {
  constexpr unsigned kCameraSeconds = 10;
  report["code"] = CodeSizeOf(arguments.file);
  {
    const RomSession session = RomSession::Open(arguments.selection);
    CheckRom("ZEMROMAPI_LoadMiniUVC",
             ZEMROMAPI_LoadMiniUVC(session.handle(), Widen(arguments.file).c_str()));
  }
  const std::string version = WaitForCamera(options.device, kCameraSeconds);
  if (version.empty()) {
    throw ToolFailure(kNoCamera, "the code was started, but no camera came within 10 s",
                      "It may have other USB ids: see \"zemctl list\".");
  }
  report["camera"] = "firmware version " + version;
  return kDone;
}

int LoadMemory(const Options& /*options*/, const MemoryArguments& arguments, Report& report) {
  const BurnPlan plan = ParseInputFile(arguments.file, kMostMemory,
                                       [](const Bytes& file) { return PlanPartial(file, 0); });
  const RomSession session = RomSession::Open(arguments.selection);
  if (arguments.address) {
    CheckRom("ZEMROMAPI_SetFwDownloadAddr",
             ZEMROMAPI_SetFwDownloadAddr(session.handle(), *arguments.address));
    report["download address"] = HexNumber(*arguments.address, 8);
  }
  session.Select({"dram"});
  unsigned written = 0;
  CheckRom("ZEMROMAPI_LoadFW2Memory",
           ZEMROMAPI_LoadFW2Memory(session.handle(), Widen(arguments.file).c_str(), &written));
  report["bytes written"] = plan.front().bytes.size();
  if (arguments.jump) {
    CheckRom("ZEMROMAPI_LongJump", ZEMROMAPI_LongJump(session.handle()));
    report["jump"] = "accepted";
  }
  return kDone;
}

// The library writes both files into the current folder.
int Unpack(const Options& options, const PackageArguments& arguments, Report& report) {
  const std::vector<PackageSection> sections =
      ParseInputFile(arguments.file, kLongestPackage, SectionsOf);
  std::array<wchar_t, MAX_PATH> package = {};
  GetFullPathNameW(Widen(arguments.file).c_str(), MAX_PATH, package.data(), nullptr);
  if (SetCurrentDirectoryW(Widen(arguments.folder).c_str()) == FALSE) {
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
  CheckRom("ZEMROMAPI_DispackZemPcCamFw", ZEMROMAPI_DispackZemPcCamFw(nullptr, package.data()));
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
  const auto code = std::make_shared<CodeArguments>();
  AddRomCommand(program, rom, code, "load-updater",
                "Load the updater, start it and wait for its storage", LoadUpdaterFile)
      ->add_option("file", code->file, kCodeImage)
      ->required();
  AddRomCommand(program, rom, code, "load-mini-uvc",
                "Load a small camera firmware, start it and wait for the camera", LoadMiniUvc, {})
      ->add_option("file", code->file, kCodeImage)
      ->required();

  const auto memory = std::make_shared<MemoryArguments>();
  CLI::App* const load = AddRomCommand(program, rom, memory, "load-memory",
                                       "Load a file into the camera's memory", LoadMemory);
  load->add_option("file", memory->file, "Any file")->required();
  load->add_option("--address", memory->address, "Download address to set before");
  load->add_flag("--jump", memory->jump, "Start the loaded code behind it");

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
