#include "tools/zemctl/camera/trace_words.h"

#include <algorithm>
#include <array>
#include <span>

#include "device/extension_units.h"
#include "platform/bytes.h"
#include "romboot/vendor_commands.h"
#include "tools/zemctl/frame/bytes.h"

namespace zemctl {
namespace {

namespace selector = zem::vendor_selector;
using Bytes = std::vector<std::uint8_t>;

// Of more bytes only the first ones are shown.
constexpr std::size_t kMostShown = 16;

std::string Shown(const Bytes& bytes) {
  const auto first = std::span(bytes).first(std::min(bytes.size(), kMostShown));
  return HexText(first) + (bytes.size() > kMostShown ? " ..." : "");
}

std::string Shown(const std::vector<std::int32_t>& values) {
  std::string text;
  for (const std::int32_t value : values) {
    text += (text.empty() ? "" : " ") + std::to_string(value);
  }
  return text;
}

std::string ResultOf(const Transfer& transfer) {
  return transfer.hasFailed() ? FailureOf(transfer) : "done";
}

// ---- Commands of the vendor unit ----

// The channels: a command is written to one control, its reply read from another.
struct CommandChannel {
  std::uint16_t command;
  std::uint16_t reply;
};
constexpr std::array<CommandChannel, 4> kChannels = {{
    {selector::kIspCommand, selector::kIspReply},
    {selector::kVcpCommand, selector::kVcpReply},
    {selector::kIspExtendedCommand, selector::kIspExtendedReply},
    {selector::kVcpExtendedCommand, selector::kVcpExtendedReply},
}};

// A command by the bytes that it begins with.
struct NamedCommand {
  std::uint16_t selector;
  std::size_t length;
  std::array<std::uint8_t, 3> bytes;
  const char* name;
};

constexpr auto kCommands = std::to_array<NamedCommand>({
    {selector::kIspCommand, 1, {0x00}, "set lens position"},
    {selector::kIspCommand, 1, {0x02}, "set frame rate"},
    {selector::kIspCommand, 1, {0x04}, "force key frame"},
    {selector::kIspCommand, 2, {0x08, 0xFF}, "set bit rate"},
    {selector::kIspCommand, 2, {0x0A, 0x00}, "read register"},
    {selector::kIspCommand, 2, {0x0A, 0x01}, "write register"},
    {selector::kIspCommand, 2, {0x0A, 0x02}, "read register"},
    {selector::kIspCommand, 2, {0x0A, 0x03}, "write register"},
    {selector::kIspCommand, 2, {0x0A, 0x04}, "read register"},
    {selector::kIspCommand, 2, {0x0A, 0x05}, "write register"},
    {selector::kIspCommand, 1, {0x0B}, "firmware version"},
    {selector::kIspCommand, 1, {0x0C}, "build date"},
    {selector::kIspCommand, 1, {0x10}, "set video recording mode"},
    {selector::kIspCommand, 2, {0x11, 0x00}, "manual gain"},
    {selector::kIspCommand, 2, {0x11, 0x01}, "automatic gain"},
    {selector::kIspCommand, 2, {0x11, 0x02}, "set white balance gains"},
    {selector::kIspCommand, 2, {0x11, 0x03}, "white balance gains"},
    {selector::kIspCommand, 2, {0xFF, 0x00}, "set lens shading"},
    {selector::kIspCommand, 2, {0xFF, 0x05}, "set auto exposure"},
    {selector::kIspCommand, 2, {0xFF, 0x08}, "set auto focus"},
    {selector::kIspCommand, 2, {0xFF, 0x09}, "focus accumulator"},
    {selector::kIspCommand, 2, {0xFF, 0x0B}, "set image effect"},
    {selector::kIspCommand, 2, {0xFF, 0x11}, "set miscellaneous settings"},
    {selector::kIspCommand, 2, {0xFF, 0x12}, "miscellaneous settings"},
    {selector::kIspCommand, 2, {0xFF, 0x13}, "own MJPEG quality"},
    {selector::kVcpCommand, 2, {0x01, 0x00}, "announce data"},
    {selector::kVcpCommand, 2, {0x01, 0x01}, "burn"},
    {selector::kVcpCommand, 2, {0x01, 0x02}, "ask for data"},
    {selector::kVcpCommand, 2, {0x01, 0x10}, "read flash"},
    {selector::kVcpCommand, 1, {0x06}, "firmware check sum"},
    {selector::kVcpCommand, 1, {0x07}, "set highest quantiser"},
    {selector::kVcpCommand, 1, {0x08}, "set lowest quantiser"},
    {selector::kVcpCommand, 2, {0x0A, 0x01}, "ask for the H.264 formats"},
    {selector::kVcpCommand, 1, {0x0B}, "set H.264 resolution"},
    {selector::kVcpCommand, 2, {0x0C, 0x01}, "H.264 off"},
    {selector::kVcpCommand, 2, {0x0C, 0x02}, "H.264 on"},
    {selector::kVcpCommand, 1, {0x16}, "enter ROM boot"},
    {selector::kVcpCommand, 2, {0x19, 0x81}, "ask for the sensor's serial number"},
    {selector::kVcpCommand, 1, {0x23}, "select multicast stream"},
    {selector::kVcpCommand, 1, {0x24}, "toggle multicast layer"},
    {selector::kVcpCommand, 1, {0x25}, "commit multicast stream"},
    {selector::kVcpCommand, 3, {0xFF, 0x00, 0x14}, "select codec registers"},
    {selector::kVcpCommand, 2, {0xFF, 0x01}, "write register"},
    {selector::kVcpCommand, 2, {0xFF, 0x02}, "read register"},
    {selector::kVcpExtendedCommand, 2, {0xFF, 0x03}, "enter ROM boot"},
});

const NamedCommand* FindCommand(std::uint32_t ofSelector, const Bytes& block) {
  const auto* const found =
      std::find_if(kCommands.begin(), kCommands.end(), [&](const NamedCommand& each) {
        return each.selector == ofSelector && block.size() >= each.length &&
               std::equal(each.bytes.begin(),
                          each.bytes.begin() + static_cast<std::ptrdiff_t>(each.length),
                          block.begin());
      });
  return found != kCommands.end() ? found : nullptr;
}

bool IsBlock(const Bytes& block, std::uint8_t first) {
  return block.size() >= 8 && block[0] == first;
}

constexpr std::uint8_t kTransferControl = 0x01;
constexpr std::uint8_t kReadFlash = 0x10;
constexpr std::uint8_t kBeginRead = 0x02;
constexpr std::uint8_t kRegister = 0x0A;
constexpr std::uint8_t kCodecRegister = 0xFF;
constexpr std::uint8_t kCheckSum = 0x06;

// What the two bytes of an announcement or a burn order stand for.
std::string AreaOf(std::uint8_t byte2, std::uint8_t byte3) {
  std::string area = HexText(std::array<unsigned char, 2>{byte2, byte3});
  if (byte2 == 0x03) {
    area += byte3 == 0x05 ? " (calibration)" : (byte3 == 0x04 ? " (tables)" : " (firmware)");
  }
  return area;
}

// Register, address or area that a command is about.
std::string PlaceOf(std::uint32_t ofSelector, const Bytes& block) {
  if (ofSelector == selector::kIspCommand && IsBlock(block, kRegister) && block[1] <= 0x05) {
    constexpr std::array<const char*, 3> kSpaces = {"isp ", "sensor ", "vcm "};
    const std::uint32_t address = zem::LoadLe16(&block[2]) | std::uint32_t{block[6]} << 16U;
    return kSpaces.at(block[1] / 2U) + HexNumber(address, 4);
  }
  if (ofSelector != selector::kVcpCommand) {
    return "";
  }
  if (IsBlock(block, kCodecRegister) && (block[1] == 0x01 || block[1] == 0x02)) {
    return "codec " + HexNumber(zem::LoadBe16(&block[2]), 4);
  }
  if (IsBlock(block, kTransferControl) && block[1] == kReadFlash) {
    return HexNumber(zem::LoadLe32(&block[2]), 6);
  }
  if (IsBlock(block, kTransferControl) && block[1] < kBeginRead) {
    return AreaOf(block[2], block[3]);
  }
  return "";
}

// What a command gives along.
std::string ValueIn(std::uint32_t ofSelector, const Bytes& block) {
  const std::string name =
      FindCommand(ofSelector, block) != nullptr ? FindCommand(ofSelector, block)->name : "";
  if (name == "write register" && block.size() >= 8) {
    return ofSelector == selector::kIspCommand ? HexNumber(zem::LoadLe16(&block[4]), 4)
                                               : HexNumber(block[4], 2);
  }
  if (ofSelector == selector::kVcpCommand && IsBlock(block, kTransferControl)) {
    if (block[1] < kBeginRead) {
      return std::to_string(zem::LoadLe32(&block[4])) + " bytes";
    }
    if (block[1] == kReadFlash) {
      return std::to_string(zem::LoadLe16(&block[6])) + " bytes";
    }
  }
  return "";
}

// What a reply says, by the block that it answers.
std::string StatusOf(std::uint32_t ofSelector, const Bytes& block, std::uint8_t status) {
  const std::string number = " (" + HexNumber(status, 2) + ")";
  if (ofSelector == selector::kVcpCommand && IsBlock(block, kTransferControl)) {
    return (status == 0x00 ? "idle" : (status == 0x82 ? "failed" : "busy")) + number;
  }
  if (ofSelector == selector::kVcpCommand && IsBlock(block, kCheckSum)) {
    return (status == 0x00 ? "right" : (status == 0x80 ? "wrong" : "refused")) + number;
  }
  return (status == 0x00 ? "accepted" : "refused") + number;
}

std::string ValueOf(std::uint32_t ofSelector, const Bytes& block, const Bytes& reply) {
  const bool isIsp = ofSelector == selector::kIspCommand;
  if (reply.size() < 8 || block.size() < 8) {
    return "";
  }
  if (isIsp && IsBlock(block, kRegister) && block[1] <= 0x05 && block[1] % 2 == 0) {
    return HexNumber(zem::LoadLe16(&reply[2]), 4);
  }
  if (isIsp && (block[0] == 0x0B || block[0] == 0x0C)) {
    return HexText(std::span(reply).subspan(2));
  }
  if (ofSelector == selector::kVcpCommand && block[0] == kCodecRegister && block[1] == 0x02) {
    return HexNumber(reply[2], 2);
  }
  if (ofSelector == selector::kVcpCommand && block[0] == kTransferControl &&
      block[1] == kBeginRead) {
    return std::to_string(zem::LoadLe32(&reply[2])) + " bytes";
  }
  return "";
}

// ---- SCSI commands ----

// Address or storage, and what goes along with it.
void DescribeScsi(const ScsiCommand& command, TraceWords& words) {
  const Bytes& cdb = command.cdb;
  const auto sectors = [&](std::size_t at) {
    return std::to_string(zem::LoadBe16(&cdb[at])) + " sectors";
  };
  switch (command.code()) {
    case zem::SubCommand::kDownload:
      words.value = sectors(4);
      break;
    case zem::SubCommand::kReadStorage:
    case zem::SubCommand::kWriteStorage:
      words.place = HexNumber(zem::LoadBe32(&cdb[4]), 8);
      words.value = sectors(8);
      break;
    case zem::SubCommand::kWriteRegister:
      words.value = HexNumber(cdb[8], 2);
      [[fallthrough]];
    case zem::SubCommand::kReadRegister:
    case zem::SubCommand::kSetFwDownloadAddress:
      words.place = HexNumber(zem::LoadBe32(&cdb[4]), 8);
      break;
    case zem::SubCommand::kSelectStorage:
      words.place = "storage " + HexNumber(cdb[4], 2);
      break;
    default:
      break;
  }
}

TraceWords DecodeScsi(const ScsiCommand& command) {
  TraceWords words;
  words.action = command.isIn ? "in" : "out";
  words.unit = "volume";
  words.control = HexText(command.cdb);
  words.command = NameOfCdb(command.cdb);
  DescribeScsi(command, words);
  words.status = command.error == 0 ? HexNumber(command.status, 2) : "";
  words.bytes = Shown(command.data);
  words.result = command.hasFailed() ? FailureOf(command) : "done";
  return words;
}

bool IsNvmem(const Transfer& transfer) {
  return transfer.Is(zem::VendorXu, selector::kNvmem, transfer.isSet) ||
         transfer.Is(zem::TirellaXu, zem::tirella_selector::kNvmem, transfer.isSet);
}

// A piece of non-volatile memory: address, number of bytes, data.
void DescribePiece(const Transfer& transfer, TraceWords& words) {
  constexpr std::uint8_t kAsked = 0x80;
  if (transfer.bytes.size() < 3) {
    return;
  }
  const std::uint8_t count = transfer.bytes[2];
  if (transfer.isSet) {
    words.command = (count & kAsked) != 0 ? "ask for memory" : "write memory";
  } else {
    words.command = "memory";
  }
  words.place = HexNumber(zem::LoadLe16(transfer.bytes.data()), 4);
  words.value = std::to_string(count & ~kAsked) + " bytes";
}

std::string DirectionOf(const Transfer& transfer) {
  if (!transfer.isAddressed) {
    return "none";
  }
  return transfer.isSet ? "set" : (transfer.isRange ? "range" : "get");
}

struct Clause {
  std::string operator()(const TracedRun& run) const {
    std::string text = "run of " + run.tool + ":";
    for (const std::string& argument : run.command) {
      text += " " + argument;
    }
    return text;
  }
  std::string operator()(const TracedDevices& list) const {
    return "a list of " + std::to_string(list.devices.size()) +
           (list.isAudio ? " audio" : " video") + " devices";
  }
  std::string operator()(const TracedOpening& opening) const { return "open " + opening.path; }
  std::string operator()(const TracedLookup& traced) const {
    constexpr std::array<const char*, 5> kQuestions = {"interface", "number of nodes",
                                                       "type of node", "node", "unit of node"};
    return std::string("a question for the ") +
           kQuestions.at(static_cast<std::size_t>(traced.lookup.what)) + " " +
           std::to_string(traced.lookup.node);
  }
  std::string operator()(const TracedTransfer& traced) const {
    const Transfer& transfer = traced.transfer;
    std::string text = NameOf(transfer);
    if (transfer.isRange) {
      text += " (range)";
    }
    if (transfer.isSet && transfer.isAddressed) {
      text +=
          ": " + (transfer.isStandardControl() ? Shown(transfer.values) : Shown(transfer.bytes));
    }
    return text;
  }
  std::string operator()(const TracedVolume& volume) const {
    return "a look for the volume " + volume.drive + ", " +
           (volume.opening.isOpen() ? "there" : "not there") +
           (volume.opening.path.empty()
                ? ""
                : ": " + volume.opening.path + ", error " + std::to_string(volume.opening.error));
  }
  std::string operator()(const TracedCommand& traced) const {
    const ScsiCommand& command = traced.command;
    const std::string name = NameOfCdb(command.cdb);
    return std::string("SCSI ") + (command.isIn ? "in " : "out ") + command.drive + " (" + name +
           (name.empty() ? "" : ", ") + std::to_string(command.length) + " bytes), " +
           HexText(command.cdb) +
           (command.isIn || command.data.empty() ? "" : ": " + Shown(command.data));
  }
  std::string operator()(const TracedEnd& end) const {
    return "the end of the run with code " + std::to_string(end.exitCode);
  }
};

}  // namespace

std::string Words(const TraceEvent& event) { return std::visit(Clause(), event); }

TraceWords TraceDecoder::Decode(const TraceEvent& event) {
  if (const auto* const traced = std::get_if<TracedTransfer>(&event)) {
    return DecodeTransfer(*traced);
  }
  if (const auto* const traced = std::get_if<TracedCommand>(&event)) {
    return DecodeScsi(traced->command);
  }
  TraceWords words;
  words.command = Words(event);
  if (std::holds_alternative<TracedRun>(event)) {
    words.action = "run";
  } else if (const auto* const list = std::get_if<TracedDevices>(&event)) {
    words.action = "list";
    words.result = HexNumber(static_cast<std::uint32_t>(list->result), 8);
  } else if (const auto* const opening = std::get_if<TracedOpening>(&event)) {
    words.action = "open";
    words.result = HexNumber(static_cast<std::uint32_t>(opening->result), 8);
  } else if (const auto* const lookup = std::get_if<TracedLookup>(&event)) {
    words.action = "lookup";
    words.bytes = Shown(lookup->lookup.bytes);
    words.result = HexNumber(static_cast<std::uint32_t>(lookup->lookup.result), 8);
  } else if (std::holds_alternative<TracedVolume>(event)) {
    words.action = "look";
  } else {
    words.action = "end";
  }
  return words;
}

TraceWords TraceDecoder::DecodeTransfer(const TracedTransfer& traced) {
  const Transfer& transfer = traced.transfer;
  TraceWords words;
  words.action = DirectionOf(transfer);
  words.unit = UnitName(transfer.unit);
  words.result = ResultOf(transfer);
  if (!transfer.isAddressed) {
    words.command = NameOf(transfer);
    return words;
  }
  words.selector = std::to_string(transfer.selector);
  words.control = ControlName(transfer);
  words.bytes = traced.leftOut ? "left out" : Shown(transfer.bytes);
  if (transfer.isStandardControl()) {
    words.bytes = Shown(transfer.values);
    return words;
  }
  if (IsNvmem(transfer)) {
    DescribePiece(transfer, words);
    return words;
  }
  if (!(transfer.unit == zem::VendorXu)) {
    return words;
  }
  for (const CommandChannel& channel : kChannels) {
    auto& command = commands_[{traced.camera, channel.reply}];
    if (transfer.isSet && transfer.selector == channel.command) {
      command = transfer.bytes;
      words.value = ValueIn(channel.command, command);
    } else if (!transfer.isSet && transfer.selector == channel.reply) {
      if (!transfer.hasFailed() && !transfer.bytes.empty()) {
        words.status = StatusOf(channel.command, command, transfer.bytes[0]);
        words.value = ValueOf(channel.command, command, transfer.bytes);
      }
    } else {
      continue;
    }
    const NamedCommand* const named = FindCommand(channel.command, command);
    words.command = named != nullptr ? named->name : "";
    words.place = PlaceOf(channel.command, command);
  }
  return words;
}

}  // namespace zemctl
