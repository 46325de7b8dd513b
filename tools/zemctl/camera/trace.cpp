#include "tools/zemctl/camera/trace.h"

#include <utility>

#include "tools/zemctl/camera/waiting.h"
#include "tools/zemctl/frame/bytes.h"

namespace zemctl {
namespace {

class Tracer : public CameraWatcher {
 public:
  explicit Tracer(std::uint32_t camera) : camera_(camera) {}

  void Add(Transfer transfer) override {
    if (const auto trace = ThreadTrace()) {
      trace->Write(TracedTransfer{camera_, std::move(transfer)});
    }
  }
  void Add(const Lookup& lookup) override {
    if (const auto trace = ThreadTrace()) {
      trace->WriteLookup(camera_, lookup);
    }
  }

 private:
  std::uint32_t camera_;
};

std::string TextOf(const TraceEvent& event) { return FormatTraceLine({0, event}); }

}  // namespace

Trace::Trace(OpenedFile file, TracedRun run) : file_(std::move(file)), start_(SteadyClock()) {
  // A line is written at once, so that a program that is killed leaves whole lines.
  constexpr std::size_t kLongerThanALine = 1U << 20;
  static_cast<void>(std::setvbuf(file_.get(), nullptr, _IOFBF, kLongerThanALine));
  if (run.serialsLeftOut) {
    serials_ = std::make_unique<SerialFilter>();
  }
  Write(std::move(run));
}

void Trace::Write(TraceEvent event) {
  if (serials_) {
    serials_->TakeOut(event);
  }
  milliseconds_ = SteadyClock() - start_;
  const std::string line = FormatTraceLine({milliseconds_, std::move(event)}) + "\n";
  isWhole_ = std::fwrite(line.data(), 1, line.size(), file_.get()) == line.size() &&
             std::fflush(file_.get()) == 0 && isWhole_;
}

bool Trace::IsNew(Answers& answers, const std::string& answer, std::uint64_t& number) {
  number = ++answers.count;
  if (answers.last == answer) {
    return false;
  }
  answers.last = answer;
  return true;
}

void Trace::WriteDevices(TracedDevices devices) {
  if (IsNew(devices_[devices.isAudio], TextOf(devices), devices.number)) {
    Write(std::move(devices));
  }
}

void Trace::WriteLookup(std::uint32_t camera, const Lookup& lookup) {
  // The type of a node is an answer, the other ids belong to the question.
  const bool isAnswer = lookup.what == Lookup::What::kNodeType;
  const Question question = {camera, lookup.what, lookup.node,
                             isAnswer ? std::string() : GuidText(lookup.id), lookup.length};
  TracedLookup traced{camera, 0, lookup};
  if (IsNew(lookups_[question], TextOf(traced), traced.number)) {
    Write(std::move(traced));
  }
}

void Trace::WriteVolume(TracedVolume volume) {
  if (IsNew(volumes_[volume.drive], TextOf(volume), volume.number)) {
    Write(std::move(volume));
  }
}

std::uint32_t Trace::CameraOf(const std::string& path) {
  return cameras_.try_emplace(path, static_cast<std::uint32_t>(cameras_.size())).first->second;
}

std::shared_ptr<Trace>& ThreadTrace() {
  thread_local std::shared_ptr<Trace> trace;
  return trace;
}

std::shared_ptr<CameraWatcher> MakeTracer(std::uint32_t camera) {
  return std::make_shared<Tracer>(camera);
}

}  // namespace zemctl
