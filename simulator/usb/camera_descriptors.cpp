#include "simulator/usb/camera_descriptors.h"

#include <algorithm>
#include <initializer_list>

#include "platform/bytes.h"
#include "simulator/standard_controls.h"
#include "simulator/usb/unit_controls.h"

namespace zem::simulator::usb {
namespace {

// Types of descriptors within a configuration.
constexpr std::uint8_t kInterface = 0x04;
constexpr std::uint8_t kEndpoint = 0x05;
constexpr std::uint8_t kAssociation = 0x0B;
constexpr std::uint8_t kClassInterface = 0x24;
constexpr std::uint8_t kClassEndpoint = 0x25;

constexpr std::uint8_t kVideoClass = 0x0E;

constexpr std::uint16_t kBulkPacket = 512;
constexpr std::uint16_t kStatusPacket = 16;

// A block of bytes that grows at its end; numbers are little-endian.
class Block {
 public:
  Block() = default;
  Block(std::initializer_list<std::uint8_t> bytes) : bytes_(bytes) {}

  void Add(std::initializer_list<std::uint8_t> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  }
  void Add16(std::uint16_t number) { Add({ByteOf(number, 0), ByteOf(number, 1)}); }
  void Add32(std::uint32_t number) {
    Add16(static_cast<std::uint16_t>(number));
    Add16(static_cast<std::uint16_t>(number >> 16));
  }
  void AddGuid(const GUID& id) {
    Add32(id.Data1);
    Add16(id.Data2);
    Add16(id.Data3);
    bytes_.insert(bytes_.end(), std::begin(id.Data4), std::end(id.Data4));
  }
  void Append(const Bytes& bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }

  const Bytes& bytes() const { return bytes_; }

  // The bytes as one descriptor: its length in front.
  Bytes Descriptor() const {
    Bytes descriptor = bytes_;
    descriptor.insert(descriptor.begin(), static_cast<std::uint8_t>(bytes_.size() + 1));
    return descriptor;
  }

 private:
  Bytes bytes_;
};

// The bits of a standard control among those of its entity: that of its value, and that of its
// automatic, 0 for none.
struct ControlBits {
  std::int32_t property;
  std::uint32_t value;
  std::uint32_t automatic;
};

constexpr ControlBits kProcessingBits[] = {
    {0, 1U << 0, 0},        {1, 1U << 1, 0}, {2, 1U << 2, 1U << 11},
    {3, 1U << 3, 0},        {4, 1U << 4, 0}, {5, 1U << 5, 0},
    {7, 1U << 6, 1U << 12}, {8, 1U << 8, 0}, {9, 1U << 9, 0},
};
// Pan and tilt are one control.
constexpr ControlBits kTerminalBits[] = {
    {0, 1U << 11, 0},      {1, 1U << 11, 0}, {3, 1U << 9, 0},
    {4, 1U << 3, 1U << 1}, {5, 1U << 7, 0},  {6, 1U << 5, 1U << 17},
};

template <std::size_t count>
std::uint32_t BitsOf(ControlFamily family, const ControlBits (&table)[count]) {
  std::uint32_t bits = 0;
  for (const auto& [property, control] : DefaultControls(family)) {
    const auto* const row = std::find_if(
        std::begin(table), std::end(table),
        [wanted = property](const ControlBits& each) { return each.property == wanted; });
    if (row != std::end(table)) {
      const bool isAutomatic = (control.range.flags & kAutomatic) != 0;
      bits |= row->value | (isAutomatic ? row->automatic : 0);
    }
  }
  return bits;
}

Bytes DescribeInputTerminal(bool hasControls) {
  constexpr std::uint8_t kInputTerminal = 0x02;
  Block block = {kClassInterface, kInputTerminal, kCameraTerminalId};
  if (!hasControls) {
    block.Add16(0x0200);  // of the vendor's own kind
    block.Add({0, 0});
    return block.Descriptor();
  }
  const std::uint32_t bits = BitsOf(ControlFamily::kCameraTerminal, kTerminalBits);
  block.Add16(0x0201);  // a camera
  block.Add({0, 0});
  block.Add16(0);  // focal lengths of the lens, and the ocular's
  block.Add16(0);
  block.Add16(0);
  block.Add({3, ByteOf(bits, 0), ByteOf(bits, 1), ByteOf(bits, 2)});
  return block.Descriptor();
}

// Without controls the unit is one that only passes the picture on, so that the nodes keep their
// numbers.
Bytes DescribeProcessingUnit(bool hasControls) {
  constexpr std::uint8_t kSelectorUnit = 0x04;
  constexpr std::uint8_t kProcessingUnit = 0x05;
  if (!hasControls) {
    return Block({kClassInterface, kSelectorUnit, kProcessingUnitId, 1, kCameraTerminalId, 0})
        .Descriptor();
  }
  const std::uint32_t bits = BitsOf(ControlFamily::kVideoProcessing, kProcessingBits);
  return Block({kClassInterface, kProcessingUnit, kProcessingUnitId, kCameraTerminalId, 0, 0, 2,
                ByteOf(bits, 0), ByteOf(bits, 1), 0, 0})
      .Descriptor();
}

Bytes DescribeExtensionUnit(const DescribedUnit& unit, std::uint8_t id) {
  constexpr std::uint8_t kExtensionUnit = 0x06;
  std::uint8_t last = 0;
  for (const UnitControl& control : unit.controls) {
    last = std::max(last, control.selector);
  }
  Bytes bits((last + 7U) / 8U);
  for (const UnitControl& control : unit.controls) {
    const unsigned bit = control.selector - 1U;
    bits[bit / 8] = static_cast<std::uint8_t>(bits[bit / 8] | (1U << (bit % 8)));
  }
  Block block = {kClassInterface, kExtensionUnit, id};
  block.AddGuid(unit.id);
  block.Add({static_cast<std::uint8_t>(unit.controls.size()), 1, static_cast<std::uint8_t>(id - 1),
             static_cast<std::uint8_t>(bits.size())});
  block.Append(bits);
  block.Add({0});
  return block.Descriptor();
}

Bytes DescribeVideoControl(const CameraOptions& options) {
  Block entities;
  entities.Append(DescribeInputTerminal(options.cameraControls));
  entities.Append(DescribeProcessingUnit(options.videoControls));
  std::uint8_t id = kFirstExtensionId;
  for (const DescribedUnit& unit : DescribeUnits(options)) {
    entities.Append(DescribeExtensionUnit(unit, id++));
  }
  constexpr std::uint8_t kOutputTerminal = 0x03;
  Block output = {kClassInterface, kOutputTerminal, id};
  output.Add16(0x0101);  // a stream
  output.Add({0, static_cast<std::uint8_t>(id - 1), 0});
  entities.Append(output.Descriptor());

  constexpr std::uint8_t kHeader = 0x01;
  constexpr std::size_t kHeaderLength = 13;
  Block header = {kClassInterface, kHeader};
  header.Add16(0x0110);
  header.Add16(static_cast<std::uint16_t>(kHeaderLength + entities.bytes().size()));
  header.Add32(48000000);  // the clock of its time stamps
  header.Add({1, kStreamingInterface});

  Block all;
  all.Append({9, kInterface, kVideoControlInterface, 0, 1, kVideoClass, 1, 0, 0});
  all.Append(header.Descriptor());
  all.Append(entities.bytes());
  all.Append({7, kEndpoint, kStatusEndpoint, 3, kStatusPacket, 0, 8});
  all.Append({5, kClassEndpoint, 3, kStatusPacket, 0});
  return all.bytes();
}

Bytes DescribeStreaming(std::uint8_t outputTerminal) {
  constexpr GUID kYuy2 = {
      0x32595559, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
  Block format = {kClassInterface, 0x04, 1, 1};
  format.AddGuid(kYuy2);
  format.Add({16, 1, 0, 0, 0, 0});

  Block frame = {kClassInterface, 0x05, 1, 0};
  frame.Add16(kPictureWidth);
  frame.Add16(kPictureHeight);
  constexpr std::uint32_t kBitRate = kPictureSize * 8U * 30U;
  frame.Add32(kBitRate);
  frame.Add32(kBitRate);
  frame.Add32(kPictureSize);
  frame.Add32(kFrameInterval);
  frame.Add({1});
  frame.Add32(kFrameInterval);

  Block formats;
  formats.Append(format.Descriptor());
  formats.Append(frame.Descriptor());
  formats.Append({6, kClassInterface, 0x0D, 1, 1, 4});  // colours as of BT.709, and of SMPTE 170M

  constexpr std::size_t kHeaderLength = 14;
  Block header = {kClassInterface, 0x01, 1};
  header.Add16(static_cast<std::uint16_t>(kHeaderLength + formats.bytes().size()));
  header.Add({kStreamEndpoint, 0, outputTerminal, 0, 0, 0, 1, 0});

  Block all;
  all.Append({9, kInterface, kStreamingInterface, 0, 1, kVideoClass, 2, 0, 0});
  all.Append(header.Descriptor());
  all.Append(formats.bytes());
  all.Append({7, kEndpoint, kStreamEndpoint, 2, ByteOf(kBulkPacket, 0), ByteOf(kBulkPacket, 1), 0});
  return all.bytes();
}

}  // namespace

DeviceDescriptors DescribeCamera(const CameraOptions& options) {
  DeviceDescriptors camera;
  Block device = {descriptor_type::kDevice};
  device.Add16(0x0200);
  // An interface association in a class that says so.
  device.Add({0xEF, 2, 1, 64});
  device.Add16(options.vendorId);
  device.Add16(options.productId);
  device.Add16(0x0100);
  device.Add({1, 2, 3, 1});
  camera.device = device.Descriptor();
  camera.qualifier = {10, descriptor_type::kQualifier, 0x00, 0x02, 0xEF, 2, 1, 64, 1, 0};

  Block interfaces;
  // The function has no name of its own: a system would add it to the product's.
  interfaces.Append({8, kAssociation, kVideoControlInterface, 2, kVideoClass, 3, 0, 0});
  interfaces.Append(DescribeVideoControl(options));
  const auto outputTerminal =
      static_cast<std::uint8_t>(kFirstExtensionId + DescribeUnits(options).size());
  interfaces.Append(DescribeStreaming(outputTerminal));

  constexpr std::size_t kConfigurationLength = 9;
  Block configuration = {descriptor_type::kConfiguration};
  configuration.Add16(static_cast<std::uint16_t>(kConfigurationLength + interfaces.bytes().size()));
  configuration.Add({2, 1, 0, 0x80, 50});
  camera.configuration = configuration.Descriptor();
  camera.configuration.insert(camera.configuration.end(), interfaces.bytes().begin(),
                              interfaces.bytes().end());
  camera.strings = {"ZEM", options.name, "0000000000000000"};
  return camera;
}

}  // namespace zem::simulator::usb
