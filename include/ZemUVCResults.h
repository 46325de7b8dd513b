/* SPDX-License-Identifier: MIT */
/*
 * What the results of ZemUVCExtApi are called and what they mean, as text: one table for C, for
 * ZemUVC.hpp and for the tool zemctl. For C11 and C++; nothing of it is in the library itself.
 */
#ifndef ZEM_UVC_RESULTS_H
#define ZEM_UVC_RESULTS_H

#include "ZemUVCExtApi.h"

#ifdef __cplusplus
#define ZEM_INLINE inline
#else
#define ZEM_INLINE static inline
#endif

/** The library's own results, ENTRY(code, text): a clause each. */
#define ZEM_RESULT_TEXTS(ENTRY)                                            \
  ENTRY(ZEM_OK, "done")                                                    \
  ENTRY(ZEM_E_REFUSED, "the request was refused")                          \
  ENTRY(ZEM_E_DEVICE_REFUSED, "the camera refused the command")            \
  ENTRY(ZEM_E_BUFFER_TOO_SMALL, "the buffer is too small")                 \
  ENTRY(ZEM_E_NO_DEVICE, "the command could not be written to the camera") \
  ENTRY(ZEM_E_FAIL, "the library reports a failure")

/** Failures of the platform that say what became of a transfer, ENTRY(code, text). */
#define ZEM_TRANSFER_FAILURE_TEXTS(ENTRY)              \
  ENTRY(0x80070490, "the camera has no such control")  \
  ENTRY(0x80070037, "the camera is gone")              \
  ENTRY(0x8007001F, "the camera did not carry it out") \
  ENTRY(0x8007048F, "the camera is gone")              \
  ENTRY(0x80070492, "the camera has no such control")

/**
 * Tells what a result is called.
 *
 * @param result any result of the library
 * @return such as "ZEM_E_REFUSED"; "positive result" and "platform failure" for what has no name of
 *         its own. A constant, never null
 */
ZEM_INLINE const char* ZemResultName(ZemResult result) {
#define ZEM_RESULT_NAME(code, text) \
  case code:                        \
    return #code;
  switch (result) {
    ZEM_RESULT_TEXTS(ZEM_RESULT_NAME)
    default:
      return result > 0 ? "positive result" : "platform failure";
  }
#undef ZEM_RESULT_NAME
}

/**
 * Tells what a result means.
 *
 * @param result any result of the library
 * @return a clause such as "the camera refused the command"; "done" for every positive result. A
 *         constant, never null
 */
ZEM_INLINE const char* ZemResultText(ZemResult result) {
#define ZEM_RESULT_TEXT(code, text) \
  case code:                        \
    return text;
  switch (result) {
    ZEM_RESULT_TEXTS(ZEM_RESULT_TEXT)
    default:
      return result > 0 ? "done" : "the platform reported a failure";
  }
#undef ZEM_RESULT_TEXT
}

/**
 * Tells what a failure of the platform says about the transfer that it ended.
 *
 * @param result any result of the library
 * @return a clause such as "the camera is gone"; null for a result that says no more than that
 *         there was a failure
 */
ZEM_INLINE const char* ZemTransferFailureText(ZemResult result) {
#define ZEM_TRANSFER_FAILURE_TEXT(code, text) \
  case (ZemResult)(code):                     \
    return text;
  switch (result) {
    ZEM_TRANSFER_FAILURE_TEXTS(ZEM_TRANSFER_FAILURE_TEXT)
    default:
      return NULL; /* NOLINT(modernize-use-nullptr): C has none. */
  }
#undef ZEM_TRANSFER_FAILURE_TEXT
}

#endif /* ZEM_UVC_RESULTS_H */
