// A gate that writes down every call on the simulated system, refuses one of them on request, and
// gives calls and transfers other results.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "simulator/com_object.h"

namespace zem::testing {

class RecordingGate : public simulator::CallGate {
 public:
  // What a refused call returns.
  static constexpr auto kRefusal = static_cast<HRESULT>(0x8000BEEFU);

  // Refuses the index-th call from now on, counted from 0.
  void RefuseCall(std::size_t index) { refused_ = calls.size() + index; }

  // Refuses every call of this name.
  void RefuseAll(const std::string& call) { refusedNames_.insert(call); }

  // From now on every call gives this positive result instead of 0.
  void AnswerEverything(HRESULT positive) { everything_ = positive; }

  // The n-th transfer from now on, counted from 1, ends with `result`, whatever it came to. What it
  // moved stays moved.
  void EndTransfer(std::size_t n, HRESULT result) { transferResults_[transfers_ + n] = result; }

  HRESULT EndTransfer(HRESULT result) override {
    const auto changed = transferResults_.find(++transfers_);
    return changed != transferResults_.end() ? changed->second : result;
  }

  HRESULT Enter(const char* call) override {
    calls.emplace_back(call);
    liveObjects.push_back(simulator::liveComObjects);
    const bool isRefused = calls.size() - 1 == refused_ || refusedNames_.contains(call);
    return isRefused ? kRefusal : everything_;
  }

  std::vector<std::string> calls;
  // How many COM objects there were at each call ever.
  std::vector<int> liveObjects;

 private:
  std::size_t refused_ = static_cast<std::size_t>(-1);
  std::set<std::string> refusedNames_;
  HRESULT everything_ = S_OK;
  std::size_t transfers_ = 0;
  std::map<std::size_t, HRESULT> transferResults_;
};

}  // namespace zem::testing
