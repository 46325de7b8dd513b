#include "benchmarks/paired_runs.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace zem::benchmarks {
namespace {

constexpr double kSliceNanoseconds = 2e6;

double Now(clockid_t clock) {
  timespec time = {};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

Spread SpreadOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t count = values.size();
  return {values[0], values[count / 4], values[count / 2], values[count * 3 / 4]};
}

template <class Get>
Spread SpreadOf(std::size_t count, Get get) {
  std::vector<double> values(count);
  for (std::size_t index = 0; index < count; ++index) {
    values[index] = get(index);
  }
  return SpreadOf(std::move(values));
}

std::string Cell(const Spread& spread, double scale, int digits, const char* unit,
                 const char* least) {
  return Text("%.*f%s (%.*f to %.*f, %s %.*f)", digits, spread.median / scale, unit, digits,
              spread.lower / scale, digits, spread.upper / scale, least, digits,
              spread.least / scale);
}

}  // namespace

PairedRuns::Times PairedRuns::Slice(const std::function<void()>& run, int repetitions) {
  const double clock = Now(CLOCK_MONOTONIC);
  const double processor = Now(CLOCK_THREAD_CPUTIME_ID);
  for (int count = 0; count < repetitions; ++count) {
    run();
  }
  return {(Now(CLOCK_THREAD_CPUTIME_ID) - processor) / repetitions,
          (Now(CLOCK_MONOTONIC) - clock) / repetitions};
}

int PairedRuns::RepetitionsFor(const std::function<void()>& run) {
  int repetitions = 1;
  while (Slice(run, repetitions).processor * repetitions < kSliceNanoseconds) {
    repetitions *= 2;
  }
  return repetitions;
}

void PairedRuns::Run(int pairs, const std::function<void()>& first,
                     const std::function<void()>& second) {
  const int firstRepetitions = RepetitionsFor(first);
  const int secondRepetitions = RepetitionsFor(second);
  for (int pair = 0; pair < pairs; ++pair) {
    first_.push_back(Slice(first, firstRepetitions));
    second_.push_back(Slice(second, secondRepetitions));
  }
}

Spread PairedRuns::First() const {
  return SpreadOf(first_.size(), [this](std::size_t pair) { return first_[pair].processor; });
}

Spread PairedRuns::Second() const {
  return SpreadOf(second_.size(), [this](std::size_t pair) { return second_[pair].processor; });
}

Spread PairedRuns::Ratio() const {
  return SpreadOf(first_.size(), [this](std::size_t pair) {
    return first_[pair].processor / second_[pair].processor;
  });
}

double PairedRuns::MedianRatioByTheClock() const {
  return SpreadOf(first_.size(),
                  [this](std::size_t pair) { return first_[pair].clock / second_[pair].clock; })
      .median;
}

Table::Table(int argc, char** argv, const char* heading)
    : listing_(argc > 1 && std::strcmp(argv[1], "--list") == 0) {
  std::printf("### %s\n", heading);
  if (!listing_) {
    std::printf(
        "\n| | Library | Beside it | Ratio | Ratio by the clock | Limit "
        "|\n|---|---|---|---|---|---|\n");
  }
}

void Table::Row(const std::string& label, double nanoseconds, const char* unit,
                const std::function<std::string(PairedRuns&)>& measure) {
  if (listing_) {
    std::printf("%s\n", label.c_str());
    return;
  }
  PairedRuns runs;
  const std::string limit = measure(runs);
  const int digits = runs.First().median < 10 * nanoseconds ? 1 : 0;
  std::printf("| %s | %s | %s | %s | %.2f | %s |\n", label.c_str(),
              Cell(runs.First(), nanoseconds, digits, unit, "fastest").c_str(),
              Cell(runs.Second(), nanoseconds, digits, unit, "fastest").c_str(),
              Cell(runs.Ratio(), 1, 2, "", "least").c_str(), runs.MedianRatioByTheClock(),
              limit.c_str());
  std::fflush(stdout);
}

std::string Text(const char* format, ...) {
  char text[512];
  va_list values;
  va_start(values, format);
  std::vsnprintf(text, sizeof(text), format, values);
  va_end(values);
  return text;
}

}  // namespace zem::benchmarks
