#include "tools/zemctl/camera/answers.h"

namespace zemctl {

void Answers::AddTo(Report& row, const std::string& field, const std::function<Report()>& ask) {
  try {
    row[field] = ask();
  } catch (const CallFailure& failure) {
    row[field] = Unread(failure.what());
    if (!failure_) {
      failure_ = failure.failure();
    }
  }
}

int Answers::Finish() const {
  if (failure_) {
    throw PartialFailure(*failure_);
  }
  return kDone;
}

}  // namespace zemctl
