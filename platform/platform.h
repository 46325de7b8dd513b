// Everything the library asks of the operating system, besides the COM interfaces of
// platform/com.h. The implementation is chosen at link time: platform/windows/ for the DLL,
// platform/linux/ for the shared library of Linux, platform/simulated/ for native tests and
// benchmarks; what the last two have in common is in platform/portable/.
//
// All functions act on the calling thread and may be called from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>

#include "platform/com.h"

namespace zem::platform {

// Number of wide characters, terminator included, that a path buffer of the library holds.
inline constexpr std::size_t kPathCapacity = 260;

// ---- COM ----

// Initialises COM for the calling thread once more. The outcome is deliberately not reported: no
// caller looks at it.
void InitializeCom();
void UninitializeCom();

// Creates the system device enumerator, as an in-process server or handler.
HRESULT CreateDeviceEnumerator(ICreateDevEnum** enumerator);

// Frees memory that a COM call handed out, such as a display name.
void FreeTaskMemory(void* memory);

void InitVariant(VARIANT* value);
void ClearVariant(VARIANT* value);

// ---- Settings ----

// Puts the full path of a file beside the host executable into `path`, cut to what it holds. An
// executable whose path cannot be had counts as one in the root folder.
void HostFilePath(std::span<wchar_t, kPathCapacity> path, const wchar_t* name);

// Reads an integer from a private profile file, decimal or 0x hexadecimal; `fallback` when the
// file, the section or the key is missing.
std::uint32_t PrivateProfileInt(const wchar_t* section, const wchar_t* key, std::uint32_t fallback,
                                const wchar_t* path);

// ---- Files ----

// Opens a file by its wide path, with the mode texts of the C runtime. Null for a file that cannot
// be opened and for a null path.
std::FILE* OpenFile(const wchar_t* path, const wchar_t* mode);

// Appends `text` to a file opened in binary mode, in the bytes that this platform keeps wide text
// in: UTF-16 on Windows, UTF-8 elsewhere.
void WriteText(std::FILE* file, const wchar_t* text);

// Puts the full path of a log file into `path`, cut to what it holds: the "Temp" folder of the
// Windows directory; elsewhere $TMPDIR or /tmp.
void LogFilePath(std::span<wchar_t, kPathCapacity> path, const wchar_t* name);

// Moves a file's position, counted in bytes from its start; false when that fails.
bool SeekFile(std::FILE* file, std::uint64_t position);

// The length of an open file in bytes, whatever it is; the file's position is then its start.
// Nothing when it cannot be measured.
std::optional<std::uint64_t> MeasureFile(std::FILE* file);

// ---- Volumes ----

// An open volume; null is none.
using VolumeHandle = void*;

// Opens a raw volume, such as "\\.\C:", for reading and writing, shared for both. Null when it
// cannot be opened.
VolumeHandle OpenVolume(const wchar_t* path);
void CloseVolume(VolumeHandle volume);

// Issues one device control. `block` is what goes in and what comes back. False when it failed;
// LastError then says why.
bool ControlVolume(VolumeHandle volume, std::uint32_t code, void* block, std::uint32_t inputLength,
                   std::uint32_t outputLength);

// The thread's error code of the last platform call that failed.
std::uint32_t LastError();

// Puts the system's own text for an error code into `text`; nothing when there is none or when it
// does not fit with its terminator.
void ErrorText(std::uint32_t code, std::span<wchar_t> text);

// ---- Time ----

struct LocalTime {
  int year;
  int month;  // from 1
  int day;
  int hour;
  int minute;
  int second;
};

LocalTime CurrentLocalTime();

void Sleep(std::uint32_t milliseconds);

// Milliseconds of a clock that never goes back and wraps at 32 bits.
std::uint32_t MillisecondClock();

// ---- Message queue ----

// Takes and dispatches whatever is in the calling thread's message queue, so that a caller's
// windows stay serviced; the caller may be re-entered through them. A quit message is taken and
// ends the drain, with the rest left in the queue.
void DrainMessageQueue();

// ---- Text ----

// Formats with the platform's wide formatter, in which %s is a wide string. The text is cut to the
// buffer and always terminated.
void FormatWide(std::span<wchar_t> buffer, const wchar_t* format, ...);

// Writes one text to the debugger output channel.
void DebuggerOutput(const wchar_t* text);

// The runtime's bounded string copy: a text that does not fit `size` bytes with its terminator sets
// destination[0] to 0 and takes the runtime's invalid-parameter path, which by default ends the
// process.
void BoundedCopy(char* destination, std::size_t size, const char* text);

}  // namespace zem::platform
