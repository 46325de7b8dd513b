#include "simulator/table_image.h"

#include <numeric>
#include <stdexcept>

#include "platform/bytes.h"
#include "simulator/vendor_unit.h"

namespace zem::simulator {
namespace {

std::vector<std::uint8_t> Counting(std::uint8_t first, std::size_t count) {
  std::vector<std::uint8_t> bytes(count);
  std::iota(bytes.begin(), bytes.end(), first);
  return bytes;
}

}  // namespace

std::vector<std::uint8_t> MakeTableImage(const std::vector<Table>& tables) {
  constexpr std::size_t kHeaderSize = 4;
  std::vector<std::uint8_t> image(kHeaderSize);
  for (const Table& table : tables) {
    const std::size_t offset = image.size();
    image.resize(offset + kHeaderSize);
    image[offset + 1] = table.id;
    image.insert(image.end(), table.data.begin(), table.data.end());
    if (image.size() > kNvmemSize) {
      throw std::invalid_argument("the tables do not fit the camera's memory");
    }
    StoreLe16(&image[offset + 2], static_cast<std::uint16_t>(image.size() - offset));
  }
  image[0] = 0xEE;
  StoreLe16(&image[2], static_cast<std::uint16_t>(image.size()));
  return image;
}

std::vector<std::uint8_t> FactoryTableImage() {
  return MakeTableImage({{0x01, Counting(1, 8)}, {0x02, {}}, {0x20, Counting(0, 64)}});
}

}  // namespace zem::simulator
