// The default camera, open for the length of a test.
#pragma once

#include <gtest/gtest.h>

#include "include/ZemUVCExtApi.h"

namespace zem::testing {

class OpenedCamera {
 public:
  OpenedCamera() { EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle_), 0); }
  ~OpenedCamera() { ZEMAPI_CloseDevice(&handle_); }
  OpenedCamera(const OpenedCamera&) = delete;
  OpenedCamera& operator=(const OpenedCamera&) = delete;

  // NOLINTNEXTLINE(google-explicit-constructor): stands wherever a handle does
  operator void*() const { return handle_; }

 private:
  void* handle_ = nullptr;
};

}  // namespace zem::testing
