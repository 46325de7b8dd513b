// Frames to pictures, sound to WAV files. No device is touched.
#include <cstdlib>

#include "include/ZemUVCExtApi.h"
#include "media/bmp_file.h"
#include "media/pixel_conversion.h"
#include "media/wav_file.h"

void NV12_to_RGB(const uint8_t* source, uint8_t* destination, uint32_t width, uint32_t height) {
  if (source != nullptr && destination != nullptr) {
    zem::PlanarToBgr(zem::PixelKernels().back(), source, destination, width, height);
  }
}

int32_t ConvertYUY2toBMP(const wchar_t* path, const uint8_t* frame, uint32_t width,
                         uint32_t height) {
  return zem::WriteFrameAsBmp(path, frame, width, height, zem::Yuy2ToBgr) ? 1 : 0;
}

int32_t ConvertNV12toBMP(const wchar_t* path, const uint8_t* frame, uint32_t width,
                         uint32_t height) {
  return zem::WriteFrameAsBmp(path, frame, width, height, zem::PlanarToBgr) ? 1 : 0;
}

int32_t ConvertRGBtoBMP(const wchar_t* path, uint8_t* pixels, uint32_t width, uint32_t height) {
  if (!zem::WritePixelsAsBmp(path, pixels, width, height)) {
    return 0;
  }
  // Deliberate: a picture that was written takes the caller's pixels with it.
  std::free(pixels);
  return 1;
}

int32_t PackWavFile(const wchar_t* rawPath, const wchar_t* wavPath, uint8_t channels,
                    int32_t sampleRate, uint8_t bitsPerSample) {
  return zem::PackWav(rawPath, wavPath, channels, sampleRate, bitsPerSample) ? 1 : 0;
}
