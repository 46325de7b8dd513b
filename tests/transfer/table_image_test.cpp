// Images that no table store would write: every operation that searches one ends, stays inside its
// buffers and says the same.
#include <algorithm>
#include <string>

#include "tests/transfer/table_fixture.h"

namespace {

using zem::testing::Bytes;
using zem::testing::kImageSize;
using zem::testing::kUntouched;
using zem::testing::kWholeImageTransfers;
using zem::testing::TableTest;

// What the search for table 5 comes to. An entry that is too long makes the image corrupt to
// ZEMAPI_ReadTableEx; to all others the table is absent.
enum class Search { kFound, kAbsent, kTooLong, kCorrupt };

struct Case {
  std::string name;
  std::uint16_t total;
  // Entries: id, length, offset of the next one (its own length unless told).
  struct Entry {
    std::size_t offset;
    std::uint8_t id;
    std::uint16_t length;
  };
  std::vector<Entry> entries;
  Search search;
};

const std::vector<Case> kScenes = {
    {"no image at all", 0, {}, Search::kAbsent},
    {"total 3", 3, {{4, 5, 8}}, Search::kAbsent},
    {"total 4", 4, {{4, 5, 8}}, Search::kAbsent},
    {"total 5 lets one entry in", 5, {{4, 5, 8}}, Search::kFound},
    {"entry that begins where the image ends", 12, {{4, 1, 8}, {12, 5, 8}}, Search::kAbsent},
    {"entry that begins before the image ends", 13, {{4, 1, 8}, {12, 5, 8}}, Search::kFound},
    {"wanted entry of length 0", 100, {{4, 5, 0}}, Search::kCorrupt},
    {"wanted entry of length 1", 100, {{4, 5, 1}}, Search::kCorrupt},
    {"wanted entry of length 2", 100, {{4, 5, 2}}, Search::kCorrupt},
    {"wanted entry of length 3", 100, {{4, 5, 3}}, Search::kCorrupt},
    {"wanted entry of length 4", 100, {{4, 5, 4}}, Search::kFound},
    {"entry of length 0 on the way", 100, {{4, 1, 0}, {8, 5, 8}}, Search::kCorrupt},
    {"entry of length 1 on the way", 100, {{4, 1, 1}, {8, 5, 8}}, Search::kCorrupt},
    {"entry of length 2 on the way", 100, {{4, 1, 2}, {8, 5, 8}}, Search::kCorrupt},
    {"entry of length 3 on the way", 100, {{4, 1, 3}, {8, 5, 8}}, Search::kCorrupt},
    {"corrupt entry behind the wanted one", 100, {{4, 5, 8}, {12, 1, 0}}, Search::kFound},
    {"second entry of the same id", 100, {{4, 5, 8}, {12, 5, 0}}, Search::kFound},
    {"longest entry", 8192, {{4, 5, 8188}}, Search::kFound},
    {"one byte past the buffer", 8192, {{4, 5, 8189}}, Search::kCorrupt},
    {"length 8192", 8192, {{4, 5, 8192}}, Search::kCorrupt},
    {"length 8193", 8192, {{4, 5, 8193}}, Search::kCorrupt},
    {"length 65535", 8192, {{4, 5, 65535}}, Search::kCorrupt},
    {"entry that leads to the total", 12, {{4, 1, 8}}, Search::kAbsent},
    {"entry that leads past the total", 11, {{4, 1, 8}}, Search::kAbsent},
    {"one byte past the buffer on the way", 8192, {{4, 1, 8189}}, Search::kAbsent},
    {"length 8192 on the way", 8192, {{4, 1, 8192}}, Search::kAbsent},
    {"length 8193 on the way", 8192, {{4, 1, 8193}}, Search::kTooLong},
    {"length 8193 on the way in a longer image", 65535, {{4, 1, 8193}}, Search::kCorrupt},
    {"length 65535 on the way", 8192, {{4, 1, 65535}}, Search::kTooLong},
    {"length 65535 second on the way", 100, {{4, 1, 8}, {12, 2, 65535}}, Search::kTooLong},
    {"length 8192 leads outside before the total", 8197, {{4, 1, 8192}}, Search::kCorrupt},
    {"length 8192 leads to a total outside", 8196, {{4, 1, 8192}}, Search::kAbsent},
    {"length 65530 leads outside before the total", 65535, {{4, 1, 65530}}, Search::kCorrupt},
    {"length 65531 leads to the highest total", 65535, {{4, 1, 65531}}, Search::kTooLong},
    {"next entry at 65536", 65535, {{4, 1, 65532}}, Search::kTooLong},
    {"next entry at 65536 + 3", 65535, {{4, 1, 65535}}, Search::kTooLong},
    {"last entry ends with the buffer", 8192, {{4, 1, 8184}, {8188, 5, 4}}, Search::kFound},
    {"last entry ends past the buffer", 8192, {{4, 1, 8184}, {8188, 5, 5}}, Search::kCorrupt},
    {"header past the buffer", 8192, {{4, 1, 8185}}, Search::kCorrupt},
    {"header past the buffer but for a byte", 8192, {{4, 1, 8187}}, Search::kCorrupt},
    {"search that reaches the end of buffer and image", 8192, {{4, 1, 8188}}, Search::kAbsent},
    {"search that reaches the end of the buffer", 8193, {{4, 1, 8188}}, Search::kCorrupt},
    {"erased memory", 0xFFFF, {}, Search::kTooLong},
};

Bytes MakeImage(const Case& scene) {
  Bytes image(kImageSize, 0xFF);
  image[2] = static_cast<std::uint8_t>(scene.total & 0xFF);
  image[3] = static_cast<std::uint8_t>(scene.total >> 8);
  for (const Case::Entry& entry : scene.entries) {
    const std::uint8_t header[] = {0x70, entry.id, static_cast<std::uint8_t>(entry.length & 0xFF),
                                   static_cast<std::uint8_t>(entry.length >> 8)};
    std::copy(std::begin(header), std::end(header),
              image.begin() + static_cast<std::ptrdiff_t>(entry.offset));
  }
  return image;
}

// Length of the table that the search finds.
std::uint32_t WantedSize(const Case& scene) {
  for (const Case::Entry& entry : scene.entries) {
    if (entry.id == 5) {
      return entry.length - 4U;
    }
  }
  return kUntouched;
}

class TableImageTest : public TableTest {
 protected:
  // Of a call that reads a table from the device, and of the two that write one.
  static ZemResult ReadResult(const Case& scene) {
    return scene.search == Search::kCorrupt ? ZEM_E_FAIL : 0;
  }
  static ZemResult WriteResult(const Case& scene) {
    return scene.search == Search::kFound     ? 0
           : scene.search == Search::kCorrupt ? ZEM_E_FAIL
                                              : ZEM_E_REFUSED;
  }

  std::uint32_t size = kUntouched;
  // Never larger than the largest table, and watched by the sanitizer.
  Bytes buffer = Bytes(kImageSize - 8, 0x55);
};

TEST_F(TableImageTest, Size) {
  for (const Case& scene : kScenes) {
    SCOPED_TRACE(scene.name);
    std::uint16_t small = 0xBEEF;
    const bool found = scene.search == Search::kFound;
    EXPECT_EQ(ZEMAPI_GetTableSize(nullptr, Image(MakeImage(scene)), 5, &small),
              found ? 0 : ZEM_E_REFUSED);
    EXPECT_EQ(small, found ? WantedSize(scene) : 0);
  }
}

TEST_F(TableImageTest, ReadFromAHandle) {
  for (const Case& scene : kScenes) {
    SCOPED_TRACE(scene.name);
    size = kUntouched;
    const Bytes before = buffer;
    EXPECT_EQ(ZEMAPI_ReadTableEx(nullptr, Image(MakeImage(scene)), 5, buffer.data(), 0, &size),
              scene.search == Search::kTooLong ? ZEM_E_FAIL : ReadResult(scene));
    EXPECT_EQ(size, scene.search == Search::kFound ? WantedSize(scene) : kUntouched);
    if (scene.search != Search::kFound) {
      EXPECT_EQ(buffer, before) << "untouched";
    }
  }
}

TEST_F(TableImageTest, WriteThroughAHandle) {
  for (const Case& scene : kScenes) {
    SCOPED_TRACE(scene.name);
    size = kUntouched;
    const bool found = scene.search == Search::kFound;
    std::uint8_t* const table = Image(MakeImage(scene));
    const Bytes before = image();
    EXPECT_EQ(ZEMAPI_WriteTableEx(handle(), table, 5, buffer.data(), 0, &size), WriteResult(scene));
    EXPECT_EQ(size, found ? WantedSize(scene) : kUntouched);
    EXPECT_EQ(TakeWire().size(), found ? (WantedSize(scene) + 4 + 28) / 29 : 0);
    EXPECT_TRUE(found || image() == before);
  }
}

TEST_F(TableImageTest, ReadFromTheDevice) {
  for (const Case& scene : kScenes) {
    SCOPED_TRACE(scene.name);
    Store(MakeImage(scene));
    size = kUntouched;
    const Bytes before = buffer;
    EXPECT_EQ(ZEMAPI_ReadTable(handle(), 5, buffer.data(), 0, &size), ReadResult(scene));
    EXPECT_EQ(size, scene.search == Search::kFound ? WantedSize(scene) : kUntouched);
    if (scene.search != Search::kFound) {
      EXPECT_EQ(buffer, before) << "untouched";
    }
  }
}

TEST_F(TableImageTest, WriteToTheDevice) {
  for (const Case& scene : kScenes) {
    SCOPED_TRACE(scene.name);
    Store(MakeImage(scene));
    TakeWire();
    size = kUntouched;
    const bool found = scene.search == Search::kFound;
    EXPECT_EQ(ZEMAPI_WriteTable(handle(), 5, buffer.data(), 0, &size), WriteResult(scene));
    EXPECT_EQ(size, found ? WantedSize(scene) : kUntouched);
    EXPECT_EQ(TakeWire().size() - kWholeImageTransfers,
              found ? (WantedSize(scene) + 4 + 28) / 29 : 0);
    EXPECT_TRUE(found || memory() == MakeImage(scene));
  }
}

}  // namespace
