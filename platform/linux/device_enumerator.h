// The system device enumerator of this platform: cameras in the video-input category, sound cards
// with an input in the audio-input category.
#pragma once

#include "platform/com.h"

namespace zem::platform {

// A new enumerator with one reference for the caller. An empty category is, as on Windows, the
// result 1 without an enumerator; any other category is empty.
HRESULT MakeDeviceEnumerator(ICreateDevEnum** enumerator);

}  // namespace zem::platform

// A host program may define this and put it into its dynamic symbol table: the library then takes
// its device enumerators from there. For programs that stand in for the system's devices.
extern "C" HRESULT ZemHostDeviceEnumerator(ICreateDevEnum** enumerator);
