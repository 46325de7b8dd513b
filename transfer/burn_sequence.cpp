#include "transfer/burn_sequence.h"

#include "platform/platform.h"
#include "platform/result.h"

namespace zem {
namespace {

constexpr std::uint32_t kPollMilliseconds = 30;
constexpr std::uint32_t kGraceMilliseconds = 100;
constexpr std::uint32_t kLongestBurnMilliseconds = 10 * 60 * 1000;

// A read that fails says nothing of the burn and counts as busy, never as done.
constexpr std::uint8_t kUnknownState = 0xFF;

std::uint8_t DeviceState(IBaseFilter* filter) {
  TransferStatus status = {};
  return SUCCEEDED(ReadTransferStatus(status, filter)) ? status[0] : kUnknownState;
}

HRESULT AwaitEnd(IBaseFilter* /*filter*/, NoWait /*end*/, Progress /*progress*/) { return S_OK; }

HRESULT AwaitEnd(IBaseFilter* filter, PollUntilDone end, Progress /*progress*/) {
  const std::uint32_t start = platform::MillisecondClock();
  for (bool isFirst = true;; isFirst = false) {
    platform::DrainMessageQueue();
    platform::Sleep(kPollMilliseconds);
    const std::uint8_t state = DeviceState(filter);
    if (state == transfer_state::kFailed) {
      platform::DebuggerOutput(end.errorLine);
      return kDeviceRefused;
    }
    if (state == transfer_state::kIdle) {
      for (unsigned tenth = 0; isFirst && tenth < end.graceTenths; ++tenth) {
        platform::Sleep(kGraceMilliseconds);
        platform::DrainMessageQueue();
      }
      return S_OK;
    }
    if (platform::MillisecondClock() - start >= kLongestBurnMilliseconds) {
      platform::DebuggerOutput(L"[ERR] Burning does not end.\r\n");
      return kDeviceRefused;
    }
  }
}

HRESULT AwaitEnd(IBaseFilter* filter, WaitAndLook end, Progress progress) {
  for (std::uint32_t left = end.pauses; left > 0; --left) {
    if (end.countsDown) {
      progress.Report(left);
    }
    platform::Sleep(end.pauseMilliseconds);
  }
  return DeviceState(filter) == transfer_state::kIdle ? S_OK : kDeviceRefused;
}

}  // namespace

HRESULT Burn(IBaseFilter* filter, const BurnProcedure& procedure, Image image, Progress progress) {
  if (image.Missing()) {
    return kRefused;
  }
  if (const HRESULT announced = StandardCommand(kVcpChannel, procedure.announce, filter);
      FAILED(announced)) {
    return announced;
  }
  const HRESULT sent = procedure.sendImage(filter, image, progress);
  if (FAILED(sent) && procedure.stopsWhenSendFails) {
    return kNoDevice;
  }
  if (FAILED(WriteTransferControl(procedure.order, filter))) {
    return kNoDevice;
  }
  return std::visit([filter, progress](const auto& end) { return AwaitEnd(filter, end, progress); },
                    procedure.end);
}

}  // namespace zem
