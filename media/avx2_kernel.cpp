// Thirty-two pixels at a time. The shuffles work within halves of a register, so a block's first
// register holds pixels 0 to 7 and 16 to 23, the second 8 to 15 and 24 to 31.
#include <immintrin.h>

#include "media/vector_kernel.h"

namespace zem {
namespace {

struct Avx2 {
  using Register = __m256i;
  static constexpr std::size_t kWords = 16;

  static Register Alternate(std::int16_t even, std::int16_t odd) {
    return _mm256_set1_epi32(static_cast<std::int32_t>(
        static_cast<std::uint32_t>(static_cast<std::uint16_t>(odd)) << 16 |
        static_cast<std::uint16_t>(even)));
  }

  static Register Add(Register a, Register b) { return _mm256_add_epi16(a, b); }
  static Register Or(Register a, Register b) { return _mm256_or_si256(a, b); }
  static Register MultiplyHigh(Register a, Register b) { return _mm256_mulhi_epi16(a, b); }
  static Register MultiplyAddPairs(Register a, Register b) { return _mm256_madd_epi16(a, b); }
  static Register SaturatingSubtract(Register a, Register b) { return _mm256_subs_epu16(a, b); }

  static Register RepeatEven(Register words) { return Repeat(words, 0x0100); }
  static Register RepeatOdd(Register words) { return Repeat(words, 0x0302); }

  static bool AnyBit(Register bits) { return _mm256_testz_si256(bits, bits) == 0; }

  // A bit for each pair that has a rest and whose chroma is not zero.
  static std::uint32_t PairsWithoutZero(Register restLow, Register restHigh, Register chromaLow,
                                        Register chromaHigh) {
    const auto select = [](Register rest, Register chroma) {
      const Register zero = _mm256_setzero_si256();
      const Register hidden = Or(_mm256_cmpeq_epi32(rest, zero), _mm256_cmpeq_epi32(chroma, zero));
      return static_cast<std::uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(hidden))) ^ 0xFFU;
    };
    const std::uint32_t low = select(restLow, chromaLow);
    const std::uint32_t high = select(restHigh, chromaHigh);
    return (low & 0xF) | (high & 0xF) << 4 | (low & 0xF0) << 4 | (high & 0xF0) << 8;
  }

  static void LoadYuy2(const std::uint8_t* source, Register& low, Register& high) {
    low = Halves(Load(source), Load(source + 32));
    high = Halves(Load(source + 16), Load(source + 48));
  }
  static Register LumaOfYuy2(Register bytes) {
    return _mm256_and_si256(bytes, _mm256_set1_epi16(0x00FF));
  }
  static Register ChromaOfYuy2(Register bytes) {
    return Center(_mm256_maddubs_epi16(bytes, _mm256_set1_epi16(0x0200)));
  }

  static void LoadLuma(const std::uint8_t* source, Register& low, Register& high) {
    Widen(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(source)), low, high);
  }
  static void LoadChroma(const std::uint8_t* u, const std::uint8_t* v, Register& low,
                         Register& high) {
    const __m128i us = Load(u);
    const __m128i vs = Load(v);
    Widen(Halves(_mm_unpacklo_epi8(us, vs), _mm_unpackhi_epi8(us, vs)), low, high);
    low = Center(Add(low, low));
    high = Center(Add(high, high));
  }

  static void StoreBgr(Register blueLow, Register blueHigh, Register greenLow, Register greenHigh,
                       Register redLow, Register redHigh, std::uint8_t* bgr) {
    // Pixel i's byte of color c belongs to byte 3i + c of its half's 48. One shuffle a color puts
    // it to that place within 16; then each of the three results takes every third byte of each
    // color.
    const Register blue = Spread(_mm256_packus_epi16(blueLow, blueHigh), 0);
    const Register green = Spread(_mm256_packus_epi16(greenLow, greenHigh), 1);
    const Register red = Spread(_mm256_packus_epi16(redLow, redHigh), 2);
    const Register a = EveryThird(blue, green, red);
    const Register b = EveryThird(green, red, blue);
    const Register c = EveryThird(red, blue, green);
    auto* const out = reinterpret_cast<__m256i*>(bgr);
    _mm256_storeu_si256(out, _mm256_permute2x128_si256(a, b, 0x20));
    _mm256_storeu_si256(out + 1, _mm256_blend_epi32(c, a, 0xF0));
    _mm256_storeu_si256(out + 2, _mm256_permute2x128_si256(b, c, 0x31));
  }

 private:
  static __m128i Load(const std::uint8_t* source) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(source));
  }
  static Register Halves(__m128i low, __m128i high) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
  }
  static void Widen(Register bytes, Register& low, Register& high) {
    low = _mm256_unpacklo_epi8(bytes, _mm256_setzero_si256());
    high = _mm256_unpackhi_epi8(bytes, _mm256_setzero_si256());
  }
  static Register Center(Register doubled) {
    return _mm256_sub_epi16(doubled, _mm256_set1_epi16(0x0100));
  }

  // Two bytes of each group of four, twice.
  static Register Repeat(Register words, int bytes) {
    const int twice = bytes | bytes << 16;
    const auto group = [=](int first) { return twice + first * 0x01010101; };
    return _mm256_shuffle_epi8(words, _mm256_setr_epi32(group(0), group(4), group(8), group(12),
                                                        group(0), group(4), group(8), group(12)));
  }

  // Moves byte i of each half to byte (3i + color) modulo 16.
  static Register Spread(Register bytes, int color) {
    alignas(32) std::int8_t sources[32];
    for (int i = 0; i < 16; ++i) {
      const int place = (3 * i + color) % 16;
      sources[place] = sources[16 + place] = static_cast<std::int8_t>(i);
    }
    return _mm256_shuffle_epi8(bytes, _mm256_load_si256(reinterpret_cast<const __m256i*>(sources)));
  }

  // Bytes 0, 3, 6, ... of `first`, 1, 4, 7, ... of `second`, 2, 5, 8, ... of `third`, in each half.
  static Register EveryThird(Register first, Register second, Register third) {
    const auto select = [](int rest) {
      const auto mask = [=](int place) { return static_cast<char>(place % 3 == rest ? -1 : 0); };
      return _mm256_setr_epi8(mask(0), mask(1), mask(2), mask(3), mask(4), mask(5), mask(6),
                              mask(7), mask(8), mask(9), mask(10), mask(11), mask(12), mask(13),
                              mask(14), mask(15), mask(0), mask(1), mask(2), mask(3), mask(4),
                              mask(5), mask(6), mask(7), mask(8), mask(9), mask(10), mask(11),
                              mask(12), mask(13), mask(14), mask(15));
    };
    return _mm256_blendv_epi8(_mm256_blendv_epi8(first, second, select(1)), third, select(2));
  }
};

}  // namespace

void ConvertYuy2Avx2(const std::uint8_t* yuy2, std::uint8_t* bgr, std::size_t width,
                     std::ptrdiff_t toNext) {
  ConvertYuy2Row<Avx2>(yuy2, bgr, width, toNext);
}

void ConvertPlanarAvx2(const std::uint8_t* luma, const std::uint8_t* u, const std::uint8_t* v,
                       std::uint8_t* bgr, std::size_t width, std::size_t stride, std::size_t rows) {
  ConvertPlanarRows<Avx2>(luma, u, v, bgr, width, stride, rows);
}

}  // namespace zem
