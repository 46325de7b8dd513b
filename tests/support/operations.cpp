#include "tests/support/operations.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "device/extension_units.h"

namespace zem::testing {
namespace {

using FileBytes = std::vector<std::uint8_t>;

// The longest data that a run takes.
constexpr std::uint32_t kMostData = 4096;
constexpr std::uint32_t kMostStorage = 1 << 18;
constexpr std::size_t kTableMemory = 8192;
constexpr std::size_t kProbeBlock = 51;

// A command of the volumes' channel is tried six times.
constexpr std::uint64_t kScsi = 6;
constexpr std::uint32_t kScsiPiece = 32768;
// A search looks at 24 drive letters: an inquiry, an identify, an address divider.
constexpr std::uint64_t kVolumeSearch = 24 * (1 + kScsi + kScsi);
// A burn is asked for every 30 ms for ten minutes.
constexpr std::uint64_t kBurnPolls = 10 * 60 * 1000 / 30 + 1;
// An announce with its reply, the probe of the speed, the order.
constexpr std::uint64_t kBurn = 4;

// Reading and clearing the protection of a serial flash: 3 registers read, 13 written.
constexpr std::uint64_t kUnprotect = 2 * (3 + 13);
// An order and its reply, and as much of a list as its 16-bit length says, by 32 bytes.
constexpr std::uint64_t kFrameList = 2 + 65536 / 32;
// Two rounds of probe, its answer and commit.
constexpr std::uint64_t kH264Start = 6;

void PutLe32(FileBytes& bytes, std::size_t offset, std::uint32_t number) {
  for (std::size_t index = 0; index < 4; ++index) {
    bytes[offset + index] = static_cast<std::uint8_t>(number >> (8 * index));
  }
}

FileBytes Code() { return FileBytes(40000, 0x5A); }

FileBytes ImageFile() {
  FileBytes file(18 + 4096 + 40000, 0x11);
  PutLe32(file, 14, 40000);
  return file;
}

FileBytes PcCamFile() {
  FileBytes file(50 + 4096 + 40000, 0x22);
  PutLe32(file, 10, 40);
  PutLe32(file, 14, 4096 + 40000);
  return file;
}

FileBytes LinuxFile() {
  FileBytes file(8192 + 40000, 0x33);
  PutLe32(file, 8, 9);
  PutLe32(file, 16, 0x100);
  return file;
}

void CountProgress(std::uint32_t /*progress*/, std::uint64_t user) {
  ++*reinterpret_cast<std::uint64_t*>(user);
}

std::uint64_t User() {
  static thread_local std::uint64_t calls = 0;
  return reinterpret_cast<std::uint64_t>(&calls);
}

GUID UnitOf(Call& c) {
  static const std::array<GUID, 7> kUnits = {VendorXu, H264Xu,         SkypeXu,      TirellaXu,
                                             OrvaXu,   EncodingUnitXu, StreamProbeXu};
  return kUnits[c.Any<std::size_t>(0, kUnits.size() - 1)];
}

using Handle = void**;

// Opens by `open` and closes again.
template <class Open>
ZemResult OpenedAndClosed(Open open) {
  void* device = nullptr;
  const ZemResult result = open(&device);
  ZEMAPI_CloseDevice(&device);
  return result;
}

// A selector from 1 on: by default the vendor unit's ISP command, written, or its reply, read.
std::uint16_t SelectorFor(Call& c, Call::Use use) {
  const std::uint64_t usual = use == Call::Use::kRead ? 0 : 1;
  return static_cast<std::uint16_t>(c.Any<std::uint16_t>(usual, 0xFFFE) + 1);
}

template <ZemResult (*kTransfer)(void*, unsigned short, void*, ZemULong, ZemULong*), Call::Use kUse>
ZemResult ZemTransfer(Call& c) {
  const std::uint32_t length = c.Length(8, kMostData);
  const std::uint16_t selector = SelectorFor(c, kUse);
  std::uint8_t* const data = c.BytesAlways(length, kUse);
  return kTransfer(c.Device(), selector, data, length, c.Out<ZemULong>());
}

template <ZemResult (*kTransfer)(void*, const GUID*, unsigned short, void*, ZemULong, ZemULong*),
          Call::Use kUse>
ZemResult UnitTransfer(Call& c) {
  const std::uint32_t length = c.Length(8, kMostData);
  const GUID unit = UnitOf(c);
  const std::uint16_t selector = SelectorFor(c, kUse);
  std::uint8_t* const data = c.BytesAlways(length, kUse);
  return kTransfer(c.Device(), &unit, selector, data, length, c.Out<ZemULong>());
}

template <class Number, ZemResult (*kSet)(void*, Number)>
ZemResult SetOne(Call& c) {
  return kSet(c.Device(), c.Any<Number>());
}

template <class Type, ZemResult (*kGet)(void*, Type*), std::size_t kSize>
ZemResult GetBytes(Call& c) {
  return kGet(c.Device(), reinterpret_cast<Type*>(c.Buffer(kSize)));
}

template <ZemResult (*kCommand)(void*)>
ZemResult Plain(Call& c) {
  return kCommand(c.Device());
}

template <class Address, class Value, ZemResult (*kSet)(void*, Address, Value)>
ZemResult SetAt(Call& c) {
  const auto address = c.Any<Address>();
  return kSet(c.Device(), address, c.Any<Value>());
}

template <class Address, class Value, ZemResult (*kGet)(void*, Address, Value*)>
ZemResult GetAt(Call& c) {
  const auto address = c.Any<Address>();
  return kGet(c.Device(), address, c.Out<Value>());
}

template <ZemResult (*kCommand)(void*, unsigned char*, unsigned char*), std::size_t kSize,
          std::uint8_t kCode>
ZemResult RawCommand(Call& c) {
  std::uint8_t* const command = c.Command(kSize, kCode);
  return kCommand(c.Device(), command, c.Buffer(kSize));
}

template <ZemResult (*kGet)(void*, ZemLong, ZemLong*, ZemLong*)>
ZemResult GetStandard(Call& c) {
  return kGet(c.Device(), c.Any<ZemLong>(0, 0xFFFFFFFF), c.Out<ZemLong>(), c.Out<ZemLong>());
}

template <ZemResult (*kSet)(void*, ZemLong, ZemLong, ZemLong)>
ZemResult SetStandard(Call& c) {
  return kSet(c.Device(), c.Any<ZemLong>(0, 0xFFFFFFFF), c.Any<ZemLong>(1, 0xFFFFFFFF),
              c.Any<ZemLong>(2, 0xFFFFFFFF));
}

template <ZemResult (*kGet)(void*, ZemLong, ZemLong*, ZemLong*, ZemLong*, ZemLong*, ZemLong*)>
ZemResult GetStandardRange(Call& c) {
  return kGet(c.Device(), c.Any<ZemLong>(0, 0xFFFFFFFF), c.Out<ZemLong>(), c.Out<ZemLong>(),
              c.Out<ZemLong>(), c.Out<ZemLong>(), c.Out<ZemLong>());
}

template <class Number, ZemResult (*kSet)(Number)>
ZemResult SetDefault(Call& c) {
  return kSet(c.Any<Number>());
}

template <class Address, class Value, ZemResult (*kSet)(Address, Value)>
ZemResult SetDefaultAt(Call& c) {
  const auto address = c.Any<Address>();
  return kSet(address, c.Any<Value>());
}

template <class Address, class Value, ZemResult (*kGet)(Address, Value*)>
ZemResult GetDefaultAt(Call& c) {
  const auto address = c.Any<Address>();
  return kGet(address, c.Out<Value>());
}

template <ZemResult (*kCommand)(const std::uint8_t*, std::uint8_t*), std::size_t kSize,
          std::uint8_t kCode>
ZemResult DefaultCommand(Call& c) {
  const std::uint8_t* const command = c.Command(kSize, kCode);
  return kCommand(command, c.Buffer(kSize));
}

template <ZemResult (*kTransfer)(void*, void*), Call::Use kUse>
ZemResult ProbeTransfer(Call& c) {
  return kTransfer(c.Filter(),
                   kUse == Call::Use::kRead ? c.Bytes(kProbeBlock) : c.Buffer(kProbeBlock));
}

template <ZemResult (*kCommand)(void*)>
ZemResult PlainBoot(Call& c) {
  return kCommand(c.Session());
}

template <ZemResult (*kSelect)(void*, unsigned char)>
ZemResult Select(Call& c) {
  return kSelect(c.Session(), c.Any<std::uint8_t>(0));
}

template <ZemResult (*kBurn)(void*, const wchar_t*, unsigned int*), FileBytes (*kFile)()>
ZemResult BurnAt(Call& c) {
  const wchar_t* const path = c.File(kFile());
  return kBurn(c.Session(), path, c.InOut(c.Any<unsigned int>(0x10000)));
}

template <ZemResult (*kLoad)(void*, const wchar_t*)>
ZemResult Load(Call& c) {
  const wchar_t* const path = c.File(Code());
  return kLoad(c.Session(), path);
}

template <class Run>
ZemResult WithImage(Call& c, std::uint32_t usual, std::size_t unit, Call::Use use, Run run) {
  const std::uint32_t length = c.Length(usual, kMostData);
  std::uint8_t* const data = c.BytesAlways(length, use, unit);
  return run(data, length, c.Progress());
}

// An image that goes out in a few chunks: at the high speed with a handle, at the low one without.
template <class Run>
ZemResult SendsImage(Call& c, Run run) {
  return WithImage(c, 1100, 1, Call::Use::kRead, run);
}
template <class Run>
ZemResult SendsImageWithoutHandle(Call& c, Run run) {
  return WithImage(c, 70, 64, Call::Use::kRead, run);
}

// One row an export, in the order of the list of exports.
constexpr auto kOperations = std::to_array<Operation>({
    // Opening and closing a camera
    {"ZEMAPI_OpenDevice", Ground::kSystem, {}, [](Call& c) {
       return OpenedAndClosed([&](Handle device) {
         return ZEMAPI_OpenDevice(c.Skipped(0, 3), device); });
     }},
    {"ZEMAPI_OpenDeviceEx", Ground::kSystem, {}, [](Call& c) {
       return OpenedAndClosed([&](Handle device) {
         return ZEMAPI_OpenDeviceEx(c.Skipped(0, 3), device, c.Any<unsigned>(0x5A45),
                                    c.Any<unsigned>(0x8C00)); });
     }},
    {"ZEMAPI_OpenZemDevice", Ground::kSystem, {}, [](Call&) {
       return OpenedAndClosed([](Handle device) { return ZEMAPI_OpenZemDevice(device); });
     }},
    {"ZEMAPI_OpenDeviceByPath", Ground::kSystem, {}, [](Call& c) {
       return OpenedAndClosed([&](Handle device) {
         return ZEMAPI_OpenDeviceByPath(c.Text(c.stage().displayName), device); });
     }},
    {"ZEMAPI_OpenDeviceByDevPath", Ground::kSystem, {}, [](Call& c) {
       return OpenedAndClosed([&](Handle device) {
         return ZEMAPI_OpenDeviceByDevPath(c.Text(c.stage().devicePath), device); });
     }},
    {"ZEMAPI_OpenDeviceBySourceFilter", Ground::kFilter, {}, [](Call& c) {
       return OpenedAndClosed([&](Handle device) {
         return ZEMAPI_OpenDeviceBySourceFilter(c.Filter(), device); });
     }},
    {"ZEMAPI_CloseDevice", Ground::kDevice, {}, [](Call& c) {
       ZEMAPI_CloseDevice(&c.stage().device);
       return ZEM_OK;
     }},

    // Raw access to extension units
    {"ZEMAPI_UvcExtSet", Ground::kDevice, {1},
     UnitTransfer<ZEMAPI_UvcExtSet, Call::Use::kRead>},
    {"ZEMAPI_UvcExtGet", Ground::kDevice, {1},
     UnitTransfer<ZEMAPI_UvcExtGet, Call::Use::kWritten>},
    {"ZEMAPI_ZemExtSet", Ground::kDevice, {1},
     ZemTransfer<ZEMAPI_ZemExtSet, Call::Use::kRead>},
    {"ZEMAPI_ZemExtGet", Ground::kDevice, {1},
     ZemTransfer<ZEMAPI_ZemExtGet, Call::Use::kWritten>},
    {"ZEMAPI_UvcCheckXuGuid", Ground::kDevice, {}, [](Call& c) {
       const GUID unit = UnitOf(c);
       return ZEMAPI_UvcCheckXuGuid(c.Device(), &unit);
     }},

    // Registers and vendor commands
    {"ZEMAPI_SetRegister", Ground::kDevice, {2},
     SetAt<unsigned, unsigned short, ZEMAPI_SetRegister>},
    {"ZEMAPI_GetRegister", Ground::kDevice, {2},
     GetAt<unsigned, unsigned short, ZEMAPI_GetRegister>},
    {"ZEMAPI_SetSensorRegister", Ground::kDevice, {2},
     SetAt<unsigned short, unsigned char, ZEMAPI_SetSensorRegister>},
    {"ZEMAPI_GetSensorRegister", Ground::kDevice, {2},
     GetAt<unsigned short, unsigned char, ZEMAPI_GetSensorRegister>},
    {"ZEMAPI_SetSensorRegisterW", Ground::kDevice, {2},
     SetAt<unsigned short, unsigned short, ZEMAPI_SetSensorRegisterW>},
    {"ZEMAPI_GetSensorRegisterW", Ground::kDevice, {2},
     GetAt<unsigned short, unsigned short, ZEMAPI_GetSensorRegisterW>},
    {"ZEMAPI_SetVCMRegister", Ground::kDevice, {2},
     SetAt<unsigned short, unsigned short, ZEMAPI_SetVCMRegister>},
    {"ZEMAPI_GetVCMRegister", Ground::kDevice, {2},
     GetAt<unsigned short, unsigned short, ZEMAPI_GetVCMRegister>},
    {"ZEMAPI_SetLensPos", Ground::kDevice, {2}, SetOne<unsigned, ZEMAPI_SetLensPos>},
    {"ZEMAPI_GetFWVersion", Ground::kDevice, {2}, GetBytes<unsigned char, ZEMAPI_GetFWVersion, 6>},
    {"?ZEMAPI_GetFWVersion@@YAJPEAXPEAD@Z", Ground::kDevice, {2},
     GetBytes<char, ZEMAPI_GetFWVersion, 8>},
    {"ZEMAPI_GetCheckSumResult", Ground::kDevice, {2}, Plain<ZEMAPI_GetCheckSumResult>},
    {"ZEMAPI_ReadCodecReg", Ground::kDevice, {3},
     GetAt<unsigned short, unsigned char, ZEMAPI_ReadCodecReg>},
    {"ZEMAPI_WriteCodecReg", Ground::kDevice, {2},
     SetAt<unsigned short, unsigned char, ZEMAPI_WriteCodecReg>},
    {"ZEMAPI_IspCommand", Ground::kDevice, {2}, RawCommand<ZEMAPI_IspCommand, 8, 0x0B>},
    {"ZEMAPI_VcpCommand", Ground::kDevice, {2}, RawCommand<ZEMAPI_VcpCommand, 8, 0x23>},
    {"ZEMAPI_IspCommandEx", Ground::kDevice, {2}, RawCommand<ZEMAPI_IspCommandEx, 16, 1>},
    {"ZEMAPI_VcpCommandEx", Ground::kDevice, {2}, RawCommand<ZEMAPI_VcpCommandEx, 16, 1>},
    {"ZEMAPI_GetDeviceInfo", Ground::kDevice, {1},
     GetBytes<unsigned char, ZEMAPI_GetDeviceInfo, 8>},

    // Image tuning and information
    {"ZEMAPI_GetFWBuildDate", Ground::kDevice, {2}, GetBytes<char, ZEMAPI_GetFWBuildDate, 12>},
    {"ZEMAPI_EnableAF", Ground::kDevice, {2}, SetOne<unsigned char, ZEMAPI_EnableAF>},
    {"ZEMAPI_EnableAE", Ground::kDevice, {2}, SetOne<unsigned char, ZEMAPI_EnableAE>},
    {"ZEMAPI_GetAFACC", Ground::kDevice, {18},
     GetBytes<unsigned, ZEMAPI_GetAFACC, 9 * sizeof(unsigned)>},
    {"ZEMAPI_SetVideoRecMode", Ground::kDevice, {1},
     SetOne<unsigned char, ZEMAPI_SetVideoRecMode>},
    {"ZEMAPI_SetAWBGain", Ground::kDevice, {2}, [](Call& c) {
       return ZEMAPI_SetAWBGain(c.Device(), c.Any<std::uint16_t>(), c.Any<std::uint16_t>(),
                                c.Any<std::uint16_t>());
     }},
    {"ZEMAPI_GetAWBGain", Ground::kDevice, {2}, [](Call& c) {
       return ZEMAPI_GetAWBGain(c.Device(), c.Out<unsigned short>(), c.Out<unsigned short>(),
                                c.Out<unsigned short>());
     }},
    {"ZEMAPI_EnableManualGainCtrl", Ground::kDevice, {4}, [](Call& c) {
       return ZEMAPI_EnableManualGainCtrl(c.Device(), c.Any<std::uint8_t>());
     }},
    {"ZEMAPI_SetShadding", Ground::kDevice, {2}, SetOne<unsigned char, ZEMAPI_SetShadding>},
    {"ZEMAPI_SetMiscSetting", Ground::kDevice, {2},
     [](Call& c) { return ZEMAPI_SetMiscSetting(c.Device(), c.Bytes(6)); }},
    {"ZEMAPI_GetMiscSetting", Ground::kDevice, {2},
     GetBytes<unsigned char, ZEMAPI_GetMiscSetting, 6>},
    {"ZEMAPI_SetMjpgQuality", Ground::kDevice, {2}, Plain<ZEMAPI_SetMjpgQuality>},
    {"ZEMAPI_SetImageEffect", Ground::kDevice, {2}, SetOne<unsigned char, ZEMAPI_SetImageEffect>},
    {"ZEMAPI_SetMaxQP", Ground::kDevice, {2}, SetOne<unsigned char, ZEMAPI_SetMaxQP>},
    {"ZEMAPI_SetMinQP", Ground::kDevice, {2}, SetOne<unsigned char, ZEMAPI_SetMinQP>},
    {"ZEMAPI_GetSensorSN", Ground::kDevice, {2}, GetBytes<unsigned char, ZEMAPI_GetSensorSN, 32>},
    {"ZEMAPI_GetSkypeXUVersion", Ground::kDevice, {1},
     GetBytes<unsigned char, ZEMAPI_GetSkypeXUVersion, 1>},

    // Standard camera, video and audio controls
    {"ZEMAPI_GetVideoProcAmp", Ground::kDevice, {1}, GetStandard<ZEMAPI_GetVideoProcAmp>},
    {"ZEMAPI_SetVideoProcAmp", Ground::kDevice, {1}, SetStandard<ZEMAPI_SetVideoProcAmp>},
    {"ZEMAPI_GetVideoProcAmpRange", Ground::kDevice, {1},
     GetStandardRange<ZEMAPI_GetVideoProcAmpRange>},
    {"ZEMAPI_GetCameraControl", Ground::kDevice, {1}, GetStandard<ZEMAPI_GetCameraControl>},
    {"ZEMAPI_SetCameraControl", Ground::kDevice, {1}, SetStandard<ZEMAPI_SetCameraControl>},
    {"ZEMAPI_GetCameraControlRange", Ground::kDevice, {1},
     GetStandardRange<ZEMAPI_GetCameraControlRange>},
    {"ZEMAPI_Get_IVideoProcAmp_Interface", Ground::kDevice, {}, [](Call& c) {
       void* amplifier = nullptr;
       const ZemResult result = ZEMAPI_Get_IVideoProcAmp_Interface(c.Device(), &amplifier);
       if (amplifier != nullptr) {
         static_cast<IUnknown*>(amplifier)->Release();
       }
       return result;
     }},
    {"ZEMAPI_AudioOpenDeviceByPath", Ground::kSystem, {}, [](Call& c) {
       IBaseFilter* audio = nullptr;
       const ZemResult result =
           ZEMAPI_AudioOpenDeviceByPath(c.Text(c.stage().microphoneName), &audio);
       if (audio != nullptr) {
         ZEMAPI_AudioCloseDevice(&audio);
       }
       return result;
     }},
    {"ZEMAPI_AudioCloseDevice", Ground::kFilter, {}, [](Call& c) {
       IBaseFilter* audio = c.stage().filter;
       audio->AddRef();
       return ZEMAPI_AudioCloseDevice(&audio);
     }},
    {"ZEMAPI_AudioSetVolume", Ground::kSystem, {1}, [](Call& c) {
       IBaseFilter* audio = nullptr;
       ZEMAPI_AudioOpenDeviceByPath(c.stage().microphoneName.c_str(), &audio);
       const ZemResult result = ZEMAPI_AudioSetVolume(audio, c.Any<int>(50, 0xFFFFFFFF));
       if (audio != nullptr) {
         ZEMAPI_AudioCloseDevice(&audio);
       }
       return result;
     }},

    // Bulk data
    {"ZEMAPI_SendData", Ground::kDevice, {1, 32, 6}, [](Call& c) {
       return WithImage(c, 96, 32, Call::Use::kRead, [&](auto* data, auto length, auto callback) {
         return ZEMAPI_SendData(c.Device(), data, length, callback, User(), c.Any<std::uint8_t>(3),
                                c.Any<std::uint8_t>(0)); });
     }},
    {"ZEMAPI_WriteFWData", Ground::kDevice, {1, 32, 1}, [](Call& c) {
       return SendsImage(c, [&](auto* data, auto length, auto callback) {
         return ZEMAPI_WriteFWData(c.Device(), data, length, callback, User()); });
     }},
    {"ZEMAPI_ReadFWData", Ground::kDevice, {3, 1, 1}, [](Call& c) {
       return WithImage(c, 100, 1, Call::Use::kWritten, [&](auto* data, auto length, auto callback) {
         return ZEMAPI_ReadFWData(c.Device(), data, length, c.Out<std::uint32_t>(), callback,
                                  User()); });
     }},
    {"ZEMAPI_ReadPartialFlashData", Ground::kDevice, {2, 32, 6}, [](Call& c) {
       return WithImage(c, 600, 1, Call::Use::kWritten, [&](auto* data, auto length, auto callback) {
         return ZEMAPI_ReadPartialFlashData(c.Device(), c.Any<std::uint32_t>(0), length, data,
                                            c.Out<std::uint32_t>(), callback, User()); });
     }},

    // Firmware update
    {"ZEMAPI_UpdateFW_516x", Ground::kDevice, {kBurn + kBurnPolls, 32, 1}, [](Call& c) {
       return SendsImage(c, [&](auto* data, auto length, auto callback) {
         return ZEMAPI_UpdateFW_516x(c.Device(), data, length, callback, User(),
                                     c.Any<std::uint8_t>(0)); });
     }},
    {"ZEMAPI_UpdateFW_517x", Ground::kDevice, {kBurn + kUnprotect + 1, 32, 1}, [](Call& c) {
       return SendsImage(c, [&](auto* data, auto length, auto callback) {
         return ZEMAPI_UpdateFW_517x(c.Device(), data, length, callback, User()); });
     }},
    {"ZEMAPI_UpdateFlash", Ground::kDevice, {kBurn + kBurnPolls, 32, 1}, [](Call& c) {
       return SendsImage(c, [&](auto* data, auto length, auto callback) {
         return ZEMAPI_UpdateFlash(c.Device(), data, length, callback, User(),
                                   c.Any<std::uint8_t>(3), c.Any<std::uint8_t>(0)); });
     }},
    {"ZEMAPI_UpdateCaliData", Ground::kDevice, {kBurn + kBurnPolls, 32, 1}, [](Call& c) {
       return SendsImage(c, [&](auto* data, auto length, auto callback) {
         return ZEMAPI_UpdateCaliData(c.Device(), data, length, callback, User()); });
     }},

    // Non-volatile memory and tables
    {"ZEMAPI_WriteNVMEM", Ground::kDevice, {0, 29, 1}, [](Call& c) {
       const std::uint32_t length = c.Length(100, kMostData);
       return ZEMAPI_WriteNVMEM(c.Device(), c.Any<std::uint16_t>(0x100), c.Bytes(length), length,
                                c.Out<std::uint32_t>());
     }},
    {"ZEMAPI_ReadNVMEM", Ground::kDevice, {0, 29, 2}, [](Call& c) {
       const std::uint32_t length = c.Length(100, kMostData);
       const auto address = c.Any<std::uint16_t>(0);
       std::uint8_t* const data = c.Buffer(length);
       return ZEMAPI_ReadNVMEM(c.Device(), address, data, length, c.Out<std::uint32_t>());
     }},
    {"ZEMAPI_TIRELLA_WriteNVMEM", Ground::kDevice, {0, 29, 1}, [](Call& c) {
       const std::uint32_t length = c.Length(256, kMostData);
       return ZEMAPI_TIRELLA_WriteNVMEM(c.Device(), c.Bytes(length), length,
                                        c.Out<std::uint32_t>());
     }},
    {"ZEMAPI_TIRELLA_ReadNVMEM", Ground::kDevice, {18}, [](Call& c) {
       const auto length = c.Any<std::uint32_t>(256);
       std::uint8_t* const data = c.Buffer(std::min(length, 256U));
       return ZEMAPI_TIRELLA_ReadNVMEM(c.Device(), data, length, c.Out<std::uint32_t>());
     }},
    {"ZEMAPI_TIRELLA_LedCtrl", Ground::kDevice, {1}, SetOne<std::uint8_t, ZEMAPI_TIRELLA_LedCtrl>},
    {"ZEMAPI_OpenTableHandle", Ground::kDevice, {2 * (2 + kTableMemory / 29 + 1)}, [](Call& c) {
       std::uint8_t* table = nullptr;
       const ZemResult result = ZEMAPI_OpenTableHandle(c.Device(), &table);
       ZEMAPI_CloseTableHandle(nullptr, &table);
       return result;
     }},
    {"ZEMAPI_WriteTableEx", Ground::kDevice, {kTableMemory / 29 + 1}, [](Call& c) {
       // Table 1 has four bytes.
       static constexpr std::array<std::uint8_t, 12> kImage = {0xEE, 0, 12, 0, 0, 1,
                                                               8,    0, 1,  2, 3, 4};
       const bool isImage = c.Any<std::uint8_t>(0, 1) == 0;
       std::uint8_t* const table = c.BytesAlways(
           kTableMemory, Call::Use::kWritten, 1,
           isImage ? std::span<const std::uint8_t>(kImage) : std::span<const std::uint8_t>());
       return ZEMAPI_WriteTableEx(c.Device(), table, c.Any<std::uint8_t>(1), c.Bytes(kTableMemory),
                                  c.Any<std::uint32_t>(4), c.Out<std::uint32_t>());
     }},
    {"ZEMAPI_ReadTable", Ground::kDevice, {2 * (kTableMemory / 29 + 1)}, [](Call& c) {
       const auto id = c.Any<std::uint8_t>(1);
       std::uint8_t* const data = c.Buffer(kTableMemory);
       return ZEMAPI_ReadTable(c.Device(), id, data, c.Any<std::uint32_t>(kTableMemory),
                               c.Out<std::uint32_t>());
     }},
    {"ZEMAPI_WriteTable", Ground::kDevice, {3 * (kTableMemory / 29 + 1)}, [](Call& c) {
       return ZEMAPI_WriteTable(c.Device(), c.Any<std::uint8_t>(1), c.Bytes(kTableMemory),
                                c.Any<std::uint32_t>(kTableMemory), c.Out<std::uint32_t>());
     }},
    {"ZEMAPI_WriteInitialTable", Ground::kDevice, {kBurn, 32, 1}, [](Call& c) {
       const std::uint32_t length = c.Length(1000, kMostData);
       return ZEMAPI_WriteInitialTable(c.Device(), c.Bytes(length), length);
     }},

    // Calls without a handle
    {"ZEMUVCEXT_DoAF", Ground::kSystem, {2}, SetDefault<std::uint16_t, ZEMUVCEXT_DoAF>},
    {"ZEMUVCEXT_SetFps", Ground::kSystem, {2}, SetDefault<std::uint16_t, ZEMUVCEXT_SetFps>},
    {"ZEMUVCEXT_SetResolution", Ground::kSystem, {2},
     SetDefaultAt<std::uint32_t, std::uint32_t, ZEMUVCEXT_SetResolution>},
    {"ZEMUVCEXT_SetIFrame", Ground::kSystem, {2}, [](Call&) { return ZEMUVCEXT_SetIFrame(); }},
    {"ZEMUVCEXT_SetVideoQuality", Ground::kSystem, {2},
     SetDefault<std::uint8_t, ZEMUVCEXT_SetVideoQuality>},
    {"ZEMUVCEXT_SetBitRate", Ground::kSystem, {2}, SetDefault<std::uint16_t, ZEMUVCEXT_SetBitRate>},
    {"ZEMUVCEXT_SetFlickMode", Ground::kSystem, {2},
     SetDefault<std::uint8_t, ZEMUVCEXT_SetFlickMode>},
    {"ZEMUVCEXT_GetRegister", Ground::kSystem, {2},
     GetDefaultAt<std::uint16_t, std::uint8_t, ZEMUVCEXT_GetRegister>},
    {"ZEMUVCEXT_SetRegister", Ground::kSystem, {2},
     SetDefaultAt<std::uint16_t, std::uint8_t, ZEMUVCEXT_SetRegister>},
    {"ZEMUVCEXT_GetSensorRegister", Ground::kSystem, {2},
     GetDefaultAt<std::uint16_t, std::uint8_t, ZEMUVCEXT_GetSensorRegister>},
    {"ZEMUVCEXT_GetSensorRegisterW", Ground::kSystem, {2},
     GetDefaultAt<std::uint16_t, std::uint16_t, ZEMUVCEXT_GetSensorRegisterW>},
    {"ZEMUVCEXT_SetSensorRegister", Ground::kSystem, {2},
     SetDefaultAt<std::uint16_t, std::uint8_t, ZEMUVCEXT_SetSensorRegister>},
    {"ZEMUVCEXT_SetSensorRegisterW", Ground::kSystem, {2},
     SetDefaultAt<std::uint16_t, std::uint16_t, ZEMUVCEXT_SetSensorRegisterW>},
    {"ZEMUVCEXT_GetFWVersion", Ground::kSystem, {2},
     [](Call& c) { return ZEMUVCEXT_GetFWVersion(c.Buffer(6)); }},
    {"ZEMUVCEXT_GetFWBuildDay", Ground::kSystem, {2},
     [](Call& c) { return ZEMUVCEXT_GetFWBuildDay(reinterpret_cast<char*>(c.Buffer(12))); }},
    {"ZEMUVCEXT_SetH264Mode", Ground::kSystem, {2},
     SetDefault<std::uint8_t, ZEMUVCEXT_SetH264Mode>},
    {"ZEMUVCEXT_SetWDR", Ground::kSystem, {2}, SetDefault<std::uint8_t, ZEMUVCEXT_SetWDR>},
    {"ZEMUVCEXT_IspCommand", Ground::kSystem, {2}, DefaultCommand<ZEMUVCEXT_IspCommand, 8, 0x0B>},
    {"ZEMUVCEXT_IspCommandEx", Ground::kSystem, {2}, DefaultCommand<ZEMUVCEXT_IspCommandEx, 16, 1>},
    {"ZEMUVCEXT_VcpCommand", Ground::kSystem, {2}, DefaultCommand<ZEMUVCEXT_VcpCommand, 8, 0x23>},
    {"ZEMUVCEXT_GetChipInfo", Ground::kSystem, {1},
     [](Call& c) { return ZEMUVCEXT_GetChipInfo(c.Buffer(16)); }},
    {"ZEMUVCEXT_IspCmdWriteMem", Ground::kSystem, {1, 16, 1}, [](Call& c) {
       const std::uint32_t length = c.Length(100, kMostData);
       const bool isNegative = c.Any<std::uint8_t>(0) % 8 == 7;
       return ZEMUVCEXT_IspCmdWriteMem(c.Bytes(std::max(length, 16U)),
                                       isNegative ? -1 : static_cast<std::int32_t>(length));
     }},
    {"ZEMUVCEXT_IspCmdReadMem", Ground::kSystem, {0, 16, 1}, [](Call& c) {
       const std::uint32_t length = c.Length(100, kMostData);
       return ZEMUVCEXT_IspCmdReadMem(c.Buffer(length), length);
     }},
    {"ZEMUVCEXT_WriteFWData", Ground::kSystem, {1, 32, 1}, [](Call& c) {
       return SendsImageWithoutHandle(c, [](auto* data, auto length, auto callback) {
         return ZEMUVCEXT_WriteFWData(data, static_cast<std::int32_t>(length), callback,
                                      User()); });
     }},
    {"ZEMUVCEXT_ReadFWData", Ground::kSystem, {3, 1, 1}, [](Call& c) {
       return WithImage(c, 100, 1, Call::Use::kWritten, [&](auto* data, auto length, auto callback) {
         return ZEMUVCEXT_ReadFWData(data, length, c.Out<std::uint32_t>(), callback, User()); });
     }},
    {"ZEMUVCEXT_UpdateFW", Ground::kSystem, {kBurn + kBurnPolls, 32, 1}, [](Call& c) {
       return SendsImageWithoutHandle(c, [](auto* data, auto length, auto /*callback*/) {
         return ZEMUVCEXT_UpdateFW(data, length); });
     }},
    {"ZEMUVCEXT_UpdateFW_with_progress", Ground::kSystem, {kBurn + kBurnPolls, 32, 1}, [](Call& c) {
       return SendsImageWithoutHandle(c, [](auto* data, auto length, auto callback) {
         return ZEMUVCEXT_UpdateFW_with_progress(data, length, callback, User()); });
     }},
    {"ZEMUVCEXT_UpdateFW_with_progressEx", Ground::kSystem, {kBurn + kBurnPolls, 32, 1},
     [](Call& c) {
       return SendsImageWithoutHandle(c, [](auto* data, auto length, auto callback) {
         return ZEMUVCEXT_UpdateFW_with_progressEx(data, length, callback, User()); });
     }},
    {"ZEMUVCEXT_UpdateFW_Vision", Ground::kSystem, {kBurn + 1, 32, 1}, [](Call& c) {
       return SendsImageWithoutHandle(c, [&](auto* data, auto length, auto callback) {
         return ZEMUVCEXT_UpdateFW_Vision(data, length, c.Any<std::uint8_t>(0), callback,
                                          User()); });
     }},

    // ROM boot
    {"ZEMAPI_ResetToRomboot", Ground::kDevice, {2}, Plain<ZEMAPI_ResetToRomboot>},
    {"ZEMAPI_ResetToRomboot_VCP8", Ground::kDevice, {1}, Plain<ZEMAPI_ResetToRomboot_VCP8>},
    {"ZEMAPI_ResetToRomboot_VCP16", Ground::kDevice, {1}, Plain<ZEMAPI_ResetToRomboot_VCP16>},
    {"ZEMROMAPI_OpenDevice", Ground::kSystem, {kVolumeSearch}, [](Call& c) {
       void* session = ZEMROMAPI_OpenDevice(c.Any<unsigned>(1));
       const bool isOpen = session != nullptr;
       ZEMROMAPI_CloseDevice(&session);
       return isOpen ? ZEM_OK : ZEM_E_FAIL;
     }},
    {"ZEMROMAPI_CloseDevice", Ground::kSession, {}, [](Call& c) {
       ZEMROMAPI_CloseDevice(&c.stage().session);
       c.stage().session = nullptr;
       return ZEM_OK;
     }},
    {"ZEMROMAPI_CreateDumpFile", Ground::kSession, {}, [](Call& c) {
       const wchar_t* const path = c.File({});
       return ZEMROMAPI_CreateDumpFile(c.Session(), path, c.Any<int>(4096, kMostStorage));
     }},
    {"ZEMROMAPI_LoadMiniUVC", Ground::kSession, {kScsi, kScsiPiece, kScsi},
     Load<ZEMROMAPI_LoadMiniUVC>},
    {"ZEMROMAPI_LoadUpdater", Ground::kSession,
     {kScsi + 600 * kVolumeSearch, kScsiPiece, kScsi}, Load<ZEMROMAPI_LoadUpdater>},
    {"ZEMROMAPI_ResetSystem", Ground::kSession, {kScsi}, PlainBoot<ZEMROMAPI_ResetSystem>},
    {"ZEMROMAPI_SwitchModePCAM_SF", Ground::kSession, {kScsi},
     PlainBoot<ZEMROMAPI_SwitchModePCAM_SF>},
    {"?ZEMROMAPI_SwitchModePCAM_DRAM@@YAJPEAX@Z", Ground::kSession, {kScsi},
     PlainBoot<ZEMROMAPI_SwitchModePCAM_DRAM>},
    {"ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND", Ground::kSession, {kScsi},
     Select<ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND>},
    {"ZEMROMAPI_SwitchModePCAM_SPI_NAND", Ground::kSession, {kScsi},
     Select<ZEMROMAPI_SwitchModePCAM_SPI_NAND>},
    {"ZEMROMAPI_SwitchModePCAM_EMMC", Ground::kSession, {kScsi},
     Select<ZEMROMAPI_SwitchModePCAM_EMMC>},
    {"ZEMROMAPI_LongJump", Ground::kSession, {kScsi}, PlainBoot<ZEMROMAPI_LongJump>},
    {"ZEMROMAPI_SetFwDownloadAddr", Ground::kSession, {kScsi}, [](Call& c) {
       return ZEMROMAPI_SetFwDownloadAddr(c.Session(), c.Any<unsigned>());
     }},
    {"ZEMROMAPI_WriteRegister", Ground::kSession, {kScsi}, [](Call& c) {
       return ZEMROMAPI_WriteRegister(c.Session(), c.Any<unsigned>(), c.Any<std::uint8_t>());
     }},
    {"ZEMROMAPI_ReadRegister", Ground::kSession, {kScsi}, [](Call& c) {
       return ZEMROMAPI_ReadRegister(c.Session(), c.Any<unsigned>(), c.Out<unsigned char>());
     }},
    {"ZEMROMAPI_ScsiCommand", Ground::kSession, {kScsi}, [](Call& c) {
       // An inquiry.
       const unsigned length = c.Length(36, 65536);
       std::uint8_t* const cdb = c.Command(16, 0x12);
       std::uint8_t* const data = c.Buffer(length);
       return ZEMROMAPI_ScsiCommand(c.Session(), c.Any<int>(1, 1), length, cdb, data);
     }},
    {"ZEMROMAPI_MkEmmcEhancedArea", Ground::kSession, {kScsi}, [](Call& c) {
       return ZEMROMAPI_MkEmmcEhancedArea(c.stage().session, c.Any<unsigned>(), c.Any<unsigned>());
     }},
    {"ZEMROMAPI_Erase", Ground::kSession, {0, kScsiPiece, kScsi}, [](Call& c) {
       const unsigned size = c.Length(100000, kMostStorage);
       return ZEMROMAPI_Erase(c.stage().session, c.Any<unsigned>(0x1000), size);
     }},
    {"ZEMROMAPI_BurnFw", Ground::kSession, {2 * kScsi, kScsiPiece, kScsi},
     BurnAt<ZEMROMAPI_BurnFw, ImageFile>},
    {"ZEMROMAPI_BurnPcCamFw", Ground::kSession, {kScsi, kScsiPiece, kScsi},
     BurnAt<ZEMROMAPI_BurnPcCamFw, PcCamFile>},
    {"ZEMROMAPI_BurnPcCamFwPnsV2", Ground::kSession, {2 * kScsi, kScsiPiece, kScsi},
     BurnAt<ZEMROMAPI_BurnPcCamFwPnsV2, PcCamFile>},
    {"ZEMROMAPI_UpdateLinuxFwPkg", Ground::kSession, {2 * kScsi, kScsiPiece, kScsi}, [](Call& c) {
       const wchar_t* const path = c.File(LinuxFile());
       return ZEMROMAPI_UpdateLinuxFwPkg(c.Session(), path, c.Any<unsigned>(0x300000),
                                         c.Any<unsigned>(0x20000));
     }},
    {"ZEMROMAPI_UpdateLinuxFwPkg_", Ground::kSession, {2 * kScsi, kScsiPiece, kScsi}, [](Call& c) {
       const wchar_t* const path = c.File(LinuxFile());
       return ZEMROMAPI_UpdateLinuxFwPkg_(c.Session(), path, c.Any<unsigned>(0x20000));
     }},
    {"ZEMROMAPI_PartialUpdateWithHeader", Ground::kSession, {2 * kScsi, kScsiPiece, kScsi},
     BurnAt<ZEMROMAPI_PartialUpdateWithHeader, ImageFile>},
    {"ZEMROMAPI_PartialUpdate", Ground::kSession, {0, kScsiPiece, kScsi},
     BurnAt<ZEMROMAPI_PartialUpdate, ImageFile>},
    {"ZEMROMAPI_PartialRead", Ground::kSession, {0, kScsiPiece, kScsi}, [](Call& c) {
       const unsigned length = c.Length(100000, kMostStorage);
       const wchar_t* const path = c.File({});
       return ZEMROMAPI_PartialRead(c.Session(), path, c.Out<unsigned>(), length);
     }},
    {"ZEMROMAPI_LoadFW2Memory", Ground::kSession, {0, kScsiPiece, kScsi},
     BurnAt<ZEMROMAPI_LoadFW2Memory, ImageFile>},

    // H.264
    {"ZEMAPI_GetH264FrameList", Ground::kDevice, {kFrameList}, [](Call& c) {
       void* list = nullptr;
       const ZemResult result = ZEMAPI_GetH264FrameList(c.Device(), &list);
       ZEMAPI_ReleaseH264FrameList(list);
       return result;
     }},
    {"ZEMAPI_SetH264FrameIndex", Ground::kDevice, {kFrameList + kH264Start},
     SetOne<unsigned short, ZEMAPI_SetH264FrameIndex>},
    {"ZEMAPI_SetH264Mode", Ground::kDevice, {kH264Start},
     [](Call& c) {
       const auto width = c.Any<unsigned>(1280);
       return ZEMAPI_SetH264Mode(c.Device(), width, c.Any<unsigned>(720));
     }},
    {"ZEMAPI_SetFps", Ground::kDevice, {2}, SetOne<unsigned short, ZEMAPI_SetFps>},
    {"ZEMAPI_SetBitRate", Ground::kDevice, {2}, SetOne<unsigned short, ZEMAPI_SetBitRate>},
    {"ZEMAPI_ForceIFrame", Ground::kDevice, {2}, Plain<ZEMAPI_ForceIFrame>},

    // Encoding unit
    {"WREN_OpenDevice", Ground::kSystem, {}, [](Call& c) {
       void* device = nullptr;
       const ZemResult result = WREN_OpenDevice(c.Skipped(0, 3), &device);
       WREN_CloseDevice(&device);
       return result;
     }},
    {"WREN_CloseDevice", Ground::kFilter, {}, [](Call& c) {
       void* device = c.stage().filter;
       c.stage().filter->AddRef();
       WREN_CloseDevice(&device);
       return ZEM_OK;
     }},
    {"WREN_EuSet", Ground::kFilter, {1}, [](Call& c) {
       const std::uint32_t length = c.Length(4, 0xFFFF);
       return WREN_EuSet(c.Filter(), c.Any<std::uint32_t>(0, 0x10000) + 1, c.Bytes(length),
                         static_cast<std::uint16_t>(length));
     }},
    {"?WREN_EuGet@@YAJPEAXI0G@Z", Ground::kFilter, {1}, [](Call& c) {
       const std::uint32_t length = c.Length(4, 0xFFFF);
       return WREN_EuGet(c.Filter(), c.Any<std::uint32_t>(0, 0x10000) + 1, c.Buffer(length),
                         static_cast<std::uint16_t>(length));
     }},
    {"WREN_ProbeSet", Ground::kFilter, {1}, ProbeTransfer<WREN_ProbeSet, Call::Use::kRead>},
    {"WREN_ProbeGet", Ground::kFilter, {1}, ProbeTransfer<WREN_ProbeGet, Call::Use::kWritten>},
    {"WREN_CommitSet", Ground::kFilter, {1}, ProbeTransfer<WREN_CommitSet, Call::Use::kRead>},
    {"WREN_CommitGet", Ground::kFilter, {1}, ProbeTransfer<WREN_CommitGet, Call::Use::kWritten>},

    // Streams and endpoints
    {"ORVAAPI_GetVersion", Ground::kDevice, {1}, GetBytes<unsigned char, ORVAAPI_GetVersion, 1>},
    {"ORVAAPI_FirmwareBuildDay", Ground::kDevice, {1},
     GetBytes<unsigned short, ORVAAPI_FirmwareBuildDay, 2>},
    {"ORVAAPI_SetStreamID", Ground::kDevice, {1}, SetOne<unsigned char, ORVAAPI_SetStreamID>},
    {"ORVAAPI_GetEndpointSetting", Ground::kDevice, {1},
     GetBytes<unsigned char, ORVAAPI_GetEndpointSetting, 1>},
    {"ORVAAPI_StreamFormatProbeCommit", Ground::kDevice, {1}, [](Call& c) {
       return ORVAAPI_StreamFormatProbeCommit(c.Device(), c.Out<OrvaStreamFormat>(),
                                              c.Any<unsigned>(0, 4));
     }},
    {"ORVAAPI_ToggleLayerControl", Ground::kDevice, {1},
     SetOne<unsigned char, ORVAAPI_ToggleLayerControl>},
    {"ZEMAPI_MulticastStreamID", Ground::kDevice, {1},
     SetOne<unsigned char, ZEMAPI_MulticastStreamID>},
    {"ZEMAPI_MulticasToggleLayer", Ground::kDevice, {1},
     SetOne<unsigned char, ZEMAPI_MulticasToggleLayer>},
    {"ZEMAPI_MulticastCommit", Ground::kDevice, {2}, [](Call& c) {
       return ZEMAPI_MulticastCommit(c.Device(), c.Any<std::uint8_t>(), c.Any<std::uint16_t>(),
                                     c.Any<std::uint16_t>(), c.Any<std::uint8_t>(),
                                     c.Any<std::uint16_t>());
     }},
});

constexpr auto kWithoutDevice = std::to_array<std::string_view>({
    "ZEMAPI_GetSerialNumber",
    "ZEMAPI_CloseTableHandle",
    "ZEMAPI_GetTableSize",
    "ZEMAPI_ReadTableEx",
    "ZEMAPI_DumpWholeTable",
    "ZEMROMAPI_DispackZemPcCamFw",
    "ZEMAPI_ReleaseH264FrameList",
    "ZEMAPI_GetH264_UVC_PayloadFormat",
    "ZEMAPI_SetPframeCount",
    "WREN_WriteLog",
    "NV12_to_RGB",
    "ConvertYUY2toBMP",
    "ConvertNV12toBMP",
    "ConvertRGBtoBMP",
    "PackWavFile",
});

}  // namespace

std::span<const Operation> Operations() { return kOperations; }

std::span<const std::string_view> ExportsWithoutDevice() { return kWithoutDevice; }

std::uint64_t UsualChoices::Number(std::uint64_t usual, std::uint64_t /*most*/) { return usual; }

void UsualChoices::Fill(std::span<std::uint8_t> bytes) {
  std::uint8_t next = 1;
  for (std::uint8_t& byte : bytes) {
    byte = next++;
  }
}

Call::~Call() {
  for (const int file : files_) {
    close(file);
  }
}

std::uint32_t Call::Length(std::uint32_t usual, std::uint32_t most) {
  const auto length = static_cast<std::uint32_t>(choices_.Number(usual, most));
  length_ += length;
  return length;
}

std::uint32_t Call::Skipped(std::uint32_t usual, std::uint32_t most) {
  skipped_ = static_cast<std::uint32_t>(choices_.Number(usual, most));
  return skipped_;
}

std::uint8_t* Call::BytesAlways(std::size_t size, Use use, std::size_t unit,
                                std::span<const std::uint8_t> start) {
  const std::size_t whole = (size + unit - 1) / unit * unit;
  memory_.push_back(std::make_unique<std::uint8_t[]>(whole));
  const std::span<std::uint8_t> memory(memory_.back().get(), whole);
  choices_.Fill(memory);
  std::copy(start.begin(), start.end(), memory.begin());
  choices_.Give(memory, use);
  return memory.data();
}

std::uint8_t* Call::Command(std::size_t size, std::uint8_t usual) {
  const std::array<std::uint8_t, 1> code = {Any<std::uint8_t>(usual)};
  return choices_.LeftOut() ? nullptr : BytesAlways(size, Use::kRead, 1, code);
}

const wchar_t* Call::File(const FileBytes& usual) {
  FileBytes bytes = usual;
  if (const auto changed = Length(static_cast<std::uint32_t>(usual.size()), kMostStorage);
      changed != usual.size()) {
    bytes.resize(changed);
    // Any content of the first page decides; the rest is data.
    choices_.Fill({bytes.data(), std::min<std::size_t>(bytes.size(), 64)});
  }
  const int file = memfd_create("operation", 0);
  files_.push_back(file);
  if (write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
    std::abort();  // no memory for a file: nothing that a run could be about
  }
  return choices_.LeftOut() ? nullptr : Keep(L"/proc/self/fd/" + std::to_wstring(file));
}

const wchar_t* Call::Text(const std::wstring& usual) {
  if (choices_.LeftOut()) {
    return nullptr;
  }
  if (Any<std::uint8_t>(0, 7) != 7) {
    return Keep(usual);
  }
  constexpr std::size_t kMostText = 300;
  std::wstring text(Any<std::size_t>(0, kMostText), L'x');
  for (std::size_t index = 0; index < std::min<std::size_t>(text.size(), 8); ++index) {
    text[index] = Any<wchar_t>(0, 0xFFFF);
  }
  return Keep(text);
}

const wchar_t* Call::Keep(const std::wstring& text) {
  texts_.push_back(std::make_unique<wchar_t[]>(text.size() + 1));
  std::copy(text.begin(), text.end(), texts_.back().get());
  return texts_.back().get();
}

ProgressCallback Call::Progress() { return choices_.LeftOut() ? nullptr : CountProgress; }

}  // namespace zem::testing
