// A trace that is written while a camera is used, and what is left out of it.
#include "tools/zemctl/camera/trace.h"

#include <gtest/gtest.h>

#include <array>

#include "device/extension_units.h"
#include "device/transport.h"
#include "simulator/com_camera.h"
#include "simulator/vendor_unit.h"
#include "tools/zemctl/camera/replay.h"
#include "tools/zemctl/camera/trace_words.h"
#include "tools/zemctl/camera/watched_camera.h"

namespace {

using zem::ComPtr;
using zem::simulator::Camera;
using zem::simulator::VendorUnit;
using zemctl::Replay;
using zemctl::TraceDecoder;
using zemctl::TracedLookup;
using zemctl::TracedOpening;
using zemctl::TracedTransfer;
using zemctl::TraceLine;

constexpr const char* kPath =
    "@device:sw:{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\usb#vid_5a45&pid_8c00&mi_00#AB-1234#{x}";

template <class Event>
std::vector<Event> Only(const std::vector<TraceLine>& lines) {
  std::vector<Event> events;
  for (const TraceLine& line : lines) {
    if (const auto* const event = std::get_if<Event>(&line.event)) {
      events.push_back(*event);
    }
  }
  return events;
}

// A camera whose trace goes to a file that is read while it is still open.
class TraceTest : public ::testing::Test {
 protected:
  ~TraceTest() override {
    zemctl::ThreadTrace() = nullptr;
    zemctl::ThreadReplay() = nullptr;
  }

  void Begin(bool withoutSerials = false) {
    zemctl::OpenedFile file(std::tmpfile());
    file_ = file.get();
    zemctl::ThreadTrace() = std::make_shared<zemctl::Trace>(
        std::move(file), zemctl::TracedRun{"zemctl", {"--path", kPath}, withoutSerials});
    camera_->AddPlainNode();
    camera_->AddUnit(std::make_unique<VendorUnit>());
    auto bare = ComPtr<IBaseFilter>::Adopt(zem::simulator::MakeCameraFilter(camera_, nullptr));
    filter_ = zemctl::Watch(std::move(bare), zemctl::MakeTracer(0));
  }

  HRESULT Set(std::uint16_t selector, std::vector<std::uint8_t> bytes) {
    return zem::XuSetControl(zem::VendorXu, selector, bytes.data(),
                             static_cast<ULONG>(bytes.size()), nullptr, filter_.get());
  }
  HRESULT Get(std::uint16_t selector, std::size_t length) {
    read_.assign(length, 0xEE);
    return zem::XuGetControl(zem::VendorXu, selector, read_.data(), static_cast<ULONG>(length),
                             nullptr, filter_.get());
  }

  // What the file has now.
  std::string Text() {
    std::rewind(file_);
    std::string text(1U << 20, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file_));
    std::fseek(file_, 0, SEEK_END);
    return text;
  }
  std::vector<TraceLine> Lines() { return zemctl::ParseTrace(Text()); }

  std::shared_ptr<Camera> camera_ = std::make_shared<Camera>();
  ComPtr<IBaseFilter> filter_;
  std::FILE* file_ = nullptr;
  std::vector<std::uint8_t> read_;
};

TEST_F(TraceTest, EveryTransferIsThereAsSoonAsItHasHappened) {
  Begin();
  ASSERT_EQ(Set(1, {0x0A, 0, 0, 0, 0, 0, 0, 0}), S_OK);
  EXPECT_EQ(Only<TracedTransfer>(Lines()).size(), 1U);
  ASSERT_EQ(Get(2, 8), S_OK);
  const auto transfers = Only<TracedTransfer>(Lines());
  ASSERT_EQ(transfers.size(), 2U);
  EXPECT_TRUE(transfers[0].transfer.Is(zem::VendorXu, 1, true));
  EXPECT_EQ(transfers[1].transfer.bytes,
            (std::vector<std::uint8_t>{0x00, 0x00, 0x70, 0x51, 0, 0, 0, 0}));
}

TEST_F(TraceTest, AnAnswerThatIsAlwaysTheSameIsWrittenOnce) {
  Begin();
  ASSERT_EQ(Get(10, 8), S_OK);
  const std::size_t once = Only<TracedLookup>(Lines()).size();
  ASSERT_EQ(Get(10, 8), S_OK);
  ASSERT_EQ(Get(10, 8), S_OK);
  EXPECT_GT(once, 0U);
  EXPECT_EQ(Only<TracedLookup>(Lines()).size(), once);
  EXPECT_EQ(Only<TracedTransfer>(Lines()).size(), 3U);
}

TEST_F(TraceTest, SerialNumbersAreThereUnlessTheyAreLeftOut) {
  Begin(false);
  ASSERT_EQ(Set(4, {0x19, 0x81, 0, 0, 0, 0, 0, 0}), S_OK);
  ASSERT_EQ(Get(11, 32), S_OK);
  EXPECT_NE(Text().find("a0 a1 a2"), std::string::npos);
  EXPECT_NE(Text().find("AB-1234"), std::string::npos);
}

TEST_F(TraceTest, SerialNumbersCanBeLeftOut) {
  Begin(true);
  ASSERT_EQ(Set(4, {0x19, 0x81, 0, 0, 0, 0, 0, 0}), S_OK);
  ASSERT_EQ(Get(11, 32), S_OK);
  EXPECT_EQ(read_[1], 0xA1);
  zemctl::TracedDevices list;
  list.devices = {{"camera", kPath, "\\\\?\\usb#vid_5a45&pid_8c00&mi_00#ab-1234", "AB-1234"},
                  {"camera", "usb#vid#other", std::nullopt, "Port_#0001.Hub_#0002"}};
  zemctl::ThreadTrace()->WriteDevices(list);
  zemctl::ThreadTrace()->Write(TracedOpening{0, kPath, S_OK});
  // A reply that follows another command is no serial number.
  ASSERT_EQ(Set(4, {0x0A, 0x01, 0, 0, 0, 0, 0, 0}), S_OK);
  static_cast<void>(Get(11, 32));

  EXPECT_EQ(Text().find("a0 a1 a2"), std::string::npos);
  EXPECT_EQ(Text().find("AB-1234"), std::string::npos);
  EXPECT_EQ(Text().find("ab-1234"), std::string::npos);
  const auto lines = Lines();
  const auto& run = std::get<zemctl::TracedRun>(lines[0].event);
  EXPECT_TRUE(run.serialsLeftOut);
  EXPECT_EQ(run.command[1],
            "@device:sw:{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\usb#vid_5a45&pid_8c00&mi_00#"
            "left-out-1#{x}");
  const auto transfers = Only<TracedTransfer>(lines);
  ASSERT_EQ(transfers.size(), 4U);
  EXPECT_TRUE(transfers[1].leftOut);
  EXPECT_EQ(transfers[1].transfer.bytes, std::vector<std::uint8_t>(32, 0));
  EXPECT_FALSE(transfers[3].leftOut);
  const auto devices = Only<zemctl::TracedDevices>(lines);
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices[0].devices[0].devicePath, "\\\\?\\usb#vid_5a45&pid_8c00&mi_00#left-out-1");
  EXPECT_EQ(devices[0].devices[0].place, "left-out-1");
  EXPECT_EQ(devices[0].devices[1].path, "usb#vid#left-out-2");
  EXPECT_EQ(devices[0].devices[1].place, "Port_#0001.Hub_#0002");
}

TEST_F(TraceTest, TheTraceAnswersAsTheCameraDid) {
  Begin();
  camera_->AddFault({zem::simulator::Fault::Kind::kUnplug, 4});
  const auto use = [this] {
    std::vector<std::int64_t> seen = {Set(1, {0x0A, 0, 0, 0, 0, 0, 0, 0}),
                                      Get(2, 8),
                                      read_[2],
                                      Get(11, 16),
                                      read_[0],
                                      Get(2, 8),
                                      Set(3, {1})};
    return seen;
  };
  const auto recorded = use();
  const auto lines = Lines();
  zemctl::ThreadTrace() = nullptr;

  const auto replay = std::make_shared<Replay>(lines);
  filter_ = zemctl::MakeReplayedCamera(replay, 0);
  EXPECT_EQ(use(), recorded);
  EXPECT_EQ(recorded[5], static_cast<HRESULT>(0x8007048FU));
  replay->ExpectEnd();
  EXPECT_EQ(replay->difference(), std::nullopt);
}

TEST_F(TraceTest, AReplayThatIsNotTheRecordedRunIsRefused) {
  Begin();
  ASSERT_EQ(Set(1, {0x0A, 0, 0, 0, 0, 0, 0, 0}), S_OK);
  ASSERT_EQ(Get(2, 8), S_OK);
  const auto lines = Lines();
  const std::string first = std::to_string(lines.size() - 1);
  const auto replay = std::make_shared<Replay>(lines);
  filter_ = zemctl::MakeReplayedCamera(replay, 0);
  EXPECT_EQ(Set(1, {0x0A, 1, 0, 0, 0, 0, 0, 0}), static_cast<HRESULT>(0x8007048FU));
  EXPECT_EQ(replay->difference(),
            "line " + first +
                ": expected set vendor 1 (ISP command, 8 bytes): 0a 00 00 00 00 00 00 00, came set "
                "vendor 1 (ISP command, 8 bytes): 0a 01 00 00 00 00 00 00");
  // It stays so.
  EXPECT_EQ(Set(1, {0x0A, 0, 0, 0, 0, 0, 0, 0}), static_cast<HRESULT>(0x8007048FU));

  const auto shorter = std::make_shared<Replay>(lines);
  filter_ = zemctl::MakeReplayedCamera(shorter, 0);
  ASSERT_EQ(Set(1, {0x0A, 0, 0, 0, 0, 0, 0, 0}), S_OK);
  shorter->ExpectEnd();
  EXPECT_EQ(shorter->difference(),
            "line " + std::to_string(lines.size()) +
                ": expected get vendor 2 (reply to an ISP command, 8 bytes), came the end of the "
                "run");

  const auto longer = std::make_shared<Replay>(lines);
  filter_ = zemctl::MakeReplayedCamera(longer, 0);
  ASSERT_EQ(Set(1, {0x0A, 0, 0, 0, 0, 0, 0, 0}), S_OK);
  ASSERT_EQ(Get(2, 8), S_OK);
  EXPECT_EQ(Get(2, 8), static_cast<HRESULT>(0x8007048FU));
  EXPECT_EQ(longer->difference(), "the trace ends with line " + std::to_string(lines.size()) +
                                      ", came get vendor 2 (reply to an ISP command, 8 bytes)");
}

// A replayed volume, and what is not the recorded command.
TEST(ReplayTest, AnswersScsiCommandsAndRefusesOthers) {
  const std::string text =
      R"({"type":"trace","ms":0,"format":1,"tool":"t","command":[],"serials":"as they are"})"
      "\n"
      R"({"type":"volume","ms":1,"drive":"F:","number":1,"there":false})"
      "\n"
      R"({"type":"volume","ms":1,"drive":"F:","number":3,"there":true})"
      "\n"
      R"({"type":"scsi","ms":2,"drive":"F:","direction":"in","cdb":"12 00 00 00 24 00",)"
      R"("length":36,"data":"00 80 00 01","status":0,"error":0})"
      "\n"
      R"({"type":"scsi","ms":3,"drive":"F:","direction":"out",)"
      R"("cdb":"fa 55 66 08 00 01 00 00 00 08 80 00 00 00 00 00","length":2,"data":"01 02",)"
      R"("status":0,"error":1117})"
      "\n";
  Replay replay(zemctl::ParseTrace(text));
  EXPECT_EQ(replay.OpenVolume("F:").error, 2U);
  EXPECT_EQ(replay.OpenVolume("F:").error, 2U);
  EXPECT_TRUE(replay.OpenVolume("F:").isOpen());
  EXPECT_TRUE(replay.OpenVolume("F:").isOpen());
  zemctl::ScsiCommand inquiry;
  inquiry.drive = "F:";
  inquiry.cdb = {0x12, 0, 0, 0, 0x24, 0};
  inquiry.isIn = true;
  inquiry.length = 36;
  replay.Execute(inquiry);
  EXPECT_EQ(inquiry.data, (std::vector<std::uint8_t>{0x00, 0x80, 0x00, 0x01}));
  zemctl::ScsiCommand write;
  write.drive = "F:";
  write.cdb = {0xFA, 0x55, 0x66, 0x08, 0, 1, 0, 0, 0, 8, 0x80, 0, 0, 0, 0, 0};
  write.length = 2;
  write.data = {1, 3};
  replay.Execute(write);
  EXPECT_EQ(write.error, 1167U);
  EXPECT_EQ(
      replay.difference(),
      "line 5: expected SCSI out F: (write storage, 2 bytes), fa 55 66 08 00 01 00 00 00 08 "
      "80 00 00 00 00 00: 01 02, came SCSI out F: (write storage, 2 bytes), fa 55 66 08 00 01 "
      "00 00 00 08 80 00 00 00 00 00: 01 03");
}

// ---- Decoding ----

struct DecodeTest : ::testing::Test {
  zemctl::TraceWords Set(const GUID& unit, std::uint32_t selector,
                         std::vector<std::uint8_t> bytes) {
    return Move(unit, selector, true, std::move(bytes));
  }
  zemctl::TraceWords Get(const GUID& unit, std::uint32_t selector,
                         std::vector<std::uint8_t> bytes) {
    return Move(unit, selector, false, std::move(bytes));
  }
  zemctl::TraceWords Move(const GUID& unit, std::uint32_t selector, bool isSet,
                          std::vector<std::uint8_t> bytes) {
    zemctl::Transfer transfer;
    transfer.unit = unit;
    transfer.selector = selector;
    transfer.isSet = isSet;
    transfer.length = static_cast<std::uint32_t>(bytes.size());
    transfer.bytes = std::move(bytes);
    return decoder.Decode(TracedTransfer{0, transfer, false});
  }

  TraceDecoder decoder;
};

TEST_F(DecodeTest, RegistersOfEverySpace) {
  auto words = Set(zem::VendorXu, 1, {0x0A, 0x00, 0x56, 0x34, 0, 0, 0x12, 0});
  EXPECT_EQ(words.action, "set");
  EXPECT_EQ(words.unit, "vendor");
  EXPECT_EQ(words.selector, "1");
  EXPECT_EQ(words.control, "ISP command");
  EXPECT_EQ(words.command, "read register");
  EXPECT_EQ(words.place, "isp 0x123456");
  EXPECT_EQ(words.value, "");
  words = Get(zem::VendorXu, 2, {0, 0, 0x70, 0x51, 0, 0, 0, 0});
  EXPECT_EQ(words.action, "get");
  EXPECT_EQ(words.command, "read register");
  EXPECT_EQ(words.place, "isp 0x123456");
  EXPECT_EQ(words.status, "accepted (0x00)");
  EXPECT_EQ(words.value, "0x5170");
  EXPECT_EQ(words.result, "done");
  words = Set(zem::VendorXu, 1, {0x0A, 0x03, 0x12, 0x30, 0xEF, 0, 0, 0});
  EXPECT_EQ(words.command, "write register");
  EXPECT_EQ(words.place, "sensor 0x3012");
  EXPECT_EQ(words.value, "0x00EF");
  EXPECT_EQ(Get(zem::VendorXu, 2, {1, 0, 0, 0, 0, 0, 0, 0}).status, "refused (0x01)");
  EXPECT_EQ(Set(zem::VendorXu, 1, {0x0A, 0x04, 1, 0, 0, 0, 0, 0}).place, "vcm 0x0001");
  words = Set(zem::VendorXu, 4, {0xFF, 0x01, 0x12, 0x34, 0x56, 0, 0, 0});
  EXPECT_EQ(words.command, "write register");
  EXPECT_EQ(words.place, "codec 0x1234");
  EXPECT_EQ(words.value, "0x56");
}

TEST_F(DecodeTest, AnUpdate) {
  auto words = Set(zem::VendorXu, 4, {0x01, 0x00, 0x03, 0x05, 0x00, 0x28, 0, 0});
  EXPECT_EQ(words.command, "announce data");
  EXPECT_EQ(words.place, "03 05 (calibration)");
  EXPECT_EQ(words.value, "10240 bytes");
  EXPECT_EQ(Get(zem::VendorXu, 5, {0, 0, 0, 0, 0, 0, 0, 0}).status, "idle (0x00)");
  EXPECT_EQ(Set(zem::VendorXu, 13, std::vector<std::uint8_t>(512, 7)).bytes,
            "07 07 07 07 07 07 07 07 07 07 07 07 07 07 07 07 ...");
  EXPECT_EQ(Set(zem::VendorXu, 4, {0x01, 0x01, 0x03, 0x00, 0, 0, 0, 0}).command, "burn");
  EXPECT_EQ(Get(zem::VendorXu, 5, {0x81, 0, 0, 0, 0, 0, 0, 0}).status, "busy (0x81)");
  EXPECT_EQ(Get(zem::VendorXu, 5, {0x82, 0, 0, 0, 0, 0, 0, 0}).status, "failed (0x82)");
  words = Set(zem::VendorXu, 4, {0x01, 0x10, 0x00, 0x00, 0x0E, 0x00, 0x00, 0x10});
  EXPECT_EQ(words.command, "read flash");
  EXPECT_EQ(words.place, "0x0E0000");
  EXPECT_EQ(words.value, "4096 bytes");
  EXPECT_EQ(Set(zem::VendorXu, 4, {0x06, 0, 0, 0, 0, 0, 0, 0}).command, "firmware check sum");
  EXPECT_EQ(Get(zem::VendorXu, 5, {0x80, 0, 0, 0, 0, 0, 0, 0}).status, "wrong (0x80)");
}

TEST_F(DecodeTest, OtherUnitsAndBlocksThatAreTooShort) {
  std::vector<std::uint8_t> piece(32, 0);
  piece[0] = 0x1D;
  piece[2] = 0x9D;
  auto words = Set(zem::VendorXu, 16, piece);
  EXPECT_EQ(words.command, "ask for memory");
  EXPECT_EQ(words.place, "0x001D");
  EXPECT_EQ(words.value, "29 bytes");
  EXPECT_EQ(Set(zem::TirellaXu, 2, {1}).control, "LED");
  EXPECT_EQ(Get(zem::SkypeXu, 1, {19}).unit, "skype");
  for (const std::uint32_t selector : {1U, 4U, 6U, 14U, 16U}) {
    for (std::size_t length = 0; length < 8; ++length) {
      static_cast<void>(Set(zem::VendorXu, selector, std::vector<std::uint8_t>(length, 0x0A)));
      static_cast<void>(Set(zem::VendorXu, selector, std::vector<std::uint8_t>(length, 0x01)));
      static_cast<void>(Get(zem::VendorXu, selector + 1, std::vector<std::uint8_t>(length, 0)));
    }
  }
}

TEST_F(DecodeTest, ScsiCommands) {
  zemctl::ScsiCommand command;
  command.drive = "F:";
  command.cdb = {0xFA, 0x55, 0x66, 0x08, 0x00, 0x01, 0x00, 0x00, 0x00, 0x08, 0x80, 0, 0, 0, 0, 0};
  command.error = 1167;
  auto words = decoder.Decode(zemctl::TracedCommand{command});
  EXPECT_EQ(words.action, "out");
  EXPECT_EQ(words.command, "write storage");
  EXPECT_EQ(words.place, "0x00010000");
  EXPECT_EQ(words.value, "8 sectors");
  EXPECT_EQ(words.result, "the volume is gone, error 1167");
  command.cdb = {0x12, 0, 0, 0, 0x24, 0};
  command.isIn = true;
  command.error = 0;
  words = decoder.Decode(zemctl::TracedCommand{command});
  EXPECT_EQ(words.action, "in");
  EXPECT_EQ(words.command, "inquiry");
  EXPECT_EQ(words.status, "0x00");
  EXPECT_EQ(words.result, "done");
  command.cdb = {0xFA};
  EXPECT_EQ(decoder.Decode(zemctl::TracedCommand{command}).command, "");
}

}  // namespace
