// What the kernel tells of its devices in sysfs. Nothing here allocates.
#pragma once

#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace zem::platform {

// A path, or another short text, that is cut to what it holds.
class PathText {
 public:
  PathText() = default;
  PathText(std::initializer_list<std::string_view> pieces) { Append(pieces); }

  void Append(std::initializer_list<std::string_view> pieces) {
    for (const std::string_view piece : pieces) {
      length_ += piece.copy(&text_[length_], text_.size() - 1 - length_);
    }
    text_[length_] = '\0';
  }
  void AppendNumber(unsigned number);
  // The same in hexadecimal, lower case, at least `digits` long.
  void AppendHex(unsigned number, std::size_t digits);

  const char* c_str() const { return text_.data(); }
  std::string_view view() const { return {text_.data(), length_}; }
  bool empty() const { return length_ == 0; }

  // The folder that holds what the path names, and its last component.
  PathText Parent() const;
  std::string_view Name() const;

 private:
  std::array<char, PATH_MAX> text_ = {};
  std::size_t length_ = 0;
};

// The numbers of the entries PREFIXn of a folder, in ascending order, at most as many as `numbers`
// holds. How many there are; 0 for a folder that is not there.
std::size_t ListNumbered(const PathText& folder, std::string_view prefix,
                         std::span<unsigned> numbers);

// The whole content of a file; how many bytes, at most as many as `content` holds. 0 when it cannot
// be read.
std::size_t ReadSysFile(const PathText& path, std::span<std::uint8_t> content);

// An attribute's text without its line end; empty when there is none.
PathText ReadAttribute(const PathText& folder, std::string_view name);

// An attribute that is a number of the given base.
std::optional<unsigned> ReadNumber(const PathText& folder, std::string_view name, int base);

// Where a link leads, all links on the way followed; empty when it leads nowhere.
PathText Resolve(const PathText& link);

}  // namespace zem::platform
