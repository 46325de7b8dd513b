// Figures that hold on a machine which others use, too: two ways of doing something run in turns, a
// few milliseconds each, so that whatever disturbs meets both, and the medians count. The time is
// the processor's; the clock's is compared as well.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace zem::benchmarks {

// Keeps what a run computes from being left out.
template <class Value>
void Keep(const Value& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

// As to the library, anything may be behind the pointer afterwards.
template <class Value>
void Forget(Value*& pointer) {
  asm volatile("" : "+r"(pointer) : : "memory");
}

// The least of some values, and what a quarter, half and three quarters of them do not exceed.
struct Spread {
  double least = 0;
  double lower = 0;
  double median = 0;
  double upper = 0;
};

class PairedRuns {
 public:
  // Runs both once to get warm, then so many pairs.
  void Run(int pairs, const std::function<void()>& first, const std::function<void()>& second);

  // Nanoseconds of processor time.
  Spread First() const;
  Spread Second() const;
  // Of each pair, the first to the second.
  Spread Ratio() const;
  double MedianRatioByTheClock() const;

 private:
  struct Times {
    double processor;
    double clock;
  };
  static Times Slice(const std::function<void()>& run, int repetitions);
  static int RepetitionsFor(const std::function<void()>& run);

  std::vector<Times> first_;
  std::vector<Times> second_;
};

// What a program prints: a heading and a table in Markdown, as docs/performance.md shows it. With
// the argument --list the labels alone; then nothing is run.
class Table {
 public:
  Table(int argc, char** argv, const char* heading);

  // `nanoseconds` is the unit of the times, and `unit` its name. `measure` returns what limits the
  // figure, with the evidence.
  void Row(const std::string& label, double nanoseconds, const char* unit,
           const std::function<std::string(PairedRuns&)>& measure);

 private:
  bool listing_;
};

// As printf does.
[[gnu::format(printf, 1, 2)]] std::string Text(const char* format, ...);

}  // namespace zem::benchmarks
