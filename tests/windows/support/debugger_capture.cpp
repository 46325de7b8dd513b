#include "tests/windows/support/debugger_capture.h"

#include <windows.h>

#include <utility>

namespace zem::testing {
namespace {

// Raised by the system for every text on the channel, before it looks for a debugger: the wide form
// first where the system has one, and the narrow form if nobody took that.
constexpr DWORD kWideText = 0x4001000A;
constexpr DWORD kNarrowText = 0x40010006;

std::vector<std::wstring>& Captured() {
  static std::vector<std::wstring> texts;
  return texts;
}

LONG CALLBACK Catch(EXCEPTION_POINTERS* exception) {
  const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
  if (record.NumberParameters < 2) {
    return EXCEPTION_CONTINUE_SEARCH;
  }
  // Parameters: the length with its terminator, and the text.
  const std::size_t length = record.ExceptionInformation[0] - 1;
  const ULONG_PTR text = record.ExceptionInformation[1];
  if (record.ExceptionCode == kWideText) {
    Captured().emplace_back(reinterpret_cast<const wchar_t*>(text), length);
    return EXCEPTION_CONTINUE_EXECUTION;
  }
  if (record.ExceptionCode == kNarrowText) {
    // The library's own texts are ASCII.
    const auto* const narrow = reinterpret_cast<const char*>(text);
    Captured().emplace_back(narrow, narrow + length);
    return EXCEPTION_CONTINUE_EXECUTION;
  }
  return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

DebuggerCapture::DebuggerCapture() : handler_(AddVectoredExceptionHandler(1, Catch)) {
  Captured().clear();
}

DebuggerCapture::~DebuggerCapture() { RemoveVectoredExceptionHandler(handler_); }

std::vector<std::wstring> DebuggerCapture::Take() { return std::exchange(Captured(), {}); }

}  // namespace zem::testing
