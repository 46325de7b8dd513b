/* SPDX-License-Identifier: MIT */
/*
 * ZemSimulator.dll: simulated cameras, for ZemUVCExtApi.dll and the program in this process
 * (ZemSimulatorStartPrivate); or in the system's own list of video-input devices, for any host in
 * this process (ZemSimulatorStart) or in every process (regsvr32).
 *
 * libZemSimulator.so is the same for libZemUVCExtApi.so, but for the system's list.
 *
 * Call from one thread at a time.
 */
#ifndef ZEM_SIMULATOR_H
#define ZEM_SIMULATOR_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Most cameras that can be simulated at once. */
#define ZEM_SIMULATOR_MAX_CAMERAS 8

/**
 * Lets ZemUVCExtApi.dll, which must be loaded, and this process's program find simulated cameras
 * and no other devices, in place of what an earlier start simulated. Nothing is written to the
 * system: no other process sees these cameras, and they end with this one, however it ends.
 *
 * @param options as for ZemSimulatorStart
 * @return 0, or a negative HRESULT; ZemSimulatorLastError tells why
 */
int32_t ZemSimulatorStartPrivate(const char* options);

/**
 * Puts simulated cameras into the system's list, in place of what an earlier start simulated. Every
 * process sees them there; this one can open them.
 *
 * @param options JSON text as described in docs/simulator.md, or null or empty for one camera with
 *                the default ids
 * @return 0, or a negative HRESULT; ZemSimulatorLastError tells why. Always so on Linux
 */
int32_t ZemSimulatorStart(const char* options);

/** Takes the cameras away again, and writes their state files. */
void ZemSimulatorStop(void);

/** Why the last start or stop failed; empty when it did not. As UTF-8 text; valid until the next
 * call. */
const char* ZemSimulatorLastError(void);

/**
 * Hands out what the library gets in place of the system's device enumerator while cameras are
 * simulated privately.
 *
 * @param enumerator receives an ICreateDevEnum with one reference for the caller; null on failure
 * @return 0, or a negative HRESULT when none are simulated so
 */
int32_t ZemSimulatorDevices(void** enumerator);

/**
 * Counts the objects of the simulated devices that hosts in this process have not released for the
 * last time: enumerators, filters and the interfaces they gave.
 *
 * @return 0 when everything has been given back
 */
int32_t ZemSimulatorObjects(void);

#ifdef __cplusplus
}
#endif

#endif /* ZEM_SIMULATOR_H */
