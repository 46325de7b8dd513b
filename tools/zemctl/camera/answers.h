// A report of several answers of a camera: one that could not be had says why, the others stand.
#pragma once

#include <functional>
#include <string>

#include "tools/zemctl/frame/report.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {

// "not read: WHY"
std::string NotRead(const CallFailure& failure);

class Answers {
 public:
  explicit Answers(Report& report) : report_(report) {}

  // Puts what `ask` brings into the field. Where it throws CallFailure, the field says what it was:
  // that it could not be read, or that the camera refused to tell.
  void Add(const std::string& field, const std::function<Report()>& ask) {
    AddTo(report_, field, ask);
  }
  // The same for a field of a row.
  void AddTo(Report& row, const std::string& field, const std::function<Report()>& ask);

  // kTransferFailed when something could not be read.
  ExitCode exitCode() const { return exitCode_; }

 private:
  Report& report_;
  ExitCode exitCode_ = kDone;
};

}  // namespace zemctl
