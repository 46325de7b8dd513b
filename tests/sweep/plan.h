// What an operation asks the devices for, one request after another, and what each fault of a
// request makes of it. Written down by hand for each export (plans.cpp), from what the header and
// docs/open-behaviours.md say; nothing here calls the library.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "include/ZemUVCExtApi.h"

namespace zem::testing::sweep {

// What becomes of a request.
enum class Fault : std::uint8_t {
  kFails,      // it fails, and nothing is delivered
  kFailsFull,  // it fails, though it delivers garbage in full length
  kShort,      // it is done, but with the first byte only; of what is written none counts
  kGarbage,    // it is done, with garbage in full length
  kPositive,   // it is done, with a positive code
  kGone,       // the device is gone from here on
  kBusy,       // of a volume: it fails with the error after which it is asked again
  kStaysBusy,  // the same, and so does each repetition
  kNone,
};
inline constexpr std::size_t kFaults = 8;

const char* NameOf(Fault fault);

// What the platform gives a request of a camera. A volume's fails with an error code instead.
inline constexpr auto kFailsResult = static_cast<ZemResult>(0x8007001FU);
inline constexpr auto kFailsFullResult = static_cast<ZemResult>(0x80070079U);
inline constexpr auto kGoneResult = static_cast<ZemResult>(0x8007048FU);
inline constexpr ZemResult kPositiveResult = 7;
inline constexpr std::uint32_t kFailsError = 121;
inline constexpr std::uint32_t kBusyError = 31;
inline constexpr std::uint32_t kGoneError = 1167;
// Each byte of garbage.
inline constexpr std::uint8_t kGarbageByte = 0xA5;
// How long a request to a device that is gone takes; all others take no time.
inline constexpr std::uint32_t kGoneMilliseconds = 60000;

struct Request {
  enum class Way : std::uint8_t { kSet, kGet, kRange, kIn, kOut };
  enum class Target : std::uint8_t {
    kVendor,
    kH264,
    kSkype,
    kTirella,
    kOrva,
    kEncoding,
    kProbe,
    kAmplifier,
    kTerminal,
    kMixer,
    kVolume,
  };

  Way way = Way::kSet;
  Target target = Target::kVendor;
  // A selector, a property, the command of a volume.
  std::uint16_t number = 0;
  std::uint32_t length = 0;

  bool operator==(const Request&) const = default;
  bool IsRead() const { return way != Way::kSet && way != Way::kOut; }
  // Of an extension unit's control.
  bool IsTransfer() const { return target < Target::kAmplifier; }
};

// "set vendor 1 [8]"
std::string TextOf(const Request& request);

// What an output holds in the end.
enum class Content : std::uint8_t {
  kUnsaid,     // as the operation ends: healthy when it is done, else untouched
  kUntouched,  // as before the call
  kHealthy,    // as after a healthy run
  kZeros,
  kNoise,  // the device's garbage
  kAny,
};

// Debugger texts. "{r}" and "{x}" stand for the request's result in
// hexadecimal, "{t}" for how many times the
// request has been made again before, "{*}" for anything.
using Says = std::vector<std::wstring>;

// A copy with another value in one of its fields.
template <class Type, class Field, class Value>
Type Changed(Type copy, Field Type::*field, Value&& value) {
  copy.*field = std::forward<Value>(value);
  return copy;
}

// What follows a fault.
struct Reaction {
  enum class Kind : std::uint8_t {
    kGoOn,   // the next request, as if nothing had been
    kEnd,    // the operation ends with `result`
    kOwn,    // it ends with the request's own result
    kTo,     // the request at `place` of `path`
    kAgain,  // the same request, up to `times` times, each after `pause` ms; then Rule::exhausted
  };

  Kind kind = Kind::kGoOn;
  ZemResult result = 0;
  std::uint8_t path = 0;
  std::uint8_t place = 0;
  std::uint8_t times = 0;
  std::uint32_t pause = 0;
  // The first output, and the second where that is another.
  Content content = Content::kUnsaid;
  Content second = Content::kUnsaid;
  // Volumes that the reaction leaves open, deliberately.
  std::int8_t volumes = 0;
  // It ends when all probes for a storage have been made, without another request.
  bool probes = false;
  // The pause before the next request is left out.
  bool hurries = false;
  Says says = {};

  Reaction With(Content first) const {
    Reaction changed = *this;
    changed.content = first;
    changed.second = first;
    return changed;
  }
  Reaction With(Content first, Content other) const {
    Reaction changed = With(first);
    changed.second = other;
    return changed;
  }
  Reaction Leaving(std::int8_t open) const { return Changed(*this, &Reaction::volumes, open); }
  Reaction Saying(Says texts) const { return Changed(*this, &Reaction::says, std::move(texts)); }
};

struct Rule {
  std::array<Reaction, kFaults> reactions = {};
  Reaction exhausted = {};

  const Reaction& operator[](Fault fault) const {
    const Fault told = fault == Fault::kStaysBusy ? Fault::kBusy : fault;
    return reactions.at(static_cast<std::size_t>(told));
  }
  // The rule with other reactions to these faults.
  Rule On(std::initializer_list<Fault> faults, const Reaction& reaction) const {
    Rule changed = *this;
    for (const Fault fault : faults) {
      changed.reactions.at(static_cast<std::size_t>(fault)) = reaction;
    }
    return changed;
  }
};

struct Step {
  Request request;
  Rule rule = {};
  std::uint32_t pause = 0;  // ms before it
  // Bytes of the first output that it fills, where that comes in pieces.
  std::uint32_t delivers = 0;
  // What the plan's number holds while it is under way; nothing: it is untouched.
  std::optional<std::uint32_t> number = std::nullopt;
  // What the first output holds when it ends the operation and the reaction does not say.
  Content leaves = Content::kUntouched;
  // The bytes written depend on what has been read.
  bool isFree = false;
  // A look at what the device is doing, and for how long to repeat it; it then ends with
  // 0x80000001.
  std::uint32_t pollsFor = 0;
  // A look whether the storage is there: the pause counts among the 600.
  bool isProbe = false;
  // Before it, and behind it whatever became of it.
  Says before = {};
  Says behind = {};
  // Its failure is not reported, as a volume's otherwise is.
  bool isSilent = false;

  Step Saying(Says texts) const { return Changed(*this, &Step::before, std::move(texts)); }
  Step SayingBehind(Says texts) const { return Changed(*this, &Step::behind, std::move(texts)); }
  Step Silent() const { return Changed(*this, &Step::isSilent, true); }
  Step Delivering(std::uint32_t bytes) const { return Changed(*this, &Step::delivers, bytes); }
  Step Numbered(std::optional<std::uint32_t> held) const {
    return Changed(*this, &Step::number, held);
  }
  Step Leaving(Content content) const { return Changed(*this, &Step::leaves, content); }
  Step Free() const { return Changed(*this, &Step::isFree, true); }
  Step Polling(std::uint32_t milliseconds) const {
    return Changed(*this, &Step::pollsFor, milliseconds);
  }
  Step Probing() const { return Changed(*this, &Step::isProbe, true); }
};

// Requests in turn, and how it ends behind the last.
struct Path {
  std::vector<Step> steps;
  ZemResult result = 0;
  std::uint32_t pause = 0;                   // ms behind the last
  std::optional<std::uint32_t> number = {};  // nothing: that of the healthy run
  Content content = Content::kHealthy;       // of the outputs, where no reaction has said another
  std::int8_t volumes = 0;                   // how many more are open
  Says says = {};
};

struct Plan {
  std::vector<Path> paths;  // the first is the healthy one
  // The first output comes in pieces.
  bool isInPieces = false;
  // Which output is the number; none: -1.
  int number = -1;
  // COM initialisations that stay, besides those of searches and of reads.
  int com = 0;
  // Is told to the simulated camera's vendor unit before, on its VCP channel.
  std::vector<std::uint8_t> before = {};
  // The simulated camera has a serial flash that is protected.
  bool isProtected = false;
};

// Null for a name that has none.
const Plan* FindPlan(std::string_view name);
std::size_t PlanCount();

}  // namespace zem::testing::sweep
