#include "encoding/command_log.h"

#include <algorithm>
#include <array>

#include "encoding/logged_controls.h"
#include "platform/file_handle.h"

namespace zem {
namespace {

using LoggedBlock = std::array<std::uint8_t, kLoggedBlockSize>;

// Formats one piece of a line and appends it. No piece of the log's own is longer than the buffer.
template <class... Arguments>
void Append(const FileHandle& file, const wchar_t* format, Arguments... arguments) {
  std::array<wchar_t, 160> text = {};
  platform::FormatWide(text, format, arguments...);
  platform::WriteText(file.get(), text.data());
}

FileHandle OpenLog() {
  std::array<wchar_t, platform::kPathCapacity> path = {};
  platform::LogFilePath(path, L"ZemWrenCmdLog.txt");
  return OpenFileHandle(path.data(), L"a+b");
}

// Begins a line: the time, then the rest by `format`.
template <class... Arguments>
void AppendHeader(const FileHandle& file, const platform::LocalTime& time, const wchar_t* format,
                  Arguments... arguments) {
  Append(file, format, time.year, time.month, time.day, time.hour, time.minute, time.second,
         arguments...);
}

std::uint32_t LoadNumber(const std::uint8_t* bytes, unsigned width) {
  std::uint32_t number = 0;
  for (unsigned index = 0; index < width; ++index) {
    number |= std::uint32_t{bytes[index]} << (8 * index);
  }
  return number;
}

void AppendField(const FileHandle& file, const LoggedField& field, const LoggedBlock& block) {
  std::array<std::uint32_t, LoggedField::kMostNumbers> numbers = {};
  for (std::size_t index = 0; index < field.count; ++index) {
    numbers[index] = LoadNumber(&block[field.offset + index * field.width], field.width);
  }
  Append(file, field.format, numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], numbers[5],
         numbers[6], numbers[7]);
}

}  // namespace

void LogTransfer(Direction direction, const GUID& unit, std::uint16_t selector,
                 std::span<const std::uint8_t> block, HRESULT result) {
  const platform::LocalTime time = platform::CurrentLocalTime();
  const FileHandle file = OpenLog();
  if (!file) {
    return;
  }
  // Deliberate: the header has no line end, so behind a control that the log does not know the next
  // header follows on the same line.
  AppendHeader(file, time,
               direction == Direction::kSet ? L"%d/%d/%d %d:%d:%d : Set : HRESULT=0x%.8X :"
                                            : L"%d/%d/%d %d:%d:%d : Get : HRESULT=0x%.8X :",
               static_cast<std::uint32_t>(result));
  const LoggedControl* const control = FindLoggedControl(unit, selector);
  if (control == nullptr) {
    return;
  }
  platform::WriteText(file.get(), control->title);
  LoggedBlock logged = {};
  std::copy_n(block.begin(), std::min(block.size(), logged.size()), logged.begin());
  for (const LoggedField& field : control->fields) {
    AppendField(file, field, logged);
  }
}

void LogText(const wchar_t* text) {
  const platform::LocalTime time = platform::CurrentLocalTime();
  if (text == nullptr) {
    return;
  }
  const FileHandle file = OpenLog();
  if (!file) {
    return;
  }
  AppendHeader(file, time, L"%d/%d/%d %d:%d:%d : Set : ");
  platform::WriteText(file.get(), text);
}

}  // namespace zem
