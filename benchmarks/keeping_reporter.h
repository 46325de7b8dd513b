// Prints the table of results as usual and keeps the processor times, which other programs on the
// machine disturb least, for a sentence behind it.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace zem::benchmarks {

class KeepingReporter : public benchmark::ConsoleReporter {
 public:
  KeepingReporter() : ConsoleReporter(OO_None) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      times[run.benchmark_name()] = run.GetAdjustedCPUTime();
    }
    ConsoleReporter::ReportRuns(runs);
  }

  // In the unit of each benchmark.
  std::map<std::string, double> times;
};

}  // namespace zem::benchmarks
