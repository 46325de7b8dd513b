/*
 * ZemUVCExtApi: control of USB video-class cameras built on the vendor's camera processors.
 *
 * One header for C11 and C++. It needs no other header of the library and does not include
 * windows.h; GUID is declared here exactly as the Windows SDK declares it, so the two can be
 * included in either order.
 *
 * Results. Functions that return ZemResult return a signed 32-bit code in the manner of HRESULT:
 * 0 or a positive value is no failure, ZEM_E_... below are the library's own failures, and any
 * other negative value is a failure of the platform, passed up unchanged. Functions that report
 * differently say so.
 *
 * Threads. The library starts no thread and takes no lock. COM is initialised per thread: a handle
 * is opened, used and closed on one thread, and two commands must never run on one device at once,
 * because a command and its reply are two separate transfers.
 *
 * Ownership. Memory the library hands out is given back with the matching function of the library.
 * Buffers passed in stay the caller's.
 *
 * Null pointers. A null device handle gives ZEM_E_NO_DEVICE and nothing is sent. Where a function
 * says nothing else, a null pointer for an output or for data gives ZEM_E_REFUSED, also before
 * anything is sent.
 */
#ifndef ZEM_UVC_EXT_API_H
#define ZEM_UVC_EXT_API_H

#include <stddef.h>
#include <stdint.h>

/* ---------------------------------------------------------------------------------------------
 * Types and linkage
 * ------------------------------------------------------------------------------------------- */

#if defined(_WIN32)
/** Result code; the platform's `long`, 32 bits wide. */
typedef long ZemResult;
/** Length or byte count of a raw transfer; the platform's `unsigned long`, 32 bits wide. */
typedef unsigned long ZemULong;
#else
typedef int32_t ZemResult;
typedef uint32_t ZemULong;
#endif

#ifndef GUID_DEFINED
#define GUID_DEFINED
typedef struct _GUID {
  ZemULong Data1;
  unsigned short Data2;
  unsigned short Data3;
  unsigned char Data4[8];
} GUID;
#endif

/** DirectShow's filter interface, used here as a pointer only. */
#ifdef __cplusplus
struct IBaseFilter;
#else
typedef struct IBaseFilter IBaseFilter;
#endif

#if defined(_WIN32) && !defined(ZEM_BUILDING_LIBRARY)
#define ZEM_API __declspec(dllimport)
#else
#define ZEM_API
#endif

/*
 * Some functions are exported under the symbol that a Microsoft x64 compiler gives their C++
 * declaration. A Microsoft compiler arrives at that symbol by itself; for GCC and Clang in their
 * MinGW flavours it is written out. (GCC hands the text to its assembler as it is, hence the
 * quotation marks; Clang adds them itself.)
 */
#if defined(_WIN32) && defined(__clang__) && !defined(_MSC_VER)
#define ZEM_DECORATED(symbol) __asm__(symbol)
#elif defined(_WIN32) && defined(__GNUC__) && !defined(_MSC_VER)
#define ZEM_DECORATED(symbol) __asm__("\"" symbol "\"")
#else
#define ZEM_DECORATED(symbol)
#endif

/* ---------------------------------------------------------------------------------------------
 * Result codes
 * ------------------------------------------------------------------------------------------- */

/** Done. */
#define ZEM_OK ((ZemResult)0)
/** Refused: a bad argument, or a table image or entry that is missing. */
#define ZEM_E_REFUSED ((ZemResult)0x80000000)
/** The device refused the command or reported an error (its status byte is not 0). */
#define ZEM_E_DEVICE_REFUSED ((ZemResult)0x80000001)
/** The caller's buffer is too small. */
#define ZEM_E_BUFFER_TOO_SMALL ((ZemResult)0x80000002)
/** No device handle, or the command block could not be written to the device. */
#define ZEM_E_NO_DEVICE ((ZemResult)0x80000003)
/** No matching device, corrupt data, or a failure in ROM boot. The value of E_FAIL. */
#define ZEM_E_FAIL ((ZemResult)0x80004005)

/* ---------------------------------------------------------------------------------------------
 * Extension units of the camera, as initialisers of a GUID
 * ------------------------------------------------------------------------------------------- */

/** The vendor command set: commands, data transfer, device information. */
#define ZEM_VENDOR_XU                                                              \
  {                                                                                \
    0x23E49ED0, 0x1178, 0x4F31, { 0xAE, 0x52, 0xD2, 0xFB, 0x8A, 0x8D, 0x3B, 0x48 } \
  }
/** H.264 stream configuration. */
#define ZEM_H264_XU                                                                \
  {                                                                                \
    0xA29E7641, 0xDE04, 0x47E3, { 0x8B, 0x2B, 0xF4, 0x34, 0x1A, 0xFF, 0x00, 0x3B } \
  }
/** The published Skype extension unit: version query, stream formats. */
#define ZEM_SKYPE_XU                                                               \
  {                                                                                \
    0xB42153BD, 0x35D6, 0x45CA, { 0xB2, 0x03, 0x4E, 0x01, 0x49, 0xB3, 0x01, 0xBC } \
  }
/** TIRELLA non-volatile memory and LED commands. */
#define ZEM_TIRELLA_XU                                                             \
  {                                                                                \
    0xF679EF5B, 0x54DF, 0x4BFC, { 0xB8, 0xCB, 0xCA, 0x7E, 0x89, 0xA5, 0x23, 0x3F } \
  }
/**
 * ORVA stream and endpoint commands. Not a misprint of the Skype unit's: the first three fields are
 * in reverse byte order, and the camera answers to exactly this.
 */
#define ZEM_ORVA_XU                                                                \
  {                                                                                \
    0xBD5321B4, 0xD635, 0xCA45, { 0xB2, 0x03, 0x4E, 0x01, 0x49, 0xB3, 0x01, 0xBC } \
  }
/** UVC 1.5 encoding-unit controls of the WREN family. */
#define ZEM_ENCODING_UNIT_XU                                                       \
  {                                                                                \
    0x38EB8662, 0x6545, 0x4BDF, { 0x91, 0xA1, 0x52, 0xC7, 0xF3, 0xBF, 0xBD, 0xC6 } \
  }
/** WREN probe and commit controls. */
#define ZEM_STREAM_PROBE_XU                                                        \
  {                                                                                \
    0xEA8516CB, 0xDDA5, 0x4C3F, { 0x97, 0x78, 0x13, 0x6F, 0x27, 0xF8, 0x0D, 0x93 } \
  }

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------
 * Opening and closing a camera
 *
 * A device handle stands for one opened camera. Every open that succeeds leaves COM initialised
 * once for the calling thread, and ZEMAPI_CloseDevice takes one initialisation back; the exception
 * is ZEMAPI_OpenDeviceBySourceFilter, which initialises nothing.
 * ------------------------------------------------------------------------------------------- */

/**
 * Opens the index-th camera that carries the default USB ids.
 *
 * The ids are the integers "DeviceVid" and "DevicePid" of section "AP" in zem_setting.ini beside
 * the host executable; without them, the vendor's id and product 0x8C00. The file is read on every
 * call.
 *
 * @param index  position among the matching cameras only, from 0, in the system's order
 * @param handle receives the handle; untouched on failure
 * @return 0; ZEM_E_FAIL when no camera matches or no more than `index` do; or the platform's
 *         failure
 */
ZEM_API ZemResult ZEMAPI_OpenDevice(unsigned int index, void** handle);

/**
 * Opens the index-th camera that carries the given USB ids. The settings file is not read.
 *
 * @param index  position among the matching cameras only, from 0
 * @param handle receives the handle; untouched on failure
 * @param vid    USB vendor id
 * @param pid    USB product id
 * @return as ZEMAPI_OpenDevice
 */
ZEM_API ZemResult ZEMAPI_OpenDeviceEx(unsigned int index, void** handle, unsigned int vid,
                                      unsigned int pid);

/**
 * Opens the first video-input device whose topology answers the search for the vendor extension
 * unit with anything but node 0.
 *
 * Deliberately wide: a device whose topology cannot be read, or that has nodes but no vendor unit,
 * is taken; a device without nodes, or with its vendor unit at node 0, is passed over.
 *
 * @param handle receives the handle; untouched on failure
 * @return 0; ZEM_E_FAIL when there is no such device; or the platform's failure
 */
ZEM_API ZemResult ZEMAPI_OpenZemDevice(void** handle);

/**
 * Opens the camera whose display name is the given text, compared whole and without regard to the
 * case of ASCII letters (names over 255 characters by their first 255).
 *
 * @param displayName the moniker's display name
 * @param handle      receives the handle; null on every result but 0
 * @return 0; 1 when the device lacks the vendor extension unit (it is closed again); ZEM_E_FAIL
 *         when no device has the name; or the platform's failure
 */
ZEM_API ZemResult ZEMAPI_OpenDeviceByPath(const wchar_t* displayName, void** handle);

/**
 * Opens the camera whose "DevicePath" property is the given text, compared whole and without regard
 * to the case of ASCII letters.
 *
 * @param devicePath the device path
 * @param handle     receives the handle; null on every result but 0
 * @return as ZEMAPI_OpenDeviceByPath
 */
ZEM_API ZemResult ZEMAPI_OpenDeviceByDevPath(const wchar_t* devicePath, void** handle);

/**
 * Makes a handle around a filter the caller has already.
 *
 * The handle takes a reference of its own. COM is not initialised here although ZEMAPI_CloseDevice
 * uninitialises it once: the caller balances that.
 *
 * @param filter the device's filter
 * @param handle receives the handle; null on failure
 * @return 0, or ZEM_E_FAIL for a null filter
 */
ZEM_API ZemResult ZEMAPI_OpenDeviceBySourceFilter(struct IBaseFilter* filter, void** handle);

/**
 * Closes a handle: releases the device, frees what the handle keeps, sets *handle to null and
 * uninitialises COM once. Does nothing when *handle (or handle) is null.
 *
 * @param handle the address of the caller's handle
 */
ZEM_API void ZEMAPI_CloseDevice(void** handle);

/**
 * Does not ask the camera: copies sixteen '0' digits with a bounded copy that gives 16 bytes as the
 * destination's size. The text with its terminator needs 17, so the copy fails: it sets serial[0]
 * to 0 and calls the runtime's invalid-parameter handler, which ends the process unless the host
 * has installed one. Kept as it is because callers depend on it.
 *
 * @param handle not used
 * @param serial 16 bytes
 * @return 16, when the invalid-parameter handler returns
 */
ZEM_API ZemResult ZEMAPI_GetSerialNumber(void* handle, char* serial);

/* ---------------------------------------------------------------------------------------------
 * Raw access to extension units
 *
 * One call moves one block to or from one control (selector) of one unit. Data and length go to
 * the device as they are, nothing is checked, padded or copied.
 * ------------------------------------------------------------------------------------------- */

/**
 * Writes one control of any extension unit.
 *
 * Each write also puts one line with its node, result and length on the debugger channel.
 *
 * @param handle        device handle
 * @param unit          the extension unit's GUID
 * @param selector      control selector, from 1
 * @param data          `length` bytes
 * @param length        bytes to write; 0 is passed on as such
 * @param bytesReturned receives the byte count the platform reports; may be null
 * @return the platform's result unchanged; ZEM_E_NO_DEVICE for a null handle; ZEM_E_REFUSED for a
 *         null unit
 */
ZEM_API ZemResult ZEMAPI_UvcExtSet(void* handle, const GUID* unit, unsigned short selector,
                                   void* data, ZemULong length, ZemULong* bytesReturned);

/**
 * Reads one control of any extension unit into `data`. Arguments and results as ZEMAPI_UvcExtSet,
 * without the debugger line. Every read initialises COM once for the calling thread.
 */
ZEM_API ZemResult ZEMAPI_UvcExtGet(void* handle, const GUID* unit, unsigned short selector,
                                   void* data, ZemULong length, ZemULong* bytesReturned);

/** ZEMAPI_UvcExtSet on the vendor extension unit. */
ZEM_API ZemResult ZEMAPI_ZemExtSet(void* handle, unsigned short selector, void* data,
                                   ZemULong length, ZemULong* bytesReturned);

/** ZEMAPI_UvcExtGet on the vendor extension unit. */
ZEM_API ZemResult ZEMAPI_ZemExtGet(void* handle, unsigned short selector, void* data,
                                   ZemULong length, ZemULong* bytesReturned);

/**
 * Tells whether the device has an extension unit. A device without any topology node counts as
 * having every unit.
 *
 * @param handle device handle
 * @param unit   the extension unit's GUID
 * @return 0 present, 1 absent, or the platform's failure; ZEM_E_NO_DEVICE for a null handle;
 *         ZEM_E_REFUSED for a null unit
 */
ZEM_API ZemResult ZEMAPI_UvcCheckXuGuid(void* handle, const GUID* unit);

/* ---------------------------------------------------------------------------------------------
 * Registers and vendor commands
 *
 * Unless a function says otherwise: 0 when the device accepted the command; ZEM_E_NO_DEVICE when
 * the handle is null or the command could not be written; ZEM_E_DEVICE_REFUSED when the device
 * answered with a status other than 0, and then no output is written. A reply that cannot be read
 * looks like one of zeros.
 * ------------------------------------------------------------------------------------------- */

/** Writes a 16-bit processor register at a 24-bit address (bits 24 to 31 are not sent). */
ZEM_API ZemResult ZEMAPI_SetRegister(void* handle, unsigned int address, unsigned short value);

/** Reads a 16-bit processor register at a 24-bit address. */
ZEM_API ZemResult ZEMAPI_GetRegister(void* handle, unsigned int address, unsigned short* value);

/** Writes one byte to an image-sensor register. */
ZEM_API ZemResult ZEMAPI_SetSensorRegister(void* handle, unsigned short address,
                                           unsigned char value);

/** Reads one byte from an image-sensor register. */
ZEM_API ZemResult ZEMAPI_GetSensorRegister(void* handle, unsigned short address,
                                           unsigned char* value);

/** Writes two bytes to an image-sensor register. */
ZEM_API ZemResult ZEMAPI_SetSensorRegisterW(void* handle, unsigned short address,
                                            unsigned short value);

/** Reads two bytes from an image-sensor register. */
ZEM_API ZemResult ZEMAPI_GetSensorRegisterW(void* handle, unsigned short address,
                                            unsigned short* value);

/** Writes a 16-bit register of the lens actuator (VCM). */
ZEM_API ZemResult ZEMAPI_SetVCMRegister(void* handle, unsigned short address, unsigned short value);

/** Reads a 16-bit register of the lens actuator (VCM). */
ZEM_API ZemResult ZEMAPI_GetVCMRegister(void* handle, unsigned short address,
                                        unsigned short* value);

/** Moves the lens to a position in the actuator's own units. */
ZEM_API ZemResult ZEMAPI_SetLensPos(void* handle, unsigned int position);

/**
 * Reads the firmware version.
 *
 * @param handle  device handle
 * @param version receives 6 bytes
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_GetFWVersion(void* handle, unsigned char* version);

/**
 * Asks for the result of the firmware's check-sum test.
 *
 * @return 0 the check sum is right; ZEM_E_DEVICE_REFUSED for device status 0x80; ZEM_E_REFUSED for
 *         any other status; ZEM_E_NO_DEVICE as all commands
 */
ZEM_API ZemResult ZEMAPI_GetCheckSumResult(void* handle);

/**
 * Reads a codec register. The device's status byte is not looked at.
 *
 * @return 0, or the platform's failure of whichever of the three transfers failed; then `value` is
 *         untouched
 */
ZEM_API ZemResult ZEMAPI_ReadCodecReg(void* handle, unsigned short reg, unsigned char* value);

/** Writes a codec register; no reply is read. Returns 0 or the platform's failure. */
ZEM_API ZemResult ZEMAPI_WriteCodecReg(void* handle, unsigned short reg, unsigned char value);

/**
 * Sends the caller's 8-byte block on the ISP channel and hands back the 8-byte reply, zeros where
 * nothing was read. The status byte is not looked at.
 *
 * @param command 8 bytes
 * @param reply   receives 8 bytes, unless the block could not be written
 * @return the failure of the write, else the platform's result of the read
 */
ZEM_API ZemResult ZEMAPI_IspCommand(void* handle, unsigned char* command, unsigned char* reply);

/** ZEMAPI_IspCommand on the VCP channel. */
ZEM_API ZemResult ZEMAPI_VcpCommand(void* handle, unsigned char* command, unsigned char* reply);

/**
 * Sends the caller's 16-byte block on the extended ISP channel.
 *
 * @param command 16 bytes
 * @param reply   receives the whole 16-byte reply, also when the device refused
 * @return ZEM_E_NO_DEVICE when the block could not be written, ZEM_E_DEVICE_REFUSED when reply byte
 *         0 is not 0, else 0
 */
ZEM_API ZemResult ZEMAPI_IspCommandEx(void* handle, unsigned char* command, unsigned char* reply);

/** ZEMAPI_IspCommandEx on the extended VCP channel. */
ZEM_API ZemResult ZEMAPI_VcpCommandEx(void* handle, unsigned char* command, unsigned char* reply);

/**
 * Reads the device information block.
 *
 * @param info receives 8 bytes; untouched on failure
 * @return 0, or ZEM_E_NO_DEVICE when it cannot be read
 */
ZEM_API ZemResult ZEMAPI_GetDeviceInfo(void* handle, unsigned char* info);

/* ---------------------------------------------------------------------------------------------
 * Image tuning and information
 * ------------------------------------------------------------------------------------------- */

/* ---------------------------------------------------------------------------------------------
 * Standard camera, video and audio controls
 * ------------------------------------------------------------------------------------------- */

/* ---------------------------------------------------------------------------------------------
 * Bulk data
 * ------------------------------------------------------------------------------------------- */

/* ---------------------------------------------------------------------------------------------
 * Firmware update
 * ------------------------------------------------------------------------------------------- */

/* ---------------------------------------------------------------------------------------------
 * Non-volatile memory and tables
 * ------------------------------------------------------------------------------------------- */

/* ---------------------------------------------------------------------------------------------
 * Calls without a handle
 * ------------------------------------------------------------------------------------------- */

/* ---------------------------------------------------------------------------------------------
 * ROM boot
 * ------------------------------------------------------------------------------------------- */

/* ---------------------------------------------------------------------------------------------
 * H.264
 * ------------------------------------------------------------------------------------------- */

/* ---------------------------------------------------------------------------------------------
 * Encoding unit
 * ------------------------------------------------------------------------------------------- */

/* ---------------------------------------------------------------------------------------------
 * Streams and endpoints
 * ------------------------------------------------------------------------------------------- */

/* ---------------------------------------------------------------------------------------------
 * Frames and sound
 * ------------------------------------------------------------------------------------------- */

#ifdef __cplusplus
} /* extern "C" */

/**
 * Reads the whole 8-byte reply to the version command, status byte and first data byte included.
 * For C++ callers only: an overload of the function above with an exported symbol of its own.
 *
 * @param handle  device handle
 * @param version receives 8 bytes; untouched when the device refuses
 * @return as the overload above, but ZEM_E_REFUSED when the device's status is not 0
 */
ZemResult ZEMAPI_GetFWVersion(void* handle, char* version)
    ZEM_DECORATED("?ZEMAPI_GetFWVersion@@YAJPEAXPEAD@Z");
#endif

#endif /* ZEM_UVC_EXT_API_H */
