// Frames to pixels, one thread, beside libyuv, which comes close to these bytes but does not give
// them; and a whole BMP file beside a plain write of the same bytes.
#include <libyuv.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "benchmarks/paired_runs.h"
#include "include/ZemUVCExtApi.h"
#include "media/bmp_file.h"
#include "media/pixel_conversion.h"

namespace {

using zem::benchmarks::PairedRuns;
using zem::benchmarks::Table;
using zem::benchmarks::Text;

using Bytes = std::vector<std::uint8_t>;

struct Size {
  std::uint32_t width;
  std::uint32_t height;
  std::size_t Pixels() const { return std::size_t{width} * height; }
};

// Memory that is allocated anew lies elsewhere, and may be faster or slower.
constexpr int kAllocations = 8;
constexpr int kPairs = 8;

// Planes that change smoothly with some noise, as a camera's do.
Bytes MakePlane(std::size_t width, std::size_t height, unsigned seed) {
  std::minstd_rand noise(seed);
  Bytes plane(width * height);
  for (std::size_t row = 0; row < height; ++row) {
    for (std::size_t column = 0; column < width; ++column) {
      plane[row * width + column] =
          static_cast<std::uint8_t>(64 + column * 96 / width + row * 64 / height + noise() % 8);
    }
  }
  return plane;
}

Bytes MakePlanar(const Size& size) {
  Bytes frame = MakePlane(size.width, size.height, 1);
  for (const unsigned seed : {2U, 3U}) {
    const Bytes chroma = MakePlane(size.width / 2, size.height / 2, seed);
    frame.insert(frame.end(), chroma.begin(), chroma.end());
  }
  return frame;
}

Bytes MakeYuy2(const Size& size) {
  const Bytes luma = MakePlane(size.width, size.height, 1);
  const Bytes u = MakePlane(size.width / 2, size.height, 2);
  const Bytes v = MakePlane(size.width / 2, size.height, 3);
  Bytes frame;
  frame.reserve(size.Pixels() * 2);
  for (std::size_t pair = 0; pair < size.Pixels() / 2; ++pair) {
    frame.insert(frame.end(), {luma[2 * pair], u[pair], luma[2 * pair + 1], v[pair]});
  }
  return frame;
}

// A layout of frames, and how either library converts it.
struct Layout {
  Bytes (*make)(const Size& size);
  zem::FrameConverter convert;
  void (*convertByLibyuv)(const Size& size, const Bytes& frame, Bytes& between, Bytes& pixels);
};

void PlanarByLibyuv(const Size& size, const Bytes& frame, Bytes& /*between*/, Bytes& pixels) {
  const int width = static_cast<int>(size.width);
  const std::uint8_t* const u = frame.data() + size.Pixels();
  libyuv::I420ToRGB24(frame.data(), width, u, width / 2, u + size.Pixels() / 4, width / 2,
                      pixels.data(), width * 3, width, static_cast<int>(size.height));
}

void Yuy2ByLibyuv(const Size& size, const Bytes& frame, Bytes& between, Bytes& pixels) {
  const int width = static_cast<int>(size.width);
  const int height = static_cast<int>(size.height);
  between.resize(size.Pixels() * 4);
  libyuv::YUY2ToARGB(frame.data(), width * 2, between.data(), width * 4, width, height);
  libyuv::ARGBToRGB24(between.data(), width * 4, pixels.data(), width * 3, width, height);
}

constexpr Layout kPlanar = {MakePlanar, zem::PlanarToBgr, PlanarByLibyuv};
constexpr Layout kYuy2 = {MakeYuy2, zem::Yuy2ToBgr, Yuy2ByLibyuv};

// Beside the comparison with libyuv: the same arithmetic on rows that stay in the cache, and as
// many bytes read and written by the C library.
std::string MeasureConversion(PairedRuns& runs, const Layout& layout, const Size& size,
                              const zem::PixelKernel& kernel) {
  constexpr std::uint32_t kRows = 2;
  const Bytes rows = layout.make({size.width, kRows});
  PairedRuns arithmetic;
  PairedRuns memory;
  for (int allocation = 0; allocation < kAllocations; ++allocation) {
    const Bytes frame = layout.make(size);
    Bytes pixels(size.Pixels() * 3);
    Bytes theirPixels(size.Pixels() * 3);
    Bytes between;
    const auto ours = [&] {
      layout.convert(kernel, frame.data(), pixels.data(), size.width, size.height);
    };
    runs.Run(kPairs, ours, [&] { layout.convertByLibyuv(size, frame, between, theirPixels); });
    arithmetic.Run(kPairs, ours, [&] {
      for (std::uint32_t row = 0; row < size.height; row += kRows) {
        layout.convert(kernel, rows.data(), pixels.data(), size.width, kRows);
      }
    });
    memory.Run(kPairs, ours, [&] {
      std::memcpy(pixels.data(), frame.data(), frame.size());
      std::memset(pixels.data() + frame.size(), 0x55, pixels.size() - frame.size());
    });
  }
  const double inCache = 1 / arithmetic.Ratio().median;
  const double bare = 1 / memory.Ratio().median;
  return Text(
      "%s: the same on rows in the cache takes %.2f of the time, a bare copy and fill of as "
      "many bytes %.2f",
      inCache > bare ? "arithmetic" : "memory", inCache, bare);
}

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  std::exit(EXIT_FAILURE);
}

// The writes of a picture, and nothing else: the same bytes in the same pieces, unbuffered as well.
void WritePlainly(const char* path, const Bytes& bytes) {
  std::FILE* const file = std::fopen(path, "wb");
  if (file == nullptr) {
    Fail("the file cannot be opened");
  }
  static_cast<void>(std::setvbuf(file, nullptr, _IONBF, 0));
  std::size_t done = 0;
  for (const std::size_t piece : {std::size_t{14}, std::size_t{40}, bytes.size() - 54}) {
    if (std::fwrite(bytes.data() + done, piece, 1, file) != 1) {
      Fail("the bytes cannot be written");
    }
    done += piece;
  }
  std::fclose(file);
}

std::string MeasureFile(PairedRuns& runs, const Size& size) {
  const std::filesystem::path path = std::filesystem::temp_directory_path() / "zem_benchmark.bmp";
  const std::wstring widePath = path.wstring();
  const Bytes bytes(size.Pixels() * 3 + 54, 0x55);
  const Bytes frame = MakeYuy2(size);
  Bytes pixels(size.Pixels() * 3);
  const auto ours = [&] {
    if (ConvertYUY2toBMP(widePath.c_str(), frame.data(), size.width, size.height) != 1) {
      Fail("the picture cannot be written");
    }
  };
  runs.Run(kAllocations * kPairs, ours, [&] { WritePlainly(path.c_str(), bytes); });
  PairedRuns conversion;
  conversion.Run(kAllocations * kPairs, ours, [&] {
    zem::Yuy2ToBgr(zem::PixelKernels().back(), frame.data(), pixels.data(), size.width,
                   size.height);
  });
  std::filesystem::remove(path);
  return Text("the system's writes: the conversion takes %.2f of the time",
              1 / conversion.Ratio().median);
}

}  // namespace

int main(int argc, char** argv) {
  Table table(argc, argv, "Frames to pixels, beside libyuv, and a BMP file beside a plain write");
  const std::span<const zem::PixelKernel> kernels = zem::PixelKernels();
  constexpr std::size_t kAvx2 = 2;
  const auto conversion = [&](const std::string& label, const Layout& layout, const Size& size) {
    const auto row = [&](const std::string& name, const zem::PixelKernel& kernel) {
      table.Row(name, 1e3, " µs",
                [&](PairedRuns& runs) { return MeasureConversion(runs, layout, size, kernel); });
    };
    row(label, kernels.back());
    row(label + ", without AVX-512", kernels[std::min(kAvx2, kernels.size() - 1)]);
  };
  constexpr Size k1080p = {1920, 1080};
  constexpr Size k2160p = {3840, 2160};
  conversion("planar frame, 1080p", kPlanar, k1080p);
  conversion("planar frame, 2160p", kPlanar, k2160p);
  conversion("YUY2 frame, 1080p", kYuy2, k1080p);
  conversion("YUY2 frame, 2160p", kYuy2, k2160p);
  table.Row("BMP file of a YUY2 frame, 1080p", 1e3, " µs",
            [&](PairedRuns& runs) { return MeasureFile(runs, k1080p); });
  return 0;
}
