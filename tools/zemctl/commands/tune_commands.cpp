// zemctl tune: the features of the image processing and the encoder, and what identifies the sensor
// and the Skype unit.
#include <array>
#include <memory>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

using Numbers = std::vector<unsigned>;

// One feature: what the library calls to set it, to read it, or both.
struct Feature {
  const char* name;
  const char* description;
  std::size_t values;  // numbers that setting it takes
  unsigned highest;    // of each of them
  const char* setter;
  ZemResult (*set)(void* handle, const Numbers& values);
  const char* getter;
  ZemResult (*get)(void* handle, Report& report);
};

template <ZemResult (*function)(void* handle, unsigned char value)>
ZemResult SetByte(void* handle, const Numbers& values) {
  return function(handle, static_cast<unsigned char>(values[0]));
}

ZemResult SetManualGain(void* handle, const Numbers& values) {
  return ZEMAPI_EnableManualGainCtrl(handle, static_cast<int>(values[0]));
}

ZemResult SetQuality(void* handle, const Numbers& /*values*/) {
  return ZEMAPI_SetMjpgQuality(handle);
}

ZemResult SetGains(void* handle, const Numbers& values) {
  const auto word = [&values](std::size_t index) {
    return static_cast<unsigned short>(values[index]);
  };
  return ZEMAPI_SetAWBGain(handle, word(0), word(1), word(2));
}

ZemResult GetGains(void* handle, Report& report) {
  std::array<unsigned short, 3> gains = {};
  const ZemResult result = ZEMAPI_GetAWBGain(handle, &gains[0], &gains[1], &gains[2]);
  report["values"] = gains;
  return result;
}

ZemResult SetMisc(void* handle, const Numbers& values) {
  std::array<unsigned char, 6> settings = {};
  for (std::size_t index = 0; index < settings.size(); ++index) {
    settings[index] = static_cast<unsigned char>(values[index]);
  }
  return ZEMAPI_SetMiscSetting(handle, settings.data());
}

ZemResult GetMisc(void* handle, Report& report) {
  std::array<unsigned char, 6> settings = {};
  const ZemResult result = ZEMAPI_GetMiscSetting(handle, settings.data());
  report["values"] = settings;
  return result;
}

ZemResult GetFocusValues(void* handle, Report& report) {
  std::array<unsigned, 9> values = {};
  const ZemResult result = ZEMAPI_GetAFACC(handle, values.data());
  report["values"] = values;
  return result;
}

ZemResult GetBuildDate(void* handle, Report& report) {
  std::array<char, 12> date = {};
  const ZemResult result = ZEMAPI_GetFWBuildDate(handle, date.data());
  report["build date"] = date.data();
  return result;
}

ZemResult GetSensorSerial(void* handle, Report& report) {
  std::array<unsigned char, 32> serial = {};
  const ZemResult result = ZEMAPI_GetSensorSN(handle, serial.data());
  report["serial number"] = HexText(serial);
  return result;
}

ZemResult GetSkypeVersion(void* handle, Report& report) {
  unsigned char version = 0;
  const ZemResult result = ZEMAPI_GetSkypeXUVersion(handle, &version);
  report["version"] = HexNumber(version, 2);
  return result;
}

const Feature kFeatures[] = {
    {"af", "Auto focus: 0 off, 1 on", 1, 0xFF, "ZEMAPI_EnableAF", SetByte<ZEMAPI_EnableAF>, nullptr,
     nullptr},
    {"ae", "Auto exposure: 0 off, 1 on", 1, 0xFF, "ZEMAPI_EnableAE", SetByte<ZEMAPI_EnableAE>,
     nullptr, nullptr},
    {"manual-gain", "Gain: 0 automatic, 1 manual", 1, 1, "ZEMAPI_EnableManualGainCtrl",
     SetManualGain, nullptr, nullptr},
    {"awb-gain", "The three gains of the white balance", 3, 0xFFFF, "ZEMAPI_SetAWBGain", SetGains,
     "ZEMAPI_GetAWBGain", GetGains},
    {"shading", "Correction of lens shading", 1, 0xFF, "ZEMAPI_SetShadding",
     SetByte<ZEMAPI_SetShadding>, nullptr, nullptr},
    {"effect", "Image effect", 1, 0xFF, "ZEMAPI_SetImageEffect", SetByte<ZEMAPI_SetImageEffect>,
     nullptr, nullptr},
    {"misc", "The six bytes of miscellaneous settings", 6, 0xFF, "ZEMAPI_SetMiscSetting", SetMisc,
     "ZEMAPI_GetMiscSetting", GetMisc},
    {"mjpg-quality", "Let the firmware apply its own MJPEG quality", 0, 0, "ZEMAPI_SetMjpgQuality",
     SetQuality, nullptr, nullptr},
    {"max-qp", "The encoder's highest quantiser", 1, 0xFF, "ZEMAPI_SetMaxQP",
     SetByte<ZEMAPI_SetMaxQP>, nullptr, nullptr},
    {"min-qp", "The encoder's lowest quantiser", 1, 0xFF, "ZEMAPI_SetMinQP",
     SetByte<ZEMAPI_SetMinQP>, nullptr, nullptr},
    {"video-rec-mode", "Video recording mode", 1, 0xFF, "ZEMAPI_SetVideoRecMode",
     SetByte<ZEMAPI_SetVideoRecMode>, nullptr, nullptr},
    {"focus-values", "Read the nine focus accumulators", 0, 0, nullptr, nullptr, "ZEMAPI_GetAFACC",
     GetFocusValues},
    {"build-date", "Read the day the firmware was built", 0, 0, nullptr, nullptr,
     "ZEMAPI_GetFWBuildDate", GetBuildDate},
    {"sensor-sn", "Read the sensor's serial number", 0, 0, nullptr, nullptr, "ZEMAPI_GetSensorSN",
     GetSensorSerial},
    {"skype-version", "Read the version of the Skype unit", 0, 0, nullptr, nullptr,
     "ZEMAPI_GetSkypeXUVersion", GetSkypeVersion},
};

// Without values a feature that can be read is read, every other one is set.
int Tune(const Options& options, const Feature& feature, const Numbers& values, Report& report) {
  const bool isRead = feature.get != nullptr && values.empty();
  if (!isRead && values.size() != feature.values) {
    throw UsageError(std::string(feature.name) + " takes " + std::to_string(feature.values) +
                     (feature.values == 1 ? " value" : " values"));
  }
  for (const unsigned value : values) {
    if (value > feature.highest) {
      throw UsageError("values of " + std::string(feature.name) + " end at " +
                       std::to_string(feature.highest));
    }
  }
  const Session session(options.device, isRead ? Use::kReading : Use::kWriting);
  report["feature"] = feature.name;
  if (isRead) {
    session.Call(feature.getter, [&](void* device) { return feature.get(device, report); });
  } else {
    session.Call(feature.setter, [&](void* device) { return feature.set(device, values); });
    report["values"] = values;
    report["written"] = true;
  }
  return kDone;
}

}  // namespace

void AddTuneCommands(Program& program) {
  CLI::App* const tune = program.app()
                             .add_subcommand("tune", "Tune the image processing and the encoder")
                             ->require_subcommand(1);
  tune->fallthrough();
  for (const Feature& feature : kFeatures) {
    const auto values = std::make_shared<Numbers>();
    CLI::App* const command =
        program.AddCommand(tune, feature.name, feature.description,
                           [&feature, values](const Options& options, Report& report) {
                             return Tune(options, feature, *values, report);
                           });
    if (feature.values > 0) {
      command->add_option("values", *values,
                          feature.get != nullptr ? "To set; none to read" : "To set");
    }
  }
}

}  // namespace zemctl
