// The USB/IP protocol as its server speaks it: the bytes that a client sends, cut into messages,
// and the bytes of what it gets. No sockets. What a client sends is hostile until checked.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace zem::simulator::usb {

using Bytes = std::vector<std::uint8_t>;

// The client does not speak the protocol, or asks for what no transfer needs; the connection is to
// be closed.
class ProtocolError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// ---- Before a device is taken ----

struct ListRequest {};

struct ImportRequest {
  std::string busId;
};

using Request = std::variant<ListRequest, ImportRequest>;

struct ExportedInterface {
  std::uint8_t interfaceClass = 0;
  std::uint8_t subclass = 0;
  std::uint8_t protocol = 0;
};

// A device as a client is told of it.
struct ExportedDevice {
  std::string path;   // in the server's system, at most 255 bytes
  std::string busId;  // such as "1-1", at most 31 bytes
  std::uint32_t bus = 1;
  std::uint32_t number = 1;
  std::uint32_t speed = 3;  // high
  std::uint16_t vendor = 0;
  std::uint16_t product = 0;
  std::uint16_t release = 0;
  std::uint8_t deviceClass = 0;
  std::uint8_t subclass = 0;
  std::uint8_t protocol = 0;
  std::uint8_t configuration = 1;
  std::uint8_t configurations = 1;
  std::vector<ExportedInterface> interfaces;

  // By which commands name it.
  std::uint32_t id() const { return (bus << 16) | number; }
};

Bytes ListReply(std::span<const ExportedDevice> devices);
Bytes ImportReply(const ExportedDevice& device);
// There is no such device, or it is taken.
Bytes ImportRefusal();

// ---- Behind that ----

struct IsoPacket {
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
  std::uint32_t actualLength = 0;
  std::uint32_t status = 0;
};

// A transfer that a client begins.
struct SubmitCommand {
  std::uint32_t sequence = 0;
  std::uint32_t device = 0;
  bool isIn = false;
  std::uint32_t endpoint = 0;
  std::uint32_t flags = 0;
  std::uint32_t length = 0;
  std::uint32_t startFrame = 0;
  std::uint32_t interval = 0;
  std::array<std::uint8_t, 8> setup = {};
  Bytes data;                      // of a transfer out
  std::vector<IsoPacket> packets;  // of an isochronous transfer
};

// A transfer that a client takes back.
struct UnlinkCommand {
  std::uint32_t sequence = 0;
  std::uint32_t device = 0;
  std::uint32_t target = 0;  // the sequence number of the transfer
};

using Command = std::variant<SubmitCommand, UnlinkCommand>;

// The most bytes of one transfer, and packets of an isochronous one.
inline constexpr std::uint32_t kMostData = 1U << 20;
inline constexpr std::uint32_t kMostPackets = 1024;

// Cuts what arrives into messages.
class Reader {
 public:
  void Feed(std::span<const std::uint8_t> bytes);

  // The next whole message, if there is one. A connection begins with requests; behind an import it
  // carries commands. Throws ProtocolError.
  std::optional<Request> NextRequest();
  std::optional<Command> NextCommand();

  // Bytes that no message has taken yet.
  std::size_t waiting() const { return bytes_.size(); }

 private:
  Bytes Take(std::size_t count);

  Bytes bytes_;
};

// The end of a transfer: 0 or a negative errno value. Of a transfer in what moved is `data`, of one
// out it is `moved` bytes.
Bytes SubmitReply(const SubmitCommand& command, std::int32_t status,
                  std::span<const std::uint8_t> data, std::uint32_t moved = 0,
                  std::span<const IsoPacket> packets = {});

// -ECONNRESET (-104) where the transfer was taken back, 0 where it had ended before.
Bytes UnlinkReply(const UnlinkCommand& command, std::int32_t status);

}  // namespace zem::simulator::usb
