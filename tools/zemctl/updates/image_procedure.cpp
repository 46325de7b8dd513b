#include "tools/zemctl/updates/image_procedure.h"

#include <limits>

namespace zemctl {
namespace {

// What two bytes of an announcement can say.
constexpr std::uint32_t kLongestOf16Bits = 0xFFFF;

constexpr std::uint32_t kSector = 512;

// Procedures without parameters, with a handle and without one.
template <ZemResult (*function)(void*, const std::uint8_t*, std::uint32_t, ProgressCallback,
                                std::uint64_t)>
ZemResult RunWithHandle(void* handle, const std::uint8_t* data, std::uint32_t length,
                        ProgressCallback callback, std::uint64_t user,
                        const ImageParameters& /*parameters*/) {
  return function(handle, data, length, callback, user);
}

template <ZemResult (*function)(const std::uint8_t*, std::uint32_t, ProgressCallback,
                                std::uint64_t)>
ZemResult RunHandleLess(void* /*handle*/, const std::uint8_t* data, std::uint32_t length,
                        ProgressCallback callback, std::uint64_t user,
                        const ImageParameters& /*parameters*/) {
  return function(data, length, callback, user);
}

}  // namespace

const ImageProcedure kUpdate516x = {
    "ZEMAPI_UpdateFW_516x",
    "firmware",
    std::numeric_limits<std::int32_t>::max() - kSector + 1,
    true,
    "516x",
    false,
    [](void* handle, const std::uint8_t* data, std::uint32_t length, ProgressCallback callback,
       std::uint64_t user, const ImageParameters& parameters) {
      return ZEMAPI_UpdateFW_516x(handle, data, length, callback, user, parameters.param3);
    }};

const ImageProcedure kUpdate517x = {"ZEMAPI_UpdateFW_517x",
                                    "firmware",
                                    std::numeric_limits<std::int32_t>::max(),
                                    true,
                                    "517x",
                                    false,
                                    RunWithHandle<ZEMAPI_UpdateFW_517x>};

const ImageProcedure kUpdateFlash = {
    "ZEMAPI_UpdateFlash",
    "flash area",
    kLongestOf16Bits,
    false,
    "",
    false,
    [](void* handle, const std::uint8_t* data, std::uint32_t length, ProgressCallback callback,
       std::uint64_t user, const ImageParameters& parameters) {
      return ZEMAPI_UpdateFlash(handle, data, length, callback, user, parameters.param2,
                                parameters.param3);
    }};

const ImageProcedure kUpdateCalibration = {"ZEMAPI_UpdateCaliData",
                                           "calibration data",
                                           std::numeric_limits<std::int32_t>::max(),
                                           false,
                                           "",
                                           false,
                                           RunWithHandle<ZEMAPI_UpdateCaliData>};

const ImageProcedure kSendData = {
    "ZEMAPI_SendData",
    "data",
    kLongestOf16Bits,
    false,
    "",
    false,
    [](void* handle, const std::uint8_t* data, std::uint32_t length, ProgressCallback callback,
       std::uint64_t user, const ImageParameters& parameters) {
      return ZEMAPI_SendData(handle, data, length, callback, user, parameters.param2,
                             parameters.param3);
    }};

const ImageProcedure kHandleLessPlain = {"ZEMUVCEXT_UpdateFW_with_progress",
                                         "firmware",
                                         std::numeric_limits<std::int32_t>::max(),
                                         true,
                                         "",
                                         true,
                                         RunHandleLess<ZEMUVCEXT_UpdateFW_with_progress>};

const ImageProcedure kHandleLessEx = {"ZEMUVCEXT_UpdateFW_with_progressEx",
                                      "firmware",
                                      std::numeric_limits<std::int32_t>::max(),
                                      true,
                                      "",
                                      true,
                                      RunHandleLess<ZEMUVCEXT_UpdateFW_with_progressEx>};

const ImageProcedure kHandleLessVision = {
    "ZEMUVCEXT_UpdateFW_Vision",
    "firmware",
    std::numeric_limits<std::int32_t>::max(),
    true,
    "",
    true,
    [](void* /*handle*/, const std::uint8_t* data, std::uint32_t length, ProgressCallback callback,
       std::uint64_t user, const ImageParameters& parameters) {
      return ZEMUVCEXT_UpdateFW_Vision(data, length, parameters.param2, callback, user);
    }};

CallOutcome Observe(const Session& session, const ImageProcedure& procedure,
                    const std::uint8_t* data, std::uint32_t length, ProgressCallback callback,
                    std::uint64_t user, const ImageParameters& parameters) {
  const auto run = [&](void* device) {
    return procedure.run(device, data, length, callback, user, parameters);
  };
  return procedure.isHandleLess ? session.ObserveAsDefault(procedure.function, run)
                                : session.Observe(procedure.function, run);
}

std::optional<std::string> Unfit(const ImageProcedure& procedure, std::uint64_t length) {
  if (length == 0) {
    return "is empty";
  }
  if (length > procedure.longest) {
    return "has " + std::to_string(length) + " bytes, and " + procedure.function +
           " can announce " + std::to_string(procedure.longest) + " at most";
  }
  return std::nullopt;
}

}  // namespace zemctl
