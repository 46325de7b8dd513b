// What the platform wall is on every system but Windows: text in UTF-8, files of the C library,
// task memory of malloc.
#include <sys/stat.h>
#include <sys/types.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdarg>
#include <cstdlib>
#include <cwchar>
#include <limits>
#include <string_view>

#include "platform/file_handle.h"
#include "platform/platform.h"
#include "platform/portable/narrow_files.h"
#include "platform/portable/utf8.h"

namespace zem::platform {
namespace {

// Longest text a format of the library can give before it is cut to the caller's buffer.
constexpr std::size_t kFormatCapacity = 4096;

// In the library's formats %s is a wide string; the C library of this system calls that %ls.
void TranslateFormat(const wchar_t* format, std::span<wchar_t> translated) {
  std::size_t out = 0;
  for (const wchar_t* in = format; *in != L'\0' && out + 2 < translated.size(); ++in) {
    if (*in == L's' && in != format && in[-1] == L'%') {
      translated[out++] = L'l';
    }
    translated[out++] = *in;
  }
  translated[out] = L'\0';
}

}  // namespace

void FreeTaskMemory(void* memory) { std::free(memory); }

void InitVariant(VARIANT* value) { *value = VARIANT{VT_EMPTY, nullptr}; }

void ClearVariant(VARIANT* value) {
  if (value->vt == VT_BSTR) {
    std::free(value->bstrVal);
  }
  InitVariant(value);
}

std::FILE* OpenNarrow(const wchar_t* path, const wchar_t* mode) {
  std::array<char, PATH_MAX> narrowPath = {};
  std::array<wchar_t, 8> closingMode = {};
  std::array<char, 8> narrowMode = {};
  // The e closes the file in programs that this one starts.
  FormatWide(closingMode, L"%se", mode);
  if (!NarrowText(path, narrowPath) || !NarrowText(closingMode.data(), narrowMode)) {
    return nullptr;
  }
  FileHandle file(std::fopen(narrowPath.data(), narrowMode.data()));
  // The C library opens folders too; they are no files.
  struct stat status = {};
  if (file == nullptr || fstat(fileno(file.get()), &status) != 0 || S_ISDIR(status.st_mode)) {
    return nullptr;
  }
  return file.release();
}

void WriteText(std::FILE* file, const wchar_t* text) {
  for (; *text != L'\0'; ++text) {
    const Utf8Sequence sequence = EncodeUtf8(*text);
    static_cast<void>(std::fwrite(sequence.bytes.data(), 1, sequence.length, file));
  }
}

void LogFilePath(std::span<wchar_t, kPathCapacity> path, const wchar_t* name) {
  const char* const chosen = std::getenv("TMPDIR");  // NOLINT(concurrency-mt-unsafe)
  const std::string_view folder = chosen != nullptr && *chosen != '\0' ? chosen : "/tmp";
  std::array<wchar_t, kPathCapacity> wide = {};
  WidenText(folder, wide);
  FormatWide(path, folder.ends_with('/') ? L"%s%s" : L"%s/%s", wide.data(), name);
}

bool SeekFile(std::FILE* file, std::uint64_t position) {
  return position <= static_cast<std::uint64_t>(std::numeric_limits<off_t>::max()) &&
         fseeko(file, static_cast<off_t>(position), SEEK_SET) == 0;
}

std::optional<std::uint64_t> MeasureFile(std::FILE* file) {
  if (fseeko(file, 0, SEEK_END) != 0) {
    return std::nullopt;
  }
  const off_t end = ftello(file);
  if (end < 0 || !SeekFile(file, 0)) {
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(end);
}

void FormatWide(std::span<wchar_t> buffer, const wchar_t* format, ...) {
  std::array<wchar_t, kFormatCapacity> translated;  // NOLINT(*-init-*): filled below
  std::array<wchar_t, kFormatCapacity> text;        // NOLINT(*-init-*): filled below
  TranslateFormat(format, translated);
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vswprintf(text.data(), text.size(), translated.data(), arguments);
  va_end(arguments);
  const std::size_t kept =
      std::min(static_cast<std::size_t>(std::max(length, 0)), buffer.size() - 1);
  std::copy_n(text.begin(), kept, buffer.begin());
  buffer[kept] = L'\0';
}

}  // namespace zem::platform
