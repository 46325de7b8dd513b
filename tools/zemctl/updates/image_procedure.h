// The library's procedures that send an image, as data: what each is called, what it can carry, and
// how it is run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "include/ZemUVCExtApi.h"
#include "tools/zemctl/camera/session.h"

namespace zemctl {

// Most that a procedure reads behind the end of the data.
inline constexpr std::size_t kLongestChunk = 512;

struct ImageParameters {
  std::uint8_t param2 = 0;  // byte 2 of the announcement
  std::uint8_t param3 = 0;  // byte 3; of the 516x firmware update in its burn order only
};

struct ImageProcedure {
  const char* function;  // the export
  const char* what;      // what it overwrites
  // Longer images cannot be announced.
  std::uint32_t longest;
  bool isFirmware;
  const char* series;  // of chips that it is for; "" for any
  // It takes no device and looks for the default camera.
  bool isHandleLess;
  ZemResult (*run)(void* handle, const std::uint8_t* data, std::uint32_t length,
                   ProgressCallback callback, std::uint64_t user,
                   const ImageParameters& parameters);
};

extern const ImageProcedure kUpdate516x;
extern const ImageProcedure kUpdate517x;
extern const ImageProcedure kUpdateFlash;
extern const ImageProcedure kUpdateCalibration;
extern const ImageProcedure kSendData;
extern const ImageProcedure kHandleLessPlain;
extern const ImageProcedure kHandleLessEx;
extern const ImageProcedure kHandleLessVision;

// Lets the library run it on the session's camera.
CallOutcome Observe(const Session& session, const ImageProcedure& procedure,
                    const std::uint8_t* data, std::uint32_t length, ProgressCallback callback,
                    std::uint64_t user, const ImageParameters& parameters);

// Why an image of this length cannot go through the procedure, as a clause behind the file's name.
std::optional<std::string> Unfit(const ImageProcedure& procedure, std::uint64_t length);

}  // namespace zemctl
