#include "tests/sweep/follower.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>

namespace zem::testing::sweep {
namespace {

// How often a storage is looked for, and how long each look waits.
constexpr std::uint32_t kMostProbes = 600;
constexpr std::uint32_t kProbeMilliseconds = 500;

std::string Hexadecimal(ZemResult result) {
  std::array<char, 16> text = {};
  std::snprintf(text.data(), text.size(), "0x%08X", static_cast<unsigned>(result));
  return text.data();
}

void Replace(std::wstring& text, std::wstring_view what, const std::wstring& by) {
  if (const std::size_t at = text.find(what); at != std::wstring::npos) {
    text.replace(at, what.size(), by);
  }
}

std::wstring Formatted(const wchar_t* format, std::uint32_t number) {
  std::array<wchar_t, 32> text = {};
  std::swprintf(text.data(), text.size(), format, number);
  return text.data();
}

// Whether a text is the wanted one, in which "{*}" stands for anything.
bool Matches(std::wstring_view text, std::wstring_view wanted) {
  constexpr std::wstring_view kAnything = L"{*}";
  const std::size_t at = wanted.find(kAnything);
  if (at == std::wstring_view::npos) {
    return text == wanted;
  }
  return text.starts_with(wanted.substr(0, at)) &&
         text.ends_with(wanted.substr(at + kAnything.size()));
}

// The texts are ASCII.
std::string Narrow(const Says& texts) {
  std::string narrow;
  for (const std::wstring& text : texts) {
    narrow.append(text.begin(), text.end());
  }
  return narrow;
}

Content Or(Content said, Content otherwise) { return said != Content::kUnsaid ? said : otherwise; }

}  // namespace

ZemResult ResultOf(Fault fault) {
  switch (fault) {
    case Fault::kFails:
      return kFailsResult;
    case Fault::kFailsFull:
      return kFailsFullResult;
    case Fault::kGone:
      return kGoneResult;
    case Fault::kPositive:
      return kPositiveResult;
    default:
      return 0;
  }
}

std::uint32_t ErrorOf(Fault fault) {
  switch (fault) {
    case Fault::kFails:
    case Fault::kFailsFull:
      return kFailsError;
    case Fault::kBusy:
    case Fault::kStaysBusy:
      return kBusyError;
    case Fault::kGone:
      return kGoneError;
    default:
      return 0;
  }
}

Answer Follower::Next(const Request& request, std::span<const std::uint8_t> sent,
                      std::uint32_t milliseconds, std::size_t said) {
  ++requests_;
  if (request.IsTransfer() && request.way == Request::Way::kGet) {
    ++reads_;
  }
  if (isOver_) {
    Complain("request " + std::to_string(requests_) + ", " + TextOf(request) + ", behind the end");
    return {Fault::kFails, {}};
  }
  if (!(step().request == request)) {
    Complain("request " + std::to_string(requests_) + " is " + TextOf(request) + ", not " +
             TextOf(step().request));
    isOver_ = true;
    return {Fault::kFails, {}};
  }
  if (milliseconds != elapsed_) {
    Complain("request " + std::to_string(requests_) + ", " + TextOf(request) + ", after " +
             std::to_string(milliseconds) + " ms, not " + std::to_string(elapsed_));
    elapsed_ = milliseconds;
  }
  if (said != says_.size()) {
    Complain(std::to_string(said) + " texts come before request " + std::to_string(requests_) +
             ", " + TextOf(request) + ", not " + std::to_string(says_.size()));
  }
  CheckSent(request, sent);
  const auto scheduled = schedule_.find(requests_);
  Fault fault = scheduled != schedule_.end() ? scheduled->second : Fault::kNone;
  staysBusy_ = staysBusy_ || fault == Fault::kStaysBusy;
  if (staysBusy_) {
    fault = Fault::kStaysBusy;
  }
  isGone_ = isGone_ || fault == Fault::kGone;
  if (isGone_) {
    fault = Fault::kGone;
    elapsed_ += kGoneMilliseconds;
  }
  isFaulty_ = isFaulty_ || fault != Fault::kNone;
  Answer answer = {fault, AnswerTo(request)};
  static const Reaction kHealthy;
  Apply(fault != Fault::kNone ? step().rule[fault] : kHealthy, fault);
  return answer;
}

void Follower::Say(const Says& texts, Fault fault) {
  for (std::wstring text : texts) {
    Replace(text, L"{r}", Formatted(L"%X", static_cast<std::uint32_t>(ResultOf(fault))));
    Replace(text, L"{x}", Formatted(L"%x", static_cast<std::uint32_t>(ResultOf(fault))));
    Replace(text, L"{t}", Formatted(L"%u", tries_));
    says_.push_back(std::move(text));
  }
}

// What is said of the request itself: of each write to a unit what it came to, of a volume's
// command that it has failed for good.
void Follower::SayOfRequest(const Reaction& reaction, Fault fault) {
  const Request& request = step().request;
  if (request.IsTransfer() && request.way == Request::Way::kSet) {
    constexpr std::uint32_t kFirstUnit = 2;
    says_.push_back(L"[EXT_Set]Node ID = " +
                    std::to_wstring(kFirstUnit + static_cast<std::uint32_t>(request.target)) +
                    L", hr = " + Formatted(L"%X", static_cast<std::uint32_t>(ResultOf(fault))) +
                    L", Len:" + std::to_wstring(request.length) + L"\r\n");
  }
  const bool isRepeated = reaction.kind == Reaction::Kind::kAgain && tries_ < reaction.times;
  if (request.target == Request::Target::kVolume && !step().isSilent && !isRepeated &&
      ErrorOf(fault) != 0) {
    says_.push_back((request.IsRead() ? L"SendScsiCmdIIn Failed, Erroe=0x"
                                      : L"SendScsiCmdIOut Failed, Erroe=0x") +
                    Formatted(L"%X", ErrorOf(fault)) + L" \r\n");
  }
  if (!isRepeated) {
    Say(step().behind);
  }
}

void Follower::CheckSaid(const std::vector<std::wstring>& said) {
  if (!std::equal(said.begin(), said.end(), says_.begin(), says_.end(), Matches)) {
    Complain("it says:\n" + Narrow(said) + "not:\n" + Narrow(says_));
  }
}

// The bytes of a healthy run go out also behind a fault, unless they depend on what was read.
void Follower::CheckSent(const Request& request, std::span<const std::uint8_t> sent) {
  if (recording_ == nullptr || (step().isFree && isFaulty_)) {
    return;
  }
  const auto& healthy = plan_.paths[0].steps;
  const auto equals = [&](std::size_t place) {
    const Bytes& bytes = recording_->transfers[place].sent;
    return std::equal(bytes.begin(), bytes.end(), sent.begin(), sent.end());
  };
  if (path_ == 0) {
    if (!equals(place_)) {
      Complain("request " + std::to_string(requests_) + ", " + TextOf(request) +
               ", does not send what a healthy run sends");
    }
    return;
  }
  bool isKnown = false;
  for (std::size_t place = 0; place < healthy.size(); ++place) {
    if (healthy[place].request == request) {
      isKnown = true;
      if (equals(place)) {
        return;
      }
    }
  }
  if (isKnown) {
    Complain("request " + std::to_string(requests_) + ", " + TextOf(request) +
             ", sends what a healthy run never sends");
  }
}

// What a healthy device delivers: of a request that no healthy run makes, zeros.
Bytes Follower::AnswerTo(const Request& request) const {
  if (!request.IsRead() || recording_ == nullptr) {
    return {};
  }
  if (path_ == 0) {
    return recording_->transfers[place_].answer;
  }
  const auto& healthy = plan_.paths[0].steps;
  const auto known = std::find_if(healthy.begin(), healthy.end(),
                                  [&request](const Step& step) { return step.request == request; });
  return known != healthy.end()
             ? recording_->transfers[static_cast<std::size_t>(known - healthy.begin())].answer
             : Bytes(request.length);
}

void Follower::Deliver(Content content) {
  pieces_.push_back({delivered_, step().delivers, content});
  delivered_ += step().delivers;
}

void Follower::Apply(const Reaction& first, Fault fault) {
  SayOfRequest(first, fault);
  if (first.kind == Reaction::Kind::kAgain && tries_ < first.times) {
    Say(first.says);
    ++tries_;
    elapsed_ += first.pause;
    return;
  }
  const Reaction& reaction = first.kind == Reaction::Kind::kAgain ? step().rule.exhausted : first;
  Say(reaction.says, fault);
  volumes_ += reaction.volumes;
  switch (reaction.kind) {
    case Reaction::Kind::kEnd:
      End(reaction, reaction.result);
      return;
    case Reaction::Kind::kOwn:
      End(reaction, ResultOf(fault));
      return;
    case Reaction::Kind::kTo:
      if (step().pollsFor > 0 && elapsed_ - *pollStart_ >= step().pollsFor) {
        Say({L"[ERR] Burning does not end.\r\n"});
        End({}, ZEM_E_DEVICE_REFUSED);
        return;
      }
      Enter(reaction.path, reaction.place, reaction.hurries);
      return;
    case Reaction::Kind::kGoOn:
    case Reaction::Kind::kAgain:
      break;
  }
  if (plan_.isInPieces) {
    Deliver(Or(reaction.content, plan_.paths[path_].content));
  } else {
    first_ = Or(reaction.content, first_);
    second_ = Or(reaction.second, second_);
  }
  Enter(path_, place_ + 1, false);
}

// Goes to a step, or behind the last.
void Follower::Enter(std::size_t path, std::size_t place, bool hurries) {
  path_ = path;
  place_ = place;
  tries_ = 0;
  staysBusy_ = false;
  const Path& entered = plan_.paths[path];
  if (place < entered.steps.size()) {
    if (step().pollsFor > 0 && !pollStart_) {
      pollStart_ = elapsed_;
    }
    elapsed_ += hurries ? 0 : step().pause;
    probes_ += step().isProbe ? 1 : 0;
    Say(step().before);
    return;
  }
  Say(entered.says);
  isOver_ = true;
  isDone_ = true;
  result_ = entered.result;
  elapsed_ += entered.pause;
  volumes_ += entered.volumes;
  first_ = Or(first_, entered.content);
  second_ = Or(second_, first_);
  number_ = entered.number;
}

void Follower::End(const Reaction& reaction, ZemResult result) {
  isOver_ = true;
  result_ = result;
  elapsed_ += reaction.pause;
  if (reaction.probes) {
    elapsed_ += (kMostProbes - probes_) * kProbeMilliseconds;
  }
  if (plan_.isInPieces && reaction.content != Content::kUnsaid) {
    Deliver(reaction.content);
  }
  first_ = Or(reaction.content, step().leaves);
  second_ = reaction.second;
  number_ = step().number;
}

void Follower::Finish(ZemResult result, std::uint32_t milliseconds,
                      const std::vector<std::wstring>& said) {
  if (!isOver_) {
    Complain("it ends before " + TextOf(step().request));
    return;
  }
  if (result != result_) {
    Complain("the result is " + Hexadecimal(result) + ", not " + Hexadecimal(result_));
  }
  if (milliseconds != elapsed_) {
    Complain("it takes " + std::to_string(milliseconds) + " ms, not " + std::to_string(elapsed_));
  }
  CheckSaid(said);
}

void Follower::CheckBytes(const std::string& name, Content content, std::size_t index,
                          std::size_t offset, std::span<const std::uint8_t> before,
                          std::span<const std::uint8_t> after) {
  const auto isEach = [&after](std::uint8_t value) {
    return std::all_of(after.begin(), after.end(),
                       [value](std::uint8_t byte) { return byte == value; });
  };
  const auto equals = [&after](std::span<const std::uint8_t> wanted) {
    return std::equal(after.begin(), after.end(), wanted.begin(), wanted.end());
  };
  switch (content) {
    case Content::kUnsaid:
    case Content::kUntouched:
      if (!equals(before)) {
        Complain(name + " is touched");
      }
      return;
    case Content::kHealthy:
      if (!equals(std::span(recording_->outputs.at(index)).subspan(offset, after.size()))) {
        Complain(name + " is not as after a healthy run");
      }
      return;
    case Content::kZeros:
      if (!isEach(0)) {
        Complain(name + " is not zeros");
      }
      return;
    case Content::kNoise:
      if (!isEach(kGarbageByte)) {
        Complain(name + " is not what the device said");
      }
      return;
    case Content::kAny:
      return;
  }
}

void Follower::CheckNumber(std::span<const std::uint8_t> before,
                           std::span<const std::uint8_t> after) {
  if (!number_) {
    CheckBytes("the number", isDone_ ? Content::kHealthy : Content::kUntouched,
               static_cast<std::size_t>(plan_.number), 0, before, after);
    return;
  }
  std::uint32_t held = 0;
  for (std::size_t index = 4; index-- > 0;) {
    held = held << 8 | after[index];
  }
  if (held != *number_) {
    Complain("the number is " + std::to_string(held) + ", not " + std::to_string(*number_));
  }
}

void Follower::CheckOutput(std::size_t index, std::span<const std::uint8_t> before,
                           std::span<const std::uint8_t> after) {
  if (recording_ == nullptr) {
    return;
  }
  const std::string name = "output " + std::to_string(index + 1);
  const bool isNumber = static_cast<int>(index) == plan_.number;
  const bool isSaid = index > 0 && !isDone_ && !plan_.isInPieces && second_ != Content::kUnsaid;
  if (isNumber && !isSaid) {
    CheckNumber(before, after);
    return;
  }
  if (index == 0 && plan_.isInPieces) {
    for (const Piece& piece : pieces_) {
      CheckBytes(name + " from " + std::to_string(piece.offset), piece.content, index, piece.offset,
                 before.subspan(piece.offset, piece.length),
                 after.subspan(piece.offset, piece.length));
    }
    CheckBytes(name + " behind " + std::to_string(delivered_), Content::kUntouched, index,
               delivered_, before.subspan(delivered_), after.subspan(delivered_));
    return;
  }
  if (index == 0) {
    CheckBytes(name, first_, index, 0, before, after);
  } else if (plan_.isInPieces) {
    CheckBytes(name, isDone_ ? Content::kHealthy : Or(second_, Content::kUntouched), index, 0,
               before, after);
  } else {
    CheckBytes(name, Or(second_, first_), index, 0, before, after);
  }
}

}  // namespace zem::testing::sweep
