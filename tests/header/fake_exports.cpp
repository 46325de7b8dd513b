#include "tests/header/fake_exports.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

namespace zem::testing {

FakeLibrary fake;

void FakeLibrary::Begin(const std::string& function) {
  calls.push_back(function + "(");
  arguments_.clear();
  lastNumber_ = 0;
  callback_ = nullptr;
  const H264FrameList head = {sizeof(formats_), 2};
  std::memcpy(formats_, &head, sizeof(head));
  for (std::uint16_t index = 0; index < 2; ++index) {
    H264FrameInfo format = {};
    format.wFrameIndex = static_cast<std::uint16_t>(7 + index);
    std::memcpy(formats_ + sizeof(head) + index * sizeof(format), &format, sizeof(format));
  }
}

void FakeLibrary::End() { calls.back() += arguments_ + ")"; }

void FakeLibrary::TakePointer(const wchar_t* text) {
  std::string narrow;
  for (const wchar_t* at = text; *at != L'\0'; ++at) {
    narrow += static_cast<char>(*at);
  }
  AddArgument('"' + narrow + '"');
}

void FakeLibrary::TakePointer(const GUID* unit) {
  std::array<char, 16> text = {};
  std::snprintf(text.data(), text.size(), "{%08X}", static_cast<unsigned>(unit->Data1));
  AddArgument(text.data());
}

void FakeLibrary::TakePointer(GUID* subtype) {
  AddArgument("out");
  subtype->Data1 = static_cast<ZemULong>(++lastNumber_);
}

void FakeLibrary::TakePointer(OrvaStreamFormat* format) {
  AddArgument(std::to_string(format->bStreamFormat) + "/" + std::to_string(format->wWidth) + "/" +
              std::to_string(format->wHeight) + "/" + std::to_string(format->dwFrameInterval) +
              "/" + std::to_string(format->dwBitRate));
  *format = {5, 1280, 720, 333333, 2000};
}

void FakeLibrary::TakePointer(ProgressCallback callback) {
  AddArgument(callback != nullptr ? "callback" : "null");
  callback_ = callback;
}

void FakeLibrary::AddArgument(const std::string& text) {
  arguments_ += (arguments_.empty() ? "" : ", ") + text;
}

std::string FakeLibrary::NameOf(const void* pointer) const {
  if (pointer == nullptr) {
    return "null";
  }
  if (pointer == formats_) {
    return "opened";
  }
  const auto found = names.find(pointer);
  return found != names.end() ? found->second : "out";
}

void FakeLibrary::TakeBytes(const void* data) {
  const std::string name = NameOf(data);
  if (name != "out" || look == 0) {
    AddArgument(name == "out" ? "bytes" : name);
    return;
  }
  std::string text;
  for (std::size_t index = 0; index < look; ++index) {
    std::array<char, 4> byte = {};
    std::snprintf(byte.data(), byte.size(), "%02x", static_cast<const std::uint8_t*>(data)[index]);
    text += (index > 0 ? " " : "") + std::string(byte.data());
  }
  AddArgument(text);
}

void FakeLibrary::TakeOut(void* data) {
  if (NameOf(data) != "out") {
    AddArgument(NameOf(data));
    return;
  }
  if (look > 0) {
    TakeBytes(data);
  } else {
    AddArgument("out");
  }
  const std::vector<std::uint8_t> one = {static_cast<std::uint8_t>(lastNumber_ + 1)};
  const std::vector<std::uint8_t>& bytes = answer.empty() ? one : answer;
  lastNumber_ += answer.empty() ? 1 : 0;
  std::copy(bytes.begin(), bytes.end(), static_cast<std::uint8_t*>(data));
  if (freesPixels) {
    std::free(data);
  }
}

void FakeLibrary::Tell(std::uint64_t user) {
  for (const std::uint32_t each : progress) {
    callback_(each, user);
  }
}

}  // namespace zem::testing
