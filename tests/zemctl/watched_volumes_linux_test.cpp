// The library's calls for SCSI generic devices, watched, and answered by a source.
#include <gtest/gtest.h>
#include <scsi/sg.h>

#include <cerrno>
#include <string>
#include <vector>

#include "tests/zemctl/hooked_library.h"
#include "tools/zemctl/camera/generic_request.h"
#include "tools/zemctl/camera/simulated_volumes.h"
#include "tools/zemctl/camera/watched_volumes.h"

namespace {

using zem::simulator::BootLoader;
using zem::simulator::BootLoaderOptions;
using zemctl::GenericRequest;
using zemctl::ScsiCommand;
using zemctl::ScsiRecord;
using zemctl::SimulatedVolumes;
using zemctl::WatchedVolumes;
using Bytes = std::vector<std::uint8_t>;

constexpr const char* kFolder = "/sys/class/scsi_generic";

// A request as the library makes it.
struct Request {
  explicit Request(Bytes bytes, std::size_t length = 0) : cdb(std::move(bytes)), data(length) {
    cdb.resize(cdb.size() > 6 || cdb[0] == 0xFA ? 16 : 6);
    header.interface_id = 'S';
    header.cmdp = cdb.data();
    header.cmd_len = static_cast<unsigned char>(cdb.size());
    header.dxfer_direction = length > 0 ? SG_DXFER_FROM_DEV : SG_DXFER_NONE;
    header.dxfer_len = static_cast<unsigned>(length);
    header.dxferp = data.data();
    // What the kernel must set.
    header.resid = 12345;
    header.status = 0xEE;
    header.host_status = 0xEEEE;
    header.driver_status = 0xEEEE;
  }

  void Sends(Bytes bytes) {
    data = std::move(bytes);
    header.dxfer_direction = SG_DXFER_TO_DEV;
    header.dxfer_len = static_cast<unsigned>(data.size());
    header.dxferp = data.data();
  }

  sg_io_hdr header = {};
  Bytes cdb;
  Bytes data;
};

const Bytes kIdentify = {0xFA, 0x55, 0x66, 0x01};

TEST(GenericRequestTest, IsTakenApartAndAnswered) {
  Request in(kIdentify, 16);
  GenericRequest request(in.header);
  ScsiCommand command = request.Describe();
  EXPECT_EQ(command.cdb, (Bytes{0xFA, 0x55, 0x66, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_TRUE(command.isIn);
  EXPECT_EQ(command.length, 16U);
  EXPECT_TRUE(command.data.empty());
  command.data = {1, 2, 3};
  command.status = 0;
  request.Answer(command);
  EXPECT_EQ(in.header.status, 0);
  EXPECT_EQ(in.header.host_status, 0);
  EXPECT_EQ(in.header.driver_status, 0);
  EXPECT_EQ(in.header.resid, 13);
  EXPECT_EQ(in.data, (Bytes{1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  ScsiCommand collected = request.Describe();
  request.Collect(collected);
  EXPECT_EQ(collected.data, (Bytes{1, 2, 3}));

  Request out({0xFA, 0x55, 0x66, 0x02});
  out.Sends({7, 8});
  command = GenericRequest(out.header).Describe();
  EXPECT_FALSE(command.isIn);
  EXPECT_EQ(command.length, 2U);
  EXPECT_EQ(command.data, (Bytes{7, 8}));
}

TEST(GenericRequestTest, FailsAsTheKernelDoes) {
  struct Case {
    std::uint32_t error;
    unsigned status;
    unsigned host;
  };
  // The library takes each for the same error again; one without a host status for 1117.
  for (const Case& each : {Case{1117, 2, 0}, Case{1167, 2, 1}, Case{170, 2, 2}, Case{121, 2, 3},
                           Case{1235, 2, 5}, Case{31, 2, 6}, Case{995, 2, 0}, Case{5, 2, 0}}) {
    Request request(kIdentify, 16);
    GenericRequest(request.header).Fail(each.error);
    EXPECT_EQ(request.header.status, each.status) << each.error;
    EXPECT_EQ(request.header.host_status, each.host) << each.error;
    EXPECT_EQ(request.header.driver_status, 0) << each.error;
  }
}

class WatchedVolumesTest : public ::testing::Test {
 protected:
  static std::shared_ptr<BootLoader> MakeBootLoader(wchar_t letter) {
    BootLoaderOptions options;
    options.letter = letter;
    return std::make_shared<BootLoader>(options);
  }

  int Control(int descriptor, Request& request) {
    return HookedControl(descriptor, SG_IO, &request.header);
  }

  std::uint64_t now_ = 1000;
  bool stop_ = false;
  std::shared_ptr<BootLoader> atF_ = MakeBootLoader(L'F');
  std::shared_ptr<BootLoader> atZ_ = MakeBootLoader(L'Z');
  SimulatedVolumes simulated_{{atF_, atZ_}};
  ScsiRecord record_{[this] { return now_; }, [this] { return stop_; }};
};

// Nothing of the machine is to be seen: of each drive there is a device, and behind most is none.
TEST_F(WatchedVolumesTest, EachDriveIsADevice) {
  std::vector<std::string> seen;
  record_.AddOpeningObserver([&](const std::string& drive, const zemctl::VolumeOpening& opening) {
    seen.push_back(drive + " " + std::to_string(opening.error));
  });
  {
    const WatchedVolumes volumes(record_);
    EXPECT_EQ(HookedList(kFolder), 24);
    EXPECT_EQ(HookedList("/proc/self/no_such_folder"), -1);
    EXPECT_EQ(HookedList("/"), 0);
    EXPECT_EQ(HookedOpen("/dev/sg0"), -ENOENT);
    const int opened = HookedOpen("/dev/sg3");
    const int other = HookedOpen("/dev/sg23");
    EXPECT_GE(opened, 0);
    EXPECT_GE(other, 0);
    Request inquiry({0x12, 0, 0, 0, 0x24, 0}, 36);
    EXPECT_EQ(Control(other, inquiry), 0);
    EXPECT_EQ(inquiry.header.status, 0);
    EXPECT_EQ(inquiry.header.resid, 0);
    EXPECT_EQ(inquiry.data[3], 1);
    EXPECT_EQ(record_.commands().back().drive, "Z:");
    HookedClose(other);
    HookedClose(opened);
    // A file that is none of them is the system's.
    EXPECT_EQ(HookedOpen("/dev/sg24"), -ENOENT);
    const int null = HookedOpen("/dev/null");
    EXPECT_GE(null, 0);
    Request request(kIdentify, 16);
    EXPECT_EQ(Control(null, request), -ENOTTY);
    HookedClose(null);
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"C: 2", "F: 0", "Z: 0"}));
}

TEST_F(WatchedVolumesTest, PassesCommandsOnAndWritesThemDown) {
  const WatchedVolumes volumes(record_);
  const int opened = HookedOpen("/dev/sg3");
  Request identify(kIdentify, 16);
  EXPECT_EQ(Control(opened, identify), 0);
  EXPECT_EQ(identify.data, (Bytes{0xAA, 0x55, 0, 0, 'V', 'S', 'N', '3', 0, 0, 0, 0, 0, 0, 0, 0}));
  Request download({0xFA, 0x55, 0x66, 0x02, 0x00, 0x01});
  download.Sends(Bytes(512, 7));
  EXPECT_EQ(Control(opened, download), 0);
  EXPECT_EQ(atF_->loadBuffer, Bytes(512, 7));
  Request unknown({0xFA, 0x55, 0x66, 0x7F});
  EXPECT_EQ(Control(opened, unknown), 0);
  EXPECT_EQ(unknown.header.status, 2);
  EXPECT_EQ(unknown.header.host_status, 0);
  ASSERT_EQ(record_.commands().size(), 3U);
  EXPECT_EQ(zemctl::NameOf(record_.commands()[1]), "download (512 bytes)");
  EXPECT_EQ(zemctl::FailureOf(record_.commands()[2]), "error 1117");
  HookedClose(opened);
}

// The same numbers as on Windows, whatever the kernel has for them.
TEST_F(WatchedVolumesTest, KeepsTheErrorsOfFaults) {
  for (const char* const fault : {"fail@1", "fail@2=5", "refuse@3", "refuse@4=8", "short@5=4"}) {
    atF_->AddFault(*zem::simulator::ParseFault(fault));
  }
  const WatchedVolumes volumes(record_);
  const int opened = HookedOpen("/dev/sg3");
  std::vector<std::string> failures;
  for (int command = 0; command < 5; ++command) {
    Request identify(kIdentify, 16);
    EXPECT_EQ(Control(opened, identify), 0);
    EXPECT_EQ(identify.header.status, command < 4 ? 2 : 0);
    EXPECT_EQ(identify.header.host_status, command == 0 ? 6 : 0);
    failures.push_back(FailureOf(record_.commands().back()));
  }
  EXPECT_EQ(failures, (std::vector<std::string>{"error 31", "error 5", "error 1117",
                                                "SCSI status 8", "4 of 16 bytes came"}));
  // A device that has left is gone for what is open, and comes back for what is opened anew.
  atF_->EnterRomBoot();
  Request identify(kIdentify, 16);
  EXPECT_EQ(Control(opened, identify), 0);
  EXPECT_EQ(identify.header.host_status, 1);
  EXPECT_EQ(FailureOf(record_.commands().back()), "the volume is gone, error 1167");
  HookedClose(opened);
  EXPECT_EQ(HookedOpen("/dev/sg3"), -ENOENT);
  const int again = HookedOpen("/dev/sg3");
  EXPECT_GE(again, 0);
  EXPECT_EQ(Control(again, identify), 0);
  EXPECT_EQ(identify.header.host_status, 0);
  HookedClose(again);
}

TEST_F(WatchedVolumesTest, NothingPassesAShutGate) {
  const WatchedVolumes volumes(record_);
  const int opened = HookedOpen("/dev/sg3");
  record_.Exclude({"F:"});
  EXPECT_EQ(HookedOpen("/dev/sg3"), -ENOENT);
  record_.Exclude({});
  stop_ = true;
  EXPECT_EQ(HookedOpen("/dev/sg3"), -ENOENT);
  Request identify(kIdentify, 16);
  EXPECT_EQ(Control(opened, identify), 0);
  EXPECT_EQ(identify.header.status, 2);
  EXPECT_TRUE(record_.commands().empty());
  // Nor is anything waited for: an hour.
  HookedSleep(3600000);
  HookedClose(opened);
}

TEST_F(WatchedVolumesTest, WaitsAsLongAsItShould) {
  timespec before = {};
  timespec after = {};
  const WatchedVolumes volumes(record_);
  ::clock_gettime(CLOCK_MONOTONIC, &before);
  HookedSleep(60);
  ::clock_gettime(CLOCK_MONOTONIC, &after);
  EXPECT_GE((after.tv_sec - before.tv_sec) * 1000000000 + after.tv_nsec - before.tv_nsec, 60000000);
}

}  // namespace
