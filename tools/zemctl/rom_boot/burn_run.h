// Burning as a person asks for it: shown first, asked for, done, and compared with what was read
// back.
#pragma once

#include <functional>
#include <string>

#include "tools/zemctl/frame/progress.h"
#include "tools/zemctl/frame/report.h"
#include "tools/zemctl/rom_boot/burn_method.h"
#include "tools/zemctl/rom_boot/rom_session.h"

namespace zemctl {

// One command as a row of a table.
Report CommandRow(const std::string& what, const std::string& address, std::uint32_t bytes,
                  const Cdb& cdb);

// What a plan sends, command by command, the selection of the storage first.
Report CommandRows(const BurnPlan& plan, const StorageChoice& storage);

// What is overwritten, and with which file, if any.
struct Overwriting {
  std::string camera;  // "the camera in ROM boot at F:"
  std::string storage;
  std::string file;
};

// "The storage sf of CAMERA will be overwritten with FILE (erase: 4096 bytes from 0x00000000, ...)"
std::string DescribeLoss(const BurnPlan& plan, const Overwriting& overwriting);

// "the camera in ROM boot at F: (boot loader VSN3)"
std::string CameraWords(const RomSession& session);

// Phase "write": carries out the plan that the trail knows, and reports what was written where.
void WritePlan(const RomSession& session, const BurnPlan& plan, Progress& progress, Report& report,
               const std::function<void()>& carryOut);

// Phase "compare": reads back what the plan has written, and reports how much of it is right.
void Verify(const RomSession& session, const BurnPlan& plan, Progress& progress, Report& report);

}  // namespace zemctl
