#include "tools/zemctl/frame/outcome.h"

#include <cstdio>

namespace zemctl {
namespace {

// Of the documents' shape: a script looks here first. Grows when a key goes or changes its meaning.
constexpr int kSchema = 1;

Report OrNull(const std::string& text) { return text.empty() ? Report() : Report(text); }

Report Document(const Options& options, const Report& report) {
  Report document = {{"schema", kSchema}, {"command", OrNull(options.command)}};
  document.update(report);
  return document;
}

Report ErrorOf(const Failure& failure) {
  return {{"code", failure.code},
          {"function", OrNull(failure.function)},
          {"result", OrNull(failure.result)},
          {"message", failure.message},
          {"camera state", OrNull(failure.cameraState)},
          {"next", OrNull(failure.next)}};
}

void PrintFailureText(const Failure& failure) {
  std::string text = "zemctl: ";
  if (!failure.function.empty()) {
    text += failure.function + ": ";
  }
  text += failure.message;
  if (!failure.result.empty()) {
    text += " (" + failure.resultName + ", " + failure.result + ")";
  }
  text += ".\n";
  if (!failure.cameraState.empty()) {
    text += "  Camera: " + failure.cameraState + ". Next: " + failure.next + "\n";
  } else if (!failure.next.empty()) {
    text += "  " + failure.next + "\n";
  }
  std::fputs(text.c_str(), stderr);
}

}  // namespace

Failure WrongCommandLine(const std::string& message, const std::string& command) {
  return {
      kUsageError, message, "Run \"zemctl " + command + (command.empty() ? "" : " ") + "--help\".",
      "",          "",      "",
      ""};
}

Ending EndingOf(const std::string& command, const std::function<Ending()>& run) {
  try {
    return run();
  } catch (const PartialFailure& partial) {
    return {partial.failure(), true};
  } catch (const CallFailure& failure) {
    return {failure.failure(), false};
  } catch (const ToolFailure& failure) {
    return {failure.failure(), false};
  } catch (const UsageError& error) {
    return {WrongCommandLine(error.what(), command), false};
  } catch (const std::exception& error) {
    return {Failure{kInternalError, error.what(), "", "", "", "", ""}, false};
  }
}

void ShowReport(const Options& options, const Report& report) {
  if (options.json) {
    PrintJson(stdout, Document(options, report));
  } else {
    PrintText(stdout, report);
  }
}

void ShowFailure(const Options& options, const Report& report, const Failure& failure) {
  if (options.json) {
    Report document = Document(options, report);
    document["error"] = ErrorOf(failure);
    PrintJson(stdout, document);
    return;
  }
  PrintText(stdout, report);
  // What was had comes first also where both go to one place.
  std::fflush(stdout);
  PrintFailureText(failure);
}

void ShowFailure(const Options& options, const Failure& failure) {
  ShowFailure(options, Report::object(), failure);
}

}  // namespace zemctl
