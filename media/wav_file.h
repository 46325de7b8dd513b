// Raw sound as a WAV file.
#pragma once

#include <cstdint>

namespace zem {

// Puts the 44-byte header in front of the samples of `rawPath`. True when a file with samples was
// written; false when the raw file cannot be opened or has no samples, is too long for the format's
// 32-bit fields, or when there is no memory for it or the WAV file cannot be opened. An empty raw
// file still gives a WAV file of 44 bytes.
bool PackWav(const wchar_t* rawPath, const wchar_t* wavPath, std::uint8_t channels,
             std::int32_t sampleRate, std::uint8_t bitsPerSample);

}  // namespace zem
