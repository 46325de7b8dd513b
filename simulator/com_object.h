// Counted objects and the gate that every call on them passes.
#pragma once

#include <atomic>

#include "platform/any_null.h"
#include "platform/com_object.h"

namespace zem::simulator {

using zem::AnyNull;
using zem::QueryOne;

// Sees each call that a host makes on the simulated system's objects, before it is carried out, and
// may refuse it. Sees the result of each transfer, and may change it.
class CallGate {
 public:
  virtual ~CallGate() = default;
  // `call` is the method's name. A negative result refuses the call and is what the host gets; a
  // positive one is what it gets instead of 0.
  virtual HRESULT Enter(const char* call) = 0;

  // A transfer to or from a control of an extension unit has come to `result`; what is returned is
  // what the host gets.
  virtual HRESULT EndTransfer(HRESULT result) { return result; }
};

// Passes the gate, if there is one.
inline HRESULT Enter(CallGate* gate, const char* call) {
  return gate != nullptr ? gate->Enter(call) : S_OK;
}

inline HRESULT EndTransfer(CallGate* gate, HRESULT result) {
  return gate != nullptr ? gate->EndTransfer(result) : result;
}

// The result of a call that has passed the gate with `entered`: the call's own, but what the gate
// said instead of 0.
inline HRESULT GatedResult(HRESULT entered, HRESULT own) { return own == S_OK ? entered : own; }

// Objects that have not been released for the last time. Counting them orders nothing else: a tool
// that looks for races would take it for an agreement of threads.
inline std::atomic<int> liveComObjects = 0;

// A counted object of the simulated system.
template <class... Interfaces>
class ComObject : public CountedObject<Interfaces...> {
 public:
  ComObject() { liveComObjects.fetch_add(1, std::memory_order_relaxed); }

 protected:
  ~ComObject() override { liveComObjects.fetch_sub(1, std::memory_order_relaxed); }
};

}  // namespace zem::simulator
