// Registers of the camera, and the lens position.
//
// Results are those of the register exports in include/ZemUVCExtApi.h. `filter` is the device;
// outputs must not be null and are written on success only.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace zem {

// A register space, named by the sub-codes of the register command that read and write it.
struct RegisterSpace {
  std::uint8_t readCode;
  std::uint8_t writeCode;
};

// 24-bit addresses, 16-bit values.
inline constexpr RegisterSpace kProcessorRegisters = {0x00, 0x01};
// 16-bit addresses, values of one or two bytes.
inline constexpr RegisterSpace kSensorRegisters = {0x02, 0x03};
// The lens actuator (VCM): 16-bit addresses, 16-bit values.
inline constexpr RegisterSpace kLensRegisters = {0x04, 0x05};

HRESULT WriteRegister(IBaseFilter* filter, RegisterSpace space, std::uint32_t address,
                      std::uint16_t value);
HRESULT ReadRegister(IBaseFilter* filter, RegisterSpace space, std::uint32_t address,
                     std::uint16_t* value);

// The same request as ReadRegister; only the low byte of the reply is handed out.
HRESULT ReadByteRegister(IBaseFilter* filter, RegisterSpace space, std::uint32_t address,
                         std::uint8_t* value);

HRESULT SetLensPos(IBaseFilter* filter, std::uint32_t position);

// Codec registers. The device's status is not looked at.
HRESULT WriteCodecReg(IBaseFilter* filter, std::uint16_t reg, std::uint8_t value);
HRESULT ReadCodecReg(IBaseFilter* filter, std::uint16_t reg, std::uint8_t* value);

}  // namespace zem
