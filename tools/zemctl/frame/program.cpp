#include "tools/zemctl/frame/program.h"

#include <algorithm>

#include "tools/zemctl/camera/simulator_module.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

constexpr const char* kFooter =
    "Exit codes:\n"
    "  0 done                         5 the camera refused the command\n"
    "  1 unexpected error             6 a buffer is too small\n"
    "  2 wrong command line           7 a transfer failed (camera gone, control unknown)\n"
    "  3 no camera matches            8 the camera lacks the extension unit\n"
    "  4 the library refused          9 a file is not what it should be\n"
    "                                10 what was written is not what is there\n"
    "                                11 the question was not answered with yes\n"
    "                                12 stopped by the user in the middle of an update";

}  // namespace

Program::Program() : app_("Controls USB video-class cameras through ZemUVCExtApi.dll.", "zemctl") {
  app_.require_subcommand(1);
  app_.fallthrough();
  app_.footer(kFooter);
  DeviceSelection& device = options_.device;
  const std::string group = "Which camera";
  app_.add_option("--index", device.index, "Position among the cameras with the same USB ids")
      ->group(group);
  app_.add_option("--vid", device.vendorId, "USB vendor id")->group(group);
  app_.add_option("--pid", device.productId, "USB product id")->group(group);
  auto* const path =
      app_.add_option("--path", device.displayName, "Display name of the device")->group(group);
  app_.add_option("--device-path", device.devicePath, "Device path")->group(group)->excludes(path);
  app_.add_flag("--json", options_.json, "Write JSON");
  app_.add_flag("--yes", options_.yes, "Do not ask before something is overwritten or erased");
  const std::string simulated = "Simulated camera";
  auto* const flag =
      app_.add_flag("--simulator", options_.simulator, "Use simulated cameras")->group(simulated);
  app_.add_option("--simulator-options", options_.simulatorOptions,
                  "What to simulate, as JSON (docs/simulator.md)")
      ->group(simulated)
      ->needs(flag);
  app_.add_option("--simulator-fault", options_.simulatorFaults,
                  "A fault of the simulated camera, such as unplug@3")
      ->group(simulated)
      ->needs(flag)
      ->allow_extra_args(false);
  app_.add_option("--state", options_.simulatorState,
                  "File in which the simulated camera keeps its memory between runs")
      ->group(simulated)
      ->needs(flag);
  AddDeviceCommands(*this);
  AddRegisterCommands(*this);
  AddTuneCommands(*this);
  AddControlCommands(*this);
  AddAudioCommands(*this);
  AddEncodingCommands(*this);
  AddRawCommands(*this);
  AddH264Commands(*this);
  AddStreamCommands(*this);
  AddMulticastCommands(*this);
  AddRomCommands(*this);
  AddRecoverCommand(*this);
  AddMediaCommands(*this);
  AddUpdateCommands(*this);
  AddDataCommands(*this);
  AddNvmemCommands(*this);
  AddTableCommands(*this);
}

CLI::App* Program::AddCommand(CLI::App* parent, const std::string& name,
                              const std::string& description, Action action) {
  CLI::App* const command = parent->add_subcommand(name, description);
  command->fallthrough();
  command->callback([this, action = std::move(action)] { chosen_ = action; });
  return command;
}

int Program::Run(std::vector<std::string> arguments) {
  arguments.erase(arguments.begin());
  std::reverse(arguments.begin(), arguments.end());
  try {
    app_.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app_.exit(error) == 0 ? kDone : kUsageError;
  }
  try {
    return RunAction();
  } catch (const CallFailure& failure) {
    const ResultText& text = failure.text();
    return PrintFailure(failure.what(), text.advice,
                        {{"function", failure.function()},
                         {"result", Hex(failure.result())},
                         {"name", text.name},
                         {"meaning", text.meaning}},
                        text.exitCode);
  } catch (const ToolFailure& failure) {
    return PrintFailure(failure.what(), failure.advice(), {{"meaning", failure.what()}},
                        failure.exitCode());
  } catch (const UsageError& error) {
    return PrintFailure(error.what(), "Run with --help.", {{"meaning", error.what()}}, kUsageError);
  } catch (const std::exception& error) {
    return PrintFailure(error.what(), "", {{"meaning", error.what()}}, kInternalError);
  }
}

int Program::RunAction() {
  std::optional<SimulatorModule> simulator;
  if (options_.simulator) {
    simulator.emplace(options_.simulatorOptions, options_.simulatorFaults, options_.simulatorState);
  }
  const ComThread com;
  Report report = Report::object();
  const int exitCode = chosen_(options_, report);
  Print(stdout, report, options_.json);
  return exitCode;
}

int Program::PrintFailure(const std::string& message, const std::string& advice, Report details,
                          int exitCode) const {
  if (options_.json) {
    details["advice"] = advice;
    details["exitCode"] = exitCode;
    Print(stdout, {{"error", details}}, true);
    return exitCode;
  }
  std::fprintf(stderr, "zemctl: %s.\n", message.c_str());
  if (!advice.empty()) {
    std::fprintf(stderr, "  %s\n", advice.c_str());
  }
  return exitCode;
}

}  // namespace zemctl
