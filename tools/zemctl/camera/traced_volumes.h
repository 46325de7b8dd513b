// The volumes that the library opens, as a trace sees them and as a trace answers for them.
#pragma once

#include "tools/zemctl/camera/scsi_record.h"
#include "tools/zemctl/camera/volume_watch.h"

namespace zemctl {

// Where the present thread is traced, the trace has what the record sees.
void TraceVolumes(ScsiRecord& record);

// The volumes of the trace that the present thread replays; null when it replays none.
VolumeSource* ReplayedVolumes();

}  // namespace zemctl
