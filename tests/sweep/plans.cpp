// The plans of all exports, in the order of the list of exports.
#include <algorithm>
#include <cwchar>
#include <utility>

#include "tests/sweep/plan.h"

namespace zem::testing::sweep {
namespace {

using enum Fault;
using enum Content;
using enum Request::Target;
using Way = Request::Way;
using Target = Request::Target;
using Steps = std::vector<Step>;

constexpr ZemResult kRefused = ZEM_E_REFUSED;
constexpr ZemResult kDeviceRefused = ZEM_E_DEVICE_REFUSED;
constexpr ZemResult kBufferTooSmall = ZEM_E_BUFFER_TOO_SMALL;
constexpr ZemResult kNoDevice = ZEM_E_NO_DEVICE;
constexpr ZemResult kFail = ZEM_E_FAIL;

// ---- Requests ----

Request Set(std::uint16_t selector, std::uint32_t length = 8, Target target = kVendor) {
  return {Way::kSet, target, selector, length};
}
Request Get(std::uint16_t selector, std::uint32_t length = 8, Target target = kVendor) {
  return {Way::kGet, target, selector, length};
}
Request In(std::uint16_t command, std::uint32_t length) {
  return {Way::kIn, kVolume, command, length};
}
Request Out(std::uint16_t command, std::uint32_t length) {
  return {Way::kOut, kVolume, command, length};
}

// ---- Reactions ----

const Reaction kGoOn = {};
const Reaction kOwn = {.kind = Reaction::Kind::kOwn};

Reaction End(ZemResult result) { return {.kind = Reaction::Kind::kEnd, .result = result}; }
Reaction To(std::uint8_t path, std::size_t place = 0) {
  return {.kind = Reaction::Kind::kTo, .path = path, .place = static_cast<std::uint8_t>(place)};
}
Reaction Again(std::uint8_t times, std::uint32_t pause) {
  return {.kind = Reaction::Kind::kAgain, .times = times, .pause = pause};
}

// ---- Rules ----

// Whatever becomes of the request is not looked at.
const Rule kIgnored = {};

// A failure is answered by `reaction`; a request that is done is none, however.
Rule Failing(const Reaction& reaction) {
  return kIgnored.On({kFails, kFailsFull, kGone}, reaction);
}
Rule Ends(ZemResult result) { return Failing(End(result)); }
Rule Returned() { return Failing(kOwn); }
// Any result but 0 is returned.
Rule Strict() { return Returned().On({kPositive}, kOwn.With(kHealthy)); }

// The reply to most commands: that it cannot be read is not looked at, its status is. The outputs
// are then those of a reply of zeros.
Rule Reply(Content unread = kZeros, ZemResult refusal = kDeviceRefused) {
  return kIgnored.On({kFails, kGone, kShort}, kGoOn.With(unread))
      .On({kFailsFull, kGarbage}, End(refusal));
}

// A reply whose result is returned; its status is not looked at.
Rule ReturnedReply() { return Strict(); }

// A reply whose status comes first, then its result.
Rule JudgedReply() { return Strict().On({kFailsFull, kGarbage}, End(kDeviceRefused)); }

// What is read goes to the caller as it comes; a failure is answered by `reaction`, and any other
// result returned.
Rule Direct(const Reaction& reaction) {
  return kIgnored.On({kFails, kGone}, reaction.With(kUntouched))
      .On({kFailsFull}, reaction.With(kNoise))
      .On({kShort}, kGoOn.With(kAny))
      .On({kGarbage}, kGoOn.With(kNoise))
      .On({kPositive}, kOwn.With(kHealthy));
}

// The raw reply goes to the caller, zeros where none was read; its result is returned.
Rule RawReply() { return Direct(kOwn).On({kFails, kGone}, kOwn.With(kZeros)); }

// The same, but that it cannot be read is not looked at, and its status is.
Rule RawJudgedReply() {
  return kIgnored.On({kFails, kGone}, kGoOn.With(kZeros))
      .On({kShort}, kGoOn.With(kAny))
      .On({kFailsFull, kGarbage}, End(kDeviceRefused).With(kNoise));
}

// A command to a volume: sent up to six times while it fails with error 31.
Rule Scsi(const Reaction& reaction) {
  Rule rule = Failing(reaction).On({kBusy}, Again(5, 500));
  rule.exhausted = reaction;
  return rule;
}

// A transfer that is tried up to six times whatever it fails with.
Rule Retried(const std::wstring& retry, const Reaction& reaction) {
  Rule rule = Failing(Again(5, 5).Saying({retry}));
  rule.exhausted = reaction;
  return rule;
}

// ---- Plans ----

Plan Of(Steps steps, ZemResult result = 0) { return {{{std::move(steps), result}}}; }

// Opens, closes, or asks nothing but the list of devices.
Plan NoRequests(int com = 0) {
  Plan plan = Of({});
  plan.com = com;
  return plan;
}

Steps operator+(Steps left, const Steps& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}
Steps Times(std::size_t count, const Step& step) { return Steps(count, step); }

Plan Command(std::uint16_t command, std::uint16_t reply, Rule rule = Reply(),
             std::uint32_t length = 8) {
  return Of({{Set(command, length), Ends(kNoDevice)}, {Get(reply, length), std::move(rule)}});
}
Plan Isp(Content unread = kZeros, ZemResult refusal = kDeviceRefused) {
  return Command(1, 2, Reply(unread, refusal));
}
Plan Vcp(ZemResult refusal = kDeviceRefused) { return Command(4, 5, Reply(kZeros, refusal)); }

// A command whose write is returned when it fails.
Plan ReturnedCommand(Rule reply, std::uint16_t command = 1) {
  const auto replySelector = static_cast<std::uint16_t>(command + 1);
  return Of({{Set(command), Returned()}, {Get(replySelector), std::move(reply)}});
}

Plan One(const Request& request, Rule rule) { return Of({{request, std::move(rule)}}); }

// ---- Raw access ----

Plan RawSet() {
  return One(Set(1), kIgnored.On({kFails, kGone}, kOwn.With(kZeros))
                         .On({kFailsFull}, kOwn.With(kHealthy))
                         .On({kShort}, kGoOn.With(kZeros))
                         .On({kGarbage}, kGoOn.With(kAny))
                         .On({kPositive}, kOwn.With(kHealthy)));
}
Plan RawGet() {
  return One(Get(2), kIgnored.On({kFails, kGone}, kOwn.With(kUntouched, kZeros))
                         .On({kFailsFull}, kOwn.With(kNoise, kHealthy))
                         .On({kShort}, kGoOn.With(kAny, kAny))
                         .On({kGarbage}, kGoOn.With(kNoise, kHealthy))
                         .On({kPositive}, kOwn.With(kHealthy, kHealthy)));
}

// ---- Registers, identification, image tuning ----

Plan ReadCodecReg() {
  return Of(
      {{Set(4), Returned()},
       {Set(4), Returned()},
       {Get(5), Returned().On({kShort}, kGoOn.With(kZeros)).On({kGarbage}, kGoOn.With(kNoise))}});
}

Plan GetDeviceInfo(std::uint32_t length) {
  return One(Get(10, length),
             Ends(kNoDevice).On({kShort}, kGoOn.With(kAny)).On({kGarbage}, kGoOn.With(kNoise)));
}

// Nine numbers, each asked for by itself. One whose reply cannot be read is that before it.
Plan GetAFACC() {
  Steps steps;
  for (int number = 0; number < 9; ++number) {
    steps.push_back({Set(1), Ends(kNoDevice)});
    steps.push_back(Step{Get(2), Reply(kAny)}.Delivering(4));
  }
  Plan plan = Of(steps);
  plan.isInPieces = true;
  return plan;
}

Plan GetAWBGain() {
  return Of({{Set(1), Failing(kOwn.With(kZeros))},
             {Get(2), RawReply().On({kShort}, kGoOn.With(kZeros))}});
}

Plan GetMiscSetting() {
  return ReturnedCommand(
      JudgedReply().On({kFails, kGone}, kOwn.With(kZeros)).On({kShort}, kGoOn.With(kZeros)));
}

Plan EnableManualGainCtrl() {
  return Of({{{Way::kGet, kAmplifier, 7, 8}, Returned()},
             Step{{Way::kSet, kAmplifier, 7, 8}, kIgnored}.Free(),
             {Set(1), Returned()},
             {Get(2), JudgedReply()}});
}

// The serial number is read whatever became of the command before, whose failure is told.
Plan GetSensorSN() {
  const Rule read = kIgnored.On({kFails, kGone}, kGoOn.With(kUntouched))
                        .On({kShort}, kGoOn.With(kAny))
                        .On({kFailsFull, kGarbage}, kGoOn.With(kNoise));
  return {{{{{Set(4), Failing(To(1))}, {Get(11, 32), read}}}, {{{Get(11, 32), read}}, kNoDevice}}};
}

// A version below 0x14 is told as 0x12, which is also that of nothing.
Plan GetSkypeXUVersion() {
  return One(Get(1, 1, kSkype), Ends(kRefused).On({kGarbage}, kGoOn.With(kNoise)));
}

Plan SetVideoRecMode() { return One(Set(1), Ends(kNoDevice).On({kPositive}, kOwn)); }

Plan Standard(Way way, Target target, std::uint32_t length) {
  return One({way, target, 0, length}, way == Way::kSet ? Strict() : Direct(kOwn));
}

// ---- Bulk data ----

Plan SendData() {
  // An address stands where the length is announced.
  const Says end = {L" Size(96bytes)Time ={*}ms.\r\n"};
  const Reaction cannot = End(0).Saying({L"[ERR]Len = {*}, hr = 20\r\n", end.front()});
  Plan plan = Of(Steps{{Set(4), Ends(kNoDevice)}} +
                 Times(3, {Set(3, 32), Retried(L"SendData: retry ({t}).\r\n", cannot)}));
  plan.paths[0].says = end;
  return plan;
}

// The probe says whether 512 bytes go at once; 32 do in any case.
Step SpeedProbe() { return {Get(13, 512), Failing(To(1)).On({kShort}, To(1))}; }

const Says kFast = {L"[MSG] Set Speeed:: 512Bytes, CS=0xD, Len=0x200\r\n"};
const Says kSlow = {L"[MSG] Set Speeed:: 32Bytes, CS=0x3, Len=0x20\r\n"};

// The steps of a path, the first of which is preceded by these texts.
Steps Telling(const Says& says, Steps steps) {
  steps.front().before = says;
  return steps;
}

// Chunks of an image by a rule, which says what it says of a chunk that fails.
Steps Chunks(std::size_t count, const Request& request, Rule rule, const std::wstring& failed) {
  for (const Fault fault : {kFails, kFailsFull, kGone}) {
    rule = rule.On({fault}, rule[fault].Saying({failed}));
  }
  return Times(count, {request, rule});
}
Steps FastChunks(std::size_t count, const Rule& rule) {
  return Telling(kFast, Chunks(count, Set(13, 512), rule,
                               L"[ERR] ZEMAPI_WriteFWData: Len = 512, hr = {r}\r\n"));
}
Steps SlowChunks(std::size_t count, const Rule& rule) {
  return Telling(
      kSlow, Chunks(count, Set(3, 32), rule, L"[ERR] ZEMAPI_WriteFWData: Len = 32, hr = {r}\r\n"));
}
Steps ThreeFastChunks(const Rule& rule) { return FastChunks(3, rule); }
Steps ManySlowChunks(const Rule& rule) { return SlowChunks(35, rule); }

constexpr std::initializer_list<std::uint8_t> kAnnounced = {1, 0, 3, 0, 0, 0, 0, 0};

Plan WriteFWData() {
  Plan plan = {{{Steps{SpeedProbe()} + ThreeFastChunks(Ends(kNoDevice))},
                {ManySlowChunks(Ends(kNoDevice))}}};
  plan.before = kAnnounced;
  return plan;
}

// Without a handle the data control has 64 or 32 bytes; that of the camera has 32.
Step LengthProbe() { return {Get(3, 64), kIgnored.On({kGarbage}, To(1))}; }
Steps ShortChunks(const Rule& rule) {
  Steps steps = Chunks(3, Set(3, 32), rule, L"[ERR] Send Data Len = 32, hr = {r}\r\n");
  steps.front().pause = 300;
  return steps;
}
Steps LongChunks(const Rule& rule) {
  Steps steps = Chunks(2, Set(3, 64), rule, L"[ERR] Send Data Len = 64, hr = {r}\r\n");
  steps.front().pause = 300;
  return steps;
}

Plan WriteFWDataWithoutHandle() {
  Plan plan = {
      {{Steps{LengthProbe()} + ShortChunks(Ends(kNoDevice))}, {LongChunks(Ends(kNoDevice))}}};
  plan.before = kAnnounced;
  return plan;
}

// 70 bytes for a buffer of 100: how much goes at once is asked by reading into the buffer.
Plan ReadFWData() {
  const Steps begin = {Step{Set(4), Ends(kDeviceRefused)}.Leaving(kAny),
                       Step{Get(5), Failing(End(0).With(kAny, kZeros))
                                        .On({kShort}, End(0).With(kAny, kZeros))
                                        .On({kFailsFull, kGarbage}, End(kBufferTooSmall))}
                           .Leaving(kAny)};
  const Rule piece = kIgnored.On({kFails, kFailsFull, kShort, kGarbage, kGone}, kGoOn.With(kAny));
  const Step probe = {Get(3, 100),
                      Ends(kDeviceRefused).On({kFailsFull, kGarbage}, To(2)).On({kShort}, To(1))};
  const auto path = [&](const Steps& first, std::size_t count, std::uint32_t length,
                        Content content) {
    return Path{.steps = first + begin + Times(count, {Get(3, length), piece}),
                .number = 70,
                .content = content};
  };
  Plan plan = {{path({probe}, 3, 32, kHealthy), path({}, 70, 1, kAny), path({}, 1, 100, kAny)}};
  plan.number = 1;
  return plan;
}

Plan ReadPartialFlashData() {
  const Reaction failed = kOwn.Saying({L"[ERR] ZEMAPI_ReadPartialFlashData: hr = 0x{x}.\r\n"});
  const Rule chunk = Retried(L"[ReadData]: retry ({t}).\r\n", failed)
                         .On({kShort}, kGoOn.With(kAny))
                         .On({kGarbage}, kGoOn.With(kNoise));
  const auto path = [&chunk](Steps before, std::uint16_t selector, std::uint32_t length,
                             const Says& speed, Content content) {
    Steps steps;
    for (std::uint32_t done = 0; done < 600; done += length) {
      steps.push_back(Step{Get(selector, length), chunk}.Delivering(std::min(600 - done, length)));
    }
    return Path{.steps = std::move(before) + Telling(speed, steps),
                .content = content,
                .says = {L"ZEMAPI_ReadPartialFlashData readdata:Size(600),Time ={*}ms.\r\n"}};
  };
  const Steps begin = {
      Step{Set(4), Ends(kDeviceRefused)}.Saying({L"ZEMAPI_ReadPartialFlashData:Size(600)\r\n"}),
      SpeedProbe()};
  Plan plan = {{path(begin, 8, 512, kFast, kHealthy), path({}, 11, 32, kSlow, kZeros)}};
  plan.isInPieces = true;
  return plan;
}

// ---- Updates ----

// Looks every 30 ms until the burn is done, for ten minutes; a status that cannot be read is none.
Step Poll(std::uint8_t again) {
  return Step{Get(5), Failing(To(again)).On({kGarbage}, To(again)), 30}.Polling(600000);
}

// One look at the end.
Step Look(std::uint32_t pause) {
  return {Get(5), Ends(kDeviceRefused).On({kGarbage}, End(kDeviceRefused)), pause};
}

struct Update {
  Step probe;
  Steps (*chunks)(const Rule& rule);
  Steps (*otherChunks)(const Rule& rule);
  // A chunk that cannot be sent ends it; else the burn is ordered all the same.
  bool stops;
  Step end;
  std::uint32_t grace = 0;  // ms behind a burn that is done at the first look
  Steps before = {};
};

Plan Updating(const Update& update) {
  const Rule chunk = update.stops ? Ends(kNoDevice) : Failing(To(2));
  const Steps order = {{Set(4), Ends(kNoDevice)}, update.end};
  const Steps announce = {{Set(4), Ends(kNoDevice)}, {Get(5), Reply()}, update.probe};
  const auto path = [&update](Steps steps) {
    return Path{.steps = std::move(steps), .pause = update.grace};
  };
  return {{path(update.before + announce + update.chunks(chunk) + order),
           path(update.otherChunks(chunk) + order),
           path(order),
           {{update.end}}}};
}

Plan UpdatingAndPolling(bool stops) {
  return Updating({SpeedProbe(), ThreeFastChunks, ManySlowChunks, stops, Poll(3), 1000});
}
Plan UpdatingWithoutHandle(bool stops, const Step& end, std::uint32_t grace) {
  return Updating({LengthProbe(), ShortChunks, LongChunks, stops, end, grace});
}

// The registers of a serial flash, whose protection is read and cleared before. What cannot be
// written is passed over, what cannot be read is 0.
Steps Unprotect(std::size_t announce) {
  const auto without = [](std::size_t place) {
    Reaction reaction = To(0, place);
    reaction.hurries = true;
    return reaction;
  };
  Steps steps;
  const auto write = [&steps](std::uint32_t pause = 0) {
    const std::size_t behind = steps.size() + 2;
    steps.push_back({Set(1), Failing(To(0, behind)), pause});
    steps.push_back({Get(2)});
  };
  const auto read = [&](std::size_t next, std::uint32_t pause = 0) {
    steps.push_back({Set(1), Failing(without(next)), pause});
    steps.push_back({Get(2), Failing(without(next)).On({kShort, kGarbage}, without(next))});
  };
  constexpr std::size_t kBehindTheClearing = 30;
  read(announce);  // whether it can be protected
  write();
  read(steps.size() + 2);  // the pins
  write();
  steps[steps.size() - 2].isFree = true;
  for (int count = 0; count < 3; ++count) {
    write();
  }
  read(kBehindTheClearing, 1);  // whether it is
  for (int count = 0; count < 7; ++count) {
    write(count == 3 ? 1 : 0);
  }
  write(1);
  return steps;
}

Plan UpdateFW517x() {
  constexpr std::size_t kUnprotecting = 32;
  Plan plan = Updating({SpeedProbe(), ThreeFastChunks, ManySlowChunks, false, Look(5000), 0,
                        Unprotect(kUnprotecting)});
  plan.isProtected = true;
  return plan;
}

Plan WriteInitialTable() {
  const auto sent = [](Steps chunks) {
    return std::move(chunks) + Steps{{Set(4), Ends(kNoDevice)}};
  };
  const Rule chunk = Failing(To(2));
  return {{{Steps{{Set(4), Ends(kNoDevice)}, {Get(5), Reply()}, SpeedProbe()} +
            sent(FastChunks(2, chunk))},
           {sent(SlowChunks(32, chunk))},
           {sent({})}}};
}

// ---- Non-volatile memory and tables ----

constexpr std::uint32_t kPiece = 29;

// Calls `add(done, count)` for each piece.
template <class Add>
void ForEachPiece(std::uint32_t length, std::uint32_t piece, Add add) {
  for (std::uint32_t done = 0; done < length; done += piece) {
    add(done, std::min(length - done, piece));
  }
}

Plan WriteNVMEM() {
  Plan plan = Of({});
  ForEachPiece(100, kPiece, [&](std::uint32_t done, std::uint32_t) {
    plan.paths[0].steps.push_back(Step{Set(16, 32), Strict()}.Numbered(done));
  });
  plan.paths[0].number = 100;
  plan.number = 0;
  return plan;
}

// Only what becomes of the reading counts, not of the request before it.
Steps MemoryRead(std::uint32_t length, Target target, std::uint16_t selector, const Rule& rule,
                 bool isCounted) {
  Steps steps;
  ForEachPiece(length, kPiece, [&](std::uint32_t done, std::uint32_t count) {
    const auto number = isCounted ? std::optional(done) : std::nullopt;
    steps.push_back(Step{Set(selector, 32, target), kIgnored}.Numbered(number));
    steps.push_back(Step{Get(selector, 32, target), rule}.Delivering(count).Numbered(number));
  });
  return steps;
}

Rule NvmemPiece() {
  return Strict()
      .On({kPositive}, kOwn)
      .On({kShort}, kGoOn.With(kAny))
      .On({kGarbage}, kGoOn.With(kNoise));
}

Plan ReadNVMEM() {
  Plan plan = Of(MemoryRead(100, kVendor, 16, NvmemPiece(), true));
  plan.paths[0].number = 100;
  plan.isInPieces = true;
  plan.number = 1;
  return plan;
}

// A piece is handed out before the result is looked at.
Rule HandedOutPiece() {
  return kIgnored.On({kFails, kGone}, kOwn.With(kZeros))
      .On({kFailsFull}, kOwn.With(kNoise))
      .On({kShort}, kGoOn.With(kAny))
      .On({kGarbage}, kGoOn.With(kNoise))
      .On({kPositive}, kOwn.With(kHealthy));
}

Plan WriteTirella() {
  Plan plan = Of(Times(9, {Set(4, 32, kTirella), Strict()}));
  for (Step& step : plan.paths[0].steps) {
    step.rule = step.rule.On({kPositive}, kOwn);
  }
  return plan;
}

Plan ReadTirella() {
  Plan plan = Of(MemoryRead(256, kTirella, 4, HandedOutPiece(), false));
  plan.isInPieces = true;
  plan.paths[0].number = 256;
  plan.number = 1;
  return plan;
}

Plan ReadMemory() {
  Plan plan = Of({});
  ForEachPiece(100, 16, [&plan](std::uint32_t, std::uint32_t count) {
    plan.paths[0].steps.push_back(Step{Get(8, 16), HandedOutPiece()}.Delivering(count));
  });
  plan.isInPieces = true;
  return plan;
}

// The mark is in the first two pieces, of which only the first matters; then the 88 bytes.
Plan OpenTableHandle() {
  const Step ask = {Set(16, 32)};
  const Rule mark = kIgnored.On({kFails, kFailsFull, kPositive, kGone}, End(kRefused))
                        .On({kShort, kGarbage}, To(1));
  Steps steps = {ask, {Get(16, 32), mark}, ask, {Get(16, 32)}};
  for (int piece = 0; piece < 4; ++piece) {
    steps.push_back(ask);
    steps.push_back({Get(16, 32), Strict()});
  }
  return {{{steps}, {{ask, {Get(16, 32)}}, kRefused}}};
}

// All 8,192 bytes are read. Without the first piece there is no table.
Steps WholeImage(const Rule& rule, const Reaction& withoutFirst) {
  Steps steps = MemoryRead(8192, kVendor, 16, rule, false);
  for (Step& step : steps) {
    step.delivers = 0;
  }
  steps[1].rule = steps[1].rule.On({kShort, kGarbage}, withoutFirst);
  return steps;
}

Plan ReadTable() { return Of(WholeImage(Strict().On({kPositive}, kOwn), kGoOn.With(kUntouched))); }

Plan WriteTable() {
  const Steps read = WholeImage(Strict().On({kPositive}, kOwn), To(1));
  // The size has been handed out when the entry is written.
  const Step write = {Set(16, 32),
                      Returned().On({kFails, kFailsFull, kPositive, kGone}, kOwn.With(kHealthy))};
  return {
      {{read + Steps{write}},
       {.steps = Steps(read.begin() + 2, read.end()), .result = kRefused, .content = kUntouched}}};
}

// ---- H.264 ----

// Two formats; without them the library's own list.
Steps FormatList(const Reaction& without, std::uint8_t cut, std::uint8_t garbage) {
  return {{Set(4), Failing(without)},
          {Get(5), Failing(without).On({kGarbage}, without)},
          {Get(11, 32), Failing(without).On({kShort}, To(cut)).On({kGarbage}, To(garbage))},
          {Get(11, 32)}};
}
// The garbage says 42,405 bytes, of which the first piece has been read.
constexpr std::size_t kGarbageList = 1325;

Plan GetH264FrameList() {
  return {{{FormatList(End(808), 1, 2), 70},
           {{{Get(11, 32)}}, 808},
           {Times(kGarbageList, {Get(11, 32)}), 65510}}};
}

// Probe, what the camera makes of it, commit, twice. No result is looked at.
Steps StartOnH264Unit(std::uint8_t path, std::size_t first) {
  Steps steps;
  for (int round = 0; round < 2; ++round) {
    const std::size_t commit = first + steps.size() + 2;
    steps.push_back(Step{Set(1, 48, kH264), Failing(To(path, commit))}.Free());
    steps.push_back({Get(1, 48, kH264)});
    steps.push_back(Step{Set(2, 48, kH264)}.Free());
  }
  return steps;
}

Plan SetH264FrameIndex() {
  return {{{FormatList(To(1), 2, 3) + StartOnH264Unit(0, 4)},
           {StartOnH264Unit(1, 0)},
           {Steps{{Get(11, 32)}} + StartOnH264Unit(2, 1)},
           {Times(kGarbageList, {Get(11, 32)}), kFail}}};
}

// By the Skype unit, or by the vendor unit where that is too new or does not say.
Plan SetH264Mode() {
  return {{{{{Get(1, 1, kSkype), Failing(To(1)).On({kGarbage}, To(1))},
             {Set(1, 1, kSkype), Ends(0)},
             {Set(15, 1, kSkype), Ends(0)}},
            1},
           {{{Set(4), Ends(kFail)}, {Set(4), Ends(0)}}, 1}}};
}

// ---- ROM boot ----

Says AddressTold(std::uint32_t place, std::uint32_t length, unsigned flag) {
  std::array<wchar_t, 80> text = {};
  std::swprintf(text.data(), text.size(), L"Adr=0x%X, Len=0x%X Flag=0x%X\r\n", place, length, flag);
  return {text.data()};
}

// What a write to a storage is.
struct Written {
  std::uint32_t place;
  std::uint32_t length;
  std::optional<std::uint32_t> address = {};  // the caller's meanwhile
  unsigned flag = 0;
};

const Reaction kFailed = End(kFail).Saying({L"Failed to transfer data to device.\r\n"});

Step Write(const Written& written, const Reaction& failed = kFailed) {
  return Step{Out(8, written.length), Scsi(failed), 10}
      .Numbered(written.address)
      .Saying(AddressTold(written.place, written.length, written.flag));
}

// A burn whose address is `number` behind it.
Plan Burning(Steps steps, std::uint32_t number) {
  Plan plan = Of(std::move(steps), 1);
  plan.paths[0].number = number;
  plan.number = 0;
  return plan;
}

Step OutCommand(std::uint16_t command, const Reaction& failed, std::uint32_t length = 0) {
  return {Out(command, length), Scsi(failed), 10};
}
Plan BootCommand(std::uint16_t command) { return Of({OutCommand(command, End(kFail))}); }

Plan SelectStorage(const std::wstring& storage, const Says& selected = {}) {
  const std::wstring failed = L"Failed to select storage type -> " + storage + L".\r\n";
  Plan plan = One(In(6, 4), Scsi(End(kFail).Saying({failed})));
  plan.paths[0].says = selected;
  return plan;
}
Plan SelectNand() {
  return SelectStorage(L"ZEM_STORAGE_SPI_NAND",
                       {L"Select storage type 'ZEM_STORAGE_SPI_NAND'\r\n"});
}

// A volume is asked what it is; `none` when it is no camera's.
Step Inquiry(const Reaction& none) {
  return Step{In(0x12, 36), Failing(none).On({kShort, kGarbage, kBusy}, none)}.Silent();
}
Step Identify(const Reaction& none) {
  return Step{In(1, 16), Scsi(none).On({kShort, kGarbage}, none)}.SayingBehind(
      {L"Set addr div = 1\r\n", L"Storage Address Divider=0x1 \r\n"});
}

// The volume of a letter that is no camera's stays open.
Plan OpenRomBoot() {
  const Reaction none = End(kFail).Leaving(1);
  return Of({Inquiry(none), Identify(none)});
}

Plan CloseRomBoot() {
  Plan plan = NoRequests();
  plan.paths[0].volumes = -1;
  return plan;
}

Steps Downloads() { return {OutCommand(2, End(kFail), 32768), OutCommand(2, End(kFail), 7680)}; }

Plan LoadMiniUVC() {
  Plan plan = Of(Downloads() + Steps{OutCommand(3, End(kFail).Leaving(-1))}, 1);
  plan.paths[0].volumes = -1;
  return plan;
}

// Looks for the storage 600 times, every 500 ms, and is content whether it comes or not.
Plan LoadUpdater() {
  const std::wstring notJumped = L"Long jump command failed.\r\n";
  const std::wstring looking = L"[MSG] Try to get Zem-Storage!\r\n";
  const std::wstring notFound = L"[Err] No Zem-Storage success!\r\n";
  Reaction never = End(1).Saying({notFound});
  never.probes = true;
  Reaction left = never.Leaving(-1).Saying({notJumped, looking, notFound});
  left.pause = 500;
  Step jump = OutCommand(3, kGoOn.Saying({notJumped}));
  jump.pause = 210;
  jump.rule = jump.rule.On({kGone}, left);
  const Reaction next = To(1).Leaving(1);
  Step inquiry = Inquiry(next).Probing();
  inquiry.rule = inquiry.rule.On({kGone}, never);
  inquiry.pause = 500;
  Step first = inquiry.Saying({looking});
  first.pause = 1000;
  Step identify = Identify(next);
  identify.rule = identify.rule.On({kGone}, never);
  const Says found = {L"[MSG] Get Zem-Storage success!\r\n"};
  return {{{.steps = Telling({L"[MSG] Read updater file success!\r\n",
                              L"[MSG] Start, Send updater data!\r\n"},
                             Downloads()) +
                     Steps{jump.Saying({L"[MSG] End, Send updater data!\r\n"}), first, identify},
            .result = 1,
            .says = found},
           {.steps = {inquiry, identify}, .result = 1, .says = found}}};
}

Plan ReadBootRegister() {
  return One(In(4, 1),
             Scsi(End(kFail)).On({kShort}, kGoOn.With(kZeros)).On({kGarbage}, kGoOn.With(kNoise)));
}
Plan ScsiCommand() {
  return One(In(0x12, 36),
             Scsi(End(kFail)).On({kShort}, kGoOn.With(kAny)).On({kGarbage}, kGoOn.With(kNoise)));
}

Plan EraseStorage() {
  return Of({Write({0x1000, 32768}), Write({0x9000, 32768}), Write({0x11000, 32768}),
             Write({0x19000, 2048})});
}
// A failed erase is told and passed over.
Plan BurnFw() {
  return Burning({Write({0x10000, 4096, 0x11000}, kGoOn.Saying(kFailed.says)),
                  Write({0x11000, 32768, 0x11000}), Write({0x19000, 7680, 0x19000}),
                  Write({0x10000, 4096, 0x1AE00})},
                 0x1B000);
}
Plan BurnPcCamFw() {
  return Burning({Write({0, 32768, 0, 1}), Write({0x8000, 11776, 0x8000})}, 0xAE00);
}
Plan BurnPcCamFwPnsV2() {
  return Burning({Write({0, 4096, 0x1000}), Write({0x1000, 32768, 0x1000}),
                  Write({0x9000, 7680, 0x9000}), Write({0, 4096, 0xAE00})},
                 0xAE00);
}
Plan UpdateLinuxFwPkg(std::uint32_t body) {
  return Of({Write({0x20000, 8192}), Write({body, 32768}), Write({body + 0x8000, 7680}),
             Write({0x20000, 8192})},
            1);
}
Plan PartialUpdateWithHeader() {
  return Burning({Write({0x10000, 4096, 0x10000}), Write({0x11000, 32768, 0x11000}),
                  Write({0x19000, 7680, 0x19000}), Write({0x10000, 4096, 0x1AE00})},
                 0x1AE00);
}
Plan PartialUpdate() {
  return Burning({Write({0x10000, 32768, 0x10000}), Write({0x18000, 11776, 0x18000})}, 0x1AE00);
}
Plan PartialRead() {
  const Rule read = Scsi(End(kFail).Saying({L"Usb transfer failed\r\n"}));
  Steps steps;
  for (std::uint32_t done = 0; done < 0x18800; done += 0x8000) {
    steps.push_back(Step{In(7, done < 0x18000 ? 32768 : 2048), read}.Numbered(done));
  }
  return Burning(steps, 0x18800);
}
// The sum of the 32-bit numbers of each piece is told.
Plan LoadFW2Memory() {
  Steps steps = {Write({0, 32768, 0}), Write({0x8000, 11776, 0x8000})};
  steps[0].before.insert(steps[0].before.begin(), L"ChkSum=0xAD510EEF\r\n");
  steps[1].before.insert(steps[1].before.begin(), L"ChkSum=0x11112165\r\n");
  return Burning(steps, 0xAE00);
}

// The format is only read.
Plan WriteStreamFormat() {
  Plan plan = One(Set(8, 13, kOrva), Returned().On({kPositive}, kOwn));
  plan.paths[0].content = kUntouched;
  return plan;
}

struct NamedPlan {
  const char* name;
  Plan plan;
};

std::vector<NamedPlan> MakePlans() {
  const Plan ispReturned = ReturnedCommand(ReturnedReply());
  const Plan ispJudged = ReturnedCommand(JudgedReply());
  const Plan opening = NoRequests(-1);
  const Plan probeSet = One(Set(23, 51, kProbe), Ends(kNoDevice).On({kPositive}, kOwn));
  const Plan commitSet = One(Set(24, 51, kProbe), Ends(kNoDevice).On({kPositive}, kOwn));
  return {
      // Opening and closing a camera
      {"ZEMAPI_OpenDevice", opening},
      {"ZEMAPI_OpenDeviceEx", opening},
      {"ZEMAPI_OpenZemDevice", opening},
      {"ZEMAPI_OpenDeviceByPath", opening},
      {"ZEMAPI_OpenDeviceByDevPath", opening},
      {"ZEMAPI_OpenDeviceBySourceFilter", opening},
      {"ZEMAPI_CloseDevice", opening},

      // Raw access to extension units
      {"ZEMAPI_UvcExtSet", RawSet()},
      {"ZEMAPI_UvcExtGet", RawGet()},
      {"ZEMAPI_ZemExtSet", RawSet()},
      {"ZEMAPI_ZemExtGet", RawGet()},
      {"ZEMAPI_UvcCheckXuGuid", NoRequests()},

      // Registers and vendor commands
      {"ZEMAPI_SetRegister", Isp()},
      {"ZEMAPI_GetRegister", Isp()},
      {"ZEMAPI_SetSensorRegister", Isp()},
      {"ZEMAPI_GetSensorRegister", Isp()},
      {"ZEMAPI_SetSensorRegisterW", Isp()},
      {"ZEMAPI_GetSensorRegisterW", Isp()},
      {"ZEMAPI_SetVCMRegister", Isp()},
      {"ZEMAPI_GetVCMRegister", Isp()},
      {"ZEMAPI_SetLensPos", Isp()},
      {"ZEMAPI_GetFWVersion", Isp()},
      {"?ZEMAPI_GetFWVersion@@YAJPEAXPEAD@Z", Isp(kZeros, kRefused)},
      {"ZEMAPI_GetCheckSumResult", Vcp(kRefused)},
      {"ZEMAPI_ReadCodecReg", ReadCodecReg()},
      {"ZEMAPI_WriteCodecReg", Of({{Set(4), Returned()}, {Set(4), Returned()}})},
      {"ZEMAPI_IspCommand", ReturnedCommand(RawReply())},
      {"ZEMAPI_VcpCommand", ReturnedCommand(RawReply(), 4)},
      {"ZEMAPI_IspCommandEx", Command(6, 7, RawJudgedReply(), 16)},
      {"ZEMAPI_VcpCommandEx", Command(14, 15, RawJudgedReply(), 16)},
      {"ZEMAPI_GetDeviceInfo", GetDeviceInfo(8)},

      // Image tuning and information
      {"ZEMAPI_GetFWBuildDate", Isp(kAny)},
      {"ZEMAPI_EnableAF", Isp()},
      {"ZEMAPI_EnableAE", Isp()},
      {"ZEMAPI_GetAFACC", GetAFACC()},
      {"ZEMAPI_SetVideoRecMode", SetVideoRecMode()},
      {"ZEMAPI_SetAWBGain", ispReturned},
      {"ZEMAPI_GetAWBGain", GetAWBGain()},
      {"ZEMAPI_EnableManualGainCtrl", EnableManualGainCtrl()},
      {"ZEMAPI_SetShadding", ispJudged},
      {"ZEMAPI_SetMiscSetting", ispJudged},
      {"ZEMAPI_GetMiscSetting", GetMiscSetting()},
      {"ZEMAPI_SetMjpgQuality", ispJudged},
      {"ZEMAPI_SetImageEffect", ispJudged},
      {"ZEMAPI_SetMaxQP", Vcp()},
      {"ZEMAPI_SetMinQP", Vcp()},
      {"ZEMAPI_GetSensorSN", GetSensorSN()},
      {"ZEMAPI_GetSkypeXUVersion", GetSkypeXUVersion()},

      // Standard camera, video and audio controls
      {"ZEMAPI_GetVideoProcAmp", Standard(Way::kGet, kAmplifier, 8)},
      {"ZEMAPI_SetVideoProcAmp", Standard(Way::kSet, kAmplifier, 8)},
      {"ZEMAPI_GetVideoProcAmpRange", Standard(Way::kRange, kAmplifier, 20)},
      {"ZEMAPI_GetCameraControl", Standard(Way::kGet, kTerminal, 8)},
      {"ZEMAPI_SetCameraControl", Standard(Way::kSet, kTerminal, 8)},
      {"ZEMAPI_GetCameraControlRange", Standard(Way::kRange, kTerminal, 20)},
      {"ZEMAPI_Get_IVideoProcAmp_Interface", NoRequests()},
      {"ZEMAPI_AudioOpenDeviceByPath", NoRequests()},
      {"ZEMAPI_AudioCloseDevice", NoRequests()},
      {"ZEMAPI_AudioSetVolume", Standard(Way::kSet, kMixer, 8)},

      // Bulk data
      {"ZEMAPI_SendData", SendData()},
      {"ZEMAPI_WriteFWData", WriteFWData()},
      {"ZEMAPI_ReadFWData", ReadFWData()},
      {"ZEMAPI_ReadPartialFlashData", ReadPartialFlashData()},

      // Firmware update
      {"ZEMAPI_UpdateFW_516x", UpdatingAndPolling(true)},
      {"ZEMAPI_UpdateFW_517x", UpdateFW517x()},
      {"ZEMAPI_UpdateFlash", UpdatingAndPolling(false)},
      {"ZEMAPI_UpdateCaliData", UpdatingAndPolling(false)},

      // Non-volatile memory and tables
      {"ZEMAPI_WriteNVMEM", WriteNVMEM()},
      {"ZEMAPI_ReadNVMEM", ReadNVMEM()},
      {"ZEMAPI_TIRELLA_WriteNVMEM", WriteTirella()},
      {"ZEMAPI_TIRELLA_ReadNVMEM", ReadTirella()},
      {"ZEMAPI_TIRELLA_LedCtrl", One(Set(2, 1, kTirella), kIgnored)},
      {"ZEMAPI_OpenTableHandle", OpenTableHandle()},
      {"ZEMAPI_WriteTableEx", One(Set(16, 32), kIgnored)},
      {"ZEMAPI_ReadTable", ReadTable()},
      {"ZEMAPI_WriteTable", WriteTable()},
      {"ZEMAPI_WriteInitialTable", WriteInitialTable()},

      // Calls without a handle
      {"ZEMUVCEXT_DoAF", Isp()},
      {"ZEMUVCEXT_SetFps", Isp()},
      {"ZEMUVCEXT_SetResolution", Isp()},
      {"ZEMUVCEXT_SetIFrame", Isp()},
      {"ZEMUVCEXT_SetVideoQuality", Isp()},
      {"ZEMUVCEXT_SetBitRate", Isp()},
      {"ZEMUVCEXT_SetFlickMode", Isp()},
      {"ZEMUVCEXT_GetRegister", Isp()},
      {"ZEMUVCEXT_SetRegister", Isp()},
      {"ZEMUVCEXT_GetSensorRegister", Isp()},
      {"ZEMUVCEXT_GetSensorRegisterW", Isp()},
      {"ZEMUVCEXT_SetSensorRegister", Isp()},
      {"ZEMUVCEXT_SetSensorRegisterW", Isp()},
      {"ZEMUVCEXT_GetFWVersion", Isp()},
      {"ZEMUVCEXT_GetFWBuildDay", Isp(kAny)},
      {"ZEMUVCEXT_SetH264Mode", Isp()},
      {"ZEMUVCEXT_SetWDR", Isp()},
      {"ZEMUVCEXT_IspCommand", Command(1, 2, RawJudgedReply())},
      {"ZEMUVCEXT_IspCommandEx", Command(6, 7, RawJudgedReply(), 16)},
      {"ZEMUVCEXT_VcpCommand", Command(4, 5, RawJudgedReply())},
      {"ZEMUVCEXT_GetChipInfo", GetDeviceInfo(16)},
      {"ZEMUVCEXT_IspCmdWriteMem", Of(Times(7, {Set(9, 16), Strict()}))},
      {"ZEMUVCEXT_IspCmdReadMem", ReadMemory()},
      {"ZEMUVCEXT_WriteFWData", WriteFWDataWithoutHandle()},
      {"ZEMUVCEXT_ReadFWData", ReadFWData()},
      {"ZEMUVCEXT_UpdateFW", UpdatingWithoutHandle(true, Poll(3), 8000)},
      {"ZEMUVCEXT_UpdateFW_with_progress", UpdatingWithoutHandle(true, Poll(3), 8000)},
      {"ZEMUVCEXT_UpdateFW_with_progressEx", UpdatingWithoutHandle(false, Poll(3), 1000)},
      {"ZEMUVCEXT_UpdateFW_Vision", UpdatingWithoutHandle(false, Look(10000), 0)},

      // ROM boot
      {"ZEMAPI_ResetToRomboot", Of({{Set(4)}, {Set(14, 16), kIgnored, 500}})},
      {"ZEMAPI_ResetToRomboot_VCP8", One(Set(4), Strict())},
      {"ZEMAPI_ResetToRomboot_VCP16", One(Set(14, 16), Strict())},
      {"ZEMROMAPI_OpenDevice", OpenRomBoot()},
      {"ZEMROMAPI_CloseDevice", CloseRomBoot()},
      {"ZEMROMAPI_CreateDumpFile", NoRequests()},
      {"ZEMROMAPI_LoadMiniUVC", LoadMiniUVC()},
      {"ZEMROMAPI_LoadUpdater", LoadUpdater()},
      {"ZEMROMAPI_ResetSystem", Of({OutCommand(0x21, kGoOn)}, 1)},
      {"ZEMROMAPI_SwitchModePCAM_SF", SelectStorage(L"ZEM_STORAGE_PCAM_SF")},
      {"?ZEMROMAPI_SwitchModePCAM_DRAM@@YAJPEAX@Z", SelectStorage(L"ZEM_STORAGE_PCAM_DRAM")},
      {"ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND", SelectNand()},
      {"ZEMROMAPI_SwitchModePCAM_SPI_NAND", SelectNand()},
      {"ZEMROMAPI_SwitchModePCAM_EMMC", SelectStorage(L"ZEM_STORAGE_EMMC")},
      {"ZEMROMAPI_LongJump", BootCommand(3)},
      {"ZEMROMAPI_SetFwDownloadAddr", BootCommand(0x0D)},
      {"ZEMROMAPI_WriteRegister", BootCommand(5)},
      {"ZEMROMAPI_ReadRegister", ReadBootRegister()},
      {"ZEMROMAPI_ScsiCommand", ScsiCommand()},
      {"ZEMROMAPI_MkEmmcEhancedArea", Of({OutCommand(0x22, End(0))}, 1)},
      {"ZEMROMAPI_Erase", EraseStorage()},
      {"ZEMROMAPI_BurnFw", BurnFw()},
      {"ZEMROMAPI_BurnPcCamFw", BurnPcCamFw()},
      {"ZEMROMAPI_BurnPcCamFwPnsV2", BurnPcCamFwPnsV2()},
      {"ZEMROMAPI_UpdateLinuxFwPkg", UpdateLinuxFwPkg(0x300000)},
      {"ZEMROMAPI_UpdateLinuxFwPkg_", UpdateLinuxFwPkg(0x20000)},
      {"ZEMROMAPI_PartialUpdateWithHeader", PartialUpdateWithHeader()},
      {"ZEMROMAPI_PartialUpdate", PartialUpdate()},
      {"ZEMROMAPI_PartialRead", PartialRead()},
      {"ZEMROMAPI_LoadFW2Memory", LoadFW2Memory()},

      // H.264
      {"ZEMAPI_GetH264FrameList", GetH264FrameList()},
      {"ZEMAPI_SetH264FrameIndex", SetH264FrameIndex()},
      {"ZEMAPI_SetH264Mode", SetH264Mode()},
      {"ZEMAPI_SetFps", Isp()},
      {"ZEMAPI_SetBitRate", Isp()},
      {"ZEMAPI_ForceIFrame", Isp()},

      // Encoding unit
      {"WREN_OpenDevice", NoRequests()},
      {"WREN_CloseDevice", NoRequests()},
      {"WREN_EuSet", One(Set(1, 4, kEncoding), Strict())},
      {"?WREN_EuGet@@YAJPEAXI0G@Z", One(Get(1, 4, kEncoding), Direct(End(kNoDevice)))},
      {"WREN_ProbeSet", probeSet},
      {"WREN_ProbeGet", One(Get(23, 51, kProbe), Direct(End(kNoDevice)))},
      {"WREN_CommitSet", commitSet},
      {"WREN_CommitGet", One(Get(24, 51, kProbe), Direct(End(kNoDevice)))},

      // Streams and endpoints
      {"ORVAAPI_GetVersion", One(Get(1, 1, kOrva), Direct(kOwn))},
      {"ORVAAPI_FirmwareBuildDay", One(Get(3, 2, kOrva), Direct(kOwn))},
      {"ORVAAPI_SetStreamID", One(Set(4, 1, kOrva), Strict())},
      {"ORVAAPI_GetEndpointSetting", One(Get(5, 1, kOrva), Direct(kOwn))},
      {"ORVAAPI_StreamFormatProbeCommit", WriteStreamFormat()},
      {"ORVAAPI_ToggleLayerControl", One(Set(27, 1, kOrva), Strict())},
      {"ZEMAPI_MulticastStreamID", One(Set(4), Strict())},
      {"ZEMAPI_MulticasToggleLayer", One(Set(4), Strict())},
      {"ZEMAPI_MulticastCommit", Vcp()},
  };
}

const std::vector<NamedPlan>& Plans() {
  static const std::vector<NamedPlan> plans = MakePlans();
  return plans;
}

}  // namespace

const Plan* FindPlan(std::string_view name) {
  for (const NamedPlan& named : Plans()) {
    if (named.name == name) {
      return &named.plan;
    }
  }
  return nullptr;
}

std::size_t PlanCount() { return Plans().size(); }

}  // namespace zem::testing::sweep
