// The library's exports, made from the public header (scripts/exports.py): each writes its call
// down and answers as the test says. For tests of what ZemUVC.hpp calls.
#pragma once

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "include/ZemUVCExtApi.h"

namespace zem::testing {

// Every exported name that ZemUVC.hpp is to call.
extern const std::vector<std::string> kWrappedExports;

class FakeLibrary {
 public:
  // "ZEMAPI_GetRegister(camera, 4096, out)": pointers by the names that the test gave them, what
  // they point at where that counts, "out" for all others.
  std::vector<std::string> calls;
  std::map<const void*, std::string> names;
  // What every export returns; from one that hands out a pointer, null for a failure.
  ZemResult result = ZEM_OK;
  // What bytes receive; numbers receive 1, 2, 3 and so on.
  std::vector<std::uint8_t> answer;
  // So many bytes behind pointers without a name are written down.
  std::size_t look = 0;
  // Numbers receive nothing.
  bool leavesNumbers = false;
  // Bytes that are handed over are freed, as ConvertRGBtoBMP does.
  bool freesPixels = false;
  // What a progress callback is told.
  std::vector<std::uint32_t> progress;

  // The objects that are handed out: a list of H.264 formats, so that it can be read as one.
  void* opened() { return formats_; }

  void Begin(const std::string& function);
  void End();

  template <class T>
  std::enable_if_t<std::is_integral_v<T>> TakeNumber(T number) {
    if (callback_ != nullptr && sizeof(T) == sizeof(std::uint64_t)) {
      AddArgument("user");
      Tell(static_cast<std::uint64_t>(number));
    } else {
      AddArgument(std::to_string(+number));
    }
  }
  void TakePointer(const wchar_t* text);
  void TakePointer(const GUID* unit);
  void TakePointer(GUID* subtype);
  void TakePointer(OrvaStreamFormat* format);
  void TakePointer(ProgressCallback callback);
  void TakePointer(IBaseFilter* filter) { AddArgument(NameOf(filter)); }
  void TakePointer(const std::uint8_t* data) { TakeBytes(data); }
  void TakePointer(std::uint8_t* data) { TakeOut(data); }
  void TakePointer(char* data) { TakeOut(data); }
  void TakePointer(void* data) { TakeOut(data); }
  void TakePointer(IBaseFilter** object) { TakeOutObject(object); }
  void TakePointer(std::uint8_t** object) { TakeOutObject(object); }
  void TakePointer(void** object) { TakeOutObject(object); }
  template <class Number>
  std::enable_if_t<std::is_integral_v<Number>> TakePointer(Number* number) {
    AddArgument(*number != 0 ? "out " + std::to_string(*number) : "out");
    if (!leavesNumbers) {
      *number = static_cast<Number>(++lastNumber_);
    }
  }

 private:
  void AddArgument(const std::string& text);
  std::string NameOf(const void* pointer) const;
  void TakeBytes(const void* data);
  void TakeOut(void* data);
  void Tell(std::uint64_t user);
  template <class Object>
  void TakeOutObject(Object** object) {
    if (*object != nullptr) {
      AddArgument("&" + NameOf(*object));
      *object = nullptr;
      return;
    }
    AddArgument("out");
    if (result >= 0) {
      *object = reinterpret_cast<Object*>(formats_);
    }
  }

  std::string arguments_;
  int lastNumber_ = 0;
  ProgressCallback callback_ = nullptr;
  alignas(8) std::uint8_t formats_[sizeof(H264FrameList) + 2 * sizeof(H264FrameInfo)] = {};
};

extern FakeLibrary fake;

template <class T>
void TakeArgument(T argument) {
  if constexpr (std::is_integral_v<T>) {
    fake.TakeNumber(argument);
  } else {
    fake.TakePointer(argument);
  }
}

// What an export does.
template <class Result, class... Arguments>
Result Fake(const char* function, Arguments... arguments) {
  fake.Begin(function);
  (TakeArgument(arguments), ...);
  fake.End();
  if constexpr (std::is_pointer_v<Result>) {
    return fake.result < 0 ? nullptr : fake.opened();
  } else if constexpr (!std::is_void_v<Result>) {
    return fake.result;
  }
}

}  // namespace zem::testing
