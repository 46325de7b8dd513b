#include "media/bmp_file.h"

#include <array>
#include <limits>
#include <new>

#include "platform/bytes.h"
#include "platform/file_handle.h"
#include "platform/memory.h"

namespace zem {
namespace {

constexpr std::uint32_t kBmpHeaderBytes = 54;
constexpr std::size_t kFileHeaderBytes = 14;

// Null when there is no memory. The bytes are not cleared: all that is written has been converted.
ByteBuffer AllocatePicture(std::uint32_t width, std::uint32_t height) {
  return ByteBuffer(new (std::nothrow) std::uint8_t[std::size_t{width} * height * 4]);
}

std::uint64_t PixelBytes(std::uint32_t width, std::uint32_t height) {
  return std::uint64_t{width} * height * kBgrBytes;
}

// A product of two 32-bit numbers times three may even leave 64 bits, hence the division.
bool FitsFormat(std::uint32_t width, std::uint32_t height) {
  constexpr std::uint32_t kMost =
      (std::numeric_limits<std::uint32_t>::max() - kBmpHeaderBytes) / kBgrBytes;
  return height == 0 || width <= kMost / height;
}

// Opens the file and writes both headers; null when it cannot be opened. Unbuffered, so that the
// outcome of the pixel write is the disk's.
FileHandle BeginBmp(const wchar_t* path, std::uint32_t width, std::uint32_t height) {
  std::array<std::uint8_t, kBmpHeaderBytes> header = {'B', 'M'};
  StoreLe32(&header[2], static_cast<std::uint32_t>(PixelBytes(width, height)) + kBmpHeaderBytes);
  StoreLe32(&header[10], kBmpHeaderBytes);
  StoreLe32(&header[14], kBmpHeaderBytes - kFileHeaderBytes);
  StoreLe32(&header[18], width);
  StoreLe32(&header[22], height);
  StoreLe16(&header[26], 1);
  StoreLe16(&header[28], 8 * kBgrBytes);
  FileHandle file = OpenFileHandle(path, L"wb");
  if (file != nullptr) {
    static_cast<void>(std::setvbuf(file.get(), nullptr, _IONBF, 0));
    // Deliberately unchecked: only the pixels decide.
    static_cast<void>(std::fwrite(header.data(), kFileHeaderBytes, 1, file.get()));
    static_cast<void>(std::fwrite(header.data() + kFileHeaderBytes,
                                  header.size() - kFileHeaderBytes, 1, file.get()));
  }
  return file;
}

// A picture without pixels counts as not written.
bool WritePixels(std::FILE* file, const std::uint8_t* pixels, std::uint32_t width,
                 std::uint32_t height) {
  return std::fwrite(pixels, static_cast<std::size_t>(PixelBytes(width, height)), 1, file) == 1;
}

}  // namespace

bool WriteFrameAsBmp(const wchar_t* path, const std::uint8_t* frame, std::uint32_t width,
                     std::uint32_t height, FrameConverter convert) {
  if (frame == nullptr || !FitsFormat(width, height)) {
    return false;
  }
  const FileHandle file = BeginBmp(path, width, height);
  if (file == nullptr) {
    return false;
  }
  // Deliberately not before the headers are written: they stay also when there is no memory.
  const ByteBuffer picture = AllocatePicture(width, height);
  if (picture == nullptr) {
    return false;
  }
  convert(PixelKernels().back(), frame, picture.get(), width, height);
  return WritePixels(file.get(), picture.get(), width, height);
}

bool WritePixelsAsBmp(const wchar_t* path, const std::uint8_t* pixels, std::uint32_t width,
                      std::uint32_t height) {
  if (pixels == nullptr || !FitsFormat(width, height)) {
    return false;
  }
  const FileHandle file = BeginBmp(path, width, height);
  return file != nullptr && WritePixels(file.get(), pixels, width, height);
}

}  // namespace zem
