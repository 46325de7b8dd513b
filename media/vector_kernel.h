// The colour conversion in 16-bit integers, written once over the operations of an instruction set.
//
// A block is 2 * kWords pixels. It is held in two registers of words, low and high; which of the
// block's pixels a register holds is the instruction set's business, as long as it is the same for
// luma and chroma.
//
// With x = 2 * (chroma - 128), the blue and red sums are luma plus
//   floor(1.772 u) = x + (x * -7471 >> 16)    and    floor(1.402 v) = x + (x * -19595 >> 16),
// exact for all 256 values: these sums are whole numbers for no chroma but 128. The green sum is
// luma plus
//   floor(-(0.714 v + 0.344 u)) = (xv * -23396 + xu * -11272) >> 16,
// exact as well, unless the sum is a whole number. Then the reference's double arithmetic decides,
// luma by luma. Such pairs of chroma (132 of 65,536) leave a rest within kDoubtfulRest of a
// multiple of 65,536, and so do 127 others: the reference computes the green of either once more.
// The most frequent pair of all, no colour, is exact both ways.
#pragma once

#include <xmmintrin.h>

#include <cstddef>
#include <cstdint>

#include "media/pixel_kernels.h"

// Left to itself, GCC hands the offsets from one function to the other through memory.
#if defined(_MSC_VER) && !defined(__clang__)
#define ZEM_ALWAYS_INLINE __forceinline
#else
#define ZEM_ALWAYS_INLINE inline __attribute__((always_inline))
#endif

namespace zem {
// Each kernel's file is compiled for its own instruction set: nothing here, and no inline function
// from elsewhere, may be shared by the linker.
namespace {

constexpr std::int16_t kBlueFactor = -7471;
constexpr std::int16_t kRedFactor = -19595;
constexpr std::int16_t kGreenFactorU = -11272;
constexpr std::int16_t kGreenFactorV = -23396;
constexpr std::int16_t kDoubtfulRest = 128;

constexpr std::size_t kCacheLine = 64;

template <class Isa>
constexpr std::size_t kBlockPixels = 2 * Isa::kWords;

// What a block's chroma adds to the luma of each of its pixels, and the pairs to be done over, a
// bit each.
template <class Isa>
struct ChromaOffsets {
  typename Isa::Register blue[2];
  typename Isa::Register green[2];
  typename Isa::Register red[2];
  std::uint32_t doubtful;
};

// `low` and `high` hold words of x: u, v, u, v, ...
template <class Isa>
ZEM_ALWAYS_INLINE ChromaOffsets<Isa> OffsetsOf(typename Isa::Register low,
                                               typename Isa::Register high) {
  using Register = typename Isa::Register;
  const Register greenFactors = Isa::Alternate(kGreenFactorU, kGreenFactorV);
  const Register blueRedFactors = Isa::Alternate(kBlueFactor, kRedFactor);
  const Register words[2] = {low, high};
  ChromaOffsets<Isa> offsets;
  Register rests[2];
  for (int half = 0; half < 2; ++half) {
    const Register green = Isa::MultiplyAddPairs(words[half], greenFactors);
    const Register blueRed = Isa::Add(words[half], Isa::MultiplyHigh(words[half], blueRedFactors));
    offsets.blue[half] = Isa::RepeatEven(blueRed);
    offsets.red[half] = Isa::RepeatOdd(blueRed);
    offsets.green[half] = Isa::RepeatOdd(green);
    rests[half] = Isa::SaturatingSubtract(Isa::Alternate(2 * kDoubtfulRest + 1, 0),
                                          Isa::Add(green, Isa::Alternate(kDoubtfulRest, 0)));
  }
  offsets.doubtful = 0;
  if (Isa::AnyBit(Isa::Or(rests[0], rests[1]))) {
    offsets.doubtful = Isa::PairsWithoutZero(rests[0], rests[1], low, high);
  }
  return offsets;
}

// Writes the block's pixels.
template <class Isa>
ZEM_ALWAYS_INLINE void StorePixels(const ChromaOffsets<Isa>& offsets,
                                   typename Isa::Register lumaLow, typename Isa::Register lumaHigh,
                                   std::uint8_t* bgr) {
  Isa::StoreBgr(Isa::Add(lumaLow, offsets.blue[0]), Isa::Add(lumaHigh, offsets.blue[1]),
                Isa::Add(lumaLow, offsets.green[0]), Isa::Add(lumaHigh, offsets.green[1]),
                Isa::Add(lumaLow, offsets.red[0]), Isa::Add(lumaHigh, offsets.red[1]), bgr);
}

// Where the block behind the one at `position` begins: the last begins at `last` and may overlap
// the one before it; past `last` when there is none.
template <class Isa>
ZEM_ALWAYS_INLINE std::size_t NextBlock(std::size_t position, std::size_t last) {
  const std::size_t next = position + kBlockPixels<Isa>;
  return position < last && next > last ? last : next;
}

// Rows follow each other in an order and at distances that the processor does not foresee by
// itself: the cache is told what comes so many pixels later. That is far enough for memory, and
// near enough to be still there when its turn comes.
constexpr std::size_t kPixelsAhead = 1536;

// The distance in pixels from `position` to there: in this row or, past its end, in the one that
// begins `toNext` pixels after it.
ZEM_ALWAYS_INLINE std::ptrdiff_t DistanceAhead(std::size_t position, std::size_t width,
                                               std::ptrdiff_t toNext) {
  const std::size_t ahead = width < kPixelsAhead ? width : kPixelsAhead;
  const auto here = static_cast<std::ptrdiff_t>(ahead);
  return position + ahead < width ? here : here - static_cast<std::ptrdiff_t>(width) + toNext;
}

#if defined(_MSC_VER) && !defined(__clang__)
constexpr auto kToWrite = _MM_HINT_T0;
#else
constexpr auto kToWrite = _MM_HINT_ET0;
#endif

// Has the cache fetch so many bytes at that distance, which may lie outside any buffer: hence the
// sum of numbers, where one of pointers would have no meaning.
template <std::size_t bytes, auto hint = _MM_HINT_T0>
ZEM_ALWAYS_INLINE void Fetch(const std::uint8_t* from, std::ptrdiff_t distance) {
  const auto address =
      reinterpret_cast<std::uintptr_t>(from) + static_cast<std::uintptr_t>(distance);
  for (std::size_t line = 0; line < bytes; line += kCacheLine) {
    _mm_prefetch(reinterpret_cast<const char*>(address + line), hint);
  }
}

template <class Isa>
void ConvertYuy2Row(const std::uint8_t* yuy2, std::uint8_t* bgr, std::size_t width,
                    std::ptrdiff_t toNext) {
  constexpr std::size_t kPixels = kBlockPixels<Isa>;
  if (width < kPixels) {
    ConvertYuy2Reference(yuy2, bgr, width, toNext);
    return;
  }
  const std::size_t last = width - kPixels;
  for (std::size_t position = 0; position <= last; position = NextBlock<Isa>(position, last)) {
    const std::uint8_t* const source = yuy2 + position * 2;
    std::uint8_t* const destination = bgr + position * kBgrBytes;
    typename Isa::Register low;
    typename Isa::Register high;
    Fetch<kPixels * 2>(source, DistanceAhead(position, width, toNext) * 2);
    Isa::LoadYuy2(source, low, high);
    const ChromaOffsets<Isa> offsets =
        OffsetsOf<Isa>(Isa::ChromaOfYuy2(low), Isa::ChromaOfYuy2(high));
    StorePixels<Isa>(offsets, Isa::LumaOfYuy2(low), Isa::LumaOfYuy2(high), destination);
    if (offsets.doubtful != 0) {
      CorrectYuy2Greens(source, destination, offsets.doubtful);
    }
  }
}

template <class Isa>
void ConvertPlanarRows(const std::uint8_t* luma, const std::uint8_t* u, const std::uint8_t* v,
                       std::uint8_t* bgr, std::size_t width, std::size_t stride, std::size_t rows) {
  constexpr std::size_t kPixels = kBlockPixels<Isa>;
  if (width < kPixels) {
    ConvertPlanarReference(luma, u, v, bgr, width, stride, rows);
    return;
  }
  const auto toNext = static_cast<std::ptrdiff_t>(rows * stride);
  const auto toNextChroma = static_cast<std::ptrdiff_t>(stride);
  const std::size_t last = width - kPixels;
  for (std::size_t position = 0; position <= last; position = NextBlock<Isa>(position, last)) {
    const std::uint8_t* const source = luma + position;
    const std::uint8_t* const blockU = u + position / 2;
    const std::uint8_t* const blockV = v + position / 2;
    std::uint8_t* const destination = bgr + position * kBgrBytes;
    typename Isa::Register chromaLow;
    typename Isa::Register chromaHigh;
    const std::ptrdiff_t ahead = DistanceAhead(position, width, toNext);
    const std::ptrdiff_t chromaAhead = DistanceAhead(position, width, toNextChroma) / 2;
    Fetch<kPixels / 2>(blockU, chromaAhead);
    Fetch<kPixels / 2>(blockV, chromaAhead);
    Isa::LoadChroma(blockU, blockV, chromaLow, chromaHigh);
    const ChromaOffsets<Isa> offsets = OffsetsOf<Isa>(chromaLow, chromaHigh);
    const auto convertRow = [=](std::size_t row) {
      Fetch<kPixels>(source + row * stride, ahead);
      Fetch<kPixels * kBgrBytes, kToWrite>(destination + row * stride * kBgrBytes,
                                           ahead * static_cast<std::ptrdiff_t>(kBgrBytes));
      typename Isa::Register low;
      typename Isa::Register high;
      Isa::LoadLuma(source + row * stride, low, high);
      StorePixels<Isa>(offsets, low, high, destination + row * stride * kBgrBytes);
    };
    convertRow(0);
    if (rows == 2) {
      convertRow(1);
    }
    if (offsets.doubtful != 0) {
      CorrectPlanarGreens(source, blockU, blockV, destination, stride, rows, offsets.doubtful);
    }
  }
}

}  // namespace
}  // namespace zem
