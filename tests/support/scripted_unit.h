// An extension unit that accepts everything and answers what the test wrote down; single controls
// may be left to a simulated unit.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <vector>

#include "simulator/camera.h"

namespace zem::testing {

class ScriptedUnit : public simulator::ExtensionUnit {
 public:
  using Bytes = std::vector<std::uint8_t>;
  using ExtensionUnit::ExtensionUnit;

  // The next read of `selector` that has no earlier answer left gets these bytes. Once all are
  // used, reads get as many zeros as they ask for.
  void Answer(std::uint16_t selector, Bytes bytes) {
    answers_[selector].push_back(std::move(bytes));
  }

  // From now on every read of `selector` that has no answer of its own gets these bytes.
  void AlwaysAnswer(std::uint16_t selector, Bytes bytes) { standing_[selector] = std::move(bytes); }

  // From now on `unit`, which must outlive this one, carries out what reaches `selector`.
  void Delegate(std::uint16_t selector, ExtensionUnit& unit) { delegates_[selector] = &unit; }

  // From now on the unit has no such control.
  void Remove(std::uint16_t selector) { removed_.insert(selector); }

  simulator::Outcome Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) override {
    if (const auto delegate = delegates_.find(selector); delegate != delegates_.end()) {
      return delegate->second->Set(selector, bytes);
    }
    return removed_.contains(selector) ? simulator::Outcome::kNoSuchControl
                                       : simulator::Outcome::kDone;
  }

  simulator::Outcome Get(std::uint16_t selector, std::size_t length, Bytes& bytes) override {
    if (removed_.contains(selector)) {
      return simulator::Outcome::kNoSuchControl;
    }
    if (const auto delegate = delegates_.find(selector); delegate != delegates_.end()) {
      return delegate->second->Get(selector, length, bytes);
    }
    auto& queue = answers_[selector];
    if (!queue.empty()) {
      bytes = std::move(queue.front());
      queue.pop_front();
    } else if (const auto standing = standing_.find(selector); standing != standing_.end()) {
      bytes = standing->second;
    } else {
      bytes.assign(length, 0);
    }
    return simulator::Outcome::kDone;
  }

 private:
  std::map<std::uint16_t, std::deque<Bytes>> answers_;
  std::map<std::uint16_t, Bytes> standing_;
  std::map<std::uint16_t, ExtensionUnit*> delegates_;
  std::set<std::uint16_t> removed_;
};

}  // namespace zem::testing
