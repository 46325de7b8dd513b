// Two threads on two devices at the same time, as the header allows it: every operation does on
// each what it does alone. Compiled with the thread sanitizer, which fails it for memory that both
// use.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <barrier>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "platform/simulated/simulated_platform.h"
#include "romboot/usb_scsi_cmd.h"
#include "tests/support/healthy_stage.h"
#include "tests/support/temporary_folder.h"

// By default the sanitizer takes it for an agreement of threads that one closes a file and another
// opens one, and says nothing of a race once it has forgotten where one of the two was.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl*)
extern "C" const char* __tsan_default_options();
extern "C" const char* __tsan_default_options() { return "io_sync=0:history_size=7"; }

namespace {

using zem::platform::simulated::TheSystem;
using zem::testing::HealthyStage;
using zem::testing::Operation;
using zem::testing::Operations;
using Bytes = std::vector<std::uint8_t>;

constexpr int kThreads = 2;

// Runs it on two threads, each from beginning to end.
void OnTwoThreads(const std::function<void(int thread)>& work) {
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back(work, thread);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

void Append(std::string& text, const std::vector<std::uint8_t>& bytes) {
  text.append(bytes.begin(), bytes.end()) += '\n';
}

// Everything that an operation comes to: its result, what its devices saw, what was said and
// waited.
std::string RunOf(const Operation& operation) {
  std::string seen;
  HealthyStage stage;
  stage.camera().SetObserver([&seen](const zem::simulator::Transfer& transfer) {
    seen += transfer.isSet ? "set " : "get ";
    seen += std::to_string(transfer.selector) + " ";
    Append(seen, transfer.bytes);
    std::this_thread::yield();
  });
  stage.volume.onControl = [](const zem::testing::VolumeControl&) { std::this_thread::yield(); };
  const bool isPrepared = stage.Prepare(operation);
  seen += "result " + std::to_string(isPrepared ? stage.Run(operation) : -1) + "\n";
  for (const zem::testing::VolumeControl& control : stage.volume.controls) {
    Append(seen, control.cdb);
    Append(seen, control.sent);
  }
  for (const std::wstring& line : TheSystem().debuggerLines) {
    seen.append(line.begin(), line.end());
  }
  for (const std::uint32_t milliseconds : TheSystem().sleeps) {
    seen += "sleep " + std::to_string(milliseconds) + "\n";
  }
  return seen;
}

class TwoThreadsTest : public ::testing::Test {
 protected:
  TwoThreadsTest() {
    // Both threads append to the one log of the encoding unit.
    setenv("TMPDIR", folder_.path().c_str(), 1);  // NOLINT(concurrency-mt-unsafe): no thread yet
    zem::sendAddressDivider = 0;
    for (const Operation& operation : Operations()) {
      alone_.push_back(RunOf(operation));
      EXPECT_EQ(alone_.back().find("result -"), std::string::npos) << operation.name;
    }
  }
  ~TwoThreadsTest() override {
    unsetenv("TMPDIR");  // NOLINT(concurrency-mt-unsafe): no thread any more
    EXPECT_EQ(zem::simulator::liveComObjects, 0);
  }

  zem::testing::TemporaryFolder folder_;
  // What each operation comes to without another thread, by its place in the table.
  std::vector<std::string> alone_;
};

// ---- Devices ----

TEST_F(TwoThreadsTest, EachOperationAtTheSameMomentOnTwoDevices) {
  constexpr int kTimes = 5;
  std::barrier start(kThreads);
  std::array<std::vector<std::string>, kThreads> odd;
  OnTwoThreads([&](int thread) {
    for (std::size_t index = 0; index < alone_.size(); ++index) {
      for (int time = 0; time < kTimes; ++time) {
        start.arrive_and_wait();
        if (RunOf(Operations()[index]) != alone_[index]) {
          odd[static_cast<std::size_t>(thread)].emplace_back(Operations()[index].name);
        }
      }
    }
  });
  EXPECT_EQ(odd[0], std::vector<std::string>());
  EXPECT_EQ(odd[1], std::vector<std::string>());
}

TEST_F(TwoThreadsTest, DifferentOperationsOnTwoDevices) {
  constexpr int kTimes = 5;
  std::array<std::vector<std::string>, kThreads> odd;
  OnTwoThreads([&](int thread) {
    for (std::size_t step = 0; step < kTimes * alone_.size(); ++step) {
      const std::size_t forth = step % alone_.size();
      const std::size_t index = thread == 0 ? forth : alone_.size() - 1 - forth;
      if (RunOf(Operations()[index]) != alone_[index]) {
        odd[static_cast<std::size_t>(thread)].emplace_back(Operations()[index].name);
      }
    }
  });
  EXPECT_EQ(odd[0], std::vector<std::string>());
  EXPECT_EQ(odd[1], std::vector<std::string>());
}

// ---- Exports that need no device ----

// Files of a thread's own, and a frame of 64 by 32 pixels.
class Media {
 public:
  // What each comes to.
  std::string Run() const {
    constexpr unsigned kWidth = 64;
    constexpr unsigned kHeight = 32;
    Bytes frame(std::size_t{2} * kWidth * kHeight);
    for (std::size_t index = 0; index < frame.size(); ++index) {
      frame[index] = static_cast<std::uint8_t>(index * 7);
    }
    Bytes pixels(std::size_t{3} * kWidth * kHeight);
    NV12_to_RGB(frame.data(), pixels.data(), kWidth, kHeight);
    std::string made;
    Append(made, pixels);
    made += std::to_string(ConvertYUY2toBMP(Path("yuy2").c_str(), frame.data(), kWidth, kHeight));
    made += std::to_string(ConvertNV12toBMP(Path("nv12").c_str(), frame.data(), kWidth, kHeight));
    // The writer frees it.
    auto* const given = static_cast<std::uint8_t*>(std::malloc(pixels.size()));
    std::memcpy(given, pixels.data(), pixels.size());
    made += std::to_string(ConvertRGBtoBMP(Path("rgb").c_str(), given, kWidth, kHeight));
    folder_.Write("raw", frame);
    made += std::to_string(PackWavFile(Path("raw").c_str(), Path("wav").c_str(), 2, 48000, 16));
    for (const char* const name : {"yuy2", "nv12", "rgb", "wav"}) {
      Append(made, folder_.Read(name));
    }
    return made;
  }

 private:
  std::wstring Path(const char* name) const { return folder_.Path(name); }

  zem::testing::TemporaryFolder folder_;
};

// What the functions that look at the caller's memory only come to.
std::string RunOfOthers() {
  std::string made;
  const auto note = [&made](auto number) { made += std::to_string(number) + " "; };
  Bytes image = {0xEE, 0, 12, 0, 0, 1, 8, 0, 1, 2, 3, 4};
  image.resize(8192);
  std::uint16_t size = 0;
  note(ZEMAPI_GetTableSize(nullptr, image.data(), 1, &size));
  note(size);
  Bytes table(8192);
  std::uint32_t length = 0;
  note(ZEMAPI_ReadTableEx(nullptr, image.data(), 1, table.data(), 8192, &length));
  note(length);
  note(ZEMAPI_DumpWholeTable(nullptr, image.data(), table.data(), 8192, &length));
  note(length);
  unsigned short width = 0;
  unsigned short height = 0;
  GUID subtype = {};
  note(ZEMAPI_GetH264_UVC_PayloadFormat(nullptr, 0, &width, &height, &subtype));
  note(width);
  note(ZEMAPI_SetPframeCount(nullptr, 3));
  std::array<char, 17> serial = {};
  note(ZEMAPI_GetSerialNumber(nullptr, serial.data()));
  WREN_WriteLog(L"two threads\r\n");
  Append(made, table);
  return made;
}

// Each run on both threads gives what it gives alone.
template <class Run>
void ExpectTheSameOnTwoThreads(Run run) {
  const std::string alone = run();
  std::array<std::string, kThreads> made;
  OnTwoThreads([&](int thread) {
    for (int time = 0; time < 3; ++time) {
      made[static_cast<std::size_t>(thread)] = run();
    }
  });
  EXPECT_EQ(made[0], alone);
  EXPECT_EQ(made[1], alone);
}

TEST_F(TwoThreadsTest, FramesAndSound) {
  ExpectTheSameOnTwoThreads([] { return Media().Run(); });
}

TEST_F(TwoThreadsTest, WhatNeedsNoDevice) {
  // Sizes and results; the last but one refuses a null handle.
  EXPECT_EQ(RunOfOthers().substr(0, 34), "0 4 0 4 0 12 0 640 -2147483645 16 ");
  ExpectTheSameOnTwoThreads(RunOfOthers);
}

// ---- The process-wide flag of the address divider ----

constexpr std::uint8_t kTellDivider = 0x0F;

// The commands of one search: how often each volume was told, as one digit a volume.
std::string SearchTold(HealthyStage& stage, zem::testing::ScriptedVolume& other, unsigned mode) {
  const auto timesTold = [](const zem::testing::ScriptedVolume& volume) {
    return std::to_string(std::count_if(
        volume.controls.begin(), volume.controls.end(),
        [](const zem::testing::VolumeControl& each) { return each.cdb[3] == kTellDivider; }));
  };
  stage.volume.controls.clear();
  other.controls.clear();
  void* session = ZEMROMAPI_OpenDevice(mode);
  ZEMROMAPI_CloseDevice(&session);
  return timesTold(other) + timesTold(stage.volume);
}

// A volume before the boot loader's, which is no camera.
void ListOther(zem::testing::ScriptedVolume& other) {
  other.identify = {};
  TheSystem().volumes[L"\\\\.\\E:"] = other.Answer();
}

TEST(AddressDividerTest, ASearchThatBeginsAfterTheCallTellsItOnAnyThread) {
  zem::sendAddressDivider = 0;
  HealthyStage stage;
  zem::testing::ScriptedVolume other;
  ListOther(other);
  EXPECT_EQ(SearchTold(stage, other, 1), "00");
  std::thread([] {
    const HealthyStage own;
    void* session = ZEMROMAPI_OpenDevice(0x11);
    ZEMROMAPI_CloseDevice(&session);
  }).join();
  EXPECT_EQ(SearchTold(stage, other, 1), "11");
  zem::sendAddressDivider = 0;
}

TEST(AddressDividerTest, ASearchTellsAllVolumesOrNoneWhileItIsSet) {
  for (int time = 0; time < 20; ++time) {
    zem::sendAddressDivider = 0;
    std::barrier start(kThreads);
    std::string told;
    OnTwoThreads([&](int thread) {
      HealthyStage stage;
      zem::testing::ScriptedVolume other;
      ListOther(other);
      start.arrive_and_wait();
      if (thread == 0) {
        SearchTold(stage, other, 0x11);
        return;
      }
      while (told != "11") {
        told = SearchTold(stage, other, 1);
        ASSERT_TRUE(told == "00" || told == "11") << told;
      }
    });
    EXPECT_EQ(told, "11") << "at last it is seen";
  }
  zem::sendAddressDivider = 0;
}

}  // namespace
