// The device object that writes down what the library does with a camera.
#include "tools/zemctl/camera/watched_camera.h"

#include <gtest/gtest.h>

#include <array>

#include "device/extension_units.h"
#include "device/standard_controls.h"
#include "device/topology.h"
#include "device/transport.h"
#include "simulator/com_camera.h"
#include "simulator/vendor_unit.h"

namespace {

using zem::ComPtr;
using zem::simulator::Camera;
using zem::simulator::Fault;
using zem::simulator::VendorUnit;
using zemctl::Transfer;
using zemctl::TransferRecord;

constexpr auto kNotConnected = static_cast<HRESULT>(0x8007048FU);
constexpr auto kStalled = static_cast<HRESULT>(0x8007001FU);

class WatchedCameraTest : public ::testing::Test {
 protected:
  WatchedCameraTest() {
    camera_->AddPlainNode();
    camera_->AddUnit(std::make_unique<VendorUnit>());
    camera_->AddControls(
        zem::simulator::ControlFamily::kVideoProcessing,
        zem::simulator::DefaultControls(zem::simulator::ControlFamily::kVideoProcessing));
    auto bare = ComPtr<IBaseFilter>::Adopt(zem::simulator::MakeCameraFilter(camera_, nullptr));
    filter_ = zemctl::Watch(std::move(bare), record_);
  }

  HRESULT Set(std::uint16_t selector, std::vector<std::uint8_t> bytes) {
    return zem::XuSetControl(zem::VendorXu, selector, bytes.data(),
                             static_cast<ULONG>(bytes.size()), &moved_, filter_.get());
  }
  HRESULT Get(std::uint16_t selector) {
    data_.fill(0xEE);
    return zem::XuGetControl(zem::VendorXu, selector, data_.data(),
                             static_cast<ULONG>(data_.size()), &moved_, filter_.get());
  }
  const std::vector<Transfer>& transfers() const { return record_->transfers(); }

  std::uint64_t now_ = 1000;
  bool stop_ = false;
  std::shared_ptr<Camera> camera_ = std::make_shared<Camera>();
  std::shared_ptr<TransferRecord> record_ =
      std::make_shared<TransferRecord>([this] { return now_; }, [this] { return stop_; });
  ComPtr<IBaseFilter> filter_;
  std::array<std::uint8_t, 8> data_ = {};
  ULONG moved_ = 0;
};

TEST_F(WatchedCameraTest, PassesOnAndWritesDown) {
  now_ = 1250;
  EXPECT_EQ(Set(1, {0x0A, 0x00, 0, 0, 0, 0, 0, 0}), S_OK);
  EXPECT_EQ(moved_, 8U);
  now_ = 1300;
  EXPECT_EQ(Get(10), S_OK);
  const std::array<std::uint8_t, 8> information = {0x51, 0x70, 0x01, 0x00, 0x5A, 0x45, 0x00, 0x01};
  EXPECT_EQ(data_, information);

  // The requests by which the node was looked up are not there.
  ASSERT_EQ(transfers().size(), 2U);
  const Transfer& set = transfers()[0];
  EXPECT_EQ(set.milliseconds, 250U);
  EXPECT_TRUE(set.unit == zem::VendorXu);
  EXPECT_EQ(set.node, 1U);
  EXPECT_EQ(set.selector, 1U);
  EXPECT_TRUE(set.isSet);
  EXPECT_TRUE(set.isAddressed);
  EXPECT_EQ(set.bytes, (std::vector<std::uint8_t>{0x0A, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(set.length, 8U);
  EXPECT_EQ(set.moved, 8U);
  EXPECT_EQ(set.result, S_OK);
  const Transfer& get = transfers()[1];
  EXPECT_EQ(get.milliseconds, 300U);
  EXPECT_EQ(get.selector, 10U);
  EXPECT_FALSE(get.isSet);
  EXPECT_EQ(get.bytes, std::vector<std::uint8_t>(information.begin(), information.end()));

  record_->BeginCall();
  EXPECT_TRUE(transfers().empty());
}

TEST_F(WatchedCameraTest, AFailureGoesBothWays) {
  camera_->AddFault({Fault::Kind::kFail, 1});
  EXPECT_EQ(Get(10), kStalled);
  ASSERT_EQ(transfers().size(), 1U);
  EXPECT_EQ(transfers()[0].result, kStalled);
  EXPECT_TRUE(transfers()[0].hasFailed());
  EXPECT_TRUE(transfers()[0].bytes.empty());
  EXPECT_EQ(transfers()[0].length, 8U);
}

TEST_F(WatchedCameraTest, NothingIsPassedOnAfterAStop) {
  EXPECT_EQ(record_->Extent(), "it was sent nothing");
  EXPECT_EQ(Set(1, {0x0A, 0x00, 0, 0, 0, 0, 0, 0}), S_OK);
  EXPECT_EQ(record_->Extent(), "it took 1 transfer, set vendor 1 (ISP command, 8 bytes)");
  EXPECT_EQ(Set(4, {0x01, 0x00, 0, 0, 0, 0, 0, 0}), S_OK);
  stop_ = true;
  EXPECT_FALSE(record_->wasStopped());
  const std::uint64_t before = camera_->transfers();

  EXPECT_EQ(Set(1, {0x0B, 0x00, 0, 0, 0, 0, 0, 0}), static_cast<HRESULT>(0x800704C7U));
  EXPECT_EQ(Get(10), static_cast<HRESULT>(0x800704C7U));
  LONG value = 0;
  LONG flags = 0;
  EXPECT_EQ(zem::GetControl<IAMVideoProcAmp>(filter_.get(), 7, &value, &flags),
            static_cast<HRESULT>(0x800704C7U));
  EXPECT_EQ(zem::SetControl<IAMVideoProcAmp>(filter_.get(), 7, 1, 2),
            static_cast<HRESULT>(0x800704C7U));
  EXPECT_EQ(camera_->transfers(), before);
  EXPECT_TRUE(record_->wasStopped());
  ASSERT_EQ(transfers().size(), 6U);
  EXPECT_EQ(zemctl::FailureOf(transfers()[2]), "stopped by the user");
  EXPECT_EQ(record_->Extent(),
            "it took 2 transfers, the last of them set vendor 4 (VCP command, 8 bytes)");

  // A wait for the end of a burn finds one.
  EXPECT_EQ(Get(5), S_OK);
  EXPECT_EQ(data_, (std::array<std::uint8_t, 8>{0x82, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(WatchedCameraTest, StandardControlsAreWrittenDownToo) {
  LONG value = 0;
  LONG flags = 0;
  EXPECT_EQ(zem::GetControl<IAMVideoProcAmp>(filter_.get(), 7, &value, &flags), S_OK);
  EXPECT_EQ(value, 4000);
  EXPECT_EQ(zem::SetControl<IAMVideoProcAmp>(filter_.get(), 6, 1, 2),
            static_cast<HRESULT>(0x80070490U));
  ASSERT_EQ(transfers().size(), 2U);
  EXPECT_TRUE(transfers()[0].unit == zem::IID_IAMVideoProcAmp);
  EXPECT_EQ(transfers()[0].selector, 7U);
  EXPECT_FALSE(transfers()[0].isSet);
  EXPECT_EQ(transfers()[1].selector, 6U);
  EXPECT_TRUE(transfers()[1].isSet);
  EXPECT_TRUE(transfers()[1].hasFailed());
  // Of the other family the camera has nothing.
  EXPECT_EQ(zem::GetControl<IAMCameraControl>(filter_.get(), 0, &value, &flags),
            static_cast<HRESULT>(0x80000001U));
  EXPECT_EQ(transfers().size(), 2U);
}

TEST_F(WatchedCameraTest, AnyOtherInterfaceIsTheCamerasOwn) {
  void* object = &object;
  EXPECT_EQ(filter_->QueryInterface(zem::IID_IPropertyBag, &object), E_NOINTERFACE);
  EXPECT_EQ(filter_->QueryInterface(zem::IID_IUnknown, &object), S_OK);
  EXPECT_EQ(object, filter_.get());
  EXPECT_EQ(filter_->Release(), 1U);
}

TEST_F(WatchedCameraTest, ACameraThatLeavesIsGoneAtOnce) {
  camera_->AddFault({Fault::Kind::kUnplug, 2});
  EXPECT_EQ(Get(10), S_OK);
  EXPECT_FALSE(record_->isGone());
  EXPECT_EQ(Get(10), kNotConnected);
  EXPECT_TRUE(record_->isGone());
}

TEST_F(WatchedCameraTest, ACameraThatIsSilentForThreeSecondsIsGone) {
  camera_->AddFault({Fault::Kind::kFail, 1, 2});
  camera_->AddFault({Fault::Kind::kFail, 4, 10});
  EXPECT_EQ(Get(10), kStalled);
  now_ += 2999;
  EXPECT_EQ(Get(10), kStalled);
  now_ += 1;
  EXPECT_EQ(Get(10), S_OK);
  EXPECT_EQ(Get(10), kStalled);
  now_ += 2999;
  EXPECT_EQ(Get(10), kStalled);
  EXPECT_FALSE(record_->isGone());
  now_ += 1;
  EXPECT_EQ(Get(10), kStalled);
  EXPECT_TRUE(record_->isGone());
}

// The library waits for a burn until the camera reports its end.
TEST_F(WatchedCameraTest, TheStatusOfACameraThatIsGoneIsAFailedBurn) {
  camera_->AddFault({Fault::Kind::kFail, 1});
  EXPECT_EQ(Get(5), kStalled);
  camera_->Unplug();
  EXPECT_EQ(Get(5), S_OK);
  EXPECT_EQ(data_, (std::array<std::uint8_t, 8>{0x82}));
  EXPECT_EQ(moved_, 8U);
  // What is written down is what happened, and all else fails as it does.
  EXPECT_EQ(transfers().back().result, kNotConnected);
  EXPECT_EQ(Get(10), kNotConnected);
  EXPECT_EQ(Set(5, {1}), kNotConnected);
}

TEST_F(WatchedCameraTest, TheObserverSeesEachTransferAsItHappens) {
  std::vector<std::uint32_t> seen;
  record_->SetObserver([&](const Transfer& transfer) { seen.push_back(transfer.selector); });
  EXPECT_EQ(Get(10), S_OK);
  EXPECT_EQ(seen, (std::vector<std::uint32_t>{10}));
  record_->BeginCall();
  EXPECT_EQ(Get(2), S_OK);
  EXPECT_EQ(seen, (std::vector<std::uint32_t>{10, 2}));
}

TEST(TransferRecordTest, NamesATransferAndItsFailure) {
  Transfer transfer;
  transfer.unit = ZEM_VENDOR_XU;
  transfer.selector = 2;
  transfer.length = 8;
  transfer.result = kStalled;
  EXPECT_EQ(zemctl::NameOf(transfer), "get vendor 2 (reply to an ISP command, 8 bytes)");
  EXPECT_EQ(zemctl::FailureOf(transfer), "the camera did not carry it out (0x8007001F)");
  transfer.unit = ZEM_TIRELLA_XU;
  transfer.isSet = true;
  transfer.length = 1;
  transfer.result = kNotConnected;
  EXPECT_EQ(zemctl::NameOf(transfer), "set tirella 2 (LED, 1 byte)");
  EXPECT_EQ(zemctl::FailureOf(transfer), "the camera is gone (0x8007048F)");
  transfer.unit = zem::IID_IAMVideoProcAmp;
  transfer.result = static_cast<HRESULT>(0x80070490U);
  EXPECT_EQ(zemctl::NameOf(transfer), "set video control 2");
  EXPECT_EQ(zemctl::FailureOf(transfer), "the camera has no such control (0x80070490)");
  transfer.unit = ZEM_SKYPE_XU;
  transfer.isAddressed = false;
  transfer.result = E_FAIL;
  EXPECT_EQ(zemctl::NameOf(transfer), "addressing the skype unit");
  EXPECT_EQ(zemctl::FailureOf(transfer), "the transfer failed (0x80004005)");
}

}  // namespace
