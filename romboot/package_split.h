// Splitting a firmware package into its two image files.
#pragma once

#include "platform/com.h"

namespace zem {

// What ZEMROMAPI_DispackZemPcCamFw documents.
HRESULT DispackZemPcCamFw(const wchar_t* path);

}  // namespace zem
