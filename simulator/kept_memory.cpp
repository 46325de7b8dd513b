#include "simulator/kept_memory.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <span>
#include <stdexcept>

#include "simulator/hex_text.h"
#include "simulator/utf8_files.h"

namespace zem::simulator {
namespace {

using nlohmann::ordered_json;

constexpr std::size_t kPageSize = 256;
constexpr std::uint8_t kFill = 0xFF;
// More than any camera has.
constexpr std::size_t kLargestMemory = 0x1000000;

std::size_t ParseHex(std::string_view digits) {
  std::size_t number = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  if (error != std::errc() || end != digits.data() + digits.size()) {
    throw std::invalid_argument("\"" + std::string(digits) + "\" is not hexadecimal");
  }
  return number;
}

ordered_json FormatOne(std::span<const std::uint8_t> bytes) {
  ordered_json pages = ordered_json::object();
  for (std::size_t at = 0; at < bytes.size(); at += kPageSize) {
    const auto page = bytes.subspan(at, std::min(kPageSize, bytes.size() - at));
    if (std::all_of(page.begin(), page.end(), [](std::uint8_t byte) { return byte == kFill; })) {
      continue;
    }
    std::array<char, 24> address = {};
    std::snprintf(address.data(), address.size(), "0x%06zx", at);
    pages[address.data()] = HexOf(page);
  }
  return {{"size", bytes.size()}, {"pages", std::move(pages)}};
}

std::vector<std::uint8_t> ParseOne(const ordered_json& object) {
  const auto size = object.at("size").get<std::size_t>();
  if (size > kLargestMemory) {
    throw std::invalid_argument("a memory is larger than a camera's can be");
  }
  std::vector<std::uint8_t> bytes(size, kFill);
  for (const auto& [address, page] : object.at("pages").items()) {
    const auto text = page.get<std::string>();
    const std::size_t at = ParseHex(address.starts_with("0x") ? address.substr(2) : address);
    if (text.size() % 2 != 0 || at > size || text.size() / 2 > size - at) {
      throw std::invalid_argument("page " + address + " does not lie in its memory");
    }
    for (std::size_t index = 0; index < text.size() / 2; ++index) {
      bytes[at + index] =
          static_cast<std::uint8_t>(ParseHex(std::string_view(text).substr(2 * index, 2)));
    }
  }
  return bytes;
}

}  // namespace

void LoadBytes(const KeptMemory& memory, const std::string& name,
               std::vector<std::uint8_t>& bytes) {
  const auto kept = memory.find(name);
  if (kept == memory.end()) {
    return;
  }
  if (kept->second.size() != bytes.size()) {
    throw std::invalid_argument("\"" + name + "\" has another size");
  }
  bytes = kept->second;
}

std::string FormatKeptMemory(const KeptMemory& memory) {
  ordered_json root = ordered_json::object();
  for (const auto& [name, bytes] : memory) {
    root[name] = FormatOne(bytes);
  }
  return root.dump(1) + "\n";
}

KeptMemory ParseKeptMemory(const std::string& text) {
  KeptMemory memory;
  try {
    const ordered_json root = ordered_json::parse(text);
    for (const auto& [name, object] : root.items()) {
      memory[name] = ParseOne(object);
    }
  } catch (const ordered_json::exception& error) {
    throw std::invalid_argument(error.what());
  }
  return memory;
}

KeptMemory ReadStateFile(const std::string& path) {
  const File file = OpenUtf8(path, "rb");
  if (file == nullptr && errno == ENOENT) {
    return {};
  }
  std::string text;
  std::array<char, 4096> part;  // NOLINT(*-init-*): filled below
  while (file != nullptr) {
    const std::size_t count = std::fread(part.data(), 1, part.size(), file.get());
    if (count == 0) {
      break;
    }
    text.append(part.data(), count);
  }
  if (file == nullptr || std::ferror(file.get()) != 0) {
    throw std::invalid_argument("the state file \"" + path + "\" cannot be read");
  }
  try {
    return ParseKeptMemory(text);
  } catch (const std::invalid_argument& error) {
    throw std::invalid_argument("the state file \"" + path +
                                "\" is not a camera's: " + error.what());
  }
}

void WriteStateFile(const std::string& path, const KeptMemory& memory) {
  // Written beside it first: a run that is stopped half way leaves the old file.
  const std::string fresh = path + ".new";
  const std::string text = FormatKeptMemory(memory);
  File file = OpenUtf8(fresh, "wb");
  bool written =
      file != nullptr && std::fwrite(text.data(), 1, text.size(), file.get()) == text.size();
  written = file != nullptr && std::fclose(file.release()) == 0 && written;
  if (!written || !ReplaceUtf8(fresh, path)) {
    throw std::runtime_error("the state file \"" + path + "\" cannot be written");
  }
}

}  // namespace zem::simulator
