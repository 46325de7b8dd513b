#include "platform/linux/sysfs.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <memory>

namespace zem::platform {
namespace {

struct FolderCloser {
  void operator()(DIR* folder) const { static_cast<void>(::closedir(folder)); }
};

// A whole number, or nothing.
std::optional<unsigned> ParseNumber(std::string_view text, int base) {
  unsigned number = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number, base);
  return error == std::errc() && stopped == end ? std::optional(number) : std::nullopt;
}

}  // namespace

void PathText::AppendNumber(unsigned number) {
  std::array<char, 16> digits = {};
  const char* const end = std::to_chars(digits.begin(), digits.end(), number).ptr;
  Append({{digits.data(), static_cast<std::size_t>(end - digits.data())}});
}

void PathText::AppendHex(unsigned number, std::size_t digits) {
  std::array<char, 16> text = {};
  const char* const end = std::to_chars(text.begin(), text.end(), number, 16).ptr;
  const auto length = static_cast<std::size_t>(end - text.data());
  for (std::size_t missing = length; missing < digits; ++missing) {
    Append({"0"});
  }
  Append({{text.data(), length}});
}

PathText PathText::Parent() const {
  const std::size_t separator = view().rfind('/');
  return separator != std::string_view::npos ? PathText({view().substr(0, separator)}) : PathText();
}

std::string_view PathText::Name() const { return view().substr(view().rfind('/') + 1); }

std::size_t ListNumbered(const PathText& folder, std::string_view prefix,
                         std::span<unsigned> numbers) {
  const std::unique_ptr<DIR, FolderCloser> opened(::opendir(folder.c_str()));
  std::size_t count = 0;
  while (opened != nullptr && count < numbers.size()) {
    const dirent* const entry = ::readdir(opened.get());  // NOLINT(concurrency-mt-unsafe)
    if (entry == nullptr) {
      break;
    }
    const std::string_view name = entry->d_name;
    if (const auto number =
            name.starts_with(prefix) ? ParseNumber(name.substr(prefix.size()), 10) : std::nullopt) {
      numbers[count++] = *number;
    }
  }
  std::sort(numbers.begin(), numbers.begin() + static_cast<std::ptrdiff_t>(count));
  return count;
}

std::size_t ReadSysFile(const PathText& path, std::span<std::uint8_t> content) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    return 0;
  }
  std::size_t length = 0;
  while (length < content.size()) {
    const ssize_t moved = ::read(file, &content[length], content.size() - length);
    if (moved <= 0) {
      break;
    }
    length += static_cast<std::size_t>(moved);
  }
  static_cast<void>(::close(file));
  return length;
}

PathText ReadAttribute(const PathText& folder, std::string_view name) {
  std::array<std::uint8_t, 256> content = {};
  const std::size_t length = ReadSysFile({folder.view(), "/", name}, content);
  const std::string_view text(reinterpret_cast<const char*>(content.data()), length);
  return {text.substr(0, text.find('\n'))};
}

std::optional<unsigned> ReadNumber(const PathText& folder, std::string_view name, int base) {
  return ParseNumber(ReadAttribute(folder, name).view(), base);
}

PathText Resolve(const PathText& link) {
  std::array<char, PATH_MAX> target = {};
  return ::realpath(link.c_str(), target.data()) != nullptr ? PathText({target.data()})
                                                            : PathText();
}

}  // namespace zem::platform
