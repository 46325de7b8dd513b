// The words on how far a command has come with a camera in ROM boot.
#include "tools/zemctl/rom_boot/rom_trail.h"

#include <gtest/gtest.h>

namespace {

using zemctl::Bytes;
using zemctl::PlannedWrite;
using zemctl::RomTrail;
using zemctl::ScsiCommand;

constexpr std::uint32_t kGoneError = 1167;

ScsiCommand Command(const Bytes& parameters, std::uint32_t length, std::uint32_t error = 0) {
  ScsiCommand command;
  command.drive = "F:";
  command.cdb = {0xFA, 0x55, 0x66};
  command.cdb.insert(command.cdb.end(), parameters.begin(), parameters.end());
  command.cdb.resize(16);
  command.length = length;
  command.error = error;
  return command;
}

ScsiCommand Identified(const Bytes& answer) {
  ScsiCommand command = Command({0x01}, 16);
  command.isIn = true;
  command.data = answer;
  command.data.resize(16);
  return command;
}

const ScsiCommand kBootLoaderAnswers = Identified({0xAA, 0x55, 0, 0, 'V', 'S', 'N', '3'});
const ScsiCommand kStorageAnswers = Identified({0, 0, 0, 0, 0, 0, 0, 0, 0, 'Z', 'E', 'M'});
const ScsiCommand kJump = Command({0x03}, 0);

// An erase, a payload of three commands, a header block.
const ScsiCommand kErase = Command({0x08, 0, 0, 0, 0, 0, 8}, 4096);
const ScsiCommand kPayload1 = Command({0x08, 0, 0, 0x10, 0, 0, 64}, 32768);
const ScsiCommand kPayload2 = Command({0x08, 0, 0, 0x90, 0, 0, 64}, 32768);
const ScsiCommand kPayload3 = Command({0x08, 0, 1, 0x10, 0, 0, 1}, 512);

void PlanBurn(RomTrail& trail) {
  PlannedWrite erase = {"erase", 0, Bytes(4096), true, 0};
  trail.PlanWrites("sf", {erase,
                          {"payload", 0x1000, Bytes(65600), false, 0},
                          {"header block", 0, Bytes(4096), false, 0}});
}

std::string StateAfter(RomTrail& trail, const std::vector<ScsiCommand>& commands) {
  for (const ScsiCommand& command : commands) {
    trail.OnCommand(command);
  }
  return trail.State();
}

TEST(RomTrailTest, WhoAnswered) {
  RomTrail trail;
  EXPECT_EQ(trail.State(), "no volume has answered");
  EXPECT_FALSE(trail.hasBegun());
  EXPECT_EQ(StateAfter(trail, {kBootLoaderAnswers}), "in ROM boot at F: (boot loader VSN3)");
  EXPECT_TRUE(trail.hasBegun());
  EXPECT_EQ(StateAfter(trail, {kStorageAnswers}), "in ROM boot at F: (ZEM storage)");
  EXPECT_EQ(StateAfter(trail, {Command({0x04}, 1, kGoneError)}), "its volume F: is gone");
  EXPECT_EQ(StateAfter(trail, {kStorageAnswers}), "in ROM boot at F: (ZEM storage)");
  EXPECT_EQ(StateAfter(trail, {Command({0x21}, 0)}), "it was told to restart");
  EXPECT_EQ(StateAfter(trail, {kBootLoaderAnswers}), "in ROM boot at F: (boot loader VSN3)");
}

TEST(RomTrailTest, AnswersOfOthersAreNone) {
  ScsiCommand failed = kBootLoaderAnswers;
  failed.error = 5;
  RomTrail trail;
  EXPECT_EQ(StateAfter(trail, {failed, Identified({0x33}), Identified({0xAA, 0x54})}),
            "no volume has answered");
}

TEST(RomTrailTest, ARunningCameraThatIsSentThere) {
  RomTrail trail;
  PlanBurn(trail);
  trail.OnRunning();
  EXPECT_EQ(trail.State(), "it runs its firmware; nothing was erased or written in the storage sf");
  trail.OnEntered();
  EXPECT_EQ(trail.State(),
            "it was sent into ROM boot, and no volume has answered yet; nothing was erased or "
            "written in the storage sf");
  EXPECT_TRUE(trail.hasEntered());
}

TEST(RomTrailTest, CodeThatIsLoaded) {
  RomTrail trail;
  trail.PlanCode(33000);
  EXPECT_EQ(StateAfter(trail, {kBootLoaderAnswers}), "in ROM boot at F: (boot loader VSN3)");
  EXPECT_EQ(StateAfter(trail, {Command({0x02, 0, 64}, 32768)}),
            "in ROM boot at F: (boot loader VSN3); the code was not started, 32768 of 33000 bytes "
            "of it loaded");
  // The last sector is filled up.
  EXPECT_EQ(StateAfter(trail, {Command({0x02, 0, 1}, 512)}),
            "in ROM boot at F: (boot loader VSN3); the code was not started, 33000 of 33000 bytes "
            "of it loaded");
  EXPECT_EQ(trail.loadedBytes(), 33280U);
  EXPECT_EQ(StateAfter(trail, {kJump}),
            "no volume has answered since the loaded code was started; the code was loaded and "
            "started");
  EXPECT_EQ(StateAfter(trail, {kStorageAnswers}),
            "in ROM boot at F: (ZEM storage); the code was loaded and started");
}

TEST(RomTrailTest, CodeThatWasStartedInPart) {
  RomTrail trail;
  trail.PlanCode(33000);
  EXPECT_EQ(StateAfter(trail, {Command({0x02, 0, 64}, 32768), kJump}),
            "no volume has answered since the loaded code was started; the code was started with "
            "32768 of 33000 bytes of it loaded");
}

TEST(RomTrailTest, WhatTheStorageHolds) {
  RomTrail trail;
  PlanBurn(trail);
  EXPECT_EQ(trail.plannedBytes(), 4096U + 66048U + 4096U);
  EXPECT_EQ(StateAfter(trail, {kStorageAnswers}),
            "in ROM boot at F: (ZEM storage); nothing was erased or written in the storage sf");
  EXPECT_EQ(StateAfter(trail, {kErase, kPayload1}),
            "in ROM boot at F: (ZEM storage); the storage sf holds 2 of 5 pieces (erased, payload "
            "32768 of 66048 bytes, header block not written)");
  EXPECT_EQ(trail.writtenBytes(), 36864U);
  EXPECT_EQ(StateAfter(trail, {kPayload2, kPayload3, kErase}),
            "in ROM boot at F: (ZEM storage); the storage sf holds 5 of 5 pieces (erased, payload "
            "written, header block written)");
  EXPECT_EQ(trail.writtenBytes(), trail.plannedBytes());
}

// The erase and the header block look the same: an erase that was lost is not made good by it.
TEST(RomTrailTest, APieceThatWasLeftOut) {
  RomTrail trail;
  PlanBurn(trail);
  ScsiCommand lost = kErase;
  lost.error = 5;
  EXPECT_EQ(StateAfter(trail, {kStorageAnswers, lost, kPayload1, kPayload2, kPayload3, kErase}),
            "in ROM boot at F: (ZEM storage); the storage sf holds 4 of 5 pieces (0 of 4096 bytes "
            "erased, payload written, header block written)");
}

TEST(RomTrailTest, ALongEraseThatBreaksOff) {
  RomTrail trail;
  trail.PlanWrites("emmc", {{"erase", 0, Bytes(65536), true, 0}});
  EXPECT_EQ(StateAfter(trail, {kStorageAnswers, Command({0x08, 0, 0, 0, 0, 0, 64}, 32768),
                               Command({0x08, 0, 0, 0x80, 0, 0, 64}, 32768, kGoneError)}),
            "its volume F: is gone; the storage emmc holds 1 of 2 pieces (32768 of 65536 bytes "
            "erased)");
}

}  // namespace
