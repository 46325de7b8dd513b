/* SPDX-License-Identifier: MIT */
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
 * because a command and its reply are two separate transfers. Different threads may use different
 * devices at the same time, with any functions. All that they share is the mark that a
 * ZEMROMAPI_OpenDevice with bit 0x10 leaves in the process, and files whose names are fixed: the
 * encoding unit's log, and those that ZEMROMAPI_DispackZemPcCamFw makes.
 *
 * Ownership. Memory the library hands out is given back with the matching function of the library.
 * Buffers passed in stay the caller's.
 *
 * Null pointers. A null device handle gives ZEM_E_NO_DEVICE and nothing is sent. Where a function
 * says nothing else, a null pointer for an output or for data gives ZEM_E_REFUSED, also before
 * anything is sent.
 *
 * Linux. The shared library has the same functions. ZemResult, ZemLong and ZemULong are 32 bits
 * wide there too, so they are not `long`; wchar_t has 32 bits, one code point each. What the
 * Universal C Runtime's malloc and free are on Windows, the C library's are. There is no COM and
 * no message queue to care for, the rule of one thread for a device holds all the same. What is
 * said here of DirectShow holds for the kernel's drivers; docs/linux.md has the details.
 */
#ifndef ZEM_UVC_EXT_API_H
#define ZEM_UVC_EXT_API_H

#include <stddef.h>
#include <stdint.h>

/* ---------------------------------------------------------------------------------------------
 * Version
 *
 * The one place that says it: the build takes it from here for the files' resources, the shared
 * library's name and the tool.
 * ------------------------------------------------------------------------------------------- */

/** Counts up when callers have to change. */
#define ZEM_VERSION_MAJOR 1
/** Counts up when something is new. */
#define ZEM_VERSION_MINOR 0
/** Counts up when something is mended. */
#define ZEM_VERSION_PATCH 0

/** The version of this header as text, such as "1.2.3". */
#define ZEM_VERSION ZEM_VERSION_TEXT(ZEM_VERSION_MAJOR, ZEM_VERSION_MINOR, ZEM_VERSION_PATCH)
#define ZEM_VERSION_TEXT(major, minor, patch) ZEM_VERSION_TEXT_OF(major, minor, patch)
#define ZEM_VERSION_TEXT_OF(major, minor, patch) #major "." #minor "." #patch

/* ---------------------------------------------------------------------------------------------
 * Types and linkage
 * ------------------------------------------------------------------------------------------- */

#if defined(_WIN32)
/** Result code; the platform's `long`, 32 bits wide. */
typedef long ZemResult;
/** Length or byte count of a raw transfer; the platform's `unsigned long`, 32 bits wide. */
typedef unsigned long ZemULong;
/** Number of a standard control; the platform's `long`, 32 bits wide. */
typedef long ZemLong;
#else
typedef int32_t ZemResult;
typedef int32_t ZemLong;
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

/**
 * A function of the caller's that is told how far a transfer has come. It is called on the thread
 * that runs the transfer.
 *
 * @param progress a percentage, unless the function that takes the callback says otherwise
 * @param user     the caller's own value, passed through unchanged
 */
typedef void (*ProgressCallback)(uint32_t progress, uint64_t user);

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
#if !defined(_WIN32) && defined(ZEM_BUILDING_LIBRARY)
#pragma GCC visibility push(default)
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
 * is ZEMAPI_OpenDeviceBySourceFilter, which initialises nothing. What an open that fails leaves of
 * COM differs and stands with each. It leaves COM as it was where an argument is null and where
 * memory for the handle is exhausted, which gives ZEM_E_FAIL and releases the device.
 * ------------------------------------------------------------------------------------------- */

/**
 * Opens the index-th camera that carries the default USB ids.
 *
 * The ids are the integers "DeviceVid" and "DevicePid" of section "AP" in zem_setting.ini beside
 * the host executable; without them, the vendor's id and product 0x8C00. The file is read on every
 * call.
 *
 * A failure leaves COM as it was, but initialised once more when a matching camera cannot be bound.
 * A matching camera that `index` skips keeps one reference that nobody gives back, whether the call
 * fails or not: callers depend on it.
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
 * is taken; a device without nodes, or with its vendor unit at node 0, is passed over. So is one
 * that gives no filter when it is bound; a filter is taken whatever the result of the binding.
 *
 * A failure of the search leaves COM initialised once more.
 *
 * @param handle receives the handle; untouched on failure
 * @return 0; ZEM_E_FAIL when there is no such device; or the platform's failure
 */
ZEM_API ZemResult ZEMAPI_OpenZemDevice(void** handle);

/**
 * Opens the camera whose display name is the given text, compared whole and without regard to the
 * case of ASCII letters (names over 255 characters by their first 255).
 *
 * A failure of the search leaves COM initialised once more, the result 1 leaves it as it was.
 *
 * @param displayName the moniker's display name; null is a name that no device has, and nothing is
 *                    searched
 * @param handle      receives the handle; null on every result but 0
 * @return 0; 1 when the device lacks the vendor extension unit (it is closed again); ZEM_E_FAIL
 *         when no device has the name; or the platform's failure
 */
ZEM_API ZemResult ZEMAPI_OpenDeviceByPath(const wchar_t* displayName, void** handle);

/**
 * Opens the camera whose "DevicePath" property is the given text, compared whole and without regard
 * to the case of ASCII letters. COM as with ZEMAPI_OpenDeviceByPath.
 *
 * @param devicePath the device path; null is a path that no device has, and nothing is searched
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
 * has installed one; on Linux there is no such handler, and SIGABRT ends the process. Kept as it is
 * because callers depend on it. ZEMAPI_GetSensorSN asks the camera.
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
 *
 * @param handle        device handle
 * @param unit          the extension unit's GUID
 * @param selector      control selector, from 1
 * @param data          receives up to `length` bytes
 * @param length        bytes to read; 0 is passed on as such
 * @param bytesReturned receives the byte count the platform reports; may be null
 * @return as ZEMAPI_UvcExtSet
 */
ZEM_API ZemResult ZEMAPI_UvcExtGet(void* handle, const GUID* unit, unsigned short selector,
                                   void* data, ZemULong length, ZemULong* bytesReturned);

/**
 * ZEMAPI_UvcExtSet on the vendor extension unit.
 *
 * @param handle        device handle
 * @param selector      control selector, from 1
 * @param data          `length` bytes
 * @param length        bytes to write; 0 is passed on as such
 * @param bytesReturned receives the byte count the platform reports; may be null
 * @return as ZEMAPI_UvcExtSet
 */
ZEM_API ZemResult ZEMAPI_ZemExtSet(void* handle, unsigned short selector, void* data,
                                   ZemULong length, ZemULong* bytesReturned);

/**
 * ZEMAPI_UvcExtGet on the vendor extension unit.
 *
 * @param handle        device handle
 * @param selector      control selector, from 1
 * @param data          receives up to `length` bytes
 * @param length        bytes to read; 0 is passed on as such
 * @param bytesReturned receives the byte count the platform reports; may be null
 * @return as ZEMAPI_UvcExtGet
 */
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

/**
 * Writes a 16-bit processor register at a 24-bit address (bits 24 to 31 are not sent).
 *
 * @param handle  device handle
 * @param address the register
 * @param value   the value
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_SetRegister(void* handle, unsigned int address, unsigned short value);

/**
 * Reads a 16-bit processor register at a 24-bit address.
 *
 * @param handle  device handle
 * @param address the register
 * @param value   receives the value; untouched on failure
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_GetRegister(void* handle, unsigned int address, unsigned short* value);

/**
 * Writes one byte to an image-sensor register.
 *
 * @param handle  device handle
 * @param address the register
 * @param value   the byte
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_SetSensorRegister(void* handle, unsigned short address,
                                           unsigned char value);

/**
 * Reads one byte from an image-sensor register.
 *
 * @param handle  device handle
 * @param address the register
 * @param value   receives the byte; untouched on failure
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_GetSensorRegister(void* handle, unsigned short address,
                                           unsigned char* value);

/**
 * Writes two bytes to an image-sensor register.
 *
 * @param handle  device handle
 * @param address the register
 * @param value   the two bytes as one value
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_SetSensorRegisterW(void* handle, unsigned short address,
                                            unsigned short value);

/**
 * Reads two bytes from an image-sensor register.
 *
 * @param handle  device handle
 * @param address the register
 * @param value   receives the two bytes as one value; untouched on failure
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_GetSensorRegisterW(void* handle, unsigned short address,
                                            unsigned short* value);

/**
 * Writes a 16-bit register of the lens actuator (VCM).
 *
 * @param handle  device handle
 * @param address the register
 * @param value   the value
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_SetVCMRegister(void* handle, unsigned short address, unsigned short value);

/**
 * Reads a 16-bit register of the lens actuator (VCM).
 *
 * @param handle  device handle
 * @param address the register
 * @param value   receives the value; untouched on failure
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_GetVCMRegister(void* handle, unsigned short address,
                                        unsigned short* value);

/**
 * Moves the lens to a position in the actuator's own units.
 *
 * @param handle   device handle
 * @param position in the actuator's units
 * @return as all commands
 */
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
 * @param handle device handle
 * @return 0 the check sum is right; ZEM_E_DEVICE_REFUSED for device status 0x80; ZEM_E_REFUSED for
 *         any other status; ZEM_E_NO_DEVICE as all commands
 */
ZEM_API ZemResult ZEMAPI_GetCheckSumResult(void* handle);

/**
 * Reads a codec register. The device's status byte is not looked at.
 *
 * @param handle device handle
 * @param reg    the register
 * @param value  receives the byte
 * @return 0, or the platform's failure of whichever of the three transfers failed; then `value` is
 *         untouched
 */
ZEM_API ZemResult ZEMAPI_ReadCodecReg(void* handle, unsigned short reg, unsigned char* value);

/**
 * Writes a codec register; no reply is read.
 *
 * @param handle device handle
 * @param reg    the register
 * @param value  the byte
 * @return 0 or the platform's failure
 */
ZEM_API ZemResult ZEMAPI_WriteCodecReg(void* handle, unsigned short reg, unsigned char value);

/**
 * Sends the caller's 8-byte block on the ISP channel and hands back the 8-byte reply, zeros where
 * nothing was read. The status byte is not looked at.
 *
 * @param handle  device handle
 * @param command 8 bytes
 * @param reply   receives 8 bytes, unless the block could not be written
 * @return the failure of the write, else the platform's result of the read
 */
ZEM_API ZemResult ZEMAPI_IspCommand(void* handle, unsigned char* command, unsigned char* reply);

/**
 * ZEMAPI_IspCommand on the VCP channel.
 *
 * @param handle  device handle
 * @param command 8 bytes
 * @param reply   as ZEMAPI_IspCommand
 * @return as ZEMAPI_IspCommand
 */
ZEM_API ZemResult ZEMAPI_VcpCommand(void* handle, unsigned char* command, unsigned char* reply);

/**
 * Sends the caller's 16-byte block on the extended ISP channel.
 *
 * @param handle  device handle
 * @param command 16 bytes
 * @param reply   receives the whole 16-byte reply, also when the device refused
 * @return ZEM_E_NO_DEVICE when the block could not be written, ZEM_E_DEVICE_REFUSED when reply byte
 *         0 is not 0, else 0
 */
ZEM_API ZemResult ZEMAPI_IspCommandEx(void* handle, unsigned char* command, unsigned char* reply);

/**
 * ZEMAPI_IspCommandEx on the extended VCP channel.
 *
 * @param handle  device handle
 * @param command 16 bytes
 * @param reply   as ZEMAPI_IspCommandEx
 * @return as ZEMAPI_IspCommandEx
 */
ZEM_API ZemResult ZEMAPI_VcpCommandEx(void* handle, unsigned char* command, unsigned char* reply);

/**
 * Reads the device information block.
 *
 * @param handle device handle
 * @param info   receives 8 bytes; untouched on failure
 * @return 0, or ZEM_E_NO_DEVICE when it cannot be read
 */
ZEM_API ZemResult ZEMAPI_GetDeviceInfo(void* handle, unsigned char* info);

/* ---------------------------------------------------------------------------------------------
 * Image tuning and information
 *
 * Results are those of the registers and vendor commands above, unless a function says otherwise.
 * What the values mean is the firmware's: they are sent as they are.
 * ------------------------------------------------------------------------------------------- */

/**
 * Reads the day on which the firmware was built, such as "2021.Dec.15".
 *
 * The camera sends a two-digit year, a month of three characters and a day of two; the century and
 * the dots are the library's.
 *
 * @param handle device handle
 * @param date   receives 12 bytes: 11 characters and a zero byte
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_GetFWBuildDate(void* handle, char* date);

/**
 * Switches auto focus: 0 off, 1 on.
 *
 * @param handle device handle
 * @param enable 0 off, 1 on
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_EnableAF(void* handle, unsigned char enable);

/**
 * Switches auto exposure: 0 off, 1 on.
 *
 * @param handle device handle
 * @param enable 0 off, 1 on
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_EnableAE(void* handle, unsigned char enable);

/**
 * Reads the nine accumulators of the focus measurement, one command each.
 *
 * Ends at the first command that cannot be written or is refused; the values read until then stay.
 * A reply that cannot be read counts as a repetition of the one before it, the first as zeros.
 *
 * @param handle device handle
 * @param values receives up to 9 values
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_GetAFACC(void* handle, unsigned int* values);

/**
 * Sets the video recording mode. No reply is read.
 *
 * @param handle device handle
 * @param mode   the firmware's to interpret
 * @return ZEM_E_NO_DEVICE for a null handle or a failed write, else the platform's result of the
 *         write
 */
ZEM_API ZemResult ZEMAPI_SetVideoRecMode(void* handle, unsigned char mode);

/**
 * Sets the three gains of the white balance. The device's status is not looked at.
 *
 * @param handle device handle
 * @param gain1  the first gain
 * @param gain2  the second gain
 * @param gain3  the third gain
 * @return ZEM_E_NO_DEVICE for a null handle; the platform's failure of the write, else its result
 *         of reading the reply
 */
ZEM_API ZemResult ZEMAPI_SetAWBGain(void* handle, unsigned short gain1, unsigned short gain2,
                                    unsigned short gain3);

/**
 * Reads the three gains of the white balance. The device's status is not looked at.
 *
 * @param handle device handle
 * @param gain1  receives the first gain; as the other two also on a failure of the platform, and
 *               then 0 when no reply arrived
 * @param gain2  receives the second gain
 * @param gain3  receives the third gain
 * @return as ZEMAPI_SetAWBGain
 */
ZEM_API ZemResult ZEMAPI_GetAWBGain(void* handle, unsigned short* gain1, unsigned short* gain2,
                                    unsigned short* gain3);

/**
 * Switches the gain between manual and automatic: the standard control with property number 7 keeps
 * its value and changes its flags, then the firmware is told. A standard control that cannot be
 * written does not stop that.
 *
 * @param handle device handle
 * @param enable 0 automatic, anything else manual
 * @return ZEM_E_NO_DEVICE for a null handle; ZEM_E_DEVICE_REFUSED when the device lacks the video
 *         processing amplifier or answered the command with a status other than 0; the platform's
 *         failure of reading the standard control, of writing the command, or its result of reading
 *         the reply
 */
ZEM_API ZemResult ZEMAPI_EnableManualGainCtrl(void* handle, int enable);

/**
 * Sets the correction of lens shading.
 *
 * @param handle device handle
 * @param value  the firmware's to interpret
 * @return ZEM_E_NO_DEVICE for a null handle; ZEM_E_DEVICE_REFUSED for a device status other than 0;
 *         the platform's failure of the write, else its result of reading the reply
 */
ZEM_API ZemResult ZEMAPI_SetShadding(void* handle, unsigned char value);

/**
 * Writes the six bytes of miscellaneous settings.
 *
 * @param handle   device handle
 * @param settings 6 bytes
 * @return as ZEMAPI_SetShadding
 */
ZEM_API ZemResult ZEMAPI_SetMiscSetting(void* handle, const unsigned char* settings);

/**
 * Reads the six bytes of miscellaneous settings.
 *
 * @param handle   device handle
 * @param settings receives 6 bytes; untouched when the command could not be written or was refused,
 *                 zeros when the reply could not be read
 * @return as ZEMAPI_SetShadding
 */
ZEM_API ZemResult ZEMAPI_GetMiscSetting(void* handle, unsigned char* settings);

/**
 * Lets the firmware apply its own MJPEG quality.
 *
 * @param handle device handle
 * @return as ZEMAPI_SetShadding
 */
ZEM_API ZemResult ZEMAPI_SetMjpgQuality(void* handle);

/**
 * Chooses an image effect.
 *
 * @param handle device handle
 * @param effect the firmware's number of the effect
 * @return as ZEMAPI_SetShadding
 */
ZEM_API ZemResult ZEMAPI_SetImageEffect(void* handle, unsigned char effect);

/**
 * Sets the encoder's highest quantiser.
 *
 * @param handle device handle
 * @param qp     the quantiser
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_SetMaxQP(void* handle, unsigned char qp);

/**
 * Sets the encoder's lowest quantiser.
 *
 * @param handle device handle
 * @param qp     the quantiser
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_SetMinQP(void* handle, unsigned char qp);

/**
 * Reads the image sensor's serial number: a command that prepares it, then 32 bytes, which are read
 * whatever became of the command. A failed read is not reported.
 *
 * @param handle device handle
 * @param serial receives 32 bytes; what was not read stays as it was
 * @return 0, or ZEM_E_NO_DEVICE for a null handle or when the command could not be written
 */
ZEM_API ZemResult ZEMAPI_GetSensorSN(void* handle, unsigned char* serial);

/**
 * Reads the version of the Skype extension unit.
 *
 * @param handle  device handle
 * @param version receives one byte; 0x12 for every version below 0x14; untouched on failure
 * @return 0; ZEM_E_REFUSED when it cannot be read; ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_GetSkypeXUVersion(void* handle, unsigned char* version);

/* ---------------------------------------------------------------------------------------------
 * Standard camera, video and audio controls
 *
 * Properties, values and flags are the platform's own: VideoProcAmpProperty for the video
 * processing amplifier, CameraControlProperty for the camera terminal, flags 1 automatic and 2
 * manual. The first six functions hand their arguments to the platform as they are, null pointers
 * too, and its result back.
 * ------------------------------------------------------------------------------------------- */

/**
 * Reads a property of the video processing amplifier.
 *
 * @param handle   device handle
 * @param property such as VideoProcAmp_Brightness
 * @param value    receives the value
 * @param flags    receives the flags
 * @return the platform's result unchanged; ZEM_E_DEVICE_REFUSED when the device has no such
 *         controls at all; ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_GetVideoProcAmp(void* handle, ZemLong property, ZemLong* value,
                                         ZemLong* flags);

/**
 * Sets a property of the video processing amplifier.
 *
 * @param handle   device handle
 * @param property such as VideoProcAmp_Brightness
 * @param value    the value
 * @param flags    the flags
 * @return as ZEMAPI_GetVideoProcAmp
 */
ZEM_API ZemResult ZEMAPI_SetVideoProcAmp(void* handle, ZemLong property, ZemLong value,
                                         ZemLong flags);

/**
 * Reads what a property of the video processing amplifier can be set to.
 *
 * @param handle       device handle
 * @param property     such as VideoProcAmp_Brightness
 * @param minimum      receives the lowest value
 * @param maximum      receives the highest value
 * @param step         receives the distance of two values
 * @param defaultValue receives the value at first
 * @param capsFlags    receives the flags that can be set
 * @return as ZEMAPI_GetVideoProcAmp
 */
ZEM_API ZemResult ZEMAPI_GetVideoProcAmpRange(void* handle, ZemLong property, ZemLong* minimum,
                                              ZemLong* maximum, ZemLong* step,
                                              ZemLong* defaultValue, ZemLong* capsFlags);

/**
 * ZEMAPI_GetVideoProcAmp for a property of the camera terminal, such as CameraControl_Exposure.
 *
 * @param handle   device handle
 * @param property such as CameraControl_Exposure
 * @param value    receives the value
 * @param flags    receives the flags
 * @return as ZEMAPI_GetVideoProcAmp
 */
ZEM_API ZemResult ZEMAPI_GetCameraControl(void* handle, ZemLong property, ZemLong* value,
                                          ZemLong* flags);

/**
 * ZEMAPI_SetVideoProcAmp for a property of the camera terminal.
 *
 * @param handle   device handle
 * @param property such as CameraControl_Exposure
 * @param value    the value
 * @param flags    the flags
 * @return as ZEMAPI_GetVideoProcAmp
 */
ZEM_API ZemResult ZEMAPI_SetCameraControl(void* handle, ZemLong property, ZemLong value,
                                          ZemLong flags);

/**
 * ZEMAPI_GetVideoProcAmpRange for a property of the camera terminal.
 *
 * @param handle       device handle
 * @param property     such as CameraControl_Exposure
 * @param minimum      receives the lowest value
 * @param maximum      receives the highest value
 * @param step         receives the distance of two values
 * @param defaultValue receives the value at first
 * @param capsFlags    receives the flags that can be set
 * @return as ZEMAPI_GetVideoProcAmp
 */
ZEM_API ZemResult ZEMAPI_GetCameraControlRange(void* handle, ZemLong property, ZemLong* minimum,
                                               ZemLong* maximum, ZemLong* step,
                                               ZemLong* defaultValue, ZemLong* capsFlags);

/**
 * Hands out the kernel-streaming node interface IVideoProcAmp of the first topology node that gives
 * one.
 *
 * *videoProcAmp is not cleared first: set it to null before the call.
 *
 * @param handle       device handle
 * @param videoProcAmp receives the interface, the caller's to release; as it was when the device
 * has no nodes
 * @return the platform's result of the last node asked, 0 when there are no nodes, or its failure
 * of reaching the topology; ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_Get_IVideoProcAmp_Interface(void* handle, void** videoProcAmp);

/**
 * Opens the audio input (microphone) with the given display name, compared as by
 * ZEMAPI_OpenDeviceByPath. COM stays initialised once for the calling thread, also when the search
 * fails; ZEMAPI_AudioCloseDevice does not take that back.
 *
 * @param displayName the moniker's display name; null is a name that no device has, and then COM is
 *                    left alone
 * @param audio       receives the device's filter, released with ZEMAPI_AudioCloseDevice; untouched
 *                    on failure
 * @return 0; ZEM_E_FAIL when no audio input has the name; or the platform's failure
 */
ZEM_API ZemResult ZEMAPI_AudioOpenDeviceByPath(const wchar_t* displayName,
                                               struct IBaseFilter** audio);

/**
 * Releases an audio input and sets *audio to null.
 *
 * @param audio address of the filter; neither it nor *audio may be null
 * @return 0, which says nothing
 */
ZEM_API ZemResult ZEMAPI_AudioCloseDevice(struct IBaseFilter** audio);

/**
 * Sets the recording level of an audio input.
 *
 * @param audio  the filter; null is a success that does nothing
 * @param volume percent: 0 silence, 100 full level. Other values are handed on as such and the
 *               platform decides
 * @return the platform's result unchanged, also for an audio input without a mixer
 */
ZEM_API ZemResult ZEMAPI_AudioSetVolume(struct IBaseFilter* audio, int volume);

/* ---------------------------------------------------------------------------------------------
 * Bulk data
 *
 * Data moves in chunks, each one transfer, over the widest control that the camera offers. A
 * callback may be null; `user` is passed to it unchanged. Where a function says so, it takes and
 * dispatches the calling thread's window messages between the steps: a window of the caller stays
 * alive, and its procedure must not start another transfer on the same camera.
 *
 * `data` may be null when the length is 0.
 * ------------------------------------------------------------------------------------------- */

/**
 * Announces data and sends it over the low-speed control, 32 bytes a transfer.
 *
 * A chunk that fails is sent again up to five times, 5 ms apart, and then straight from `data`: a
 * short last chunk is then followed by the bytes behind it, so `data` should be readable up to the
 * next multiple of 32. When all of this fails, the rest is left out and the result is still 0; the
 * debugger channel has the only trace of it. Messages are dispatched after each call of the
 * callback and at the end.
 *
 * @param handle   device handle
 * @param data     `length` bytes
 * @param length   bytes to send; only its low 16 bits are announced
 * @param callback called after each chunk with (bytes left) * 100 / (length of this chunk), in 32
 *                 bits: not a percentage, and kept because callers depend on it
 * @param user     passed to the callback
 * @param param2   byte 2 of the announce, the camera's to interpret
 * @param param3   byte 3 of the announce
 * @return 0; ZEM_E_NO_DEVICE when the handle is null or the announce fails; ZEM_E_REFUSED for null
 *         data
 */
ZEM_API ZemResult ZEMAPI_SendData(void* handle, const uint8_t* data, uint32_t length,
                                  ProgressCallback callback, uint64_t user, uint8_t param2,
                                  uint8_t param3);

/**
 * Sends data that the caller has announced, over the fastest control, 512 or 32 bytes a transfer,
 * the last chunk padded with zeros. There is no retry. Messages are dispatched after each call of
 * the callback and at the end.
 *
 * @param handle   device handle
 * @param data     `length` bytes
 * @param length   bytes to send
 * @param callback called after each chunk with the percentage still to send
 * @param user     passed to the callback
 * @return 0; ZEM_E_NO_DEVICE when the handle is null or a chunk fails; ZEM_E_REFUSED for null data
 */
ZEM_API ZemResult ZEMAPI_WriteFWData(void* handle, const uint8_t* data, uint32_t length,
                                     ProgressCallback callback, uint64_t user);

/**
 * Reads all the data that the camera has ready, in chunks of the length that it reports. The number
 * of bytes taken from a chunk is cut to 16 bits; 65535 are taken where that leaves 0. A chunk that
 * cannot be read counts as zeros. No message is dispatched.
 *
 * @param handle     device handle
 * @param buffer     receives the data; its front is overwritten also when the function fails
 * @param bufferSize bytes in `buffer`
 * @param outLength  receives the length of the data; untouched when it does not fit
 * @param callback   called before each chunk with the percentage still to read
 * @param user       passed to the callback
 * @return 0; ZEM_E_NO_DEVICE for a null handle; ZEM_E_DEVICE_REFUSED when the camera does not say
 *         how much it moves at once or does not take the order; ZEM_E_BUFFER_TOO_SMALL when it has
 *         more than `bufferSize` bytes
 */
ZEM_API ZemResult ZEMAPI_ReadFWData(void* handle, uint8_t* buffer, uint32_t bufferSize,
                                    uint32_t* outLength, ProgressCallback callback, uint64_t user);

/**
 * Reads a piece of the camera's flash, 512 or 32 bytes a transfer. A chunk that fails is read again
 * up to five times, 5 ms apart. No message is dispatched.
 *
 * @param handle   device handle
 * @param address  where to begin in the flash
 * @param size     bytes to read; only its low 16 bits are announced. From 0x80000000 on nothing is
 *                 read
 * @param buffer   receives `size` bytes
 * @param outSize  receives `size`; untouched on failure
 * @param callback called before each chunk with the percentage done
 * @param user     passed to the callback
 * @return 0; ZEM_E_NO_DEVICE for a null handle; ZEM_E_DEVICE_REFUSED when the announce fails; or
 * the platform's failure of the chunk that could not be read
 */
ZEM_API ZemResult ZEMAPI_ReadPartialFlashData(void* handle, uint32_t address, uint32_t size,
                                              uint8_t* buffer, uint32_t* outSize,
                                              ProgressCallback callback, uint64_t user);

/* ---------------------------------------------------------------------------------------------
 * Firmware update
 *
 * Each announces an image, sends it as ZEMAPI_WriteFWData does (whose progress values the callback
 * gets), orders the camera to burn it and waits for the end. Unless a function says otherwise, the
 * callback may be null; the camera is asked every 30 ms whether it is done, the caller's messages
 * are dispatched each time, a burn that is done at once is given one more second, and one that has
 * neither ended nor failed after ten minutes is given up.
 *
 * Results: 0; ZEM_E_NO_DEVICE when the handle is null or the announce or the burn order cannot be
 * sent; ZEM_E_DEVICE_REFUSED when the camera is not idle, reports that the burn failed, or does not
 * come to an end; ZEM_E_REFUSED for a null image (unless its length is 0), before anything is sent.
 *
 * Only ZEMAPI_UpdateFW_516x stops when the image cannot be sent. The others order the burn all the
 * same: what a camera does with half an image is its firmware's business.
 * ------------------------------------------------------------------------------------------- */

/**
 * Updates the firmware of a 516x camera.
 *
 * @param handle   device handle
 * @param image    `length` bytes
 * @param length   announced as the next multiple of 512; above 0xFFFFFE00 there is none, and the
 *                 result is ZEM_E_REFUSED
 * @param callback as ZEMAPI_WriteFWData
 * @param user     passed to the callback
 * @param param    byte 3 of the burn order, the camera's to interpret
 * @return as above; ZEM_E_NO_DEVICE also when the image cannot be sent
 */
ZEM_API ZemResult ZEMAPI_UpdateFW_516x(void* handle, const uint8_t* image, uint32_t length,
                                       ProgressCallback callback, uint64_t user, uint8_t param);

/**
 * Updates the firmware of a 517x camera, whose serial flash is unprotected first.
 *
 * The end is not polled for: the function waits five seconds, counting down in the callback, and
 * looks once. No message is dispatched meanwhile. A camera that is still busy then has failed.
 *
 * @param handle   device handle
 * @param image    `length` bytes
 * @param length   bytes to send
 * @param callback as ZEMAPI_WriteFWData, then called with 10, 9, ... 1, half a second apart.
 * Needed: null gives ZEM_E_REFUSED, and nothing is sent
 * @param user     passed to the callback
 * @return as above
 */
ZEM_API ZemResult ZEMAPI_UpdateFW_517x(void* handle, const uint8_t* image, uint32_t length,
                                       ProgressCallback callback, uint64_t user);

/**
 * Writes an area of the flash that the caller chooses.
 *
 * @param handle   device handle
 * @param data     `length` bytes
 * @param length   bytes to send; only its low 16 bits are announced
 * @param callback as ZEMAPI_WriteFWData
 * @param user     passed to the callback
 * @param param2   byte 2 of announce and burn order; the camera's firmware defines the areas
 * @param param3   byte 3 of announce and burn order
 * @return as above
 */
ZEM_API ZemResult ZEMAPI_UpdateFlash(void* handle, const uint8_t* data, uint32_t length,
                                     ProgressCallback callback, uint64_t user, uint8_t param2,
                                     uint8_t param3);

/**
 * Writes the calibration data.
 *
 * @param handle   device handle
 * @param data     `length` bytes
 * @param length   bytes to send; not announced
 * @param callback as ZEMAPI_WriteFWData
 * @param user     passed to the callback
 * @return as above
 */
ZEM_API ZemResult ZEMAPI_UpdateCaliData(void* handle, const uint8_t* data, uint32_t length,
                                        ProgressCallback callback, uint64_t user);

/* ---------------------------------------------------------------------------------------------
 * Non-volatile memory and tables
 *
 * The camera keeps a small non-volatile memory (NVMEM) that is moved in pieces of at most 29 bytes.
 * From address 0 it may hold a table store, whose image is
 *
 *     byte 0      0xEE, the mark of a valid image
 *     byte 1      not interpreted
 *     bytes 2, 3  length of the image in bytes with this header, little-endian
 *     from 4      entries back to back: a byte that is not interpreted, the table's id, the entry's
 *                 length with its header of 4 bytes (little-endian), the table
 *
 * Where an id stands more than once, the first entry counts. A table handle is the first byte of
 * such an image in 8192 bytes of memory; it is a copy, which other changes of the device do not
 * refresh.
 *
 * A search goes from entry to entry until it meets the wanted one or comes to the image's length or
 * past it: then there is no such table. It ends at a corrupt entry: at any that is shorter than its
 * header, at the wanted one if it does not end inside the 8192 bytes, and where the next header
 * would not lie inside them although the image goes on. To ZEMAPI_ReadTableEx an entry of more than
 * 8192 bytes is corrupt, too.
 *
 * The sizes of the caller's buffers for one table are not looked at: they hold what
 * ZEMAPI_GetTableSize tells. A transport result other than 0 ends a read or write of the memory and
 * is returned as it stands.
 * ------------------------------------------------------------------------------------------- */

/**
 * Writes to the vendor unit's non-volatile memory.
 *
 * @param handle  device handle
 * @param address first byte's address; addresses wrap after 0xFFFF
 * @param data    `length` bytes; may be null when the length is 0
 * @param length  bytes to write; 0 sends nothing
 * @param written receives the number of bytes that the device has taken, on failure too
 * @return 0; the transport's result of the piece that failed; ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_WriteNVMEM(void* handle, uint16_t address, const uint8_t* data,
                                    uint32_t length, uint32_t* written);

/**
 * Reads from the vendor unit's non-volatile memory. A request for a piece that cannot be sent is
 * passed over: the read of the piece decides.
 *
 * @param handle  device handle
 * @param address first byte's address; addresses wrap after 0xFFFF
 * @param buffer  receives `length` bytes; may be null when the length is 0
 * @param length  bytes to read; 0 sends nothing
 * @param read    receives the number of bytes read, on failure too
 * @return 0; the transport's result of the read that failed; ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_ReadNVMEM(void* handle, uint16_t address, uint8_t* buffer, uint32_t length,
                                   uint32_t* read);

/**
 * Writes the whole 256-byte memory of the TIRELLA unit.
 *
 * @param handle  device handle
 * @param data    `length` bytes, of which the first 256 are written
 * @param length  256 or more. The 256 bytes go out in nine pieces; for every 29 bytes begun behind
 *                the first 261 an empty piece follows
 * @param written receives 256; untouched on failure
 * @return 0; ZEM_E_REFUSED for a length below 256, and nothing is sent; the transport's result of
 *         the piece that failed; ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_TIRELLA_WriteNVMEM(void* handle, const uint8_t* data, uint32_t length,
                                            uint32_t* written);

/**
 * Reads the memory of the TIRELLA unit from address 0.
 *
 * @param handle device handle
 * @param buffer receives `length` bytes, but 256 at most; where a read fails, the place of its
 *               piece is written too. May be null when the length is 0
 * @param length bytes to read; more than 256 count as 256
 * @param read   receives the number of bytes read; untouched on failure
 * @return 0; the transport's result of the read that failed; ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_TIRELLA_ReadNVMEM(void* handle, uint8_t* buffer, uint32_t length,
                                           uint32_t* read);

/**
 * Hands a value to the TIRELLA unit's LED control; what it means is the firmware's.
 *
 * @param handle device handle
 * @param value  the value
 * @return 0, also when it could not be sent; ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_TIRELLA_LedCtrl(void* handle, uint8_t value);

/**
 * Reads the device's table store into memory.
 *
 * @param handle device handle
 * @param table  receives the table handle, to be given back with ZEMAPI_CloseTableHandle; untouched
 *               on failure
 * @return 0; ZEM_E_REFUSED when the device has no image, when the image is longer than 8192 bytes
 *         or when memory is exhausted; the transport's result when the image cannot be read;
 *         ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_OpenTableHandle(void* handle, uint8_t** table);

/**
 * Frees a table handle and sets *table to null. Does nothing when *table is null.
 *
 * @param handle not used
 * @param table  the address of the caller's table handle
 * @return 0; ZEM_E_REFUSED for a null address
 */
ZEM_API ZemResult ZEMAPI_CloseTableHandle(void* handle, uint8_t** table);

/**
 * Tells a table's size.
 *
 * @param handle not used
 * @param table  table handle
 * @param id     the table's id
 * @param size   receives the size in bytes; 0 on failure
 * @return 0; ZEM_E_REFUSED for a null table handle, and when there is no such table or a corrupt
 *         entry before it
 */
ZEM_API ZemResult ZEMAPI_GetTableSize(void* handle, uint8_t* table, uint8_t id, uint16_t* size);

/**
 * Copies a table out of a table handle.
 *
 * @param handle  not used
 * @param table   table handle
 * @param id      the table's id
 * @param out     receives the table; untouched when there is none
 * @param outSize not used
 * @param size    receives the table's size, untouched when there is none; may be null
 * @return 0, also when there is no such table; ZEM_E_FAIL when the search ends at a corrupt entry
 */
ZEM_API ZemResult ZEMAPI_ReadTableEx(void* handle, uint8_t* table, uint8_t id, uint8_t* out,
                                     uint32_t outSize, uint32_t* size);

/**
 * Replaces a table in a table handle and writes its whole entry to the device. The size of a table
 * never changes.
 *
 * @param handle   device handle; null changes the table handle's image only
 * @param table    table handle
 * @param id       the table's id
 * @param data     as many bytes as the table has
 * @param dataSize not used
 * @param size     receives the table's size; may be null
 * @return 0, also when the device did not take the entry; ZEM_E_REFUSED when there is no such
 *         table, ZEM_E_FAIL when an entry is corrupt: then nothing is changed or sent
 */
ZEM_API ZemResult ZEMAPI_WriteTableEx(void* handle, uint8_t* table, uint8_t id, const uint8_t* data,
                                      uint32_t dataSize, uint32_t* size);

/**
 * Copies a table out of the device, reading its first 8192 bytes of memory, marked as an image or
 * not.
 *
 * @param handle  device handle
 * @param id      the table's id
 * @param out     receives the table; untouched when there is none
 * @param outSize not used
 * @param size    receives the table's size; untouched when there is none
 * @return 0, also when there is no such table; ZEM_E_FAIL when an entry is corrupt; the transport's
 *         result when the memory cannot be read; ZEM_E_REFUSED when memory is exhausted;
 *         ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_ReadTable(void* handle, uint8_t id, uint8_t* out, uint32_t outSize,
                                   uint32_t* size);

/**
 * Replaces a table in the device: reads its first 8192 bytes of memory and writes the table's whole
 * entry back. The size of a table never changes.
 *
 * @param handle   device handle
 * @param id       the table's id
 * @param data     as many bytes as the table has
 * @param dataSize not used
 * @param size     receives the table's size, before the entry is written
 * @return 0; ZEM_E_REFUSED when there is no such table or memory is exhausted, ZEM_E_FAIL when an
 *         entry is corrupt: then nothing is written; the transport's result when the memory cannot
 *         be read or written; ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_WriteTable(void* handle, uint8_t id, const uint8_t* data,
                                    uint32_t dataSize, uint32_t* size);

/**
 * Replaces the whole table store. The device goes on writing after the call has returned; there is
 * nothing to wait for. The image is not checked. Drains the calling thread's message queue.
 *
 * @param handle device handle
 * @param image  `length` bytes; may be null when the length is 0
 * @param length bytes to send
 * @return 0, also when the image could not be sent whole: the order to write goes out all the same;
 *         ZEM_E_NO_DEVICE for a null handle or when the announce or the order could not be sent;
 *         ZEM_E_DEVICE_REFUSED when the device is not idle after the announce, and no more is sent
 */
ZEM_API ZemResult ZEMAPI_WriteInitialTable(void* handle, const uint8_t* image, uint32_t length);

/**
 * Copies the image out of a table handle, as long as it says it is, but 8192 bytes at most.
 *
 * @param handle   not used
 * @param table    table handle
 * @param out      receives the image, but `capacity` bytes at most
 * @param capacity size of `out` in bytes
 * @param size     receives the number of bytes copied
 * @return 0
 */
ZEM_API ZemResult ZEMAPI_DumpWholeTable(void* handle, uint8_t* table, uint8_t* out,
                                        uint32_t capacity, uint32_t* size);

/* ---------------------------------------------------------------------------------------------
 * Calls without a handle
 *
 * These act on the default camera, the first with the ids of the settings file. Each access to a
 * control finds and opens the camera and releases it again, so a command opens it twice, once for
 * itself and once for the reply; nothing is kept between calls. COM stays initialised on the
 * calling thread: each opening adds one CoInitialize, and each read of a control one more, so a
 * command adds three.
 *
 * Unless a function says otherwise: 0 when the camera accepted the command; ZEM_E_NO_DEVICE when
 * there is no camera or the command could not be written; ZEM_E_DEVICE_REFUSED when it answered
 * with a status other than 0, and then no output is written; ZEM_E_REFUSED for a null pointer,
 * before anything is sent. A reply that cannot be read looks like one of zeros.
 * ------------------------------------------------------------------------------------------- */

/**
 * Starts auto focus; the value is the camera's to interpret.
 *
 * @param value the camera's to interpret
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_DoAF(uint16_t value);

/**
 * Sets the frame rate in frames per second.
 *
 * @param fps frames per second
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_SetFps(uint16_t fps);

/**
 * Sets the size of the picture in pixels, in steps of 8; what is sent of width / 8 and height / 8
 * is the low byte.
 *
 * @param width  pixels
 * @param height pixels
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_SetResolution(uint32_t width, uint32_t height);

/**
 * Asks for a key frame.
 *
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_SetIFrame(void);

/**
 * Sets the compression quality.
 *
 * @param quality the camera's to interpret
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_SetVideoQuality(uint8_t quality);

/**
 * Sets the bit rate, in the camera's own units.
 *
 * @param rate the bit rate
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_SetBitRate(uint16_t rate);

/**
 * Sets the flicker compensation.
 *
 * @param mode the camera's to interpret
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_SetFlickMode(uint8_t mode);

/**
 * Reads the low byte of a processor register at a 16-bit address.
 *
 * @param address the register
 * @param value   receives the byte; untouched on failure
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_GetRegister(uint16_t address, uint8_t* value);

/**
 * Writes one byte to a processor register at a 16-bit address.
 *
 * @param address the register
 * @param value   the byte
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_SetRegister(uint16_t address, uint8_t value);

/**
 * Reads one byte from an image-sensor register.
 *
 * @param address the register
 * @param value   receives the byte; untouched on failure
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_GetSensorRegister(uint16_t address, uint8_t* value);

/**
 * Reads two bytes from an image-sensor register.
 *
 * @param address the register
 * @param value   receives the two bytes as one value; untouched on failure
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_GetSensorRegisterW(uint16_t address, uint16_t* value);

/**
 * Writes one byte to an image-sensor register.
 *
 * @param address the register
 * @param value   the byte
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_SetSensorRegister(uint16_t address, uint8_t value);

/**
 * Writes two bytes to an image-sensor register.
 *
 * @param address the register
 * @param value   the two bytes as one value
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_SetSensorRegisterW(uint16_t address, uint16_t value);

/**
 * Reads the firmware version.
 *
 * @param version receives 6 bytes
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_GetFWVersion(uint8_t* version);

/**
 * Reads the day the firmware was built, such as "2024.Mar.05". The century is always 20.
 *
 * @param text receives 12 bytes: eleven characters and a zero byte
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_GetFWBuildDay(char* text);

/**
 * Sets the H.264 mode.
 *
 * @param mode the camera's to interpret
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_SetH264Mode(uint8_t mode);

/**
 * Sets the wide dynamic range.
 *
 * @param value the camera's to interpret
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_SetWDR(uint8_t value);

/**
 * Sends the caller's 8-byte block on the ISP channel.
 *
 * @param command 8 bytes
 * @param reply   receives the whole 8-byte reply, also when the camera refused; untouched when the
 *                block could not be written
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_IspCommand(const uint8_t* command, uint8_t* reply);

/**
 * ZEMUVCEXT_IspCommand with blocks of 16 bytes on the extended ISP channel.
 *
 * @param command 16 bytes
 * @param reply   receives the whole 16-byte reply, as ZEMUVCEXT_IspCommand
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_IspCommandEx(const uint8_t* command, uint8_t* reply);

/**
 * Sends the caller's 8-byte block on the VCP channel.
 *
 * @param command 8 bytes
 * @param reply   as ZEMUVCEXT_IspCommand; null means that no reply is read, and the result is that
 *                of the write
 * @return as all commands
 */
ZEM_API ZemResult ZEMUVCEXT_VcpCommand(const uint8_t* command, uint8_t* reply);

/**
 * Reads the chip information.
 *
 * @param info receives 16 bytes; untouched on failure
 * @return 0, or ZEM_E_NO_DEVICE when it cannot be read
 */
ZEM_API ZemResult ZEMUVCEXT_GetChipInfo(uint8_t* info);

/**
 * Writes to the processor's memory, 16 bytes an access, the last one padded with zeros.
 *
 * @param data   `length` bytes; may be null when the length is 0
 * @param length bytes to write. 0 does nothing; a negative length writes 16 bytes of `data`
 * @return 0; ZEM_E_REFUSED for null data; or any other result than 0 of an access, unchanged, with
 *         the rest not sent. Without a camera that is the search's, ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMUVCEXT_IspCmdWriteMem(const uint8_t* data, int32_t length);

/**
 * Reads from the processor's memory, 16 bytes an access.
 *
 * @param buffer receives `length` bytes; where a read fails, the place of its piece is written too.
 *               May be null when the length is 0
 * @param length bytes to read; 0 does nothing
 * @return as ZEMUVCEXT_IspCmdWriteMem; the pieces behind the one that failed are untouched
 */
ZEM_API ZemResult ZEMUVCEXT_IspCmdReadMem(uint8_t* buffer, uint32_t length);

/**
 * Sends data that the caller has announced, 64 or 32 bytes a transfer, on a camera that is opened
 * once for all of it. There is no retry. Messages are dispatched after each call of the callback
 * and at the end.
 *
 * @param data     `length` bytes, readable up to the next multiple of 64: a short last chunk is
 * sent whole, with whatever follows in memory. May be null when the length is 0
 * @param length   bytes to send; a negative length sends nothing
 * @param callback called after each chunk with the percentage still to send; may be null
 * @param user     passed to the callback
 * @return 0; ZEM_E_NO_DEVICE when there is no camera or a chunk fails; ZEM_E_REFUSED for null data
 */
ZEM_API ZemResult ZEMUVCEXT_WriteFWData(const uint8_t* data, int32_t length,
                                        ProgressCallback callback, uint64_t user);

/**
 * ZEMAPI_ReadFWData on the default camera; ZEM_E_NO_DEVICE when there is none.
 *
 * @param buffer     as ZEMAPI_ReadFWData
 * @param bufferSize bytes in `buffer`
 * @param outLength  receives the length of the data; untouched when it does not fit
 * @param callback   as ZEMAPI_ReadFWData
 * @param user       passed to the callback
 * @return as ZEMAPI_ReadFWData; ZEM_E_NO_DEVICE when there is no camera
 */
ZEM_API ZemResult ZEMUVCEXT_ReadFWData(uint8_t* buffer, uint32_t bufferSize, uint32_t* outLength,
                                       ProgressCallback callback, uint64_t user);

/**
 * ZEMUVCEXT_UpdateFW_with_progress without a callback.
 *
 * @param image  as ZEMUVCEXT_UpdateFW_with_progress
 * @param length bytes to send; from 0x80000000 on none are
 * @return as ZEMUVCEXT_UpdateFW_with_progress
 */
ZEM_API ZemResult ZEMUVCEXT_UpdateFW(const uint8_t* image, uint32_t length);

/**
 * Updates the firmware as the handle-based procedures do, sending it as ZEMUVCEXT_WriteFWData does.
 * A burn that is done at once is given eight more seconds. The callback is not called during the
 * burn.
 *
 * @param image    `length` bytes, readable as ZEMUVCEXT_WriteFWData says
 * @param length   bytes to send; from 0x80000000 on none are
 * @param callback as ZEMUVCEXT_WriteFWData
 * @param user     passed to the callback
 * @return 0; ZEM_E_NO_DEVICE when there is no camera or the announce, the image or the burn order
 *         cannot be sent; ZEM_E_DEVICE_REFUSED when the camera is not idle, reports that the burn
 *         failed, or does not end within ten minutes; ZEM_E_REFUSED for a null image
 */
ZEM_API ZemResult ZEMUVCEXT_UpdateFW_with_progress(const uint8_t* image, uint32_t length,
                                                   ProgressCallback callback, uint64_t user);

/**
 * ZEMUVCEXT_UpdateFW_with_progress for another kind of image (byte 3 of announce and burn order is
 * 1), which orders the burn also when the image could not be sent, and gives a burn that is done at
 * once one more second.
 *
 * @param image    as ZEMUVCEXT_UpdateFW_with_progress
 * @param length   bytes to send; from 0x80000000 on none are
 * @param callback as ZEMUVCEXT_WriteFWData
 * @param user     passed to the callback
 * @return as ZEMUVCEXT_UpdateFW_with_progress, but an image that cannot be sent is no failure
 */
ZEM_API ZemResult ZEMUVCEXT_UpdateFW_with_progressEx(const uint8_t* image, uint32_t length,
                                                     ProgressCallback callback, uint64_t user);

/**
 * Updates the firmware as ZEMUVCEXT_UpdateFW_with_progressEx does, but does not poll: it waits ten
 * seconds, without dispatching messages, and looks once. A camera that is still busy then has
 * failed.
 *
 * @param image    `length` bytes, readable as ZEMUVCEXT_WriteFWData says
 * @param length   bytes to send; from 0x80000000 on none are
 * @param param    byte 2 of announce and burn order, the camera's to interpret; byte 3 is 0
 * @param callback as ZEMUVCEXT_WriteFWData
 * @param user     passed to the callback
 * @return as ZEMUVCEXT_UpdateFW_with_progress, but an image that cannot be sent is no failure
 */
ZEM_API ZemResult ZEMUVCEXT_UpdateFW_Vision(const uint8_t* image, uint32_t length, uint8_t param,
                                            ProgressCallback callback, uint64_t user);

/* ---------------------------------------------------------------------------------------------
 * ROM boot
 *
 * A camera that runs its ROM boot loader, or an updater loaded by it, is no video device but a USB
 * mass-storage volume. A ROM-boot session stands for one such volume; it is used by one thread at a
 * time.
 *
 * Unless a function says otherwise it returns ZEM_E_FAIL for a null session, for a file that cannot
 * be opened or is malformed (then before anything is sent), and when the device does not accept a
 * command; and, with a session, ZEM_E_REFUSED for an output that is null. A command that fails with
 * the system's error 31 is tried up to six times, 500 ms apart, and one that fails for good leaves
 * a line on the debugger channel. The inquiry that the search for a camera sends to each volume is
 * neither repeated nor reported.
 *
 * One function of this family, ZEMROMAPI_SwitchModePCAM_DRAM, is for C++ callers only and stands at
 * the end of this header.
 * ------------------------------------------------------------------------------------------- */

/**
 * Sends a running camera into ROM boot: both commands below, 500 ms apart. Whether the camera took
 * them is deliberately not looked at.
 *
 * @param handle device handle
 * @return 0, or ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_ResetToRomboot(void* handle);

/**
 * Sends a running camera into ROM boot with the 8-byte VCP command 0x16. No reply is read.
 *
 * @param handle device handle
 * @return the platform's result of the write; ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_ResetToRomboot_VCP8(void* handle);

/**
 * ZEMAPI_ResetToRomboot_VCP8 with the 16-byte VCP command 0xFF 0x03.
 *
 * @param handle device handle
 * @return as ZEMAPI_ResetToRomboot_VCP8
 */
ZEM_API ZemResult ZEMAPI_ResetToRomboot_VCP16(void* handle);

/**
 * Looks for a camera in ROM boot among the volumes C: to Z: and opens a session on the first one.
 *
 * Volumes that turn out to be something else stay open until the process ends.
 *
 * @param mode 1 for the boot loader, 2 for the "ZEM" storage of a loaded updater. With bit 0x10 the
 *             device is also told the storage address divider: now, and by every further search of
 *             the process, also when this call fails. A search is this function, and each look of
 *             ZEMROMAPI_LoadUpdater for the device; it decides once, as it begins. So of the
 *             searches on other threads each that begins after this call has returned tells the
 *             divider, one that had begun before it goes on as it decided, and one that begins
 *             meanwhile may do either
 * @return the session; null when no camera is found or the first one found is not of that mode
 */
ZEM_API void* ZEMROMAPI_OpenDevice(unsigned int mode);

/**
 * Ends a session and closes its volume. The caller's pointer is left as it was. Does nothing for a
 * null pointer.
 *
 * @param device the address of the caller's session
 */
ZEM_API void ZEMROMAPI_CloseDevice(void** device);

/**
 * Has what the session erases, and what ZEMROMAPI_UpdateLinuxFwPkg and the partial updates write,
 * written into a file as well, each byte at its storage address. What the other burners write is
 * not mirrored.
 *
 * A null path, or one of 260 characters or more, changes nothing. The file need not exist: without
 * it there is no mirror.
 *
 * @param device session
 * @param path   the dump file
 * @param size   if not 0, the file is made anew and filled with 0xFF: `size` bytes, taken as
 *               unsigned and rounded up to a multiple of 4,096
 * @return 0, also when the file cannot be made; ZEM_E_FAIL for a null session
 */
ZEM_API ZemResult ZEMROMAPI_CreateDumpFile(void* device, const wchar_t* path, int size);

/**
 * Loads a code image into the boot loader and starts it. The device comes back as something else,
 * so the volume is closed once the image is there, whether it was started or not.
 *
 * @param device session
 * @param path   the image, with its 18-byte header or without; at least 18 bytes
 * @return 1, or ZEM_E_FAIL; when the image could not be sent the volume stays open
 */
ZEM_API ZemResult ZEMROMAPI_LoadMiniUVC(void* device, const wchar_t* path);

/**
 * Loads the updater and starts it, then waits up to five minutes for its storage to show up; the
 * session goes on with that.
 *
 * @param device session
 * @param path   the image, as for ZEMROMAPI_LoadMiniUVC
 * @return 1 once the image has been sent: also when it could not be started, and when no storage
 *         showed up (then the session has no volume); else ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_LoadUpdater(void* device, const wchar_t* path);

/**
 * Resets the device. Returns 1, whether it answers or not.
 *
 * @param device session
 * @return 1; ZEM_E_FAIL for a null session
 */
ZEM_API ZemResult ZEMROMAPI_ResetSystem(void* device);

/**
 * Selects the serial flash as the storage that is erased, written and read.
 *
 * @param device session
 * @return 0 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_SwitchModePCAM_SF(void* device);

/**
 * Selects the parallel NAND. On the debugger channel it goes by the name of the SPI NAND.
 *
 * @param device session
 * @param option passed on to the boot code
 * @return 0 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND(void* device, unsigned char option);

/**
 * Selects the SPI NAND; otherwise as ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND.
 *
 * @param device session
 * @param option passed on to the boot code
 * @return 0 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_SwitchModePCAM_SPI_NAND(void* device, unsigned char option);

/**
 * Selects the eMMC; otherwise as ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND.
 *
 * @param device session
 * @param option passed on to the boot code
 * @return 0 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_SwitchModePCAM_EMMC(void* device, unsigned char option);

/**
 * Starts the code in the load buffer. The volume stays open.
 *
 * @param device session
 * @return 0 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_LongJump(void* device);

/**
 * Sets the memory address that firmware is downloaded to.
 *
 * @param device  session
 * @param address the memory address
 * @return 0 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_SetFwDownloadAddr(void* device, unsigned int address);

/**
 * Writes one byte to a register at a 32-bit address.
 *
 * @param device  session
 * @param address the register
 * @param value   the byte
 * @return 0 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_WriteRegister(void* device, unsigned int address, unsigned char value);

/**
 * Reads one byte from a register at a 32-bit address.
 *
 * @param device  session
 * @param address the register
 * @param value   receives the byte; untouched on failure
 * @return 0 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_ReadRegister(void* device, unsigned int address, unsigned char* value);

/**
 * Sends any SCSI command as it is.
 *
 * @param device session
 * @param dataIn not 0 to read, 0 to send
 * @param length bytes of data, at most 65,536 to read; 0 for a command without data
 * @param cdb    16 bytes
 * @param data   `length` bytes: receives what is read, and is untouched on failure; or is sent. May
 *               be null for a length of 0
 * @return 0 or ZEM_E_FAIL; ZEM_E_REFUSED for a null `cdb` and for null data with a length
 */
ZEM_API ZemResult ZEMROMAPI_ScsiCommand(void* device, int dataIn, unsigned int length,
                                        unsigned char* cdb, void* data);

/**
 * Makes the enhanced area of an eMMC. The name is misspelt, and stays so.
 *
 * @param device session; not tested for null
 * @param first  passed on to the boot code
 * @param second passed on to the boot code
 * @return 1 when the device accepted the command, 0 when it did not
 */
ZEM_API ZemResult ZEMROMAPI_MkEmmcEhancedArea(void* device, unsigned int first,
                                              unsigned int second);

/* ---------------------------------------------------------------------------------------------
 * Storage and firmware packages of ROM boot
 *
 * The functions below write, read or burn the selected storage. An address in storage is a byte
 * address. Data moves in whole sectors of 512 bytes and by commands of at most 32,768 bytes; the
 * rest of a last sector is what follows the data in its file, else zeros. What would reach past the
 * last 32-bit address is refused like a malformed file, and so is a file that there is no memory
 * for, where it is read whole. A write that fails leaves the line "Failed to transfer data to
 * device." and what has been written; where a file has a header block, that is written last.
 * -------------------------------------------------------------------------------------------- */

/**
 * Erases a region: writes 0xFF over it, whole sectors in the storage and `size` bytes in the dump
 * file.
 *
 * @param device  session; not tested for null
 * @param address of the region
 * @param size    in bytes; 0 erases nothing
 * @return 0 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_Erase(void* device, unsigned int address, unsigned int size);

/**
 * Burns an image file: 18 bytes with the payload's length at offset 14, a header block of 4,096
 * bytes, the payload. The magic is not looked at. Erases the header block's place, whether or not
 * that succeeds, writes the payload behind it, then the header block.
 *
 * @param device  session
 * @param path    the image, such as a file made by ZEMROMAPI_DispackZemPcCamFw
 * @param address in: where the header block goes; out: the next free multiple of 4,096. On a
 * failure it is where writing stopped; untouched when the file is refused
 * @return 1 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_BurnFw(void* device, const wchar_t* path, unsigned int* address);

/**
 * Burns the data of a package to address 0: offset 10 of the file is a 32-bit number that counts
 * from there to the data, offset 14 the data's length. Nothing is erased before.
 *
 * @param device  session
 * @param path    the package
 * @param address receives the number of bytes written; untouched when the file is refused
 * @return 1 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_BurnPcCamFw(void* device, const wchar_t* path, unsigned int* address);

/**
 * Burns a package laid out as for ZEMROMAPI_BurnPcCamFw whose data begins with a header block of
 * 4,096 bytes: erases 4,096 bytes at address 0, writes the payload from 4,096 on, then the header
 * block to 0.
 *
 * @param device  session
 * @param path    the package
 * @param address receives the end of what is written of the payload, not rounded up further;
 *                untouched when the file is refused
 * @return 1 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_BurnPcCamFwPnsV2(void* device, const wchar_t* path,
                                             unsigned int* address);

/**
 * Splits a package of boot code and firmware into the image files "VSN_V3BC" and "VSN_V3FW" in the
 * current folder. Their magics are "VSN_V2BC" and "VSN_V2FW". A file that cannot be created is
 * skipped.
 *
 * @param device not used, may be null
 * @param path   the package
 * @return 1; ZEM_E_FAIL when the package cannot be opened or is malformed, before a file is made,
 *         and when a file could not be written whole
 */
ZEM_API ZemResult ZEMROMAPI_DispackZemPcCamFw(void* device, const wchar_t* path);

/**
 * Writes a Linux firmware package: a header of 8,192 bytes and the body. Erases the header's place,
 * writes the body, then the header. A package of at most 4,096 bytes is written whole as a header;
 * one of 4,097 to 8,191 bytes is malformed.
 *
 * @param device        session
 * @param path          the package; the file itself is not changed
 * @param bodyAddress   where the body goes, which is also put into the header that is written (at
 *                      offset 16, divided by 1 << the 32-bit shift at offset 8); 0xFFFFFFFF for the
 *                      address that the header says, which must have 32 bits where there is a
 *                      body
 * @param headerAddress where the header goes
 * @return 1 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_UpdateLinuxFwPkg(void* device, const wchar_t* path,
                                             unsigned int bodyAddress, unsigned int headerAddress);

/**
 * ZEMROMAPI_UpdateLinuxFwPkg with the body at the address that the package's header says. A file
 * shorter than 512 bytes leaves the line "ZEMROMAPI_UpdateLinuxFwPkg_ file error." and gives
 * ZEM_E_FAIL.
 *
 * @param device        session
 * @param path          the package
 * @param headerAddress where the header goes
 * @return 1 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_UpdateLinuxFwPkg_(void* device, const wchar_t* path,
                                              unsigned int headerAddress);

/**
 * Writes a file whose first 4,096 bytes are a header: erases the header's place, writes what
 * follows, then the header. A file of at most 4,096 bytes is written as it is.
 *
 * @param device  session
 * @param path    the file
 * @param address in: where the file goes; out: the end of what is written
 * @return 1 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_PartialUpdateWithHeader(void* device, const wchar_t* path,
                                                    unsigned int* address);

/**
 * Writes a file as it is, without erasing before. It is read in pieces and may be as long as there
 * are addresses.
 *
 * @param device  session
 * @param path    the file
 * @param address in: where the file goes; out: the end of what is written
 * @return 1 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_PartialUpdate(void* device, const wchar_t* path, unsigned int* address);

/**
 * Reads the selected storage from address 0 on into a file, which is made anew. A failed read
 * leaves the line "Usb transfer failed", and in the file what came before.
 *
 * @param device  session
 * @param path    the file
 * @param address receives the number of bytes read; what it holds before does not matter
 * @param length  bytes to read, rounded up to whole sectors
 * @return 1 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_PartialRead(void* device, const wchar_t* path, unsigned int* address,
                                        unsigned int length);

/**
 * Writes a file from address 0 on, as it is, into the storage selected for the camera's memory (see
 * ZEMROMAPI_SwitchModePCAM_DRAM). The check sum of each piece goes to the debugger channel.
 *
 * @param device  session
 * @param path    the file
 * @param address receives the number of bytes written
 * @return 1 or ZEM_E_FAIL
 */
ZEM_API ZemResult ZEMROMAPI_LoadFW2Memory(void* device, const wchar_t* path, unsigned int* address);

/* ---------------------------------------------------------------------------------------------
 * H.264
 *
 * A camera has a list of H.264 stream formats. The library reads it when it is first needed and
 * keeps it in the handle until that is closed; a camera that cannot tell its formats is given a
 * default list of 25 for as long as its handle is open.
 * ------------------------------------------------------------------------------------------- */

/** One H.264 stream format, 32 bytes. */
typedef struct H264FrameInfo {
  uint16_t wLength;      /**< 32 */
  uint16_t wType;        /**< how the format is started: 0 and 1 by code, 2 by probe and commit */
  uint16_t wFrameIndex;  /**< what ZEMAPI_SetH264FrameIndex chooses the format by */
  uint8_t bListMark;     /**< list of the camera: 0 on the record of its last entry, 1 on all other;
                              default list: 1 on the last record, 0 on all other */
  uint8_t bReserved;     /**< 0 */
  uint16_t wWidth;       /**< main picture, pixels */
  uint16_t wHeight;      /**< main picture, pixels */
  uint16_t wSubWidth;    /**< second picture, pixels */
  uint16_t wSubHeight;   /**< second picture, pixels */
  uint32_t dwMaxBitRate; /**< kbit/s */
  uint32_t dwMinBitRate; /**< kbit/s */
  uint16_t wMaxFps;      /**< frames per second */
  uint16_t wMinFps;      /**< frames per second */
  uint32_t dwReserved;   /**< 0 */
} H264FrameInfo;

/** Head of a list of H.264 stream formats. The records, H264FrameInfo, follow it at once. */
typedef struct H264FrameList {
  uint16_t wTotalLength; /**< bytes of the list; more than head and records take */
  uint16_t wCount;       /**< records that follow */
} H264FrameList;

/**
 * Hands out a copy of the camera's list of H.264 stream formats.
 *
 * Whatever goes wrong while the list is read from the camera gives the default list, and nothing is
 * reported; but when memory is exhausted there is no list, and the next call tries again.
 *
 * @param handle device handle
 * @param list   receives the copy, an H264FrameList; the caller's, to be given back with
 *               ZEMAPI_ReleaseH264FrameList; untouched on failure
 * @return the length of the copy in bytes (808 for the default list); ZEM_E_NO_DEVICE for a null
 *         handle; ZEM_E_FAIL when memory is exhausted
 */
ZEM_API ZemResult ZEMAPI_GetH264FrameList(void* handle, void** list);

/**
 * Frees a copy that ZEMAPI_GetH264FrameList handed out. Does nothing for null.
 *
 * @param list the copy, or null
 */
ZEM_API void ZEMAPI_ReleaseH264FrameList(void* list);

/**
 * Starts the first format of the camera's list that has the given frame index.
 *
 * Formats of type 2 are started on the H.264 unit: two rounds of probe and commit, one for each
 * picture. Formats of the types 0 and 1 are started by the code of their resolution, on the Skype
 * unit if that answers with a version of at most 19, otherwise by vendor commands.
 *
 * @param handle     device handle
 * @param frameIndex wFrameIndex of the format
 * @return 0, also for a type 2 whatever the camera answered, for a format of another type (nothing
 *         is sent), for a type 0 whose switching on failed and for a type 1 whose switching on
 *         failed; ZEM_E_FAIL when no format has the index, when the resolution code could not be
 *         sent, and when memory is exhausted; ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_SetH264FrameIndex(void* handle, unsigned short frameIndex);

/**
 * Starts H.264 at a resolution, or stops it. Spoken to as formats of the types 0 and 1; a
 * resolution without a code is started with code 0.
 *
 * @param handle device handle
 * @param width  pixels; 0 stops
 * @param height pixels; 0 stops
 * @return 1 for success and 0 for failure; ZEM_E_FAIL when the vendor unit did not take the code;
 *         ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_SetH264Mode(void* handle, unsigned int width, unsigned int height);

/**
 * Tells the uncompressed and MJPEG formats that carry H.264 streams: a fixed table of 3.
 *
 * @param handle  not used, may be null
 * @param index   from 0
 * @param width   receives the width in pixels
 * @param height  receives the height in pixels
 * @param subtype receives MEDIASUBTYPE_YUY2 or MEDIASUBTYPE_MJPG
 * @return 0; 1, with zeros in all outputs, behind the last format; ZEM_E_REFUSED for a null output,
 *         and then the others are untouched
 */
ZEM_API ZemResult ZEMAPI_GetH264_UVC_PayloadFormat(void* handle, unsigned short index,
                                                   unsigned short* width, unsigned short* height,
                                                   GUID* subtype);

/**
 * Sets the frame rate of the running encoder, in frames per second.
 *
 * @param handle device handle
 * @param fps    frames per second
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_SetFps(void* handle, unsigned short fps);

/**
 * Sets the bit rate of the running encoder, in the camera's units.
 *
 * @param handle  device handle
 * @param bitRate the bit rate
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_SetBitRate(void* handle, unsigned short bitRate);

/**
 * Makes the encoder's next picture a key frame.
 *
 * @param handle device handle
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_ForceIFrame(void* handle);

/**
 * Not supported: sends nothing, and puts a line with the count on the debugger channel.
 *
 * @param handle device handle
 * @param count  for the line on the debugger channel
 * @return ZEM_E_DEVICE_REFUSED; ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ZEMAPI_SetPframeCount(void* handle, unsigned int count);

/* ---------------------------------------------------------------------------------------------
 * Encoding unit
 *
 * These functions take the device object itself instead of a handle. A null device object means the
 * default camera, opened for that one access.
 *
 * Every transfer is appended to ZemWrenCmdLog.txt in the "Temp" folder of the Windows directory, as
 * UTF-16 text: time, direction and the transport's result, for the controls the library knows a
 * title, and for rate control, probe and commit the fields of the block. The file is opened and
 * closed for each; one that cannot be opened is no failure. The block is logged whatever became of
 * the transfer.
 *
 * WREN_EuGet stands at the end of this header: it is exported under its C++ symbol only.
 * ------------------------------------------------------------------------------------------- */

/**
 * Opens the index-th camera with the ids of the settings file, as ZEMAPI_OpenDevice finds it.
 *
 * @param index  position among the matching cameras only, from 0
 * @param device receives the device object, an IBaseFilter released with WREN_CloseDevice;
 * untouched on failure
 * @return as ZEMAPI_OpenDevice
 */
ZEM_API ZemResult WREN_OpenDevice(uint32_t index, void** device);

/**
 * Releases a device object and sets *device to null. Does nothing when *device (or device) is null.
 * COM is not uninitialised, although WREN_OpenDevice initialised it.
 *
 * @param device the address of the caller's device object
 */
ZEM_API void WREN_CloseDevice(void** device);

/**
 * Writes one control of the encoding unit.
 *
 * @param device   device object
 * @param selector control selector; ZEM_E_REFUSED above 0xFFFF
 * @param data     `length` bytes; may be null when there are none
 * @param length   bytes to write
 * @return the platform's result unchanged
 */
ZEM_API ZemResult WREN_EuSet(void* device, uint32_t selector, void* data, uint16_t length);

/**
 * Writes the H.264 probe block.
 *
 * @param device device object
 * @param block  51 bytes
 * @return ZEM_E_NO_DEVICE when the transfer failed, else the platform's result
 */
ZEM_API ZemResult WREN_ProbeSet(void* device, void* block);

/**
 * Reads the H.264 probe block into 51 bytes.
 *
 * @param device device object
 * @param block  receives 51 bytes
 * @return as WREN_ProbeSet
 */
ZEM_API ZemResult WREN_ProbeGet(void* device, void* block);

/**
 * Writes the H.264 commit block, 51 bytes.
 *
 * @param device device object
 * @param block  51 bytes
 * @return as WREN_ProbeSet
 */
ZEM_API ZemResult WREN_CommitSet(void* device, void* block);

/**
 * Reads the H.264 commit block into 51 bytes.
 *
 * @param device device object
 * @param block  receives 51 bytes
 * @return as WREN_ProbeSet
 */
ZEM_API ZemResult WREN_CommitGet(void* device, void* block);

/**
 * Appends the caller's text to the log, behind the time and the word "Set". No line end is added.
 *
 * @param text of any length; null writes nothing
 */
ZEM_API void WREN_WriteLog(const wchar_t* text);

/* ---------------------------------------------------------------------------------------------
 * Streams and endpoints
 *
 * Cameras with several encoded streams. The ORVAAPI_ functions speak to the stream and endpoint
 * unit, the ZEMAPI_Multicas... ones to the vendor unit.
 * ------------------------------------------------------------------------------------------- */

/** A stream's format. */
typedef struct OrvaStreamFormat {
  uint8_t bStreamFormat;    /**< kind of stream, the camera's numbers */
  uint16_t wWidth;          /**< pixels */
  uint16_t wHeight;         /**< pixels */
  uint32_t dwFrameInterval; /**< the camera's units */
  uint32_t dwBitRate;       /**< the camera's units */
} OrvaStreamFormat;

/**
 * Reads the version of the stream unit.
 *
 * @param handle  device handle
 * @param version receives 1 byte
 * @return the platform's result; ZEM_E_FAIL for a null `version`, nothing is sent; ZEM_E_NO_DEVICE
 *         for a null handle
 */
ZEM_API ZemResult ORVAAPI_GetVersion(void* handle, unsigned char* version);

/**
 * Reads the build day of the firmware, 2 bytes.
 *
 * @param handle   device handle
 * @param buildDay receives the day, 2 bytes
 * @return as ORVAAPI_GetVersion
 */
ZEM_API ZemResult ORVAAPI_FirmwareBuildDay(void* handle, unsigned short* buildDay);

/**
 * Selects a stream.
 *
 * @param handle   device handle
 * @param streamId the camera's number of the stream
 * @return the platform's result; ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ORVAAPI_SetStreamID(void* handle, unsigned char streamId);

/**
 * Reads the endpoint setting.
 *
 * @param handle  device handle
 * @param setting receives 1 byte; a null pointer goes to the platform as it is
 * @return the platform's result; ZEM_E_NO_DEVICE for a null handle
 */
ZEM_API ZemResult ORVAAPI_GetEndpointSetting(void* handle, unsigned char* setting);

/**
 * Writes or reads a stream format, as a probe or as a commit.
 *
 * @param handle    device handle
 * @param format    what is written, null for zeros in all fields; or what is read into, also when
 *                  the read fails (zeros, where nothing was read)
 * @param operation 0 writes the probe, 1 reads the probe, 2 writes the commit, 3 reads the commit;
 *                  anything else sends nothing
 * @return the platform's result; 0 for any other operation; ZEM_E_REFUSED for a read with a null
 *         `format`; ZEM_E_NO_DEVICE for a null handle, whatever the operation
 */
ZEM_API ZemResult ORVAAPI_StreamFormatProbeCommit(void* handle, OrvaStreamFormat* format,
                                                  unsigned int operation);

/**
 * Toggles a layer; the value is the camera's.
 *
 * @param handle device handle
 * @param value  the camera's to interpret
 * @return as ORVAAPI_SetStreamID
 */
ZEM_API ZemResult ORVAAPI_ToggleLayerControl(void* handle, unsigned char value);

/**
 * Selects a stream by a vendor command; no status is read.
 *
 * @param handle   device handle
 * @param streamId the camera's number of the stream
 * @return as ORVAAPI_SetStreamID
 */
ZEM_API ZemResult ZEMAPI_MulticastStreamID(void* handle, unsigned char streamId);

/**
 * Toggles a layer by a vendor command; no status is read.
 *
 * @param handle device handle
 * @param value  the camera's to interpret
 * @return as ORVAAPI_SetStreamID
 */
ZEM_API ZemResult ZEMAPI_MulticasToggleLayer(void* handle, unsigned char value);

/**
 * Commits a stream format by a vendor command.
 *
 * @param handle       device handle
 * @param streamFormat kind of stream, the camera's numbers
 * @param width        pixels
 * @param height       pixels
 * @param packedLow    its lower 5 bits are sent
 * @param packedHigh   its lower 11 bits are sent
 * @return as all commands
 */
ZEM_API ZemResult ZEMAPI_MulticastCommit(void* handle, unsigned char streamFormat,
                                         unsigned short width, unsigned short height,
                                         unsigned char packedLow, unsigned short packedHigh);

/* ---------------------------------------------------------------------------------------------
 * Frames and sound
 *
 * File utilities for the host's own tools; no device is touched. Pixels are three bytes each in the
 * order blue, green, red, rows back to back without padding, also where that is no multiple of 4
 * bytes. The writers return 1 for a file that was written and 0 otherwise; they may be called from
 * any thread. A picture or sound whose byte count does not fit the file's 32-bit fields gives 0,
 * and then nothing is created. So does a null pointer.
 * ------------------------------------------------------------------------------------------- */

/**
 * Converts a frame of three planes to pixels, top-down like the frame. Despite its name it does not
 * read the interleaved layout that is called NV12.
 *
 * @param source      width * height bytes of Y, then U and then V with width * height / 4 bytes
 * each, one for a block of two by two pixels; of an odd frame, chroma that is missing counts as 128
 * @param destination receives width * height * 3 bytes; must not overlap the source
 * @param width       pixels in a row
 * @param height      rows
 */
ZEM_API void NV12_to_RGB(const uint8_t* source, uint8_t* destination, uint32_t width,
                         uint32_t height);

/**
 * Writes a YUY2 frame as a 24-bit BMP file, upright. A frame without pixels, and exhausted memory,
 * give the 54 bytes of the headers and 0. When the pixels cannot be written, what was written stays
 * on the disk.
 *
 * @param path   file to create or overwrite
 * @param frame  height rows of width * 2 bytes: Y0, U, Y1, V for each two pixels
 * @param width  pixels in a row
 * @param height rows
 * @return 1 for a file written, else 0
 */
ZEM_API int32_t ConvertYUY2toBMP(const wchar_t* path, const uint8_t* frame, uint32_t width,
                                 uint32_t height);

/**
 * Writes a frame of three planes, as NV12_to_RGB takes it, as a 24-bit BMP file. The rows keep the
 * frame's order, so the picture stands upside down in a viewer. Otherwise as ConvertYUY2toBMP.
 *
 * @param path   file to create or overwrite
 * @param frame  three planes, as the source of NV12_to_RGB
 * @param width  pixels in a row
 * @param height rows
 * @return 1 for a file written, else 0
 */
ZEM_API int32_t ConvertNV12toBMP(const wchar_t* path, const uint8_t* frame, uint32_t width,
                                 uint32_t height);

/**
 * Writes pixels as a 24-bit BMP file, in the order in which they lie, and frees them.
 *
 * They have to come from malloc of the Universal C Runtime, on Linux of the C library. What comes
 * from new, from a static or another runtime or from no heap damages the caller's heap.
 *
 * @param path   file to create or overwrite
 * @param pixels width * height * 3 bytes. After a success they are freed; after a failure they are
 *               still the caller's
 * @param width  pixels in a row
 * @param height rows
 * @return 1 for a file written, else 0
 */
ZEM_API int32_t ConvertRGBtoBMP(const wchar_t* path, uint8_t* pixels, uint32_t width,
                                uint32_t height);

/**
 * Puts a WAV header in front of raw PCM samples. Short reads and writes are not noticed. When
 * memory is exhausted, the WAV file is left alone.
 *
 * @param rawPath       file with the samples, at most 4,294,967,259 bytes; may be wavPath
 * @param wavPath       file to create or overwrite
 * @param channels      samples per frame
 * @param sampleRate    frames per second
 * @param bitsPerSample bits of one sample
 * @return 1 when a file with samples was written; 0 otherwise, also for an empty raw file, whose
 * WAV file of 44 bytes is written all the same
 */
ZEM_API int32_t PackWavFile(const wchar_t* rawPath, const wchar_t* wavPath, uint8_t channels,
                            int32_t sampleRate, uint8_t bitsPerSample);

#ifdef __cplusplus
} /* extern "C" */

/* ---------------------------------------------------------------------------------------------
 * For C++ callers
 *
 * These are exported under the symbol that a Microsoft x64 compiler gives their C++ declaration.
 * -------------------------------------------------------------------------------------------- */

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

/**
 * Reads one control of the encoding unit. For C++ callers; others find the function by its symbol.
 *
 * @param device   device object
 * @param selector control selector; ZEM_E_REFUSED above 0xFFFF
 * @param data     receives up to `length` bytes; may be null when there are none
 * @param length   bytes to read
 * @return ZEM_E_NO_DEVICE when the transfer failed, whatever its own code (which the log has), else
 *         the platform's result
 */
ZemResult WREN_EuGet(void* device, unsigned int selector, void* data, unsigned short length)
    ZEM_DECORATED("?WREN_EuGet@@YAJPEAXI0G@Z");

/**
 * Selects the camera's memory as the storage that is written. For C++ callers only: its exported
 * symbol is the one that a Microsoft x64 compiler gives it.
 *
 * @param device ROM-boot session
 * @return 0 or ZEM_E_FAIL
 */
ZemResult ZEMROMAPI_SwitchModePCAM_DRAM(void* device)
    ZEM_DECORATED("?ZEMROMAPI_SwitchModePCAM_DRAM@@YAJPEAX@Z");
#endif

#if !defined(_WIN32) && defined(ZEM_BUILDING_LIBRARY)
#pragma GCC visibility pop
#endif

#endif /* ZEM_UVC_EXT_API_H */
