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
};

ResultText Describe(ZemResult result);

// "0x80000001"
std::string Hex(ZemResult result);

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
  ToolFailure(ExitCode exitCode, const std::string& message, std::string advice)
      : std::runtime_error(message), exitCode_(exitCode), advice_(std::move(advice)) {}

  ExitCode exitCode() const { return exitCode_; }
  const std::string& advice() const { return advice_; }

 private:
  ExitCode exitCode_;
  std::string advice_;
};

// Arguments that are wrong in a way that only the command can see.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace zemctl
