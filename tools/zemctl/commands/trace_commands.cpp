// zemctl trace show, zemctl trace diff
#include <algorithm>
#include <memory>

#include "tools/zemctl/camera/trace_scope.h"
#include "tools/zemctl/camera/trace_words.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

struct TraceArguments {
  std::string file;
  std::string other;
  bool everything = false;
};

std::string DeviceOf(const TraceEvent& event) {
  std::string device;
  std::visit(
      [&](const auto& each) {
        if constexpr (requires { each.camera; }) {
          device = "camera " + std::to_string(each.camera);
        } else if constexpr (requires { each.drive; }) {
          device = each.drive;
        } else if constexpr (requires { each.command.drive; }) {
          device = each.command.drive;
        }
      },
      event);
  return device;
}

Report RowOf(std::size_t number, const TraceLine& line, TraceDecoder& decoder) {
  const TraceWords words = decoder.Decode(line.event);
  return {{"line", number},           {"ms", line.milliseconds},  {"device", DeviceOf(line.event)},
          {"action", words.action},   {"unit", words.unit},       {"selector", words.selector},
          {"control", words.control}, {"command", words.command}, {"place", words.place},
          {"value", words.value},     {"status", words.status},   {"bytes", words.bytes},
          {"result", words.result}};
}

int ShowTrace(const Options& /*options*/, const TraceArguments& arguments, Report& report) {
  const std::vector<TraceLine> lines = LoadTrace(arguments.file);
  const auto& run = std::get<TracedRun>(lines.front().event);
  std::string command = "zemctl";
  for (const std::string& argument : run.command) {
    command += " " + argument;
  }
  report["tool"] = run.tool;
  report["run"] = command;
  report["serial numbers"] = run.serialsLeftOut ? "left out" : "as they are";
  const auto* const end = std::get_if<TracedEnd>(&lines.back().event);
  // Otherwise the run was killed, or goes on.
  report["complete"] = end != nullptr;
  if (end != nullptr) {
    report["exit code"] = end->exitCode;
  }
  Report rows = Report::array();
  TraceDecoder decoder;
  for (std::size_t index = 1; index < lines.size(); ++index) {
    const TraceEvent& event = lines[index].event;
    const bool isQuestion =
        std::holds_alternative<TracedLookup>(event) || std::holds_alternative<TracedVolume>(event);
    if (arguments.everything || !isQuestion) {
      rows.push_back(RowOf(index + 1, lines[index], decoder));
    }
  }
  report["lines"] = rows;
  return kDone;
}

// What of a line counts when two traces are compared.
std::string WhatPassed(const TraceLine& line) { return FormatTraceLine({0, line.event}); }

// The lines of a trace that count when it is compared with another one: all but its first.
std::vector<std::size_t> Compared(const std::vector<TraceLine>& lines) {
  std::vector<std::size_t> compared;
  for (std::size_t index = 1; index < lines.size(); ++index) {
    compared.push_back(index);
  }
  return compared;
}

Report LineOf(const std::vector<TraceLine>& lines, const std::vector<std::size_t>& compared,
              std::size_t at) {
  if (at >= compared.size()) {
    return "the end of the trace";
  }
  const std::size_t index = compared[at];
  return "line " + std::to_string(index + 1) + ": " + FormatTraceLine(lines[index]);
}

int CompareTraces(const Options& /*options*/, const TraceArguments& arguments, Report& report) {
  const std::vector<TraceLine> left = LoadTrace(arguments.file);
  const std::vector<TraceLine> right = LoadTrace(arguments.other);
  const std::vector<std::size_t> leftCompared = Compared(left);
  const std::vector<std::size_t> rightCompared = Compared(right);
  const std::size_t most = std::max(leftCompared.size(), rightCompared.size());
  std::size_t differences = 0;
  for (std::size_t at = 0; at < most; ++at) {
    if (at < leftCompared.size() && at < rightCompared.size() &&
        WhatPassed(left[leftCompared[at]]) == WhatPassed(right[rightCompared[at]])) {
      continue;
    }
    if (differences++ == 0) {
      report["first on the left"] = LineOf(left, leftCompared, at);
      report["first on the right"] = LineOf(right, rightCompared, at);
    }
  }
  report["lines compared"] = most;
  report["lines that differ"] = differences;
  if (differences > 0) {
    throw PartialFailure(
        ToolFailure(kNotVerified, "the traces differ", "\"zemctl trace show\" decodes each.")
            .failure());
  }
  return kDone;
}

}  // namespace

void AddTraceCommands(Program& program) {
  const auto arguments = std::make_shared<TraceArguments>();
  CLI::App* const trace =
      program.app().add_subcommand("trace", "Read what --trace has written")->require_subcommand(1);
  trace->fallthrough();
  const auto add = [&](const char* name, const char* description, auto function) {
    CLI::App* const command = program.AddCommand(
        trace, name, description,
        [arguments, function](const Options& options, Report& report) {
          return function(options, *arguments, report);
        },
        kWithoutCamera);
    command->add_option("file", arguments->file, "The trace")->required();
    return command;
  };
  add("show", "Decode a trace into names", ShowTrace)
      ->add_flag("--all", arguments->everything,
                 "Also the questions by which units and volumes are looked up");
  add("diff", "Compare two traces, whatever their times", CompareTraces)
      ->add_option("other", arguments->other, "The other trace")
      ->required();
}

}  // namespace zemctl
