// The text log of the encoding-unit family: every transfer and every line of the host's own,
// appended to one file that is opened and closed for each. A file that cannot be opened is no
// failure.
//
// Nothing guards the file: two threads that log at once may mix their lines.
#pragma once

#include <cstdint>
#include <span>

#include "device/property_request.h"

namespace zem {

// Logs a transfer with the result of the transport. The fields of a control that the log knows are
// read from `block`; those beyond its end are logged as 0.
void LogTransfer(Direction direction, const GUID& unit, std::uint16_t selector,
                 std::span<const std::uint8_t> block, HRESULT result);

// Logs the host's own text, of any length. Null logs nothing.
void LogText(const wchar_t* text);

}  // namespace zem
