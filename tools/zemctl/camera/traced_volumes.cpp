#include "tools/zemctl/camera/traced_volumes.h"

#include "tools/zemctl/camera/replay.h"
#include "tools/zemctl/camera/trace.h"

namespace zemctl {

void TraceVolumes(ScsiRecord& record) {
  const auto trace = ThreadTrace();
  if (!trace) {
    return;
  }
  record.AddObserver([trace](const ScsiCommand& command) { trace->Write(TracedCommand{command}); });
  record.AddOpeningObserver([trace](const std::string& drive, const VolumeOpening& opening) {
    trace->WriteVolume({drive, 0, opening});
  });
}

VolumeSource* ReplayedVolumes() { return ThreadReplay().get(); }

}  // namespace zemctl
