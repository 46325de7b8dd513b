"""Every function, type and constant of ZemUVCExtApi for ctypes.

Made by scripts/generate_python.py from the library's headers; changes belong there. What a
function does, and which threads may call it, stands with its name in ZemUVCExtApi.h.
"""

from __future__ import annotations

import os
from ctypes import (CFUNCTYPE, POINTER, Structure, c_char, c_int32, c_ubyte, c_uint16,
                    c_uint32, c_uint64, c_void_p, c_wchar_p)
from typing import Any, Callable, NamedTuple

VERSION = "1.0.0"

# Results, as the functions return them: 32 bits with a sign.
ZEM_OK = 0
ZEM_E_REFUSED = 0x80000000 - 0x100000000
ZEM_E_DEVICE_REFUSED = 0x80000001 - 0x100000000
ZEM_E_BUFFER_TOO_SMALL = 0x80000002 - 0x100000000
ZEM_E_NO_DEVICE = 0x80000003 - 0x100000000
ZEM_E_FAIL = 0x80004005 - 0x100000000

# What each of them is called and means.
RESULTS: dict[int, tuple[str, str]] = {
    ZEM_OK: ("ZEM_OK", "done"),
    ZEM_E_REFUSED: ("ZEM_E_REFUSED", "the request was refused"),
    ZEM_E_DEVICE_REFUSED: ("ZEM_E_DEVICE_REFUSED", "the camera refused the command"),
    ZEM_E_BUFFER_TOO_SMALL: ("ZEM_E_BUFFER_TOO_SMALL", "the buffer is too small"),
    ZEM_E_NO_DEVICE: ("ZEM_E_NO_DEVICE", "the command could not be written to the camera"),
    ZEM_E_FAIL: ("ZEM_E_FAIL", "the library reports a failure"),
}

# What failures of the platform say about the transfer that they ended.
TRANSFER_FAILURES: dict[int, str] = {
    0x80070490 - 0x100000000: "the camera has no such control",
    0x80070037 - 0x100000000: "the camera is gone",
    0x8007001F - 0x100000000: "the camera did not carry it out",
    0x8007048F - 0x100000000: "the camera is gone",
    0x80070492 - 0x100000000: "the camera has no such control",
}


class GUID(Structure):
    _fields_ = [
        ("Data1", c_uint32),
        ("Data2", c_uint16),
        ("Data3", c_uint16),
        ("Data4", c_ubyte * 8),
    ]


class H264FrameInfo(Structure):
    _fields_ = [
        ("wLength", c_uint16),
        ("wType", c_uint16),
        ("wFrameIndex", c_uint16),
        ("bListMark", c_ubyte),
        ("bReserved", c_ubyte),
        ("wWidth", c_uint16),
        ("wHeight", c_uint16),
        ("wSubWidth", c_uint16),
        ("wSubHeight", c_uint16),
        ("dwMaxBitRate", c_uint32),
        ("dwMinBitRate", c_uint32),
        ("wMaxFps", c_uint16),
        ("wMinFps", c_uint16),
        ("dwReserved", c_uint32),
    ]


class H264FrameList(Structure):
    _fields_ = [
        ("wTotalLength", c_uint16),
        ("wCount", c_uint16),
    ]


class OrvaStreamFormat(Structure):
    _fields_ = [
        ("bStreamFormat", c_ubyte),
        ("wWidth", c_uint16),
        ("wHeight", c_uint16),
        ("dwFrameInterval", c_uint32),
        ("dwBitRate", c_uint32),
    ]


# x86-64 has one calling convention on each system, so this is the library's on both.
ProgressCallback = CFUNCTYPE(None, c_uint32, c_uint64)

# Extension units of the camera.
ZEM_VENDOR_XU = GUID(0x23E49ED0, 0x1178, 0x4F31,
                     (c_ubyte * 8)(0xAE, 0x52, 0xD2, 0xFB, 0x8A, 0x8D, 0x3B, 0x48))
ZEM_H264_XU = GUID(0xA29E7641, 0xDE04, 0x47E3,
                   (c_ubyte * 8)(0x8B, 0x2B, 0xF4, 0x34, 0x1A, 0xFF, 0x00, 0x3B))
ZEM_SKYPE_XU = GUID(0xB42153BD, 0x35D6, 0x45CA,
                    (c_ubyte * 8)(0xB2, 0x03, 0x4E, 0x01, 0x49, 0xB3, 0x01, 0xBC))
ZEM_TIRELLA_XU = GUID(0xF679EF5B, 0x54DF, 0x4BFC,
                      (c_ubyte * 8)(0xB8, 0xCB, 0xCA, 0x7E, 0x89, 0xA5, 0x23, 0x3F))
ZEM_ORVA_XU = GUID(0xBD5321B4, 0xD635, 0xCA45,
                   (c_ubyte * 8)(0xB2, 0x03, 0x4E, 0x01, 0x49, 0xB3, 0x01, 0xBC))
ZEM_ENCODING_UNIT_XU = GUID(0x38EB8662, 0x6545, 0x4BDF,
                            (c_ubyte * 8)(0x91, 0xA1, 0x52, 0xC7, 0xF3, 0xBF, 0xBD, 0xC6))
ZEM_STREAM_PROBE_XU = GUID(0xEA8516CB, 0xDDA5, 0x4C3F,
                           (c_ubyte * 8)(0x97, 0x78, 0x13, 0x6F, 0x27, 0xF8, 0x0D, 0x93))


class Export(NamedTuple):
    """A function of the library."""

    name: str  # in this module; a C++ overload of another function ends in _cpp
    result: Any  # a type of ctypes; None for nothing
    arguments: tuple[tuple[str, Any], ...]  # names and types
    decorated: tuple[str, str] | None = None  # symbols on Windows and Linux, of C++ functions

    @property
    def symbol(self) -> str:
        """The name by which this system's library exports it."""
        if self.decorated is None:
            return self.name
        return self.decorated[0 if os.name == "nt" else 1]


EXPORTS: tuple[Export, ...] = (
    Export("ZEMAPI_OpenDevice", c_int32, (
        ("index", c_uint32),
        ("handle", POINTER(c_void_p)),
    )),
    Export("ZEMAPI_OpenDeviceEx", c_int32, (
        ("index", c_uint32),
        ("handle", POINTER(c_void_p)),
        ("vid", c_uint32),
        ("pid", c_uint32),
    )),
    Export("ZEMAPI_OpenZemDevice", c_int32, (
        ("handle", POINTER(c_void_p)),
    )),
    Export("ZEMAPI_OpenDeviceByPath", c_int32, (
        ("displayName", c_wchar_p),
        ("handle", POINTER(c_void_p)),
    )),
    Export("ZEMAPI_OpenDeviceByDevPath", c_int32, (
        ("devicePath", c_wchar_p),
        ("handle", POINTER(c_void_p)),
    )),
    Export("ZEMAPI_OpenDeviceBySourceFilter", c_int32, (
        ("filter", c_void_p),
        ("handle", POINTER(c_void_p)),
    )),
    Export("ZEMAPI_CloseDevice", None, (
        ("handle", POINTER(c_void_p)),
    )),
    Export("ZEMAPI_GetSerialNumber", c_int32, (
        ("handle", c_void_p),
        ("serial", POINTER(c_char)),
    )),
    Export("ZEMAPI_UvcExtSet", c_int32, (
        ("handle", c_void_p),
        ("unit", POINTER(GUID)),
        ("selector", c_uint16),
        ("data", c_void_p),
        ("length", c_uint32),
        ("bytesReturned", POINTER(c_uint32)),
    )),
    Export("ZEMAPI_UvcExtGet", c_int32, (
        ("handle", c_void_p),
        ("unit", POINTER(GUID)),
        ("selector", c_uint16),
        ("data", c_void_p),
        ("length", c_uint32),
        ("bytesReturned", POINTER(c_uint32)),
    )),
    Export("ZEMAPI_ZemExtSet", c_int32, (
        ("handle", c_void_p),
        ("selector", c_uint16),
        ("data", c_void_p),
        ("length", c_uint32),
        ("bytesReturned", POINTER(c_uint32)),
    )),
    Export("ZEMAPI_ZemExtGet", c_int32, (
        ("handle", c_void_p),
        ("selector", c_uint16),
        ("data", c_void_p),
        ("length", c_uint32),
        ("bytesReturned", POINTER(c_uint32)),
    )),
    Export("ZEMAPI_UvcCheckXuGuid", c_int32, (
        ("handle", c_void_p),
        ("unit", POINTER(GUID)),
    )),
    Export("ZEMAPI_SetRegister", c_int32, (
        ("handle", c_void_p),
        ("address", c_uint32),
        ("value", c_uint16),
    )),
    Export("ZEMAPI_GetRegister", c_int32, (
        ("handle", c_void_p),
        ("address", c_uint32),
        ("value", POINTER(c_uint16)),
    )),
    Export("ZEMAPI_SetSensorRegister", c_int32, (
        ("handle", c_void_p),
        ("address", c_uint16),
        ("value", c_ubyte),
    )),
    Export("ZEMAPI_GetSensorRegister", c_int32, (
        ("handle", c_void_p),
        ("address", c_uint16),
        ("value", POINTER(c_ubyte)),
    )),
    Export("ZEMAPI_SetSensorRegisterW", c_int32, (
        ("handle", c_void_p),
        ("address", c_uint16),
        ("value", c_uint16),
    )),
    Export("ZEMAPI_GetSensorRegisterW", c_int32, (
        ("handle", c_void_p),
        ("address", c_uint16),
        ("value", POINTER(c_uint16)),
    )),
    Export("ZEMAPI_SetVCMRegister", c_int32, (
        ("handle", c_void_p),
        ("address", c_uint16),
        ("value", c_uint16),
    )),
    Export("ZEMAPI_GetVCMRegister", c_int32, (
        ("handle", c_void_p),
        ("address", c_uint16),
        ("value", POINTER(c_uint16)),
    )),
    Export("ZEMAPI_SetLensPos", c_int32, (
        ("handle", c_void_p),
        ("position", c_uint32),
    )),
    Export("ZEMAPI_GetFWVersion", c_int32, (
        ("handle", c_void_p),
        ("version", POINTER(c_ubyte)),
    )),
    Export("ZEMAPI_GetCheckSumResult", c_int32, (
        ("handle", c_void_p),
    )),
    Export("ZEMAPI_ReadCodecReg", c_int32, (
        ("handle", c_void_p),
        ("reg", c_uint16),
        ("value", POINTER(c_ubyte)),
    )),
    Export("ZEMAPI_WriteCodecReg", c_int32, (
        ("handle", c_void_p),
        ("reg", c_uint16),
        ("value", c_ubyte),
    )),
    Export("ZEMAPI_IspCommand", c_int32, (
        ("handle", c_void_p),
        ("command", POINTER(c_ubyte)),
        ("reply", POINTER(c_ubyte)),
    )),
    Export("ZEMAPI_VcpCommand", c_int32, (
        ("handle", c_void_p),
        ("command", POINTER(c_ubyte)),
        ("reply", POINTER(c_ubyte)),
    )),
    Export("ZEMAPI_IspCommandEx", c_int32, (
        ("handle", c_void_p),
        ("command", POINTER(c_ubyte)),
        ("reply", POINTER(c_ubyte)),
    )),
    Export("ZEMAPI_VcpCommandEx", c_int32, (
        ("handle", c_void_p),
        ("command", POINTER(c_ubyte)),
        ("reply", POINTER(c_ubyte)),
    )),
    Export("ZEMAPI_GetDeviceInfo", c_int32, (
        ("handle", c_void_p),
        ("info", POINTER(c_ubyte)),
    )),
    Export("ZEMAPI_GetFWBuildDate", c_int32, (
        ("handle", c_void_p),
        ("date", POINTER(c_char)),
    )),
    Export("ZEMAPI_EnableAF", c_int32, (
        ("handle", c_void_p),
        ("enable", c_ubyte),
    )),
    Export("ZEMAPI_EnableAE", c_int32, (
        ("handle", c_void_p),
        ("enable", c_ubyte),
    )),
    Export("ZEMAPI_GetAFACC", c_int32, (
        ("handle", c_void_p),
        ("values", POINTER(c_uint32)),
    )),
    Export("ZEMAPI_SetVideoRecMode", c_int32, (
        ("handle", c_void_p),
        ("mode", c_ubyte),
    )),
    Export("ZEMAPI_SetAWBGain", c_int32, (
        ("handle", c_void_p),
        ("gain1", c_uint16),
        ("gain2", c_uint16),
        ("gain3", c_uint16),
    )),
    Export("ZEMAPI_GetAWBGain", c_int32, (
        ("handle", c_void_p),
        ("gain1", POINTER(c_uint16)),
        ("gain2", POINTER(c_uint16)),
        ("gain3", POINTER(c_uint16)),
    )),
    Export("ZEMAPI_EnableManualGainCtrl", c_int32, (
        ("handle", c_void_p),
        ("enable", c_int32),
    )),
    Export("ZEMAPI_SetShadding", c_int32, (
        ("handle", c_void_p),
        ("value", c_ubyte),
    )),
    Export("ZEMAPI_SetMiscSetting", c_int32, (
        ("handle", c_void_p),
        ("settings", POINTER(c_ubyte)),
    )),
    Export("ZEMAPI_GetMiscSetting", c_int32, (
        ("handle", c_void_p),
        ("settings", POINTER(c_ubyte)),
    )),
    Export("ZEMAPI_SetMjpgQuality", c_int32, (
        ("handle", c_void_p),
    )),
    Export("ZEMAPI_SetImageEffect", c_int32, (
        ("handle", c_void_p),
        ("effect", c_ubyte),
    )),
    Export("ZEMAPI_SetMaxQP", c_int32, (
        ("handle", c_void_p),
        ("qp", c_ubyte),
    )),
    Export("ZEMAPI_SetMinQP", c_int32, (
        ("handle", c_void_p),
        ("qp", c_ubyte),
    )),
    Export("ZEMAPI_GetSensorSN", c_int32, (
        ("handle", c_void_p),
        ("serial", POINTER(c_ubyte)),
    )),
    Export("ZEMAPI_GetSkypeXUVersion", c_int32, (
        ("handle", c_void_p),
        ("version", POINTER(c_ubyte)),
    )),
    Export("ZEMAPI_GetVideoProcAmp", c_int32, (
        ("handle", c_void_p),
        ("property", c_int32),
        ("value", POINTER(c_int32)),
        ("flags", POINTER(c_int32)),
    )),
    Export("ZEMAPI_SetVideoProcAmp", c_int32, (
        ("handle", c_void_p),
        ("property", c_int32),
        ("value", c_int32),
        ("flags", c_int32),
    )),
    Export("ZEMAPI_GetVideoProcAmpRange", c_int32, (
        ("handle", c_void_p),
        ("property", c_int32),
        ("minimum", POINTER(c_int32)),
        ("maximum", POINTER(c_int32)),
        ("step", POINTER(c_int32)),
        ("defaultValue", POINTER(c_int32)),
        ("capsFlags", POINTER(c_int32)),
    )),
    Export("ZEMAPI_GetCameraControl", c_int32, (
        ("handle", c_void_p),
        ("property", c_int32),
        ("value", POINTER(c_int32)),
        ("flags", POINTER(c_int32)),
    )),
    Export("ZEMAPI_SetCameraControl", c_int32, (
        ("handle", c_void_p),
        ("property", c_int32),
        ("value", c_int32),
        ("flags", c_int32),
    )),
    Export("ZEMAPI_GetCameraControlRange", c_int32, (
        ("handle", c_void_p),
        ("property", c_int32),
        ("minimum", POINTER(c_int32)),
        ("maximum", POINTER(c_int32)),
        ("step", POINTER(c_int32)),
        ("defaultValue", POINTER(c_int32)),
        ("capsFlags", POINTER(c_int32)),
    )),
    Export("ZEMAPI_Get_IVideoProcAmp_Interface", c_int32, (
        ("handle", c_void_p),
        ("videoProcAmp", POINTER(c_void_p)),
    )),
    Export("ZEMAPI_AudioOpenDeviceByPath", c_int32, (
        ("displayName", c_wchar_p),
        ("audio", POINTER(c_void_p)),
    )),
    Export("ZEMAPI_AudioCloseDevice", c_int32, (
        ("audio", POINTER(c_void_p)),
    )),
    Export("ZEMAPI_AudioSetVolume", c_int32, (
        ("audio", c_void_p),
        ("volume", c_int32),
    )),
    Export("ZEMAPI_SendData", c_int32, (
        ("handle", c_void_p),
        ("data", POINTER(c_ubyte)),
        ("length", c_uint32),
        ("callback", ProgressCallback),
        ("user", c_uint64),
        ("param2", c_ubyte),
        ("param3", c_ubyte),
    )),
    Export("ZEMAPI_WriteFWData", c_int32, (
        ("handle", c_void_p),
        ("data", POINTER(c_ubyte)),
        ("length", c_uint32),
        ("callback", ProgressCallback),
        ("user", c_uint64),
    )),
    Export("ZEMAPI_ReadFWData", c_int32, (
        ("handle", c_void_p),
        ("buffer", POINTER(c_ubyte)),
        ("bufferSize", c_uint32),
        ("outLength", POINTER(c_uint32)),
        ("callback", ProgressCallback),
        ("user", c_uint64),
    )),
    Export("ZEMAPI_ReadPartialFlashData", c_int32, (
        ("handle", c_void_p),
        ("address", c_uint32),
        ("size", c_uint32),
        ("buffer", POINTER(c_ubyte)),
        ("outSize", POINTER(c_uint32)),
        ("callback", ProgressCallback),
        ("user", c_uint64),
    )),
    Export("ZEMAPI_UpdateFW_516x", c_int32, (
        ("handle", c_void_p),
        ("image", POINTER(c_ubyte)),
        ("length", c_uint32),
        ("callback", ProgressCallback),
        ("user", c_uint64),
        ("param", c_ubyte),
    )),
    Export("ZEMAPI_UpdateFW_517x", c_int32, (
        ("handle", c_void_p),
        ("image", POINTER(c_ubyte)),
        ("length", c_uint32),
        ("callback", ProgressCallback),
        ("user", c_uint64),
    )),
    Export("ZEMAPI_UpdateFlash", c_int32, (
        ("handle", c_void_p),
        ("data", POINTER(c_ubyte)),
        ("length", c_uint32),
        ("callback", ProgressCallback),
        ("user", c_uint64),
        ("param2", c_ubyte),
        ("param3", c_ubyte),
    )),
    Export("ZEMAPI_UpdateCaliData", c_int32, (
        ("handle", c_void_p),
        ("data", POINTER(c_ubyte)),
        ("length", c_uint32),
        ("callback", ProgressCallback),
        ("user", c_uint64),
    )),
    Export("ZEMAPI_WriteNVMEM", c_int32, (
        ("handle", c_void_p),
        ("address", c_uint16),
        ("data", POINTER(c_ubyte)),
        ("length", c_uint32),
        ("written", POINTER(c_uint32)),
    )),
    Export("ZEMAPI_ReadNVMEM", c_int32, (
        ("handle", c_void_p),
        ("address", c_uint16),
        ("buffer", POINTER(c_ubyte)),
        ("length", c_uint32),
        ("read", POINTER(c_uint32)),
    )),
    Export("ZEMAPI_TIRELLA_WriteNVMEM", c_int32, (
        ("handle", c_void_p),
        ("data", POINTER(c_ubyte)),
        ("length", c_uint32),
        ("written", POINTER(c_uint32)),
    )),
    Export("ZEMAPI_TIRELLA_ReadNVMEM", c_int32, (
        ("handle", c_void_p),
        ("buffer", POINTER(c_ubyte)),
        ("length", c_uint32),
        ("read", POINTER(c_uint32)),
    )),
    Export("ZEMAPI_TIRELLA_LedCtrl", c_int32, (
        ("handle", c_void_p),
        ("value", c_ubyte),
    )),
    Export("ZEMAPI_OpenTableHandle", c_int32, (
        ("handle", c_void_p),
        ("table", POINTER(POINTER(c_ubyte))),
    )),
    Export("ZEMAPI_CloseTableHandle", c_int32, (
        ("handle", c_void_p),
        ("table", POINTER(POINTER(c_ubyte))),
    )),
    Export("ZEMAPI_GetTableSize", c_int32, (
        ("handle", c_void_p),
        ("table", POINTER(c_ubyte)),
        ("id", c_ubyte),
        ("size", POINTER(c_uint16)),
    )),
    Export("ZEMAPI_ReadTableEx", c_int32, (
        ("handle", c_void_p),
        ("table", POINTER(c_ubyte)),
        ("id", c_ubyte),
        ("out", POINTER(c_ubyte)),
        ("outSize", c_uint32),
        ("size", POINTER(c_uint32)),
    )),
    Export("ZEMAPI_WriteTableEx", c_int32, (
        ("handle", c_void_p),
        ("table", POINTER(c_ubyte)),
        ("id", c_ubyte),
        ("data", POINTER(c_ubyte)),
        ("dataSize", c_uint32),
        ("size", POINTER(c_uint32)),
    )),
    Export("ZEMAPI_ReadTable", c_int32, (
        ("handle", c_void_p),
        ("id", c_ubyte),
        ("out", POINTER(c_ubyte)),
        ("outSize", c_uint32),
        ("size", POINTER(c_uint32)),
    )),
    Export("ZEMAPI_WriteTable", c_int32, (
        ("handle", c_void_p),
        ("id", c_ubyte),
        ("data", POINTER(c_ubyte)),
        ("dataSize", c_uint32),
        ("size", POINTER(c_uint32)),
    )),
    Export("ZEMAPI_WriteInitialTable", c_int32, (
        ("handle", c_void_p),
        ("image", POINTER(c_ubyte)),
        ("length", c_uint32),
    )),
    Export("ZEMAPI_DumpWholeTable", c_int32, (
        ("handle", c_void_p),
        ("table", POINTER(c_ubyte)),
        ("out", POINTER(c_ubyte)),
        ("capacity", c_uint32),
        ("size", POINTER(c_uint32)),
    )),
    Export("ZEMUVCEXT_DoAF", c_int32, (
        ("value", c_uint16),
    )),
    Export("ZEMUVCEXT_SetFps", c_int32, (
        ("fps", c_uint16),
    )),
    Export("ZEMUVCEXT_SetResolution", c_int32, (
        ("width", c_uint32),
        ("height", c_uint32),
    )),
    Export("ZEMUVCEXT_SetIFrame", c_int32, (
    )),
    Export("ZEMUVCEXT_SetVideoQuality", c_int32, (
        ("quality", c_ubyte),
    )),
    Export("ZEMUVCEXT_SetBitRate", c_int32, (
        ("rate", c_uint16),
    )),
    Export("ZEMUVCEXT_SetFlickMode", c_int32, (
        ("mode", c_ubyte),
    )),
    Export("ZEMUVCEXT_GetRegister", c_int32, (
        ("address", c_uint16),
        ("value", POINTER(c_ubyte)),
    )),
    Export("ZEMUVCEXT_SetRegister", c_int32, (
        ("address", c_uint16),
        ("value", c_ubyte),
    )),
    Export("ZEMUVCEXT_GetSensorRegister", c_int32, (
        ("address", c_uint16),
        ("value", POINTER(c_ubyte)),
    )),
    Export("ZEMUVCEXT_GetSensorRegisterW", c_int32, (
        ("address", c_uint16),
        ("value", POINTER(c_uint16)),
    )),
    Export("ZEMUVCEXT_SetSensorRegister", c_int32, (
        ("address", c_uint16),
        ("value", c_ubyte),
    )),
    Export("ZEMUVCEXT_SetSensorRegisterW", c_int32, (
        ("address", c_uint16),
        ("value", c_uint16),
    )),
    Export("ZEMUVCEXT_GetFWVersion", c_int32, (
        ("version", POINTER(c_ubyte)),
    )),
    Export("ZEMUVCEXT_GetFWBuildDay", c_int32, (
        ("text", POINTER(c_char)),
    )),
    Export("ZEMUVCEXT_SetH264Mode", c_int32, (
        ("mode", c_ubyte),
    )),
    Export("ZEMUVCEXT_SetWDR", c_int32, (
        ("value", c_ubyte),
    )),
    Export("ZEMUVCEXT_IspCommand", c_int32, (
        ("command", POINTER(c_ubyte)),
        ("reply", POINTER(c_ubyte)),
    )),
    Export("ZEMUVCEXT_IspCommandEx", c_int32, (
        ("command", POINTER(c_ubyte)),
        ("reply", POINTER(c_ubyte)),
    )),
    Export("ZEMUVCEXT_VcpCommand", c_int32, (
        ("command", POINTER(c_ubyte)),
        ("reply", POINTER(c_ubyte)),
    )),
    Export("ZEMUVCEXT_GetChipInfo", c_int32, (
        ("info", POINTER(c_ubyte)),
    )),
    Export("ZEMUVCEXT_IspCmdWriteMem", c_int32, (
        ("data", POINTER(c_ubyte)),
        ("length", c_int32),
    )),
    Export("ZEMUVCEXT_IspCmdReadMem", c_int32, (
        ("buffer", POINTER(c_ubyte)),
        ("length", c_uint32),
    )),
    Export("ZEMUVCEXT_WriteFWData", c_int32, (
        ("data", POINTER(c_ubyte)),
        ("length", c_int32),
        ("callback", ProgressCallback),
        ("user", c_uint64),
    )),
    Export("ZEMUVCEXT_ReadFWData", c_int32, (
        ("buffer", POINTER(c_ubyte)),
        ("bufferSize", c_uint32),
        ("outLength", POINTER(c_uint32)),
        ("callback", ProgressCallback),
        ("user", c_uint64),
    )),
    Export("ZEMUVCEXT_UpdateFW", c_int32, (
        ("image", POINTER(c_ubyte)),
        ("length", c_uint32),
    )),
    Export("ZEMUVCEXT_UpdateFW_with_progress", c_int32, (
        ("image", POINTER(c_ubyte)),
        ("length", c_uint32),
        ("callback", ProgressCallback),
        ("user", c_uint64),
    )),
    Export("ZEMUVCEXT_UpdateFW_with_progressEx", c_int32, (
        ("image", POINTER(c_ubyte)),
        ("length", c_uint32),
        ("callback", ProgressCallback),
        ("user", c_uint64),
    )),
    Export("ZEMUVCEXT_UpdateFW_Vision", c_int32, (
        ("image", POINTER(c_ubyte)),
        ("length", c_uint32),
        ("param", c_ubyte),
        ("callback", ProgressCallback),
        ("user", c_uint64),
    )),
    Export("ZEMAPI_ResetToRomboot", c_int32, (
        ("handle", c_void_p),
    )),
    Export("ZEMAPI_ResetToRomboot_VCP8", c_int32, (
        ("handle", c_void_p),
    )),
    Export("ZEMAPI_ResetToRomboot_VCP16", c_int32, (
        ("handle", c_void_p),
    )),
    Export("ZEMROMAPI_OpenDevice", c_void_p, (
        ("mode", c_uint32),
    )),
    Export("ZEMROMAPI_CloseDevice", None, (
        ("device", POINTER(c_void_p)),
    )),
    Export("ZEMROMAPI_CreateDumpFile", c_int32, (
        ("device", c_void_p),
        ("path", c_wchar_p),
        ("size", c_int32),
    )),
    Export("ZEMROMAPI_LoadMiniUVC", c_int32, (
        ("device", c_void_p),
        ("path", c_wchar_p),
    )),
    Export("ZEMROMAPI_LoadUpdater", c_int32, (
        ("device", c_void_p),
        ("path", c_wchar_p),
    )),
    Export("ZEMROMAPI_ResetSystem", c_int32, (
        ("device", c_void_p),
    )),
    Export("ZEMROMAPI_SwitchModePCAM_SF", c_int32, (
        ("device", c_void_p),
    )),
    Export("ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND", c_int32, (
        ("device", c_void_p),
        ("option", c_ubyte),
    )),
    Export("ZEMROMAPI_SwitchModePCAM_SPI_NAND", c_int32, (
        ("device", c_void_p),
        ("option", c_ubyte),
    )),
    Export("ZEMROMAPI_SwitchModePCAM_EMMC", c_int32, (
        ("device", c_void_p),
        ("option", c_ubyte),
    )),
    Export("ZEMROMAPI_LongJump", c_int32, (
        ("device", c_void_p),
    )),
    Export("ZEMROMAPI_SetFwDownloadAddr", c_int32, (
        ("device", c_void_p),
        ("address", c_uint32),
    )),
    Export("ZEMROMAPI_WriteRegister", c_int32, (
        ("device", c_void_p),
        ("address", c_uint32),
        ("value", c_ubyte),
    )),
    Export("ZEMROMAPI_ReadRegister", c_int32, (
        ("device", c_void_p),
        ("address", c_uint32),
        ("value", POINTER(c_ubyte)),
    )),
    Export("ZEMROMAPI_ScsiCommand", c_int32, (
        ("device", c_void_p),
        ("dataIn", c_int32),
        ("length", c_uint32),
        ("cdb", POINTER(c_ubyte)),
        ("data", c_void_p),
    )),
    Export("ZEMROMAPI_MkEmmcEhancedArea", c_int32, (
        ("device", c_void_p),
        ("first", c_uint32),
        ("second", c_uint32),
    )),
    Export("ZEMROMAPI_Erase", c_int32, (
        ("device", c_void_p),
        ("address", c_uint32),
        ("size", c_uint32),
    )),
    Export("ZEMROMAPI_BurnFw", c_int32, (
        ("device", c_void_p),
        ("path", c_wchar_p),
        ("address", POINTER(c_uint32)),
    )),
    Export("ZEMROMAPI_BurnPcCamFw", c_int32, (
        ("device", c_void_p),
        ("path", c_wchar_p),
        ("address", POINTER(c_uint32)),
    )),
    Export("ZEMROMAPI_BurnPcCamFwPnsV2", c_int32, (
        ("device", c_void_p),
        ("path", c_wchar_p),
        ("address", POINTER(c_uint32)),
    )),
    Export("ZEMROMAPI_DispackZemPcCamFw", c_int32, (
        ("device", c_void_p),
        ("path", c_wchar_p),
    )),
    Export("ZEMROMAPI_UpdateLinuxFwPkg", c_int32, (
        ("device", c_void_p),
        ("path", c_wchar_p),
        ("bodyAddress", c_uint32),
        ("headerAddress", c_uint32),
    )),
    Export("ZEMROMAPI_UpdateLinuxFwPkg_", c_int32, (
        ("device", c_void_p),
        ("path", c_wchar_p),
        ("headerAddress", c_uint32),
    )),
    Export("ZEMROMAPI_PartialUpdateWithHeader", c_int32, (
        ("device", c_void_p),
        ("path", c_wchar_p),
        ("address", POINTER(c_uint32)),
    )),
    Export("ZEMROMAPI_PartialUpdate", c_int32, (
        ("device", c_void_p),
        ("path", c_wchar_p),
        ("address", POINTER(c_uint32)),
    )),
    Export("ZEMROMAPI_PartialRead", c_int32, (
        ("device", c_void_p),
        ("path", c_wchar_p),
        ("address", POINTER(c_uint32)),
        ("length", c_uint32),
    )),
    Export("ZEMROMAPI_LoadFW2Memory", c_int32, (
        ("device", c_void_p),
        ("path", c_wchar_p),
        ("address", POINTER(c_uint32)),
    )),
    Export("ZEMAPI_GetH264FrameList", c_int32, (
        ("handle", c_void_p),
        ("list", POINTER(c_void_p)),
    )),
    Export("ZEMAPI_ReleaseH264FrameList", None, (
        ("list", c_void_p),
    )),
    Export("ZEMAPI_SetH264FrameIndex", c_int32, (
        ("handle", c_void_p),
        ("frameIndex", c_uint16),
    )),
    Export("ZEMAPI_SetH264Mode", c_int32, (
        ("handle", c_void_p),
        ("width", c_uint32),
        ("height", c_uint32),
    )),
    Export("ZEMAPI_GetH264_UVC_PayloadFormat", c_int32, (
        ("handle", c_void_p),
        ("index", c_uint16),
        ("width", POINTER(c_uint16)),
        ("height", POINTER(c_uint16)),
        ("subtype", POINTER(GUID)),
    )),
    Export("ZEMAPI_SetFps", c_int32, (
        ("handle", c_void_p),
        ("fps", c_uint16),
    )),
    Export("ZEMAPI_SetBitRate", c_int32, (
        ("handle", c_void_p),
        ("bitRate", c_uint16),
    )),
    Export("ZEMAPI_ForceIFrame", c_int32, (
        ("handle", c_void_p),
    )),
    Export("ZEMAPI_SetPframeCount", c_int32, (
        ("handle", c_void_p),
        ("count", c_uint32),
    )),
    Export("WREN_OpenDevice", c_int32, (
        ("index", c_uint32),
        ("device", POINTER(c_void_p)),
    )),
    Export("WREN_CloseDevice", None, (
        ("device", POINTER(c_void_p)),
    )),
    Export("WREN_EuSet", c_int32, (
        ("device", c_void_p),
        ("selector", c_uint32),
        ("data", c_void_p),
        ("length", c_uint16),
    )),
    Export("WREN_ProbeSet", c_int32, (
        ("device", c_void_p),
        ("block", c_void_p),
    )),
    Export("WREN_ProbeGet", c_int32, (
        ("device", c_void_p),
        ("block", c_void_p),
    )),
    Export("WREN_CommitSet", c_int32, (
        ("device", c_void_p),
        ("block", c_void_p),
    )),
    Export("WREN_CommitGet", c_int32, (
        ("device", c_void_p),
        ("block", c_void_p),
    )),
    Export("WREN_WriteLog", None, (
        ("text", c_wchar_p),
    )),
    Export("ORVAAPI_GetVersion", c_int32, (
        ("handle", c_void_p),
        ("version", POINTER(c_ubyte)),
    )),
    Export("ORVAAPI_FirmwareBuildDay", c_int32, (
        ("handle", c_void_p),
        ("buildDay", POINTER(c_uint16)),
    )),
    Export("ORVAAPI_SetStreamID", c_int32, (
        ("handle", c_void_p),
        ("streamId", c_ubyte),
    )),
    Export("ORVAAPI_GetEndpointSetting", c_int32, (
        ("handle", c_void_p),
        ("setting", POINTER(c_ubyte)),
    )),
    Export("ORVAAPI_StreamFormatProbeCommit", c_int32, (
        ("handle", c_void_p),
        ("format", POINTER(OrvaStreamFormat)),
        ("operation", c_uint32),
    )),
    Export("ORVAAPI_ToggleLayerControl", c_int32, (
        ("handle", c_void_p),
        ("value", c_ubyte),
    )),
    Export("ZEMAPI_MulticastStreamID", c_int32, (
        ("handle", c_void_p),
        ("streamId", c_ubyte),
    )),
    Export("ZEMAPI_MulticasToggleLayer", c_int32, (
        ("handle", c_void_p),
        ("value", c_ubyte),
    )),
    Export("ZEMAPI_MulticastCommit", c_int32, (
        ("handle", c_void_p),
        ("streamFormat", c_ubyte),
        ("width", c_uint16),
        ("height", c_uint16),
        ("packedLow", c_ubyte),
        ("packedHigh", c_uint16),
    )),
    Export("NV12_to_RGB", None, (
        ("source", POINTER(c_ubyte)),
        ("destination", POINTER(c_ubyte)),
        ("width", c_uint32),
        ("height", c_uint32),
    )),
    Export("ConvertYUY2toBMP", c_int32, (
        ("path", c_wchar_p),
        ("frame", POINTER(c_ubyte)),
        ("width", c_uint32),
        ("height", c_uint32),
    )),
    Export("ConvertNV12toBMP", c_int32, (
        ("path", c_wchar_p),
        ("frame", POINTER(c_ubyte)),
        ("width", c_uint32),
        ("height", c_uint32),
    )),
    Export("ConvertRGBtoBMP", c_int32, (
        ("path", c_wchar_p),
        ("pixels", POINTER(c_ubyte)),
        ("width", c_uint32),
        ("height", c_uint32),
    )),
    Export("PackWavFile", c_int32, (
        ("rawPath", c_wchar_p),
        ("wavPath", c_wchar_p),
        ("channels", c_ubyte),
        ("sampleRate", c_int32),
        ("bitsPerSample", c_ubyte),
    )),
    Export("ZEMAPI_GetFWVersion_cpp", c_int32, (
        ("handle", c_void_p),
        ("version", POINTER(c_char)),
    ), ("?ZEMAPI_GetFWVersion@@YAJPEAXPEAD@Z", "_Z19ZEMAPI_GetFWVersionPvPc")),
    Export("WREN_EuGet", c_int32, (
        ("device", c_void_p),
        ("selector", c_uint32),
        ("data", c_void_p),
        ("length", c_uint16),
    ), ("?WREN_EuGet@@YAJPEAXI0G@Z", "_Z10WREN_EuGetPvjS_t")),
    Export("ZEMROMAPI_SwitchModePCAM_DRAM", c_int32, (
        ("device", c_void_p),
    ), ("?ZEMROMAPI_SwitchModePCAM_DRAM@@YAJPEAX@Z", "_Z29ZEMROMAPI_SwitchModePCAM_DRAMPv")),
)


class Exports:
    """The functions of a loaded library, by their names."""

    ZEMAPI_OpenDevice: Callable[..., Any]  # (index, handle)
    ZEMAPI_OpenDeviceEx: Callable[..., Any]  # (index, handle, vid, pid)
    ZEMAPI_OpenZemDevice: Callable[..., Any]  # (handle)
    ZEMAPI_OpenDeviceByPath: Callable[..., Any]  # (displayName, handle)
    ZEMAPI_OpenDeviceByDevPath: Callable[..., Any]  # (devicePath, handle)
    ZEMAPI_OpenDeviceBySourceFilter: Callable[..., Any]  # (filter, handle)
    ZEMAPI_CloseDevice: Callable[..., Any]  # (handle)
    ZEMAPI_GetSerialNumber: Callable[..., Any]  # (handle, serial)
    ZEMAPI_UvcExtSet: Callable[..., Any]  # (handle, unit, selector, data, length, bytesReturned)
    ZEMAPI_UvcExtGet: Callable[..., Any]  # (handle, unit, selector, data, length, bytesReturned)
    ZEMAPI_ZemExtSet: Callable[..., Any]  # (handle, selector, data, length, bytesReturned)
    ZEMAPI_ZemExtGet: Callable[..., Any]  # (handle, selector, data, length, bytesReturned)
    ZEMAPI_UvcCheckXuGuid: Callable[..., Any]  # (handle, unit)
    ZEMAPI_SetRegister: Callable[..., Any]  # (handle, address, value)
    ZEMAPI_GetRegister: Callable[..., Any]  # (handle, address, value)
    ZEMAPI_SetSensorRegister: Callable[..., Any]  # (handle, address, value)
    ZEMAPI_GetSensorRegister: Callable[..., Any]  # (handle, address, value)
    ZEMAPI_SetSensorRegisterW: Callable[..., Any]  # (handle, address, value)
    ZEMAPI_GetSensorRegisterW: Callable[..., Any]  # (handle, address, value)
    ZEMAPI_SetVCMRegister: Callable[..., Any]  # (handle, address, value)
    ZEMAPI_GetVCMRegister: Callable[..., Any]  # (handle, address, value)
    ZEMAPI_SetLensPos: Callable[..., Any]  # (handle, position)
    ZEMAPI_GetFWVersion: Callable[..., Any]  # (handle, version)
    ZEMAPI_GetCheckSumResult: Callable[..., Any]  # (handle)
    ZEMAPI_ReadCodecReg: Callable[..., Any]  # (handle, reg, value)
    ZEMAPI_WriteCodecReg: Callable[..., Any]  # (handle, reg, value)
    ZEMAPI_IspCommand: Callable[..., Any]  # (handle, command, reply)
    ZEMAPI_VcpCommand: Callable[..., Any]  # (handle, command, reply)
    ZEMAPI_IspCommandEx: Callable[..., Any]  # (handle, command, reply)
    ZEMAPI_VcpCommandEx: Callable[..., Any]  # (handle, command, reply)
    ZEMAPI_GetDeviceInfo: Callable[..., Any]  # (handle, info)
    ZEMAPI_GetFWBuildDate: Callable[..., Any]  # (handle, date)
    ZEMAPI_EnableAF: Callable[..., Any]  # (handle, enable)
    ZEMAPI_EnableAE: Callable[..., Any]  # (handle, enable)
    ZEMAPI_GetAFACC: Callable[..., Any]  # (handle, values)
    ZEMAPI_SetVideoRecMode: Callable[..., Any]  # (handle, mode)
    ZEMAPI_SetAWBGain: Callable[..., Any]  # (handle, gain1, gain2, gain3)
    ZEMAPI_GetAWBGain: Callable[..., Any]  # (handle, gain1, gain2, gain3)
    ZEMAPI_EnableManualGainCtrl: Callable[..., Any]  # (handle, enable)
    ZEMAPI_SetShadding: Callable[..., Any]  # (handle, value)
    ZEMAPI_SetMiscSetting: Callable[..., Any]  # (handle, settings)
    ZEMAPI_GetMiscSetting: Callable[..., Any]  # (handle, settings)
    ZEMAPI_SetMjpgQuality: Callable[..., Any]  # (handle)
    ZEMAPI_SetImageEffect: Callable[..., Any]  # (handle, effect)
    ZEMAPI_SetMaxQP: Callable[..., Any]  # (handle, qp)
    ZEMAPI_SetMinQP: Callable[..., Any]  # (handle, qp)
    ZEMAPI_GetSensorSN: Callable[..., Any]  # (handle, serial)
    ZEMAPI_GetSkypeXUVersion: Callable[..., Any]  # (handle, version)
    ZEMAPI_GetVideoProcAmp: Callable[..., Any]  # (handle, property, value, flags)
    ZEMAPI_SetVideoProcAmp: Callable[..., Any]  # (handle, property, value, flags)
    ZEMAPI_GetVideoProcAmpRange: Callable[..., Any]  # (handle, property, minimum, maximum, step, defaultValue, capsFlags)
    ZEMAPI_GetCameraControl: Callable[..., Any]  # (handle, property, value, flags)
    ZEMAPI_SetCameraControl: Callable[..., Any]  # (handle, property, value, flags)
    ZEMAPI_GetCameraControlRange: Callable[..., Any]  # (handle, property, minimum, maximum, step, defaultValue, capsFlags)
    ZEMAPI_Get_IVideoProcAmp_Interface: Callable[..., Any]  # (handle, videoProcAmp)
    ZEMAPI_AudioOpenDeviceByPath: Callable[..., Any]  # (displayName, audio)
    ZEMAPI_AudioCloseDevice: Callable[..., Any]  # (audio)
    ZEMAPI_AudioSetVolume: Callable[..., Any]  # (audio, volume)
    ZEMAPI_SendData: Callable[..., Any]  # (handle, data, length, callback, user, param2, param3)
    ZEMAPI_WriteFWData: Callable[..., Any]  # (handle, data, length, callback, user)
    ZEMAPI_ReadFWData: Callable[..., Any]  # (handle, buffer, bufferSize, outLength, callback, user)
    ZEMAPI_ReadPartialFlashData: Callable[..., Any]  # (handle, address, size, buffer, outSize, callback, user)
    ZEMAPI_UpdateFW_516x: Callable[..., Any]  # (handle, image, length, callback, user, param)
    ZEMAPI_UpdateFW_517x: Callable[..., Any]  # (handle, image, length, callback, user)
    ZEMAPI_UpdateFlash: Callable[..., Any]  # (handle, data, length, callback, user, param2, param3)
    ZEMAPI_UpdateCaliData: Callable[..., Any]  # (handle, data, length, callback, user)
    ZEMAPI_WriteNVMEM: Callable[..., Any]  # (handle, address, data, length, written)
    ZEMAPI_ReadNVMEM: Callable[..., Any]  # (handle, address, buffer, length, read)
    ZEMAPI_TIRELLA_WriteNVMEM: Callable[..., Any]  # (handle, data, length, written)
    ZEMAPI_TIRELLA_ReadNVMEM: Callable[..., Any]  # (handle, buffer, length, read)
    ZEMAPI_TIRELLA_LedCtrl: Callable[..., Any]  # (handle, value)
    ZEMAPI_OpenTableHandle: Callable[..., Any]  # (handle, table)
    ZEMAPI_CloseTableHandle: Callable[..., Any]  # (handle, table)
    ZEMAPI_GetTableSize: Callable[..., Any]  # (handle, table, id, size)
    ZEMAPI_ReadTableEx: Callable[..., Any]  # (handle, table, id, out, outSize, size)
    ZEMAPI_WriteTableEx: Callable[..., Any]  # (handle, table, id, data, dataSize, size)
    ZEMAPI_ReadTable: Callable[..., Any]  # (handle, id, out, outSize, size)
    ZEMAPI_WriteTable: Callable[..., Any]  # (handle, id, data, dataSize, size)
    ZEMAPI_WriteInitialTable: Callable[..., Any]  # (handle, image, length)
    ZEMAPI_DumpWholeTable: Callable[..., Any]  # (handle, table, out, capacity, size)
    ZEMUVCEXT_DoAF: Callable[..., Any]  # (value)
    ZEMUVCEXT_SetFps: Callable[..., Any]  # (fps)
    ZEMUVCEXT_SetResolution: Callable[..., Any]  # (width, height)
    ZEMUVCEXT_SetIFrame: Callable[..., Any]  # ()
    ZEMUVCEXT_SetVideoQuality: Callable[..., Any]  # (quality)
    ZEMUVCEXT_SetBitRate: Callable[..., Any]  # (rate)
    ZEMUVCEXT_SetFlickMode: Callable[..., Any]  # (mode)
    ZEMUVCEXT_GetRegister: Callable[..., Any]  # (address, value)
    ZEMUVCEXT_SetRegister: Callable[..., Any]  # (address, value)
    ZEMUVCEXT_GetSensorRegister: Callable[..., Any]  # (address, value)
    ZEMUVCEXT_GetSensorRegisterW: Callable[..., Any]  # (address, value)
    ZEMUVCEXT_SetSensorRegister: Callable[..., Any]  # (address, value)
    ZEMUVCEXT_SetSensorRegisterW: Callable[..., Any]  # (address, value)
    ZEMUVCEXT_GetFWVersion: Callable[..., Any]  # (version)
    ZEMUVCEXT_GetFWBuildDay: Callable[..., Any]  # (text)
    ZEMUVCEXT_SetH264Mode: Callable[..., Any]  # (mode)
    ZEMUVCEXT_SetWDR: Callable[..., Any]  # (value)
    ZEMUVCEXT_IspCommand: Callable[..., Any]  # (command, reply)
    ZEMUVCEXT_IspCommandEx: Callable[..., Any]  # (command, reply)
    ZEMUVCEXT_VcpCommand: Callable[..., Any]  # (command, reply)
    ZEMUVCEXT_GetChipInfo: Callable[..., Any]  # (info)
    ZEMUVCEXT_IspCmdWriteMem: Callable[..., Any]  # (data, length)
    ZEMUVCEXT_IspCmdReadMem: Callable[..., Any]  # (buffer, length)
    ZEMUVCEXT_WriteFWData: Callable[..., Any]  # (data, length, callback, user)
    ZEMUVCEXT_ReadFWData: Callable[..., Any]  # (buffer, bufferSize, outLength, callback, user)
    ZEMUVCEXT_UpdateFW: Callable[..., Any]  # (image, length)
    ZEMUVCEXT_UpdateFW_with_progress: Callable[..., Any]  # (image, length, callback, user)
    ZEMUVCEXT_UpdateFW_with_progressEx: Callable[..., Any]  # (image, length, callback, user)
    ZEMUVCEXT_UpdateFW_Vision: Callable[..., Any]  # (image, length, param, callback, user)
    ZEMAPI_ResetToRomboot: Callable[..., Any]  # (handle)
    ZEMAPI_ResetToRomboot_VCP8: Callable[..., Any]  # (handle)
    ZEMAPI_ResetToRomboot_VCP16: Callable[..., Any]  # (handle)
    ZEMROMAPI_OpenDevice: Callable[..., Any]  # (mode)
    ZEMROMAPI_CloseDevice: Callable[..., Any]  # (device)
    ZEMROMAPI_CreateDumpFile: Callable[..., Any]  # (device, path, size)
    ZEMROMAPI_LoadMiniUVC: Callable[..., Any]  # (device, path)
    ZEMROMAPI_LoadUpdater: Callable[..., Any]  # (device, path)
    ZEMROMAPI_ResetSystem: Callable[..., Any]  # (device)
    ZEMROMAPI_SwitchModePCAM_SF: Callable[..., Any]  # (device)
    ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND: Callable[..., Any]  # (device, option)
    ZEMROMAPI_SwitchModePCAM_SPI_NAND: Callable[..., Any]  # (device, option)
    ZEMROMAPI_SwitchModePCAM_EMMC: Callable[..., Any]  # (device, option)
    ZEMROMAPI_LongJump: Callable[..., Any]  # (device)
    ZEMROMAPI_SetFwDownloadAddr: Callable[..., Any]  # (device, address)
    ZEMROMAPI_WriteRegister: Callable[..., Any]  # (device, address, value)
    ZEMROMAPI_ReadRegister: Callable[..., Any]  # (device, address, value)
    ZEMROMAPI_ScsiCommand: Callable[..., Any]  # (device, dataIn, length, cdb, data)
    ZEMROMAPI_MkEmmcEhancedArea: Callable[..., Any]  # (device, first, second)
    ZEMROMAPI_Erase: Callable[..., Any]  # (device, address, size)
    ZEMROMAPI_BurnFw: Callable[..., Any]  # (device, path, address)
    ZEMROMAPI_BurnPcCamFw: Callable[..., Any]  # (device, path, address)
    ZEMROMAPI_BurnPcCamFwPnsV2: Callable[..., Any]  # (device, path, address)
    ZEMROMAPI_DispackZemPcCamFw: Callable[..., Any]  # (device, path)
    ZEMROMAPI_UpdateLinuxFwPkg: Callable[..., Any]  # (device, path, bodyAddress, headerAddress)
    ZEMROMAPI_UpdateLinuxFwPkg_: Callable[..., Any]  # (device, path, headerAddress)
    ZEMROMAPI_PartialUpdateWithHeader: Callable[..., Any]  # (device, path, address)
    ZEMROMAPI_PartialUpdate: Callable[..., Any]  # (device, path, address)
    ZEMROMAPI_PartialRead: Callable[..., Any]  # (device, path, address, length)
    ZEMROMAPI_LoadFW2Memory: Callable[..., Any]  # (device, path, address)
    ZEMAPI_GetH264FrameList: Callable[..., Any]  # (handle, list)
    ZEMAPI_ReleaseH264FrameList: Callable[..., Any]  # (list)
    ZEMAPI_SetH264FrameIndex: Callable[..., Any]  # (handle, frameIndex)
    ZEMAPI_SetH264Mode: Callable[..., Any]  # (handle, width, height)
    ZEMAPI_GetH264_UVC_PayloadFormat: Callable[..., Any]  # (handle, index, width, height, subtype)
    ZEMAPI_SetFps: Callable[..., Any]  # (handle, fps)
    ZEMAPI_SetBitRate: Callable[..., Any]  # (handle, bitRate)
    ZEMAPI_ForceIFrame: Callable[..., Any]  # (handle)
    ZEMAPI_SetPframeCount: Callable[..., Any]  # (handle, count)
    WREN_OpenDevice: Callable[..., Any]  # (index, device)
    WREN_CloseDevice: Callable[..., Any]  # (device)
    WREN_EuSet: Callable[..., Any]  # (device, selector, data, length)
    WREN_ProbeSet: Callable[..., Any]  # (device, block)
    WREN_ProbeGet: Callable[..., Any]  # (device, block)
    WREN_CommitSet: Callable[..., Any]  # (device, block)
    WREN_CommitGet: Callable[..., Any]  # (device, block)
    WREN_WriteLog: Callable[..., Any]  # (text)
    ORVAAPI_GetVersion: Callable[..., Any]  # (handle, version)
    ORVAAPI_FirmwareBuildDay: Callable[..., Any]  # (handle, buildDay)
    ORVAAPI_SetStreamID: Callable[..., Any]  # (handle, streamId)
    ORVAAPI_GetEndpointSetting: Callable[..., Any]  # (handle, setting)
    ORVAAPI_StreamFormatProbeCommit: Callable[..., Any]  # (handle, format, operation)
    ORVAAPI_ToggleLayerControl: Callable[..., Any]  # (handle, value)
    ZEMAPI_MulticastStreamID: Callable[..., Any]  # (handle, streamId)
    ZEMAPI_MulticasToggleLayer: Callable[..., Any]  # (handle, value)
    ZEMAPI_MulticastCommit: Callable[..., Any]  # (handle, streamFormat, width, height, packedLow, packedHigh)
    NV12_to_RGB: Callable[..., Any]  # (source, destination, width, height)
    ConvertYUY2toBMP: Callable[..., Any]  # (path, frame, width, height)
    ConvertNV12toBMP: Callable[..., Any]  # (path, frame, width, height)
    ConvertRGBtoBMP: Callable[..., Any]  # (path, pixels, width, height)
    PackWavFile: Callable[..., Any]  # (rawPath, wavPath, channels, sampleRate, bitsPerSample)
    ZEMAPI_GetFWVersion_cpp: Callable[..., Any]  # (handle, version)
    WREN_EuGet: Callable[..., Any]  # (device, selector, data, length)
    ZEMROMAPI_SwitchModePCAM_DRAM: Callable[..., Any]  # (device)

    def __init__(self, library: Any) -> None:
        """Takes each from `library`, a ctypes.CDLL. Raises AttributeError for one that it lacks."""
        for export in EXPORTS:
            # A name may begin with a question mark, which only this way of asking takes.
            function = library[export.symbol]
            function.restype = export.result
            function.argtypes = [kind for _, kind in export.arguments]
            setattr(self, export.name, function)
