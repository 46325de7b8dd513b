#include "simulator/volume.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>
#include <vector>

#include "platform/bytes.h"
#include "platform/text.h"

namespace zem::simulator {
namespace {

// The header that both forms of the request begin with.
constexpr std::size_t kPassThroughSize = 56;
constexpr std::size_t kCdbCapacity = 16;
constexpr std::uint8_t kDirectionIn = 1;

struct Header {
  std::size_t cdbLength;
  std::size_t senseLength;
  bool dataIn;
  std::size_t dataLength;
  std::uint64_t data;  // offset of the data within the block, or its address
  std::size_t sense;   // offset of the sense bytes
  std::span<const std::uint8_t> cdb;

  std::uint64_t senseEnd() const { return std::uint64_t{sense} + senseLength; }
};

std::uint64_t LoadLe64(const std::uint8_t* bytes) {
  return LoadLe32(bytes) | (std::uint64_t{LoadLe32(bytes + 4)} << 32);
}

// Nothing for a block that the system would not take.
std::optional<Header> ReadHeader(std::span<const std::uint8_t> block) {
  if (block.size() < kPassThroughSize || LoadLe16(block.data()) != kPassThroughSize ||
      block[6] > kCdbCapacity || block[8] > kDirectionIn) {
    return std::nullopt;
  }
  Header header = {block[6],
                   block[7],
                   block[8] == kDirectionIn,
                   LoadLe32(&block[12]),
                   LoadLe64(&block[24]),
                   LoadLe32(&block[32]),
                   block.subspan(36, block[6])};
  if (header.senseLength > 0 && header.sense < kPassThroughSize) {
    return std::nullopt;
  }
  return header;
}

// Whether the device answered at all, were it with a refusal.
bool HasAnswered(const ScsiResult& result) {
  return result.outcome == ScsiOutcome::kDone || result.status != 0;
}

// The header comes back with the device's status and the number of bytes that moved.
void ReturnHeader(std::span<const std::uint8_t> input, std::span<std::uint8_t> output,
                  const ScsiResult& result) {
  // Both may be the same memory.
  std::memmove(output.data(), input.data(), std::min(kPassThroughSize, output.size()));
  if (output.size() >= kPassThroughSize) {
    output[2] = result.status;
    StoreLe32(&output[12], static_cast<std::uint32_t>(result.moved));
  }
}

}  // namespace

std::uint32_t SystemErrorOf(const ScsiResult& result) {
  if (result.status != 0) {
    return 0;
  }
  switch (result.outcome) {
    case ScsiOutcome::kDone:
      return 0;
    case ScsiOutcome::kRefused:
      return kDeviceError;
    case ScsiOutcome::kFailed:
      return result.error != 0 ? result.error : kGeneralFailure;
    case ScsiOutcome::kSilent:
      return kTimedOut;
    case ScsiOutcome::kGone:
      break;
  }
  return kNotConnected;
}

bool Volume::IsNamed(std::wstring_view path) const {
  const std::wstring name = std::wstring(L"\\\\.\\") + bootLoader_->letter() + L':';
  return EqualIgnoringCase(path, name);
}

void* Volume::Open(std::uint32_t& error) {
  const std::optional<std::uint32_t> connection = bootLoader_->Connect();
  if (!connection) {
    error = kNoSuchFile;
    return nullptr;
  }
  error = 0;
  return handles_.insert(std::make_unique<Handle>(Handle{*connection})).first->get();
}

void Volume::Close(const void* handle) {
  if (const auto found = handles_.find(handle); found != handles_.end()) {
    handles_.erase(found);
  }
}

std::uint32_t Volume::Control(const void* handle, std::uint32_t code,
                              std::span<const std::uint8_t> input, std::span<std::uint8_t> output,
                              std::uint32_t& returned) {
  returned = 0;
  const auto found = handles_.find(handle);
  if (found == handles_.end()) {
    return kNoSuchHandle;
  }
  if (!bootLoader_->IsConnected((*found)->connection)) {
    return kNotConnected;
  }
  std::uint32_t error = kNoSuchFunction;
  if (code == kScsiPassThrough) {
    error = PassThrough(input, output);
  } else if (code == kScsiPassThroughDirect) {
    error = PassThroughDirect(input, output);
  }
  if (error == 0) {
    returned = static_cast<std::uint32_t>(output.size());
  }
  return error;
}

// The buffered form: data and sense bytes lie in the block itself.
std::uint32_t Volume::PassThrough(std::span<const std::uint8_t> input,
                                  std::span<std::uint8_t> output) {
  const std::optional<Header> header = ReadHeader(input);
  if (!header) {
    return kInvalidParameter;
  }
  const std::size_t blockSize = header->dataIn ? output.size() : input.size();
  const bool hasData = header->dataLength > 0;
  if (header->senseEnd() > std::max(input.size(), output.size()) ||
      (hasData && (header->data < std::max<std::uint64_t>(kPassThroughSize, header->senseEnd()) ||
                   header->data > blockSize || header->dataLength > blockSize - header->data))) {
    return kInvalidParameter;
  }
  std::vector<std::uint8_t> data(header->dataLength);
  if (hasData && !header->dataIn) {
    std::copy_n(input.begin() + static_cast<std::ptrdiff_t>(header->data), data.size(),
                data.begin());
  }
  const ScsiResult result = bootLoader_->Execute(header->cdb, header->dataIn, data);
  if (HasAnswered(result)) {
    if (header->dataIn) {
      std::copy_n(data.begin(), result.moved,
                  output.begin() + static_cast<std::ptrdiff_t>(header->data));
    }
    ReturnHeader(input, output, result);
  }
  return SystemErrorOf(result);
}

// The direct form: the block holds the address of the caller's buffer.
std::uint32_t Volume::PassThroughDirect(std::span<const std::uint8_t> input,
                                        std::span<std::uint8_t> output) {
  const std::optional<Header> header = ReadHeader(input);
  if (!header || header->senseEnd() > input.size()) {
    return kInvalidParameter;
  }
  auto* const buffer = std::bit_cast<std::uint8_t*>(header->data);
  if (header->dataLength > 0 && buffer == nullptr) {
    return kInvalidParameter;
  }
  const ScsiResult result =
      bootLoader_->Execute(header->cdb, header->dataIn, {buffer, header->dataLength});
  if (HasAnswered(result)) {
    ReturnHeader(input, output, result);
  }
  return SystemErrorOf(result);
}

}  // namespace zem::simulator
