// Commands without a handle: bytes, decoding, results, and how often the camera is opened.
#include <algorithm>
#include <array>
#include <functional>
#include <utility>

#include "tests/support/transfer_test.h"

namespace {

using zem::simulator::Fault;
using zem::testing::Bytes;
using zem::testing::CountingBytes;
using zem::testing::DisplayName;
using zem::testing::kFailedTransfer;
using zem::testing::Lines;
using zem::testing::SetLine;
using zem::testing::TransferTest;
using zem::testing::WideLines;

using ShortBlock = std::array<std::uint8_t, 8>;
using LongBlock = std::array<std::uint8_t, 16>;

// Failure by which the search for a camera ends when there is none.
constexpr auto kNoCamera = static_cast<ZemResult>(0x80004005U);

class StatelessTest : public TransferTest {
 protected:
  // How often the camera has been opened since the last call. Nothing may be open any more.
  std::size_t TakeOpenings() {
    EXPECT_EQ(zem::simulator::liveComObjects, 0);
    EXPECT_EQ(system().profileReads.size(), 2 * boundFilters.size()) << "two settings an opening";
    system().profileReads.clear();
    return std::exchange(boundFilters, {}).size();
  }
};

// A command that is answered with a status only.
struct StatusCommand {
  const char* name;
  std::function<ZemResult()> run;
  const char* wire;
};
void PrintTo(const StatusCommand& command, std::ostream* out) { *out << command.name; }

class StatelessStatusTest : public StatelessTest,
                            public ::testing::WithParamInterface<StatusCommand> {};

TEST_P(StatelessStatusTest, SendsTheCommandAndReadsTheReplyEachOnAnOpeningOfItsOwn) {
  EXPECT_EQ(GetParam().run(), 0);
  EXPECT_EQ(TakeWire(), (Lines{GetParam().wire, "get vendor 2 [8]"}));
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 8)});
  EXPECT_EQ(TakeOpenings(), 2U);
  EXPECT_EQ(system().comInitializations, 3) << "each opening, and the read once more";
  EXPECT_EQ(system().comUninitializations, 0);
}

TEST_P(StatelessStatusTest, Refusal) {
  vendor().Answer(2, {0x80});
  EXPECT_EQ(GetParam().run(), ZEM_E_DEVICE_REFUSED);
}

TEST_P(StatelessStatusTest, OneFailureAnywhere) {
  FailTransfer(1);
  EXPECT_EQ(GetParam().run(), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire().size(), 1U);
  EXPECT_EQ(TakeOpenings(), 1U);
  FailTransfer(2);
  EXPECT_EQ(GetParam().run(), 0) << "a reply that cannot be read looks like one of zeros";
  EXPECT_EQ(TakeOpenings(), 2U);
}

TEST_P(StatelessStatusTest, NoCamera) {
  ListNothing();
  EXPECT_EQ(GetParam().run(), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeDebuggerLines(), WideLines()) << "nothing was written";
}

INSTANTIATE_TEST_SUITE_P(
    Commands, StatelessStatusTest,
    ::testing::Values(
        StatusCommand{"DoAF", [] { return ZEMUVCEXT_DoAF(0x1234); },
                      "set vendor 1: 00 34 12 00 00 00 00 00"},
        StatusCommand{"SetFps", [] { return ZEMUVCEXT_SetFps(0x1234); },
                      "set vendor 1: 02 34 12 00 00 00 00 00"},
        StatusCommand{"SetResolution", [] { return ZEMUVCEXT_SetResolution(1280, 720); },
                      "set vendor 1: 03 a0 5a 00 00 00 00 00"},
        StatusCommand{"SetResolutionOf2048By4104",
                      [] { return ZEMUVCEXT_SetResolution(2048, 4104); },
                      "set vendor 1: 03 00 01 00 00 00 00 00"},
        StatusCommand{"SetResolutionBetweenEights",
                      [] { return ZEMUVCEXT_SetResolution(0xFFFFFFFF, 7); },
                      "set vendor 1: 03 ff 00 00 00 00 00 00"},
        StatusCommand{"SetIFrame", [] { return ZEMUVCEXT_SetIFrame(); },
                      "set vendor 1: 04 00 00 00 00 00 00 00"},
        StatusCommand{"SetVideoQuality", [] { return ZEMUVCEXT_SetVideoQuality(0xFE); },
                      "set vendor 1: 08 fe 00 00 00 00 00 00"},
        StatusCommand{"SetBitRate", [] { return ZEMUVCEXT_SetBitRate(0x1234); },
                      "set vendor 1: 08 ff 34 12 00 00 00 00"},
        StatusCommand{"SetFlickMode", [] { return ZEMUVCEXT_SetFlickMode(0xC1); },
                      "set vendor 1: 09 c1 00 00 00 00 00 00"},
        StatusCommand{"SetRegister", [] { return ZEMUVCEXT_SetRegister(0x1234, 0xAB); },
                      "set vendor 1: 0a 01 34 12 ab 00 00 00"},
        StatusCommand{"SetSensorRegister", [] { return ZEMUVCEXT_SetSensorRegister(0x1234, 0xAB); },
                      "set vendor 1: 0a 03 34 12 ab 00 00 00"},
        StatusCommand{"SetSensorRegisterW",
                      [] { return ZEMUVCEXT_SetSensorRegisterW(0x1234, 0xABCD); },
                      "set vendor 1: 0a 03 34 12 cd ab 00 00"},
        StatusCommand{"SetH264Mode", [] { return ZEMUVCEXT_SetH264Mode(0xC2); },
                      "set vendor 1: 0d c2 00 00 00 00 00 00"},
        StatusCommand{"SetWDR", [] { return ZEMUVCEXT_SetWDR(0xC3); },
                      "set vendor 1: 0e c3 00 00 00 00 00 00"}),
    [](const auto& parameters) { return parameters.param.name; });

// A command with an answer, of which as many bytes count as `answer` has.
struct Getter {
  const char* name;
  std::function<ZemResult(std::uint8_t* out)> run;
  const char* wire;
  Bytes answer;
};
void PrintTo(const Getter& getter, std::ostream* out) { *out << getter.name; }

std::uint16_t* Word(std::uint8_t* bytes) { return reinterpret_cast<std::uint16_t*>(bytes); }

class StatelessGetterTest : public StatelessTest, public ::testing::WithParamInterface<Getter> {
 protected:
  ZemResult Get() { return GetParam().run(out); }
  Bytes Out(std::size_t count) { return {out, out + count}; }

  alignas(8) std::uint8_t out[16] = {0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A,
                                     0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A};
};

TEST_P(StatelessGetterTest, SendsTheCommandAndDecodesTheReply) {
  vendor().Answer(2, {0, '2', '4', 'M', 'a', 'r', '0', '5'});
  EXPECT_EQ(Get(), 0);
  Bytes expected = GetParam().answer;
  expected.push_back(0x5A);
  EXPECT_EQ(Out(expected.size()), expected);
  EXPECT_EQ(TakeWire(), (Lines{GetParam().wire, "get vendor 2 [8]"}));
  EXPECT_EQ(TakeOpenings(), 2U);
}

TEST_P(StatelessGetterTest, RefusalLeavesTheOutput) {
  vendor().Answer(2, {1, 1, 2, 3, 4, 5, 6, 7});
  EXPECT_EQ(Get(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(Out(16), Bytes(16, 0x5A));
}

TEST_P(StatelessGetterTest, FailedCommandLeavesTheOutput) {
  FailTransfer(1);
  EXPECT_EQ(Get(), ZEM_E_NO_DEVICE);
  EXPECT_EQ(Out(16), Bytes(16, 0x5A));
  EXPECT_EQ(TakeWire().size(), 1U);
}

TEST_P(StatelessGetterTest, FailedReplyLooksLikeZeros) {
  FailTransfer(2);
  EXPECT_EQ(Get(), 0);
  EXPECT_NE(Out(1), Bytes{0x5A});
  EXPECT_EQ(TakeOpenings(), 2U);
}

TEST_P(StatelessGetterTest, NoCameraAndNullOutput) {
  EXPECT_EQ(GetParam().run(nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(TakeOpenings(), 0U);
  ListNothing();
  EXPECT_EQ(Get(), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), Lines());
}

INSTANTIATE_TEST_SUITE_P(
    Commands, StatelessGetterTest,
    ::testing::Values(
        Getter{"GetRegister",
               [](std::uint8_t* out) { return ZEMUVCEXT_GetRegister(0x1234, out); },
               "set vendor 1: 0a 00 34 12 00 00 00 00",
               {'4'}},
        Getter{"GetSensorRegister",
               [](std::uint8_t* out) { return ZEMUVCEXT_GetSensorRegister(0x1234, out); },
               "set vendor 1: 0a 02 34 12 00 00 00 00",
               {'4'}},
        Getter{"GetSensorRegisterW",
               [](std::uint8_t* out) { return ZEMUVCEXT_GetSensorRegisterW(0x1234, Word(out)); },
               "set vendor 1: 0a 02 34 12 00 00 00 00",
               {'4', 'M'}},
        Getter{"GetFWVersion",
               [](std::uint8_t* out) { return ZEMUVCEXT_GetFWVersion(out); },
               "set vendor 1: 0b 00 00 00 00 00 00 00",
               {'4', 'M', 'a', 'r', '0', '5'}},
        Getter{
            "GetFWBuildDay",
            [](std::uint8_t* out) { return ZEMUVCEXT_GetFWBuildDay(reinterpret_cast<char*>(out)); },
            "set vendor 1: 0c 00 00 00 00 00 00 00",
            {'2', '0', '2', '4', '.', 'M', 'a', 'r', '.', '0', '5', 0}}),
    [](const auto& parameters) { return parameters.param.name; });

// The caller's own blocks.
class StatelessRawTest : public StatelessTest {
 protected:
  ShortBlock command = {1, 2, 3, 4, 5, 6, 7, 8};
  ShortBlock reply = {0x5A, 0x5A};
  LongBlock longCommand = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  LongBlock longReply = {0x5A, 0x5A};
};

TEST_F(StatelessRawTest, IspCommand) {
  vendor().Answer(2, {0, 9, 8, 7, 6, 5, 4, 3});
  EXPECT_EQ(ZEMUVCEXT_IspCommand(command.data(), reply.data()), 0);
  EXPECT_EQ(reply, (ShortBlock{0, 9, 8, 7, 6, 5, 4, 3}));
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 01 02 03 04 05 06 07 08", "get vendor 2 [8]"}));
  EXPECT_EQ(TakeOpenings(), 2U);
}

TEST_F(StatelessRawTest, IspCommandRefused) {
  vendor().Answer(2, {0x80, 9});
  EXPECT_EQ(ZEMUVCEXT_IspCommand(command.data(), reply.data()), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(reply, (ShortBlock{0x80, 9})) << "handed out all the same";
}

TEST_F(StatelessRawTest, IspCommandEx) {
  vendor().Answer(7, {0, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 1, 2, 3, 4, 5});
  EXPECT_EQ(ZEMUVCEXT_IspCommandEx(longCommand.data(), longReply.data()), 0);
  EXPECT_EQ(longReply, (LongBlock{0, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 6: 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10",
                               "get vendor 7 [16]"}));
  vendor().Answer(7, {1});
  EXPECT_EQ(ZEMUVCEXT_IspCommandEx(longCommand.data(), longReply.data()), ZEM_E_DEVICE_REFUSED);
}

TEST_F(StatelessRawTest, VcpCommand) {
  vendor().Answer(5, {0, 9, 8, 7, 6, 5, 4, 3});
  EXPECT_EQ(ZEMUVCEXT_VcpCommand(command.data(), reply.data()), 0);
  EXPECT_EQ(reply, (ShortBlock{0, 9, 8, 7, 6, 5, 4, 3}));
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 01 02 03 04 05 06 07 08", "get vendor 5 [8]"}));
  vendor().Answer(5, {0x80});
  EXPECT_EQ(ZEMUVCEXT_VcpCommand(command.data(), reply.data()), ZEM_E_DEVICE_REFUSED);
}

TEST_F(StatelessRawTest, VcpCommandWithoutAReplyOnlySends) {
  EXPECT_EQ(ZEMUVCEXT_VcpCommand(command.data(), nullptr), 0);
  EXPECT_EQ(TakeWire(), Lines{"set vendor 4: 01 02 03 04 05 06 07 08"});
  EXPECT_EQ(TakeOpenings(), 1U);
  FailTransfer(1);
  EXPECT_EQ(ZEMUVCEXT_VcpCommand(command.data(), nullptr), ZEM_E_NO_DEVICE);
}

TEST_F(StatelessRawTest, OneFailureAnywhere) {
  const std::vector<std::function<ZemResult()>> commands = {
      [&] { return ZEMUVCEXT_IspCommand(command.data(), reply.data()); },
      [&] { return ZEMUVCEXT_VcpCommand(command.data(), reply.data()); },
      [&] { return ZEMUVCEXT_IspCommandEx(longCommand.data(), longReply.data()); }};
  for (const auto& send : commands) {
    reply = {0x5A};
    longReply = {0x5A};
    TakeWire();
    FailTransfer(1);
    EXPECT_EQ(send(), ZEM_E_NO_DEVICE);
    EXPECT_EQ(TakeWire().size(), 1U);
    EXPECT_EQ(reply[0], 0x5A);
    EXPECT_EQ(longReply[0], 0x5A);
    FailTransfer(2);
    EXPECT_EQ(send(), 0);
    EXPECT_TRUE(reply == ShortBlock{} || longReply == LongBlock{})
        << "zeros where nothing was read";
  }
  ListNothing();
  for (const auto& send : commands) {
    EXPECT_EQ(send(), ZEM_E_NO_DEVICE);
  }
  List(DisplayName(0x5A45, 0x8C00), std::make_shared<zem::simulator::Camera>());
  for (const auto& send : commands) {
    EXPECT_EQ(send(), ZEM_E_NO_DEVICE) << "a camera without the unit";
  }
}

TEST_F(StatelessRawTest, NullPointers) {
  EXPECT_EQ(ZEMUVCEXT_IspCommand(nullptr, reply.data()), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMUVCEXT_IspCommand(command.data(), nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMUVCEXT_IspCommandEx(nullptr, longReply.data()), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMUVCEXT_IspCommandEx(longCommand.data(), nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMUVCEXT_VcpCommand(nullptr, reply.data()), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMUVCEXT_VcpCommand(nullptr, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMUVCEXT_GetChipInfo(nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeOpenings(), 0U);
}

TEST_F(StatelessRawTest, ChipInfo) {
  const Bytes info = CountingBytes(16);
  vendor().Answer(10, info);
  EXPECT_EQ(ZEMUVCEXT_GetChipInfo(longReply.data()), 0);
  EXPECT_EQ(Bytes(longReply.begin(), longReply.end()), info);
  EXPECT_EQ(TakeWire(), Lines{"get vendor 10 [16]"});
  EXPECT_EQ(TakeOpenings(), 1U);
}

TEST_F(StatelessRawTest, ChipInfoThatCannotBeRead) {
  longReply.fill(0x5A);
  FailTransfer(1);
  EXPECT_EQ(ZEMUVCEXT_GetChipInfo(longReply.data()), ZEM_E_NO_DEVICE);
  ListNothing();
  EXPECT_EQ(ZEMUVCEXT_GetChipInfo(longReply.data()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(longReply[0], 0x5A);
}

TEST_F(StatelessRawTest, ChipInfoReadWithAPositiveResult) {
  vendor().Answer(10, CountingBytes(16));
  gate.EndTransfer(1, 1);
  EXPECT_EQ(ZEMUVCEXT_GetChipInfo(longReply.data()), 0);
  EXPECT_EQ(Bytes(longReply.begin(), longReply.end()), CountingBytes(16));
}

TEST_F(StatelessRawTest, ChipInfoThatAFailedReadBrings) {
  vendor().Answer(10, CountingBytes(16));
  longReply.fill(0x5A);
  gate.EndTransfer(1, kFailedTransfer);
  EXPECT_EQ(ZEMUVCEXT_GetChipInfo(longReply.data()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(Bytes(longReply.begin(), longReply.end()), Bytes(16, 0x5A));
}

// The processor's memory, 16 bytes an access.
class StatelessMemoryTest : public StatelessTest {
 protected:
  Bytes data = CountingBytes(64);
};

constexpr const char* kPiece = "set vendor 9: 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10";

TEST_F(StatelessMemoryTest, WriteSendsPiecesOf16WithAPaddedLast) {
  EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(data.data(), 20), 0);
  EXPECT_EQ(TakeWire(),
            (Lines{kPiece, "set vendor 9: 11 12 13 14 00 00 00 00 00 00 00 00 00 00 00 00"}));
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(0, 16), SetLine(0, 16)}));
  EXPECT_EQ(TakeOpenings(), 2U);
}

TEST_F(StatelessMemoryTest, WriteStopsAfterThePieceThatTakesTheRest) {
  EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(data.data(), 32), 0);
  EXPECT_EQ(TakeWire().size(), 2U);
  EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(data.data(), 16), 0);
  EXPECT_EQ(TakeWire(), Lines{kPiece});
  EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(data.data(), 17), 0);
  EXPECT_EQ(TakeWire(),
            (Lines{kPiece, "set vendor 9: 11 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"}));
}

TEST_F(StatelessMemoryTest, NegativeLengthSendsOneWholePiece) {
  for (const std::int32_t length : {-1, -16, -2147483647 - 1}) {
    EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(data.data(), length), 0);
    EXPECT_EQ(TakeWire(), Lines{kPiece});
  }
  FailTransfer(1);
  EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(data.data(), -1), kFailedTransfer);
}

TEST_F(StatelessMemoryTest, LengthOf0OpensNothing) {
  EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(data.data(), 0), 0);
  EXPECT_EQ(ZEMUVCEXT_IspCmdReadMem(data.data(), 0), 0);
  EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(nullptr, 0), 0);
  EXPECT_EQ(ZEMUVCEXT_IspCmdReadMem(nullptr, 0), 0);
  EXPECT_EQ(TakeOpenings(), 0U);
}

TEST_F(StatelessMemoryTest, FailureOfAnyPieceIsReturnedAsItIsAndEndsTheWrite) {
  for (std::uint32_t k = 1; k <= 3; ++k) {
    FailTransfer(k);
    EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(data.data(), 40), kFailedTransfer) << k;
    EXPECT_EQ(TakeWire().size(), k);
    EXPECT_EQ(TakeOpenings(), k);
  }
}

TEST_F(StatelessMemoryTest, ReadFetchesPiecesOf16) {
  vendor().Answer(8, Bytes(16, 0xA1));
  vendor().Answer(8, Bytes(16, 0xA2));
  Bytes buffer(24, 0x5A);
  EXPECT_EQ(ZEMUVCEXT_IspCmdReadMem(buffer.data(), 20), 0);
  Bytes expected(16, 0xA1);
  expected.insert(expected.end(), {0xA2, 0xA2, 0xA2, 0xA2, 0x5A, 0x5A, 0x5A, 0x5A});
  EXPECT_EQ(buffer, expected);
  EXPECT_EQ(TakeWire(), (Lines{"get vendor 8 [16]", "get vendor 8 [16]"}));
  EXPECT_EQ(TakeOpenings(), 2U);
  EXPECT_EQ(ZEMUVCEXT_IspCmdReadMem(buffer.data(), 16), 0);
  EXPECT_EQ(TakeWire().size(), 1U);
  EXPECT_EQ(ZEMUVCEXT_IspCmdReadMem(buffer.data(), 17), 0);
  EXPECT_EQ(TakeWire().size(), 2U);
}

TEST_F(StatelessMemoryTest, FailureOfAnyPieceIsReturnedAsItIsAndEndsTheRead) {
  for (std::uint32_t k = 1; k <= 3; ++k) {
    vendor().AlwaysAnswer(8, Bytes(16, 0xA1));
    FailTransfer(k);
    Bytes buffer(40, 0x5A);
    EXPECT_EQ(ZEMUVCEXT_IspCmdReadMem(buffer.data(), 40), kFailedTransfer) << k;
    Bytes expected(std::size_t{16} * (k - 1), 0xA1);
    expected.resize(std::min(std::size_t{16} * k, std::size_t{40}), 0);
    expected.resize(40, 0x5A);
    EXPECT_EQ(buffer, expected) << k << ": zeros where the failing piece belongs";
    EXPECT_EQ(TakeWire().size(), k);
    EXPECT_EQ(TakeOpenings(), k);
  }
}

TEST_F(StatelessMemoryTest, AnyResultBut0OfAPieceIsReturnedAsItIsAndEndsTheWrite) {
  for (const ZemResult result : {ZemResult{1}, ZemResult{0x7FFFFFFF}, kFailedTransfer}) {
    for (std::uint32_t k = 1; k <= 3; ++k) {
      gate.EndTransfer(k, result);
      EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(data.data(), 40), result) << k;
      EXPECT_EQ(TakeWire().size(), k);
    }
    gate.EndTransfer(1, result);
    EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(data.data(), -1), result);
    EXPECT_EQ(TakeWire(), Lines{kPiece});
  }
}

TEST_F(StatelessMemoryTest, AnyResultBut0OfAPieceIsReturnedAsItIsWithThePieceCopied) {
  vendor().AlwaysAnswer(8, Bytes(16, 0xA1));
  for (const ZemResult result : {ZemResult{1}, ZemResult{0x7FFFFFFF}, kFailedTransfer}) {
    for (std::uint32_t k = 1; k <= 3; ++k) {
      gate.EndTransfer(k, result);
      Bytes buffer(40, 0x5A);
      EXPECT_EQ(ZEMUVCEXT_IspCmdReadMem(buffer.data(), 40), result) << k;
      Bytes expected(std::min(std::size_t{16} * k, std::size_t{40}), 0xA1);
      expected.resize(40, 0x5A);
      EXPECT_EQ(buffer, expected) << k;
      EXPECT_EQ(TakeWire().size(), k);
    }
  }
}

TEST_F(StatelessMemoryTest, NoCamera) {
  ListNothing();
  EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(data.data(), 40), kNoCamera);
  EXPECT_EQ(ZEMUVCEXT_IspCmdReadMem(data.data(), 40), kNoCamera);
}

TEST_F(StatelessMemoryTest, NullPointers) {
  EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(nullptr, 1), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(nullptr, -1), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMUVCEXT_IspCmdReadMem(nullptr, 1), ZEM_E_REFUSED);
  EXPECT_EQ(TakeOpenings(), 0U);
}

}  // namespace
