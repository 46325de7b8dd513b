#include "simulator/options.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "simulator/vendor_unit.h"

namespace zem::simulator {
namespace {

using nlohmann::json;

void RefuseUnknownKeys(const json& object, std::initializer_list<std::string_view> known) {
  for (const auto& [key, value] : object.items()) {
    if (std::find(known.begin(), known.end(), key) == known.end()) {
      throw std::invalid_argument("unknown simulator option \"" + key + "\"");
    }
  }
}

std::uint16_t ReadId(const json& object, const char* key, std::uint16_t missing) {
  const auto id = object.value<std::int64_t>(key, missing);
  if (id < 0 || id > 0xFFFF) {
    throw std::invalid_argument(std::string(key) + " is not a 16-bit number");
  }
  return static_cast<std::uint16_t>(id);
}

CameraOptions ReadCamera(const json& object) {
  RefuseUnknownKeys(object, {"vendorId", "productId", "name", "vendorUnit", "faults"});
  CameraOptions camera;
  camera.vendorId = ReadId(object, "vendorId", camera.vendorId);
  camera.productId = ReadId(object, "productId", camera.productId);
  camera.name = object.value("name", camera.name);
  camera.vendorUnit = object.value("vendorUnit", camera.vendorUnit);
  for (const auto& text : object.value("faults", std::vector<std::string>())) {
    const std::optional<Fault> fault = ParseFault(text);
    if (!fault) {
      throw std::invalid_argument("\"" + text + "\" is not a fault");
    }
    camera.faults.push_back(*fault);
  }
  return camera;
}

}  // namespace

Options ParseOptions(std::string_view text) {
  Options options;
  if (text.empty()) {
    return options;
  }
  try {
    const json root = json::parse(text);
    if (!root.is_object()) {
      throw std::invalid_argument("simulator options are not a JSON object");
    }
    RefuseUnknownKeys(root, {"cameras"});
    if (root.contains("cameras")) {
      options.cameras.clear();
      for (const json& camera : root.at("cameras")) {
        options.cameras.push_back(ReadCamera(camera));
      }
    }
  } catch (const json::exception& error) {
    throw std::invalid_argument(error.what());
  }
  return options;
}

std::shared_ptr<Camera> MakeCamera(const CameraOptions& options) {
  auto camera = std::make_shared<Camera>();
  camera->AddPlainNode();
  camera->AddPlainNode();
  if (options.vendorUnit) {
    camera->AddUnit(std::make_unique<VendorUnit>());
  }
  for (const Fault& fault : options.faults) {
    camera->AddFault(fault);
  }
  return camera;
}

}  // namespace zem::simulator
