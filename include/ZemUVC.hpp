// SPDX-License-Identifier: MIT
/**
 * @file
 * ZemUVC: the functions of ZemUVCExtApi for C++17, header only.
 *
 * Objects close what they opened, buffers are views that know their length, progress is any
 * callable, and failures are exceptions or error codes. Nothing but the library's exports is
 * called, and each function here makes one call. What a call does on the wire, and what its values
 * mean, stands with the export of that name in ZemUVCExtApi.h.
 *
 * Failures. Each function takes, behind its last argument, a std::error_code that may be left out.
 * Without it a failure throws zemuvc::Error; with it nothing is thrown, the error code says what
 * became of the call, and the function is noexcept:
 *
 *     std::uint16_t value = camera.GetRegister(0x123456);         // throws
 *     std::error_code error;
 *     value = camera.GetRegister(0x123456, error);                // noexcept
 *
 * An error code of category ResultCategory() has the library's result as its value; compare it with
 * zemuvc::Errc. A failure leaves the outputs zero, unless a function says otherwise.
 *
 * Threads. As with the exports: an object is opened, used and closed on one thread, two commands
 * never run on one camera at once, and COM is initialised per thread. Different threads may use
 * different cameras at the same time.
 *
 * Ownership. Objects can be moved and not copied. One that was moved from, or closed, holds
 * nothing: its functions fail with Errc::kNoDevice (ROM boot: Errc::kFail), but see EncodingUnit.
 * Buffers stay the caller's.
 *
 * Linking. ZemUVCExtApi's import library; for ListCameras() on Windows also ole32 and oleaut32.
 */
#ifndef ZEM_UVC_HPP
#define ZEM_UVC_HPP

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "ZemUVCExtApi.h"
#include "ZemUVCResults.h"

#if __cplusplus >= 202002L || (defined(_MSVC_LANG) && _MSVC_LANG >= 202002L)
#include <ranges>
#endif

#if !defined(_WIN32)
#include <dirent.h>
#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>
#else
// As the Windows SDK declares them; windows.h may be included before or after.
struct IUnknown;
struct HINSTANCE__;
extern "C" {
__declspec(dllimport) long __stdcall CoInitializeEx(void* reserved, unsigned long model);
__declspec(dllimport) void __stdcall CoUninitialize();
__declspec(dllimport) long __stdcall CoCreateInstance(const GUID& id, IUnknown* outer,
                                                      unsigned long context,
                                                      const GUID& interfaceId, void** object);
__declspec(dllimport) void __stdcall CoTaskMemFree(void* memory);
__declspec(dllimport) void __stdcall SysFreeString(wchar_t* text);
__declspec(dllimport) HINSTANCE__* __stdcall GetModuleHandleW(const wchar_t* name);
__declspec(dllimport) long long(__stdcall* __stdcall GetProcAddress(HINSTANCE__* module,
                                                                    const char* name))();
}
#endif

namespace zemuvc {

// ---------------------------------------------------------------------------------------------
// Errors
// ---------------------------------------------------------------------------------------------

/** What an error code of ResultCategory() says. Failures of the platform have other values. */
enum class Errc : int {
  /** A bad argument, or a table image or entry that is missing. */
  kRefused = ZEM_E_REFUSED,
  /** The camera refused the command or reported an error. */
  kDeviceRefused = ZEM_E_DEVICE_REFUSED,
  /** The caller's buffer is too small. */
  kBufferTooSmall = ZEM_E_BUFFER_TOO_SMALL,
  /** No open camera, or the command could not be written to it. */
  kNoDevice = ZEM_E_NO_DEVICE,
  /** No matching device, corrupt data, or a failure in ROM boot. */
  kFail = ZEM_E_FAIL,
  /** A camera was found by its name and lacks the vendor extension unit. */
  kNoVendorUnit = 1
};

/**
 * The category of the library's results: their texts are those that zemctl prints.
 *
 * @return the one object of the category
 */
inline const std::error_category& ResultCategory() noexcept {
  class Category final : public std::error_category {
   public:
    const char* name() const noexcept override { return "ZemUVCExtApi"; }
    std::string message(int value) const override {
      if (value == static_cast<int>(Errc::kNoVendorUnit)) {
        return "the camera has no vendor extension unit";
      }
      const char* const transfer = ZemTransferFailureText(value);
      return transfer != nullptr ? transfer : ZemResultText(value);
    }
  };
  static const Category category;
  return category;
}

/** Lets an Errc be used as a std::error_code. */
inline std::error_code make_error_code(Errc code) noexcept {
  return {static_cast<int>(code), ResultCategory()};
}

/** A call of the library that failed. */
class Error : public std::system_error {
 public:
  /**
   * @param function the export that was called; a constant
   * @param code     what it came to, of ResultCategory()
   */
  Error(const char* function, std::error_code code)
      : std::system_error(code), function_(function), text_(TextOf(function, code)) {}

  /** The export that was called, such as "ZEMAPI_GetRegister". */
  const char* function() const noexcept { return function_; }
  /** The library's own number. */
  ZemResult result() const noexcept { return code().value(); }
  /** "ZEMAPI_GetRegister: the camera refused the command (ZEM_E_DEVICE_REFUSED, 0x80000001)". */
  const char* what() const noexcept override { return text_.what(); }

 private:
  static std::string TextOf(const char* function, std::error_code code) {
    std::array<char, 16> number = {};
    std::snprintf(number.data(), number.size(), "0x%08X", static_cast<unsigned>(code.value()));
    return std::string(function) + ": " + code.message() + " (" + ZemResultName(code.value()) +
           ", " + number.data() + ")";
  }

  const char* function_;
  std::runtime_error text_;  // can be copied without a failure
};

// ---------------------------------------------------------------------------------------------
// Buffers, text, progress
// ---------------------------------------------------------------------------------------------

/**
 * A view of elements that somebody else owns: arrays, containers with data() and size(), and under
 * C++20 std::span convert to it, and it converts to std::span.
 *
 * @tparam T the element; const for data that is only read
 */
template <class T>
class Span {
 public:
  using element_type = T;

  /** A view of nothing. */
  constexpr Span() noexcept = default;
  /** A view of `size` elements from `data` on. */
  constexpr Span(T* data, std::size_t size) noexcept : data_(data), size_(size) {}
  /** A view of an array. */
  template <std::size_t kSize>
  constexpr Span(T (&array)[kSize]) noexcept : data_(array), size_(kSize) {}
  /** A view of a container's elements, valid as long as these stay where they are. */
  template <
      class Container,
      class = std::enable_if_t<
          !std::is_same_v<std::remove_cv_t<std::remove_reference_t<Container>>, Span> &&
          std::is_convertible_v<
              std::remove_pointer_t<decltype(std::declval<Container&>().data())> (*)[], T (*)[]> &&
          std::is_convertible_v<decltype(std::declval<Container&>().size()), std::size_t>>>
  constexpr Span(Container&& container) noexcept
      : data_(container.data()), size_(container.size()) {}

  constexpr T* data() const noexcept { return data_; }
  constexpr std::size_t size() const noexcept { return size_; }
  constexpr bool empty() const noexcept { return size_ == 0; }
  constexpr T* begin() const noexcept { return data_; }
  constexpr T* end() const noexcept { return data_ + size_; }
  constexpr T& operator[](std::size_t index) const noexcept { return data_[index]; }

 private:
  T* data_ = nullptr;
  std::size_t size_ = 0;
};

/** Bytes that are only read. */
using Bytes = Span<const std::uint8_t>;
/** Bytes that are written. */
using Buffer = Span<std::uint8_t>;

/**
 * The UTF-8 form of the system's wide text, such as a camera's name.
 *
 * @param wide UTF-16 on Windows, code points elsewhere; 0xDC80 to 0xDCFF stand for bytes of their
 * own
 * @return UTF-8; a question mark for what is no character
 */
inline std::string ToUtf8(std::wstring_view wide) {
  std::string text;
  for (std::size_t index = 0; index < wide.size(); ++index) {
    auto code = static_cast<std::uint32_t>(static_cast<char32_t>(wide[index]));
    if constexpr (sizeof(wchar_t) == 2) {
      const auto next = index + 1 < wide.size() ? static_cast<char32_t>(wide[index + 1]) : U'\0';
      if ((code & 0xFC00U) == 0xD800U && (next & 0xFC00U) == 0xDC00U) {
        code = 0x10000U + ((code & 0x3FFU) << 10) + (next & 0x3FFU);
        ++index;
      }
    }
    if (code < 0x80U || (code >= 0xDC80U && code <= 0xDCFFU)) {
      text += static_cast<char>(code & 0xFFU);
    } else if (code < 0x800U) {
      text += static_cast<char>(0xC0U | (code >> 6));
      text += static_cast<char>(0x80U | (code & 0x3FU));
    } else if ((code & 0xFFFFF800U) == 0xD800U || code > 0x10FFFFU) {
      text += '?';
    } else {
      if (code >= 0x10000U) {
        text += static_cast<char>(0xF0U | (code >> 18));
      }
      text += static_cast<char>(
          (code >= 0x10000U ? 0x80U | ((code >> 12) & 0x3FU) : 0xE0U | (code >> 12)));
      text += static_cast<char>(0x80U | ((code >> 6) & 0x3FU));
      text += static_cast<char>(0x80U | (code & 0x3FU));
    }
  }
  return text;
}

/**
 * The system's wide text, as paths and names are given to the library.
 *
 * @param text UTF-8; a byte that is none becomes 0xDC00 + byte, as on Linux in the library
 * @return UTF-16 on Windows, code points elsewhere
 */
inline std::wstring FromUtf8(std::string_view text) {
  constexpr std::array<std::uint32_t, 5> kFirst = {0, 0, 0x80, 0x800, 0x10000};
  std::wstring wide;
  while (!text.empty()) {
    const auto lead = static_cast<std::uint8_t>(text.front());
    const std::size_t length = lead < 0x80U   ? 1
                               : lead < 0xC0U ? 0
                               : lead < 0xE0U ? 2
                               : lead < 0xF0U ? 3
                               : lead < 0xF8U ? 4
                                              : 0;
    bool isWhole = length > 0 && length <= text.size();
    std::uint32_t code = length < 2 ? lead : lead & (0x7FU >> length);
    for (std::size_t index = 1; isWhole && index < length; ++index) {
      const auto byte = static_cast<std::uint8_t>(text[index]);
      isWhole = (byte & 0xC0U) == 0x80U;
      code = (code << 6) | (byte & 0x3FU);
    }
    isWhole =
        isWhole && code >= kFirst[length] && code <= 0x10FFFFU && (code & 0xFFFFF800U) != 0xD800U;
    if (!isWhole) {
      code = 0xDC00U + lead;
    }
    if (sizeof(wchar_t) == 2 && code >= 0x10000U) {
      wide += static_cast<wchar_t>(0xD800U + ((code - 0x10000U) >> 10));
      code = 0xDC00U + (code & 0x3FFU);
    }
    wide += static_cast<wchar_t>(code);
    text.remove_prefix(isWhole ? length : 1);
  }
  return wide;
}

/**
 * Who is told how far a transfer has come: anything that can be called with a std::uint32_t, or
 * nothing. It is called on the thread that runs the transfer and must not use the camera.
 *
 * What it throws ends up at the caller once the transfer has ended (no transfer is cut short, and
 * it is not called again); from a call with an error code it must not throw.
 */
class Progress {
 public:
  /** Nobody is told. */
  Progress() noexcept = default;
  /** Nobody is told. */
  Progress(std::nullptr_t) noexcept {}
  /** @param callable called with the number that the export hands to its callback */
  template <class Callable,
            class = std::enable_if_t<
                !std::is_same_v<std::remove_cv_t<std::remove_reference_t<Callable>>, Progress> &&
                std::is_invocable_v<Callable&, std::uint32_t>>>
  Progress(Callable&& callable) noexcept
      : callable_(const_cast<void*>(static_cast<const void*>(std::addressof(callable)))),
        tell_([](void* object, std::uint32_t progress) {
          (*static_cast<std::remove_reference_t<Callable>*>(object))(progress);
        }) {}

  /** Whether there is somebody. */
  explicit operator bool() const noexcept { return tell_ != nullptr; }
  /** Tells them. */
  void operator()(std::uint32_t progress) const {
    if (tell_ != nullptr) {
      tell_(callable_, progress);
    }
  }

 private:
  void* callable_ = nullptr;
  void (*tell_)(void* object, std::uint32_t progress) = nullptr;
};

/** Whether a call was given an error code, and so throws nothing. */
template <class... Code>
inline constexpr bool kQuiet = sizeof...(Code) == 1;

namespace detail {

inline void Report(const char* function, std::error_code result) {
  if (result) {
    throw Error(function, result);
  }
}
inline void Report(const char* /*function*/, std::error_code result,
                   std::error_code& code) noexcept {
  code = result;
}

// Every other result than a negative one is no failure.
template <class... Code>
void Report(const char* function, ZemResult result, Code&... code) noexcept(kQuiet<Code...>) {
  Report(
      function,
      result < 0 ? std::error_code(static_cast<int>(result), ResultCategory()) : std::error_code(),
      code...);
}

// For exports that answer with 0 when they fail.
inline ZemResult FailureIfZero(ZemResult result) noexcept {
  return result == 0 ? ZEM_E_FAIL : result;
}

// Calls with the view's size, or refuses one that the export's length cannot say.
template <class Length, class T, class Call>
ZemResult WithLength(Span<T> data, const Call& call) noexcept {
  return data.size() <= (std::numeric_limits<Length>::max)()
             ? call(static_cast<Length>(data.size()))
             : ZEM_E_REFUSED;
}

// One call's progress: what the callable throws stays here until the export has returned.
class ToldProgress {
 public:
  explicit ToldProgress(const Progress& progress) noexcept : progress_(progress) {}

  ProgressCallback callback() const noexcept { return progress_ ? &Tell : nullptr; }
  std::uint64_t user() noexcept { return progress_ ? reinterpret_cast<std::uintptr_t>(this) : 0; }
  void Rethrow() const {
    if (thrown_) {
      std::rethrow_exception(thrown_);
    }
  }

 private:
  static void Tell(std::uint32_t progress, std::uint64_t user) {
    auto& told = *reinterpret_cast<ToldProgress*>(static_cast<std::uintptr_t>(user));
    if (told.thrown_) {
      return;
    }
    try {
      told.progress_(progress);
    } catch (...) {
      told.thrown_ = std::current_exception();
    }
  }

  const Progress& progress_;
  std::exception_ptr thrown_;
};

// Runs an export that moves data and tells its progress: `call` takes the length of the data, the
// export's callback and the value that comes with it.
template <class Length, class T, class Call, class... Code>
void ReportWithProgress(const char* function, Span<T> data, const Progress& progress,
                        const Call& call, Code&... code) noexcept(kQuiet<Code...>) {
  ToldProgress told(progress);
  const ZemResult result = WithLength<Length>(
      data, [&](Length length) { return call(length, told.callback(), told.user()); });
  told.Rethrow();
  Report(function, result, code...);
}

// A copy with zeros behind it, up to a multiple of `step`: some exports send whole pieces, with
// whatever follows the data in memory. Without memory there is no copy, and `function` has failed.
template <class... Code>
std::unique_ptr<std::uint8_t[]> CopyPadded(const char* function, Bytes data, std::size_t step,
                                           Code&... code) noexcept(kQuiet<Code...>) {
  std::unique_ptr<std::uint8_t[]> copy(new (std::nothrow) std::uint8_t[data.size() + step]());
  if (copy != nullptr) {
    std::copy(data.begin(), data.end(), copy.get());
  } else {
    Report(function, ZEM_E_FAIL, code...);
  }
  return copy;
}

// Holds one of the library's objects, which `Close` takes back.
template <class T, void (*kClose)(T*&)>
class Owner {
 public:
  Owner() noexcept = default;
  explicit Owner(T* object) noexcept : object_(object) {}
  Owner(Owner&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Owner& operator=(Owner&& other) noexcept {
    if (this != &other) {
      Close();
      object_ = std::exchange(other.object_, nullptr);
    }
    return *this;
  }
  ~Owner() { Close(); }

  T* get() const noexcept { return object_; }
  // For an export that hands one out.
  T** Receive() noexcept {
    Close();
    return &object_;
  }
  T* Release() noexcept { return std::exchange(object_, nullptr); }
  void Close() noexcept {
    if (object_ != nullptr) {
      kClose(object_);
      object_ = nullptr;
    }
  }

 private:
  T* object_ = nullptr;
};

inline void CloseCamera(void*& handle) { ZEMAPI_CloseDevice(&handle); }
inline void CloseTable(std::uint8_t*& table) { ZEMAPI_CloseTableHandle(nullptr, &table); }
inline void CloseFormats(void*& list) { ZEMAPI_ReleaseH264FrameList(list); }
inline void CloseMicrophone(IBaseFilter*& audio) { ZEMAPI_AudioCloseDevice(&audio); }
inline void CloseEncodingUnit(void*& device) { WREN_CloseDevice(&device); }
inline void CloseRomBoot(void*& session) { ZEMROMAPI_CloseDevice(&session); }

// What the exports without a handle send at once.
inline constexpr std::size_t kDefaultCameraChunk = 64;

// As long as a table can be.
inline constexpr std::size_t kTableRoom = 8192;

// Hands an export room for any table, and the caller as much as there is; `call` takes the room and
// the address of the size.
template <class Call>
ZemResult ReadTable(Buffer out, std::size_t& size, const Call& call) noexcept {
  constexpr std::uint32_t kNone = 0xFFFFFFFF;
  std::array<std::uint8_t, kTableRoom> room = {};
  std::uint32_t found = kNone;
  const ZemResult result = call(room.data(), &found);
  if (result < 0) {
    return result;
  }
  if (found == kNone) {
    return ZEM_E_REFUSED;
  }
  size = found;
  if (found > out.size()) {
    return ZEM_E_BUFFER_TOO_SMALL;
  }
  std::copy_n(room.data(), found, out.begin());
  return result;
}

// Hands an export as many bytes as any table has.
template <class Call>
ZemResult WriteTable(Bytes data, std::uint32_t& size, const Call& call) noexcept {
  if (data.size() > kTableRoom) {
    return ZEM_E_REFUSED;
  }
  std::array<std::uint8_t, kTableRoom> room = {};
  std::copy(data.begin(), data.end(), room.begin());
  return call(room.data(), &size);
}

}  // namespace detail

// ---------------------------------------------------------------------------------------------
// Cameras in the system
// ---------------------------------------------------------------------------------------------

/** A video-input device that the system lists. */
struct CameraInfo {
  /** The one that people see; empty when there is none. */
  std::wstring name;
  /** What Camera::OpenByDisplayName takes; such as "usb#vid_5a45&pid_8c00&mi_00#1-1.2" on Linux. */
  std::wstring displayName;
  /** What Camera::OpenByDevicePath takes; empty when the device has none. */
  std::wstring devicePath;
  /** USB ids, as far as the display name tells them. */
  std::optional<std::uint16_t> vendorId;
  std::optional<std::uint16_t> productId;
};

namespace detail {

// The four hexadecimal digits behind `mark`.
inline std::optional<std::uint16_t> IdBehind(std::wstring_view mark, std::wstring_view name) {
  constexpr std::size_t kDigits = 4;
  const std::size_t found = name.find(mark);
  if (found == std::wstring_view::npos || name.size() - found - mark.size() < kDigits) {
    return std::nullopt;
  }
  unsigned id = 0;
  for (const wchar_t digit : name.substr(found + mark.size(), kDigits)) {
    const std::size_t value = std::wstring_view(L"0123456789abcdef0123456789ABCDEF").find(digit);
    if (value == std::wstring_view::npos) {
      return std::nullopt;
    }
    id = id * 16 + static_cast<unsigned>(value % 16);
  }
  return static_cast<std::uint16_t>(id);
}

inline void ReadIds(CameraInfo& camera) {
  camera.vendorId = IdBehind(L"vid_", camera.displayName);
  camera.productId = IdBehind(L"pid_", camera.displayName);
}

#if defined(_WIN32)

// The interfaces of COM that the list needs, up to the last method that is called. The order of the
// methods is what counts.
struct ComObject {
  virtual long __stdcall QueryInterface(const GUID& id, void** object) = 0;
  virtual unsigned long __stdcall AddRef() = 0;
  virtual unsigned long __stdcall Release() = 0;

 protected:
  ~ComObject() = default;
};
struct ComMoniker : ComObject {
  virtual void __stdcall GetClassID() = 0;
  virtual void __stdcall IsDirty() = 0;
  virtual void __stdcall Load() = 0;
  virtual void __stdcall Save() = 0;
  virtual void __stdcall GetSizeMax() = 0;
  virtual void __stdcall BindToObject() = 0;
  virtual long __stdcall BindToStorage(void* context, ComMoniker* toLeft, const GUID& id,
                                       void** object) = 0;
  virtual void __stdcall Reduce() = 0;
  virtual void __stdcall ComposeWith() = 0;
  virtual void __stdcall Enum() = 0;
  virtual void __stdcall IsEqual() = 0;
  virtual void __stdcall Hash() = 0;
  virtual void __stdcall IsRunning() = 0;
  virtual void __stdcall GetTimeOfLastChange() = 0;
  virtual void __stdcall Inverse() = 0;
  virtual void __stdcall CommonPrefixWith() = 0;
  virtual void __stdcall RelativePathTo() = 0;
  virtual long __stdcall GetDisplayName(void* context, ComMoniker* toLeft, wchar_t** name) = 0;
};
struct ComEnumMoniker : ComObject {
  virtual long __stdcall Next(unsigned long count, ComMoniker** monikers,
                              unsigned long* fetched) = 0;
};
struct ComCreateDevEnum : ComObject {
  virtual long __stdcall CreateClassEnumerator(const GUID& category, ComEnumMoniker** enumerator,
                                               unsigned long flags) = 0;
};
struct ComVariant {
  unsigned short type;
  unsigned short reserved[3];
  wchar_t* text;
  void* rest;
};
struct ComPropertyBag : ComObject {
  virtual long __stdcall Read(const wchar_t* name, ComVariant* value, void* log) = 0;
};

template <class T>
inline void ReleaseCom(T*& object) {
  object->Release();
}
template <class T>
using ComOwner = Owner<T, ReleaseCom<T>>;

// COM for the length of a scope. A thread that has it in another way keeps that.
class ComScope {
 public:
  ComScope() noexcept : result_(CoInitializeEx(nullptr, 2)) {}
  ~ComScope() {
    if (result_ >= 0) {
      CoUninitialize();
    }
  }
  ComScope(const ComScope&) = delete;
  ComScope& operator=(const ComScope&) = delete;

 private:
  long result_;
};

inline std::wstring ReadProperty(ComPropertyBag& properties, const wchar_t* name) {
  constexpr unsigned short kText = 8;
  ComVariant value = {};
  std::wstring text;
  if (properties.Read(name, &value, nullptr) >= 0 && value.type == kText) {
    text = value.text != nullptr ? value.text : L"";
    SysFreeString(value.text);
  }
  return text;
}

inline CameraInfo Describe(ComMoniker& moniker) {
  constexpr GUID kPropertyBag = {
      0x55272A00, 0x42CB, 0x11CE, {0x81, 0x35, 0x00, 0xAA, 0x00, 0x4B, 0xB8, 0x51}};
  CameraInfo camera;
  wchar_t* name = nullptr;
  if (moniker.GetDisplayName(nullptr, nullptr, &name) >= 0 && name != nullptr) {
    camera.displayName = name;
    CoTaskMemFree(name);
  }
  ComOwner<ComPropertyBag> properties;
  if (moniker.BindToStorage(nullptr, nullptr, kPropertyBag,
                            reinterpret_cast<void**>(properties.Receive())) >= 0 &&
      properties.get() != nullptr) {
    camera.name = ReadProperty(*properties.get(), L"FriendlyName");
    camera.devicePath = ReadProperty(*properties.get(), L"DevicePath");
  }
  ReadIds(camera);
  return camera;
}

inline ZemResult ListSystemCameras(std::vector<CameraInfo>& cameras) {
  constexpr GUID kSystemDeviceEnum = {
      0x62BE5D10, 0x60EB, 0x11D0, {0xBD, 0x3B, 0x00, 0xA0, 0xC9, 0x11, 0xCE, 0x86}};
  constexpr GUID kCreateDevEnum = {
      0x29840822, 0x5B84, 0x11D0, {0xBD, 0x3B, 0x00, 0xA0, 0xC9, 0x11, 0xCE, 0x86}};
  constexpr GUID kVideoInput = {
      0x860BB310, 0x5D01, 0x11D0, {0xBD, 0x3B, 0x00, 0xA0, 0xC9, 0x11, 0xCE, 0x86}};
  const ComScope com;
  ComOwner<ComCreateDevEnum> system;
  ZemResult result = CoCreateInstance(kSystemDeviceEnum, nullptr, 1, kCreateDevEnum,
                                      reinterpret_cast<void**>(system.Receive()));
  if (result < 0) {
    return result;
  }
  // A category without devices has no enumerator.
  ComOwner<ComEnumMoniker> monikers;
  result = system.get()->CreateClassEnumerator(kVideoInput, monikers.Receive(), 0);
  ComOwner<ComMoniker> moniker;
  while (monikers.get() != nullptr && monikers.get()->Next(1, moniker.Receive(), nullptr) == 0) {
    cameras.push_back(Describe(*moniker.get()));
  }
  return result;
}

#else

// A file of sysfs without its line end; nothing when it cannot be read.
inline std::optional<std::string> ReadAttribute(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    return std::nullopt;
  }
  std::array<char, 256> content = {};
  const ssize_t length = ::read(file, content.data(), content.size());
  ::close(file);
  const std::string_view text(content.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
  return std::string(text.substr(0, text.find('\n')));
}

// A whole number.
inline std::optional<unsigned> ReadNumber(const std::string& path, int base) {
  const std::optional<std::string> text = ReadAttribute(path);
  if (!text || text->empty() || text->find_first_of("+- \t") != std::string::npos) {
    return std::nullopt;
  }
  char* end = nullptr;
  const unsigned long number = std::strtoul(text->c_str(), &end, base);
  return *end == '\0' ? std::optional(static_cast<unsigned>(number)) : std::nullopt;
}

inline std::string Resolve(const std::string& link) {
  const std::unique_ptr<char, decltype(&std::free)> path(::realpath(link.c_str(), nullptr),
                                                         &std::free);
  return path != nullptr ? path.get() : "";
}

inline std::string ParentOf(const std::string& path) {
  const std::size_t separator = path.rfind('/');
  return separator != std::string::npos ? path.substr(0, separator) : "";
}

inline std::string NameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// Whether frames come from a device file; one that cannot be asked counts if it is its function's
// first.
inline bool IsCapture(const std::string& path, unsigned index) {
  const int file = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  v4l2_capability capability = {};
  const bool isTold = file >= 0 && ::ioctl(file, VIDIOC_QUERYCAP, &capability) >= 0;
  if (file >= 0) {
    ::close(file);
  }
  return isTold ? (capability.device_caps & V4L2_CAP_VIDEO_CAPTURE) != 0 : index == 0;
}

// A USB video function's device file, under the names that the library gives it.
inline std::optional<CameraInfo> DescribeVideo(const std::string& folder,
                                               const std::string& deviceFile) {
  constexpr unsigned kVideoClass = 0x0E;
  const std::string interface = Resolve(folder + "/device");
  const std::string device = ParentOf(interface);
  const auto vendor = ReadNumber(device + "/idVendor", 16);
  const auto product = ReadNumber(device + "/idProduct", 16);
  const auto configuration = ReadNumber(device + "/bConfigurationValue", 10);
  const auto number = ReadNumber(interface + "/bInterfaceNumber", 16);
  const auto interfaceClass = ReadNumber(interface + "/bInterfaceClass", 16);
  const unsigned index = ReadNumber(folder + "/index", 10).value_or(0);
  if (!vendor || !product || !configuration || !number || interfaceClass != kVideoClass ||
      !IsCapture(deviceFile, index)) {
    return std::nullopt;
  }
  std::array<char, 64> ids = {};
  std::snprintf(ids.data(), ids.size(), "usb#vid_%04x&pid_%04x&mi_%02x#", *vendor, *product,
                *number);
  const std::string port = NameOf(device);

  std::string bus = device;
  while (!bus.empty() && NameOf(bus).compare(0, 3, "usb") != 0) {
    bus = ParentOf(bus);
  }
  const std::string controller = ParentOf(bus);
  const std::string version = ReadAttribute(bus + "/version").value_or("");
  const std::size_t digit = version.find_first_not_of(' ');
  const std::size_t separator = port.find('-');
  const std::string path =
      "/dev/v4l/by-path/" + NameOf(Resolve(controller + "/subsystem")) + "-" + NameOf(controller) +
      "-usb" + (digit != std::string::npos ? "v" + version.substr(digit, 1) : "") +
      "-0:" + (separator != std::string::npos ? port.substr(separator + 1) : "") + ":" +
      std::to_string(*configuration) + "." + std::to_string(*number) + "-video-index" +
      std::to_string(index);

  CameraInfo camera;
  camera.name = FromUtf8(ReadAttribute(folder + "/name").value_or(""));
  camera.displayName = FromUtf8(ids.data() + port + (index > 0 ? "&" + std::to_string(index) : ""));
  camera.devicePath = FromUtf8(path);
  ReadIds(camera);
  return camera;
}

// `sysFolder` is where sysfs is, `deviceFolder` where the device files are.
inline ZemResult ListSystemCameras(std::vector<CameraInfo>& cameras,
                                   const std::string& sysFolder = "/sys",
                                   const std::string& deviceFolder = "/dev") {
  const std::string videos = sysFolder + "/class/video4linux";
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(videos.c_str()), &::closedir);
  std::vector<unsigned> numbers;
  while (folder != nullptr) {
    const dirent* const entry = ::readdir(folder.get());  // NOLINT(concurrency-mt-unsafe)
    if (entry == nullptr) {
      break;
    }
    const std::string_view name = entry->d_name;
    if (name.size() > 5 && name.size() < 12 && name.substr(0, 5) == "video" &&
        name.find_first_not_of("0123456789", 5) == std::string_view::npos) {
      numbers.push_back(
          static_cast<unsigned>(std::strtoul(std::string(name.substr(5)).c_str(), nullptr, 10)));
    }
  }
  std::sort(numbers.begin(), numbers.end());
  for (const unsigned number : numbers) {
    const std::string file = "/video" + std::to_string(number);
    if (auto camera = DescribeVideo(videos + file, deviceFolder + file)) {
      cameras.push_back(std::move(*camera));
    }
  }
  return ZEM_OK;
}

#endif

}  // namespace detail

/**
 * Lists the cameras that the library can find: on Windows the video-input devices of the system's
 * device enumerator, on Linux the capture devices of USB video functions. None of them is opened
 * as a camera, and other makers' are among them. The library has no export for this.
 *
 * On Windows the calling thread's COM is as it was, afterwards.
 *
 * @return in the system's order
 * @throw  Error with the platform's failure; with an error code, which may then also be
 *         std::errc::not_enough_memory, the list is empty
 */
template <class... Code>
std::vector<CameraInfo> ListCameras(Code&... code) noexcept(kQuiet<Code...>) {
  std::vector<CameraInfo> cameras;
  if constexpr (kQuiet<Code...>) {
    try {
      detail::Report("ListCameras", detail::ListSystemCameras(cameras), code...);
    } catch (const std::exception&) {
      cameras.clear();
      detail::Report("ListCameras", std::make_error_code(std::errc::not_enough_memory), code...);
    }
  } else {
    detail::Report("ListCameras", detail::ListSystemCameras(cameras));
  }
  return cameras;
}

// ---------------------------------------------------------------------------------------------
// Values
// ---------------------------------------------------------------------------------------------

/** Extension units of the camera. */
inline constexpr GUID kVendorUnit = ZEM_VENDOR_XU;
inline constexpr GUID kH264Unit = ZEM_H264_XU;
inline constexpr GUID kSkypeUnit = ZEM_SKYPE_XU;
inline constexpr GUID kTirellaUnit = ZEM_TIRELLA_XU;
inline constexpr GUID kOrvaUnit = ZEM_ORVA_XU;
inline constexpr GUID kEncodingUnit = ZEM_ENCODING_UNIT_XU;
inline constexpr GUID kStreamProbeUnit = ZEM_STREAM_PROBE_XU;

/** A block of `kSize` bytes, as one control has it. */
template <std::size_t kSize>
using Block = std::array<std::uint8_t, kSize>;

/** The gains of the white balance. */
struct WhiteBalanceGains {
  std::uint16_t first = 0;
  std::uint16_t second = 0;
  std::uint16_t third = 0;
};

/** A standard control's setting; values and flags are DirectShow's (1 automatic, 2 manual). */
struct ControlValue {
  ZemLong value = 0;
  ZemLong flags = 0;
};

/** What a standard control can be set to. */
struct ControlRange {
  ZemLong minimum = 0;
  ZemLong maximum = 0;
  ZemLong step = 0;
  ZemLong defaultValue = 0;
  ZemLong flags = 0;
};

/** A format that carries H.264 streams; sizes in pixels. */
struct PayloadFormat {
  std::uint16_t width = 0;
  std::uint16_t height = 0;
  GUID subtype = {};
};

/**
 * A copy of a camera's list of H.264 stream formats; outlives the camera. Given back to the library
 * with the object.
 */
class H264Formats {
 public:
  /** No format. */
  H264Formats() noexcept = default;
  /** How many. */
  std::size_t size() const noexcept { return list_.get() != nullptr ? head().wCount : 0; }
  const H264FrameInfo* begin() const noexcept {
    return list_.get() != nullptr ? reinterpret_cast<const H264FrameInfo*>(&head() + 1) : nullptr;
  }
  const H264FrameInfo* end() const noexcept { return begin() + size(); }
  /** @param index below size() */
  const H264FrameInfo& operator[](std::size_t index) const noexcept { return begin()[index]; }

 private:
  friend class Camera;
  const H264FrameList& head() const noexcept {
    return *static_cast<const H264FrameList*>(list_.get());
  }
  detail::Owner<void, detail::CloseFormats> list_;
};

/**
 * A camera's table store in memory, as Camera::OpenTables reads it; closes itself. It is a copy
 * that other changes of the camera do not refresh. WriteTable needs the camera open.
 */
class TableStore {
 public:
  /** No store: its functions fail with Errc::kRefused. */
  TableStore() noexcept = default;
  /** Whether there is a store. */
  explicit operator bool() const noexcept { return table_.get() != nullptr; }

  /**
   * Tells a table's size.
   *
   * @param id the table's id
   * @return bytes
   */
  template <class... Code>
  std::uint16_t GetTableSize(std::uint8_t id, Code&... code) const noexcept(kQuiet<Code...>) {
    std::uint16_t size = 0;
    detail::Report("ZEMAPI_GetTableSize", ZEMAPI_GetTableSize(nullptr, table_.get(), id, &size),
                   code...);
    return size;
  }

  /**
   * Copies a table out of the store. The export's own buffer has room for any table, so a short one
   * is never overrun.
   *
   * @param id  the table's id
   * @param out receives the table; untouched on failure
   * @return the table's size in bytes, also with Errc::kBufferTooSmall, when it is longer than
   * `out`; Errc::kRefused when there is no such table
   */
  template <class... Code>
  std::size_t ReadTable(std::uint8_t id, Buffer out, Code&... code) const
      noexcept(kQuiet<Code...>) {
    std::size_t size = 0;
    const auto read = [&](std::uint8_t* room, std::uint32_t* found) {
      return ZEMAPI_ReadTableEx(nullptr, table_.get(), id, room, std::uint32_t{detail::kTableRoom},
                                found);
    };
    detail::Report("ZEMAPI_ReadTableEx", detail::ReadTable(out, size, read), code...);
    return size;
  }

  /**
   * Replaces a table in the store and writes it to the camera. That the camera did not take it is
   * not reported.
   *
   * The size of a table never changes: of `data`, what is missing is written as zeros and what is
   * too much is left out. Compare with GetTableSize first.
   *
   * @param id   the table's id
   * @param data the table, at most 8,192 bytes
   * @return the table's size in bytes
   */
  template <class... Code>
  std::uint32_t WriteTable(std::uint8_t id, Bytes data, Code&... code) noexcept(kQuiet<Code...>) {
    std::uint32_t size = 0;
    const auto write = [&](const std::uint8_t* room, std::uint32_t* written) {
      return ZEMAPI_WriteTableEx(camera_, table_.get(), id, room,
                                 static_cast<std::uint32_t>(data.size()), written);
    };
    detail::Report("ZEMAPI_WriteTableEx", detail::WriteTable(data, size, write), code...);
    return size;
  }

  /**
   * Copies the whole image.
   *
   * @param out receives the image, as much of it as there is room for; 8,192 bytes hold any
   * @return bytes copied
   */
  template <class... Code>
  std::uint32_t Dump(Buffer out, Code&... code) const noexcept(kQuiet<Code...>) {
    std::uint32_t size = 0;
    const auto call = [&](std::uint32_t capacity) {
      return ZEMAPI_DumpWholeTable(nullptr, table_.get(), out.data(), capacity, &size);
    };
    detail::Report("ZEMAPI_DumpWholeTable", detail::WithLength<std::uint32_t>(out, call), code...);
    return size;
  }

  /** Frees the store; the object holds nothing then. */
  void Close() noexcept { table_.Close(); }

 private:
  friend class Camera;
  void* camera_ = nullptr;
  detail::Owner<std::uint8_t, detail::CloseTable> table_;
};

// ---------------------------------------------------------------------------------------------
// Camera
// ---------------------------------------------------------------------------------------------

/**
 * An opened camera; closes itself.
 *
 * Every opening function but OpenBySourceFilter leaves COM initialised once for the calling thread,
 * and closing takes that back: open, use and close a camera on one thread.
 */
class Camera {
 public:
  /** @name Opening and closing */
  /** @{ */

  /** No camera. */
  Camera() noexcept = default;

  /**
   * Opens a default camera: its USB ids are those of zem_setting.ini beside the program, or the
   * vendor's.
   *
   * @param index among the cameras with these ids, from 0
   * @return the camera; empty on failure: Errc::kFail when there is none, or the platform's failure
   */
  template <class... Code>
  static Camera Open(unsigned index = 0, Code&... code) noexcept(kQuiet<Code...>) {
    Camera camera;
    detail::Report("ZEMAPI_OpenDevice", ZEMAPI_OpenDevice(index, camera.handle_.Receive()),
                   code...);
    return camera;
  }

  /**
   * Opens a camera by its USB ids.
   *
   * @param vendorId  USB vendor id
   * @param productId USB product id
   * @param index     among the cameras with these ids, from 0
   * @return as Open
   */
  template <class... Code>
  static Camera OpenByIds(unsigned vendorId, unsigned productId, unsigned index = 0,
                          Code&... code) noexcept(kQuiet<Code...>) {
    Camera camera;
    detail::Report("ZEMAPI_OpenDeviceEx",
                   ZEMAPI_OpenDeviceEx(index, camera.handle_.Receive(), vendorId, productId),
                   code...);
    return camera;
  }

  /** Opens the first video-input device that has the vendor extension unit. Results as Open. */
  template <class... Code>
  static Camera OpenAny(Code&... code) noexcept(kQuiet<Code...>) {
    Camera camera;
    detail::Report("ZEMAPI_OpenZemDevice", ZEMAPI_OpenZemDevice(camera.handle_.Receive()), code...);
    return camera;
  }

  /**
   * Opens a camera by its display name.
   *
   * @param displayName as ListCameras() tells it
   * @return as Open; Errc::kNoVendorUnit when the device has no vendor extension unit
   */
  template <class... Code>
  static Camera OpenByDisplayName(const std::wstring& displayName,
                                  Code&... code) noexcept(kQuiet<Code...>) {
    Camera camera;
    ReportNamed("ZEMAPI_OpenDeviceByPath",
                ZEMAPI_OpenDeviceByPath(displayName.c_str(), camera.handle_.Receive()), code...);
    return camera;
  }

  /**
   * Opens a camera by its device path.
   *
   * @param devicePath as ListCameras() tells it
   * @return as OpenByDisplayName
   */
  template <class... Code>
  static Camera OpenByDevicePath(const std::wstring& devicePath,
                                 Code&... code) noexcept(kQuiet<Code...>) {
    Camera camera;
    ReportNamed("ZEMAPI_OpenDeviceByDevPath",
                ZEMAPI_OpenDeviceByDevPath(devicePath.c_str(), camera.handle_.Receive()), code...);
    return camera;
  }

  /**
   * Opens a camera around a filter of the caller's, which gets a reference more.
   *
   * @param filter the device's filter. COM is not initialised here and closing uninitialises it:
   * the caller balances that
   * @return the camera; Errc::kFail for a null filter
   */
  template <class... Code>
  static Camera OpenBySourceFilter(IBaseFilter* filter, Code&... code) noexcept(kQuiet<Code...>) {
    Camera camera;
    detail::Report("ZEMAPI_OpenDeviceBySourceFilter",
                   ZEMAPI_OpenDeviceBySourceFilter(filter, camera.handle_.Receive()), code...);
    return camera;
  }

  /** Whether a camera is open. */
  explicit operator bool() const noexcept { return handle_.get() != nullptr; }
  /** The handle, for the exports; stays this object's. Null without a camera. */
  void* handle() const noexcept { return handle_.get(); }
  /** Closes the camera; the object holds nothing then. */
  void Close() noexcept { handle_.Close(); }

  /**
   * Not to be called. ZEMAPI_GetSerialNumber does not ask the camera: it copies a text of 17 bytes
   * into a buffer that it takes to have 16, and the runtime ends the process for that, however long
   * the caller's buffer is. GetSensorSerialNumber() asks the camera.
   */
  void GetSerialNumber() const = delete;

  /** @} */
  /** @name Raw access to extension units */
  /** @{ */

  /**
   * Writes one control of an extension unit, as it is.
   *
   * @param unit     such as kVendorUnit
   * @param selector control selector, from 1
   * @param data     as many bytes as the control has
   * @return bytes that the platform says it has moved
   */
  template <class... Code>
  ZemULong UvcExtSet(const GUID& unit, std::uint16_t selector, Bytes data,
                     Code&... code) noexcept(kQuiet<Code...>) {
    ZemULong moved = 0;
    const auto call = [&](ZemULong length) {
      return ZEMAPI_UvcExtSet(handle(), &unit, selector, Unchanged(data), length, &moved);
    };
    detail::Report("ZEMAPI_UvcExtSet", detail::WithLength<ZemULong>(data, call), code...);
    return moved;
  }

  /**
   * Reads one control of an extension unit.
   *
   * @param unit     such as kVendorUnit
   * @param selector control selector, from 1
   * @param buffer   receives the control; as long as that
   * @return bytes that the platform says it has moved
   */
  template <class... Code>
  ZemULong UvcExtGet(const GUID& unit, std::uint16_t selector, Buffer buffer, Code&... code) const
      noexcept(kQuiet<Code...>) {
    ZemULong moved = 0;
    const auto call = [&](ZemULong length) {
      return ZEMAPI_UvcExtGet(handle(), &unit, selector, buffer.data(), length, &moved);
    };
    detail::Report("ZEMAPI_UvcExtGet", detail::WithLength<ZemULong>(buffer, call), code...);
    return moved;
  }

  /** UvcExtSet on the vendor unit. */
  template <class... Code>
  ZemULong ZemExtSet(std::uint16_t selector, Bytes data, Code&... code) noexcept(kQuiet<Code...>) {
    ZemULong moved = 0;
    const auto call = [&](ZemULong length) {
      return ZEMAPI_ZemExtSet(handle(), selector, Unchanged(data), length, &moved);
    };
    detail::Report("ZEMAPI_ZemExtSet", detail::WithLength<ZemULong>(data, call), code...);
    return moved;
  }

  /** UvcExtGet on the vendor unit. */
  template <class... Code>
  ZemULong ZemExtGet(std::uint16_t selector, Buffer buffer, Code&... code) const
      noexcept(kQuiet<Code...>) {
    ZemULong moved = 0;
    const auto call = [&](ZemULong length) {
      return ZEMAPI_ZemExtGet(handle(), selector, buffer.data(), length, &moved);
    };
    detail::Report("ZEMAPI_ZemExtGet", detail::WithLength<ZemULong>(buffer, call), code...);
    return moved;
  }

  /**
   * Tells whether the camera has an extension unit. One without any topology node counts as having
   * every unit.
   *
   * @param unit such as kH264Unit
   * @return whether it has; false on failure
   */
  template <class... Code>
  bool HasExtensionUnit(const GUID& unit, Code&... code) const noexcept(kQuiet<Code...>) {
    const ZemResult result = ZEMAPI_UvcCheckXuGuid(handle(), &unit);
    detail::Report("ZEMAPI_UvcCheckXuGuid", result, code...);
    return result == ZEM_OK;
  }

  /** @} */
  /**
   * @name Registers and vendor commands
   * Unless a function says otherwise: Errc::kDeviceRefused when the camera refused the command,
   * Errc::kNoDevice when it could not be written. A reply that cannot be read looks like one of
   * zeros.
   */
  /** @{ */

  /** Writes a 16-bit processor register at a 24-bit address; higher bits are not sent. */
  template <class... Code>
  void SetRegister(std::uint32_t address, std::uint16_t value,
                   Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetRegister", ZEMAPI_SetRegister(handle(), address, value), code...);
  }

  /** Reads a 16-bit processor register at a 24-bit address. */
  template <class... Code>
  std::uint16_t GetRegister(std::uint32_t address, Code&... code) const noexcept(kQuiet<Code...>) {
    std::uint16_t value = 0;
    detail::Report("ZEMAPI_GetRegister", ZEMAPI_GetRegister(handle(), address, &value), code...);
    return value;
  }

  /** Writes one byte to an image-sensor register. */
  template <class... Code>
  void SetSensorRegister(std::uint16_t address, std::uint8_t value,
                         Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetSensorRegister", ZEMAPI_SetSensorRegister(handle(), address, value),
                   code...);
  }

  /** Reads one byte from an image-sensor register. */
  template <class... Code>
  std::uint8_t GetSensorRegister(std::uint16_t address, Code&... code) const
      noexcept(kQuiet<Code...>) {
    std::uint8_t value = 0;
    detail::Report("ZEMAPI_GetSensorRegister", ZEMAPI_GetSensorRegister(handle(), address, &value),
                   code...);
    return value;
  }

  /** Writes two bytes to an image-sensor register. */
  template <class... Code>
  void SetSensorRegisterW(std::uint16_t address, std::uint16_t value,
                          Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetSensorRegisterW", ZEMAPI_SetSensorRegisterW(handle(), address, value),
                   code...);
  }

  /** Reads two bytes from an image-sensor register. */
  template <class... Code>
  std::uint16_t GetSensorRegisterW(std::uint16_t address, Code&... code) const
      noexcept(kQuiet<Code...>) {
    std::uint16_t value = 0;
    detail::Report("ZEMAPI_GetSensorRegisterW",
                   ZEMAPI_GetSensorRegisterW(handle(), address, &value), code...);
    return value;
  }

  /** Writes a 16-bit register of the lens actuator (VCM). */
  template <class... Code>
  void SetVcmRegister(std::uint16_t address, std::uint16_t value,
                      Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetVCMRegister", ZEMAPI_SetVCMRegister(handle(), address, value),
                   code...);
  }

  /** Reads a 16-bit register of the lens actuator (VCM). */
  template <class... Code>
  std::uint16_t GetVcmRegister(std::uint16_t address, Code&... code) const
      noexcept(kQuiet<Code...>) {
    std::uint16_t value = 0;
    detail::Report("ZEMAPI_GetVCMRegister", ZEMAPI_GetVCMRegister(handle(), address, &value),
                   code...);
    return value;
  }

  /** Moves the lens to a position in the actuator's own units. */
  template <class... Code>
  void SetLensPosition(std::uint32_t position, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetLensPos", ZEMAPI_SetLensPos(handle(), position), code...);
  }

  /** Reads the firmware version, 6 bytes. */
  template <class... Code>
  Block<6> GetFirmwareVersion(Code&... code) const noexcept(kQuiet<Code...>) {
    Block<6> block = {};
    detail::Report("ZEMAPI_GetFWVersion", ZEMAPI_GetFWVersion(handle(), block.data()), code...);
    return block;
  }

  /**
   * Reads the whole reply to the version command, status byte and first data byte included.
   * Errc::kRefused when the camera refused it.
   */
  template <class... Code>
  Block<8> GetFirmwareVersionReply(Code&... code) const noexcept(kQuiet<Code...>) {
    std::array<char, 8> reply = {};
    detail::Report("ZEMAPI_GetFWVersion", ZEMAPI_GetFWVersion(handle(), reply.data()), code...);
    Block<8> block = {};
    std::copy(reply.begin(), reply.end(), block.begin());
    return block;
  }

  /**
   * Asks for the result of the firmware's check-sum test: succeeds when the check sum is right.
   * Errc::kDeviceRefused when it is not, Errc::kRefused for any other answer.
   */
  template <class... Code>
  void CheckFirmware(Code&... code) const noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_GetCheckSumResult", ZEMAPI_GetCheckSumResult(handle()), code...);
  }

  /** Reads a codec register; the camera's status is not looked at. */
  template <class... Code>
  std::uint8_t ReadCodecRegister(std::uint16_t address, Code&... code) const
      noexcept(kQuiet<Code...>) {
    std::uint8_t value = 0;
    detail::Report("ZEMAPI_ReadCodecReg", ZEMAPI_ReadCodecReg(handle(), address, &value), code...);
    return value;
  }

  /** Writes a codec register; no reply is read. */
  template <class... Code>
  void WriteCodecRegister(std::uint16_t address, std::uint8_t value,
                          Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_WriteCodecReg", ZEMAPI_WriteCodecReg(handle(), address, value), code...);
  }

  /**
   * Sends a block on the ISP channel.
   *
   * @param command 8 bytes
   * @return the reply, 8 bytes; the camera's status, its byte 0, is not looked at
   */
  template <class... Code>
  Block<8> IspCommand(Block<8> command, Code&... code) noexcept(kQuiet<Code...>) {
    Block<8> reply = {};
    detail::Report("ZEMAPI_IspCommand", ZEMAPI_IspCommand(handle(), command.data(), reply.data()),
                   code...);
    return reply;
  }

  /**
   * Sends a block on the VCP channel.
   *
   * @param command 8 bytes
   * @return the reply, 8 bytes; the camera's status, its byte 0, is not looked at
   */
  template <class... Code>
  Block<8> VcpCommand(Block<8> command, Code&... code) noexcept(kQuiet<Code...>) {
    Block<8> reply = {};
    detail::Report("ZEMAPI_VcpCommand", ZEMAPI_VcpCommand(handle(), command.data(), reply.data()),
                   code...);
    return reply;
  }

  /**
   * Sends a block on the extended ISP channel.
   *
   * @param command 16 bytes
   * @return the reply, 16 bytes, also when the camera refused
   */
  template <class... Code>
  Block<16> IspCommandEx(Block<16> command, Code&... code) noexcept(kQuiet<Code...>) {
    Block<16> reply = {};
    detail::Report("ZEMAPI_IspCommandEx",
                   ZEMAPI_IspCommandEx(handle(), command.data(), reply.data()), code...);
    return reply;
  }

  /**
   * Sends a block on the extended VCP channel.
   *
   * @param command 16 bytes
   * @return the reply, 16 bytes, also when the camera refused
   */
  template <class... Code>
  Block<16> VcpCommandEx(Block<16> command, Code&... code) noexcept(kQuiet<Code...>) {
    Block<16> reply = {};
    detail::Report("ZEMAPI_VcpCommandEx",
                   ZEMAPI_VcpCommandEx(handle(), command.data(), reply.data()), code...);
    return reply;
  }

  /** Reads the device information block, 8 bytes. */
  template <class... Code>
  Block<8> GetDeviceInfo(Code&... code) const noexcept(kQuiet<Code...>) {
    Block<8> block = {};
    detail::Report("ZEMAPI_GetDeviceInfo", ZEMAPI_GetDeviceInfo(handle(), block.data()), code...);
    return block;
  }

  /** @} */
  /**
   * @name Image tuning and information
   * Values are the firmware's: they are sent as they are. Results as of the vendor commands.
   */
  /** @{ */

  /**
   * Reads the day on which the firmware was built, such as "2021.Dec.15", with a zero byte behind
   * it.
   */
  template <class... Code>
  std::array<char, 12> GetFirmwareBuildDate(Code&... code) const noexcept(kQuiet<Code...>) {
    std::array<char, 12> date = {};
    detail::Report("ZEMAPI_GetFWBuildDate", ZEMAPI_GetFWBuildDate(handle(), date.data()), code...);
    return date;
  }

  /** Switches auto focus. */
  template <class... Code>
  void EnableAutoFocus(bool enable, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_EnableAF", ZEMAPI_EnableAF(handle(), enable ? 1 : 0), code...);
  }

  /** Switches auto exposure. */
  template <class... Code>
  void EnableAutoExposure(bool enable, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_EnableAE", ZEMAPI_EnableAE(handle(), enable ? 1 : 0), code...);
  }

  /**
   * Reads the nine accumulators of the focus measurement, one command each. Of a failure, those
   * that were read until then stand.
   */
  template <class... Code>
  std::array<std::uint32_t, 9> GetFocusAccumulators(Code&... code) const noexcept(kQuiet<Code...>) {
    std::array<std::uint32_t, 9> values = {};
    detail::Report("ZEMAPI_GetAFACC", ZEMAPI_GetAFACC(handle(), values.data()), code...);
    return values;
  }

  /** Sets the video recording mode; no reply is read. */
  template <class... Code>
  void SetVideoRecordingMode(std::uint8_t mode, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetVideoRecMode", ZEMAPI_SetVideoRecMode(handle(), mode), code...);
  }

  /** Sets the gains of the white balance; the camera's status is not looked at. */
  template <class... Code>
  void SetWhiteBalanceGains(const WhiteBalanceGains& gains,
                            Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetAWBGain",
                   ZEMAPI_SetAWBGain(handle(), gains.first, gains.second, gains.third), code...);
  }

  /** Reads the gains of the white balance; the camera's status is not looked at. */
  template <class... Code>
  WhiteBalanceGains GetWhiteBalanceGains(Code&... code) const noexcept(kQuiet<Code...>) {
    WhiteBalanceGains gains;
    detail::Report("ZEMAPI_GetAWBGain",
                   ZEMAPI_GetAWBGain(handle(), &gains.first, &gains.second, &gains.third), code...);
    return gains;
  }

  /**
   * Switches the gain between manual and automatic.
   *
   * Errc::kDeviceRefused also when the camera lacks the video processing amplifier.
   */
  template <class... Code>
  void EnableManualGain(bool manual, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_EnableManualGainCtrl",
                   ZEMAPI_EnableManualGainCtrl(handle(), manual ? 1 : 0), code...);
  }

  /** Sets the correction of lens shading. */
  template <class... Code>
  void SetShading(std::uint8_t value, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetShadding", ZEMAPI_SetShadding(handle(), value), code...);
  }

  /** Writes the six bytes of miscellaneous settings. */
  template <class... Code>
  void SetMiscSettings(const Block<6>& settings, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetMiscSetting", ZEMAPI_SetMiscSetting(handle(), settings.data()),
                   code...);
  }

  /** Reads the six bytes of miscellaneous settings. */
  template <class... Code>
  Block<6> GetMiscSettings(Code&... code) const noexcept(kQuiet<Code...>) {
    Block<6> block = {};
    detail::Report("ZEMAPI_GetMiscSetting", ZEMAPI_GetMiscSetting(handle(), block.data()), code...);
    return block;
  }

  /** Lets the firmware apply its own MJPEG quality. */
  template <class... Code>
  void SetMjpegQuality(Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetMjpgQuality", ZEMAPI_SetMjpgQuality(handle()), code...);
  }

  /** Chooses an image effect. */
  template <class... Code>
  void SetImageEffect(std::uint8_t effect, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetImageEffect", ZEMAPI_SetImageEffect(handle(), effect), code...);
  }

  /** Sets the encoder's highest quantiser. */
  template <class... Code>
  void SetMaxQuantiser(std::uint8_t quantiser, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetMaxQP", ZEMAPI_SetMaxQP(handle(), quantiser), code...);
  }

  /** Sets the encoder's lowest quantiser. */
  template <class... Code>
  void SetMinQuantiser(std::uint8_t quantiser, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetMinQP", ZEMAPI_SetMinQP(handle(), quantiser), code...);
  }

  /**
   * Reads the image sensor's serial number, 32 bytes; zeros where a read failed, which is not
   * reported.
   */
  template <class... Code>
  Block<32> GetSensorSerialNumber(Code&... code) const noexcept(kQuiet<Code...>) {
    Block<32> block = {};
    detail::Report("ZEMAPI_GetSensorSN", ZEMAPI_GetSensorSN(handle(), block.data()), code...);
    return block;
  }

  /**
   * Reads the version of the Skype extension unit; 0x12 for every version below 0x14.
   * Errc::kRefused when it cannot be read.
   */
  template <class... Code>
  std::uint8_t GetSkypeUnitVersion(Code&... code) const noexcept(kQuiet<Code...>) {
    std::uint8_t value = 0;
    detail::Report("ZEMAPI_GetSkypeXUVersion", ZEMAPI_GetSkypeXUVersion(handle(), &value), code...);
    return value;
  }

  /** @} */
  /**
   * @name Standard controls
   * Properties, values and flags are DirectShow's: VideoProcAmpProperty and CameraControlProperty.
   * Results are the platform's; Errc::kDeviceRefused when the camera has no such controls at all.
   */
  /** @{ */

  /** Reads a property of the video processing amplifier. */
  template <class... Code>
  ControlValue GetVideoProcAmp(ZemLong property, Code&... code) const noexcept(kQuiet<Code...>) {
    ControlValue setting;
    detail::Report("ZEMAPI_GetVideoProcAmp",
                   ZEMAPI_GetVideoProcAmp(handle(), property, &setting.value, &setting.flags),
                   code...);
    return setting;
  }

  /** Sets a property of the video processing amplifier. */
  template <class... Code>
  void SetVideoProcAmp(ZemLong property, const ControlValue& setting,
                       Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetVideoProcAmp",
                   ZEMAPI_SetVideoProcAmp(handle(), property, setting.value, setting.flags),
                   code...);
  }

  /** Reads what a property of the video processing amplifier can be set to. */
  template <class... Code>
  ControlRange GetVideoProcAmpRange(ZemLong property, Code&... code) const
      noexcept(kQuiet<Code...>) {
    ControlRange range;
    detail::Report("ZEMAPI_GetVideoProcAmpRange",
                   ZEMAPI_GetVideoProcAmpRange(handle(), property, &range.minimum, &range.maximum,
                                               &range.step, &range.defaultValue, &range.flags),
                   code...);
    return range;
  }

  /** Reads a property of the camera terminal. */
  template <class... Code>
  ControlValue GetCameraControl(ZemLong property, Code&... code) const noexcept(kQuiet<Code...>) {
    ControlValue setting;
    detail::Report("ZEMAPI_GetCameraControl",
                   ZEMAPI_GetCameraControl(handle(), property, &setting.value, &setting.flags),
                   code...);
    return setting;
  }

  /** Sets a property of the camera terminal. */
  template <class... Code>
  void SetCameraControl(ZemLong property, const ControlValue& setting,
                        Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetCameraControl",
                   ZEMAPI_SetCameraControl(handle(), property, setting.value, setting.flags),
                   code...);
  }

  /** Reads what a property of the camera terminal can be set to. */
  template <class... Code>
  ControlRange GetCameraControlRange(ZemLong property, Code&... code) const
      noexcept(kQuiet<Code...>) {
    ControlRange range;
    detail::Report("ZEMAPI_GetCameraControlRange",
                   ZEMAPI_GetCameraControlRange(handle(), property, &range.minimum, &range.maximum,
                                                &range.step, &range.defaultValue, &range.flags),
                   code...);
    return range;
  }

  /**
   * Hands out the kernel-streaming node interface IVideoProcAmp of the first topology node that
   * gives one; Windows only.
   *
   * @return the interface, the caller's to release; null when no node gives it
   */
  template <class... Code>
  void* GetVideoProcAmpInterface(Code&... code) const noexcept(kQuiet<Code...>) {
    void* object = nullptr;
    detail::Report("ZEMAPI_Get_IVideoProcAmp_Interface",
                   ZEMAPI_Get_IVideoProcAmp_Interface(handle(), &object), code...);
    return object;
  }

  /** @} */
  /**
   * @name Bulk data and flash
   * Without somebody to tell, `progress` is nullptr or {}.
   */
  /** @{ */

  /**
   * Announces data and sends it over the low-speed control. A transfer that fails for good leaves
   * the rest out and is not reported.
   *
   * @param data     bytes to send; only the low 16 bits of their number are announced. A copy with
   *                 zeros behind it is sent, because the export may read past the end
   * @param second   byte 2 of the announce, the camera's to interpret
   * @param third    byte 3 of the announce
   * @param progress told after each chunk: (bytes left) * 100 / (length of this chunk), no
   * percentage
   * @throw Error    Errc::kNoDevice when the announce fails, Errc::kFail when memory is exhausted
   */
  template <class... Code>
  void SendData(Bytes data, std::uint8_t second, std::uint8_t third, const Progress& progress,
                Code&... code) noexcept(kQuiet<Code...>) {
    const auto whole = detail::CopyPadded("ZEMAPI_SendData", data, kSlowChunk, code...);
    if (whole == nullptr) {
      return;
    }
    const auto send = [&](std::uint32_t length, ProgressCallback callback, std::uint64_t user) {
      return ZEMAPI_SendData(handle(), whole.get(), length, callback, user, second, third);
    };
    detail::ReportWithProgress<std::uint32_t>("ZEMAPI_SendData", data, progress, send, code...);
  }

  /**
   * Sends data that the caller has announced, over the fastest control, without a retry.
   *
   * @param data     bytes to send
   * @param progress told after each chunk: the percentage still to send
   * @throw Error    Errc::kNoDevice when a chunk fails
   */
  template <class... Code>
  void WriteFirmwareData(Bytes data, const Progress& progress,
                         Code&... code) noexcept(kQuiet<Code...>) {
    const auto send = [&](std::uint32_t length, ProgressCallback callback, std::uint64_t user) {
      return ZEMAPI_WriteFWData(handle(), data.data(), length, callback, user);
    };
    detail::ReportWithProgress<std::uint32_t>("ZEMAPI_WriteFWData", data, progress, send, code...);
  }

  /**
   * Reads all the data that the camera has ready. A chunk that cannot be read counts as zeros.
   *
   * @param buffer   receives the data; its front is overwritten also on failure
   * @param progress told before each chunk: the percentage still to read
   * @return bytes read
   * @throw Error    Errc::kBufferTooSmall when there is more than `buffer` holds,
   *                 Errc::kDeviceRefused when the camera does not take the order
   */
  template <class... Code>
  std::uint32_t ReadFirmwareData(Buffer buffer, const Progress& progress, Code&... code) const
      noexcept(kQuiet<Code...>) {
    std::uint32_t length = 0;
    const auto receive = [&](std::uint32_t size, ProgressCallback callback, std::uint64_t user) {
      return ZEMAPI_ReadFWData(handle(), buffer.data(), size, &length, callback, user);
    };
    detail::ReportWithProgress<std::uint32_t>("ZEMAPI_ReadFWData", buffer, progress, receive,
                                              code...);
    return length;
  }

  /**
   * Reads a piece of the camera's flash.
   *
   * @param address  where to begin in the flash
   * @param buffer   receives as many bytes as it has; only the low 16 bits of their number are
   *                 announced
   * @param progress told before each chunk: the percentage done
   * @return bytes read
   * @throw Error    Errc::kDeviceRefused when the announce fails, or the platform's failure of a
   *                 chunk
   */
  template <class... Code>
  std::uint32_t ReadFlash(std::uint32_t address, Buffer buffer, const Progress& progress,
                          Code&... code) const noexcept(kQuiet<Code...>) {
    std::uint32_t length = 0;
    const auto receive = [&](std::uint32_t size, ProgressCallback callback, std::uint64_t user) {
      return ZEMAPI_ReadPartialFlashData(handle(), address, size, buffer.data(), &length, callback,
                                         user);
    };
    detail::ReportWithProgress<std::uint32_t>("ZEMAPI_ReadPartialFlashData", buffer, progress,
                                              receive, code...);
    return length;
  }

  /** @} */
  /**
   * @name Firmware update
   * Each announces an image, sends it, orders the burn and waits for its end; window messages of
   * the thread are dispatched meanwhile. Errc::kNoDevice when announce or order cannot be sent,
   * Errc::kDeviceRefused when the camera is not idle, reports that the burn failed, or does not
   * come to an end. `progress` is told the percentage still to send. Only UpdateFirmware516x stops
   * when the image cannot be sent whole.
   */
  /** @{ */

  /**
   * Updates the firmware of a 516x camera.
   *
   * @param image     bytes of the image
   * @param parameter byte 3 of the burn order, the camera's to interpret
   * @param progress  see above
   */
  template <class... Code>
  void UpdateFirmware516x(Bytes image, std::uint8_t parameter, const Progress& progress,
                          Code&... code) noexcept(kQuiet<Code...>) {
    const auto send = [&](std::uint32_t length, ProgressCallback callback, std::uint64_t user) {
      return ZEMAPI_UpdateFW_516x(handle(), image.data(), length, callback, user, parameter);
    };
    detail::ReportWithProgress<std::uint32_t>("ZEMAPI_UpdateFW_516x", image, progress, send,
                                              code...);
  }

  /**
   * Updates the firmware of a 517x camera.
   *
   * @param image    bytes of the image
   * @param progress see above; then 10, 9, ... 1, half a second apart, while the camera burns
   */
  template <class... Code>
  void UpdateFirmware517x(Bytes image, const Progress& progress,
                          Code&... code) noexcept(kQuiet<Code...>) {
    const auto nobody = [](std::uint32_t) {};
    const auto send = [&](std::uint32_t length, ProgressCallback callback, std::uint64_t user) {
      return ZEMAPI_UpdateFW_517x(handle(), image.data(), length, callback, user);
    };
    detail::ReportWithProgress<std::uint32_t>(
        "ZEMAPI_UpdateFW_517x", image, progress ? progress : Progress(nobody), send, code...);
  }

  /**
   * Writes an area of the flash; the camera's firmware defines the areas.
   *
   * @param data     bytes to write; only the low 16 bits of their number are announced
   * @param second   byte 2 of announce and burn order
   * @param third    byte 3 of announce and burn order
   * @param progress see above
   */
  template <class... Code>
  void UpdateFlash(Bytes data, std::uint8_t second, std::uint8_t third, const Progress& progress,
                   Code&... code) noexcept(kQuiet<Code...>) {
    const auto send = [&](std::uint32_t length, ProgressCallback callback, std::uint64_t user) {
      return ZEMAPI_UpdateFlash(handle(), data.data(), length, callback, user, second, third);
    };
    detail::ReportWithProgress<std::uint32_t>("ZEMAPI_UpdateFlash", data, progress, send, code...);
  }

  /**
   * Writes the calibration data.
   *
   * @param data     bytes to write
   * @param progress see above
   */
  template <class... Code>
  void UpdateCalibration(Bytes data, const Progress& progress,
                         Code&... code) noexcept(kQuiet<Code...>) {
    const auto send = [&](std::uint32_t length, ProgressCallback callback, std::uint64_t user) {
      return ZEMAPI_UpdateCaliData(handle(), data.data(), length, callback, user);
    };
    detail::ReportWithProgress<std::uint32_t>("ZEMAPI_UpdateCaliData", data, progress, send,
                                              code...);
  }

  /** @} */
  /** @name Non-volatile memory and tables */
  /** @{ */

  /**
   * Writes to the camera's non-volatile memory.
   *
   * @param address of the first byte; addresses wrap after 0xFFFF
   * @param data    bytes to write
   * @return bytes that the camera has taken, on failure too
   */
  template <class... Code>
  std::uint32_t WriteNvmem(std::uint16_t address, Bytes data,
                           Code&... code) noexcept(kQuiet<Code...>) {
    std::uint32_t moved = 0;
    const auto call = [&](std::uint32_t length) {
      return ZEMAPI_WriteNVMEM(handle(), address, data.data(), length, &moved);
    };
    detail::Report("ZEMAPI_WriteNVMEM", detail::WithLength<std::uint32_t>(data, call), code...);
    return moved;
  }

  /**
   * Reads from the camera's non-volatile memory.
   *
   * @param address of the first byte; addresses wrap after 0xFFFF
   * @param buffer  receives as many bytes as it has
   * @return bytes read, on failure too
   */
  template <class... Code>
  std::uint32_t ReadNvmem(std::uint16_t address, Buffer buffer, Code&... code) const
      noexcept(kQuiet<Code...>) {
    std::uint32_t moved = 0;
    const auto call = [&](std::uint32_t length) {
      return ZEMAPI_ReadNVMEM(handle(), address, buffer.data(), length, &moved);
    };
    detail::Report("ZEMAPI_ReadNVMEM", detail::WithLength<std::uint32_t>(buffer, call), code...);
    return moved;
  }

  /**
   * Writes the whole memory of the TIRELLA unit.
   *
   * @param data 256 bytes; Errc::kRefused when there are fewer
   * @return 256
   */
  template <class... Code>
  std::uint32_t WriteTirellaNvmem(Bytes data, Code&... code) noexcept(kQuiet<Code...>) {
    std::uint32_t moved = 0;
    const auto call = [&](std::uint32_t length) {
      return ZEMAPI_TIRELLA_WriteNVMEM(handle(), data.data(), length, &moved);
    };
    detail::Report("ZEMAPI_TIRELLA_WriteNVMEM", detail::WithLength<std::uint32_t>(data, call),
                   code...);
    return moved;
  }

  /**
   * Reads the memory of the TIRELLA unit from address 0.
   *
   * @param buffer receives as many bytes as it has, 256 at most
   * @return bytes read
   */
  template <class... Code>
  std::uint32_t ReadTirellaNvmem(Buffer buffer, Code&... code) const noexcept(kQuiet<Code...>) {
    std::uint32_t moved = 0;
    const auto call = [&](std::uint32_t length) {
      return ZEMAPI_TIRELLA_ReadNVMEM(handle(), buffer.data(), length, &moved);
    };
    detail::Report("ZEMAPI_TIRELLA_ReadNVMEM", detail::WithLength<std::uint32_t>(buffer, call),
                   code...);
    return moved;
  }

  /** Hands a value to the TIRELLA unit's LED control. That it could not be sent is not reported. */
  template <class... Code>
  void SetTirellaLed(std::uint8_t value, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_TIRELLA_LedCtrl", ZEMAPI_TIRELLA_LedCtrl(handle(), value), code...);
  }

  /**
   * Reads the camera's table store into memory.
   *
   * @return the store; empty on failure: Errc::kRefused when the camera has none
   */
  template <class... Code>
  TableStore OpenTables(Code&... code) noexcept(kQuiet<Code...>) {
    TableStore store;
    store.camera_ = handle();
    detail::Report("ZEMAPI_OpenTableHandle",
                   ZEMAPI_OpenTableHandle(handle(), store.table_.Receive()), code...);
    return store;
  }

  /** TableStore::ReadTable straight from the camera; a table that is none gives Errc::kRefused. */
  template <class... Code>
  std::size_t ReadTable(std::uint8_t id, Buffer out, Code&... code) const
      noexcept(kQuiet<Code...>) {
    std::size_t size = 0;
    const auto read = [&](std::uint8_t* room, std::uint32_t* found) {
      return ZEMAPI_ReadTable(handle(), id, room, std::uint32_t{detail::kTableRoom}, found);
    };
    detail::Report("ZEMAPI_ReadTable", detail::ReadTable(out, size, read), code...);
    return size;
  }

  /**
   * TableStore::WriteTable straight to the camera: of `data`, what the table has more is written as
   * zeros, and what it has less is left out.
   *
   * @param id   the table's id
   * @param data the table, at most 8,192 bytes
   * @return the table's size in bytes
   */
  template <class... Code>
  std::uint32_t WriteTable(std::uint8_t id, Bytes data, Code&... code) noexcept(kQuiet<Code...>) {
    std::uint32_t size = 0;
    const auto write = [&](const std::uint8_t* room, std::uint32_t* written) {
      return ZEMAPI_WriteTable(handle(), id, room, static_cast<std::uint32_t>(data.size()),
                               written);
    };
    detail::Report("ZEMAPI_WriteTable", detail::WriteTable(data, size, write), code...);
    return size;
  }

  /**
   * Replaces the whole table store; the camera goes on writing after the call has returned. The
   * image is not checked, and that it could not be sent whole is not reported.
   *
   * @param image the store's bytes
   */
  template <class... Code>
  void WriteInitialTable(Bytes image, Code&... code) noexcept(kQuiet<Code...>) {
    const auto call = [&](std::uint32_t length) {
      return ZEMAPI_WriteInitialTable(handle(), image.data(), length);
    };
    detail::Report("ZEMAPI_WriteInitialTable", detail::WithLength<std::uint32_t>(image, call),
                   code...);
  }

  /** @} */
  /** @name Into ROM boot */
  /** @{ */

  /** Sends the camera into ROM boot by both commands. Whether it took them is not looked at. */
  template <class... Code>
  void ResetToRomBoot(Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_ResetToRomboot", ZEMAPI_ResetToRomboot(handle()), code...);
  }

  /** Sends the camera into ROM boot by the command of 8 bytes; no reply is read. */
  template <class... Code>
  void ResetToRomBootVcp8(Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_ResetToRomboot_VCP8", ZEMAPI_ResetToRomboot_VCP8(handle()), code...);
  }

  /** Sends the camera into ROM boot by the command of 16 bytes; no reply is read. */
  template <class... Code>
  void ResetToRomBootVcp16(Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_ResetToRomboot_VCP16", ZEMAPI_ResetToRomboot_VCP16(handle()), code...);
  }

  /** @} */
  /** @name H.264 */
  /** @{ */

  /**
   * Hands out a copy of the camera's list of H.264 stream formats; a default list for a camera that
   * cannot tell its own.
   *
   * @return the list; empty on failure
   */
  template <class... Code>
  H264Formats GetH264Formats(Code&... code) const noexcept(kQuiet<Code...>) {
    H264Formats formats;
    detail::Report("ZEMAPI_GetH264FrameList",
                   ZEMAPI_GetH264FrameList(handle(), formats.list_.Receive()), code...);
    return formats;
  }

  /**
   * Starts the first format of the camera's list that has a frame index.
   *
   * @param frameIndex wFrameIndex of the format; Errc::kFail when no format has it
   */
  template <class... Code>
  void StartH264(std::uint16_t frameIndex, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetH264FrameIndex", ZEMAPI_SetH264FrameIndex(handle(), frameIndex),
                   code...);
  }

  /**
   * Starts H.264 at a resolution, or stops it.
   *
   * @param width  pixels; 0 stops
   * @param height pixels; 0 stops
   */
  template <class... Code>
  void SetH264Mode(std::uint32_t width, std::uint32_t height,
                   Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetH264Mode",
                   detail::FailureIfZero(ZEMAPI_SetH264Mode(handle(), width, height)), code...);
  }

  /**
   * Tells the formats that carry H.264 streams, a fixed table; no camera is needed.
   *
   * @param index from 0
   * @return the format; nothing behind the last one
   */
  template <class... Code>
  static std::optional<PayloadFormat> GetPayloadFormat(std::uint16_t index,
                                                       Code&... code) noexcept(kQuiet<Code...>) {
    PayloadFormat format;
    const ZemResult result = ZEMAPI_GetH264_UVC_PayloadFormat(nullptr, index, &format.width,
                                                              &format.height, &format.subtype);
    detail::Report("ZEMAPI_GetH264_UVC_PayloadFormat", result, code...);
    return result == ZEM_OK ? std::optional(format) : std::nullopt;
  }

  /** Sets the frame rate of the running encoder, in frames per second. */
  template <class... Code>
  void SetFrameRate(std::uint16_t fps, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetFps", ZEMAPI_SetFps(handle(), fps), code...);
  }

  /** Sets the bit rate of the running encoder, in the camera's units. */
  template <class... Code>
  void SetBitRate(std::uint16_t bitRate, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_SetBitRate", ZEMAPI_SetBitRate(handle(), bitRate), code...);
  }

  /** Makes the encoder's next picture a key frame. */
  template <class... Code>
  void ForceKeyFrame(Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_ForceIFrame", ZEMAPI_ForceIFrame(handle()), code...);
  }

  /** @} */
  /**
   * @name Streams and endpoints
   * Of cameras with several encoded streams; values are the camera's. Results are the platform's.
   */
  /** @{ */

  /** Reads the version of the stream unit. */
  template <class... Code>
  std::uint8_t GetStreamUnitVersion(Code&... code) const noexcept(kQuiet<Code...>) {
    std::uint8_t value = 0;
    detail::Report("ORVAAPI_GetVersion", ORVAAPI_GetVersion(handle(), &value), code...);
    return value;
  }

  /** Reads the build day of the firmware. */
  template <class... Code>
  std::uint16_t GetStreamFirmwareBuildDay(Code&... code) const noexcept(kQuiet<Code...>) {
    std::uint16_t value = 0;
    detail::Report("ORVAAPI_FirmwareBuildDay", ORVAAPI_FirmwareBuildDay(handle(), &value), code...);
    return value;
  }

  /** Selects a stream. */
  template <class... Code>
  void SelectStream(std::uint8_t streamId, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ORVAAPI_SetStreamID", ORVAAPI_SetStreamID(handle(), streamId), code...);
  }

  /** Reads the endpoint setting. */
  template <class... Code>
  std::uint8_t GetEndpointSetting(Code&... code) const noexcept(kQuiet<Code...>) {
    std::uint8_t value = 0;
    detail::Report("ORVAAPI_GetEndpointSetting", ORVAAPI_GetEndpointSetting(handle(), &value),
                   code...);
    return value;
  }

  /** Writes the selected stream's format as a probe. */
  template <class... Code>
  void ProbeStreamFormat(OrvaStreamFormat format, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ORVAAPI_StreamFormatProbeCommit",
                   ORVAAPI_StreamFormatProbeCommit(handle(), &format, 0), code...);
  }

  /** Reads the selected stream's format as it was probed. */
  template <class... Code>
  OrvaStreamFormat GetProbedStreamFormat(Code&... code) const noexcept(kQuiet<Code...>) {
    OrvaStreamFormat format = {};
    detail::Report("ORVAAPI_StreamFormatProbeCommit",
                   ORVAAPI_StreamFormatProbeCommit(handle(), &format, 1), code...);
    return format;
  }

  /** Writes the selected stream's format as a commit. */
  template <class... Code>
  void CommitStreamFormat(OrvaStreamFormat format, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ORVAAPI_StreamFormatProbeCommit",
                   ORVAAPI_StreamFormatProbeCommit(handle(), &format, 2), code...);
  }

  /** Reads the selected stream's format as it was committed. */
  template <class... Code>
  OrvaStreamFormat GetCommittedStreamFormat(Code&... code) const noexcept(kQuiet<Code...>) {
    OrvaStreamFormat format = {};
    detail::Report("ORVAAPI_StreamFormatProbeCommit",
                   ORVAAPI_StreamFormatProbeCommit(handle(), &format, 3), code...);
    return format;
  }

  /** Toggles a layer. */
  template <class... Code>
  void ToggleLayer(std::uint8_t value, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ORVAAPI_ToggleLayerControl", ORVAAPI_ToggleLayerControl(handle(), value),
                   code...);
  }

  /** Selects a stream by a vendor command; no status is read. */
  template <class... Code>
  void SelectMulticastStream(std::uint8_t streamId, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_MulticastStreamID", ZEMAPI_MulticastStreamID(handle(), streamId),
                   code...);
  }

  /** Toggles a layer by a vendor command; no status is read. */
  template <class... Code>
  void ToggleMulticastLayer(std::uint8_t value, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_MulticasToggleLayer", ZEMAPI_MulticasToggleLayer(handle(), value),
                   code...);
  }

  /**
   * Commits a stream format by a vendor command.
   *
   * @param kind       kind of stream, the camera's numbers
   * @param width      pixels
   * @param height     pixels
   * @param packedLow  its lower 5 bits are sent
   * @param packedHigh its lower 11 bits are sent
   */
  template <class... Code>
  void CommitMulticastFormat(std::uint8_t kind, std::uint16_t width, std::uint16_t height,
                             std::uint8_t packedLow, std::uint16_t packedHigh,
                             Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_MulticastCommit",
                   ZEMAPI_MulticastCommit(handle(), kind, width, height, packedLow, packedHigh),
                   code...);
  }
  /** @} */

 private:
  static constexpr std::size_t kSlowChunk = 32;

  // The exports do not write to what they send, though they do not say const.
  static void* Unchanged(Bytes data) noexcept { return const_cast<std::uint8_t*>(data.data()); }

  // The exports that open by a name say 1 when the device is none of the vendor's.
  template <class... Code>
  static void ReportNamed(const char* function, ZemResult result,
                          Code&... code) noexcept(kQuiet<Code...>) {
    if (result == static_cast<int>(Errc::kNoVendorUnit)) {
      detail::Report(function, make_error_code(Errc::kNoVendorUnit), code...);
    } else {
      detail::Report(function, result, code...);
    }
  }

  detail::Owner<void, detail::CloseCamera> handle_;
};

// ---------------------------------------------------------------------------------------------
// Microphone
// ---------------------------------------------------------------------------------------------

/** An audio input; closes itself. Opening leaves COM initialised once, and closing does not take
 * that back. */
class Microphone {
 public:
  /** No audio input. */
  Microphone() noexcept = default;

  /**
   * Opens an audio input by its display name.
   *
   * @param displayName the moniker's, compared whole without regard to ASCII case
   * @return the audio input; empty on failure: Errc::kFail when none has the name
   */
  template <class... Code>
  static Microphone Open(const std::wstring& displayName, Code&... code) noexcept(kQuiet<Code...>) {
    Microphone microphone;
    detail::Report("ZEMAPI_AudioOpenDeviceByPath",
                   ZEMAPI_AudioOpenDeviceByPath(displayName.c_str(), microphone.audio_.Receive()),
                   code...);
    return microphone;
  }

  /**
   * Sets the recording level. Without an audio input this is a success that does nothing.
   *
   * @param percent 0 silence to 100 full level
   */
  template <class... Code>
  void SetVolume(int percent, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMAPI_AudioSetVolume", ZEMAPI_AudioSetVolume(audio_.get(), percent), code...);
  }

  /** Whether an audio input is open. */
  explicit operator bool() const noexcept { return audio_.get() != nullptr; }
  /** Closes it; the object holds nothing then. */
  void Close() noexcept { audio_.Close(); }

 private:
  detail::Owner<IBaseFilter, detail::CloseMicrophone> audio_;
};

// ---------------------------------------------------------------------------------------------
// Encoding unit
// ---------------------------------------------------------------------------------------------

/**
 * The encoding unit of a camera; closes itself. Every transfer is appended to the command log.
 *
 * An object that holds no device, also one that was moved from or closed, speaks to the default
 * camera, which is opened for each access.
 */
class EncodingUnit {
 public:
  /** The default camera's. */
  EncodingUnit() noexcept = default;

  /** Opens the index-th camera with the ids of the settings file. Results as Camera::Open. */
  template <class... Code>
  static EncodingUnit Open(std::uint32_t index, Code&... code) noexcept(kQuiet<Code...>) {
    EncodingUnit unit;
    detail::Report("WREN_OpenDevice", WREN_OpenDevice(index, unit.device_.Receive()), code...);
    return unit;
  }

  /**
   * Writes one control.
   *
   * @param selector control selector, at most 0xFFFF
   * @param data     at most 65,535 bytes
   */
  template <class... Code>
  void Set(std::uint32_t selector, Bytes data, Code&... code) noexcept(kQuiet<Code...>) {
    const auto call = [&](std::uint16_t length) {
      return WREN_EuSet(device_.get(), selector, const_cast<std::uint8_t*>(data.data()), length);
    };
    detail::Report("WREN_EuSet", detail::WithLength<std::uint16_t>(data, call), code...);
  }

  /**
   * Reads one control.
   *
   * @param selector control selector, at most 0xFFFF
   * @param buffer   receives the control; at most 65,535 bytes
   * @throw Error    Errc::kNoDevice when the transfer failed; its own code is in the log
   */
  template <class... Code>
  void Get(std::uint32_t selector, Buffer buffer, Code&... code) const noexcept(kQuiet<Code...>) {
    const auto call = [&](std::uint16_t length) {
      return WREN_EuGet(device_.get(), selector, buffer.data(), length);
    };
    detail::Report("WREN_EuGet", detail::WithLength<std::uint16_t>(buffer, call), code...);
  }

  /** Writes the H.264 probe block, 51 bytes. Errc::kNoDevice when the transfer failed. */
  template <class... Code>
  void SetProbe(Block<51> block, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("WREN_ProbeSet", WREN_ProbeSet(device_.get(), block.data()), code...);
  }

  /** Reads the H.264 probe block, 51 bytes. Errc::kNoDevice when the transfer failed. */
  template <class... Code>
  Block<51> GetProbe(Code&... code) const noexcept(kQuiet<Code...>) {
    Block<51> block = {};
    detail::Report("WREN_ProbeGet", WREN_ProbeGet(device_.get(), block.data()), code...);
    return block;
  }

  /** Writes the H.264 commit block, 51 bytes. Errc::kNoDevice when the transfer failed. */
  template <class... Code>
  void SetCommit(Block<51> block, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("WREN_CommitSet", WREN_CommitSet(device_.get(), block.data()), code...);
  }

  /** Reads the H.264 commit block, 51 bytes. Errc::kNoDevice when the transfer failed. */
  template <class... Code>
  Block<51> GetCommit(Code&... code) const noexcept(kQuiet<Code...>) {
    Block<51> block = {};
    detail::Report("WREN_CommitGet", WREN_CommitGet(device_.get(), block.data()), code...);
    return block;
  }

  /** Appends a text to the command log, behind the time and the word "Set"; no line end is added.
   */
  static void WriteLog(const std::wstring& text) noexcept { WREN_WriteLog(text.c_str()); }

  /** Whether a device of its own is open. */
  explicit operator bool() const noexcept { return device_.get() != nullptr; }
  /** Closes it. COM stays initialised. */
  void Close() noexcept { device_.Close(); }

 private:
  detail::Owner<void, detail::CloseEncodingUnit> device_;
};

// ---------------------------------------------------------------------------------------------
// ROM boot
// ---------------------------------------------------------------------------------------------

/** What a camera in ROM boot runs. */
enum class RomMode : unsigned { kBootLoader = 1, kUpdater = 2 };

/**
 * A session with a camera in ROM boot, a USB volume; closes itself. For one thread at a time.
 *
 * Unless a function says otherwise, Errc::kFail stands for a file that cannot be opened or is
 * malformed (then nothing was sent) and for a command that the device did not accept. Storage is
 * what was selected; its addresses are byte addresses. Burning functions overwrite it.
 */
class RomBoot {
 public:
  /** No session. */
  RomBoot() noexcept = default;

  /**
   * Looks for a camera in ROM boot among the volumes and opens a session on the first one.
   *
   * @param mode        what it has to run
   * @param withDivider whether the device is also told the storage address divider: now, and by
   *                    every further search of the process
   * @return the session; empty on failure: Errc::kFail when none is found or the first one found
   *         runs something else
   */
  template <class... Code>
  static RomBoot Open(RomMode mode, bool withDivider = false,
                      Code&... code) noexcept(kQuiet<Code...>) {
    constexpr unsigned kDivider = 0x10;
    RomBoot session;
    *session.session_.Receive() =
        ZEMROMAPI_OpenDevice(static_cast<unsigned>(mode) | (withDivider ? kDivider : 0));
    detail::Report("ZEMROMAPI_OpenDevice", session ? ZEM_OK : ZEM_E_FAIL, code...);
    return session;
  }

  /** Whether there is a session. */
  explicit operator bool() const noexcept { return session_.get() != nullptr; }
  /** Ends the session and closes its volume; the object holds nothing then. */
  void Close() noexcept { session_.Close(); }

  /**
   * Has what the session erases, and what the Linux package and partial updates write, written into
   * a file as well, each byte at its storage address. That the file cannot be made is not reported.
   *
   * @param path below 260 characters
   * @param size if not 0, the file is made anew: `size` bytes of 0xFF, rounded up to 4,096
   */
  template <class... Code>
  void CreateDumpFile(const std::wstring& path, std::int32_t size,
                      Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_CreateDumpFile",
                   ZEMROMAPI_CreateDumpFile(session_.get(), path.c_str(), size), code...);
  }

  /**
   * Loads a code image into the boot loader and starts it; the volume is closed once the image is
   * there.
   *
   * @param path the image, at least 18 bytes
   */
  template <class... Code>
  void LoadMiniUvc(const std::wstring& path, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_LoadMiniUVC", ZEMROMAPI_LoadMiniUVC(session_.get(), path.c_str()),
                   code...);
  }

  /**
   * Loads the updater and starts it, then waits up to five minutes for its storage, which the
   * session goes on with. That none showed up is not reported: SelectSerialFlash and the others
   * fail then.
   *
   * @param path the image, at least 18 bytes
   */
  template <class... Code>
  void LoadUpdater(const std::wstring& path, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_LoadUpdater", ZEMROMAPI_LoadUpdater(session_.get(), path.c_str()),
                   code...);
  }

  /** Resets the device, whether it answers or not. */
  template <class... Code>
  void ResetSystem(Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_ResetSystem", ZEMROMAPI_ResetSystem(session_.get()), code...);
  }

  /** Selects the serial flash as the storage that is erased, written and read. */
  template <class... Code>
  void SelectSerialFlash(Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_SwitchModePCAM_SF", ZEMROMAPI_SwitchModePCAM_SF(session_.get()),
                   code...);
  }

  /** Selects the camera's memory as the storage. */
  template <class... Code>
  void SelectMemory(Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_SwitchModePCAM_DRAM", ZEMROMAPI_SwitchModePCAM_DRAM(session_.get()),
                   code...);
  }

  /** Selects the parallel NAND as the storage; `option` is passed on to the boot code. */
  template <class... Code>
  void SelectParallelNand(std::uint8_t option, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND",
                   ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND(session_.get(), option), code...);
  }

  /** Selects the SPI NAND as the storage; `option` is passed on to the boot code. */
  template <class... Code>
  void SelectSpiNand(std::uint8_t option, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_SwitchModePCAM_SPI_NAND",
                   ZEMROMAPI_SwitchModePCAM_SPI_NAND(session_.get(), option), code...);
  }

  /** Selects the eMMC as the storage; `option` is passed on to the boot code. */
  template <class... Code>
  void SelectEmmc(std::uint8_t option, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_SwitchModePCAM_EMMC",
                   ZEMROMAPI_SwitchModePCAM_EMMC(session_.get(), option), code...);
  }

  /** Starts the code in the load buffer; the volume stays open. */
  template <class... Code>
  void LongJump(Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_LongJump", ZEMROMAPI_LongJump(session_.get()), code...);
  }

  /** Sets the memory address that firmware is downloaded to. */
  template <class... Code>
  void SetFirmwareDownloadAddress(std::uint32_t address, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_SetFwDownloadAddr",
                   ZEMROMAPI_SetFwDownloadAddr(session_.get(), address), code...);
  }

  /** Writes one byte to a register at a 32-bit address. */
  template <class... Code>
  void WriteRegister(std::uint32_t address, std::uint8_t value,
                     Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_WriteRegister",
                   ZEMROMAPI_WriteRegister(session_.get(), address, value), code...);
  }

  /** Reads one byte from a register at a 32-bit address. */
  template <class... Code>
  std::uint8_t ReadRegister(std::uint32_t address, Code&... code) const noexcept(kQuiet<Code...>) {
    std::uint8_t value = 0;
    detail::Report("ZEMROMAPI_ReadRegister",
                   ZEMROMAPI_ReadRegister(session_.get(), address, &value), code...);
    return value;
  }

  /**
   * Sends any SCSI command that reads, as it is.
   *
   * @param cdb    command block
   * @param buffer receives what is read, at most 65,536 bytes; untouched on failure
   */
  template <class... Code>
  void ReadScsi(Block<16> cdb, Buffer buffer, Code&... code) noexcept(kQuiet<Code...>) {
    const auto call = [&](std::uint32_t length) {
      return ZEMROMAPI_ScsiCommand(session_.get(), 1, length, cdb.data(), buffer.data());
    };
    detail::Report("ZEMROMAPI_ScsiCommand", detail::WithLength<std::uint32_t>(buffer, call),
                   code...);
  }

  /**
   * Sends any SCSI command that sends data or has none, as it is.
   *
   * @param cdb  command block
   * @param data what is sent; {} for a command without data
   */
  template <class... Code>
  void WriteScsi(Block<16> cdb, Bytes data, Code&... code) noexcept(kQuiet<Code...>) {
    const auto call = [&](std::uint32_t length) {
      return ZEMROMAPI_ScsiCommand(session_.get(), 0, length, cdb.data(),
                                   const_cast<std::uint8_t*>(data.data()));
    };
    detail::Report("ZEMROMAPI_ScsiCommand", detail::WithLength<std::uint32_t>(data, call), code...);
  }

  /** Makes the enhanced area of an eMMC; both numbers are passed on to the boot code. */
  template <class... Code>
  void MakeEmmcEnhancedArea(std::uint32_t first, std::uint32_t second,
                            Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_MkEmmcEhancedArea",
                   session_.get() != nullptr ? detail::FailureIfZero(ZEMROMAPI_MkEmmcEhancedArea(
                                                   session_.get(), first, second))
                                             : ZEM_E_FAIL,
                   code...);
  }

  /**
   * Erases a region of the storage: 0xFF over whole sectors of 512 bytes.
   *
   * @param address of the region
   * @param size    in bytes; 0 erases nothing
   */
  template <class... Code>
  void Erase(std::uint32_t address, std::uint32_t size, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report(
        "ZEMROMAPI_Erase",
        session_.get() != nullptr ? ZEMROMAPI_Erase(session_.get(), address, size) : ZEM_E_FAIL,
        code...);
  }

  /**
   * Burns an image file with a header block of 4,096 bytes, which is written last.
   *
   * @param path    the image, such as a file made by SplitPackage
   * @param address where the header block goes
   * @return the next free multiple of 4,096; of a failure, where writing stopped
   */
  template <class... Code>
  std::uint32_t BurnFirmware(const std::wstring& path, std::uint32_t address,
                             Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_BurnFw", ZEMROMAPI_BurnFw(session_.get(), path.c_str(), &address),
                   code...);
    return address;
  }

  /**
   * Burns the data of a package to address 0; nothing is erased before.
   *
   * @param path the package
   * @return bytes written
   */
  template <class... Code>
  std::uint32_t BurnPackage(const std::wstring& path, Code&... code) noexcept(kQuiet<Code...>) {
    std::uint32_t end = 0;
    detail::Report("ZEMROMAPI_BurnPcCamFw",
                   ZEMROMAPI_BurnPcCamFw(session_.get(), path.c_str(), &end), code...);
    return end;
  }

  /**
   * Burns the data of a package that begins with a header block of 4,096 bytes: erases the block's
   * place at address 0, writes the payload behind it, then the block.
   *
   * @param path the package
   * @return the end of what is written of the payload
   */
  template <class... Code>
  std::uint32_t BurnPackageWithHeader(const std::wstring& path,
                                      Code&... code) noexcept(kQuiet<Code...>) {
    std::uint32_t end = 0;
    detail::Report("ZEMROMAPI_BurnPcCamFwPnsV2",
                   ZEMROMAPI_BurnPcCamFwPnsV2(session_.get(), path.c_str(), &end), code...);
    return end;
  }

  /**
   * Splits a package of boot code and firmware into the files "VSN_V3BC" and "VSN_V3FW" in the
   * current folder; no session is needed. A file that cannot be created is skipped.
   *
   * @param path the package
   */
  template <class... Code>
  static void SplitPackage(const std::wstring& path, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_DispackZemPcCamFw",
                   ZEMROMAPI_DispackZemPcCamFw(nullptr, path.c_str()), code...);
  }

  /**
   * Writes a Linux firmware package: its body, then its header.
   *
   * @param path          the package
   * @param bodyAddress   where the body goes, also in the header that is written; 0xFFFFFFFF for
   * the address that the header says
   * @param headerAddress where the header goes
   */
  template <class... Code>
  void UpdateLinuxPackage(const std::wstring& path, std::uint32_t bodyAddress,
                          std::uint32_t headerAddress, Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report(
        "ZEMROMAPI_UpdateLinuxFwPkg",
        ZEMROMAPI_UpdateLinuxFwPkg(session_.get(), path.c_str(), bodyAddress, headerAddress),
        code...);
  }

  /**
   * UpdateLinuxPackage with the body at the address that the package's header says.
   *
   * @param path          the package
   * @param headerAddress where the header goes
   */
  template <class... Code>
  void UpdateLinuxPackageInPlace(const std::wstring& path, std::uint32_t headerAddress,
                                 Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_UpdateLinuxFwPkg_",
                   ZEMROMAPI_UpdateLinuxFwPkg_(session_.get(), path.c_str(), headerAddress),
                   code...);
  }

  /**
   * Writes a file whose first 4,096 bytes are a header: erases the header's place, writes what
   * follows, then the header.
   *
   * @param path    the file
   * @param address where it goes
   * @return the end of what is written
   */
  template <class... Code>
  std::uint32_t WriteFileWithHeader(const std::wstring& path, std::uint32_t address,
                                    Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_PartialUpdateWithHeader",
                   ZEMROMAPI_PartialUpdateWithHeader(session_.get(), path.c_str(), &address),
                   code...);
    return address;
  }

  /**
   * Writes a file as it is, without erasing before.
   *
   * @param path    the file
   * @param address where it goes
   * @return the end of what is written
   */
  template <class... Code>
  std::uint32_t WriteRawFile(const std::wstring& path, std::uint32_t address,
                             Code&... code) noexcept(kQuiet<Code...>) {
    detail::Report("ZEMROMAPI_PartialUpdate",
                   ZEMROMAPI_PartialUpdate(session_.get(), path.c_str(), &address), code...);
    return address;
  }

  /**
   * Reads the storage from address 0 on into a file, which is made anew.
   *
   * @param path   the file
   * @param length bytes to read, rounded up to whole sectors
   * @return bytes read
   */
  template <class... Code>
  std::uint32_t ReadIntoFile(const std::wstring& path, std::uint32_t length, Code&... code) const
      noexcept(kQuiet<Code...>) {
    std::uint32_t read = 0;
    detail::Report("ZEMROMAPI_PartialRead",
                   ZEMROMAPI_PartialRead(session_.get(), path.c_str(), &read, length), code...);
    return read;
  }

  /**
   * Writes a file from address 0 on into the camera's memory, which SelectMemory selects.
   *
   * @param path the file
   * @return bytes written
   */
  template <class... Code>
  std::uint32_t LoadIntoMemory(const std::wstring& path, Code&... code) noexcept(kQuiet<Code...>) {
    std::uint32_t end = 0;
    detail::Report("ZEMROMAPI_LoadFW2Memory",
                   ZEMROMAPI_LoadFW2Memory(session_.get(), path.c_str(), &end), code...);
    return end;
  }

 private:
  detail::Owner<void, detail::CloseRomBoot> session_;
};

// ---------------------------------------------------------------------------------------------
// The default camera, without an object
// ---------------------------------------------------------------------------------------------

/**
 * Calls on the default camera, the first with the ids of the settings file. It is found and opened
 * for each access to a control; nothing is kept. COM stays initialised on the calling thread.
 *
 * Unless a function says otherwise: Errc::kNoDevice when there is no camera or the command could
 * not be written, Errc::kDeviceRefused when the camera refused it.
 */
namespace default_camera {

/** Starts auto focus; the value is the camera's to interpret. */
template <class... Code>
void StartAutoFocus(std::uint16_t value, Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report("ZEMUVCEXT_DoAF", ZEMUVCEXT_DoAF(value), code...);
}

/** Sets the frame rate in frames per second. */
template <class... Code>
void SetFrameRate(std::uint16_t fps, Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report("ZEMUVCEXT_SetFps", ZEMUVCEXT_SetFps(fps), code...);
}

/** Sets the size of the picture in pixels, in steps of 8 and below 2,048. */
template <class... Code>
void SetResolution(std::uint32_t width, std::uint32_t height,
                   Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report("ZEMUVCEXT_SetResolution", ZEMUVCEXT_SetResolution(width, height), code...);
}

/** Asks for a key frame. */
template <class... Code>
void ForceKeyFrame(Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report("ZEMUVCEXT_SetIFrame", ZEMUVCEXT_SetIFrame(), code...);
}

/** Sets the compression quality. */
template <class... Code>
void SetVideoQuality(std::uint8_t quality, Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report("ZEMUVCEXT_SetVideoQuality", ZEMUVCEXT_SetVideoQuality(quality), code...);
}

/** Sets the bit rate, in the camera's own units. */
template <class... Code>
void SetBitRate(std::uint16_t rate, Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report("ZEMUVCEXT_SetBitRate", ZEMUVCEXT_SetBitRate(rate), code...);
}

/** Sets the flicker compensation. */
template <class... Code>
void SetFlickerMode(std::uint8_t mode, Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report("ZEMUVCEXT_SetFlickMode", ZEMUVCEXT_SetFlickMode(mode), code...);
}

/** Reads the low byte of a processor register at a 16-bit address. */
template <class... Code>
std::uint8_t GetRegister(std::uint16_t address, Code&... code) noexcept(kQuiet<Code...>) {
  std::uint8_t value = 0;
  detail::Report("ZEMUVCEXT_GetRegister", ZEMUVCEXT_GetRegister(address, &value), code...);
  return value;
}

/** Writes one byte to a processor register at a 16-bit address. */
template <class... Code>
void SetRegister(std::uint16_t address, std::uint8_t value,
                 Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report("ZEMUVCEXT_SetRegister", ZEMUVCEXT_SetRegister(address, value), code...);
}

/** Reads one byte from an image-sensor register. */
template <class... Code>
std::uint8_t GetSensorRegister(std::uint16_t address, Code&... code) noexcept(kQuiet<Code...>) {
  std::uint8_t value = 0;
  detail::Report("ZEMUVCEXT_GetSensorRegister", ZEMUVCEXT_GetSensorRegister(address, &value),
                 code...);
  return value;
}

/** Reads two bytes from an image-sensor register. */
template <class... Code>
std::uint16_t GetSensorRegisterW(std::uint16_t address, Code&... code) noexcept(kQuiet<Code...>) {
  std::uint16_t value = 0;
  detail::Report("ZEMUVCEXT_GetSensorRegisterW", ZEMUVCEXT_GetSensorRegisterW(address, &value),
                 code...);
  return value;
}

/** Writes one byte to an image-sensor register. */
template <class... Code>
void SetSensorRegister(std::uint16_t address, std::uint8_t value,
                       Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report("ZEMUVCEXT_SetSensorRegister", ZEMUVCEXT_SetSensorRegister(address, value),
                 code...);
}

/** Writes two bytes to an image-sensor register. */
template <class... Code>
void SetSensorRegisterW(std::uint16_t address, std::uint16_t value,
                        Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report("ZEMUVCEXT_SetSensorRegisterW", ZEMUVCEXT_SetSensorRegisterW(address, value),
                 code...);
}

/** Reads the firmware version, 6 bytes. */
template <class... Code>
Block<6> GetFirmwareVersion(Code&... code) noexcept(kQuiet<Code...>) {
  Block<6> block = {};
  detail::Report("ZEMUVCEXT_GetFWVersion", ZEMUVCEXT_GetFWVersion(block.data()), code...);
  return block;
}

/**
 * Reads the day on which the firmware was built, such as "2024.Mar.05", with a zero byte behind it.
 */
template <class... Code>
std::array<char, 12> GetFirmwareBuildDay(Code&... code) noexcept(kQuiet<Code...>) {
  std::array<char, 12> day = {};
  detail::Report("ZEMUVCEXT_GetFWBuildDay", ZEMUVCEXT_GetFWBuildDay(day.data()), code...);
  return day;
}

/** Sets the H.264 mode. */
template <class... Code>
void SetH264Mode(std::uint8_t mode, Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report("ZEMUVCEXT_SetH264Mode", ZEMUVCEXT_SetH264Mode(mode), code...);
}

/** Sets the wide dynamic range. */
template <class... Code>
void SetWideDynamicRange(std::uint8_t value, Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report("ZEMUVCEXT_SetWDR", ZEMUVCEXT_SetWDR(value), code...);
}

/**
 * Sends a block on the ISP channel.
 *
 * @param command 8 bytes
 * @return the reply, 8 bytes, also when the camera refused
 */
template <class... Code>
Block<8> IspCommand(const Block<8>& command, Code&... code) noexcept(kQuiet<Code...>) {
  Block<8> reply = {};
  detail::Report("ZEMUVCEXT_IspCommand", ZEMUVCEXT_IspCommand(command.data(), reply.data()),
                 code...);
  return reply;
}

/**
 * Sends a block on the extended ISP channel.
 *
 * @param command 16 bytes
 * @return the reply, 16 bytes, also when the camera refused
 */
template <class... Code>
Block<16> IspCommandEx(const Block<16>& command, Code&... code) noexcept(kQuiet<Code...>) {
  Block<16> reply = {};
  detail::Report("ZEMUVCEXT_IspCommandEx", ZEMUVCEXT_IspCommandEx(command.data(), reply.data()),
                 code...);
  return reply;
}

/**
 * Sends a block on the VCP channel.
 *
 * @param command 8 bytes
 * @return the reply, 8 bytes, also when the camera refused
 */
template <class... Code>
Block<8> VcpCommand(const Block<8>& command, Code&... code) noexcept(kQuiet<Code...>) {
  Block<8> reply = {};
  detail::Report("ZEMUVCEXT_VcpCommand", ZEMUVCEXT_VcpCommand(command.data(), reply.data()),
                 code...);
  return reply;
}

/** Reads the chip information, 16 bytes. */
template <class... Code>
Block<16> GetChipInfo(Code&... code) noexcept(kQuiet<Code...>) {
  Block<16> block = {};
  detail::Report("ZEMUVCEXT_GetChipInfo", ZEMUVCEXT_GetChipInfo(block.data()), code...);
  return block;
}

/**
 * Writes to the processor's memory, 16 bytes an access, the last one padded with zeros.
 *
 * @param data below 2 GiB
 * @throw Error the platform's failure of an access; Errc::kFail without a camera
 */
template <class... Code>
void WriteMemory(Bytes data, Code&... code) noexcept(kQuiet<Code...>) {
  const auto call = [&](std::int32_t length) {
    return ZEMUVCEXT_IspCmdWriteMem(data.data(), length);
  };
  detail::Report("ZEMUVCEXT_IspCmdWriteMem", detail::WithLength<std::int32_t>(data, call), code...);
}

/**
 * Reads from the processor's memory, 16 bytes an access.
 *
 * @param buffer receives as many bytes as it has
 * @throw Error as WriteMemory
 */
template <class... Code>
void ReadMemory(Buffer buffer, Code&... code) noexcept(kQuiet<Code...>) {
  const auto call = [&](std::uint32_t length) {
    return ZEMUVCEXT_IspCmdReadMem(buffer.data(), length);
  };
  detail::Report("ZEMUVCEXT_IspCmdReadMem", detail::WithLength<std::uint32_t>(buffer, call),
                 code...);
}

/** Camera::ReadFirmwareData on the default camera. */
template <class... Code>
std::uint32_t ReadFirmwareData(Buffer buffer, const Progress& progress,
                               Code&... code) noexcept(kQuiet<Code...>) {
  std::uint32_t length = 0;
  const auto receive = [&](std::uint32_t size, ProgressCallback callback, std::uint64_t user) {
    return ZEMUVCEXT_ReadFWData(buffer.data(), size, &length, callback, user);
  };
  detail::ReportWithProgress<std::uint32_t>("ZEMUVCEXT_ReadFWData", buffer, progress, receive,
                                            code...);
  return length;
}

/**
 * Sends data that the caller has announced, without a retry.
 *
 * A copy with zeros behind it is sent, because the export sends a short last chunk whole, with
 * whatever follows in memory; Errc::kFail when there is no memory for that.
 *
 * @param data     below 2 GiB
 * @param progress told after each chunk: the percentage still to send
 */
template <class... Code>
void WriteFirmwareData(Bytes data, const Progress& progress,
                       Code&... code) noexcept(kQuiet<Code...>) {
  const auto whole =
      detail::CopyPadded("ZEMUVCEXT_WriteFWData", data, detail::kDefaultCameraChunk, code...);
  if (whole == nullptr) {
    return;
  }
  const auto send = [&](std::int32_t length, ProgressCallback callback, std::uint64_t user) {
    return ZEMUVCEXT_WriteFWData(whole.get(), length, callback, user);
  };
  detail::ReportWithProgress<std::int32_t>("ZEMUVCEXT_WriteFWData", data, progress, send, code...);
}

/**
 * UpdateFirmware without somebody to tell.
 *
 * @param image below 2 GiB
 */
template <class... Code>
void UpdateFirmwareWithoutProgress(Bytes image, Code&... code) noexcept(kQuiet<Code...>) {
  const auto whole =
      detail::CopyPadded("ZEMUVCEXT_UpdateFW", image, detail::kDefaultCameraChunk, code...);
  if (whole == nullptr) {
    return;
  }
  const auto call = [&](std::int32_t length) {
    return ZEMUVCEXT_UpdateFW(whole.get(), static_cast<std::uint32_t>(length));
  };
  detail::Report("ZEMUVCEXT_UpdateFW", detail::WithLength<std::int32_t>(image, call), code...);
}

/**
 * Updates the firmware: announces the image, sends it, orders the burn and waits for its end.
 *
 * A copy with zeros behind it is sent, because the export sends a short last chunk whole, with
 * whatever follows in memory; Errc::kFail when there is no memory for that.
 *
 * @param image    below 2 GiB
 * @param progress told after each chunk: the percentage still to send; nothing during the burn
 * @throw Error    Errc::kNoDevice when announce, image or order cannot be sent,
 *                 Errc::kDeviceRefused when the camera is not idle, reports that the burn failed,
 * or does not come to an end
 */
template <class... Code>
void UpdateFirmware(Bytes image, const Progress& progress,
                    Code&... code) noexcept(kQuiet<Code...>) {
  const auto whole = detail::CopyPadded("ZEMUVCEXT_UpdateFW_with_progress", image,
                                        detail::kDefaultCameraChunk, code...);
  if (whole == nullptr) {
    return;
  }
  const auto send = [&](std::int32_t length, ProgressCallback callback, std::uint64_t user) {
    return ZEMUVCEXT_UpdateFW_with_progress(whole.get(), static_cast<std::uint32_t>(length),
                                            callback, user);
  };
  detail::ReportWithProgress<std::int32_t>("ZEMUVCEXT_UpdateFW_with_progress", image, progress,
                                           send, code...);
}

/** UpdateFirmware for another kind of image; the burn is ordered also when it could not be sent. */
template <class... Code>
void UpdateOtherImage(Bytes image, const Progress& progress,
                      Code&... code) noexcept(kQuiet<Code...>) {
  const auto whole = detail::CopyPadded("ZEMUVCEXT_UpdateFW_with_progressEx", image,
                                        detail::kDefaultCameraChunk, code...);
  if (whole == nullptr) {
    return;
  }
  const auto send = [&](std::int32_t length, ProgressCallback callback, std::uint64_t user) {
    return ZEMUVCEXT_UpdateFW_with_progressEx(whole.get(), static_cast<std::uint32_t>(length),
                                              callback, user);
  };
  detail::ReportWithProgress<std::int32_t>("ZEMUVCEXT_UpdateFW_with_progressEx", image, progress,
                                           send, code...);
}

/**
 * UpdateOtherImage with a fixed wait of ten seconds in place of asking the camera.
 *
 * @param image     below 2 GiB
 * @param parameter byte 2 of announce and burn order, the camera's to interpret
 * @param progress  told after each chunk: the percentage still to send
 */
template <class... Code>
void UpdateVision(Bytes image, std::uint8_t parameter, const Progress& progress,
                  Code&... code) noexcept(kQuiet<Code...>) {
  const auto whole =
      detail::CopyPadded("ZEMUVCEXT_UpdateFW_Vision", image, detail::kDefaultCameraChunk, code...);
  if (whole == nullptr) {
    return;
  }
  const auto send = [&](std::int32_t length, ProgressCallback callback, std::uint64_t user) {
    return ZEMUVCEXT_UpdateFW_Vision(whole.get(), static_cast<std::uint32_t>(length), parameter,
                                     callback, user);
  };
  detail::ReportWithProgress<std::int32_t>("ZEMUVCEXT_UpdateFW_Vision", image, progress, send,
                                           code...);
}

}  // namespace default_camera

// ---------------------------------------------------------------------------------------------
// Frames and sound
// ---------------------------------------------------------------------------------------------

namespace detail {

// Whether a frame of some bytes for each pixel has all of them.
inline bool HoldsFrame(std::size_t size, std::size_t bytesPerPixel, std::uint32_t width,
                       std::uint32_t height) noexcept {
  return size / bytesPerPixel >= std::uint64_t{width} * height;
}

// The same for three planes: Y, and a quarter each of U and V.
inline bool HoldsPlanes(std::size_t size, std::uint32_t width, std::uint32_t height) noexcept {
  const std::uint64_t pixels = std::uint64_t{width} * height;
  return size >= pixels && size - pixels >= pixels / 4 * 2;
}

// malloc and free of the runtime that the library uses, which on Windows need not be this
// program's.
class RuntimeHeap {
 public:
#if defined(_WIN32)
  RuntimeHeap() noexcept
      : allocate_(Find<decltype(allocate_)>("malloc")), free_(Find<decltype(free_)>("free")) {}
  std::uint8_t* Allocate(std::size_t size) const noexcept {
    return allocate_ != nullptr && free_ != nullptr ? static_cast<std::uint8_t*>(allocate_(size))
                                                    : nullptr;
  }
  void Free(std::uint8_t* memory) const noexcept { free_(memory); }

 private:
  template <class Function>
  static Function Find(const char* name) noexcept {
    HINSTANCE__* const runtime = GetModuleHandleW(L"ucrtbase.dll");
    return runtime != nullptr
               ? reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(runtime, name)))
               : nullptr;
  }

  void*(__cdecl* allocate_)(std::size_t);
  void(__cdecl* free_)(void*);
#else
  std::uint8_t* Allocate(std::size_t size) const noexcept {
    return static_cast<std::uint8_t*>(std::malloc(size));
  }
  void Free(std::uint8_t* memory) const noexcept { std::free(memory); }
#endif
};

}  // namespace detail

/**
 * Converts a frame of three planes to pixels. May be called from any thread, as all functions
 * below.
 *
 * @param frame  width * height bytes of Y, then a quarter of that of U and of V
 * @param pixels receives width * height * 3 bytes: blue, green, red, rows without padding
 * @param width  pixels in a row
 * @param height rows
 * @throw Error  Errc::kRefused when a buffer is shorter than that; then nothing is called
 */
template <class... Code>
void PlanesToPixels(Bytes frame, Buffer pixels, std::uint32_t width, std::uint32_t height,
                    Code&... code) noexcept(kQuiet<Code...>) {
  const bool fits = detail::HoldsPlanes(frame.size(), width, height) &&
                    detail::HoldsFrame(pixels.size(), 3, width, height);
  if (fits) {
    NV12_to_RGB(frame.data(), pixels.data(), width, height);
  }
  detail::Report("NV12_to_RGB", fits ? ZEM_OK : ZEM_E_REFUSED, code...);
}

/**
 * Writes a YUY2 frame as a 24-bit BMP file, upright.
 *
 * @param path   file to create or overwrite
 * @param frame  width * height * 2 bytes
 * @param width  pixels in a row
 * @param height rows
 * @throw Error  Errc::kRefused when the frame is shorter than that, Errc::kFail when the file could
 *               not be written
 */
template <class... Code>
void SaveYuy2AsBmp(const std::wstring& path, Bytes frame, std::uint32_t width, std::uint32_t height,
                   Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report(
      "ConvertYUY2toBMP",
      detail::HoldsFrame(frame.size(), 2, width, height)
          ? detail::FailureIfZero(ConvertYUY2toBMP(path.c_str(), frame.data(), width, height))
          : ZEM_E_REFUSED,
      code...);
}

/** SaveYuy2AsBmp for a frame of three planes as PlanesToPixels takes it; the picture is upside
 * down. */
template <class... Code>
void SavePlanesAsBmp(const std::wstring& path, Bytes frame, std::uint32_t width,
                     std::uint32_t height, Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report(
      "ConvertNV12toBMP",
      detail::HoldsPlanes(frame.size(), width, height)
          ? detail::FailureIfZero(ConvertNV12toBMP(path.c_str(), frame.data(), width, height))
          : ZEM_E_REFUSED,
      code...);
}

/**
 * Writes pixels as a 24-bit BMP file, in the order in which they lie.
 *
 * The export behind it, ConvertRGBtoBMP, frees the pixels it is given, by the free of its own
 * runtime, and only when the file was written. This function hands it a copy from that runtime's
 * malloc and frees that in the other case: the caller's pixels stay the caller's.
 *
 * @param path   file to create or overwrite
 * @param pixels width * height * 3 bytes: blue, green, red, rows without padding
 * @param width  pixels in a row
 * @param height rows
 * @throw Error  Errc::kRefused when there are fewer pixels, Errc::kFail when the file could not be
 *               written or there is no memory for the copy
 */
template <class... Code>
void SavePixelsAsBmp(const std::wstring& path, Bytes pixels, std::uint32_t width,
                     std::uint32_t height, Code&... code) noexcept(kQuiet<Code...>) {
  ZemResult result = ZEM_E_REFUSED;
  if (detail::HoldsFrame(pixels.size(), 3, width, height)) {
    const detail::RuntimeHeap heap;
    std::uint8_t* const copy = heap.Allocate(pixels.size() + 1);
    result = ZEM_E_FAIL;
    if (copy != nullptr) {
      std::copy(pixels.begin(), pixels.end(), copy);
      if (ConvertRGBtoBMP(path.c_str(), copy, width, height) != 0) {
        result = ZEM_OK;
      } else {
        heap.Free(copy);
      }
    }
  }
  detail::Report("ConvertRGBtoBMP", result, code...);
}

/**
 * Puts a WAV header in front of raw PCM samples.
 *
 * @param rawPath       file with the samples; may be wavPath
 * @param wavPath       file to create or overwrite
 * @param channels      samples per frame
 * @param sampleRate    frames per second
 * @param bitsPerSample bits of one sample
 * @throw Error         Errc::kFail when no file with samples was written, also for an empty raw
 * file
 */
template <class... Code>
void PackWav(const std::wstring& rawPath, const std::wstring& wavPath, std::uint8_t channels,
             std::int32_t sampleRate, std::uint8_t bitsPerSample,
             Code&... code) noexcept(kQuiet<Code...>) {
  detail::Report("PackWavFile",
                 detail::FailureIfZero(PackWavFile(rawPath.c_str(), wavPath.c_str(), channels,
                                                   sampleRate, bitsPerSample)),
                 code...);
}

}  // namespace zemuvc

/** An Errc is an error code. */
template <>
struct std::is_error_code_enum<zemuvc::Errc> : std::true_type {};

#if __cplusplus >= 202002L || (defined(_MSVC_LANG) && _MSVC_LANG >= 202002L)
/** A view does not own: a std::span of a temporary one is as good as of the elements. */
template <class T>
inline constexpr bool std::ranges::enable_borrowed_range<zemuvc::Span<T>> = true;
#endif

#endif  // ZEM_UVC_HPP
