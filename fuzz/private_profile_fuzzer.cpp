// The settings file: any text, any key.
#include <cstdint>
#include <string>

#include "platform/portable/private_profile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring text(data, data + size);
  zem::platform::ParsePrivateProfileInt(text, L"AP", L"DeviceVid", 1);
  zem::platform::ParsePrivateProfileInt(text, L"", L"", 1);
  return 0;
}
