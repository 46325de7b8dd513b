// Catches what this thread writes to the debugger output channel.
#pragma once

#include <string>
#include <vector>

namespace zem::testing {

class DebuggerCapture {
 public:
  DebuggerCapture();
  ~DebuggerCapture();
  DebuggerCapture(const DebuggerCapture&) = delete;
  DebuggerCapture& operator=(const DebuggerCapture&) = delete;

  // All texts since the last call.
  std::vector<std::wstring> Take();

 private:
  void* handler_;
};

}  // namespace zem::testing
