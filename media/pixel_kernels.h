// The kernels themselves; callers go through PixelKernels().
#pragma once

#include "media/pixel_conversion.h"

namespace zem {

// The conversion of one pixel, step by step: what every kernel's bytes are measured against. Writes
// blue, green, red.
void ConvertPixel(std::uint8_t luma, std::uint8_t chromaU, std::uint8_t chromaV, std::uint8_t* bgr);

// The reference, which the other kernels use for what is too little for them.
void ConvertYuy2Reference(const std::uint8_t* yuy2, std::uint8_t* bgr, std::size_t width,
                          std::ptrdiff_t toNext);
void ConvertPlanarReference(const std::uint8_t* luma, const std::uint8_t* u, const std::uint8_t* v,
                            std::uint8_t* bgr, std::size_t width, std::size_t stride,
                            std::size_t rows);

// The green of those pairs of a block once more, a bit for each pair; where the other kernels are
// in doubt.
void CorrectYuy2Greens(const std::uint8_t* yuy2, std::uint8_t* bgr, std::uint32_t pairs);
void CorrectPlanarGreens(const std::uint8_t* luma, const std::uint8_t* u, const std::uint8_t* v,
                         std::uint8_t* bgr, std::size_t stride, std::size_t rows,
                         std::uint32_t pairs);

void ConvertYuy2Sse2(const std::uint8_t* yuy2, std::uint8_t* bgr, std::size_t width,
                     std::ptrdiff_t toNext);
void ConvertPlanarSse2(const std::uint8_t* luma, const std::uint8_t* u, const std::uint8_t* v,
                       std::uint8_t* bgr, std::size_t width, std::size_t stride, std::size_t rows);

void ConvertYuy2Avx2(const std::uint8_t* yuy2, std::uint8_t* bgr, std::size_t width,
                     std::ptrdiff_t toNext);
void ConvertPlanarAvx2(const std::uint8_t* luma, const std::uint8_t* u, const std::uint8_t* v,
                       std::uint8_t* bgr, std::size_t width, std::size_t stride, std::size_t rows);

void ConvertYuy2Avx512(const std::uint8_t* yuy2, std::uint8_t* bgr, std::size_t width,
                       std::ptrdiff_t toNext);
void ConvertPlanarAvx512(const std::uint8_t* luma, const std::uint8_t* u, const std::uint8_t* v,
                         std::uint8_t* bgr, std::size_t width, std::size_t stride,
                         std::size_t rows);

}  // namespace zem
