#include "tools/zemctl/rom_boot/burn_method.h"

#include <algorithm>

#include "include/ZemUVCExtApi.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/files.h"

namespace zemctl {
namespace {

// The body's address that leaves the header of a Linux package as it is.
constexpr unsigned kAddressOfHeader = 0xFFFFFFFF;

// Bytes that 32-bit addresses reach, and those before the data of an image or a package.
constexpr std::uint64_t kMostStorage = 1ULL << 32;
constexpr std::uint64_t kMostHeader = 18;

struct Method {
  const char* name;
  bool takesAddress;
  std::uint64_t longest;  // file that can be burned so, at address 0
  const char* function;
  BurnPlan (*plan)(const Bytes& file, const BurnRequest& request);
  ZemResult (*burn)(void* session, const wchar_t* path, const BurnRequest& request,
                    unsigned* address);
};

const std::array<Method, kBurnMethods.size()> kMethods = {{
    {"image", true, kMostStorage + kMostHeader, "ZEMROMAPI_BurnFw",
     [](const Bytes& file, const BurnRequest& request) { return PlanImage(file, request.address); },
     [](void* session, const wchar_t* path, const BurnRequest&, unsigned* address) {
       return ZEMROMAPI_BurnFw(session, path, address);
     }},
    {"package", false, kMostStorage + kMostHeader, "ZEMROMAPI_BurnPcCamFw",
     [](const Bytes& file, const BurnRequest&) { return PlanPackage(file); },
     [](void* session, const wchar_t* path, const BurnRequest&, unsigned* address) {
       return ZEMROMAPI_BurnPcCamFw(session, path, address);
     }},
    {"package-v2", false, kMostStorage + kMostHeader, "ZEMROMAPI_BurnPcCamFwPnsV2",
     [](const Bytes& file, const BurnRequest&) { return PlanPackageV2(file); },
     [](void* session, const wchar_t* path, const BurnRequest&, unsigned* address) {
       return ZEMROMAPI_BurnPcCamFwPnsV2(session, path, address);
     }},
    {"linux", true, kMostStorage, "ZEMROMAPI_UpdateLinuxFwPkg",
     [](const Bytes& file, const BurnRequest& request) {
       return PlanLinux(file, request.address, request.bodyAddress);
     },
     [](void* session, const wchar_t* path, const BurnRequest& request, unsigned*) {
       return ZEMROMAPI_UpdateLinuxFwPkg(
           session, path, request.bodyAddress.value_or(kAddressOfHeader), request.address);
     }},
    {"partial", true, kMostStorage, "ZEMROMAPI_PartialUpdate",
     [](const Bytes& file, const BurnRequest& request) {
       return PlanPartial(file, request.address);
     },
     [](void* session, const wchar_t* path, const BurnRequest&, unsigned* address) {
       return ZEMROMAPI_PartialUpdate(session, path, address);
     }},
    {"partial-with-header", true, kMostStorage, "ZEMROMAPI_PartialUpdateWithHeader",
     [](const Bytes& file, const BurnRequest& request) {
       return PlanPartialWithHeader(file, request.address);
     },
     [](void* session, const wchar_t* path, const BurnRequest&, unsigned* address) {
       return ZEMROMAPI_PartialUpdateWithHeader(session, path, address);
     }},
}};

const Method& FindMethod(const BurnRequest& request) {
  const auto found = std::find_if(kMethods.begin(), kMethods.end(), [&](const Method& method) {
    return request.method == method.name;
  });
  if (found == kMethods.end()) {
    throw UsageError("\"" + request.method + "\" is no way of burning");
  }
  return *found;
}

}  // namespace

BurnPlan PlanOf(const BurnRequest& request) {
  const Method& method = FindMethod(request);
  if (!method.takesAddress && request.address != 0) {
    throw UsageError("a " + request.method + " goes to address 0");
  }
  if (request.bodyAddress && request.method != "linux") {
    throw UsageError("only a Linux package has a body with an address of its own");
  }
  if (request.bodyAddress == kAddressOfHeader) {
    throw UsageError("no body begins at 0xFFFFFFFF");
  }
  return ParseInputFile(request.path, method.longest - request.address,
                        [&](const Bytes& file) { return method.plan(file, request); });
}

void Burn(const RomSession& session, const BurnRequest& request) {
  const Method& method = FindMethod(request);
  unsigned address = request.address;
  session.Call(method.function, [&](void* handle) {
    return method.burn(handle, Widen(request.path).c_str(), request, &address);
  });
}

}  // namespace zemctl
