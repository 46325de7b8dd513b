// Every transfer and update with each of its calls on the platform refused in turn: nothing stays
// referenced, nothing is read or written out of bounds, and the result is one that callers know.
#include <functional>
#include <set>

#include "tests/support/transfer_test.h"

namespace {

using zem::testing::Bytes;
using zem::testing::CountingBytes;
using zem::testing::kUnknownControl;
using zem::testing::RecordingGate;
using zem::testing::TransferTest;

struct Operation {
  const char* name;
  bool takesHandle;
  std::function<ZemResult(void* handle, std::uint8_t* bytes, ProgressCallback callback,
                          std::uint64_t user)>
      run;
  // Results besides 0 and ZEM_E_NO_DEVICE.
  std::set<ZemResult> results;
};
void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

// Bytes moved, in two chunks; the stateless calls send them in one or two.
constexpr std::uint32_t kLength = 64;

std::uint32_t ignoredLength = 0;

class PlatformCallSweepTest : public TransferTest, public ::testing::WithParamInterface<Operation> {
 protected:
  PlatformCallSweepTest() {
    if (GetParam().takesHandle) {
      handle();
    }
    // The camera is idle, has some data ready, and burns for one poll.
    MakeSlow();
    vendor().AlwaysAnswer(3, Bytes(32, 0xA1));
    vendor().AlwaysAnswer(5, {0, 0, kLength, 0, 0, 0, 0, 0});
    vendor().AlwaysAnswer(2, {0, 0, 0x44, 0, 0, 0, 0, 0});
  }

  // Runs it and looks that all is released.
  ZemResult Run() {
    Bytes bytes = CountingBytes(kLength);
    const ZemResult result =
        GetParam().run(GetParam().takesHandle ? handle() : nullptr, bytes.data(), Report, user());
    EXPECT_EQ(zem::simulator::liveComObjects, GetParam().takesHandle ? 1 : 0);
    return result;
  }
};

TEST_P(PlatformCallSweepTest, RefusalOfEachCall) {
  gate.calls.clear();
  ASSERT_EQ(Run(), 0);
  const std::size_t calls = gate.calls.size();
  ASSERT_GT(calls, 26U);
  for (std::size_t index = 0; index < calls; ++index) {
    gate.calls.clear();
    gate.RefuseCall(index);
    const ZemResult result = Run();
    EXPECT_TRUE(result == 0 || result == ZEM_E_NO_DEVICE || GetParam().results.contains(result))
        << index << " gives " << result;
    EXPECT_GT(gate.calls.size(), index) << "the refused call was made";
    TakeWire();
    TakeDebuggerLines();
  }
}

INSTANTIATE_TEST_SUITE_P(
    Operations, PlatformCallSweepTest,
    ::testing::Values(
        Operation{"SendData",
                  true,
                  [](void* handle, std::uint8_t* bytes, auto callback, auto user) {
                    return ZEMAPI_SendData(handle, bytes, kLength, callback, user, 0, 0);
                  },
                  {}},
        Operation{"WriteFWData",
                  true,
                  [](void* handle, std::uint8_t* bytes, auto callback, auto user) {
                    return ZEMAPI_WriteFWData(handle, bytes, kLength, callback, user);
                  },
                  {}},
        Operation{"ReadFWData",
                  true,
                  [](void* handle, std::uint8_t* bytes, auto callback, auto user) {
                    return ZEMAPI_ReadFWData(handle, bytes, kLength, &ignoredLength, callback,
                                             user);
                  },
                  {ZEM_E_DEVICE_REFUSED}},
        Operation{"ReadPartialFlashData",
                  true,
                  [](void* handle, std::uint8_t* bytes, auto callback, auto user) {
                    return ZEMAPI_ReadPartialFlashData(handle, 0, kLength, bytes, &ignoredLength,
                                                       callback, user);
                  },
                  {ZEM_E_DEVICE_REFUSED}},
        Operation{"UpdateFW516x",
                  true,
                  [](void* handle, std::uint8_t* bytes, auto callback, auto user) {
                    return ZEMAPI_UpdateFW_516x(handle, bytes, kLength, callback, user, 0);
                  },
                  {}},
        Operation{"UpdateFW517x",
                  true,
                  [](void* handle, std::uint8_t* bytes, auto callback, auto user) {
                    return ZEMAPI_UpdateFW_517x(handle, bytes, kLength, callback, user);
                  },
                  {ZEM_E_DEVICE_REFUSED}},
        Operation{"UpdateFlash",
                  true,
                  [](void* handle, std::uint8_t* bytes, auto callback, auto user) {
                    return ZEMAPI_UpdateFlash(handle, bytes, kLength, callback, user, 0, 0);
                  },
                  {}},
        Operation{"UpdateCaliData",
                  true,
                  [](void* handle, std::uint8_t* bytes, auto callback, auto user) {
                    return ZEMAPI_UpdateCaliData(handle, bytes, kLength, callback, user);
                  },
                  {}},
        Operation{"StatelessCommand",
                  false,
                  [](void* /*handle*/, std::uint8_t* bytes, auto /*callback*/, auto /*user*/) {
                    return ZEMUVCEXT_GetRegister(0, bytes);
                  },
                  {}},
        Operation{"StatelessMemory",
                  false,
                  [](void* /*handle*/, std::uint8_t* bytes, auto /*callback*/, auto /*user*/) {
                    return ZEMUVCEXT_IspCmdWriteMem(bytes, 20);
                  },
                  {RecordingGate::kRefusal, ZEM_E_FAIL, kUnknownControl}},
        Operation{"StatelessWriteFWData",
                  false,
                  [](void* /*handle*/, std::uint8_t* bytes, auto callback, auto user) {
                    return ZEMUVCEXT_WriteFWData(bytes, kLength, callback, user);
                  },
                  {}},
        Operation{"StatelessReadFWData",
                  false,
                  [](void* /*handle*/, std::uint8_t* bytes, auto callback, auto user) {
                    return ZEMUVCEXT_ReadFWData(bytes, kLength, &ignoredLength, callback, user);
                  },
                  {ZEM_E_DEVICE_REFUSED}},
        Operation{"StatelessUpdateFW",
                  false,
                  [](void* /*handle*/, std::uint8_t* bytes, auto callback, auto user) {
                    return ZEMUVCEXT_UpdateFW_with_progress(bytes, kLength, callback, user);
                  },
                  {}},
        Operation{"StatelessUpdateFWEx",
                  false,
                  [](void* /*handle*/, std::uint8_t* bytes, auto callback, auto user) {
                    return ZEMUVCEXT_UpdateFW_with_progressEx(bytes, kLength, callback, user);
                  },
                  {}},
        Operation{"StatelessUpdateFWVision",
                  false,
                  [](void* /*handle*/, std::uint8_t* bytes, auto callback, auto user) {
                    return ZEMUVCEXT_UpdateFW_Vision(bytes, kLength, 0, callback, user);
                  },
                  {ZEM_E_DEVICE_REFUSED}}),
    [](const auto& parameters) { return parameters.param.name; });

}  // namespace
