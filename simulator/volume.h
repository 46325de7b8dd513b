// A boot loader met as a volume: what the system answers when a host opens it, sends it SCSI
// pass-through requests and closes it. The calls are those of Windows, whose system errors they
// return; the request blocks are the same bytes on every 64-bit system.
//
// One thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <span>
#include <string_view>

#include "simulator/boot_loader.h"

namespace zem::simulator {

// Control codes that a volume takes.
inline constexpr std::uint32_t kScsiPassThrough = 0x4D004;
inline constexpr std::uint32_t kScsiPassThroughDirect = 0x4D014;

// System errors that a volume shows.
inline constexpr std::uint32_t kNoSuchFile = 2;
inline constexpr std::uint32_t kNoSuchHandle = 6;
inline constexpr std::uint32_t kGeneralFailure = 31;
inline constexpr std::uint32_t kNoSuchFunction = 1;
inline constexpr std::uint32_t kInvalidParameter = 87;
inline constexpr std::uint32_t kTimedOut = 121;
inline constexpr std::uint32_t kDeviceError = 1117;
inline constexpr std::uint32_t kNotConnected = 1167;

// The system error that a host gets for what a boot loader answered; 0 when it has answered, were
// it with the SCSI status of a refusal.
std::uint32_t SystemErrorOf(const ScsiResult& result);

class Volume {
 public:
  explicit Volume(std::shared_ptr<BootLoader> bootLoader) : bootLoader_(std::move(bootLoader)) {}

  // Whether a path is this volume's, such as \\.\F: (in either case).
  bool IsNamed(std::wstring_view path) const;

  // A handle; null and `error` while the volume is not there.
  void* Open(std::uint32_t& error);

  // Whether a handle is one that Open returned and Close has not seen yet.
  bool Owns(const void* handle) const { return handles_.contains(handle); }
  std::size_t openHandles() const { return handles_.size(); }

  // One control request; `returned` becomes the number of bytes in `output`. The system error, or
  // 0.
  std::uint32_t Control(const void* handle, std::uint32_t code, std::span<const std::uint8_t> input,
                        std::span<std::uint8_t> output, std::uint32_t& returned);

  void Close(const void* handle);

 private:
  std::uint32_t PassThrough(std::span<const std::uint8_t> input, std::span<std::uint8_t> output);
  std::uint32_t PassThroughDirect(std::span<const std::uint8_t> input,
                                  std::span<std::uint8_t> output);

  std::shared_ptr<BootLoader> bootLoader_;
  // A handle is the address of the number of its connection.
  struct Handle {
    std::uint32_t connection;
  };
  struct ByAddress {
    using is_transparent = void;
    static const void* Of(const std::unique_ptr<Handle>& handle) { return handle.get(); }
    static const void* Of(const void* handle) { return handle; }
    template <class Left, class Right>
    bool operator()(const Left& left, const Right& right) const {
      return std::less<const void*>()(Of(left), Of(right));
    }
  };
  std::set<std::unique_ptr<Handle>, ByAddress> handles_;
};

}  // namespace zem::simulator
