// The camera's extension units by the names that zemctl takes.
#pragma once

#include <array>

#include "include/ZemUVCExtApi.h"

namespace zemctl {

struct NamedUnit {
  const char* name;
  GUID id;
};

inline constexpr std::array<NamedUnit, 7> kUnits = {{
    {"vendor", ZEM_VENDOR_XU},
    {"h264", ZEM_H264_XU},
    {"skype", ZEM_SKYPE_XU},
    {"tirella", ZEM_TIRELLA_XU},
    {"orva", ZEM_ORVA_XU},
    {"encoding", ZEM_ENCODING_UNIT_XU},
    {"stream-probe", ZEM_STREAM_PROBE_XU},
}};

}  // namespace zemctl
