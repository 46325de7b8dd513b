// What a call of the library would send to a camera, found out by letting the library itself send
// it to one that only takes notes.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tools/zemctl/camera/session.h"
#include "tools/zemctl/frame/report.h"

namespace zemctl {

// Transfers of one kind that follow each other.
struct RehearsedTransfer {
  bool isSet = false;
  std::uint16_t selector = 0;  // of the vendor unit
  std::uint32_t length = 0;
  std::uint32_t count = 0;
  std::vector<unsigned char> block;  // what a command block is written with; empty for bulk data
};

struct RehearsedCamera {
  bool is517x = false;
  bool highSpeed = true;
};

// Runs `call` with a session on a camera that is idle, accepts everything and answers register
// reads as the chip series does, up to the burn order, which fails: no wait for a burn follows.
std::vector<RehearsedTransfer> Rehearse(const RehearsedCamera& camera,
                                        const std::function<void(const Session& session)>& call);

// The transfers as the table "transfers", and how often data is moved.
void ReportRehearsal(const std::vector<RehearsedTransfer>& transfers, Report& report);

}  // namespace zemctl
