// The file in which a simulated camera keeps its memory between runs.
#include "simulator/kept_memory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "simulator/options.h"

namespace {

using zem::simulator::FormatKeptMemory;
using zem::simulator::KeptMemory;
using zem::simulator::ParseKeptMemory;
using zem::simulator::ReadStateFile;
using zem::simulator::WriteStateFile;
using Bytes = std::vector<std::uint8_t>;

// A path for a test's file, with nothing at it before and after.
class StatePath {
 public:
  StatePath() { std::filesystem::remove(path_); }
  ~StatePath() { std::filesystem::remove(path_); }
  StatePath(const StatePath&) = delete;
  StatePath& operator=(const StatePath&) = delete;

  const std::string& text() const { return path_; }

 private:
  std::string path_ =
      (std::filesystem::temp_directory_path() / ("zem-state-" + std::to_string(getpid()))).string();
};

TEST(KeptMemoryTest, TextHoldsThePagesThatAreNotErased) {
  Bytes bytes(600, 0xFF);
  bytes[0] = 0x01;
  bytes[599] = 0xAB;
  std::string first = "01";
  for (int index = 1; index < 256; ++index) {
    first += "ff";
  }
  std::string last;
  for (int index = 512; index < 599; ++index) {
    last += "ff";
  }
  const std::string text =
      "{\n \"flash\": {\n  \"size\": 600,\n  \"pages\": {\n   \"0x000000\": \"" + first +
      "\",\n   \"0x000200\": \"" + last + "ab\"\n  }\n }\n}\n";
  EXPECT_EQ(FormatKeptMemory({{"flash", bytes}}), text);
  EXPECT_EQ(ParseKeptMemory(text), (KeptMemory{{"flash", bytes}}));
}

TEST(KeptMemoryTest, AnyTextThatIsNoneIsRefused) {
  for (const char* const text : {"", "[1]", "nonsense", R"({"a": 1})", R"({"a": {"size": 1}})",
                                 R"({"a": {"size": 1, "pages": {"0x0": "0"}}})",
                                 R"({"a": {"size": 1, "pages": {"0x0": "0g"}}})",
                                 R"({"a": {"size": 1, "pages": {"0x0": "0000"}}})",
                                 R"({"a": {"size": 1, "pages": {"0x2": ""}}})",
                                 R"({"a": {"size": 1, "pages": {"0xffffffffffffffff": "00"}}})",
                                 R"({"a": {"size": 1, "pages": {"0x1ffffffffffffffff": "00"}}})",
                                 R"({"a": {"size": 1, "pages": {"zero": "00"}}})",
                                 R"({"a": {"size": 99999999999, "pages": {}}})"}) {
    EXPECT_THROW(ParseKeptMemory(text), std::invalid_argument) << text;
  }
}

TEST(KeptMemoryTest, AMissingFileIsEmptyMemory) {
  const StatePath path;
  EXPECT_TRUE(ReadStateFile(path.text()).empty());
}

TEST(KeptMemoryTest, FilesCarryMemoryAndSayWhatIsWrong) {
  const StatePath path;
  WriteStateFile(path.text(), {{"a", {1, 2, 3}}});
  WriteStateFile(path.text(), {{"a", {4, 5}}});
  EXPECT_EQ(ReadStateFile(path.text()), (KeptMemory{{"a", {4, 5}}}));
  std::ofstream(path.text()) << "nonsense";
  EXPECT_THROW(ReadStateFile(path.text()), std::invalid_argument);
  EXPECT_THROW(WriteStateFile("/nowhere/at/all", {}), std::runtime_error);
}

TEST(KeptMemoryTest, CamerasOfAStateFileGoOnWhereTheyStopped) {
  const StatePath path;
  zem::simulator::CameraOptions options;
  options.stateFile = path.text();
  options.vendor.data.burnPolls = 5;
  const auto set = [](zem::simulator::Camera& camera, const Bytes& control) {
    EXPECT_EQ(camera.Set(2, 4, control), zem::simulator::Outcome::kDone);
  };
  const auto burn = [&](zem::simulator::Camera& camera) {
    set(camera, {1, 0, 3, 5, 0, 0, 0, 0});
    EXPECT_EQ(camera.Set(2, 3, Bytes(32, 0x5A)), zem::simulator::Outcome::kDone);
    set(camera, {1, 1, 3, 5, 0, 0, 0, 0});
  };
  auto camera = MakeCamera(options);
  burn(*camera);
  EXPECT_EQ(ReadStateFile(path.text()).at("flash")[0xE0000], 0xFF)
      << "written as soon as the flash was erased";
  camera->Unplug();
  SaveState(options, *camera);
  EXPECT_EQ(ReadStateFile(path.text()).at("flash")[0xE0000], 0xFF)
      << "gone in the middle of a burn";

  camera = MakeCamera(options);
  burn(*camera);
  SaveState(options, *camera);
  EXPECT_EQ(ReadStateFile(path.text()).at("flash")[0xE0000], 0x5A) << "burned by itself";

  camera = MakeCamera(options);
  std::uint32_t moved = 0;
  Bytes chunk(32);
  set(*camera, {1, 0x10, 0x00, 0x00, 0x0E, 0x00, 0x20, 0x00});
  EXPECT_EQ(camera->Get(2, 11, chunk, moved), zem::simulator::Outcome::kDone);
  EXPECT_EQ(chunk, Bytes(32, 0x5A));
}

// Reads bytes of the TIRELLA unit's memory, or writes them.
Bytes ReadTirella(zem::simulator::Camera& camera, std::uint8_t address, std::uint8_t count) {
  Bytes block(32);
  block[0] = address;
  block[2] = static_cast<std::uint8_t>(0x80 | count);
  EXPECT_EQ(camera.Set(3, 4, block), zem::simulator::Outcome::kDone);
  std::uint32_t moved = 0;
  EXPECT_EQ(camera.Get(3, 4, block, moved), zem::simulator::Outcome::kDone);
  return {block.begin() + 3, block.begin() + 3 + count};
}

void WriteTirella(zem::simulator::Camera& camera, std::uint8_t address, const Bytes& bytes) {
  Bytes block(32);
  block[0] = address;
  block[2] = static_cast<std::uint8_t>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), block.begin() + 3);
  EXPECT_EQ(camera.Set(3, 4, block), zem::simulator::Outcome::kDone);
}

TEST(KeptMemoryTest, MemoryOfTheTirellaUnitIsKept) {
  const StatePath path;
  zem::simulator::CameraOptions options;
  options.stateFile = path.text();
  options.tirellaUnit = true;
  auto camera = MakeCamera(options);
  EXPECT_EQ(ReadTirella(*camera, 254, 2), (Bytes{0xFF, 0xFF})) << "fresh from the factory";
  WriteTirella(*camera, 0, {0xA1});
  WriteTirella(*camera, 254, {0xB1, 0xB2});
  SaveState(options, *camera);
  const Bytes kept = ReadStateFile(path.text()).at("tirellaNvmem");
  ASSERT_EQ(kept.size(), 256U);
  EXPECT_EQ(kept[0], 0xA1);
  EXPECT_EQ(kept[1], 0xFF);
  EXPECT_EQ(kept[255], 0xB2);
  camera = MakeCamera(options);
  EXPECT_EQ(ReadTirella(*camera, 0, 2), (Bytes{0xA1, 0xFF}));
  EXPECT_EQ(ReadTirella(*camera, 254, 2), (Bytes{0xB1, 0xB2}));
}

TEST(KeptMemoryTest, MemoryOfAUnitThatOneRunLacksIsKeptForTheNext) {
  const StatePath path;
  zem::simulator::CameraOptions options;
  options.stateFile = path.text();
  options.tirellaUnit = true;
  auto camera = MakeCamera(options);
  WriteTirella(*camera, 7, {0xA1, 0xA2});
  SaveState(options, *camera);

  zem::simulator::CameraOptions without = options;
  without.tirellaUnit = false;
  camera = MakeCamera(without);
  SaveState(without, *camera);

  camera = MakeCamera(options);
  EXPECT_EQ(ReadTirella(*camera, 7, 2), (Bytes{0xA1, 0xA2}));
}

}  // namespace
