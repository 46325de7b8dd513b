// The camera that a command works on.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/com_ptr.h"
#include "tools/zemctl/camera/system_devices.h"
#include "tools/zemctl/camera/transfer_record.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {

// A camera that is written to must be the one that is meant: the selection has to leave no doubt.
enum class Use { kReading, kWriting };

// COM on this thread, for as long as it lives.
class ComThread {
 public:
  ComThread();
  ~ComThread();
  ComThread(const ComThread&) = delete;
  ComThread& operator=(const ComThread&) = delete;
};

// What a call of the library came to, and the first of its transfers that failed and should not
// have.
struct CallOutcome {
  ZemResult result = ZEM_OK;
  std::optional<Transfer> loss;
  // The name of the extension unit that was asked for and that the camera lacks.
  std::optional<std::string> absentUnit = std::nullopt;
};

// An opened camera, closed when it goes out of scope. The tool calls the library through it, so
// that it sees each transfer of each call.
class Session {
 public:
  // Throws CallFailure when the camera cannot be opened, ToolFailure (kNoCamera) when it is to be
  // written to and more than one fits.
  Session(const DeviceSelection& selection, Use use);
  explicit Session(zem::ComPtr<IBaseFilter> camera) : Session({{}, std::move(camera)}) {}
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // What the library is called with: the handle, or the device object where it takes that.
  using Function = std::function<ZemResult(void* device)>;
  // What a result means where the call knows better than Describe; nothing otherwise.
  using Words = std::function<std::optional<ResultText>(ZemResult result)>;

  // Calls the library. Throws as RefuseStopped, and CallFailure when the result is negative, or one
  // that `words` knows, and when a transfer was lost although the call reports something else.
  ZemResult Call(const char* function, const Function& call, const Words& words = nullptr) const;
  ZemResult CallOnObject(const char* function, const Function& call,
                         const Words& words = nullptr) const;

  // As Call, for those that judge the outcome by themselves.
  CallOutcome Observe(const char* function, const Function& call) const;

  // For exports that take no device but look for the default camera: they find this one.
  CallOutcome ObserveAsDefault(const char* function, const Function& call) const;

  // As the system lists it.
  const SystemDevice& device() const { return device_; }

  const TransferRecord& record() const { return *record_; }
  void SetObserver(std::function<void(const Transfer&)> observer) const {
    record_->SetObserver(std::move(observer));
  }

  // Throws ToolFailure (kInterrupted) when something was not sent because the person at the
  // terminal wants an end.
  void RefuseStopped() const;

 private:
  explicit Session(FoundCamera camera);

  CallOutcome Observe(const char* function, const Function& call, void* device) const;
  // Whether the library may go on waiting for the camera.
  bool MayWait() const;
  // Whether it is for the lack of its unit that this transfer failed, or else the last one that
  // did.
  std::optional<std::string> FindAbsentUnit(const std::optional<Transfer>& loss) const;

  SystemDevice device_;

  std::shared_ptr<TransferRecord> record_;
  zem::ComPtr<IBaseFilter> object_;
  void* handle_ = nullptr;
};

// That nothing fits the selection, told by the library's export that finds a camera in the same
// way.
CallFailure NoCameraMatches(const DeviceSelection& selection);

// The failure of a call that lost a transfer.
ResultText DescribeLoss(const CallOutcome& outcome);

}  // namespace zemctl
