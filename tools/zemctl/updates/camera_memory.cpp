#include "tools/zemctl/updates/camera_memory.h"

#include <algorithm>

#include "include/ZemUVCExtApi.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

// Whole chunks of both speeds, and announced whole in 16 bits.
constexpr std::uint32_t kPiece = 0x8000;

// Progress of one piece as a share of the whole read.
struct PieceProgress {
  Progress& progress;
  std::uint64_t done;   // bytes of the pieces before
  std::uint64_t piece;  // bytes of this one
  std::uint64_t size;

  static void OnValue(std::uint32_t percent, std::uint64_t user) {
    const auto& self = *reinterpret_cast<const PieceProgress*>(user);
    self.progress.Update(
        static_cast<std::uint32_t>((self.done * 100 + self.piece * percent) / self.size));
  }
};

}  // namespace

std::vector<unsigned char> ReadFlash(const Session& session, std::uint32_t address,
                                     std::uint32_t size, Progress& progress) {
  std::vector<unsigned char> bytes(size);
  for (std::uint32_t done = 0; done < size;) {
    const std::uint32_t piece = std::min(kPiece, size - done);
    const PieceProgress share = {progress, done, piece, size};
    std::uint32_t read = 0;
    session.Call("ZEMAPI_ReadPartialFlashData", [&](void* device) {
      return ZEMAPI_ReadPartialFlashData(device, address + done, piece, &bytes[done], &read,
                                         PieceProgress::OnValue,
                                         reinterpret_cast<std::uint64_t>(&share));
    });
    done += piece;
  }
  return bytes;
}

std::optional<std::size_t> FirstDifference(std::span<const unsigned char> left,
                                           std::span<const unsigned char> right) {
  const auto [differing, other] =
      std::mismatch(left.begin(), left.end(), right.begin(), right.end());
  if (differing == left.end() && other == right.end()) {
    return std::nullopt;
  }
  return static_cast<std::size_t>(differing - left.begin());
}

}  // namespace zemctl
