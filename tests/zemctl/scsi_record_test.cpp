// What the commands to a volume are called, and which of them were lost.
#include "tools/zemctl/camera/scsi_record.h"

#include <gtest/gtest.h>

namespace {

using zemctl::FindScsiLoss;
using zemctl::ScsiCommand;
using zemctl::ScsiRecord;

using Bytes = std::vector<std::uint8_t>;

Bytes Vendor(Bytes parameters) {
  Bytes cdb = {0xFA, 0x55, 0x66};
  cdb.insert(cdb.end(), parameters.begin(), parameters.end());
  cdb.resize(16);
  return cdb;
}

ScsiCommand Out(const Bytes& cdb, std::uint32_t length, std::uint32_t error = 0) {
  ScsiCommand command;
  command.drive = "F:";
  command.cdb = cdb;
  command.length = length;
  command.error = error;
  return command;
}

ScsiCommand In(const Bytes& cdb, std::uint32_t length, std::size_t came) {
  ScsiCommand command = Out(cdb, length);
  command.isIn = true;
  command.data.resize(came);
  return command;
}

const Bytes kWriteFirst = Vendor({0x08, 0, 0, 0, 0, 0, 1});
const Bytes kWriteSecond = Vendor({0x08, 0, 0, 2, 0, 0, 1});
const Bytes kWriteBoth = Vendor({0x08, 0, 0, 0, 0, 0, 2});

std::string LossOf(const std::vector<ScsiCommand>& commands) {
  const auto loss = FindScsiLoss(commands);
  return loss ? NameOf(*loss) + ": " + FailureOf(*loss) : "none";
}

TEST(ScsiRecordTest, CommandsHaveNames) {
  EXPECT_EQ(NameOf(Out(Vendor({0x08, 0x00, 0x01, 0x02, 0x03}), 512)),
            "write storage 0x00010203 (512 bytes)");
  EXPECT_EQ(NameOf(In(Vendor({0x07, 0xFF, 0xFF, 0xFE, 0x00}), 1024, 0)),
            "read storage 0xFFFFFE00 (1024 bytes)");
  EXPECT_EQ(NameOf(Out(Vendor({0x21}), 0)), "reset");
  EXPECT_EQ(NameOf(In({0x12, 0, 0, 0, 0x24, 0}, 36, 36)), "inquiry (36 bytes)");
  EXPECT_EQ(NameOf(Out(Vendor({0x7F}), 0)), "command");
  EXPECT_EQ(NameOf(Out({0xFA, 0x55, 0x67, 0x21}, 0)), "command");
}

TEST(ScsiRecordTest, FailuresAreToldApart) {
  EXPECT_EQ(FailureOf(Out(kWriteFirst, 512, 1117)), "error 1117");
  EXPECT_EQ(FailureOf(Out(kWriteFirst, 512, 1167)), "the volume is gone, error 1167");
  ScsiCommand refused = Out(kWriteFirst, 512);
  refused.status = 2;
  EXPECT_EQ(FailureOf(refused), "SCSI status 2");
  EXPECT_EQ(FailureOf(In(Vendor({0x04}), 1, 0)), "0 of 1 bytes came");
}

TEST(ScsiRecordTest, WhatFailedIsLostUnlessItWasRepeated) {
  EXPECT_EQ(LossOf({Out(kWriteFirst, 512)}), "none");
  EXPECT_EQ(LossOf({Out(kWriteFirst, 512, 31)}), "write storage 0x00000000 (512 bytes): error 31");
  EXPECT_EQ(LossOf({Out(kWriteFirst, 512, 31), Out(kWriteFirst, 512)}), "none");
  EXPECT_EQ(LossOf({Out(kWriteFirst, 512), Out(kWriteFirst, 512, 31)}),
            "write storage 0x00000000 (512 bytes): error 31");
  EXPECT_EQ(LossOf({Out(Vendor({0x0F}), 4, 5), Out(Vendor({0x21}), 0)}),
            "set address divider (4 bytes): error 5");
}

TEST(ScsiRecordTest, AWriteMakesGoodWhatItCovers) {
  EXPECT_EQ(LossOf({Out(kWriteFirst, 512, 5), Out(kWriteBoth, 0x20200)}), "none");
  EXPECT_EQ(LossOf({Out(kWriteFirst, 512, 5), Out(kWriteSecond, 512)}),
            "write storage 0x00000000 (512 bytes): error 5");
  EXPECT_EQ(LossOf({Out(kWriteBoth, 1024, 5), Out(kWriteFirst, 512)}),
            "write storage 0x00000000 (1024 bytes): error 5");
  ScsiCommand elsewhere = Out(kWriteFirst, 512);
  elsewhere.drive = "G:";
  EXPECT_EQ(LossOf({Out(kWriteFirst, 512, 5), elsewhere}),
            "write storage 0x00000000 (512 bytes): error 5");
}

TEST(ScsiRecordTest, AnAnswerThatIsTooShortIsLost) {
  EXPECT_EQ(LossOf({In(Vendor({0x07}), 512, 511)}),
            "read storage 0x00000000 (512 bytes): 511 of 512 bytes came");
  EXPECT_EQ(LossOf({In(Vendor({0x07}), 512, 512)}), "none");
  // What a selection answers is of no meaning.
  EXPECT_EQ(LossOf({In(Vendor({0x06, 0x05}), 4, 0)}), "none");
}

TEST(ScsiRecordTest, ASearchMayFail) {
  ScsiCommand inquiry = In({0x12, 0, 0, 0, 0x24, 0}, 36, 0);
  inquiry.error = 1;
  ScsiCommand identify = In(Vendor({0x01}), 16, 0);
  identify.error = 1117;
  EXPECT_EQ(LossOf({inquiry, identify}), "none");
}

// Of the volumes that could not be opened those count that are there.
TEST(ScsiRecordTest, KeepsWhichVolumesWereRefusedLast) {
  ScsiRecord record([] { return 0; }, [] { return false; });
  record.NoteOpening("C:", {5, "/dev/sg0"});
  record.NoteOpening("D:", {zemctl::kNoSuchVolume});
  record.NoteOpening("E:", {1167, "/dev/sg2"});
  record.NoteOpening("F:", {170, "/dev/sg3"});
  record.NoteOpening("G:", {});
  ASSERT_EQ(record.refusals().size(), 2U);
  EXPECT_EQ(record.refusals().at("C:").error, 5U);
  EXPECT_EQ(record.refusals().at("C:").path, "/dev/sg0");
  EXPECT_EQ(record.refusals().at("F:").error, 170U);
  record.NoteOpening("C:", {});
  record.NoteOpening("F:", {zemctl::kNoSuchVolume});
  EXPECT_TRUE(record.refusals().empty());
}

}  // namespace
