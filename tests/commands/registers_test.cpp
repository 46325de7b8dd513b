// The register exports: bytes on the wire, decoding, results.
#include "tests/support/device_test.h"
#include "tests/support/stack_pattern.h"

namespace {

using zem::testing::DeviceTest;
using zem::testing::Lines;

using RegisterTest = DeviceTest;

TEST_F(RegisterTest, SetRegisterPutsTheThirdAddressByteBehindTheValue) {
  EXPECT_EQ(ZEMAPI_SetRegister(handle(), 0x00123456, 0xABCD), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 0a 01 56 34 cd ab 12 00", "get vendor 2 [8]"}));
}

TEST_F(RegisterTest, SetRegisterDoesNotSendAddressBits24To31) {
  EXPECT_EQ(ZEMAPI_SetRegister(handle(), 0xFF123456, 1), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 0a 01 56 34 01 00 12 00", "get vendor 2 [8]"}));
}

TEST_F(RegisterTest, GetRegisterReadsReplyBytes2And3) {
  vendor().Answer(2, {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77});
  unsigned short value = 0xFFFF;
  EXPECT_EQ(ZEMAPI_GetRegister(handle(), 0x123456, &value), 0);
  EXPECT_EQ(value, 0x3322);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 0a 00 56 34 00 00 12 00", "get vendor 2 [8]"}));
}

TEST_F(RegisterTest, SetSensorRegisterSendsOneValueByte) {
  EXPECT_EQ(ZEMAPI_SetSensorRegister(handle(), 0x3012, 0xEF), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 0a 03 12 30 ef 00 00 00", "get vendor 2 [8]"}));
}

TEST_F(RegisterTest, SetSensorRegisterWSendsTwoValueBytes) {
  EXPECT_EQ(ZEMAPI_SetSensorRegisterW(handle(), 0x3012, 0xBEEF), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 0a 03 12 30 ef be 00 00", "get vendor 2 [8]"}));
}

TEST_F(RegisterTest, GetSensorRegisterReturnsReplyByte2) {
  vendor().Answer(2, {0, 1, 0x22, 0x33, 4, 5, 6, 7});
  unsigned char value = 0;
  EXPECT_EQ(ZEMAPI_GetSensorRegister(handle(), 0x3012, &value), 0);
  EXPECT_EQ(value, 0x22);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 0a 02 12 30 00 00 00 00", "get vendor 2 [8]"}));
}

TEST_F(RegisterTest, GetSensorRegisterWReturnsReplyBytes2And3OfTheSameRequest) {
  vendor().Answer(2, {0, 1, 0x22, 0x33, 4, 5, 6, 7});
  unsigned short value = 0;
  EXPECT_EQ(ZEMAPI_GetSensorRegisterW(handle(), 0x3012, &value), 0);
  EXPECT_EQ(value, 0x3322);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 0a 02 12 30 00 00 00 00", "get vendor 2 [8]"}));
}

TEST_F(RegisterTest, SetVCMRegister) {
  EXPECT_EQ(ZEMAPI_SetVCMRegister(handle(), 0x0102, 0x0304), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 0a 05 02 01 04 03 00 00", "get vendor 2 [8]"}));
}

TEST_F(RegisterTest, GetVCMRegister) {
  vendor().Answer(2, {0, 1, 0x22, 0x33, 4, 5, 6, 7});
  unsigned short value = 0;
  EXPECT_EQ(ZEMAPI_GetVCMRegister(handle(), 0x0102, &value), 0);
  EXPECT_EQ(value, 0x3322);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 0a 04 02 01 00 00 00 00", "get vendor 2 [8]"}));
}

TEST_F(RegisterTest, SetLensPosSendsThePositionInBytes4To7) {
  EXPECT_EQ(ZEMAPI_SetLensPos(handle(), 0x01020304), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 00 00 00 00 04 03 02 01", "get vendor 2 [8]"}));
}

TEST_F(RegisterTest, ReadCodecRegSelectsAndSendsTheNumberBigEndian) {
  vendor().Answer(5, {0x77, 1, 0x5C, 3, 4, 5, 6, 7});
  unsigned char value = 0;
  EXPECT_EQ(ZEMAPI_ReadCodecReg(handle(), 0x1234, &value), 0) << "the status byte is not tested";
  EXPECT_EQ(value, 0x5C);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: ff 00 14 00 00 00 00 00",
                               "set vendor 4: ff 02 12 34 00 00 00 00", "get vendor 5 [8]"}));
}

TEST_F(RegisterTest, WriteCodecRegReadsNoReply) {
  EXPECT_EQ(ZEMAPI_WriteCodecReg(handle(), 0x1234, 0x9A), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: ff 00 14 00 00 00 00 00",
                               "set vendor 4: ff 01 12 34 9a 00 00 00"}));
}

TEST_F(RegisterTest, ShortRepliesAreFilledUpWithZeros) {
  handle();
  unsigned short word = 0xFFFF;
  vendor().Answer(2, {0x00, 0x11, 0x22});
  zem::testing::FillStackBelow();
  EXPECT_EQ(ZEMAPI_GetRegister(handle(), 1, &word), 0);
  EXPECT_EQ(word, 0x0022);
  unsigned char byte = 0xFF;
  vendor().Answer(5, {0x00, 0x11});
  zem::testing::FillStackBelow();
  EXPECT_EQ(ZEMAPI_ReadCodecReg(handle(), 1, &byte), 0);
  EXPECT_EQ(byte, 0);
}

TEST_F(RegisterTest, ReadsWithPositiveResultsHandOutTheReply) {
  handle();
  vendor().AlwaysAnswer(2, {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77});
  gate.AnswerEverything(7);
  unsigned short word = 0;
  EXPECT_EQ(ZEMAPI_GetRegister(handle(), 1, &word), 0);
  EXPECT_EQ(word, 0x3322);
  unsigned char byte = 0;
  EXPECT_EQ(ZEMAPI_GetSensorRegister(handle(), 1, &byte), 0);
  EXPECT_EQ(byte, 0x22);
  word = 0;
  EXPECT_EQ(ZEMAPI_GetSensorRegisterW(handle(), 1, &word), 0);
  EXPECT_EQ(word, 0x3322);
  word = 0;
  EXPECT_EQ(ZEMAPI_GetVCMRegister(handle(), 1, &word), 0);
  EXPECT_EQ(word, 0x3322);
}

TEST_F(RegisterTest, CodecAccessWithPositiveResultsIsASuccess) {
  handle();
  vendor().Answer(5, {0, 1, 0x5C, 3, 4, 5, 6, 7});
  gate.AnswerEverything(7);
  unsigned char value = 0;
  EXPECT_EQ(ZEMAPI_ReadCodecReg(handle(), 1, &value), 0);
  EXPECT_EQ(value, 0x5C);
  EXPECT_EQ(TakeWire().size(), 3U);
  EXPECT_EQ(ZEMAPI_WriteCodecReg(handle(), 1, 2), 0);
  EXPECT_EQ(TakeWire().size(), 2U);
}

}  // namespace
