// What every command of zemctl shares: the global options, the opened camera, the report.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/zemctl/camera/session.h"
#include "tools/zemctl/frame/report.h"

namespace zemctl {

struct Options {
  // The command line without the program's name.
  std::vector<std::string> words;
  // The command that runs, such as "rom read"; empty until it is known.
  std::string command;
  DeviceSelection device;
  bool json = false;
  bool yes = false;
  bool simulator = false;
  std::string simulatorOptions;
  std::vector<std::string> simulatorFaults;
  std::string simulatorState;
  std::string trace;  // the file that the transfers are written to
  bool traceWithoutSerials = false;
  std::string replay;  // the trace that answers in place of the devices
};

// How a command ended.
struct Ending {
  std::optional<Failure> failure;
  bool reportStands = true;

  int code() const { return failure ? int{failure->code} : int{kDone}; }
};

class Program {
 public:
  Program();

  // Runs one command line (UTF-8, the program's name first) and returns the exit code.
  int Run(std::vector<std::string> arguments);

  const Options& options() const { return options_; }

  // What is done once the command line has been understood: fills the report and returns kDone,
  // or the code whose meaning says enough of what is wrong. Throws CallFailure, ToolFailure or
  // UsageError, and the report counts for nothing; or PartialFailure, and it stands.
  using Action = std::function<int(const Options&, Report&)>;

  // Which of the options that every command line may have a command has a use for: its help and
  // the completion name those.
  struct Uses {
    bool camera = true;     // works on cameras, real or simulated
    bool selection = true;  // on the one that was chosen
    bool yes = false;       // asks before it does what cannot be undone
  };

  // Adds a command to `parent`; `action` runs when it is the one that was given.
  CLI::App* AddCommand(CLI::App* parent, const std::string& name, const std::string& description,
                       Action action, Uses uses = {true, true, false});

  // Those options, for a command that was added.
  std::vector<const CLI::Option*> SharedOptionsOf(const CLI::App& command) const;

  CLI::App& app() { return app_; }
  const CLI::App& app() const { return app_; }

 private:
  int AnswerParseError(const CLI::ParseError& error);
  Ending RunAction(Report& report);
  int Fail(const Failure& failure) const;

  CLI::App app_;
  Options options_;
  std::map<const CLI::App*, Uses> uses_;
  Action chosen_;
};

inline constexpr Program::Uses kWithoutCamera = {.camera = false, .selection = false};

// The command groups, each in the file of its name.
void AddDeviceCommands(Program& program);
void AddRegisterCommands(Program& program);
void AddTuneCommands(Program& program);
void AddControlCommands(Program& program);
void AddAudioCommands(Program& program);
void AddEncodingCommands(Program& program);
void AddRawCommands(Program& program);
void AddH264Commands(Program& program);
void AddStreamCommands(Program& program);
void AddMulticastCommands(Program& program);
void AddRomCommands(Program& program);
void AddRecoverCommand(Program& program);
void AddMediaCommands(Program& program);
void AddUpdateCommands(Program& program);
void AddDataCommands(Program& program);
void AddNvmemCommands(Program& program);
void AddTableCommands(Program& program);
void AddTraceCommands(Program& program);
void AddCompletionCommands(Program& program);

}  // namespace zemctl
