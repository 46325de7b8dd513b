#include "media/wav_file.h"

#include <array>
#include <cstring>
#include <limits>
#include <optional>

#include "platform/bytes.h"
#include "platform/file_handle.h"
#include "platform/memory.h"

namespace zem {
namespace {

constexpr std::uint32_t kWavHeaderBytes = 44;
// What the length of the whole file counts besides the samples: the header without its first 8
// bytes.
constexpr std::uint32_t kCountedHeaderBytes = kWavHeaderBytes - 8;

using Header = std::array<std::uint8_t, kWavHeaderBytes>;

Header MakeHeader(std::uint32_t rawSize, std::uint8_t channels, std::int32_t sampleRate,
                  std::uint8_t bitsPerSample) {
  Header header = {};
  const auto name = [&](std::size_t offset, const char* text) {
    std::memcpy(&header[offset], text, 4);
  };
  const std::uint32_t bitsPerFrame = std::uint32_t{channels} * bitsPerSample;
  const auto rate = static_cast<std::uint32_t>(sampleRate);
  name(0, "RIFF");
  StoreLe32(&header[4], rawSize + kCountedHeaderBytes);
  name(8, "WAVE");
  name(12, "fmt ");
  StoreLe32(&header[16], 16);
  StoreLe16(&header[20], 1);
  StoreLe16(&header[22], channels);
  StoreLe32(&header[24], rate);
  // The product keeps its lowest 32 bits before the shift: deliberate, callers depend on it.
  StoreLe32(&header[28], bitsPerFrame * rate >> 3);
  StoreLe16(&header[32], static_cast<std::uint16_t>(bitsPerFrame / 8));
  StoreLe16(&header[34], bitsPerSample);
  name(36, "data");
  StoreLe32(&header[40], rawSize);
  return header;
}

}  // namespace

bool PackWav(const wchar_t* rawPath, const wchar_t* wavPath, std::uint8_t channels,
             std::int32_t sampleRate, std::uint8_t bitsPerSample) {
  FileHandle raw = OpenFileHandle(rawPath, L"rb");
  if (raw == nullptr) {
    return false;
  }
  const std::optional<std::uint64_t> size = platform::MeasureFile(raw.get());
  if (!size || *size > std::numeric_limits<std::uint32_t>::max() - kCountedHeaderBytes) {
    return false;
  }
  const auto rawSize = static_cast<std::uint32_t>(*size);
  const ByteBuffer samples = AllocateBytes(rawSize);
  if (samples == nullptr) {
    return false;
  }
  // Deliberately unchecked, as the writes below: a short read leaves zeros.
  static_cast<void>(std::fread(samples.get(), rawSize, 1, raw.get()));
  raw.reset();
  const FileHandle wav = OpenFileHandle(wavPath, L"w+b");
  if (wav == nullptr) {
    return false;
  }
  const Header header = MakeHeader(rawSize, channels, sampleRate, bitsPerSample);
  static_cast<void>(std::fwrite(header.data(), header.size(), 1, wav.get()));
  static_cast<void>(std::fwrite(samples.get(), rawSize, 1, wav.get()));
  return rawSize != 0;
}

}  // namespace zem
