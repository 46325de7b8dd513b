#include "tools/zemctl/frame/program.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>

#include "tools/zemctl/camera/library_hooks.h"
#include "tools/zemctl/camera/simulator_module.h"
#include "tools/zemctl/camera/trace_scope.h"
#include "tools/zemctl/frame/command_tree.h"
#include "tools/zemctl/frame/interrupt.h"
#include "tools/zemctl/frame/outcome.h"
#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/frame/run.h"
#include "zemctl_version.h"

namespace zemctl {
namespace {

constexpr const char* kSelectionGroup = "Which camera";

std::string Footer() {
  std::string text = "Exit codes:";
  for (int code = kDone; code <= kSomeFailed; ++code) {
    text += (code < 10 ? "\n   " : "\n  ") + std::to_string(code) + " " +
            MeaningOf(static_cast<ExitCode>(code));
  }
  return text;
}

}  // namespace

Program::Program() : app_("Controls USB video-class cameras through ZemUVCExtApi.", "zemctl") {
  app_.require_subcommand(1);
  app_.fallthrough();
  app_.footer(Footer());
  app_.formatter(std::make_shared<CommandHelp>(
      [this](const CLI::App& command) { return SharedOptionsOf(command); }));
  app_.option_defaults()->always_capture_default();
  // An argument that begins with a slash may be a path.
  app_.allow_windows_style_options(false);
  app_.set_version_flag("--version", kVersion, "Print the version and exit");
  DeviceSelection& device = options_.device;
  const std::string group = kSelectionGroup;
  auto* const index = app_.add_option("--index", device.index,
                                      "Position among the cameras that the rest of this group "
                                      "fits, from 0")
                          ->group(group);
  auto* const vendor = app_.add_option("--vid", device.vendorId, "USB vendor id")->group(group);
  auto* const product = app_.add_option("--pid", device.productId, "USB product id")->group(group);
  auto* const name = app_.add_option("--name", device.name,
                                     "Name that people see, such as "
                                     "\"ZEM Simulated Camera\"")
                         ->group(group)
                         ->excludes(vendor)
                         ->excludes(product);
  auto* const path =
      app_.add_option("--path", device.displayName,
                      "The \"path\" of list: the device's name for programs, begins with @device")
          ->group(group);
  auto* const devicePath =
      app_.add_option("--device-path", device.devicePath,
                      "The \"device path\" of list: the system's own, begins with \\\\?\\")
          ->group(group)
          ->excludes(path);
  for (CLI::Option* const other : {index, vendor, product, name}) {
    path->excludes(other);
    devicePath->excludes(other);
  }
  app_.add_flag("--json", options_.json, "Write JSON");
  app_.add_flag("--yes", options_.yes, "Do not ask before something is overwritten or erased");
  const std::string simulated = "Simulated camera";
  auto* const flag =
      app_.add_flag("--simulator", options_.simulator, "Use simulated cameras")->group(simulated);
  app_.add_option("--simulator-options", options_.simulatorOptions,
                  "What to simulate: JSON, or a file with it (docs/simulator.md)")
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
  const std::string traced = "Trace";
  auto* const trace =
      app_.add_option("--trace", options_.trace,
                      "Write each transfer to this file as it happens (docs/traces.md)")
          ->group(traced);
  app_.add_flag("--trace-without-serials", options_.traceWithoutSerials,
                "Leave serial numbers out of the trace")
      ->group(traced)
      ->needs(trace);
  app_.add_option("--replay", options_.replay,
                  "Let this trace answer in place of the camera it was recorded from")
      ->group(traced)
      ->excludes(flag);
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
  AddTraceCommands(*this);
  AddCompletionCommands(*this);
  ReadNumbersAsDecimal(app_);
}

CLI::App* Program::AddCommand(CLI::App* parent, const std::string& name,
                              const std::string& description, Action action, Uses uses) {
  CLI::App* const command = parent->add_subcommand(name, description);
  uses_[command] = uses;
  command->fallthrough();
  command->callback([this, action = std::move(action)] { chosen_ = action; });
  return command;
}

std::vector<const CLI::Option*> Program::SharedOptionsOf(const CLI::App& command) const {
  const auto found = uses_.find(&command);
  if (found == uses_.end()) {
    return {};
  }
  const Uses& uses = found->second;
  return app_.get_options([&](const CLI::Option* option) {
    if (option == app_.get_help_ptr() || option == app_.get_version_ptr()) {
      return false;
    }
    if (option->check_lname("json")) {
      return true;
    }
    if (option->check_lname("yes")) {
      return uses.yes;
    }
    return option->get_group() == kSelectionGroup ? uses.selection : uses.camera;
  });
}

int Program::Run(std::vector<std::string> arguments) {
  arguments.erase(arguments.begin());
  options_.words = arguments;
  // For a command line that cannot be understood.
  options_.json = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
  std::reverse(arguments.begin(), arguments.end());
  try {
    app_.parse(arguments);
  } catch (const CLI::ParseError& error) {
    options_.command = NameOf(GivenCommand(app_));
    return AnswerParseError(error);
  } catch (const UsageError& error) {
    options_.command = NameOf(GivenCommand(app_));
    return Fail(WrongCommandLine(error.what(), options_.command));
  }
  options_.command = NameOf(GivenCommand(app_));
  Report report = Report::object();
  const Ending ending = EndingOf(options_.command, [&] { return RunAction(report); });
  if (!ending.failure) {
    ShowReport(options_, report);
  } else if (ending.reportStands) {
    ShowFailure(options_, report, *ending.failure);
  } else {
    ShowFailure(options_, *ending.failure);
  }
  return ending.code();
}

int Program::AnswerParseError(const CLI::ParseError& error) {
  if (dynamic_cast<const CLI::CallForVersion*>(&error) != nullptr) {
    if (options_.json) {
      ShowReport(options_, {{"version", kVersion}});
    } else {
      std::printf("zemctl %s\n", kVersion);
    }
    return kDone;
  }
  if (error.get_exit_code() == 0) {
    const std::string help = app_.help();
    if (options_.json) {
      ShowReport(options_, {{"help", help}});
    } else {
      std::fputs(help.c_str(), stdout);
    }
    return kDone;
  }
  const CLI::App& given = GivenCommand(app_);
  const bool lacksCommand =
      !CommandsBelow(given).empty() && dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
  return Fail(
      WrongCommandLine(lacksCommand ? WordsForNoCommand(given, app_.remaining(true)) : error.what(),
                       options_.command));
}

Ending Program::RunAction(Report& report) {
  ReplayScope replay(options_.replay);
  std::optional<SimulatorModule> simulator;
  if (options_.simulator) {
    simulator.emplace(options_.simulatorOptions, options_.simulatorFaults, options_.simulatorState);
  }
  const LibraryHooks hooks;
  const InterruptGuard interrupt;
  TraceScope trace({options_.trace, options_.traceWithoutSerials, options_.words});
  const ComThread com;
  Ending ending = EndingOf(options_.command, [&]() -> Ending {
    const int exitCode = chosen_(options_, report);
    if (exitCode == kDone) {
      return {};
    }
    const auto code = static_cast<ExitCode>(exitCode);
    return {Failure{code, MeaningOf(code), "", "", "", "", ""}, true};
  });
  if (auto otherRun = replay.End()) {
    ending = {std::move(otherRun), false};
  }
  if (auto untold = trace.End(ending.code()); untold && !ending.failure) {
    ending = {std::move(untold), true};
  }
  return ending;
}

int Program::Fail(const Failure& failure) const {
  ShowFailure(options_, failure);
  return failure.code;
}

int Run(std::vector<std::string> commandLine) { return Program().Run(std::move(commandLine)); }

}  // namespace zemctl
