// zemctl rom make-enhanced-area
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/confirm.h"
#include "tools/zemctl/rom_boot/burn_run.h"
#include "tools/zemctl/rom_boot/rom_arguments.h"

namespace zemctl {
namespace {

struct EnhancedAreaArguments {
  RomSelection selection;
  EnhancedArea area;
  bool dryRun = false;
};

int MakeEnhancedArea(const Options& options, const EnhancedAreaArguments& arguments,
                     RomWatch& watch, Report& report) {
  const Cdb cdb = EnhancedAreaCdb(arguments.area);
  if (arguments.dryRun) {
    report["commands"] = Report::array({CommandRow("enhanced area", "", 0, cdb)});
    return kDone;
  }
  const RomSession session = RomSession::Open(watch, arguments.selection);
  Confirm(options, "The eMMC of " + CameraWords(session) + " will get an enhanced area (" +
                       HexNumber(arguments.area.first, 8) + ", " +
                       HexNumber(arguments.area.second, 8) +
                       "), which may erase it and may be for good");
  session.MakeEnhancedArea(arguments.area);
  ReportVolume(session, report);
  report["sent"] = HexText(cdb);
  report["accepted"] = true;
  return kDone;
}

}  // namespace

void AddRomEmmcCommands(Program& program, CLI::App* rom) {
  const auto arguments = std::make_shared<EnhancedAreaArguments>();
  CLI::App* const command =
      AddRomCommand(program, rom, arguments, "make-enhanced-area",
                    "Make the enhanced area of an eMMC", MakeEnhancedArea, kAsksWithoutSelection);
  constexpr const char* kPassedOn = "Number that goes to the boot code as it is";
  command->add_option("first", arguments->area.first, kPassedOn)->required();
  command->add_option("second", arguments->area.second, kPassedOn)->required();
  AddDryRun(command, arguments->dryRun);
}

}  // namespace zemctl
