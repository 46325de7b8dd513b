#include "simulator/options.h"

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

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

std::vector<Fault> ReadFaults(const json& object) {
  std::vector<Fault> faults;
  for (const auto& text : object.value("faults", std::vector<std::string>())) {
    const std::optional<Fault> fault = ParseFault(text);
    if (!fault) {
      throw std::invalid_argument("\"" + text + "\" is not a fault");
    }
    faults.push_back(*fault);
  }
  return faults;
}

CameraOptions ReadCamera(const json& object) {
  RefuseUnknownKeys(object, {"vendorId", "productId", "name", "vendorUnit", "faults"});
  CameraOptions camera;
  camera.vendorId = ReadId(object, "vendorId", camera.vendorId);
  camera.productId = ReadId(object, "productId", camera.productId);
  camera.name = object.value("name", camera.name);
  camera.vendorUnit = object.value("vendorUnit", camera.vendorUnit);
  camera.faults = ReadFaults(object);
  return camera;
}

// The value of a key whose values have names.
template <class Value>
Value ReadNamed(const json& object, const char* key, Value missing,
                std::initializer_list<std::pair<std::string_view, Value>> names) {
  if (!object.contains(key)) {
    return missing;
  }
  const auto text = object.at(key).get<std::string>();
  for (const auto& [name, value] : names) {
    if (text == name) {
      return value;
    }
  }
  throw std::invalid_argument("\"" + text + "\" is not a value of \"" + key + "\"");
}

BootStage ReadStage(const json& object, const char* key, BootStage missing) {
  return ReadNamed(object, key, missing,
                   {{"camera", BootStage::kCamera},
                    {"bootLoader", BootStage::kBootLoader},
                    {"storage", BootStage::kZemStorage},
                    {"gone", BootStage::kGone}});
}

StorageOptions ReadStorage(const json& object) {
  constexpr std::int64_t kMostBytes = 256LL << 20;
  RefuseUnknownKeys(object, {"type", "size", "file"});
  StorageOptions storage;
  storage.type = ReadNamed(object, "type", storage.type,
                           {{"emmc", StorageType::kEmmc},
                            {"sf", StorageType::kSerialFlash},
                            {"spi-nand", StorageType::kSpiNand},
                            {"parallel-nand", StorageType::kParallelNand},
                            {"dram", StorageType::kDram}});
  const auto size = object.value("size", static_cast<std::int64_t>(storage.size));
  if (size < 0 || size > kMostBytes) {
    throw std::invalid_argument("a storage has at most 268435456 bytes");
  }
  storage.size = static_cast<std::size_t>(size);
  storage.file = object.value("file", storage.file);
  return storage;
}

BootLoaderOptions ReadBootLoader(const json& object) {
  RefuseUnknownKeys(object, {"letter", "start", "afterJump", "signature", "responseFormat",
                             "absentOpens", "storages", "faults"});
  BootLoaderOptions bootLoader;
  const auto letter = object.value("letter", std::string("F"));
  if (letter.size() != 1 || letter[0] < 'C' || letter[0] > 'Z') {
    throw std::invalid_argument("\"letter\" is a drive letter from C to Z");
  }
  bootLoader.letter = static_cast<wchar_t>(letter[0]);
  bootLoader.start = ReadStage(object, "start", bootLoader.start);
  bootLoader.afterJump = ReadStage(object, "afterJump", bootLoader.afterJump);
  bootLoader.signature = object.value("signature", bootLoader.signature);
  bootLoader.responseFormat =
      static_cast<std::uint8_t>(ReadId(object, "responseFormat", bootLoader.responseFormat));
  bootLoader.absentOpens = ReadId(object, "absentOpens", 1);
  if (object.contains("storages")) {
    bootLoader.storages.clear();
    for (const json& storage : object.at("storages")) {
      bootLoader.storages.push_back(ReadStorage(storage));
    }
  }
  bootLoader.faults = ReadFaults(object);
  return bootLoader;
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
    RefuseUnknownKeys(root, {"cameras", "bootLoader"});
    if (root.contains("cameras")) {
      options.cameras.clear();
      for (const json& camera : root.at("cameras")) {
        options.cameras.push_back(ReadCamera(camera));
      }
    }
    if (root.contains("bootLoader")) {
      options.bootLoader = ReadBootLoader(root.at("bootLoader"));
    }
  } catch (const json::exception& error) {
    throw std::invalid_argument(error.what());
  }
  return options;
}

std::shared_ptr<Camera> MakeCamera(const CameraOptions& options,
                                   std::function<void()> enterRomBoot) {
  auto camera = std::make_shared<Camera>();
  camera->AddPlainNode();
  camera->AddPlainNode();
  if (options.vendorUnit) {
    camera->AddUnit(std::make_unique<VendorUnit>()).enterRomBoot = std::move(enterRomBoot);
  }
  for (const Fault& fault : options.faults) {
    camera->AddFault(fault);
  }
  return camera;
}

}  // namespace zem::simulator
