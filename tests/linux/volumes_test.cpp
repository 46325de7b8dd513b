// ROM boot's volumes: SCSI generic devices by drive letter, and pass-through requests as SG_IO.
#include <scsi/sg.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "romboot/pass_through_blocks.h"
#include "romboot/usb_scsi_cmd.h"
#include "tests/linux/linux_test.h"

namespace {

using zem::BufferedRequest;
using zem::DirectRequest;
using zem::testing::FakeDevice;
using zem::testing::LinuxTest;
using Bytes = std::vector<std::uint8_t>;
namespace platform = zem::platform;

// A SCSI generic device: writes each request down, answers with what the test sets.
class FakeGeneric : public FakeDevice {
 public:
  struct Request {
    sg_io_hdr header;
    Bytes cdb;
    Bytes data;  // that goes out
  };

  int Control(unsigned long request, void* argument) override {
    if (request != SG_IO) {
      return -ENOTTY;
    }
    auto& header = *static_cast<sg_io_hdr*>(argument);
    Request seen = {header, Bytes(header.cmdp, header.cmdp + header.cmd_len), {}};
    auto* const data = static_cast<std::uint8_t*>(header.dxferp);
    if (header.dxfer_direction == SG_DXFER_TO_DEV) {
      seen.data.assign(data, data + header.dxfer_len);
    }
    requests.push_back(seen);
    if (result < 0) {
      return result;
    }
    if (header.dxfer_direction == SG_DXFER_FROM_DEV) {
      const Bytes& answer = header.cmdp[0] == 0x12 ? inquiry : reply;
      const std::size_t moved = std::min<std::size_t>(answer.size(), header.dxfer_len);
      std::copy_n(answer.begin(), moved, data);
      header.resid = static_cast<int>(header.dxfer_len - moved);
    }
    header.status = status;
    header.host_status = hostStatus;
    header.driver_status = driverStatus;
    header.resid = residue.value_or(header.resid);
    header.sb_len_wr =
        static_cast<unsigned char>(std::min<std::size_t>(sense.size(), header.mx_sb_len));
    std::copy_n(sense.begin(), header.sb_len_wr, header.sbp);
    return 0;
  }

  std::vector<Request> requests;
  int result = 0;
  Bytes inquiry = Bytes{0, 0, 0, 1, 31};
  Bytes reply;
  Bytes sense;
  std::uint8_t status = 0;
  std::uint16_t hostStatus = 0;
  std::uint16_t driverStatus = 0;
  std::optional<int> residue;
};

class VolumesTest : public LinuxTest {
 protected:
  std::shared_ptr<FakeGeneric> AddGeneric(unsigned number) {
    const std::string name = "sg" + std::to_string(number);
    kernel.AddFile("class/scsi_generic/" + name + "/dev", "21:0\n");
    auto generic = std::make_shared<FakeGeneric>();
    kernel.devices[name] = generic;
    return generic;
  }

  static BufferedRequest Inquiry(std::uint32_t length) {
    BufferedRequest request = {};
    zem::FillHeader(request.header, 6, SCSI_IOCTL_DATA_IN, length, 2);
    request.header.DataBufferOffset = zem::kDataOffset;
    request.header.Cdb[0] = 0x12;
    request.header.Cdb[4] = 0x24;
    return request;
  }
};

TEST_F(VolumesTest, LettersAreTheDevicesInTheOrderOfTheirNumbers) {
  AddGeneric(11);
  AddGeneric(2);
  kernel.AddFile("class/scsi_generic/sgx/dev", "21:0\n");
  const platform::VolumeHandle first = platform::OpenVolume(LR"(\\.\C:)");
  const platform::VolumeHandle second = platform::OpenVolume(LR"(\\.\d:)");
  EXPECT_NE(first, nullptr);
  EXPECT_NE(second, nullptr);
  EXPECT_EQ(platform::OpenVolume(LR"(\\.\E:)"), nullptr);
  EXPECT_EQ(platform::LastError(), 2U);
  EXPECT_EQ(kernel.calls, (std::vector<std::string>{"open sg2 2", "open sg11 2"}))
      << "for reading and writing";
  platform::CloseVolume(second);
  platform::CloseVolume(first);
}

TEST_F(VolumesTest, AllTwentyFourLettersAndNoOther) {
  for (unsigned number = 0; number < 30; ++number) {
    AddGeneric(number);
  }
  for (wchar_t letter = L'C'; letter <= L'Z'; ++letter) {
    platform::CloseVolume(platform::OpenVolume((std::wstring(LR"(\\.\)") + letter + L':').c_str()));
  }
  EXPECT_EQ(kernel.calls.size(), 24U);
  EXPECT_EQ(kernel.calls.back(), "open sg23 2");
  for (const wchar_t* const path :
       {LR"(\\.\A:)", LR"(\\.\B:)", LR"(\\.\[:)", LR"(\\.\CC:)", LR"(\\.\CC)", LR"(\\.\C)",
        LR"(\\.\)", L"C:", L"", LR"(\\.\C:\)"}) {
    EXPECT_EQ(platform::OpenVolume(path), nullptr);
    EXPECT_EQ(platform::LastError(), 2U);
  }
}

TEST_F(VolumesTest, WhatMayNotBeOpenedSaysSo) {
  AddGeneric(0)->openResult = -EACCES;
  EXPECT_EQ(platform::OpenVolume(LR"(\\.\C:)"), nullptr);
  EXPECT_EQ(platform::LastError(), 5U);
}

TEST_F(VolumesTest, BufferedRequestLiterally) {
  const auto generic = AddGeneric(0);
  generic->inquiry = {0, 0x80, 2, 1, 31, 0, 0, 0, 'Z', 'E', 'M'};
  const platform::VolumeHandle volume = platform::OpenVolume(LR"(\\.\C:)");
  BufferedRequest request = Inquiry(36);
  EXPECT_TRUE(platform::ControlVolume(volume, 0x4D004, &request, 56, 92 + 36));
  platform::CloseVolume(volume);
  ASSERT_EQ(generic->requests.size(), 1U);
  const auto& [header, cdb, data] = generic->requests[0];
  EXPECT_EQ(header.interface_id, 'S');
  EXPECT_EQ(header.dxfer_direction, -3);
  EXPECT_EQ(cdb, (Bytes{0x12, 0, 0, 0, 0x24, 0}));
  EXPECT_EQ(header.mx_sb_len, 24);
  EXPECT_EQ(header.iovec_count, 0);
  EXPECT_EQ(header.dxfer_len, 36U);
  EXPECT_EQ(header.dxferp, request.data);
  EXPECT_EQ(header.sbp, request.sense);
  EXPECT_EQ(header.timeout, 2000U);
  EXPECT_EQ(header.flags, 0U);
  EXPECT_EQ(Bytes(request.data, request.data + 12),
            (Bytes{0, 0x80, 2, 1, 31, 0, 0, 0, 'Z', 'E', 'M', 0}));
  EXPECT_EQ(request.header.DataTransferLength, 11U) << "what moved";
  EXPECT_EQ(request.header.ScsiStatus, 0);
  EXPECT_EQ(kernel.heldControls, 1);
}

TEST_F(VolumesTest, DirectRequestsLiterally) {
  const auto generic = AddGeneric(0);
  const platform::VolumeHandle volume = platform::OpenVolume(LR"(\\.\C:)");
  Bytes data = {0xDE, 0xAD, 0xBE, 0xEF};
  DirectRequest request = {};
  zem::FillHeader(request.header, 16, SCSI_IOCTL_DATA_OUT, 4, 10);
  request.header.DataBuffer = data.data();
  const Bytes kCdb = {0xFA, 0x55, 0x66, 8, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  std::copy(kCdb.begin(), kCdb.end(), request.header.Cdb);
  EXPECT_TRUE(platform::ControlVolume(volume, 0x4D014, &request, 96, 96));
  request.header.DataTransferLength = 0;
  request.header.DataBuffer = nullptr;
  request.header.SenseInfoLength = 24;
  EXPECT_TRUE(platform::ControlVolume(volume, 0x4D014, &request, 96, 96));
  platform::CloseVolume(volume);
  ASSERT_EQ(generic->requests.size(), 2U);
  const auto& out = generic->requests[0];
  EXPECT_EQ(out.header.dxfer_direction, -2);
  EXPECT_EQ(out.cdb, kCdb);
  EXPECT_EQ(out.data, data);
  EXPECT_EQ(out.header.dxferp, data.data()) << "without a copy";
  EXPECT_EQ(out.header.timeout, 10000U);
  EXPECT_EQ(out.header.mx_sb_len, 24);
  const auto& none = generic->requests[1];
  EXPECT_EQ(none.header.dxfer_direction, -1);
  EXPECT_EQ(none.header.dxfer_len, 0U);
  EXPECT_EQ(none.header.dxferp, nullptr);
}

TEST_F(VolumesTest, StatusAndSenseComeBackWithAFailureAndTheLengthsStay) {
  const auto generic = AddGeneric(0);
  generic->status = 2;
  generic->driverStatus = 8;
  generic->sense = {0x70, 0, 5, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x24, 0};
  generic->reply = {1, 2};
  generic->inquiry = {1, 2};
  const platform::VolumeHandle volume = platform::OpenVolume(LR"(\\.\C:)");
  BufferedRequest request = Inquiry(16);
  EXPECT_FALSE(platform::ControlVolume(volume, 0x4D004, &request, 56, 92 + 16));
  EXPECT_EQ(platform::LastError(), 1117U);
  EXPECT_EQ(request.header.ScsiStatus, 2);
  EXPECT_EQ(request.header.SenseInfoLength, 24);
  EXPECT_EQ(request.header.DataTransferLength, 16U);
  EXPECT_EQ(Bytes(request.sense, request.sense + 15),
            (Bytes{0x70, 0, 5, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x24, 0, 0}));
  platform::CloseVolume(volume);
}

TEST_F(VolumesTest, EveryStatusHasItsError) {
  const auto generic = AddGeneric(0);
  const platform::VolumeHandle volume = platform::OpenVolume(LR"(\\.\C:)");
  struct Case {
    int result;
    std::uint16_t host;
    std::uint8_t status;
    std::uint16_t driver;
    std::uint32_t error;
  };
  const Case kCases[] = {
      {-ENODEV, 0, 0, 0, 1167},   {-EPERM, 0, 0, 0, 5}, {-ENOMEM, 0, 0, 0, 14},
      {-ETIMEDOUT, 0, 0, 0, 121}, {0, 1, 0, 0, 1167},   {0, 2, 0, 0, 170},
      {0, 3, 0, 0, 121},          {0, 4, 0, 0, 1167},   {0, 5, 0, 0, 1235},
      {0, 6, 0, 0, 31},           {0, 7, 0, 0, 31},     {0, 8, 0, 0, 31},
      {0, 0x42, 0, 0, 31},        {0, 0, 2, 0, 1117},   {0, 0, 4, 0, 1117},
      {0, 0, 8, 0, 170},          {0, 0, 0x18, 0, 170}, {0, 0, 0x28, 0, 170},
      {0, 0, 0x40, 0, 1117},      {0, 0, 0, 6, 31},     {0, 7, 2, 8, 31},
  };
  for (const Case& each : kCases) {
    generic->result = each.result;
    generic->hostStatus = each.host;
    generic->status = each.status;
    generic->driverStatus = each.driver;
    BufferedRequest request = Inquiry(16);
    EXPECT_FALSE(platform::ControlVolume(volume, 0x4D004, &request, 56, 92 + 16));
    EXPECT_EQ(platform::LastError(), each.error)
        << each.result << " " << each.host << " " << int{each.status} << " " << each.driver;
  }
  // Sense data that came with a command that was carried out is no failure.
  *generic = FakeGeneric();
  generic->driverStatus = 8;
  BufferedRequest request = Inquiry(16);
  EXPECT_TRUE(platform::ControlVolume(volume, 0x4D004, &request, 56, 92 + 16));
  platform::CloseVolume(volume);
}

TEST_F(VolumesTest, WithoutRoomForSenseNoneIsAskedFor) {
  const auto generic = AddGeneric(0);
  generic->inquiry = {1, 2};
  const platform::VolumeHandle volume = platform::OpenVolume(LR"(\\.\C:)");
  BufferedRequest request = Inquiry(2);
  request.header.SenseInfoLength = 0;
  request.header.SenseInfoOffset = 0;
  // The data may then begin behind the header.
  request.header.DataBufferOffset = 56;
  EXPECT_TRUE(platform::ControlVolume(volume, 0x4D004, &request, 56, 58));
  ASSERT_EQ(generic->requests.size(), 1U);
  EXPECT_EQ(generic->requests[0].header.mx_sb_len, 0);
  EXPECT_EQ(generic->requests[0].header.sbp, nullptr);
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&request);
  EXPECT_EQ(Bytes(bytes + 56, bytes + 58), (Bytes{1, 2}));
  platform::CloseVolume(volume);
}

TEST_F(VolumesTest, AResidueThatCannotBeIsCut) {
  const auto generic = AddGeneric(0);
  const platform::VolumeHandle volume = platform::OpenVolume(LR"(\\.\C:)");
  for (const auto& [residue, moved] : {std::pair(17, 0U), std::pair(-1, 16U), std::pair(16, 0U)}) {
    generic->residue = residue;
    BufferedRequest request = Inquiry(16);
    EXPECT_TRUE(platform::ControlVolume(volume, 0x4D004, &request, 56, 92 + 16));
    EXPECT_EQ(request.header.DataTransferLength, moved);
  }
  platform::CloseVolume(volume);
}

TEST_F(VolumesTest, BlocksThatTheSystemWouldNotTakeAreNotSent) {
  const auto generic = AddGeneric(0);
  const platform::VolumeHandle volume = platform::OpenVolume(LR"(\\.\C:)");
  const auto refuse = [&](auto change, std::uint32_t input = 56, std::uint32_t output = 92 + 16) {
    BufferedRequest request = Inquiry(16);
    change(request.header);
    EXPECT_FALSE(platform::ControlVolume(volume, 0x4D004, &request, input, output));
    EXPECT_EQ(platform::LastError(), 87U);
  };
  const auto keep = [](auto&) {};
  refuse([](auto& header) { header.Length = 55; });
  refuse([](auto& header) { header.CdbLength = 17; });
  refuse([](auto& header) { header.CdbLength = 0; });
  refuse([](auto& header) { header.DataIn = 2; });
  refuse([](auto& header) { header.SenseInfoOffset = 55; });
  refuse([](auto& header) { header.SenseInfoOffset = 92 + 16 - 23; });
  refuse([](auto& header) { header.SenseInfoOffset = 0xFFFFFFFF; });
  refuse([](auto& header) { header.DataBufferOffset = 83; });
  refuse([](auto& header) { header.DataBufferOffset = 93; });
  refuse([](auto& header) { header.DataBufferOffset = ~std::uint64_t{0}; });
  refuse([](auto& header) { header.DataTransferLength = 17; });
  refuse([](auto& header) { header.DataIn = 0; });
  refuse([](auto& header) {
    header.SenseInfoLength = 25;
    header.SenseInfoOffset = 92 + 16 - 24;
  });
  refuse(keep, 55);
  EXPECT_FALSE(platform::ControlVolume(volume, 0x4D004, nullptr, 56, 92 + 16));
  EXPECT_EQ(platform::LastError(), 87U) << "no block";
  refuse(keep, 56, 92 + 15);
  DirectRequest direct = {};
  zem::FillHeader(direct.header, 16, SCSI_IOCTL_DATA_OUT, 4, 10);
  EXPECT_FALSE(platform::ControlVolume(volume, 0x4D014, &direct, 96, 96));
  EXPECT_EQ(platform::LastError(), 87U) << "null data";
  direct.header.CdbLength = 17;
  direct.header.DataBuffer = &direct;
  EXPECT_FALSE(platform::ControlVolume(volume, 0x4D014, &direct, 96, 96));
  EXPECT_EQ(platform::LastError(), 87U) << "a command too long";
  EXPECT_FALSE(platform::ControlVolume(volume, 0x4D018, &direct, 96, 96));
  EXPECT_EQ(platform::LastError(), 1U) << "no such code";
  EXPECT_TRUE(generic->requests.empty());
  platform::CloseVolume(volume);
}

TEST_F(VolumesTest, ErrorsHaveTheirText) {
  std::array<wchar_t, 64> text = {L'x'};
  platform::ErrorText(1167, text);
  EXPECT_STREQ(text.data(), L"The device is not connected.");
  text = {L'x'};
  platform::ErrorText(12345, text);
  EXPECT_STREQ(text.data(), L"x");
  // The text has 28 characters.
  std::array<wchar_t, 29> fits = {L'x'};
  platform::ErrorText(1167, fits);
  EXPECT_STREQ(fits.data(), L"The device is not connected.");
  std::array<wchar_t, 28> small = {L'x'};
  platform::ErrorText(1167, small);
  EXPECT_STREQ(small.data(), L"x");
}

// The library's own probe above it: past a device of another kind and one that fails, to the boot
// loader.
TEST_F(VolumesTest, TheBootLoaderIsFound) {
  AddGeneric(0)->inquiry = {0, 0, 6, 2, 31};
  AddGeneric(1)->result = -ENODEV;
  const auto loader = AddGeneric(2);
  loader->reply = {0xAA, 0x55, 0, 0, 'V', 'S', 'N', '3', 0, 0, 0, 0, 0, 0, 0, 0};
  zem::UsbScsiCmd command;
  EXPECT_EQ(command.OpenStorage(), 1);
  EXPECT_EQ(command.deviceKind, 1U);
  EXPECT_EQ(command.signature, (std::array<std::uint8_t, 4>{'V', 'S', 'N', '3'}));
  ASSERT_EQ(loader->requests.size(), 2U);
  EXPECT_EQ(loader->requests[1].cdb,
            (Bytes{0xFA, 0x55, 0x66, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  Bytes sector(512, 0xA5);
  EXPECT_EQ(command.WriteStorage(0x1000, 1, sector.data(), 3), 1);
  EXPECT_EQ(loader->requests[2].cdb,
            (Bytes{0xFA, 0x55, 0x66, 8, 0, 0, 0x10, 0, 0, 1, 3, 0, 0, 0, 0, 0}));
  EXPECT_EQ(loader->requests[2].data, sector);
  command.CloseVolume();
  // The two that were tried in vain stay open, as on Windows.
  EXPECT_EQ(kernel.openFiles(), 2);
  kernel.Close(0);
  kernel.Close(1);
}

// A real kernel told a failed command's residue, and the next attempt asked for nothing.
TEST_F(VolumesTest, EveryAttemptIsTheSame) {
  const auto loader = AddGeneric(0);
  zem::UsbScsiCmd command;
  command.volume = platform::OpenVolume(LR"(\\.\C:)");
  loader->hostStatus = 7;
  loader->residue = 4;
  zem::VendorCdb cdb = {};
  Bytes data(4);
  EXPECT_EQ(command.SendScsiCmd(1, zem::kDataIn, 4, cdb.data(), data.data()), 0);
  ASSERT_EQ(loader->requests.size(), 6U);
  for (const auto& request : loader->requests) {
    EXPECT_EQ(request.header.dxfer_direction, -3);
    EXPECT_EQ(request.header.dxfer_len, 4U);
    EXPECT_EQ(request.header.mx_sb_len, 24);
  }
}

// Only a general failure is tried again; an unplugged device is reported at once.
TEST_F(VolumesTest, AGeneralFailureIsTriedAgainAndAnUnpluggedDeviceIsNot) {
  const auto loader = AddGeneric(0);
  zem::UsbScsiCmd command;
  command.volume = platform::OpenVolume(LR"(\\.\C:)");
  loader->result = -ENODEV;
  zem::VendorCdb cdb = {};
  EXPECT_EQ(command.SendScsiCmd(1, zem::kDataOut, 0, cdb.data(), nullptr), 0);
  EXPECT_EQ(loader->requests.size(), 1U);
  loader->result = 0;
  loader->hostStatus = 7;
  const std::uint32_t before = platform::MillisecondClock();
  EXPECT_EQ(command.SendScsiCmd(1, zem::kDataOut, 0, cdb.data(), nullptr), 0);
  EXPECT_EQ(loader->requests.size(), 7U) << "six attempts";
  EXPECT_GE(platform::MillisecondClock() - before, 2500U);
}

}  // namespace
