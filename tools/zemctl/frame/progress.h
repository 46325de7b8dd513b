// How far a long operation has come, on the terminal: named phases, and a percentage that never
// goes back, of each phase or of a whole of which each phase has a share.
#pragma once

#include <cstdint>
#include <string>

namespace zemctl {

// Writes to standard error: one line that is drawn over on a terminal, one line a phase and every
// further tenth elsewhere; nothing at all when silent.
class Progress {
 public:
  // The part of the whole, in percent, that a phase takes.
  struct Share {
    std::uint32_t from;
    std::uint32_t to;
  };

  // With a label, which stands before every line, others may write lines in between.
  explicit Progress(bool silent, const std::string& label = "");
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Begins a phase; the one before it is complete. Without a share it is a whole of its own.
  void Begin(const std::string& phase) { Begin(phase, {0, 100}); }
  void Begin(const std::string& phase, Share share);

  // The present phase is `percent` done. A smaller number than before changes nothing; more than
  // 100 counts as 100.
  void Update(std::uint32_t percent);

  // The same in bytes, which are shown.
  void UpdateBytes(std::uint64_t done, std::uint64_t whole);

  // A sentence to the person at the terminal, in between.
  void Say(const std::string& sentence);

  // The present phase is complete.
  void Complete();

 private:
  void Reach(std::uint32_t percent);
  void Draw() const;

  bool silent_;
  std::string label_;
  bool terminal_;
  std::string phase_;
  Share share_ = {0, 100};
  std::uint32_t percent_ = 0;  // of the whole
  std::string bytes_;          // " (512 of 1024 bytes)"; empty where they are not told
};

}  // namespace zemctl
