// Every command of the tool with a failure at each of its transfers: none may end with 0 unless
// what it says and what it leaves are what they are without the failure. And every command once
// more from its own trace: what it says is the same.
#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "tests/zemctl/sweep/commands.h"
#include "tests/zemctl/virtual_time/virtual_time.h"
#include "tools/zemctl/camera/trace_scope.h"
#include "tools/zemctl/frame/command_tree.h"
#include "tools/zemctl/frame/files.h"
#include "tools/zemctl/frame/folders.h"
#include "tools/zemctl/frame/program.h"

namespace {

using nlohmann::json;

// A camera that has left ends a command so soon. The commands of ROM boot wait for a camera to come
// back, as long as they were told to.
constexpr std::uint64_t kLongestEnd = 5000;
constexpr std::uint64_t kLongestAskedWait = 10000;

// What a line says that differs from that of a healthy run, and is right all the same.
constexpr std::array<const char*, 2> kHonestWords = {
    "not read: ",
    "the camera left before it answered",
};

std::string Contents(const std::string& path) {
  std::string text;
  if (std::FILE* const file = std::fopen(path.c_str(), "rb")) {
    std::array<char, 65536> piece = {};
    while (const std::size_t read = std::fread(piece.data(), 1, piece.size(), file)) {
      text.append(piece.data(), read);
    }
    std::fclose(file);
  }
  return text;
}

// What the camera keeps; but what was sent to it last, which is padded to whole transfers, only
// counts once it is burned.
std::string KeptMemory(const std::string& path) {
  json memory = json::parse(Contents(path));
  memory.erase("data");
  return memory.dump();
}

// What a run came to.
struct Run {
  int code = 0;
  std::string said = {};  // on standard output
  std::map<std::string, std::string> left = {};
  std::uint64_t milliseconds = 0;  // of virtual time
};

// Standard output and error of the runs go to files.
class Capture {
 public:
  Capture() : console_(OpenAgain()) { Clear(); }

  std::FILE* console() const { return console_; }

  static void Clear() {
    static_cast<void>(std::freopen("said.txt", "w", stdout));
    static_cast<void>(std::freopen("errors.txt", "w", stderr));
  }

 private:
  // Standard output as it is now, whatever becomes of the stream.
  static std::FILE* OpenAgain() {
#ifdef _WIN32
    return _fdopen(_dup(_fileno(stdout)), "w");
#else
    return ::fdopen(::dup(STDOUT_FILENO), "w");
#endif
  }

  std::FILE* console_;
};

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(separator, at), text.size());
    parts.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return parts;
}

// The arguments that simulate what the command runs on, with a fault of the camera or of the boot
// loader.
std::vector<std::string> Simulated(const SweptCommand& command, const std::string& cameraFault = "",
                                   const std::string& bootFault = "") {
  json options = json::parse(R"({"cameras":[{)" + command.camera + "}]}");
  json& camera = options["cameras"][0];
  camera["state"] = "state.json";
  if (!cameraFault.empty()) {
    camera["faults"] = {cameraFault};
  }
  if (!command.boot.empty()) {
    options["bootLoader"] = json::parse("{" + command.boot + "}");
    if (!bootFault.empty()) {
      options["bootLoader"]["faults"] = {bootFault};
    }
  }
  return {"--simulator", "--simulator-options", options.dump()};
}

std::vector<std::string> With(std::vector<std::string> arguments,
                              const std::vector<std::string>& more) {
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

int RunOnce(const std::vector<std::string>& arguments) {
  std::vector<std::string> all = {"zemctl"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return zemctl::Program().Run(all);
}

Run RunTool(const SweptCommand& command, const std::vector<std::string>& arguments) {
  for (const std::string& path : OutputFiles()) {
    static_cast<void>(std::remove(path.c_str()));
  }
  if (!command.before.empty() &&
      RunOnce(With(Simulated(command), With(Split(command.before, ' '), {"--yes"}))) != 0) {
    return {zemctl::kInternalError};
  }
  Capture::Clear();
  const std::uint64_t start = VirtualTime::Milliseconds();
  Run run;
  run.code = RunOnce(arguments);
  run.milliseconds = VirtualTime::Milliseconds() - start;
  std::fflush(stdout);
  run.said = Contents("said.txt");
  for (const std::string& path : OutputFiles()) {
    if (zemctl::FileExists(path)) {
      run.left[path] = path == "state.json" ? KeptMemory(path) : Contents(path);
    }
  }
  return run;
}

// Line by line, but for lines that say themselves what is not known.
bool SaysTheSame(const std::string& said, const std::string& expected) {
  const std::vector<std::string> lines = Split(said, '\n');
  const std::vector<std::string> others = Split(expected, '\n');
  const auto isRight = [](const std::string& line, const std::string& other) {
    return line == other ||
           std::any_of(kHonestWords.begin(), kHonestWords.end(),
                       [&](const char* words) { return line.find(words) != std::string::npos; });
  };
  return std::equal(lines.begin(), lines.end(), others.begin(), others.end(), isRight);
}

class Sweep {
 public:
  explicit Sweep(std::FILE* console) : console_(console) {}

  void Take(const SweptCommand& command) {
    words_ = With(Split(command.line, ' '), {"--yes"});
    const Run healthy =
        RunTool(command, With(Simulated(command), With(words_, {"--trace", "run.jsonl"})));
    if (healthy.code != 0) {
      Complain(command, "without a failure", "ends with " + std::to_string(healthy.code));
      return;
    }
    const auto [transfers, commands] = CountTraced("run.jsonl");
    const std::size_t before = cases_;
    for (std::size_t at = 1; at <= transfers; ++at) {
      for (const char* const kind : {"fail@", "unplug@", "short@"}) {
        const std::string fault = Fault(kind, at);
        Compare(command, fault, healthy, RunTool(command, With(Simulated(command, fault), words_)));
      }
    }
    std::vector<std::string> kinds = {"fail@=5", "refuse@", "unplug@"};
    if (!command.mayBeShort) {
      kinds.emplace_back("short@=4");
    }
    if (command.verifies) {
      kinds.emplace_back("garbage@");
    }
    for (std::size_t at = 1; at <= commands; ++at) {
      for (const std::string& kind : kinds) {
        const std::string fault = Fault(kind, at);
        Compare(command, "SCSI " + fault, healthy,
                RunTool(command, With(Simulated(command, "", fault), words_)));
      }
    }
    std::fprintf(console_, "%5u cases  %s\n", static_cast<unsigned>(cases_ - before),
                 command.line.c_str());
    std::fflush(console_);
    Replay(command, healthy);
  }

  void RequireAll(const std::set<std::string>& taken) {
    zemctl::Program program;
    RequireAll(program, program.app(), taken);
  }

  int Finish() {
    std::fprintf(console_, "%u cases, %u replays, %u complaints\n", static_cast<unsigned>(cases_),
                 static_cast<unsigned>(replays_), static_cast<unsigned>(complaints_));
    return complaints_ == 0 && cases_ > 0 ? 0 : 1;
  }

 private:
  // "short@" and 7 make "short@7", "short@=3" makes "short@7=3".
  static std::string Fault(std::string kind, std::size_t at) {
    return kind.insert(kind.find('@') + 1, std::to_string(at));
  }

  // Transfers of the camera, and SCSI commands.
  static std::pair<std::size_t, std::size_t> CountTraced(const std::string& path) {
    std::pair<std::size_t, std::size_t> counts = {0, 0};
    for (const zemctl::TraceLine& line : zemctl::LoadTrace(path)) {
      const auto* const traced = std::get_if<zemctl::TracedTransfer>(&line.event);
      counts.first += traced != nullptr && traced->transfer.isAddressed ? 1 : 0;
      counts.second += std::holds_alternative<zemctl::TracedCommand>(line.event) ? 1 : 0;
    }
    return counts;
  }

  void Complain(const SweptCommand& command, const std::string& when, const std::string& what) {
    ++complaints_;
    std::fprintf(console_, "%s (%s%s), %s: %s\n%s", command.line.c_str(), command.camera.c_str(),
                 command.boot.c_str(), when.c_str(), what.c_str(), Contents("errors.txt").c_str());
  }

  void Compare(const SweptCommand& command, const std::string& fault, const Run& healthy,
               const Run& run) {
    ++cases_;
    const std::uint64_t longest =
        healthy.milliseconds + kLongestEnd + (command.boot.empty() ? 0 : kLongestAskedWait);
    if (fault.find("unplug") != std::string::npos && run.milliseconds > longest) {
      Complain(command, fault, "goes on for " + std::to_string(run.milliseconds) + " ms");
    }
    if (run.code != 0) {
      return;
    }
    if (!SaysTheSame(run.said, healthy.said)) {
      Complain(command, fault, "ends with 0 and says\n" + run.said);
    }
    for (const auto& [path, contents] : healthy.left) {
      const auto found = run.left.find(path);
      if (found == run.left.end() || found->second != contents) {
        Complain(command, fault, "ends with 0 and leaves another " + path);
      }
    }
  }

  // Nothing is simulated any more: the trace answers.
  void Replay(const SweptCommand& command, const Run& healthy) {
    ++replays_;
    const Run text = RunTool(command, With({"--replay", "run.jsonl"}, words_));
    if (text.code != 0 || text.said != healthy.said) {
      Complain(command, "replayed",
               "ends with " + std::to_string(text.code) + " and says\n" + text.said);
    }
    const std::vector<std::string> asJson = With(words_, {"--json"});
    const Run first =
        RunTool(command, With(Simulated(command), With(asJson, {"--trace", "json.jsonl"})));
    const Run again = RunTool(command, With({"--replay", "json.jsonl"}, asJson));
    if (first.code != 0 || again.code != 0 || again.said != first.said) {
      Complain(command, "replayed as JSON",
               "ends with " + std::to_string(again.code) + " and says\n" + again.said);
    }
  }

  // Each command below `app` that works on a camera must have been taken.
  void RequireAll(const zemctl::Program& program, const CLI::App& app,
                  const std::set<std::string>& taken) {
    const auto below = zemctl::CommandsBelow(app);
    for (const CLI::App* const command : below) {
      RequireAll(program, *command, taken);
    }
    const auto shared = program.SharedOptionsOf(app);
    const bool worksOnCameras =
        std::any_of(shared.begin(), shared.end(),
                    [](const CLI::Option* option) { return option->check_lname("simulator"); });
    if (below.empty() && worksOnCameras && !taken.contains(zemctl::NameOf(app))) {
      ++complaints_;
      std::fprintf(console_, "no case for zemctl %s\n", zemctl::NameOf(app).c_str());
    }
  }

  std::FILE* console_;
  std::vector<std::string> words_;
  std::size_t cases_ = 0;
  std::size_t replays_ = 0;
  std::size_t complaints_ = 0;
};

// "rom reg get" of "rom reg get 0x80001234".
std::string NameOfLine(const std::string& line) {
  zemctl::Program program;
  std::string name;
  const CLI::App* app = &program.app();
  for (const std::string& word : Split(line, ' ')) {
    const auto below = zemctl::CommandsBelow(*app);
    const auto found = std::find_if(below.begin(), below.end(),
                                    [&](const CLI::App* each) { return each->get_name() == word; });
    if (found == below.end()) {
      break;
    }
    app = *found;
  }
  return zemctl::NameOf(*app);
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2 || !zemctl::EnterFolder(arguments[1])) {
    std::fputs("usage: zemctl_sweep FOLDER [even|odd|BEGINNING]\n", stderr);
    return 2;
  }
  const std::string part = count > 2 ? arguments[2] : "";
  MakeInputFiles();
  const Capture capture;
  const VirtualTime time;
  Sweep sweep(capture.console());
  std::set<std::string> named;
  bool isOdd = true;
  for (const SweptCommand& command : SweptCommands()) {
    named.insert(NameOfLine(command.line));
    isOdd = !isOdd;
    if (part == "even" || part == "odd" ? isOdd == (part == "odd")
                                        : command.line.starts_with(part)) {
      sweep.Take(command);
    }
  }
  sweep.RequireAll(named);
  return sweep.Finish();
}
