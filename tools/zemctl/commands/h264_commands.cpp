// zemctl h264 list, start, stop, fps, bitrate, keyframe
#include <charconv>
#include <memory>
#include <span>

#include "tools/zemctl/camera/extension_unit_names.h"
#include "tools/zemctl/camera/required_unit.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

// Length of the list that the library makes up for a camera that tells none; a camera's own never
// has it.
constexpr int kDefaultListLength = 808;

// Type of the formats that are started on the H.264 unit.
constexpr unsigned kUnitType = 2;

struct H264Arguments {
  std::string format;
  unsigned short number = 0;
};

// The camera's formats, given back when it goes out of scope.
class FormatList {
 public:
  // Without a list of its own, or when that cannot be read, the library makes one up.
  explicit FormatList(const Session& session)
      : outcome_(session.Observe("ZEMAPI_GetH264FrameList", [this](void* device) {
          return ZEMAPI_GetH264FrameList(device, &list_);
        })) {
    Check("ZEMAPI_GetH264FrameList", outcome_.result);
  }
  ~FormatList() { ZEMAPI_ReleaseH264FrameList(list_); }
  FormatList(const FormatList&) = delete;
  FormatList& operator=(const FormatList&) = delete;

  bool isDefault() const { return outcome_.result == kDefaultListLength; }
  // What kept the camera's list from being read, if anything did.
  const std::optional<Transfer>& loss() const { return outcome_.loss; }
  // What that is told as.
  CallFailure failure() const {
    return {"ZEMAPI_GetH264FrameList", outcome_.result, DescribeLoss(outcome_)};
  }
  void RequireWhole() const {
    if (outcome_.loss) {
      throw failure();
    }
  }
  std::span<const H264FrameInfo> formats() const {
    const auto* const head = static_cast<const H264FrameList*>(list_);
    return {reinterpret_cast<const H264FrameInfo*>(head + 1), head->wCount};
  }

 private:
  void* list_ = nullptr;
  CallOutcome outcome_;
};

std::string Size(unsigned width, unsigned height) {
  return std::to_string(width) + "x" + std::to_string(height);
}

// The formats that carry H.264, up to the first index that has none.
Report CarrierRows(const Session& session) {
  Report rows = Report::array();
  for (unsigned short index = 0;; ++index) {
    unsigned short width = 0;
    unsigned short height = 0;
    GUID subtype = {};
    const ZemResult result = session.Call("ZEMAPI_GetH264_UVC_PayloadFormat", [&](void* device) {
      return ZEMAPI_GetH264_UVC_PayloadFormat(device, index, &width, &height, &subtype);
    });
    if (result != ZEM_OK) {
      return rows;
    }
    // A subtype's first field is its four-character code.
    std::string code;
    for (unsigned shift = 0; shift < 32; shift += 8) {
      code += static_cast<char>((subtype.Data1 >> shift) & 0xFF);
    }
    rows.push_back({{"index", index}, {"size", Size(width, height)}, {"subtype", code}});
  }
}

// Where the formats come from, and why not from the camera.
void ReportSource(const FormatList& list, Report& report) {
  const std::string unread =
      list.loss() ? "not read: " + NameOf(*list.loss()) + " failed: " + FailureOf(*list.loss())
                  : "";
  report["source"] = list.isDefault() ? "default" : "camera";
  if (list.isDefault()) {
    report["note"] = "this is the library's built-in default list; the camera's own was " +
                     (unread.empty() ? "not told" : unread);
  } else if (!unread.empty()) {
    report["note"] = "the rest of the camera's list was " + unread;
  }
}

int ListFormats(const Options& options, const H264Arguments& /*arguments*/, Report& report) {
  const Session session(options.device, Use::kReading);
  const FormatList list(session);
  ReportSource(list, report);
  Report rows = Report::array();
  for (const H264FrameInfo& format : list.formats()) {
    rows.push_back({{"index", format.wFrameIndex},
                    {"type", format.wType},
                    {"size", Size(format.wWidth, format.wHeight)},
                    {"second size", Size(format.wSubWidth, format.wSubHeight)},
                    {"max kbit/s", format.dwMaxBitRate},
                    {"min kbit/s", format.dwMinBitRate},
                    {"max fps", format.wMaxFps},
                    {"min fps", format.wMinFps}});
  }
  report["formats"] = rows;
  report["carriers"] = CarrierRows(session);
  if (list.loss()) {
    throw PartialFailure(list.failure().failure());
  }
  return kDone;
}

// A start or stop that came to nothing, told by a result that says more or less than it does
// elsewhere.
ResultText NotTaken() {
  return {"not taken", "the camera did not take the resolution code or the H.264 switch",
          "Check that the camera is still attached and encodes H.264.", kTransferFailed};
}

void StartIndex(const Session& session, unsigned short index, Report& report) {
  const FormatList list(session);
  list.RequireWhole();
  for (const H264FrameInfo& format : list.formats()) {
    if (format.wFrameIndex != index) {
      continue;
    }
    if (format.wType == kUnitType) {
      // The library reports such a start as done, whatever the camera answers.
      RequireUnit(session, "h264");
    }
    session.Call(
        "ZEMAPI_SetH264FrameIndex",
        [index](void* device) { return ZEMAPI_SetH264FrameIndex(device, index); },
        [](ZemResult result) { return result < 0 ? std::optional(NotTaken()) : std::nullopt; });
    report["index"] = index;
    report["type"] = format.wType;
    report["size"] = Size(format.wWidth, format.wHeight);
    return;
  }
  throw UsageError("the camera has no H.264 format with the frame index " + std::to_string(index) +
                   " (see zemctl h264 list)");
}

void SetMode(const Session& session, unsigned width, unsigned height) {
  session.Call(
      "ZEMAPI_SetH264Mode", [&](void* device) { return ZEMAPI_SetH264Mode(device, width, height); },
      // Success is 1 here.
      [](ZemResult result) { return result != 1 ? std::optional(NotTaken()) : std::nullopt; });
}

// A decimal number that takes up the whole text.
template <class Number>
bool ParseWhole(std::string_view text, Number& number) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end;
}

int StartFormat(const Options& options, const H264Arguments& arguments, Report& report) {
  const std::string_view text = arguments.format;
  const std::size_t by = text.find('x');
  unsigned short index = 0;
  unsigned width = 0;
  unsigned height = 0;
  if (ParseWhole(text, index)) {
    const Session session(options.device, Use::kWriting);
    StartIndex(session, index, report);
  } else if (by != std::string_view::npos && ParseWhole(text.substr(0, by), width) &&
             ParseWhole(text.substr(by + 1), height) && width != 0 && height != 0) {
    const Session session(options.device, Use::kWriting);
    SetMode(session, width, height);
    report["size"] = Size(width, height);
  } else {
    throw UsageError("\"" + arguments.format + "\" is neither a frame index nor WIDTHxHEIGHT");
  }
  report["started"] = true;
  return kDone;
}

int StopEncoder(const Options& options, const H264Arguments& /*arguments*/, Report& report) {
  const Session session(options.device, Use::kWriting);
  SetMode(session, 0, 0);
  report["stopped"] = true;
  return kDone;
}

int SetFps(const Options& options, const H264Arguments& arguments, Report& report) {
  const Session session(options.device, Use::kWriting);
  session.Call("ZEMAPI_SetFps",
               [&](void* device) { return ZEMAPI_SetFps(device, arguments.number); });
  report["fps"] = arguments.number;
  return kDone;
}

int SetBitRate(const Options& options, const H264Arguments& arguments, Report& report) {
  const Session session(options.device, Use::kWriting);
  session.Call("ZEMAPI_SetBitRate",
               [&](void* device) { return ZEMAPI_SetBitRate(device, arguments.number); });
  report["bit rate"] = arguments.number;
  return kDone;
}

int ForceKeyFrame(const Options& options, const H264Arguments& /*arguments*/, Report& report) {
  const Session session(options.device, Use::kWriting);
  session.Call("ZEMAPI_ForceIFrame", [&](void* device) { return ZEMAPI_ForceIFrame(device); });
  report["key frame"] = "requested";
  return kDone;
}

}  // namespace

void AddH264Commands(Program& program) {
  const auto arguments = std::make_shared<H264Arguments>();
  CLI::App* const h264 =
      program.app().add_subcommand("h264", "List and start H.264 formats")->require_subcommand(1);
  h264->fallthrough();
  const auto add = [&](const std::string& name, const std::string& description, auto function) {
    return program.AddCommand(h264, name, description,
                              [arguments, function](const Options& options, Report& report) {
                                return function(options, *arguments, report);
                              });
  };
  add("list", "List the camera's H.264 formats, and those that carry them", ListFormats);
  add("start", "Start a format", StartFormat)
      ->add_option("format", arguments->format, "Frame index (see list) or WIDTHxHEIGHT")
      ->required();
  add("stop", "Stop H.264", StopEncoder);
  add("fps", "Set the encoder's frame rate", SetFps)
      ->add_option("rate", arguments->number, "Frames per second")
      ->required();
  add("bitrate", "Set the encoder's bit rate", SetBitRate)
      ->add_option("rate", arguments->number, "In the camera's units")
      ->required();
  add("keyframe", "Ask for a key frame", ForceKeyFrame);
}

}  // namespace zemctl
