// The list of H.264 formats: the camera's, the default one, and how long each lasts.
#include <array>
#include <cstring>
#include <memory>
#include <optional>

#include "tests/support/device_test.h"
#include "tests/support/h264_list_bytes.h"
#include "tests/support/memory_limit.h"

namespace {

using zem::testing::kFailedTransfer;
using zem::testing::Lines;
using zem::testing::ListBytes;
using zem::testing::ListEntry;
using zem::testing::ListOf;
using zem::testing::ServeList;
using zem::testing::SetLine;
using zem::testing::WideLines;

const char* const kRequest = "set vendor 4: 0a 01 00 00 00 00 00 00";
const char* const kStatus = "get vendor 5 [8]";
const char* const kPiece = "get vendor 11 [32]";

// A copy that the library handed out, given back when it goes out of scope.
class ListCopy {
 public:
  explicit ListCopy(void* handle) : result_(ZEMAPI_GetH264FrameList(handle, &memory_)) {}
  ~ListCopy() { ZEMAPI_ReleaseH264FrameList(memory_); }
  ListCopy(const ListCopy&) = delete;
  ListCopy& operator=(const ListCopy&) = delete;

  ZemResult result() const { return result_; }
  std::uint8_t* bytes() const { return static_cast<std::uint8_t*>(memory_); }
  H264FrameList head() const {
    H264FrameList head = {};
    std::memcpy(&head, memory_, sizeof(head));
    return head;
  }
  H264FrameInfo record(std::size_t index) const {
    H264FrameInfo record = {};
    std::memcpy(&record, bytes() + 4 + 32 * index, sizeof(record));
    return record;
  }
  bool IsDefault() const { return result_ == 808 && head().wCount == 25; }

 private:
  void* memory_ = nullptr;
  ZemResult result_;
};

class H264ListTest : public zem::testing::DeviceTest {
 protected:
  // The frame indexes of the list that the camera's bytes give, with a star behind a list mark.
  std::string IndexesOf(const ListBytes& raw) {
    ServeList(vendor(), raw);
    const ListCopy list(handle());
    std::string text;
    for (std::size_t index = 0; index < list.head().wCount; ++index) {
      const H264FrameInfo record = list.record(index);
      text += std::to_string(record.wFrameIndex) + (record.bListMark != 0 ? "* " : " ");
    }
    return text;
  }
};

// ---- The default list ----

TEST_F(H264ListTest, DefaultListFieldByField) {
  struct Row {
    unsigned type, width, height, subWidth, subHeight, maxBitRate, minBitRate, mark;
  };
  constexpr std::array<Row, 25> kRows = {{
      {2, 160, 90, 160, 90, 2500, 100, 0},     {2, 160, 120, 160, 120, 2500, 100, 0},
      {2, 320, 180, 320, 180, 2500, 100, 0},   {2, 320, 240, 320, 240, 2500, 100, 0},
      {2, 640, 360, 320, 180, 2500, 100, 0},   {2, 640, 480, 320, 240, 2500, 100, 0},
      {2, 1280, 720, 320, 180, 2500, 100, 0},  {2, 1920, 1080, 320, 180, 4000, 100, 0},
      {1, 160, 120, 176, 144, 500, 25, 0},     {1, 160, 90, 384, 216, 2500, 100, 0},
      {1, 320, 180, 384, 216, 2500, 100, 0},   {1, 320, 240, 320, 240, 2500, 100, 0},
      {1, 352, 288, 320, 240, 2500, 100, 0},   {1, 432, 244, 320, 240, 2500, 100, 0},
      {1, 640, 360, 384, 216, 2500, 100, 0},   {1, 640, 480, 320, 240, 2500, 100, 0},
      {1, 768, 480, 384, 216, 2500, 100, 0},   {1, 800, 448, 320, 240, 2500, 100, 0},
      {1, 800, 600, 320, 240, 2500, 100, 0},   {1, 960, 544, 384, 216, 2500, 100, 0},
      {1, 960, 720, 320, 240, 2500, 100, 0},   {1, 1024, 576, 320, 240, 2500, 100, 0},
      {1, 1280, 720, 384, 216, 2500, 100, 0},  {1, 1600, 1200, 320, 240, 2500, 100, 0},
      {1, 1920, 1080, 384, 216, 2500, 100, 1},
  }};
  handle();
  FailTransfer(1);
  const ListCopy list(handle());
  EXPECT_EQ(list.result(), 808);
  EXPECT_EQ(list.head().wTotalLength, 808);
  EXPECT_EQ(list.head().wCount, 25);
  for (std::size_t index = 0; index < kRows.size(); ++index) {
    SCOPED_TRACE(index);
    const H264FrameInfo record = list.record(index);
    EXPECT_EQ(record.wLength, 32);
    EXPECT_EQ(record.wType, kRows[index].type);
    EXPECT_EQ(record.wFrameIndex, index);
    EXPECT_EQ(record.bListMark, kRows[index].mark);
    EXPECT_EQ(record.bReserved, 0);
    EXPECT_EQ(record.wWidth, kRows[index].width);
    EXPECT_EQ(record.wHeight, kRows[index].height);
    EXPECT_EQ(record.wSubWidth, kRows[index].subWidth);
    EXPECT_EQ(record.wSubHeight, kRows[index].subHeight);
    EXPECT_EQ(record.dwMaxBitRate, kRows[index].maxBitRate);
    EXPECT_EQ(record.dwMinBitRate, kRows[index].minBitRate);
    EXPECT_EQ(record.wMaxFps, 30);
    EXPECT_EQ(record.wMinFps, 5);
    EXPECT_EQ(record.dwReserved, 0U);
  }
  for (std::size_t offset = 804; offset < 808; ++offset) {
    EXPECT_EQ(list.bytes()[offset], 0) << "the bytes behind the last record";
  }
}

TEST_F(H264ListTest, DefaultListAsBytes) {
  const ListCopy list(handle());
  const ListBytes first(list.bytes(), list.bytes() + 36);
  EXPECT_EQ(first, (ListBytes{0x28, 0x03, 25, 0,                                    //
                              32,   0,    2,  0, 0,    0,    0, 0, 0xA0, 0, 90, 0,  //
                              0xA0, 0,    90, 0, 0xC4, 0x09, 0, 0, 100,  0, 0,  0,  //
                              30,   0,    5,  0, 0,    0,    0, 0}));
}

// ---- Falling back to it ----

TEST_F(H264ListTest, FailedRequestReadsNothing) {
  handle();
  FailTransfer(1);
  const ListCopy list(handle());
  EXPECT_TRUE(list.IsDefault());
  EXPECT_EQ(TakeWire(), (Lines{std::string(kRequest) + " failed"}));
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(kFailedTransfer, 8)});
}

TEST_F(H264ListTest, FailedStatusReadsNoList) {
  ServeList(vendor(), ListOf({ListEntry(1, 7, 640, 480)}));
  handle();
  FailTransfer(2);
  const ListCopy list(handle());
  EXPECT_TRUE(list.IsDefault());
  EXPECT_EQ(TakeWire(), (Lines{kRequest, "get vendor 5 [8] failed"}));
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 8)});
}

TEST_F(H264ListTest, RefusedRequestReadsNoList) {
  constexpr std::uint8_t kStatuses[] = {1, 0x80, 0xFF};
  for (const std::uint8_t status : kStatuses) {
    void* camera = nullptr;
    ASSERT_EQ(ZEMAPI_OpenDevice(0, &camera), 0);
    TakeWire();
    vendor().Answer(5, {status, 0, 0, 0, 0, 0, 0, 0});
    const ListCopy list(camera);
    EXPECT_TRUE(list.IsDefault());
    EXPECT_EQ(TakeWire(), (Lines{kRequest, kStatus}));
    ZEMAPI_CloseDevice(&camera);
  }
}

TEST_F(H264ListTest, FailedFirstPieceReadsNoOther) {
  handle();
  FailTransfer(3);
  const ListCopy list(handle());
  EXPECT_TRUE(list.IsDefault());
  EXPECT_EQ(TakeWire(), (Lines{kRequest, kStatus, "get vendor 11 [32] failed"}));
}

TEST_F(H264ListTest, LengthOfZeroReadsNoOtherPiece) {
  ListBytes raw = ListOf({ListEntry(1, 7, 640, 480), ListEntry(1, 8, 320, 240)});
  raw[0] = 0;
  ServeList(vendor(), raw);
  const ListCopy list(handle());
  EXPECT_TRUE(list.IsDefault());
  EXPECT_EQ(TakeWire(), (Lines{kRequest, kStatus, kPiece}));
}

TEST_F(H264ListTest, CountOfZeroReadsAllPieces) {
  ListBytes raw = ListOf({ListEntry(1, 7, 640, 480), ListEntry(1, 8, 320, 240)});
  raw[2] = 0;
  ServeList(vendor(), raw);
  const ListCopy list(handle());
  EXPECT_TRUE(list.IsDefault());
  EXPECT_EQ(TakeWire(), (Lines{kRequest, kStatus, kPiece, kPiece}));
}

TEST_F(H264ListTest, CameraWithoutTopology) {
  handle();
  gate.RefuseAll("QueryInterface(IKsTopologyInfo)");
  const ListCopy list(handle());
  EXPECT_TRUE(list.IsDefault());
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

TEST_F(H264ListTest, CameraWithoutVendorUnit) {
  const auto bare = std::make_shared<zem::simulator::Camera>();
  bare->AddPlainNode();
  List(zem::testing::DisplayName(1, 2), bare);
  void* camera = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDeviceEx(0, &camera, 1, 2), 0);
  {
    const ListCopy list(camera);
    EXPECT_TRUE(list.IsDefault());
  }
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(zem::testing::kUnknownControl, 8)})
      << "the one plain node is node 0, the absent unit node 1";
  ZEMAPI_CloseDevice(&camera);
}

TEST_F(H264ListTest, UnpluggedCamera) {
  handle();
  camera().Unplug();
  const ListCopy list(handle());
  EXPECT_TRUE(list.IsDefault());
}

// ---- The camera's list ----

TEST_F(H264ListTest, CameraListAsBytes) {
  ServeList(vendor(), {0x30, 0x00, 0x02, 0x00,  // 48 bytes, two entries
                       0x16, 0x00, 0x02, 0xFE, 0x80, 0x07, 0x38, 0x04, 0x40, 0x01, 0xB4,
                       0x00, 0x78, 0x56, 0x34, 0x12, 0xEF, 0xCD, 0xAB, 0x89, 0xFF, 0x01,  //
                       0x16, 0x00, 0x03, 0x01, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07,
                       0x08, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F, 0x10, 0x11, 0x12});
  const ListCopy list(handle());
  EXPECT_EQ(list.result(), 70);
  const ListBytes bytes(list.bytes(), list.bytes() + 70);
  EXPECT_EQ(bytes, (ListBytes{0x46, 0x00, 0x02, 0x00,  //
                              0x20, 0x00, 0x02, 0x00, 0xFE, 0x00, 0x01, 0x00, 0x80, 0x07, 0x38,
                              0x04, 0x40, 0x01, 0xB4, 0x00, 0x78, 0x56, 0x34, 0x12, 0xEF, 0xCD,
                              0xAB, 0x89, 0xFF, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00,  //
                              0x20, 0x00, 0x03, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x02, 0x03,
                              0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E,
                              0x0F, 0x10, 0x11, 0x00, 0x12, 0x00, 0x00, 0x00, 0x00, 0x00,  //
                              0x00, 0x00}));
  EXPECT_EQ(TakeWire(), (Lines{kRequest, kStatus, kPiece, kPiece}));
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 8)});
}

TEST_F(H264ListTest, PiecesByLength) {
  struct Case {
    unsigned length;
    std::size_t pieces;
  };
  constexpr Case kCases[] = {{1, 1},  {31, 1}, {32, 1},    {33, 2},
                             {64, 2}, {65, 3}, {0x100, 8}, {0xFFFF, 2048}};
  for (const Case& testCase : kCases) {
    SCOPED_TRACE(testCase.length);
    void* camera = nullptr;
    ASSERT_EQ(ZEMAPI_OpenDevice(0, &camera), 0);
    TakeWire();
    ListBytes raw(testCase.pieces * 32);
    raw[0] = static_cast<std::uint8_t>(testCase.length & 0xFF);
    raw[1] = static_cast<std::uint8_t>(testCase.length >> 8);
    raw[2] = 1;
    ServeList(vendor(), raw);
    {
      const ListCopy list(camera);
      EXPECT_EQ(list.result(), 38);
    }
    EXPECT_EQ(TakeWire().size(), 2 + testCase.pieces);
    ZEMAPI_CloseDevice(&camera);
  }
}

TEST_F(H264ListTest, OnlyTheLastEntryIsUnmarked) {
  EXPECT_EQ(IndexesOf(ListOf({ListEntry(1, 4, 1, 1), ListEntry(0x80, 9, 1, 1),  //
                              ListEntry(2, 4, 1, 1)})),
            "4* 9* 4 ");
}

TEST_F(H264ListTest, EntriesOfTypeZeroAreSkippedButCountedInTheLength) {
  ServeList(
      vendor(),
      ListOf({ListEntry(1, 4, 1, 1), ListEntry(0, 5, 1, 1), {3, 0, 0}, ListEntry(1, 6, 1, 1)}));
  const ListCopy list(handle());
  EXPECT_EQ(list.result(), 4 * 32 + 6);
  EXPECT_EQ(list.head().wTotalLength, 4 * 32 + 6);
  EXPECT_EQ(list.head().wCount, 2);
  EXPECT_EQ(list.record(0).wFrameIndex, 4);
  EXPECT_EQ(list.record(1).wFrameIndex, 6);
  EXPECT_EQ(list.record(1).bListMark, 0);
}

TEST_F(H264ListTest, SkippedLastEntryLeavesEveryRecordMarked) {
  EXPECT_EQ(IndexesOf(ListOf({ListEntry(1, 4, 1, 1), ListEntry(0, 5, 1, 1)})), "4* ");
}

TEST_F(H264ListTest, ListOfSkippedEntriesOnlyIsEmptyAndNotTheDefaultOne) {
  ServeList(vendor(), ListOf({ListEntry(0, 4, 1, 1), ListEntry(0, 5, 1, 1)}));
  const ListCopy list(handle());
  EXPECT_EQ(list.result(), 70);
  EXPECT_EQ(list.head().wTotalLength, 70);
  EXPECT_EQ(list.head().wCount, 0);
  const ListBytes rest(list.bytes() + 4, list.bytes() + 70);
  EXPECT_EQ(rest, ListBytes(66));
}

TEST_F(H264ListTest, LongerEntriesAreSteppedOverByTheirLength) {
  ListBytes longer = ListEntry(1, 4, 1, 1);
  longer.resize(25, 0xEE);
  longer[0] = 25;
  EXPECT_EQ(IndexesOf(ListOf({longer, ListEntry(1, 5, 1, 1)})), "4* 5 ");
}

TEST_F(H264ListTest, CountBelowTheEntriesIgnoresTheRest) {
  ListBytes raw = ListOf({ListEntry(1, 4, 1, 1), ListEntry(1, 5, 1, 1)});
  raw[2] = 1;
  EXPECT_EQ(IndexesOf(raw), "4 ");
}

TEST_F(H264ListTest, CountAboveTheEntriesEndsWithThem) {
  ListBytes raw = ListOf({ListEntry(1, 4, 1, 1), ListEntry(1, 5, 1, 1)});
  raw[2] = 200;
  ServeList(vendor(), raw);
  const ListCopy list(handle());
  EXPECT_EQ(list.result(), 200 * 32 + 6);
  EXPECT_EQ(list.head().wCount, 2);
  EXPECT_EQ(list.record(1).bListMark, 1) << "not the 200th entry";
}

TEST_F(H264ListTest, CountBeyondWhatALengthCanSayIsCut) {
  ListBytes raw = ListOf({ListEntry(1, 4, 1, 1)});
  raw[2] = 0xFF;
  raw[3] = 0xFF;
  ServeList(vendor(), raw);
  const ListCopy list(handle());
  EXPECT_EQ(list.result(), 65510);
  EXPECT_EQ(list.head().wTotalLength, 65510);
  EXPECT_EQ(list.head().wCount, 1);
}

TEST_F(H264ListTest, LongestList) {
  const std::vector<ListBytes> entries(2977, ListEntry(1, 4, 1, 1));
  ServeList(vendor(), ListOf(entries));
  const ListCopy list(handle());
  EXPECT_EQ(list.result(), 65510);
  EXPECT_EQ(list.head().wCount, 2047);
  EXPECT_EQ(list.record(2045).bListMark, 1);
  EXPECT_EQ(list.record(2046).bListMark, 0) << "the last one that counts";
}

TEST_F(H264ListTest, LengthFieldBoundsThePiecesNotTheEntries) {
  // Both entries lie in the two pieces that 33 bytes make.
  ListBytes raw = ListOf({ListEntry(1, 4, 1, 1), ListEntry(1, 5, 1, 1)});
  raw[0] = 33;
  EXPECT_EQ(IndexesOf(raw), "4* 5 ");
}

// ---- Entries that are not what they say ----

TEST_F(H264ListTest, EntryOfLengthZeroEndsTheWalk) {
  ListBytes broken = ListEntry(1, 5, 1, 1);
  broken[0] = 0;
  EXPECT_EQ(IndexesOf(ListOf({ListEntry(1, 4, 1, 1), broken, ListEntry(1, 6, 1, 1)})), "4* ");
}

TEST_F(H264ListTest, SkippedEntryOfLengthZeroEndsTheWalk) {
  EXPECT_EQ(IndexesOf(ListOf({ListEntry(1, 4, 1, 1), {0, 0, 0}, ListEntry(1, 6, 1, 1)})), "4* ");
}

TEST_F(H264ListTest, SkippedEntryTooShortForItsTypeEndsTheWalk) {
  EXPECT_EQ(IndexesOf(ListOf({ListEntry(1, 4, 1, 1), {2, 0, 0}, ListEntry(1, 6, 1, 1)})), "4* ");
}

TEST_F(H264ListTest, EntryTooShortForItsFieldsEndsTheWalk) {
  ListBytes broken = ListEntry(1, 5, 1, 1);
  broken[0] = 21;
  broken.resize(21);
  EXPECT_EQ(IndexesOf(ListOf({ListEntry(1, 4, 1, 1), broken, ListEntry(1, 6, 1, 1)})), "4* ");
}

TEST_F(H264ListTest, EntryThatReachesPastTheListEndsTheWalk) {
  // 32 bytes were read, the second entry begins at 26: neither its type nor its length lie inside.
  for (const std::uint8_t length : {std::uint8_t{7}, std::uint8_t{22}, std::uint8_t{255}}) {
    void* camera = nullptr;
    ASSERT_EQ(ZEMAPI_OpenDevice(0, &camera), 0);
    ListBytes raw = ListOf({ListEntry(1, 4, 1, 1), {length, 0, 0}});
    ASSERT_LE(raw.size(), 32U);
    ServeList(vendor(), raw);
    const ListCopy list(camera);
    EXPECT_EQ(list.head().wCount, 1) << static_cast<int>(length);
    ZEMAPI_CloseDevice(&camera);
  }
}

TEST_F(H264ListTest, SkippedEntryUpToTheEndOfTheListIsWhole) {
  ListBytes raw = ListOf({ListEntry(1, 4, 1, 1), {6, 0, 0}, ListEntry(1, 6, 1, 1)});
  raw[0] = 32;
  ServeList(vendor(), raw);
  const ListCopy list(handle());
  EXPECT_EQ(list.head().wCount, 1) << "nothing is left for the third";
}

TEST_F(H264ListTest, EntryThatIsLongerThanWhatIsLeftEndsTheWalkThoughItsFieldsAreThere) {
  ListBytes overlong = ListEntry(1, 5, 1, 1);
  overlong[1] = 1;  // 278 bytes
  EXPECT_EQ(IndexesOf(ListOf({ListEntry(1, 4, 1, 1), overlong})), "4* ");
}

TEST_F(H264ListTest, EntryThatEndsWithTheLastPieceIsWhole) {
  // 4 + 22 + 38 bytes: two pieces to the last byte.
  ListBytes last = ListEntry(1, 5, 1, 1);
  last.resize(38);
  last[0] = 38;
  EXPECT_EQ(IndexesOf(ListOf({ListEntry(1, 4, 1, 1), last})), "4* 5 ");
}

TEST_F(H264ListTest, EntryOneByteLongerThanTheLastPieceEndsTheWalk) {
  ListBytes last = ListEntry(1, 5, 1, 1);
  last.resize(38);
  last[0] = 39;
  EXPECT_EQ(IndexesOf(ListOf({ListEntry(1, 4, 1, 1), last})), "4* ");
}

// ---- Pieces that do not come ----

// Request, status and five pieces for seven entries. A piece that fails is one of zeros, and the
// entry whose length lies in it ends the walk.
TEST_F(H264ListTest, FailureOfEachTransfer) {
  struct Case {
    std::uint32_t failed;
    int count;
    std::size_t transfers;
  };
  constexpr Case kCases[] = {{1, 25, 1}, {2, 25, 2}, {3, 25, 3}, {4, 2, 7},
                             {5, 3, 7},  {6, 5, 7},  {7, 6, 7}};
  const ListBytes raw = ListOf(std::vector<ListBytes>(7, ListEntry(1, 4, 0xFFFF, 0xFFFF)));
  for (const Case& testCase : kCases) {
    SCOPED_TRACE(testCase.failed);
    void* camera = nullptr;
    ASSERT_EQ(ZEMAPI_OpenDevice(0, &camera), 0);
    TakeWire();
    ListBytes pieces = raw;
    if (testCase.failed > 3) {
      const auto failed = pieces.begin() + std::ptrdiff_t{32} * (testCase.failed - 3);
      pieces.erase(failed, std::min(failed + 32, pieces.end()));
      ServeList(vendor(), pieces);
    }
    FailTransfer(testCase.failed);
    const bool isDefault = testCase.failed <= 3;
    for (const std::size_t transfers : {testCase.transfers, std::size_t{0}}) {
      const ListCopy list(camera);
      EXPECT_EQ(list.head().wCount, testCase.count);
      EXPECT_EQ(list.result(), isDefault ? 808 : 7 * 32 + 6);
      EXPECT_EQ(list.record(0).bListMark, isDefault ? 0 : 1);
      EXPECT_EQ(TakeWire().size(), transfers) << "what was made stays";
    }
    ZEMAPI_CloseDevice(&camera);
  }
}

TEST_F(H264ListTest, ShortPieceIsFilledUpWithZeros) {
  ListBytes raw = ListOf({ListEntry(1, 4, 1, 1), ListEntry(1, 5, 1, 1)});
  vendor().Answer(11, ListBytes(raw.begin(), raw.begin() + 32));
  vendor().Answer(11, ListBytes(raw.begin() + 32, raw.begin() + 40));
  const ListCopy list(handle());
  ASSERT_EQ(list.head().wCount, 2);
  EXPECT_EQ(list.record(1).dwMaxBitRate, 0x09C4U);
  EXPECT_EQ(list.record(1).dwMinBitRate, 0U);
  EXPECT_EQ(list.record(1).wMaxFps, 0);
}

// ---- How long a list lasts ----

TEST_F(H264ListTest, CameraIsAskedOnceForTheLifeOfTheHandle) {
  ServeList(vendor(), ListOf({ListEntry(1, 4, 1, 1)}));
  const ListCopy first(handle());
  EXPECT_EQ(TakeWire().size(), 3U);
  ServeList(vendor(), ListOf({ListEntry(1, 5, 1, 1)}));
  const ListCopy second(handle());
  EXPECT_EQ(second.record(0).wFrameIndex, 4);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 8)});
}

TEST_F(H264ListTest, DefaultListStaysForTheLifeOfTheHandle) {
  handle();
  FailTransfer(1);
  const ListCopy first(handle());
  ServeList(vendor(), ListOf({ListEntry(1, 4, 1, 1)}));
  TakeWire();
  const ListCopy second(handle());
  EXPECT_TRUE(second.IsDefault());
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(H264ListTest, CopiesAreIndependent) {
  ServeList(vendor(), ListOf({ListEntry(1, 4, 1, 1)}));
  const ListCopy first(handle());
  std::memset(first.bytes(), 0xEE, 38);
  const ListCopy second(handle());
  EXPECT_EQ(second.result(), 38);
  EXPECT_EQ(second.record(0).wFrameIndex, 4);
  EXPECT_NE(first.bytes(), second.bytes());
}

TEST_F(H264ListTest, CopyOutlivesTheHandle) {
  void* camera = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDevice(0, &camera), 0);
  const ListCopy list(camera);
  ZEMAPI_CloseDevice(&camera);
  EXPECT_TRUE(list.IsDefault());
}

TEST_F(H264ListTest, EachHandleHasItsOwn) {
  ServeList(vendor(), ListOf({ListEntry(1, 4, 1, 1)}));
  const ListCopy first(handle());
  void* other = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDevice(0, &other), 0);
  const ListCopy second(other);
  EXPECT_TRUE(second.IsDefault());
  ZEMAPI_CloseDevice(&other);
}

TEST_F(H264ListTest, StartingAFormatReadsTheListToo) {
  ServeList(vendor(), ListOf({ListEntry(7, 4, 1, 1)}));
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 4), 0);
  EXPECT_EQ(TakeWire(), (Lines{kRequest, kStatus, kPiece}));
  const ListCopy list(handle());
  EXPECT_EQ(list.result(), 38);
  EXPECT_EQ(TakeWire(), Lines());
}

// ---- No memory ----

TEST_F(H264ListTest, NoMemoryForTheDefaultListTriesAgain) {
  handle();
  void* list = this;
  {
    const zem::testing::MemoryExhausted exhausted;
    FailTransfer(1);
    EXPECT_EQ(ZEMAPI_GetH264FrameList(handle(), &list), ZEM_E_FAIL);
    EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 0), ZEM_E_FAIL);
  }
  EXPECT_EQ(list, this);
  TakeWire();
  ServeList(vendor(), ListOf({ListEntry(1, 4, 1, 1)}));
  const ListCopy second(handle());
  EXPECT_EQ(second.result(), 38);
  EXPECT_EQ(TakeWire().size(), 3U);
}

TEST_F(H264ListTest, NoMemoryForTheCamerasBytes) {
  handle();
  ServeList(vendor(), ListOf({ListEntry(1, 4, 1, 1), ListEntry(1, 5, 1, 1)}));
  void* list = this;
  {
    const zem::testing::MemoryExhausted exhausted;
    EXPECT_EQ(ZEMAPI_GetH264FrameList(handle(), &list), ZEM_E_FAIL);
  }
  EXPECT_EQ(list, this);
  EXPECT_EQ(TakeWire(), (Lines{kRequest, kStatus, kPiece}));
}

TEST_F(H264ListTest, NoMemoryForTheCamerasBytesTriesAgain) {
  handle();
  ServeList(vendor(), ListOf({ListEntry(1, 4, 1, 1)}));
  void* list = nullptr;
  {
    const zem::testing::MemoryExhausted exhausted;
    EXPECT_EQ(ZEMAPI_GetH264FrameList(handle(), &list), ZEM_E_FAIL);
  }
  ServeList(vendor(), ListOf({ListEntry(1, 5, 1, 1)}));
  const ListCopy second(handle());
  EXPECT_EQ(second.result(), 38);
  EXPECT_EQ(second.record(0).wFrameIndex, 5);
}

TEST_F(H264ListTest, NoMemoryForTheListOfTheCamerasBytes) {
  handle();
  ServeList(vendor(), ListOf({ListEntry(1, 4, 1, 1), ListEntry(1, 5, 1, 1)}));
  // Memory runs out with the second piece, when the room for both is there.
  int transfers = 0;
  std::optional<zem::testing::MemoryExhausted> exhausted;
  camera().SetObserver([&](const zem::simulator::Transfer&) {
    if (++transfers == 4) {
      exhausted.emplace();
    }
  });
  void* list = this;
  EXPECT_EQ(ZEMAPI_GetH264FrameList(handle(), &list), ZEM_E_FAIL);
  EXPECT_EQ(list, this);
  EXPECT_EQ(transfers, 4);
  exhausted.reset();
  camera().SetObserver(nullptr);
  ServeList(vendor(), ListOf({ListEntry(1, 6, 1, 1)}));
  const ListCopy second(handle());
  EXPECT_EQ(second.result(), 38);
  EXPECT_EQ(second.record(0).wFrameIndex, 6);
}

TEST_F(H264ListTest, NoMemoryForTheCopy) {
  ServeList(vendor(), ListOf({ListEntry(1, 4, 1, 1)}));
  const ListCopy first(handle());
  void* list = this;
  {
    const zem::testing::MemoryExhausted exhausted;
    EXPECT_EQ(ZEMAPI_GetH264FrameList(handle(), &list), ZEM_E_FAIL);
  }
  EXPECT_EQ(list, this);
  const ListCopy second(handle());
  EXPECT_EQ(second.result(), 38);
}

// ---- Arguments ----

TEST_F(H264ListTest, NullHandleAndNullList) {
  void* list = this;
  EXPECT_EQ(ZEMAPI_GetH264FrameList(nullptr, &list), ZEM_E_NO_DEVICE);
  EXPECT_EQ(list, this);
  EXPECT_EQ(ZEMAPI_GetH264FrameList(nullptr, nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_GetH264FrameList(handle(), nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
  ZEMAPI_ReleaseH264FrameList(nullptr);
}

}  // namespace
