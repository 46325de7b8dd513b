#include "tools/zemctl/camera/simulator_module.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "simulator/options.h"
#include "tools/zemctl/frame/files.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

constexpr const char* kOptionsName = "--simulator-options: ";
constexpr std::uint64_t kLongestOptions = 1ULL << 20;

// JSON as it was given, or what stands in the file of that name.
std::string ReadOptions(const std::string& given) {
  const std::size_t first = given.find_first_not_of(" \t\r\n");
  if (first == std::string::npos || given[first] == '{' || given[first] == '[') {
    return given;
  }
  try {
    const std::vector<unsigned char> file = ReadInputFile(given, kLongestOptions);
    return {file.begin(), file.end()};
  } catch (const ToolFailure& failure) {
    throw UsageError(kOptionsName + std::string(failure.what()) + ", and it is no JSON");
  }
}

std::size_t CountCameras(const std::string& options) {
  try {
    return zem::simulator::ParseOptions(options).cameras.size();
  } catch (const std::invalid_argument& error) {
    throw UsageError(std::string(kOptionsName) + error.what());
  }
}

// The options with what is given beside them. Throws UsageError for any of it that is malformed.
std::string Complete(const std::string& options, const std::vector<std::string>& faults,
                     const std::string& state) {
  using nlohmann::json;
  for (const std::string& fault : faults) {
    if (!zem::simulator::ParseFault(fault)) {
      throw UsageError("--simulator-fault: \"" + fault + "\" is not a fault");
    }
  }
  if (CountCameras(options) == 0 && !(faults.empty() && state.empty())) {
    throw UsageError(std::string(faults.empty() ? "--state" : "--simulator-fault") +
                     " is for the first camera, and --simulator-options has none");
  }
  json root = options.empty() ? json::object() : json::parse(options);
  for (const std::string& fault : faults) {
    root["cameras"][0]["faults"].push_back(fault);
  }
  if (!state.empty()) {
    root["cameras"][0]["state"] = state;
  }
  return root.dump();
}

// For options that are well-formed and do not start the simulator all the same, most often because
// of a file that they name.
[[noreturn]] void Refuse(const std::string& options, const std::string& state,
                         const std::string& reason) {
  if (!state.empty() && reason.starts_with("the state file \"" + state + "\"")) {
    throw UsageError("--state: " + reason);
  }
  if (!options.empty()) {
    throw UsageError(kOptionsName + reason);
  }
  throw std::runtime_error("the simulator did not start: " + reason);
}

}  // namespace

SimulatorModule::SimulatorModule(const std::string& options, const std::vector<std::string>& faults,
                                 const std::string& state) {
  const std::string text = Complete(ReadOptions(options), faults, state);
  try {
    devices_.emplace(text);
  } catch (const SimulatorRefusal& refusal) {
    Refuse(options, state, refusal.what());
  }
}

SimulatorModule::~SimulatorModule() {
  if (!devices_) {
    return;
  }
  if (const std::string reason = devices_->Stop(); !reason.empty()) {
    std::fprintf(stderr, "zemctl: %s.\n", reason.c_str());
  }
}

}  // namespace zemctl
