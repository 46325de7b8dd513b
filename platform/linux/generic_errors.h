// What became of a SCSI command, as the error of Windows that callers know. The table stands in
// docs/linux.md too.
#pragma once

#include <scsi/sg.h>

#include <cstdint>

namespace zem::platform {

// `request` has come back from SG_IO. 0 when the device has carried the command out.
std::uint32_t ErrorOfGeneric(const sg_io_hdr& request);

}  // namespace zem::platform
