#include "tools/zemctl/camera/firmware_version.h"

#include <array>

#include "include/ZemUVCExtApi.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

constexpr std::size_t kVersionSize = 6;

}  // namespace

std::string ReadVersion(const Session& session) {
  std::array<unsigned char, kVersionSize> version = {};
  session.Call("ZEMAPI_GetFWVersion",
               [&](void* device) { return ZEMAPI_GetFWVersion(device, version.data()); });
  return HexText(version);
}

std::string ParseVersion(const std::string& text) {
  std::string digits = text;
  std::erase(digits, ' ');
  std::vector<std::string> bytes;
  for (std::size_t at = 0; at < digits.size(); at += 2) {
    bytes.push_back(digits.substr(at, 2));
  }
  if (digits.size() != 2 * kVersionSize) {
    throw UsageError("\"" + text + "\" is no version of 6 bytes in hexadecimal");
  }
  return HexText(ParseBytes(bytes));
}

}  // namespace zemctl
