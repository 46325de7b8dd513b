// zemctl control list, zemctl control get, zemctl control set
#include <array>
#include <memory>
#include <optional>

#include "tools/zemctl/commands/comparison.h"
#include "tools/zemctl/frame/command_tree.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

constexpr ZemLong kAutomatic = 1;
constexpr ZemLong kManual = 2;

// By which the platform says that it does not take a value.
constexpr auto kInvalidParameter = static_cast<ZemResult>(0x80070057U);

// The calls of one family of controls.
struct Family {
  const char* name;
  const char* getter;
  ZemResult (*get)(void* handle, ZemLong property, ZemLong* value, ZemLong* flags);
  const char* setter;
  ZemResult (*set)(void* handle, ZemLong property, ZemLong value, ZemLong flags);
  const char* rangeGetter;
  ZemResult (*getRange)(void* handle, ZemLong property, ZemLong* minimum, ZemLong* maximum,
                        ZemLong* step, ZemLong* defaultValue, ZemLong* capsFlags);
};

const Family kVideo = {"video",
                       "ZEMAPI_GetVideoProcAmp",
                       ZEMAPI_GetVideoProcAmp,
                       "ZEMAPI_SetVideoProcAmp",
                       ZEMAPI_SetVideoProcAmp,
                       "ZEMAPI_GetVideoProcAmpRange",
                       ZEMAPI_GetVideoProcAmpRange};
const Family kCamera = {"camera",
                        "ZEMAPI_GetCameraControl",
                        ZEMAPI_GetCameraControl,
                        "ZEMAPI_SetCameraControl",
                        ZEMAPI_SetCameraControl,
                        "ZEMAPI_GetCameraControlRange",
                        ZEMAPI_GetCameraControlRange};

struct Control {
  const char* name;
  const Family* family;
  ZemLong property;
};

constexpr std::array<Control, 17> kControls = {{
    {"brightness", &kVideo, 0},
    {"contrast", &kVideo, 1},
    {"hue", &kVideo, 2},
    {"saturation", &kVideo, 3},
    {"sharpness", &kVideo, 4},
    {"gamma", &kVideo, 5},
    {"color-enable", &kVideo, 6},
    {"white-balance", &kVideo, 7},
    {"backlight-compensation", &kVideo, 8},
    {"gain", &kVideo, 9},
    {"pan", &kCamera, 0},
    {"tilt", &kCamera, 1},
    {"roll", &kCamera, 2},
    {"zoom", &kCamera, 3},
    {"exposure", &kCamera, 4},
    {"iris", &kCamera, 5},
    {"focus", &kCamera, 6},
}};

const Control& FindControl(const std::string& name) {
  std::string known;
  for (const Control& control : kControls) {
    if (name == control.name) {
      return control;
    }
    known += std::string(known.empty() ? "" : ", ") + control.name;
  }
  throw UsageError("\"" + name + "\" is no control; the controls are " + known);
}

struct Range {
  ZemLong minimum = 0;
  ZemLong maximum = 0;
  ZemLong step = 0;
  ZemLong defaultValue = 0;
  ZemLong flags = 0;
};

struct Setting {
  ZemLong value = 0;
  ZemLong flags = 0;
};

// A camera without the whole family is told from one without the control.
std::optional<ResultText> FamilyAbsent(const Control& control, ZemResult result) {
  if (result != ZEM_E_DEVICE_REFUSED) {
    return std::nullopt;
  }
  return ResultText{"ZEM_E_DEVICE_REFUSED",
                    "the camera has no " + std::string(control.family->name) + " controls",
                    "\"zemctl control list\" shows those it has.", kUnitAbsent};
}

void CallControl(const Session& session, const Control& control, const char* function,
                 const Session::Function& call) {
  session.Call(function, call,
               [&control](ZemResult result) { return FamilyAbsent(control, result); });
}

Range ReadRange(const Session& session, const Control& control) {
  Range range;
  CallControl(session, control, control.family->rangeGetter, [&](void* device) {
    return control.family->getRange(device, control.property, &range.minimum, &range.maximum,
                                    &range.step, &range.defaultValue, &range.flags);
  });
  return range;
}

Setting ReadSetting(const Session& session, const Control& control) {
  Setting setting;
  CallControl(session, control, control.family->getter, [&](void* device) {
    return control.family->get(device, control.property, &setting.value, &setting.flags);
  });
  return setting;
}

std::string ModeText(ZemLong flags) {
  std::string text;
  if ((flags & kAutomatic) != 0) {
    text = "automatic";
  }
  if ((flags & kManual) != 0) {
    text += text.empty() ? "manual" : ", manual";
  }
  return text;
}

Report DescribeControl(const Control& control, const Setting& setting, const Range& range) {
  return {{"control", control.name},
          {"family", control.family->name},
          {"value", setting.value},
          {"mode", ModeText(setting.flags)},
          {"minimum", range.minimum},
          {"maximum", range.maximum},
          {"step", range.step},
          {"default", range.defaultValue},
          {"modes", ModeText(range.flags)}};
}

// Whether the camera says that it lacks the control.
bool IsAbsent(const CallFailure& failure) {
  return failure.text().exitCode == kUnitAbsent || IsUnknownControl(failure.result());
}

Report UnreadControl(const Control& control, const CallFailure& failure) {
  return {{"control", control.name},
          {"family", control.family->name},
          {"value", Unread(failure.what())},
          {"mode", nullptr},
          {"minimum", nullptr},
          {"maximum", nullptr},
          {"step", nullptr},
          {"default", nullptr},
          {"modes", nullptr}};
}

int ListControls(const Options& options, Report& report) {
  const Session session(options.device, Use::kReading);
  Report rows = Report::array();
  std::optional<Failure> first;
  for (const Control& control : kControls) {
    try {
      const Range range = ReadRange(session, control);
      rows.push_back(DescribeControl(control, ReadSetting(session, control), range));
    } catch (const CallFailure& failure) {
      if (!IsAbsent(failure)) {
        rows.push_back(UnreadControl(control, failure));
        first = first.value_or(failure.failure());
      }
    }
  }
  if (rows.empty()) {
    throw CallFailure(
        "control list", ZEM_E_DEVICE_REFUSED,
        {"ZEM_E_DEVICE_REFUSED", "the camera has no standard controls",
         "Vendor commands may do the same: see \"zemctl tune --help\".", kUnitAbsent});
  }
  report["controls"] = rows;
  if (first) {
    throw PartialFailure(*first);
  }
  return kDone;
}

int ShowControl(const Session& session, const Control& control, Report& report) {
  const Range range = ReadRange(session, control);
  report = DescribeControl(control, ReadSetting(session, control), range);
  return kDone;
}

struct ControlArguments {
  std::string name;
  std::string value;
};

int GetControl(const Options& options, const ControlArguments& arguments, Report& report) {
  const Control& control = FindControl(arguments.name);
  const Session session(options.device, Use::kReading);
  return ShowControl(session, control, report);
}

[[noreturn]] void RefuseValue(const Control& control, const Setting& setting, const Range& range,
                              const CallFailure& failure) {
  throw CallFailure(failure.function(), failure.result(),
                    {failure.text().name,
                     std::string(control.name) + " takes " + std::to_string(range.minimum) +
                         " to " + std::to_string(range.maximum) + " in steps of " +
                         std::to_string(range.step) + " (" + ModeText(range.flags) + "), and not " +
                         std::to_string(setting.value) + " (" + ModeText(setting.flags) + ")",
                     "\"zemctl control list\" shows what each control takes.", kUsageError});
}

int SetControl(const Options& options, const ControlArguments& arguments, Report& report) {
  const Control& control = FindControl(arguments.name);
  Setting setting;
  const bool automatic = arguments.value == "auto";
  if (!automatic &&
      !CLI::detail::lexical_cast(WithoutLeadingZeros(arguments.value), setting.value)) {
    throw UsageError("\"" + arguments.value + "\" is neither a number nor auto");
  }
  const Session session(options.device, Use::kWriting);
  if (automatic) {
    setting = ReadSetting(session, control);
  }
  setting.flags = automatic ? kAutomatic : kManual;
  try {
    CallControl(session, control, control.family->setter, [&](void* device) {
      return control.family->set(device, control.property, setting.value, setting.flags);
    });
  } catch (const CallFailure& failure) {
    if (failure.result() == kInvalidParameter) {
      RefuseValue(control, setting, ReadRange(session, control), failure);
    }
    throw;
  }
  return ReadBack("the control was set", [&] { return ShowControl(session, control, report); });
}

}  // namespace

void AddControlCommands(Program& program) {
  const auto arguments = std::make_shared<ControlArguments>();
  const auto bind = [arguments](auto function) {
    return [arguments, function](const Options& options, Report& report) {
      return function(options, *arguments, report);
    };
  };
  CLI::App* const controls =
      program.app()
          .add_subcommand("control", "Read and set the standard controls of the camera")
          ->require_subcommand(1);
  controls->fallthrough();
  program.AddCommand(controls, "list", "List the controls with their ranges", ListControls);
  const auto addName = [arguments](CLI::App* command) {
    command->add_option("control", arguments->name, "Name, see list")->required();
    return command;
  };
  addName(program.AddCommand(controls, "get", "Read a control", bind(GetControl)));
  addName(program.AddCommand(controls, "set", "Set a control", bind(SetControl)))
      ->add_option("value", arguments->value, "Number, or auto")
      ->required();
}

}  // namespace zemctl
