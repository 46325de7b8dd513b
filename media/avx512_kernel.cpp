// Sixty-four pixels at a time. One shuffle takes bytes from anywhere here, so a block's first
// register holds its first half, the second its other; only packing takes eight of either in turn.
#include <immintrin.h>

#include "media/vector_kernel.h"

namespace zem {
namespace {

struct ByteIndices {
  std::uint8_t bytes[64];
};

// Where packing puts a pixel's byte.
consteval std::size_t PackedPlace(std::size_t pixel) {
  return pixel % 32 / 8 * 16 + pixel / 32 * 8 + pixel % 8;
}

// Where each byte of 64 bytes of pixels, the `part`th of three, comes from: for blue and green the
// packed blue with the packed green behind it, for red the packed red.
template <std::size_t part>
consteval ByteIndices SourcesOfPixels() {
  ByteIndices sources = {};
  for (std::size_t byte = 0; byte < 64; ++byte) {
    const std::size_t place = part * 64 + byte;
    const std::size_t green = place % kBgrBytes == 1 ? 64 : 0;
    sources.bytes[byte] = static_cast<std::uint8_t>(PackedPlace(place / kBgrBytes) + green);
  }
  return sources;
}

// The bytes that are red.
template <std::size_t part>
consteval __mmask64 RedOfPixels() {
  __mmask64 red = 0;
  for (std::size_t byte = 0; byte < 64; ++byte) {
    red |= __mmask64{(part * 64 + byte) % kBgrBytes == 2} << byte;
  }
  return red;
}

// Words u, v, u, v, ... of 16 pairs, beginning with `pair`, out of U with V behind them.
template <std::size_t pair>
consteval ByteIndices SourcesOfChroma() {
  ByteIndices sources = {};
  for (std::size_t byte = 0; byte < 64; byte += 2) {
    sources.bytes[byte] = static_cast<std::uint8_t>(pair + byte / 4 + byte / 2 % 2 * 64);
  }
  return sources;
}

struct Avx512 {
  using Register = __m512i;
  static constexpr std::size_t kWords = 32;

  static Register Alternate(std::int16_t even, std::int16_t odd) {
    return _mm512_set1_epi32(static_cast<std::int32_t>(
        static_cast<std::uint32_t>(static_cast<std::uint16_t>(odd)) << 16 |
        static_cast<std::uint16_t>(even)));
  }

  static Register Add(Register a, Register b) { return _mm512_add_epi16(a, b); }
  static Register Or(Register a, Register b) { return _mm512_or_si512(a, b); }
  static Register MultiplyHigh(Register a, Register b) { return _mm512_mulhi_epi16(a, b); }
  static Register MultiplyAddPairs(Register a, Register b) { return _mm512_madd_epi16(a, b); }
  static Register SaturatingSubtract(Register a, Register b) { return _mm512_subs_epu16(a, b); }

  static Register RepeatEven(Register words) { return Repeat(words, 0x0100); }
  static Register RepeatOdd(Register words) { return Repeat(words, 0x0302); }

  static bool AnyBit(Register bits) { return _mm512_test_epi32_mask(bits, bits) != 0; }

  // A bit for each pair that has a rest and whose chroma is not zero.
  static std::uint32_t PairsWithoutZero(Register restLow, Register restHigh, Register chromaLow,
                                        Register chromaHigh) {
    const auto select = [](Register rest, Register chroma) {
      return static_cast<std::uint32_t>(_mm512_test_epi32_mask(rest, rest) &
                                        _mm512_test_epi32_mask(chroma, chroma));
    };
    return select(restLow, chromaLow) | select(restHigh, chromaHigh) << 16;
  }

  static void LoadYuy2(const std::uint8_t* source, Register& low, Register& high) {
    low = Load(source);
    high = Load(source + 64);
  }
  static Register LumaOfYuy2(Register bytes) {
    return _mm512_and_si512(bytes, _mm512_set1_epi16(0x00FF));
  }
  static Register ChromaOfYuy2(Register bytes) {
    return Center(_mm512_maddubs_epi16(bytes, _mm512_set1_epi16(0x0200)));
  }

  static void LoadLuma(const std::uint8_t* source, Register& low, Register& high) {
    low = _mm512_cvtepu8_epi16(LoadHalf(source));
    high = _mm512_cvtepu8_epi16(LoadHalf(source + 32));
  }
  static void LoadChroma(const std::uint8_t* u, const std::uint8_t* v, Register& low,
                         Register& high) {
    const Register us = _mm512_castsi256_si512(LoadHalf(u));
    const Register vs = _mm512_castsi256_si512(LoadHalf(v));
    const auto words = [=]<std::size_t pair>() {
      static constexpr ByteIndices kSources = SourcesOfChroma<pair>();
      constexpr __mmask64 kLowBytes = 0x5555555555555555;
      const Register chroma =
          _mm512_maskz_permutex2var_epi8(kLowBytes, us, Load(kSources.bytes), vs);
      return Center(Add(chroma, chroma));
    };
    low = words.template operator()<0>();
    high = words.template operator()<16>();
  }

  static void StoreBgr(Register blueLow, Register blueHigh, Register greenLow, Register greenHigh,
                       Register redLow, Register redHigh, std::uint8_t* bgr) {
    const Register blue = _mm512_packus_epi16(blueLow, blueHigh);
    const Register green = _mm512_packus_epi16(greenLow, greenHigh);
    const Register red = _mm512_packus_epi16(redLow, redHigh);
    const auto store = [=]<std::size_t part>() {
      static constexpr ByteIndices kSources = SourcesOfPixels<part>();
      constexpr __mmask64 kRed = RedOfPixels<part>();
      const Register sources = Load(kSources.bytes);
      const Register blueGreen = _mm512_permutex2var_epi8(blue, sources, green);
      _mm512_storeu_si512(bgr + part * 64,
                          _mm512_mask_permutexvar_epi8(blueGreen, kRed, sources, red));
    };
    store.template operator()<0>();
    store.template operator()<1>();
    store.template operator()<2>();
  }

 private:
  static Register Load(const std::uint8_t* source) { return _mm512_loadu_si512(source); }
  static __m256i LoadHalf(const std::uint8_t* source) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(source));
  }
  // Two bytes of each group of four, twice.
  static Register Repeat(Register words, int bytes) {
    const int twice = bytes | bytes << 16;
    const auto group = [=](int first) { return twice + first * 0x01010101; };
    return _mm512_shuffle_epi8(words, _mm512_set4_epi32(group(12), group(8), group(4), group(0)));
  }
  static Register Center(Register doubled) {
    return _mm512_sub_epi16(doubled, _mm512_set1_epi16(0x0100));
  }
};

}  // namespace

void ConvertYuy2Avx512(const std::uint8_t* yuy2, std::uint8_t* bgr, std::size_t width,
                       std::ptrdiff_t toNext) {
  ConvertYuy2Row<Avx512>(yuy2, bgr, width, toNext);
}

void ConvertPlanarAvx512(const std::uint8_t* luma, const std::uint8_t* u, const std::uint8_t* v,
                         std::uint8_t* bgr, std::size_t width, std::size_t stride,
                         std::size_t rows) {
  ConvertPlanarRows<Avx512>(luma, u, v, bgr, width, stride, rows);
}

}  // namespace zem
