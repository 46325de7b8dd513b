// What the rom commands have in common on the command line.
#pragma once

#include <memory>
#include <string>

#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/rom_boot/burn_method.h"
#include "tools/zemctl/rom_boot/rom_session.h"

namespace zemctl {

// Of commands that ask, and take any camera in ROM boot.
inline constexpr Program::Uses kAsksWithoutSelection = {.selection = false, .yes = true};

// --drive, --kind, --boot-wait and --send-divider.
void AddSelectionOptions(CLI::App* command, RomSelection& selection);

// --storage, which must be given, and --option.
void AddStorageOptions(CLI::App* command, StorageChoice& storage);

// --as, --address and --body-address.
void AddBurnOptions(CLI::App* command, BurnRequest& request);

// --updater-wait: seconds for the storage of an updater that was started.
void AddUpdaterWait(CLI::App* command, unsigned& seconds);

// --wait: seconds for the camera to come back.
void AddCameraWait(CLI::App* command, unsigned& seconds);

// What was found, and where.
void ReportVolume(const RomSession& session, Report& report);

// --dry-run.
void AddDryRun(CLI::App* command, bool& dryRun);

// Adds a command to `parent` that runs under watch, and whose arguments have a `selection`, with
// the options for that.
template <class Arguments>
CLI::App* AddRomCommand(Program& program, CLI::App* parent,
                        const std::shared_ptr<Arguments>& arguments, const std::string& name,
                        const std::string& description,
                        int (*action)(const Options&, const Arguments&, RomWatch&, Report&),
                        Program::Uses uses = {.selection = false}) {
  CLI::App* const command = program.AddCommand(
      parent, name, description,
      [arguments, action](const Options& options, Report& report) {
        RomWatch watch(options);
        return watch.Run([&] { return action(options, *arguments, watch, report); });
      },
      uses);
  AddSelectionOptions(command, arguments->selection);
  return command;
}

// Parts of zemctl rom, each in the file of its name.
void AddRomLoadCommands(Program& program, CLI::App* rom);
void AddRomBurnCommands(Program& program, CLI::App* rom);
void AddRomEmmcCommands(Program& program, CLI::App* rom);

}  // namespace zemctl
