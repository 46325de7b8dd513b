/*
 * ZemSimulator.dll: simulated cameras in the system's own list of video-input devices, for any host
 * in this process (ZemSimulatorStart) or in every process (regsvr32).
 *
 * Call from one thread at a time.
 */
#ifndef ZEM_SIMULATOR_H
#define ZEM_SIMULATOR_H

#ifdef __cplusplus
extern "C" {
#endif

/** Most cameras that can be simulated at once. */
#define ZEM_SIMULATOR_MAX_CAMERAS 8

/**
 * Puts simulated cameras into the system's list, in place of those of an earlier start.
 *
 * @param options JSON text as described in docs/simulator.md, or null or empty for one camera with
 *                the default ids
 * @return 0, or a negative HRESULT; ZemSimulatorLastError tells why
 */
long ZemSimulatorStart(const char* options);

/** Takes the cameras out of the list again, and writes their state files. */
void ZemSimulatorStop(void);

/** Why the last start or stop failed; empty when it did not. As UTF-8 text; valid until the next
 * call. */
const char* ZemSimulatorLastError(void);

#ifdef __cplusplus
}
#endif

#endif /* ZEM_SIMULATOR_H */
