#include "tools/zemctl/camera/answers.h"

namespace zemctl {

std::string NotRead(const CallFailure& failure) {
  return std::string("not read: ") + failure.what();
}

void Answers::AddTo(Report& row, const std::string& field, const std::function<Report()>& ask) {
  try {
    row[field] = ask();
  } catch (const CallFailure& failure) {
    if (failure.text().exitCode == kTransferFailed) {
      row[field] = NotRead(failure);
      exitCode_ = kTransferFailed;
    } else {
      row[field] = failure.what();
    }
  }
}

}  // namespace zemctl
