// What the library's result codes mean to the person at the terminal.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "include/ZemUVCExtApi.h"
#include "tools/zemctl/frame/exit_codes.h"

namespace zemctl {

struct ResultText {
  std::string name;     // such as ZEM_E_DEVICE_REFUSED
  std::string meaning;  // one clause
  std::string advice;   // what to do next
  ExitCode exitCode;
  std::string cameraState =
      {};  // what state the camera is in, one clause; empty where none is told
};

ResultText Describe(ZemResult result);

// "0x80000001"
std::string Hex(ZemResult result);

// Why a command did not do what it was asked for, in the parts in which it is told.
struct Failure {
  ExitCode code = kInternalError;
  std::string message;      // one clause
  std::string next;         // what to do next
  std::string cameraState;  // as of ResultText
  std::string function;     // what the library was asked; empty when it was not that
  std::string result;       // what it said: "0x80000001",
  std::string resultName;   // by its name
};

// A call of the library that failed, on its way to the terminal.
class CallFailure : public std::runtime_error {
 public:
  // Takes the text for `result`, or the given one where the call knows better.
  CallFailure(const std::string& function, ZemResult result)
      : CallFailure(function, result, Describe(result)) {}
  CallFailure(const std::string& function, ZemResult result, ResultText text);

  const std::string& function() const { return function_; }
  ZemResult result() const { return result_; }
  const ResultText& text() const { return text_; }
  Failure failure() const;

 private:
  std::string function_;
  ZemResult result_;
  ResultText text_;
};

// Throws CallFailure for a failure.
void Check(const char* function, ZemResult result);

// What went wrong outside the library: a file that is not what it should be, a comparison that
// failed, a question answered with no.
class ToolFailure : public std::runtime_error {
 public:
  ToolFailure(ExitCode exitCode, const std::string& message, const std::string& advice,
              const std::string& cameraState = "")
      : std::runtime_error(message), failure_{exitCode, message, advice, cameraState, "", "", ""} {}

  ExitCode exitCode() const { return failure_.code; }
  const std::string& advice() const { return failure_.next; }
  const Failure& failure() const { return failure_; }

 private:
  Failure failure_;
};

// The end that the person at the terminal asked for.
ToolFailure Stopped(const std::string& cameraState,
                    const std::string& next = "run this command once more.");

// A failure beside which the report stands: what could be had is shown, and what failed.
class PartialFailure : public std::runtime_error {
 public:
  explicit PartialFailure(const Failure& failure)
      : std::runtime_error(failure.message), failure_(failure) {}

  const Failure& failure() const { return failure_; }

 private:
  Failure failure_;
};

// Arguments that are wrong in a way that only the command can see.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace zemctl
