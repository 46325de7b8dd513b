// How far a long operation has come, on the terminal: named phases, one monotone percentage each.
#pragma once

#include <cstdint>
#include <string>

namespace zemctl {

// Writes to standard error: one line that is drawn over on a terminal, one line a phase and every
// further tenth elsewhere; nothing at all when silent.
class Progress {
 public:
  explicit Progress(bool silent);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Begins a phase at 0 percent; the one before it is complete.
  void Begin(const std::string& phase);

  // The present phase is `percent` done. A smaller number than before changes nothing; more than
  // 100 counts as 100.
  void Update(std::uint32_t percent);

  // The present phase is complete.
  void Complete();

 private:
  void Draw() const;

  bool silent_;
  bool terminal_;
  std::string phase_;
  std::uint32_t percent_ = 0;
};

}  // namespace zemctl
