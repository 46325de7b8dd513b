// Sixteen pixels at a time with the instructions that every x86-64 processor has.
#include <emmintrin.h>

#include "media/vector_kernel.h"

namespace zem {
namespace {

struct Sse2 {
  using Register = __m128i;
  static constexpr std::size_t kWords = 8;

  static Register Load(const std::uint8_t* source) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(source));
  }

  static Register Alternate(std::int16_t even, std::int16_t odd) {
    return _mm_set_epi16(odd, even, odd, even, odd, even, odd, even);
  }

  static Register Add(Register a, Register b) { return _mm_add_epi16(a, b); }
  static Register Or(Register a, Register b) { return _mm_or_si128(a, b); }
  static Register MultiplyHigh(Register a, Register b) { return _mm_mulhi_epi16(a, b); }
  static Register MultiplyAddPairs(Register a, Register b) { return _mm_madd_epi16(a, b); }
  static Register SaturatingSubtract(Register a, Register b) { return _mm_subs_epu16(a, b); }

  static Register RepeatEven(Register words) {
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(words, 0xA0), 0xA0);
  }
  static Register RepeatOdd(Register words) {
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(words, 0xF5), 0xF5);
  }

  static bool AnyBit(Register bits) {
    return _mm_movemask_epi8(_mm_cmpeq_epi8(bits, _mm_setzero_si128())) != 0xFFFF;
  }

  // A bit for each pair that has a rest and whose chroma is not zero.
  static std::uint32_t PairsWithoutZero(Register restLow, Register restHigh, Register chromaLow,
                                        Register chromaHigh) {
    const auto select = [](Register rest, Register chroma) {
      const Register zero = _mm_setzero_si128();
      const Register hidden = Or(_mm_cmpeq_epi32(rest, zero), _mm_cmpeq_epi32(chroma, zero));
      return static_cast<std::uint32_t>(_mm_movemask_ps(_mm_castsi128_ps(hidden))) ^ 0xFU;
    };
    return select(restLow, chromaLow) | select(restHigh, chromaHigh) << 4;
  }

  static void LoadYuy2(const std::uint8_t* source, Register& low, Register& high) {
    low = Load(source);
    high = Load(source + 16);
  }
  static Register LumaOfYuy2(Register bytes) {
    return _mm_and_si128(bytes, _mm_set1_epi16(0x00FF));
  }
  static Register ChromaOfYuy2(Register bytes) {
    return _mm_sub_epi16(_mm_and_si128(_mm_srli_epi16(bytes, 7), _mm_set1_epi16(0x01FE)),
                         _mm_set1_epi16(0x0100));
  }

  static void LoadLuma(const std::uint8_t* source, Register& low, Register& high) {
    Widen(Load(source), low, high);
  }
  static void LoadChroma(const std::uint8_t* u, const std::uint8_t* v, Register& low,
                         Register& high) {
    const auto load = [](const std::uint8_t* source) {
      return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(source));
    };
    Widen(_mm_unpacklo_epi8(load(u), load(v)), low, high);
    const auto center = [](Register words) {
      return _mm_sub_epi16(_mm_add_epi16(words, words), _mm_set1_epi16(0x0100));
    };
    low = center(low);
    high = center(high);
  }

  // Four pixels of four bytes, the last of them 0, to twelve bytes with nothing behind them.
  static Register DropEveryFourth(Register pixels) {
    const Register first = _mm_set_epi32(0, 0x00FFFFFF, 0, 0x00FFFFFF);
    const Register second = _mm_set_epi32(0x0000FFFF, static_cast<int>(0xFF000000), 0x0000FFFF,
                                          static_cast<int>(0xFF000000));
    const Register sixes =
        Or(_mm_and_si128(pixels, first), _mm_and_si128(_mm_srli_epi64(pixels, 8), second));
    const Register low = _mm_and_si128(sixes, _mm_set_epi32(0, 0, -1, -1));
    const Register high = _mm_andnot_si128(_mm_set_epi32(0, 0, -1, -1), sixes);
    return Or(low, _mm_srli_si128(high, 2));
  }

  static void StoreBgr(Register blueLow, Register blueHigh, Register greenLow, Register greenHigh,
                       Register redLow, Register redHigh, std::uint8_t* bgr) {
    const Register blue = _mm_packus_epi16(blueLow, blueHigh);
    const Register green = _mm_packus_epi16(greenLow, greenHigh);
    const Register red = _mm_packus_epi16(redLow, redHigh);
    const Register zero = _mm_setzero_si128();
    const Register blueGreen[2] = {_mm_unpacklo_epi8(blue, green), _mm_unpackhi_epi8(blue, green)};
    const Register redZero[2] = {_mm_unpacklo_epi8(red, zero), _mm_unpackhi_epi8(red, zero)};
    const Register a = DropEveryFourth(_mm_unpacklo_epi16(blueGreen[0], redZero[0]));
    const Register b = DropEveryFourth(_mm_unpackhi_epi16(blueGreen[0], redZero[0]));
    const Register c = DropEveryFourth(_mm_unpacklo_epi16(blueGreen[1], redZero[1]));
    const Register d = DropEveryFourth(_mm_unpackhi_epi16(blueGreen[1], redZero[1]));
    auto* const out = reinterpret_cast<__m128i*>(bgr);
    _mm_storeu_si128(out, Or(a, _mm_slli_si128(b, 12)));
    _mm_storeu_si128(out + 1, Or(_mm_srli_si128(b, 4), _mm_slli_si128(c, 8)));
    _mm_storeu_si128(out + 2, Or(_mm_srli_si128(c, 8), _mm_slli_si128(d, 4)));
  }

 private:
  static void Widen(Register bytes, Register& low, Register& high) {
    low = _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
    high = _mm_unpackhi_epi8(bytes, _mm_setzero_si128());
  }
};

}  // namespace

void ConvertYuy2Sse2(const std::uint8_t* yuy2, std::uint8_t* bgr, std::size_t width,
                     std::ptrdiff_t toNext) {
  ConvertYuy2Row<Sse2>(yuy2, bgr, width, toNext);
}

void ConvertPlanarSse2(const std::uint8_t* luma, const std::uint8_t* u, const std::uint8_t* v,
                       std::uint8_t* bgr, std::size_t width, std::size_t stride, std::size_t rows) {
  ConvertPlanarRows<Sse2>(luma, u, v, bgr, width, stride, rows);
}

}  // namespace zem
