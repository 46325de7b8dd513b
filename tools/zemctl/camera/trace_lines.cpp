#include "tools/zemctl/camera/trace_lines.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

#include "tools/zemctl/frame/bytes.h"

namespace zemctl {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint64_t kFormat = 1;

// No event is longer, and no event nests deeper.
constexpr std::size_t kLongestLine = 4U << 20;
constexpr int kDeepest = 3;

struct LookupName {
  Lookup::What what;
  const char* name;
};

constexpr std::array<LookupName, 5> kLookupNames = {{
    {Lookup::What::kInterface, "interface"},
    {Lookup::What::kNodes, "nodes"},
    {Lookup::What::kNodeType, "node type"},
    {Lookup::What::kNode, "node"},
    {Lookup::What::kInformation, "information"},
}};

std::string ResultText32(HRESULT result) {
  return HexNumber(static_cast<std::uint32_t>(result), 8);
}

// ---- Writing ----

Json Begin(const char* type, std::uint64_t milliseconds) {
  return {{"type", type}, {"ms", milliseconds}};
}

void PutText(Json& json, const char* key, const std::optional<std::string>& text) {
  if (text) {
    json[key] = *text;
  }
}

struct Writer {
  std::uint64_t milliseconds;

  Json operator()(const TracedRun& run) const {
    Json json = Begin("trace", milliseconds);
    json["format"] = kFormat;
    json["tool"] = run.tool;
    json["command"] = run.command;
    json["serials"] = run.serialsLeftOut ? "left out" : "as they are";
    return json;
  }

  Json operator()(const TracedDevices& list) const {
    Json json = Begin("devices", milliseconds);
    json["category"] = list.isAudio ? "audio" : "video";
    json["number"] = list.number;
    Json devices = Json::array();
    for (const TracedDevice& device : list.devices) {
      Json row = Json::object();
      PutText(row, "name", device.name);
      PutText(row, "path", device.path);
      PutText(row, "device_path", device.devicePath);
      PutText(row, "place", device.place);
      devices.push_back(row);
    }
    json["devices"] = devices;
    json["result"] = ResultText32(list.result);
    return json;
  }

  Json operator()(const TracedOpening& opening) const {
    Json json = Begin("open", milliseconds);
    json["camera"] = opening.camera;
    json["path"] = opening.path;
    json["result"] = ResultText32(opening.result);
    return json;
  }

  Json operator()(const TracedLookup& traced) const {
    const Lookup& lookup = traced.lookup;
    const auto* const name =
        std::find_if(kLookupNames.begin(), kLookupNames.end(),
                     [&](const LookupName& each) { return each.what == lookup.what; });
    Json json = Begin("lookup", milliseconds);
    json["camera"] = traced.camera;
    json["number"] = traced.number;
    json["what"] = name->name;
    json["node"] = lookup.node;
    json["id"] = GuidText(lookup.id);
    json["length"] = lookup.length;
    json["count"] = lookup.count;
    json["data"] = HexText(lookup.bytes);
    json["result"] = ResultText32(lookup.result);
    return json;
  }

  Json operator()(const TracedTransfer& traced) const {
    const Transfer& transfer = traced.transfer;
    if (transfer.isStandardControl()) {
      Json json = Begin("control", milliseconds);
      json["camera"] = traced.camera;
      json["direction"] = transfer.isSet ? "set" : (transfer.isRange ? "range" : "get");
      json["interface"] = GuidText(transfer.unit);
      json["property"] = transfer.selector;
      json["values"] = transfer.values;
      json["result"] = ResultText32(transfer.result);
      return json;
    }
    Json json = Begin("transfer", milliseconds);
    json["camera"] = traced.camera;
    json["direction"] = !transfer.isAddressed ? "none" : (transfer.isSet ? "set" : "get");
    json["unit"] = GuidText(transfer.unit);
    json["node"] = transfer.node;
    json["selector"] = transfer.selector;
    json["length"] = transfer.length;
    json["moved"] = transfer.moved;
    json["data"] = HexText(transfer.bytes);
    if (traced.leftOut) {
      json["left_out"] = "serial number";
    }
    json["result"] = ResultText32(transfer.result);
    return json;
  }

  Json operator()(const TracedVolume& volume) const {
    Json json = Begin("volume", milliseconds);
    json["drive"] = volume.drive;
    json["number"] = volume.number;
    json["there"] = volume.opening.isOpen();
    if (!volume.opening.isOpen() && volume.opening.error != kNoSuchVolume) {
      json["error"] = volume.opening.error;
      json["path"] = volume.opening.path;
    }
    return json;
  }

  Json operator()(const TracedCommand& traced) const {
    const ScsiCommand& command = traced.command;
    Json json = Begin("scsi", milliseconds);
    json["drive"] = command.drive;
    json["direction"] = command.isIn ? "in" : "out";
    json["cdb"] = HexText(command.cdb);
    json["length"] = command.length;
    json["data"] = HexText(command.data);
    json["status"] = command.status;
    json["error"] = command.error;
    return json;
  }

  Json operator()(const TracedEnd& end) const {
    Json json = Begin("end", milliseconds);
    json["exit_code"] = end.exitCode;
    return json;
  }
};

// ---- Reading ----

// What is wrong with a line.
struct Wrong {
  std::string why;
};

const Json& Member(const Json& json, const char* key) {
  const auto found = json.find(key);
  if (found == json.end()) {
    throw Wrong{std::string("\"") + key + "\" is missing"};
  }
  return *found;
}

template <class Number>
Number NumberOf(const Json& value, const char* key) {
  if (value.is_number_unsigned()) {
    const auto number = value.get<std::uint64_t>();
    if (number <= static_cast<std::uint64_t>(std::numeric_limits<Number>::max())) {
      return static_cast<Number>(number);
    }
  } else if (value.is_number_integer() && std::numeric_limits<Number>::is_signed) {
    const auto number = value.get<std::int64_t>();
    if (std::int64_t{std::numeric_limits<Number>::min()} <= number) {
      return static_cast<Number>(number);
    }
  }
  throw Wrong{std::string("\"") + key + "\" is not a number that can stand there"};
}

template <class Number>
Number TakeNumber(const Json& json, const char* key) {
  return NumberOf<Number>(Member(json, key), key);
}

std::string TextOfMember(const Json& value, const char* key) {
  if (!value.is_string()) {
    throw Wrong{std::string("\"") + key + "\" is not a text"};
  }
  return value.get<std::string>();
}

std::string TakeText(const Json& json, const char* key) {
  return TextOfMember(Member(json, key), key);
}

std::optional<std::string> TakeOptionalText(const Json& json, const char* key) {
  return json.contains(key) ? std::optional(TakeText(json, key)) : std::nullopt;
}

const Json& TakeArray(const Json& json, const char* key) {
  const Json& value = Member(json, key);
  if (!value.is_array()) {
    throw Wrong{std::string("\"") + key + "\" is not an array"};
  }
  return value;
}

HRESULT TakeResult(const Json& json) {
  const std::string text = TakeText(json, "result");
  const auto number = text.size() == 10 && text.starts_with("0x")
                          ? ParseHex(std::string_view(text).substr(2))
                          : std::nullopt;
  if (!number) {
    throw Wrong{"\"result\" is not a result such as 0x8007001F"};
  }
  return static_cast<HRESULT>(*number);
}

// "0a 10 ff"
std::vector<std::uint8_t> TakeBytes(const Json& json, const char* key = "data") {
  const std::string text = TakeText(json, key);
  std::vector<std::uint8_t> bytes;
  for (std::string_view rest = text; !rest.empty();) {
    const auto byte = ParseHex(rest.substr(0, 2));
    const bool isPair = rest.size() >= 2 && (rest.size() == 2 || rest[2] == ' ');
    if (!byte || !isPair || rest.size() == 3) {
      throw Wrong{std::string("\"") + key + "\" is not bytes such as \"0a ff\""};
    }
    bytes.push_back(static_cast<std::uint8_t>(*byte));
    rest.remove_prefix(std::min<std::size_t>(3, rest.size()));
  }
  return bytes;
}

GUID TakeGuid(const Json& json, const char* key) {
  const auto id = ParseGuid(TakeText(json, key));
  if (!id) {
    throw Wrong{std::string("\"") + key + "\" is not an id in braces"};
  }
  return *id;
}

// Which of two or three words it is.
template <std::size_t count>
std::size_t TakeWord(const Json& json, const char* key,
                     const std::array<std::string_view, count>& words) {
  const std::string text = TakeText(json, key);
  const auto found = std::find(words.begin(), words.end(), text);
  if (found == words.end()) {
    throw Wrong{std::string("\"") + key + "\" is none of the words that can stand there"};
  }
  return static_cast<std::size_t>(found - words.begin());
}

TraceEvent ReadRun(const Json& json) {
  if (TakeNumber<std::uint64_t>(json, "format") != kFormat) {
    throw Wrong{"the trace has a format that this zemctl does not know"};
  }
  TracedRun run;
  run.tool = TakeText(json, "tool");
  for (const Json& argument : TakeArray(json, "command")) {
    run.command.push_back(TextOfMember(argument, "command"));
  }
  run.serialsLeftOut =
      TakeWord<2>(json, "serials", {std::string_view("as they are"), "left out"}) == 1;
  return run;
}

TraceEvent ReadDevices(const Json& json) {
  TracedDevices list;
  list.isAudio = TakeWord<2>(json, "category", {std::string_view("video"), "audio"}) == 1;
  list.number = TakeNumber<std::uint64_t>(json, "number");
  for (const Json& device : TakeArray(json, "devices")) {
    if (!device.is_object()) {
      throw Wrong{"a device is not an object"};
    }
    list.devices.push_back({TakeOptionalText(device, "name"), TakeOptionalText(device, "path"),
                            TakeOptionalText(device, "device_path"),
                            TakeOptionalText(device, "place")});
  }
  list.result = TakeResult(json);
  return list;
}

TraceEvent ReadOpening(const Json& json) {
  return TracedOpening{TakeNumber<std::uint32_t>(json, "camera"), TakeText(json, "path"),
                       TakeResult(json)};
}

TraceEvent ReadLookup(const Json& json) {
  TracedLookup traced;
  traced.camera = TakeNumber<std::uint32_t>(json, "camera");
  traced.number = TakeNumber<std::uint64_t>(json, "number");
  const std::string what = TakeText(json, "what");
  const auto* const name = std::find_if(kLookupNames.begin(), kLookupNames.end(),
                                        [&](const LookupName& each) { return what == each.name; });
  if (name == kLookupNames.end()) {
    throw Wrong{"\"what\" is none of the words that can stand there"};
  }
  Lookup& lookup = traced.lookup;
  lookup.what = name->what;
  lookup.node = TakeNumber<std::uint32_t>(json, "node");
  lookup.id = TakeGuid(json, "id");
  lookup.length = TakeNumber<std::uint32_t>(json, "length");
  lookup.count = TakeNumber<std::uint32_t>(json, "count");
  lookup.bytes = TakeBytes(json);
  lookup.result = TakeResult(json);
  return traced;
}

TraceEvent ReadTransfer(const Json& json) {
  TracedTransfer traced;
  traced.camera = TakeNumber<std::uint32_t>(json, "camera");
  Transfer& transfer = traced.transfer;
  const std::size_t direction =
      TakeWord<3>(json, "direction", {std::string_view("get"), "set", "none"});
  transfer.isSet = direction == 1;
  transfer.isAddressed = direction != 2;
  transfer.unit = TakeGuid(json, "unit");
  transfer.node = TakeNumber<std::uint32_t>(json, "node");
  transfer.selector = TakeNumber<std::uint32_t>(json, "selector");
  transfer.length = TakeNumber<std::uint32_t>(json, "length");
  transfer.moved = TakeNumber<std::uint32_t>(json, "moved");
  transfer.bytes = TakeBytes(json);
  traced.leftOut = json.contains("left_out");
  transfer.result = TakeResult(json);
  if (transfer.bytes.size() > transfer.length) {
    throw Wrong{"\"data\" has more bytes than \"length\" says"};
  }
  return traced;
}

TraceEvent ReadControl(const Json& json) {
  TracedTransfer traced;
  traced.camera = TakeNumber<std::uint32_t>(json, "camera");
  Transfer& transfer = traced.transfer;
  const std::size_t direction =
      TakeWord<3>(json, "direction", {std::string_view("get"), "set", "range"});
  transfer.isSet = direction == 1;
  transfer.isRange = direction == 2;
  transfer.unit = TakeGuid(json, "interface");
  if (!transfer.isStandardControl()) {
    throw Wrong{"\"interface\" is none of standard controls"};
  }
  transfer.selector = TakeNumber<std::uint32_t>(json, "property");
  for (const Json& value : TakeArray(json, "values")) {
    transfer.values.push_back(NumberOf<std::int32_t>(value, "values"));
  }
  transfer.result = TakeResult(json);
  return traced;
}

TraceEvent ReadVolume(const Json& json) {
  const Json& isThere = Member(json, "there");
  if (!isThere.is_boolean()) {
    throw Wrong{"\"there\" is neither true nor false"};
  }
  TracedVolume volume{TakeText(json, "drive"), TakeNumber<std::uint64_t>(json, "number"), {}};
  if (!isThere.get<bool>()) {
    volume.opening =
        json.contains("error")
            ? VolumeOpening{TakeNumber<std::uint32_t>(json, "error"), TakeText(json, "path")}
            : VolumeOpening{kNoSuchVolume};
  }
  return volume;
}

TraceEvent ReadCommand(const Json& json) {
  ScsiCommand command;
  command.drive = TakeText(json, "drive");
  command.isIn = TakeWord<2>(json, "direction", {std::string_view("in"), "out"}) == 0;
  command.cdb = TakeBytes(json, "cdb");
  command.length = TakeNumber<std::uint32_t>(json, "length");
  command.data = TakeBytes(json);
  command.status = TakeNumber<std::uint8_t>(json, "status");
  command.error = TakeNumber<std::uint32_t>(json, "error");
  if (command.data.size() > command.length) {
    throw Wrong{"\"data\" has more bytes than \"length\" says"};
  }
  return TracedCommand{std::move(command)};
}

TraceEvent ReadEnd(const Json& json) {
  return TracedEnd{TakeNumber<std::uint32_t>(json, "exit_code")};
}

struct Reader {
  std::string_view type;
  TraceEvent (*read)(const Json& json);
};

constexpr std::array<Reader, 9> kReaders = {{
    {"trace", ReadRun},
    {"devices", ReadDevices},
    {"open", ReadOpening},
    {"lookup", ReadLookup},
    {"transfer", ReadTransfer},
    {"control", ReadControl},
    {"volume", ReadVolume},
    {"scsi", ReadCommand},
    {"end", ReadEnd},
}};

Json ParseJson(std::string_view text) {
  if (text.size() > kLongestLine) {
    throw Wrong{"it is longer than any line of a trace"};
  }
  bool isDeep = false;
  const auto watchDepth = [&isDeep](int depth, Json::parse_event_t /*event*/, Json& /*parsed*/) {
    isDeep = isDeep || depth > kDeepest;
    return depth <= kDeepest;
  };
  Json json = Json::parse(text.begin(), text.end(), watchDepth, false);
  if (isDeep || !json.is_object()) {
    throw Wrong{"it is not a JSON object of a trace"};
  }
  return json;
}

}  // namespace

std::string FormatTraceLine(const TraceLine& line) {
  return std::visit(Writer{line.milliseconds}, line.event)
      .dump(-1, ' ', false, Json::error_handler_t::replace);
}

TraceLine ParseTraceLine(std::string_view text, std::size_t number) {
  try {
    const Json json = ParseJson(text);
    const std::string type = TakeText(json, "type");
    const auto* const reader =
        std::find_if(kReaders.begin(), kReaders.end(),
                     [&](const Reader& candidate) { return candidate.type == type; });
    if (reader == kReaders.end()) {
      throw Wrong{"\"type\" is none of the words that can stand there"};
    }
    return {TakeNumber<std::uint64_t>(json, "ms"), reader->read(json)};
  } catch (const Wrong& wrong) {
    throw MalformedTrace(number, wrong.why);
  }
}

std::vector<TraceLine> ParseTrace(std::string_view text) {
  std::vector<TraceLine> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r')) {
      line.remove_suffix(1);
    }
    const std::size_t number = lines.size() + 1;
    lines.push_back(ParseTraceLine(line, number));
    if (std::holds_alternative<TracedRun>(lines.back().event) != (number == 1)) {
      throw MalformedTrace(number, number == 1 ? "a trace begins with a line of the type \"trace\""
                                               : "a second beginning");
    }
  }
  if (lines.empty()) {
    throw MalformedTrace(1, "the trace is empty");
  }
  return lines;
}

}  // namespace zemctl
