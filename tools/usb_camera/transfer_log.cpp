#include "tools/usb_camera/transfer_log.h"

#include <stdexcept>

#include "simulator/hex_text.h"

namespace zem::usb_camera {
namespace {

using simulator::ScsiOutcome;
using simulator::usb::Answer;

constexpr const char* kNothing = "-";

std::string BytesText(std::span<const std::uint8_t> bytes) {
  return bytes.empty() ? kNothing : simulator::HexOf(bytes);
}

const char* DirectionText(bool isIn) { return isIn ? "in" : "out"; }

std::string ResultText(const Answer& answer) {
  switch (answer.kind) {
    case Answer::Kind::kDone:
      return "done";
    case Answer::Kind::kStalled:
      return "stall:" + std::to_string(static_cast<int>(answer.reason));
    case Answer::Kind::kTooMuch:
      return "too-much";
    case Answer::Kind::kSilent:
      return "silent";
    case Answer::Kind::kGone:
      break;
  }
  return "gone";
}

const char* ResultText(ScsiOutcome outcome) {
  switch (outcome) {
    case ScsiOutcome::kDone:
      return "done";
    case ScsiOutcome::kRefused:
      return "refused";
    case ScsiOutcome::kFailed:
      return "failed";
    case ScsiOutcome::kSilent:
      return "silent";
    case ScsiOutcome::kGone:
      break;
  }
  return "gone";
}

}  // namespace

std::string ControlLine(std::size_t camera, const simulator::usb::SetupPacket& setup,
                        std::span<const std::uint8_t> sent, const Answer& answer) {
  constexpr std::uint8_t kIn = 0x80;
  const bool isOfClass = simulator::usb::IsOfClass(setup);
  std::string line = std::to_string(camera) + " control " + simulator::HexOf(setup) + " ";
  line += DirectionText((setup[0] & kIn) != 0);
  line += " " + (isOfClass ? std::to_string(setup[5]) : kNothing);
  line += " " + (isOfClass ? std::to_string(setup[3]) : kNothing);
  return line + " " + BytesText(sent) + " " + ResultText(answer) + " " + BytesText(answer.data);
}

std::string CommandLine(std::size_t camera, const simulator::ScsiExchange& exchange) {
  return std::to_string(camera) + " scsi " + BytesText(exchange.cdb) + " " +
         DirectionText(exchange.dataIn) + " " + ResultText(exchange.outcome) + " " +
         BytesText(exchange.data);
}

TransferLog::TransferLog(const std::string& path) : file_(simulator::OpenUtf8(path, "wb")) {
  if (file_ == nullptr) {
    throw std::runtime_error("the file \"" + path + "\" cannot be written");
  }
}

void TransferLog::Write(const std::string& line) {
  std::fputs((line + "\n").c_str(), file_.get());
  std::fflush(file_.get());
}

}  // namespace zem::usb_camera
