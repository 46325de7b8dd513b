// A camera that answers every read of the vendor unit with bytes of its own: the list of H.264
// formats that comes of it, and a start of each format in it.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "encoding/h264_frame_list.h"
#include "encoding/h264_start.h"
#include "platform/bytes.h"
#include "platform/simulated/simulated_platform.h"
#include "tests/support/bare_camera.h"

namespace {

constexpr std::uint32_t kListRead = 11;

class FuzzedCamera : public zem::testing::BareCamera {
 public:
  FuzzedCamera(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

  // The list takes what is left of the data; the command's status and the Skype unit's version are
  // zeros.
  HRESULT Request(const KSP_NODE& request, void* data, ULONG length,
                  ULONG* bytesReturned) override {
    if (request.Property.Id != kListRead) {
      return S_OK;
    }
    const std::size_t count = std::min<std::size_t>(length, left_);
    auto* const bytes = static_cast<std::uint8_t*>(data);
    std::copy_n(data_, count, bytes);
    if (!std::exchange(isLengthTold_, true)) {
      TellLength(bytes, count);
    }
    data_ += count;
    left_ -= count;
    *bytesReturned = static_cast<ULONG>(count);
    return count > 0 ? S_OK : E_FAIL;
  }

 private:
  // The list is read as far as it says, 65,535 bytes in 2,048 pieces, whether there are any: that
  // is what an input costs. So it says a little more than there is at most, but for the one value.
  void TellLength(std::uint8_t* bytes, std::size_t count) const {
    constexpr std::uint16_t kLongest = 0xFFFF;
    constexpr std::size_t kMore = 64;
    if (count >= 2 && zem::LoadLe16(bytes) != kLongest) {
      zem::StoreLe16(bytes, static_cast<std::uint16_t>(
                                std::min<std::size_t>(zem::LoadLe16(bytes), left_ + kMore)));
    }
  }

  const std::uint8_t* data_;
  std::size_t left_;
  bool isLengthTold_ = false;
};

void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  zem::platform::simulated::TheSystem().recordDebuggerLines = false;
  FuzzedCamera camera(data, size);
  zem::DeviceHandle device = {nullptr, &camera};
  void* copy = nullptr;
  const HRESULT length = zem::GetH264FrameList(device, &copy);
  const auto* const list = static_cast<const H264FrameList*>(copy);
  Require(length >= 38 && list->wTotalLength == length);
  const auto formats = zem::RecordsOf(*list);
  Require(sizeof(H264FrameList) + formats.size_bytes() <= list->wTotalLength);
  // Of the formats with one index only the first is ever started, and an index is a byte.
  std::array<bool, 256> started = {};
  for (const H264FrameInfo& format : formats) {
    Require(format.wLength == 32 && format.wType != 0 && format.wFrameIndex < started.size());
    if (!std::exchange(started[format.wFrameIndex], true)) {
      static_cast<void>(zem::SetH264FrameIndex(device, format.wFrameIndex));
    }
  }
  zem::ReleaseH264FrameList(copy);
  return 0;
}
