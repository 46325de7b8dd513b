// What the update procedures have in common, with a handle or without: what they send, how they
// wait, what they return.
#include <optional>

#include "tests/support/transfer_test.h"

namespace {

using zem::simulator::Fault;
using zem::testing::Bytes;
using zem::testing::ChunkLine;
using zem::testing::CountingBytes;
using zem::testing::Failed;
using zem::testing::kFailedTransfer;
using zem::testing::kPoll;
using zem::testing::kStatus;
using zem::testing::Lines;
using zem::testing::Repeated;
using zem::testing::SetLine;
using zem::testing::TransferTest;
using zem::testing::WideLines;
using zem::testing::operator+;

// How the procedures of a family move an image of two chunks.
struct Family {
  bool takesHandle;
  unsigned selector;
  std::uint32_t chunk;
  std::uint32_t length;
  // Of the image in memory: longer than `length` where its last chunk is sent whole.
  std::size_t imageSize;
  const char* probe;
  Lines behindTheProbe;
  const char* firstProgress;
  WideLines speedLine;
};

const Family kWithHandle = {.takesHandle = true,
                            .selector = 13,
                            .chunk = 512,
                            .length = 600,
                            .imageSize = 600,
                            .probe = "get vendor 13 [512]",
                            .behindTheProbe = {},
                            .firstProgress = "progress 14",
                            .speedLine = {L"[MSG] Set Speeed:: 512Bytes, CS=0xD, Len=0x200\r\n"}};
const Family kWithoutHandle = {.takesHandle = false,
                               .selector = 3,
                               .chunk = 64,
                               .length = 100,
                               .imageSize = 128,
                               .probe = "get vendor 3 [64]",
                               .behindTheProbe = {"sleep 300"},
                               .firstProgress = "progress 36",
                               .speedLine = {}};

struct Procedure {
  const char* name;
  const Family* family;
  ZemResult (*run)(void* handle, const std::uint8_t* image, std::uint32_t length,
                   ProgressCallback callback, std::uint64_t user);
  const char* announce;
  const char* order;
  bool stopsWhenSendFails;
  // The pause after a burn that is done at the first poll. Nothing: there is no poll.
  std::optional<std::size_t> graceTenths;
  const wchar_t* errorLine;
};
void PrintTo(const Procedure& procedure, std::ostream* out) { *out << procedure.name; }

const Procedure kFW516x = {"FW516x",
                           &kWithHandle,
                           [](void* handle, const std::uint8_t* image, std::uint32_t length,
                              ProgressCallback callback, std::uint64_t user) {
                             return ZEMAPI_UpdateFW_516x(handle, image, length, callback, user,
                                                         0xA7);
                           },
                           "set vendor 4: 01 00 03 00 00 04 00 00",
                           "set vendor 4: 01 01 03 a7 00 04 00 00",
                           true,
                           10,
                           L"[ERR] Firmware burning error.\r\n"};
const Procedure kFlash = {"Flash",
                          &kWithHandle,
                          [](void* handle, const std::uint8_t* image, std::uint32_t length,
                             ProgressCallback callback, std::uint64_t user) {
                            return ZEMAPI_UpdateFlash(handle, image, length, callback, user, 0xA7,
                                                      0xB8);
                          },
                          "set vendor 4: 01 00 a7 b8 58 02 00 00",
                          "set vendor 4: 01 01 a7 b8 58 02 00 00",
                          false,
                          10,
                          L"[ERR] Flash data burning error\r\n"};
const Procedure kCaliData = {"CaliData",
                             &kWithHandle,
                             ZEMAPI_UpdateCaliData,
                             "set vendor 4: 01 00 03 05 00 00 00 00",
                             "set vendor 4: 01 01 03 05 00 00 00 00",
                             false,
                             10,
                             L"[ERR] Calibration data burning error.\r\n"};
const Procedure kStateless = {"Stateless",
                              &kWithoutHandle,
                              [](void* /*handle*/, const std::uint8_t* image, std::uint32_t length,
                                 ProgressCallback callback, std::uint64_t user) {
                                return ZEMUVCEXT_UpdateFW_with_progress(image, length, callback,
                                                                        user);
                              },
                              "set vendor 4: 01 00 00 00 00 00 00 00",
                              "set vendor 4: 01 01 00 00 00 00 00 00",
                              true,
                              80,
                              L"[ERR] Firmware burning error\r\n"};
const Procedure kStatelessEx = {
    "StatelessEx",
    &kWithoutHandle,
    [](void* /*handle*/, const std::uint8_t* image, std::uint32_t length, ProgressCallback callback,
       std::uint64_t user) {
      return ZEMUVCEXT_UpdateFW_with_progressEx(image, length, callback, user);
    },
    "set vendor 4: 01 00 00 01 00 00 00 00",
    "set vendor 4: 01 01 00 01 00 00 00 00",
    false,
    10,
    L"[ERR] Firmware burning error\r\n"};
const Procedure kStatelessVision = {
    "StatelessVision",
    &kWithoutHandle,
    [](void* /*handle*/, const std::uint8_t* image, std::uint32_t length, ProgressCallback callback,
       std::uint64_t user) {
      return ZEMUVCEXT_UpdateFW_Vision(image, length, 0xA7, callback, user);
    },
    "set vendor 4: 01 00 a7 00 00 00 00 00",
    "set vendor 4: 01 01 a7 00 00 00 00 00",
    false,
    std::nullopt,
    nullptr};

class UpdateTest : public TransferTest, public ::testing::WithParamInterface<Procedure> {
 protected:
  UpdateTest() { device(); }

  static const Procedure& procedure() { return GetParam(); }
  static const Family& family() { return *GetParam().family; }

  void* device() { return family().takesHandle ? handle() : nullptr; }

  ZemResult RunWith(const std::uint8_t* bytes, std::uint32_t length, ProgressCallback callback) {
    const ZemResult result = procedure().run(device(), bytes, length, callback, user());
    EXPECT_EQ(zem::simulator::liveComObjects, family().takesHandle ? 1 : 0);
    return result;
  }
  ZemResult Run() { return RunWith(image.data(), family().length, Report); }

  // The states the device reports one after another, beginning with the one after the announce.
  void States(const Bytes& states) {
    for (const std::uint8_t state : states) {
      vendor().Answer(5, {state, 0, 0, 0, 0, 0, 0, 0});
    }
  }

  Lines Announced() { return {procedure().announce, kStatus}; }
  Lines Probed() { return Announced() + Lines{family().probe} + family().behindTheProbe; }
  std::string Chunk(std::size_t index) {
    return ChunkLine(family().selector, image, index * family().chunk, family().chunk);
  }
  // What is sent when nothing fails, up to the burn order.
  Lines Sent() {
    return Probed() + Lines{Chunk(0), family().firstProgress, "drain",
                            Chunk(1), "progress 0",           "drain",
                            "drain",  procedure().order};
  }
  // From a burn that is done at the first look to the return.
  Lines DoneAtOnce() {
    return procedure().graceTenths
               ? kPoll + Repeated(*procedure().graceTenths, {"sleep 100", "drain"})
               : Lines{"sleep 10000", kStatus};
  }

  Bytes image = CountingBytes(family().imageSize);
};

TEST_P(UpdateTest, BurnThatIsDoneAtOnce) {
  States({0x00, 0x00});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TakeWire(), Sent() + DoneAtOnce());
}

TEST_P(UpdateTest, DeviceThatIsNotIdleGetsNoData) {
  for (const std::uint8_t state : Bytes{0x01, 0x82, 0xFF}) {
    States({state});
    EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
    EXPECT_EQ(TakeWire(), Announced()) << int{state};
    EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 8)}) << "no message";
  }
}

TEST_P(UpdateTest, FailedAnnounce) {
  FailTransfer(1);
  EXPECT_EQ(Run(), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), Lines{Failed(procedure().announce)});
}

TEST_P(UpdateTest, StatusThatCannotBeReadAfterTheAnnounceCountsAsIdle) {
  FailTransfer(2);
  EXPECT_EQ(Run(), 0);
  Lines wire = Sent() + DoneAtOnce();
  wire[1] = Failed(kStatus);
  EXPECT_EQ(TakeWire(), wire);
}

TEST_P(UpdateTest, StatusThatAFailedReadBringsAfterTheAnnounceCounts) {
  States({0x01});
  gate.EndTransfer(2, kFailedTransfer);
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire(), Announced());
}

TEST_P(UpdateTest, FailedProbeMeansChunksOf32) {
  FailTransfer(3);
  EXPECT_EQ(Run(), 0);
  const std::size_t chunks = (family().length + 31) / 32;
  Lines probed = Probed();
  probed[2] = Failed(probed[2]);
  const Lines wire = TakeWire();
  const Lines behind = Lines{"drain", procedure().order} + DoneAtOnce();
  ASSERT_EQ(wire.size(), probed.size() + 3 * chunks + behind.size());
  const auto at = [&wire](std::size_t index) {
    return wire.begin() + static_cast<std::ptrdiff_t>(index);
  };
  EXPECT_EQ(Lines(at(0), at(probed.size())), probed);
  for (std::size_t chunk = 0; chunk < chunks; ++chunk) {
    EXPECT_EQ(wire[probed.size() + 3 * chunk], ChunkLine(3, image, 32 * chunk, 32));
  }
  EXPECT_EQ(Lines(at(probed.size() + 3 * chunks), wire.end()), behind);
}

TEST_P(UpdateTest, FailedChunk) {
  const Lines beforeTheChunk[] = {Probed(),
                                  Probed() + Lines{Chunk(0), family().firstProgress, "drain"}};
  for (const std::uint32_t chunk : {0U, 1U}) {
    States({0x00, 0x00});
    FailTransfer(4 + chunk);
    EXPECT_EQ(Run(), procedure().stopsWhenSendFails ? ZEM_E_NO_DEVICE : 0);
    const Lines sent = beforeTheChunk[chunk] + Lines{Failed(Chunk(chunk)), "drain"};
    EXPECT_EQ(TakeWire(), procedure().stopsWhenSendFails
                              ? sent
                              : sent + Lines{procedure().order} + DoneAtOnce());
  }
}

TEST_P(UpdateTest, FailedBurnOrder) {
  FailTransfer(6);
  EXPECT_EQ(Run(), ZEM_E_NO_DEVICE);
  Lines wire = Sent();
  wire.back() = Failed(wire.back());
  EXPECT_EQ(TakeWire(), wire) << "no look";
}

TEST_P(UpdateTest, WithoutACallback) {
  States({0x00, 0x00});
  EXPECT_EQ(RunWith(image.data(), family().length, nullptr), 0);
  const Lines sent = {Chunk(0), Chunk(1), "drain", procedure().order};
  EXPECT_EQ(TakeWire(), Probed() + sent + DoneAtOnce());
}

TEST_P(UpdateTest, NullImage) {
  EXPECT_EQ(RunWith(nullptr, 1, Report), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

TEST_P(UpdateTest, NoDevice) {
  ListNothing();
  EXPECT_EQ(procedure().run(nullptr, image.data(), 1, Report, user()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), Lines()) << "neither a sleep nor a drain";
}

const auto kNameOf = [](const auto& parameters) { return parameters.param.name; };

INSTANTIATE_TEST_SUITE_P(Procedures, UpdateTest,
                         ::testing::Values(kFW516x, kFlash, kCaliData, kStateless, kStatelessEx,
                                           kStatelessVision),
                         kNameOf);

class PolledUpdateTest : public UpdateTest {
 protected:
  // The camera takes its time: from one poll to the next ten seconds pass.
  void PassTenSecondsAPoll() {
    system().onSleep = [this](std::uint32_t milliseconds) {
      Note("sleep " + std::to_string(milliseconds));
      if (milliseconds == 30) {
        system().clockMilliseconds += 10000 - milliseconds;
      }
    };
  }

  // Of the clock's time, what is spent before the burn order.
  std::uint32_t Pause() { return family().behindTheProbe.empty() ? 0 : 300; }

  // What writes report when nothing fails.
  static WideLines SentLines() {
    WideLines lines = {SetLine(0, 8)};
    lines.insert(lines.end(), family().speedLine.begin(), family().speedLine.end());
    lines.insert(lines.end(),
                 {SetLine(0, family().chunk), SetLine(0, family().chunk), SetLine(0, 8)});
    return lines;
  }
};

TEST_P(PolledUpdateTest, AnnouncesSendsOrdersAndPollsUntilDone) {
  States({0x00, 0x01, 0x81, 0xFF, 0x00});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TakeWire(), Sent() + kPoll + kPoll + kPoll + kPoll);
  EXPECT_EQ(TakeDebuggerLines(), SentLines());
  EXPECT_EQ(system().clockMilliseconds, Pause() + 120U);
}

TEST_P(PolledUpdateTest, BurnThatFailsAtOnceIsReportedAtOnce) {
  States({0x00, 0x82});
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire(), Sent() + kPoll);
  WideLines lines = SentLines();
  lines.emplace_back(procedure().errorLine);
  EXPECT_EQ(TakeDebuggerLines(), lines);
}

TEST_P(PolledUpdateTest, BurnThatFailsLater) {
  States({0x00, 0x01, 0x82});
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire(), Sent() + kPoll + kPoll);
  EXPECT_EQ(TakeDebuggerLines().back(), procedure().errorLine);
}

TEST_P(PolledUpdateTest, StatusThatCannotBeReadInThePollCountsAsBusy) {
  States({0x00, 0x00});
  FailTransfer(7);
  EXPECT_EQ(Run(), 0);
  Lines wire = Sent() + kPoll + kPoll;
  wire[wire.size() - 4] = Failed(kStatus);
  EXPECT_EQ(TakeWire(), wire) << "and the second is not the first poll: no more seconds";
}

TEST_P(PolledUpdateTest, StateThatAFailedReadBringsInThePollCountsAsBusy) {
  for (const std::uint8_t state : Bytes{0x82, 0x00}) {
    States({0x00, state, 0x00});
    gate.EndTransfer(7, kFailedTransfer);
    EXPECT_EQ(Run(), 0) << int{state};
    EXPECT_EQ(TakeWire(), Sent() + kPoll + kPoll);
    EXPECT_EQ(TakeDebuggerLines(), SentLines());
  }
}

TEST_P(PolledUpdateTest, BurnThatNeverEndsIsGivenUpAfterTenMinutes) {
  PassTenSecondsAPoll();
  vendor().Answer(5, {0});
  vendor().AlwaysAnswer(5, {0x01, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire(), Sent() + Repeated(60, kPoll));
  EXPECT_EQ(TakeDebuggerLines().back(), L"[ERR] Burning does not end.\r\n");
}

TEST_P(PolledUpdateTest, BurnThatEndsInTheLastSecondsIsASuccess) {
  PassTenSecondsAPoll();
  States({0x00});
  States(Bytes(59, 0x01));
  States({0x00});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(system().clockMilliseconds, Pause() + 600000U);
}

TEST_P(PolledUpdateTest, CameraThatIsUnpluggedDuringTheBurnIsGivenUpAfterTenMinutes) {
  PassTenSecondsAPoll();
  States({0x00, 0x01});
  camera().AddFault({Fault::Kind::kUnplug, 8, 1, 0});
  camera().SetUnplugObserver([this] { ListNothing(); });
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(system().clockMilliseconds, Pause() + 600000U);
  EXPECT_EQ(TakeDebuggerLines().back(), L"[ERR] Burning does not end.\r\n");
}

TEST_P(PolledUpdateTest, TenMinutesArePassedByAClockThatWraps) {
  PassTenSecondsAPoll();
  system().clockMilliseconds = 0xFFFFFFFFU - 15000;
  vendor().Answer(5, {0});
  vendor().AlwaysAnswer(5, {0x01, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire(), Sent() + Repeated(60, kPoll));
}

TEST_P(PolledUpdateTest, EmptyImage) {
  States({0x00, 0x01, 0x00});
  EXPECT_EQ(RunWith(nullptr, 0, Report), 0);
  const Lines wire = TakeWire();
  const Lines probed = Probed();
  ASSERT_EQ(wire.size(), probed.size() + 2 + 2 * kPoll.size());
  EXPECT_EQ(wire[2], family().probe);
  EXPECT_EQ(wire[probed.size()], "drain");
}

INSTANTIATE_TEST_SUITE_P(Procedures, PolledUpdateTest,
                         ::testing::Values(kFW516x, kFlash, kCaliData, kStateless, kStatelessEx),
                         kNameOf);

}  // namespace
