#include "simulator/faults.h"

#include <array>
#include <charconv>
#include <utility>

namespace zem::simulator {
namespace {

// The status of a refusal for which no value is given.
constexpr std::uint32_t kAnyRefusal = 1;

constexpr std::array<std::pair<std::string_view, Fault::Kind>, 10> kKinds = {{
    {"fail", Fault::Kind::kFail},
    {"refuse", Fault::Kind::kRefuse},
    {"short", Fault::Kind::kShort},
    {"length", Fault::Kind::kLength},
    {"garbage", Fault::Kind::kGarbage},
    {"drop", Fault::Kind::kDrop},
    {"unplug", Fault::Kind::kUnplug},
    {"leave", Fault::Kind::kLeave},
    {"replug", Fault::Kind::kReplug},
    {"silent", Fault::Kind::kSilent},
}};

std::optional<std::uint32_t> ParseNumber(std::string_view text) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole ? std::optional(number) : std::nullopt;
}

// Cuts what follows the last `mark` off `text` and reads it; `missing` without a mark.
std::optional<std::uint32_t> TakeNumber(std::string_view& text, char mark, std::uint32_t missing) {
  const std::size_t at = text.rfind(mark);
  if (at == std::string_view::npos) {
    return missing;
  }
  const std::optional<std::uint32_t> number = ParseNumber(text.substr(at + 1));
  text = text.substr(0, at);
  return number;
}

}  // namespace

std::optional<Fault> ParseFault(std::string_view text) {
  for (const auto& [name, kind] : kKinds) {
    if (!text.starts_with(name) || !text.substr(name.size()).starts_with('@')) {
      continue;
    }
    std::string_view rest = text.substr(name.size() + 1);
    const auto value = TakeNumber(rest, '=', kind == Fault::Kind::kRefuse ? kAnyRefusal : 0);
    const auto count = TakeNumber(rest, '+', 1);
    const auto first = ParseNumber(rest);
    if (value && count && first && *first > 0) {
      return Fault{kind, *first, *count, *value};
    }
  }
  return std::nullopt;
}

}  // namespace zem::simulator
