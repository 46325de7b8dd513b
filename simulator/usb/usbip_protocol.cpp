#include "simulator/usb/usbip_protocol.h"

#include <algorithm>
#include <utility>

#include "platform/bytes.h"

namespace zem::simulator::usb {
namespace {

constexpr std::uint16_t kVersion = 0x0111;
constexpr std::uint16_t kListRequest = 0x8005;
constexpr std::uint16_t kListReply = 0x0005;
constexpr std::uint16_t kImportRequest = 0x8003;
constexpr std::uint16_t kImportReply = 0x0003;

constexpr std::uint32_t kSubmit = 1;
constexpr std::uint32_t kUnlink = 2;
constexpr std::uint32_t kSubmitReply = 3;
constexpr std::uint32_t kUnlinkReply = 4;

constexpr std::size_t kRequestHeader = 8;
constexpr std::size_t kCommandHeader = 48;
constexpr std::size_t kPacketLength = 16;
constexpr std::size_t kPathLength = 256;
constexpr std::size_t kBusIdLength = 32;

// In place of a number of packets: the transfer has none.
constexpr std::uint32_t kNoPackets = 0xFFFFFFFF;

constexpr std::uint32_t kMostEndpoint = 15;

// Big-endian numbers one behind the other.
class Writer {
 public:
  Writer& Add8(std::uint8_t number) {
    bytes_.push_back(number);
    return *this;
  }
  Writer& Add16(std::uint16_t number) {
    std::array<std::uint8_t, 2> bytes = {};
    StoreBe16(bytes.data(), number);
    return Append(bytes);
  }
  Writer& Add32(std::uint32_t number) {
    std::array<std::uint8_t, 4> bytes = {};
    StoreBe32(bytes.data(), number);
    return Append(bytes);
  }
  // A text in a field of `size` bytes, the last of which stays 0.
  Writer& AddText(const std::string& text, std::size_t size) {
    Bytes field(size);
    std::copy_n(text.begin(), std::min(text.size(), size - 1), field.begin());
    return Append(field);
  }
  Writer& AddZeros(std::size_t count) { return Append(Bytes(count)); }
  Writer& Append(std::span<const std::uint8_t> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    return *this;
  }

  Bytes bytes() && { return std::move(bytes_); }

 private:
  Bytes bytes_;
};

void AddDevice(Writer& writer, const ExportedDevice& device) {
  writer.AddText(device.path, kPathLength)
      .AddText(device.busId, kBusIdLength)
      .Add32(device.bus)
      .Add32(device.number)
      .Add32(device.speed)
      .Add16(device.vendor)
      .Add16(device.product)
      .Add16(device.release)
      .Add8(device.deviceClass)
      .Add8(device.subclass)
      .Add8(device.protocol)
      .Add8(device.configuration)
      .Add8(device.configurations)
      .Add8(static_cast<std::uint8_t>(device.interfaces.size()));
}

Writer BeginReply(std::uint16_t code, std::uint32_t status) {
  Writer writer;
  writer.Add16(kVersion).Add16(code).Add32(status);
  return writer;
}

// The fields of a message one behind the other.
class FieldReader {
 public:
  explicit FieldReader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

  std::uint32_t Next32() { return LoadBe32(Next(4).data()); }
  std::span<const std::uint8_t> Next(std::size_t count) {
    const auto field = rest_.first(count);
    rest_ = rest_.subspan(count);
    return field;
  }

 private:
  std::span<const std::uint8_t> rest_;
};

std::vector<IsoPacket> ReadPackets(FieldReader& fields, std::uint32_t count, std::uint32_t length) {
  std::vector<IsoPacket> packets(count);
  for (IsoPacket& packet : packets) {
    packet.offset = fields.Next32();
    packet.length = fields.Next32();
    packet.actualLength = fields.Next32();
    packet.status = fields.Next32();
    if (packet.offset > length || packet.length > length - packet.offset) {
      throw ProtocolError("a packet lies outside its transfer");
    }
  }
  return packets;
}

}  // namespace

Bytes ListReply(std::span<const ExportedDevice> devices) {
  Writer writer = BeginReply(kListReply, 0);
  writer.Add32(static_cast<std::uint32_t>(devices.size()));
  for (const ExportedDevice& device : devices) {
    AddDevice(writer, device);
    for (const ExportedInterface& interface : device.interfaces) {
      writer.Add8(interface.interfaceClass)
          .Add8(interface.subclass)
          .Add8(interface.protocol)
          .Add8(0);
    }
  }
  return std::move(writer).bytes();
}

Bytes ImportReply(const ExportedDevice& device) {
  Writer writer = BeginReply(kImportReply, 0);
  AddDevice(writer, device);
  return std::move(writer).bytes();
}

Bytes ImportRefusal() { return BeginReply(kImportReply, 1).bytes(); }

void Reader::Feed(std::span<const std::uint8_t> bytes) {
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

Bytes Reader::Take(std::size_t count) {
  const auto end = bytes_.begin() + static_cast<std::ptrdiff_t>(count);
  Bytes taken(bytes_.begin(), end);
  bytes_.erase(bytes_.begin(), end);
  return taken;
}

std::optional<Request> Reader::NextRequest() {
  if (bytes_.size() < kRequestHeader) {
    return std::nullopt;
  }
  if (LoadBe16(bytes_.data()) != kVersion) {
    throw ProtocolError("another version of the protocol");
  }
  const std::uint16_t code = LoadBe16(&bytes_[2]);
  if (code == kListRequest) {
    Take(kRequestHeader);
    return ListRequest{};
  }
  if (code != kImportRequest) {
    throw ProtocolError("an unknown request");
  }
  if (bytes_.size() < kRequestHeader + kBusIdLength) {
    return std::nullopt;
  }
  const Bytes message = Take(kRequestHeader + kBusIdLength);
  const auto field = message.begin() + kRequestHeader;
  return ImportRequest{std::string(field, std::find(field, message.end(), 0))};
}

std::optional<Command> Reader::NextCommand() {
  if (bytes_.size() < kCommandHeader) {
    return std::nullopt;
  }
  FieldReader header(bytes_);
  const std::uint32_t code = header.Next32();
  SubmitCommand submit;
  submit.sequence = header.Next32();
  submit.device = header.Next32();
  const std::uint32_t direction = header.Next32();
  submit.endpoint = header.Next32();
  if (code == kUnlink) {
    const UnlinkCommand unlink = {submit.sequence, submit.device, header.Next32()};
    Take(kCommandHeader);
    return unlink;
  }
  if (code != kSubmit) {
    throw ProtocolError("an unknown command");
  }
  submit.flags = header.Next32();
  submit.length = header.Next32();
  submit.startFrame = header.Next32();
  const std::uint32_t told = header.Next32();
  submit.interval = header.Next32();
  std::ranges::copy(header.Next(submit.setup.size()), submit.setup.begin());
  const std::uint32_t packets = told == kNoPackets ? 0 : told;
  if (direction > 1 || submit.endpoint > kMostEndpoint || submit.length > kMostData ||
      packets > kMostPackets) {
    throw ProtocolError("a transfer that cannot be");
  }
  submit.isIn = direction == 1;
  const std::size_t data = submit.isIn ? 0 : submit.length;
  const std::size_t whole = kCommandHeader + data + kPacketLength * packets;
  if (bytes_.size() < whole) {
    return std::nullopt;
  }
  const Bytes message = Take(whole);
  FieldReader fields(message);
  fields.Next(kCommandHeader);
  const auto moved = fields.Next(data);
  submit.data.assign(moved.begin(), moved.end());
  submit.packets = ReadPackets(fields, packets, submit.length);
  return submit;
}

Bytes SubmitReply(const SubmitCommand& command, std::int32_t status,
                  std::span<const std::uint8_t> data, std::uint32_t moved,
                  std::span<const IsoPacket> packets) {
  Writer writer;
  writer.Add32(kSubmitReply)
      .Add32(command.sequence)
      .AddZeros(12)
      .Add32(static_cast<std::uint32_t>(status))
      .Add32(command.isIn ? static_cast<std::uint32_t>(data.size()) : moved)
      .Add32(command.startFrame)
      .Add32(static_cast<std::uint32_t>(packets.size()))
      .AddZeros(12);
  if (command.isIn) {
    writer.Append(data);
  }
  for (const IsoPacket& packet : packets) {
    writer.Add32(packet.offset)
        .Add32(packet.length)
        .Add32(packet.actualLength)
        .Add32(packet.status);
  }
  return std::move(writer).bytes();
}

Bytes UnlinkReply(const UnlinkCommand& command, std::int32_t status) {
  Writer writer;
  writer.Add32(kUnlinkReply)
      .Add32(command.sequence)
      .AddZeros(12)
      .Add32(static_cast<std::uint32_t>(status))
      .AddZeros(24);
  return std::move(writer).bytes();
}

}  // namespace zem::simulator::usb
