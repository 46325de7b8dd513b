// A report of several answers of a camera: one that could not be had says why, the others stand.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "tools/zemctl/frame/report.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {

class Answers {
 public:
  explicit Answers(Report& report) : report_(report) {}

  // Puts what `ask` brings into the field. Where it throws CallFailure, the field is unread.
  void Add(const std::string& field, const std::function<Report()>& ask) {
    AddTo(report_, field, ask);
  }
  // The same for a field of a row.
  void AddTo(Report& row, const std::string& field, const std::function<Report()>& ask);

  // Once all are there: returns kDone, or throws PartialFailure for the first that is unread.
  int Finish() const;

 private:
  Report& report_;
  std::optional<Failure> failure_;
};

}  // namespace zemctl
