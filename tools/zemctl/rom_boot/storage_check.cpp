#include "tools/zemctl/rom_boot/storage_check.h"

#include <algorithm>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {

std::uint64_t CompareStorage(const RomSession& session, const BurnPlan& plan, Progress& progress) {
  const std::vector<Expectation> expectations = ExpectationsOf(plan);
  std::uint64_t total = 0;
  for (const Expectation& expectation : expectations) {
    total += expectation.bytes.size();
  }
  std::uint64_t read = 0;
  std::uint64_t compared = 0;
  std::uint64_t different = 0;
  std::string first;
  Bytes piece;
  for (const Expectation& expectation : expectations) {
    for (std::size_t offset = 0; offset < expectation.bytes.size(); offset += kPieceSize) {
      piece.resize(std::min<std::size_t>(kPieceSize, expectation.bytes.size() - offset));
      session.Read(expectation.address + static_cast<std::uint32_t>(offset), piece);
      for (std::size_t index = 0; index < piece.size(); ++index) {
        const unsigned char wanted = expectation.bytes[offset + index];
        if (!expectation.defined[offset + index]) {
          continue;
        }
        ++compared;
        if (piece[index] != wanted && ++different == 1) {
          first = HexNumber(expectation.address + offset + index, 8) + " holds " +
                  HexNumber(piece[index], 2) + " instead of " + HexNumber(wanted, 2);
        }
      }
      read += piece.size();
      progress.UpdateBytes(read, total);
    }
  }
  if (different > 0) {
    throw ToolFailure(kNotVerified,
                      std::to_string(different) + " of " + std::to_string(compared) +
                          " bytes of the storage are not those of the file; " + first,
                      "Do not reset the camera.");
  }
  return compared;
}

}  // namespace zemctl
