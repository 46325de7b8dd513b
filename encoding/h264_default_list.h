// The list of H.264 stream formats for cameras that cannot tell theirs.
#pragma once

#include "encoding/h264_frame_list.h"

namespace zem {

// Null when there is no memory.
FrameListPtr MakeDefaultFrameList();

}  // namespace zem
