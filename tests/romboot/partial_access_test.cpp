// Writing a file to any region of storage, and reading storage into a file.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/package_files.h"
#include "tests/support/rom_boot_test.h"

namespace {

using zem::testing::Bytes;
using zem::testing::InOrder;
using zem::testing::Joined;
using zem::testing::kTimeout;
using zem::testing::Lines;
using zem::testing::PaddedToSectors;
using zem::testing::PartOf;
using zem::testing::RomBootTest;
using zem::testing::SomeBytes;
using zem::testing::VolumeControl;
using zem::testing::WriteCommand;
using zem::testing::Written;

// A pipe in a folder, which has neither a length nor places, with both its ends open.
class HeldPipe {
 public:
  explicit HeldPipe(const std::filesystem::path& path) {
    EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
    descriptor_ = open(path.c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_GE(descriptor_, 0);
  }
  ~HeldPipe() { close(descriptor_); }
  HeldPipe(const HeldPipe&) = delete;
  HeldPipe& operator=(const HeldPipe&) = delete;

  // Bytes that have been written to it.
  int Waiting() const {
    int count = -1;
    EXPECT_EQ(ioctl(descriptor_, FIONREAD, &count), 0);
    return count;
  }

 private:
  int descriptor_ = -1;
};

// ---- With a header ----

class PartialUpdateWithHeaderTest : public RomBootTest {
 protected:
  ZemResult Update(const Bytes& file) {
    return ZEMROMAPI_PartialUpdateWithHeader(session(), WriteFile("file", file).c_str(), &address);
  }
  unsigned int address = 0x5000;
};

TEST_F(PartialUpdateWithHeaderTest, EraseThenBodyThenHeader) {
  const Bytes file = SomeBytes(4096 + 33000);
  EXPECT_EQ(Update(file), 1);
  EXPECT_EQ(address, 0x6000U + 33280U) << "the body's end";
  EXPECT_EQ(volume.controls.at(0).sent, Bytes(4096, 0xFF));
  EXPECT_EQ(volume.controls.at(3).sent, PartOf(file, 0, 4096));
  EXPECT_EQ(Stored(0x5000, 4096 + 33280), PaddedToSectors(file));
  EXPECT_EQ(TakeEvents(), (Lines{"line Adr=0x5000, Len=0x1000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 50 00 00 08 00 00 00 00 00 00 [4096]",
                                 "line Adr=0x6000, Len=0x8000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 60 00 00 40 00 00 00 00 00 00 [32768]",
                                 "line Adr=0xE000, Len=0x200 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 e0 00 00 01 00 00 00 00 00 00 [512]",
                                 "line Adr=0x5000, Len=0x1000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 50 00 00 08 00 00 00 00 00 00 [4096]"}));
}

TEST_F(PartialUpdateWithHeaderTest, UpTo4096BytesAreWrittenAsTheyAre) {
  for (const auto& [size, end] : std::vector<std::pair<std::size_t, unsigned int>>{
           {1, 0x5200}, {4095, 0x6000}, {4096, 0x6000}}) {
    address = 0x5000;
    EXPECT_EQ(Update(SomeBytes(size)), 1);
    EXPECT_EQ(address, end);
    EXPECT_EQ(TakeEvents(), InOrder({Written(0x5000, 8), Written(0x5000, (end - 0x5000) / 512)}));
  }
}

TEST_F(PartialUpdateWithHeaderTest, OneByteMoreIsABody) {
  EXPECT_EQ(Update(SomeBytes(4097)), 1);
  EXPECT_EQ(address, 0x6200U);
  EXPECT_EQ(TakeEvents(), InOrder({Written(0x5000, 8), Written(0x6000, 1), Written(0x5000, 8)}));
}

TEST_F(PartialUpdateWithHeaderTest, AnEmptyFileErasesTheHeadersPlace) {
  EXPECT_EQ(Update({}), 1);
  EXPECT_EQ(address, 0x5000U);
  EXPECT_EQ(TakeEvents(), Written(0x5000, 8));
}

TEST_F(PartialUpdateWithHeaderTest, AllIsMirroredWithoutTheRounding) {
  const std::wstring dump = WriteFile("dump", Bytes(0x8000, 0x11));
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0), 0);
  const Bytes file = SomeBytes(4096 + 700);
  EXPECT_EQ(Update(file), 1);
  EXPECT_EQ(ReadFile(dump),
            Joined({Bytes(0x5000, 0x11), file, Bytes(0x8000 - 0x5000 - file.size(), 0x11)}));
}

TEST_F(PartialUpdateWithHeaderTest, WhatWouldReachPastTheLastAddressIsRefused) {
  address = 0xFFFFF200;
  EXPECT_EQ(Update(SomeBytes(1)), ZEM_E_FAIL) << "there is no room to erase";
  address = 0xFFFFE000;
  EXPECT_EQ(Update(SomeBytes(8193)), ZEM_E_FAIL);
  EXPECT_EQ(address, 0xFFFFE000U);
  EXPECT_EQ(TakeEvents(), Lines());
  EXPECT_EQ(Update(SomeBytes(8192)), 1);
  EXPECT_EQ(address, 0U);
}

// ---- Without one ----

class PartialUpdateTest : public RomBootTest {
 protected:
  ZemResult Update(const Bytes& file) {
    return ZEMROMAPI_PartialUpdate(session(), WriteFile("file", file).c_str(), &address);
  }
  unsigned int address = 0x5000;
};

TEST_F(PartialUpdateTest, NothingIsErased) {
  const Bytes file = SomeBytes(33000);
  EXPECT_EQ(Update(file), 1);
  EXPECT_EQ(address, 0x5000U + 33280U);
  EXPECT_EQ(Stored(0x5000, 33280), PaddedToSectors(file));
  EXPECT_EQ(TakeEvents(), (Lines{"line Adr=0x5000, Len=0x8000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 50 00 00 40 00 00 00 00 00 00 [32768]",
                                 "line Adr=0xD000, Len=0x200 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 d0 00 00 01 00 00 00 00 00 00 [512]"}));
}

TEST_F(PartialUpdateTest, FilesOfMoreThan4MiBAreReadInPieces) {
  const Bytes file = SomeBytes(4194304 + 1000);
  const std::wstring dump = WriteFile("dump", {});
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0), 0);
  address = 0;
  EXPECT_EQ(Update(file), 1);
  EXPECT_EQ(address, 4194304U + 1024U);
  EXPECT_EQ(Stored(0, 4194304 + 1024), PaddedToSectors(file))
      << "zeros behind the last piece, and not what is left of the one before";
  EXPECT_EQ(ReadFile(dump), file);
  const Lines commands = TakeCommands();
  EXPECT_EQ(commands.size(), 129U);
  EXPECT_EQ(commands.back(), WriteCommand(4194304, 2));
}

TEST_F(PartialUpdateTest, MirrorsBeforeItSendsAlsoWhatFailsThen) {
  const std::wstring dump = WriteFile("dump", Bytes(0x5000, 0x11));
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0), 0);
  volume.Fail(1, kTimeout);
  EXPECT_EQ(Update(SomeBytes(700)), ZEM_E_FAIL);
  EXPECT_EQ(ReadFile(dump), Joined({Bytes(0x5000, 0x11), SomeBytes(700)}));
}

TEST_F(PartialUpdateTest, AFileThatBecomesShorterMeanwhileEndsItBehindWhatIsWritten) {
  void* const opened = session();
  const std::wstring path = WriteFile("file", SomeBytes(4194304 + 100000));
  volume.onControl = [&](const VolumeControl& /*control*/) {
    std::filesystem::resize_file(path, 4194304 + 50000);
  };
  address = 0;
  EXPECT_EQ(ZEMROMAPI_PartialUpdate(opened, path.c_str(), &address), ZEM_E_FAIL);
  EXPECT_EQ(address, 4194304U);
  EXPECT_EQ(Stored(0, 4194304), SomeBytes(4194304));
  const Lines commands = TakeCommands();
  EXPECT_EQ(commands.size(), 128U) << "and nothing of the last piece";
  EXPECT_EQ(commands.back(), WriteCommand(4194304 - 0x8000, 64));
}

TEST_F(PartialUpdateTest, WhatHasNoLengthIsRefused) {
  const std::wstring path = PathOf("pipe");
  const HeldPipe pipe(path);
  EXPECT_EQ(ZEMROMAPI_PartialUpdate(session(), path.c_str(), &address), ZEM_E_FAIL);
  EXPECT_EQ(address, 0x5000U);
  EXPECT_EQ(TakeEvents(), Lines());
}

TEST_F(PartialUpdateTest, ADumpWithoutPlacesIsLeftAlone) {
  const std::wstring path = PathOf("pipe");
  const HeldPipe pipe(path);
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), path.c_str(), 0), 0);
  EXPECT_EQ(Update(SomeBytes(700)), 1);
  EXPECT_EQ(TakeEvents(), Written(0x5000, 2));
  EXPECT_EQ(pipe.Waiting(), 0) << "nothing at the wrong place";
}

TEST_F(PartialUpdateTest, AnEmptyFile) {
  EXPECT_EQ(Update({}), 1);
  EXPECT_EQ(address, 0x5000U);
  EXPECT_EQ(TakeEvents(), Lines());
}

TEST_F(PartialUpdateTest, WhatWouldReachPastTheLastAddressIsRefused) {
  address = 0xFFFFFE00;
  EXPECT_EQ(Update(SomeBytes(513)), ZEM_E_FAIL);
  EXPECT_EQ(TakeEvents(), Lines());
  EXPECT_EQ(Update(SomeBytes(512)), 1);
}

// ---- Reading ----

class PartialReadTest : public RomBootTest {
 protected:
  ZemResult Read(unsigned int length) {
    return ZEMROMAPI_PartialRead(session(), PathOf("file").c_str(), &address, length);
  }
  unsigned int address = 0x777;
};

TEST_F(PartialReadTest, FromAddress0WhateverTheCallers) {
  const Bytes content = SomeBytes(66048);
  volume.answers[0x07] = {PartOf(content, 0, 32768), PartOf(content, 32768, 32768),
                          PartOf(content, 65536, 512)};
  WriteFile("file", SomeBytes(100000));
  EXPECT_EQ(Read(65537), 1);
  EXPECT_EQ(address, 66048U);
  EXPECT_EQ(ReadFile(PathOf("file")), content) << "whole sectors, in a file made anew";
  EXPECT_EQ(TakeEvents(), (Lines{"in fa 55 66 07 00 00 00 00 00 40 00 00 00 00 00 00 [32768]",
                                 "in fa 55 66 07 00 00 80 00 00 40 00 00 00 00 00 00 [32768]",
                                 "in fa 55 66 07 00 01 00 00 00 01 00 00 00 00 00 00 [512]"}));
}

TEST_F(PartialReadTest, AddressesAreNotDivided) {
  session();
  SetAddressDivider(0x200);
  EXPECT_EQ(Read(33000), 1);
  EXPECT_EQ(TakeCommands().at(1), "in fa 55 66 07 00 00 80 00 00 01 00 00 00 00 00 00 [512]");
}

TEST_F(PartialReadTest, OfNothingCreatesAnEmptyFile) {
  EXPECT_EQ(Read(0), 1);
  EXPECT_EQ(address, 0U);
  EXPECT_EQ(ReadFile(PathOf("file")), Bytes());
  EXPECT_EQ(TakeEvents(), Lines());
}

TEST_F(PartialReadTest, AFailureKeepsWhatWasRead) {
  for (std::size_t failing = 1; failing <= 3; ++failing) {
    session();
    volume.answers[0x07] = {SomeBytes(32768), SomeBytes(32768), SomeBytes(512)};
    volume.Fail(failing, kTimeout);
    EXPECT_EQ(Read(66048), ZEM_E_FAIL);
    EXPECT_EQ(address, (failing - 1) * 32768U);
    EXPECT_EQ(ReadFile(PathOf("file")).size(), (failing - 1) * 32768U);
    Lines events = {"in fa 55 66 07 00 00 00 00 00 40 00 00 00 00 00 00 [32768]",
                    "in fa 55 66 07 00 00 80 00 00 40 00 00 00 00 00 00 [32768]",
                    "in fa 55 66 07 00 01 00 00 00 01 00 00 00 00 00 00 [512]"};
    events.resize(failing);
    events.back() += " failed";
    EXPECT_EQ(
        TakeEvents(),
        InOrder({events,
                 {"line SendScsiCmdIIn Failed, Erroe=0x79 \r\n", "line Usb transfer failed\r\n"}}));
  }
}

TEST_F(PartialReadTest, AFileThatCannotBeCreated) {
  const std::wstring noFolder = PathOf("no/folder");
  for (const wchar_t* const path : {noFolder.c_str(), static_cast<const wchar_t*>(nullptr)}) {
    EXPECT_EQ(ZEMROMAPI_PartialRead(session(), path, &address, 512), ZEM_E_FAIL);
    EXPECT_EQ(address, 0x777U);
    EXPECT_EQ(TakeEvents(), Lines{"line Failed to create destination file.\r\n"});
  }
}

TEST_F(PartialReadTest, AFullDiskIsAFailure) {
  for (const unsigned int length : {512U, 1048576U}) {
    EXPECT_EQ(ZEMROMAPI_PartialRead(session(), L"/dev/full", &address, length), ZEM_E_FAIL);
    EXPECT_NE(TakeCommands(), Lines());
    EXPECT_EQ(TakeEvents(), Lines()) << "no line";
  }
}

// ---- What all have in common ----

using PartialArgumentsTest = RomBootTest;

TEST_F(PartialArgumentsTest, NullsAndMissingFiles) {
  const std::wstring path = WriteFile("file", SomeBytes(100));
  for (const auto update : {ZEMROMAPI_PartialUpdateWithHeader, ZEMROMAPI_PartialUpdate}) {
    unsigned int address = 0x777;
    EXPECT_EQ(update(nullptr, path.c_str(), &address), ZEM_E_FAIL);
    EXPECT_EQ(update(session(), path.c_str(), nullptr), ZEM_E_REFUSED);
    EXPECT_EQ(update(session(), nullptr, &address), ZEM_E_FAIL);
    EXPECT_EQ(update(session(), PathOf("none").c_str(), &address), ZEM_E_FAIL);
    EXPECT_EQ(update(session(), folder().wstring().c_str(), &address), ZEM_E_FAIL);
    EXPECT_EQ(address, 0x777U);
  }
  unsigned int address = 0x777;
  EXPECT_EQ(ZEMROMAPI_PartialRead(nullptr, PathOf("new").c_str(), &address, 512), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_PartialRead(session(), PathOf("new").c_str(), nullptr, 512), ZEM_E_REFUSED);
  EXPECT_FALSE(Exists("new"));
  EXPECT_EQ(address, 0x777U);
  EXPECT_EQ(TakeEvents(), Lines());
}

}  // namespace
