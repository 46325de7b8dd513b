// One update of one camera: what it is, what is sent, and what is known of it afterwards.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/zemctl/camera/session.h"
#include "tools/zemctl/frame/progress.h"
#include "tools/zemctl/frame/report.h"
#include "tools/zemctl/updates/image_procedure.h"

namespace zemctl {

struct ImageUpdate {
  const ImageProcedure* procedure = nullptr;
  std::string file;
  std::vector<unsigned char> image;
  ImageParameters parameters;
  // Against the camera's own word for its chip series.
  bool isForced = false;
  std::optional<std::uint32_t> verifyAt;
  // To wait for a restart; not at all without it.
  std::optional<unsigned> waitSeconds;
  // "02 00 00 00 00 01"; empty when nothing tells.
  std::string expectedVersion;
};

// The version that a firmware image tells of itself; empty when it does not, as most do.
std::string VersionOfImage(const std::vector<unsigned char>& image);

// The camera's version; empty when it does not tell one. Throws CallFailure for a camera that loses
// transfers already: it is not burned.
std::string VersionBefore(const Session& session);

// What will be lost: "its firmware is overwritten with FILE (10000 bytes, version 02 ...)".
std::string LossOf(const ImageUpdate& update);

// Carries it out, and reports. Throws CallFailure, ToolFailure and PartialFailure.
void CarryOut(std::optional<Session>& session, const ImageUpdate& update, Progress& progress,
              Report& report);

}  // namespace zemctl
