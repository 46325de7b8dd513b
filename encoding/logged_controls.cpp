#include "encoding/logged_controls.h"

#include <algorithm>
#include <array>

#include "device/extension_units.h"

namespace zem {
namespace {

constexpr std::array<LoggedField, 9> kRateControlFields = {{
    {L"\t\tdwSliceMode=0x%.8X\r\n", 0, 4},
    {L"\t\tdwAverageBitRate=0x%.8X\r\n", 4, 4},
    {L"\t\tdwPeakBitRate=0x%.8X\r\n", 8, 4},
    {L"\t\tdwLeakyBucketSize=0x%.8X\r\n", 12, 4},
    {L"\t\tdwQpPrime_I[3]=0x%.2X, 0x%.2X, 0x%.2X\r\n", 16, 1, 3},
    {L"\t\tdwQpPrime_P[3]=0x%.2X, 0x%.2X, 0x%.2X\r\n", 19, 1, 3},
    {L"\t\tdwQpPrime_B[3]=0x%.2X, 0x%.2X, 0x%.2X\r\n", 22, 1, 3},
    {L"\t\tbRateControlMethod=0x%.2X\r\n", 25, 1},
    {L"\t\twLayerID=0x%.4X\r\n", 26, 2},
}};

// The fields of a probe and of a commit block differ in one line's format only.
consteval auto StreamFields(const wchar_t* capabilityFormat) {
  return std::array<LoggedField, 20>{{
      {L"\t\tbmHint=0x%.4X\r\n", 0, 2},
      {L"\t\twIndex=0x%.4X\r\n", 2, 2},
      {L"\t\tdwInterval=0x%.8X\r\n", 4, 4},
      {L"\t\twKeyFrameRate=0x%.4X\r\n", 8, 2},
      {L"\t\twPFrameRate=0x%.4X\r\n", 10, 2},
      {L"\t\twCompQuality=0x%.4X\r\n", 12, 2},
      {L"\t\twCompWinSize=0x%.4X\r\n", 14, 2},
      {L"\t\twDelay=0x%.4X\r\n", 16, 2},
      {L"\t\tdwMaxFrameSize=0x%.8X\r\n", 18, 4},
      {L"\t\tdwMaxPayloadSize=0x%.8X\r\n", 22, 4},
      {L"\t\tbmSetting=0x%.4X\r\n", 26, 2},
      {L"\t\tbUsage=0x%.1X\r\n", 28, 1},
      {L"\t\tdwMaxSliceMode=0x%.4X\r\n", 29, 4},
      {L"\t\tbBitDepthLumaMinus8=0x%.1X\r\n", 33, 1},
      {L"\t\tbMaxDecoderFrameBuffering=0x%.1X\r\n", 34, 1},
      {L"\t\tbMaxNumberOfReorderFrames=0x%.1X\r\n", 35, 1},
      {L"\t\tbMaxNumberOfRefFrames=0x%.1X\r\n", 36, 1},
      {capabilityFormat, 37, 1, 8},
      // Deliberate: the same name once more, for the second count.
      {L"\t\tbMaxNumberOfRefFrames=0x%.2X\r\n", 45, 2},
      {L"\t\tdwNumMacroBlocksperSeconds=0x%.4X\r\n", 47, 4},
  }};
}

constexpr auto kProbeFields = StreamFields(
    L"\t\tbmSVCCapabilityModes=0x%.1X 0x%.1X 0x%.1X 0x%.1X 0x%.1X 0x%.1X 0x%.1X 0x%.1X\r\n");
// Deliberate: what the misplaced blank prints is the platform's formatter's to decide, and readers
// of the log depend on it.
constexpr auto kCommitFields = StreamFields(
    L"\t\tbmSVCCapabilityModes=0x%.1X 0x%.1X 0x%.1X 0x%.1 X0x%.1X 0x%.1X 0x%.1X 0x%.1X\r\n");

constexpr std::array<LoggedControl, 10> kControls = {{
    {EncodingUnitXu, 1, L"EU Video Resolution Control \r\n", {}},
    {EncodingUnitXu, 2, L"EU Frame Interval Control \r\n", {}},
    {EncodingUnitXu, 3, L"EU Rate Control \r\n", kRateControlFields},
    {EncodingUnitXu, 4, L"EU Sync Frame Control \r\n", {}},
    {EncodingUnitXu, 5, L"EU Long Term Ref Frame Control \r\n", {}},
    {EncodingUnitXu, 6, L"EU Priority ID Control \r\n", {}},
    {EncodingUnitXu, 7, L"EU Start Layer Control \r\n", {}},
    {EncodingUnitXu, 8, L"EU Stop Layer Control \r\n", {}},
    {StreamProbeXu, stream_probe_selector::kProbe, L"H264 Probe \r\n", kProbeFields},
    {StreamProbeXu, stream_probe_selector::kCommit, L"H264 Commit \r\n", kCommitFields},
}};

}  // namespace

const LoggedControl* FindLoggedControl(const GUID& unit, std::uint16_t selector) {
  const auto* const found =
      std::find_if(kControls.begin(), kControls.end(), [&](const LoggedControl& control) {
        return control.selector == selector && control.unit == unit;
      });
  return found != kControls.end() ? found : nullptr;
}

}  // namespace zem
