// The ways by which a running camera is sent into its ROM boot loader, through the vendor unit.
#pragma once

#include "platform/com.h"

namespace zem {

HRESULT ResetToRomboot(IBaseFilter* filter);
HRESULT ResetToRombootVcp8(IBaseFilter* filter);
HRESULT ResetToRombootVcp16(IBaseFilter* filter);

}  // namespace zem
