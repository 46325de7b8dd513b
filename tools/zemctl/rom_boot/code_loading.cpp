#include "tools/zemctl/rom_boot/code_loading.h"

#include <utility>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/files.h"

namespace zemctl {
namespace {

// A code image: what the boot loader takes, and an 18-byte header.
constexpr std::uint64_t kLongestCode = 0x7FFFFFFF + 18ULL;

}  // namespace

std::uint32_t CodeSizeOf(const std::string& path) {
  return ParseInputFile(path, kLongestCode, CodeSize);
}

// The library reports success also when nothing came back, or the same boot loader: a new search
// tells.
RomSession LoadUpdater(RomSession session, const std::string& path) {
  {
    const RomSession ended = std::move(session);
    CheckRom("ZEMROMAPI_LoadUpdater", ZEMROMAPI_LoadUpdater(ended.handle(), Widen(path).c_str()));
  }
  RomSelection storage;
  storage.kind = RomKind::kZemStorage;
  std::optional<RomSession> found = RomSession::Find(storage);
  if (!found) {
    throw ToolFailure(kNoCamera, "the updater was sent, but its storage did not show up",
                      "Check that the file is the updater of this camera; unplug the camera, plug "
                      "it in again and see what \"zemctl rom info\" says.");
  }
  return std::move(*found);
}

}  // namespace zemctl
