#include "simulator/usb/unit_controls.h"

#include <utility>

#include "device/extension_units.h"

namespace zem::simulator::usb {
namespace {

enum class Access { kRead, kWrite, kBoth };

UnitControl Make(std::uint16_t selector, std::size_t length, Access access) {
  return {static_cast<std::uint8_t>(selector), static_cast<std::uint16_t>(length),
          access != Access::kWrite, access != Access::kRead};
}

std::vector<UnitControl> VendorControls(const DataChannelSettings& data) {
  using namespace vendor_selector;  // NOLINT(google-build-using-namespace): the table's own words
  constexpr std::size_t kLongPiece = 512;
  std::vector<UnitControl> controls = {
      Make(kIspCommand, 8, Access::kWrite),
      Make(kIspReply, 8, Access::kRead),
      Make(kBulkData, data.dataLength, Access::kBoth),
      Make(kVcpCommand, 8, Access::kWrite),
      Make(kVcpReply, 8, Access::kRead),
      Make(kIspExtendedCommand, 16, Access::kWrite),
      Make(kIspExtendedReply, 16, Access::kRead),
      // The processor's memory and long chunks of the flash share a control that has one length.
      Make(kMemoryRead, data.highSpeed ? kLongPiece : 16, Access::kRead),
      Make(kMemoryWrite, 16, Access::kWrite),
      Make(kDeviceInfo, 8, Access::kRead),
      Make(kSensorSerial, 32, Access::kRead),
      Make(kVcpExtendedCommand, 16, Access::kWrite),
      Make(kVcpExtendedReply, 16, Access::kRead),
      Make(kNvmem, 32, Access::kBoth),
  };
  if (data.highSpeed) {
    controls.push_back(Make(kFastBulkData, kLongPiece, Access::kBoth));
  }
  return controls;
}

std::vector<UnitControl> EncodingControls() {
  constexpr std::size_t kLengths[] = {4, 4, 28, 4, 2, 1, 2, 2};
  std::vector<UnitControl> controls;
  std::uint16_t selector = 1;
  for (const std::size_t length : kLengths) {
    controls.push_back(Make(selector++, length, Access::kBoth));
  }
  return controls;
}

}  // namespace

std::vector<DescribedUnit> DescribeUnits(const CameraOptions& options) {
  std::vector<DescribedUnit> units;
  const auto add = [&units](bool wanted, const GUID& id, std::vector<UnitControl> controls) {
    if (wanted) {
      units.push_back({id, std::move(controls)});
    }
  };
  constexpr std::size_t kH264Length = 48;
  constexpr std::size_t kFormatLength = 13;
  constexpr std::size_t kBlockLength = 51;
  add(options.vendorUnit, VendorXu, VendorControls(options.vendor.data));
  add(options.h264Unit, H264Xu,
      {Make(h264_selector::kProbe, kH264Length, Access::kBoth),
       Make(h264_selector::kCommit, kH264Length, Access::kWrite)});
  add(options.skypeUnit, SkypeXu,
      {Make(skype_selector::kVersion, 1, Access::kBoth),
       Make(skype_selector::kH264Switch, 1, Access::kWrite)});
  add(options.orvaUnit, OrvaXu,
      {Make(orva_selector::kVersion, 1, Access::kRead),
       Make(orva_selector::kBuildDay, 2, Access::kRead),
       Make(orva_selector::kStreamId, 1, Access::kWrite),
       Make(orva_selector::kEndpointSetting, 1, Access::kRead),
       Make(orva_selector::kProbe, kFormatLength, Access::kBoth),
       Make(orva_selector::kCommit, kFormatLength, Access::kBoth),
       Make(orva_selector::kToggleLayer, 1, Access::kWrite)});
  add(options.encodingUnit, EncodingUnitXu, EncodingControls());
  add(options.streamProbeUnit, StreamProbeXu,
      {Make(stream_probe_selector::kProbe, kBlockLength, Access::kBoth),
       Make(stream_probe_selector::kCommit, kBlockLength, Access::kBoth)});
  add(options.tirellaUnit, TirellaXu,
      {Make(tirella_selector::kLed, 1, Access::kBoth),
       Make(tirella_selector::kNvmem, 32, Access::kBoth)});
  return units;
}

}  // namespace zem::simulator::usb
