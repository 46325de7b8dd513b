// The lines of what reaches a camera.
#include "tools/usb_camera/transfer_log.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace {

using zem::simulator::ScsiOutcome;
using zem::simulator::usb::Answer;
using zem::simulator::usb::SetupPacket;
using zem::simulator::usb::StallReason;
using zem::usb_camera::CommandLine;
using zem::usb_camera::ControlLine;
using zem::usb_camera::TransferLog;

using Bytes = std::vector<std::uint8_t>;

constexpr SetupPacket kGet = {0xA1, 0x81, 0, 2, 0, 3, 8, 0};
constexpr SetupPacket kSet = {0x21, 0x01, 0, 16, 0, 12, 2, 0};

TEST(TransferLogTest, ControlTransfers) {
  EXPECT_EQ(ControlLine(1, kGet, {}, Answer::Done({0x0A, 0xFF})),
            "1 control a181000200030800 in 3 2 - done 0aff");
  EXPECT_EQ(ControlLine(2, kSet, Bytes{1, 2}, Answer::Done()),
            "2 control 21010010000c0200 out 12 16 0102 done -");
  EXPECT_EQ(ControlLine(1, {0x80, 6, 0, 1, 0, 0, 18, 0}, {}, Answer::Done({18, 1})),
            "1 control 8006000100001200 in - - - done 1201");
}

TEST(TransferLogTest, HowTheyEnd) {
  EXPECT_EQ(ControlLine(1, kGet, {}, Answer::Stalled(StallReason::kInvalidRequest)),
            "1 control a181000200030800 in 3 2 - stall:7 -");
  EXPECT_EQ(ControlLine(1, kGet, {}, Answer::TooMuch({1})),
            "1 control a181000200030800 in 3 2 - too-much 01");
  EXPECT_EQ(ControlLine(1, kSet, Bytes{1, 2}, Answer::Silent()),
            "1 control 21010010000c0200 out 12 16 0102 silent -");
  EXPECT_EQ(ControlLine(1, kGet, {}, Answer::Gone()), "1 control a181000200030800 in 3 2 - gone -");
}

TEST(TransferLogTest, CommandsOfTheBootLoader) {
  EXPECT_EQ(CommandLine(1, {{0xFA, 0x55, 0x66, 4}, true, {0x5A}, ScsiOutcome::kDone}),
            "1 scsi fa556604 in done 5a");
  EXPECT_EQ(CommandLine(1, {{0xFA}, false, {}, ScsiOutcome::kRefused}), "1 scsi fa out refused -");
  EXPECT_EQ(CommandLine(1, {{0xFA}, false, {}, ScsiOutcome::kFailed}), "1 scsi fa out failed -");
  EXPECT_EQ(CommandLine(1, {{0xFA}, false, {}, ScsiOutcome::kSilent}), "1 scsi fa out silent -");
  EXPECT_EQ(CommandLine(3, {{0xFA}, false, {}, ScsiOutcome::kGone}), "3 scsi fa out gone -");
}

TEST(TransferLogTest, AFileThatIsWrittenAsTheyCome) {
  const zem::testing::TemporaryFolder folder;
  folder.Write("log", {'o', 'l', 'd'});
  TransferLog log(folder.path() / "log");
  log.Write("one");
  log.Write("two");
  const Bytes written = folder.Read("log");
  EXPECT_EQ(std::string(written.begin(), written.end()), "one\ntwo\n");
  EXPECT_THROW(TransferLog(folder.path() / "none" / "log"), std::runtime_error);
}

}  // namespace
