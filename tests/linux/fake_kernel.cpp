#include "tests/linux/fake_kernel.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace zem::testing {
namespace {

FakeKernel* theKernel = nullptr;

constexpr const char* kDeviceFolder = "/dev";

std::string ControlCall(const std::string& device, unsigned long request) {
  char text[32] = {};
  static_cast<void>(std::snprintf(text, sizeof(text), " %08lx", request));
  return device + text;
}

}  // namespace

FakeKernel::FakeKernel() : sysFolder_((folder_.path() / "sys").string()) { theKernel = this; }

FakeKernel::~FakeKernel() { theKernel = nullptr; }

FakeKernel& FakeKernel::Present() { return *theKernel; }

std::string FakeKernel::SysPath(const std::string& path) const { return sysFolder_ + "/" + path; }

void FakeKernel::AddFile(const std::string& path, const std::string& content) {
  const std::filesystem::path whole = SysPath(path);
  std::filesystem::create_directories(whole.parent_path());
  std::ofstream(whole, std::ios::binary) << content;
}

void FakeKernel::AddLink(const std::string& path, const std::string& target) {
  const std::filesystem::path whole = SysPath(path);
  std::filesystem::create_directories(whole.parent_path());
  std::filesystem::create_directories(SysPath(target));
  std::filesystem::create_directory_symlink(SysPath(target), whole);
}

void FakeKernel::Remove(const std::string& path) { std::filesystem::remove_all(SysPath(path)); }

int FakeKernel::openFiles() const { return static_cast<int>(opened_.size()); }

bool FakeKernel::FailsNow(const std::string& call) {
  const bool fails = static_cast<int>(calls.size()) == failingCall;
  calls.push_back(call);
  return fails;
}

int FakeKernel::Open(const char* path, int flags) {
  const std::string name = std::string(path).substr(std::string(kDeviceFolder).size() + 1);
  if (FailsNow("open " + name + " " + std::to_string(flags & O_ACCMODE))) {
    return failure;
  }
  const auto found = devices.find(name);
  if (found == devices.end()) {
    return -ENOENT;
  }
  if (found->second->openResult < 0) {
    return found->second->openResult;
  }
  opened_[nextDescriptor_] = name;
  return nextDescriptor_++;
}

void FakeKernel::Close(int descriptor) {
  if (opened_.erase(descriptor) != 1) {
    std::abort();  // NOLINT: a file closed twice is a test's end
  }
}

int FakeKernel::Control(int descriptor, unsigned long request, void* argument) {
  const std::string name = opened_.at(descriptor);
  if (FailsNow(ControlCall(name, request))) {
    return failure;
  }
  const auto device = devices.find(name);
  const int result = device != devices.end() ? device->second->Control(request, argument) : -ENODEV;
  if (onCall) {
    onCall();
  }
  return result;
}

}  // namespace zem::testing
