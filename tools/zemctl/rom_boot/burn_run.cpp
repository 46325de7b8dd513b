#include "tools/zemctl/rom_boot/burn_run.h"

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/rom_boot/storage_check.h"

namespace zemctl {

Report CommandRow(const std::string& what, const std::string& address, std::uint32_t bytes,
                  const Cdb& cdb) {
  return {{"what", what}, {"address", address}, {"bytes", bytes}, {"command", HexText(cdb)}};
}

Report CommandRows(const BurnPlan& plan, const StorageChoice& storage) {
  Report rows = Report::array();
  rows.push_back(CommandRow("select " + storage.name, "", 0, SelectCdb(storage)));
  for (const PlannedCommand& command : CommandsOf(plan)) {
    rows.push_back(CommandRow(command.what, HexNumber(command.address, 8), command.sectors * 512,
                              WriteCdb(command)));
  }
  return rows;
}

std::string DescribeLoss(const BurnPlan& plan, const Overwriting& overwriting) {
  std::string text;
  for (const PlannedWrite& write : plan) {
    text += text.empty() ? "" : ", ";
    text += write.what + ": " + std::to_string(write.sectors() * std::uint64_t{512}) +
            " bytes from " + HexNumber(write.address, 8);
  }
  const std::string with = overwriting.file.empty() ? "" : " with " + overwriting.file;
  return "The storage " + overwriting.storage + " of " + overwriting.camera +
         " will be overwritten" + with + " (" + text + ")";
}

std::string CameraWords(const RomSession& session) {
  return "the camera in ROM boot at " + session.volume().drive + " (" + session.volume().Words() +
         ")";
}

void WritePlan(const RomSession& session, const BurnPlan& plan, Progress& progress, Report& report,
               const std::function<void()>& carryOut) {
  progress.Begin("write");
  {
    const RomTrail& trail = session.watch().trail();
    const ObserverGuard shown(session.watch(), [&](const ScsiCommand& /*command*/) {
      progress.UpdateBytes(trail.writtenBytes(), trail.plannedBytes());
    });
    carryOut();
  }
  progress.Complete();
  Report writes = Report::array();
  for (const PlannedWrite& write : plan) {
    writes.push_back({{"what", write.what},
                      {"address", HexNumber(write.address, 8)},
                      {"bytes", write.bytes.size()}});
  }
  report["written"] = writes;
}

void Verify(const RomSession& session, const BurnPlan& plan, Progress& progress, Report& report) {
  progress.Begin("compare");
  const std::uint64_t compared = CompareStorage(session, plan, progress);
  progress.Complete();
  report["verified"] = std::to_string(compared) + " bytes read back, all as they should be";
}

}  // namespace zemctl
