#include "simulator/transfer_log.h"

#include <array>
#include <cstdio>
#include <stdexcept>

#include "simulator/utf8_files.h"

namespace zem::simulator {
namespace {

const char* NameOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::kDone:
      return "done";
    case Outcome::kNoSuchControl:
      return "no such control";
    case Outcome::kWrongLength:
      return "wrong length";
    case Outcome::kInvalidValue:
      return "invalid value";
    case Outcome::kFailed:
      return "failed";
    case Outcome::kSilent:
      return "no answer";
    case Outcome::kUnplugged:
      break;
  }
  return "unplugged";
}

void WriteGuid(std::FILE* file, const GUID& id) {
  std::fprintf(file, "{%08X-%04X-%04X-", static_cast<unsigned>(id.Data1), unsigned{id.Data2},
               unsigned{id.Data3});
  for (std::size_t index = 0; index < std::size(id.Data4); ++index) {
    std::fprintf(file, "%s%02X", index == 2 ? "-" : "", unsigned{id.Data4[index]});
  }
  std::fputc('}', file);
}

void WriteLine(std::FILE* file, const Transfer& transfer) {
  std::fprintf(file, R"({"direction": "%s", "unit": ")", transfer.isSet ? "set" : "get");
  WriteGuid(file, transfer.unit);
  std::fprintf(file, R"(", "selector": %u, "length": %zu, "data": ")", unsigned{transfer.selector},
               transfer.length);
  const char* separator = "";
  for (const std::uint8_t byte : transfer.bytes) {
    std::fprintf(file, "%s%02x", separator, unsigned{byte});
    separator = " ";
  }
  std::fprintf(file, "\", \"outcome\": \"%s\"}\n", NameOf(transfer.outcome));
  std::fflush(file);
}

}  // namespace

void LogTransfers(Camera& camera, const std::string& path) {
  const std::shared_ptr<std::FILE> file = OpenUtf8(path, "ab");
  if (!file) {
    throw std::invalid_argument("the file of transfers \"" + path + "\" cannot be written");
  }
  camera.SetObserver([file](const Transfer& transfer) { WriteLine(file.get(), transfer); });
}

}  // namespace zem::simulator
