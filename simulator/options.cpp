#include "simulator/options.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "simulator/encoding_unit.h"
#include "simulator/h264_unit.h"
#include "simulator/orva_unit.h"
#include "simulator/skype_unit.h"
#include "simulator/tirella_unit.h"
#include "simulator/transfer_log.h"

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

// A number as wide as `missing`, which stands in where the key is absent.
template <class Number>
Number ReadNumber(const json& object, const char* key, Number missing) {
  constexpr std::int64_t kMost = std::numeric_limits<Number>::max();
  const auto number = object.value<std::int64_t>(key, missing);
  if (number < 0 || number > kMost) {
    throw std::invalid_argument(std::string(key) + " is not a number from 0 to " +
                                std::to_string(kMost));
  }
  return static_cast<Number>(number);
}

// The array at a key; an empty one where the key is missing.
json ReadArray(const json& object, const char* key) {
  json array = object.value(key, json::array());
  if (!array.is_array()) {
    throw std::invalid_argument("\"" + std::string(key) + "\" is not an array");
  }
  return array;
}

H264Format ReadFormat(const json& object) {
  RefuseUnknownKeys(object, {"type", "index", "width", "height", "subWidth", "subHeight",
                             "maxBitRate", "minBitRate", "maxFps", "minFps"});
  H264Format format;
  format.type = ReadNumber(object, "type", format.type);
  format.frameIndex = ReadNumber(object, "index", format.frameIndex);
  format.width = ReadNumber(object, "width", format.width);
  format.height = ReadNumber(object, "height", format.height);
  format.subWidth = ReadNumber(object, "subWidth", format.subWidth);
  format.subHeight = ReadNumber(object, "subHeight", format.subHeight);
  format.maxBitRate = ReadNumber(object, "maxBitRate", format.maxBitRate);
  format.minBitRate = ReadNumber(object, "minBitRate", format.minBitRate);
  format.maxFps = ReadNumber(object, "maxFps", format.maxFps);
  format.minFps = ReadNumber(object, "minFps", format.minFps);
  return format;
}

std::vector<H264Format> ReadFormats(const json& object) {
  std::vector<H264Format> formats;
  for (const json& format : ReadArray(object, "h264Formats")) {
    formats.push_back(ReadFormat(format));
  }
  if (formats.size() > H264Encoder::kMostFormats) {
    throw std::invalid_argument("h264Formats has more formats than a list can tell");
  }
  return formats;
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

// An array of bytes; none where the key is missing.
std::vector<std::uint8_t> ReadBytes(const json& object, const char* key) {
  std::vector<std::uint8_t> bytes;
  for (const auto number : object.value(key, std::vector<std::int64_t>())) {
    if (number < 0 || number > 0xFF) {
      throw std::invalid_argument("\"" + std::string(key) + "\" has something else than bytes");
    }
    bytes.push_back(static_cast<std::uint8_t>(number));
  }
  return bytes;
}

std::vector<std::uint8_t> ReadTables(const json& object) {
  std::vector<Table> read;
  for (const json& table : ReadArray(object, "tables")) {
    RefuseUnknownKeys(table, {"id", "data"});
    const auto id = table.at("id").get<std::int64_t>();
    if (id < 0 || id > 0xFF) {
      throw std::invalid_argument("the id of a table is a byte");
    }
    read.push_back({static_cast<std::uint8_t>(id), ReadBytes(table, "data")});
  }
  return MakeTableImage(read);
}

// The vendor unit's memory: given as it is, or as the tables in it.
std::vector<std::uint8_t> ReadNvmem(const json& object, std::vector<std::uint8_t> missing) {
  if (object.contains("nvmem") && object.contains("tables")) {
    throw std::invalid_argument("\"nvmem\" and \"tables\" exclude each other");
  }
  if (object.contains("tables")) {
    return ReadTables(object);
  }
  if (!object.contains("nvmem")) {
    return missing;
  }
  std::vector<std::uint8_t> memory = ReadBytes(object, "nvmem");
  if (memory.size() > kNvmemSize) {
    throw std::invalid_argument("\"nvmem\" has more bytes than the memory");
  }
  return memory;
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

DataChannelSettings ReadDataChannel(const json& object) {
  DataChannelSettings data;
  data.dataLength = ReadNumber(object, "dataLength", std::uint16_t{32});
  if (data.dataLength != 32 && data.dataLength != 64) {
    throw std::invalid_argument("\"dataLength\" is 32 or 64");
  }
  data.highSpeed = object.value("highSpeed", data.highSpeed);
  data.burnPolls = ReadNumber(object, "burnPolls", std::uint16_t{0});
  data.burnError = object.value("burnError", data.burnError);
  data.busy = object.value("busy", data.busy);
  return data;
}

CameraOptions ReadCamera(const json& object) {
  RefuseUnknownKeys(object, {"vendorId",      "productId",      "name",
                             "vendorUnit",    "h264Unit",       "skypeUnit",
                             "skypeVersion",  "orvaUnit",       "h264Formats",
                             "chip",          "dataLength",     "highSpeed",
                             "burnPolls",     "burnError",      "busy",
                             "state",         "encodingUnit",   "streamProbeUnit",
                             "videoControls", "cameraControls", "microphone",
                             "mixer",         "tirellaUnit",    "tables",
                             "nvmem",         "faults",         "bootLoader",
                             "transfers"});
  CameraOptions camera;
  camera.vendorId = ReadNumber(object, "vendorId", camera.vendorId);
  camera.productId = ReadNumber(object, "productId", camera.productId);
  camera.name = object.value("name", camera.name);
  camera.vendorUnit = object.value("vendorUnit", camera.vendorUnit);
  camera.h264Unit = object.value("h264Unit", camera.h264Unit);
  camera.skypeUnit = object.value("skypeUnit", camera.skypeUnit);
  camera.skypeVersion = ReadNumber(object, "skypeVersion", camera.skypeVersion);
  camera.orvaUnit = object.value("orvaUnit", camera.orvaUnit);
  camera.h264Formats = ReadFormats(object);
  camera.tirellaUnit = object.value("tirellaUnit", camera.tirellaUnit);
  camera.nvmem = ReadNvmem(object, camera.nvmem);
  camera.vendor = {
      ReadNamed(object, "chip", camera.vendor.chip,
                {{"516x", VendorSettings::Chip::k516x}, {"517x", VendorSettings::Chip::k517x}}),
      ReadDataChannel(object)};
  camera.stateFile = object.value("state", camera.stateFile);
  camera.transferFile = object.value("transfers", camera.transferFile);
  camera.encodingUnit = object.value("encodingUnit", camera.encodingUnit);
  camera.streamProbeUnit = object.value("streamProbeUnit", camera.streamProbeUnit);
  camera.videoControls = object.value("videoControls", camera.videoControls);
  camera.cameraControls = object.value("cameraControls", camera.cameraControls);
  camera.microphone = object.value("microphone", camera.microphone);
  camera.mixer = object.value("mixer", camera.mixer);
  camera.faults = ReadFaults(object);
  return camera;
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
  bootLoader.responseFormat = ReadNumber(object, "responseFormat", bootLoader.responseFormat);
  bootLoader.absentOpens = ReadNumber(object, "absentOpens", bootLoader.absentOpens);
  if (object.contains("storages")) {
    bootLoader.storages.clear();
    for (const json& storage : ReadArray(object, "storages")) {
      bootLoader.storages.push_back(ReadStorage(storage));
    }
  }
  bootLoader.faults = ReadFaults(object);
  return bootLoader;
}

// The boot loader at the key "bootLoader" of a camera, or of the whole for the first camera.
void AddBootLoader(const json& object, std::size_t camera, Options& options) {
  if (!object.contains("bootLoader")) {
    return;
  }
  const BootLoaderOptions read = ReadBootLoader(object.at("bootLoader"));
  for (const auto& [position, other] : options.bootLoaders) {
    if (other.letter == read.letter) {
      throw std::invalid_argument("two boot loaders have the same \"letter\"");
    }
  }
  if (!options.bootLoaders.emplace(camera, read).second) {
    throw std::invalid_argument("the first camera has two boot loaders");
  }
}

void LoadState(Camera& camera, const std::string& path) {
  const KeptMemory memory = ReadStateFile(path);
  try {
    camera.LoadMemory(memory);
  } catch (const std::invalid_argument& error) {
    throw std::invalid_argument("the state file \"" + path +
                                "\" is another camera's: " + error.what());
  }
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
      for (const json& camera : ReadArray(root, "cameras")) {
        AddBootLoader(camera, options.cameras.size(), options);
        options.cameras.push_back(ReadCamera(camera));
      }
    }
    AddBootLoader(root, 0, options);
  } catch (const json::exception& error) {
    throw std::invalid_argument(error.what());
  }
  return options;
}

std::shared_ptr<Camera> MakeCamera(const CameraOptions& options,
                                   std::function<void()> enterRomBoot) {
  auto camera = std::make_shared<Camera>();
  camera->AddPlainNode();
  if (options.videoControls) {
    camera->AddProcessingNode();
    camera->AddControls(ControlFamily::kVideoProcessing,
                        DefaultControls(ControlFamily::kVideoProcessing));
  } else {
    camera->AddPlainNode();
  }
  if (options.cameraControls) {
    camera->AddControls(ControlFamily::kCameraTerminal,
                        DefaultControls(ControlFamily::kCameraTerminal));
  }
  const auto encoder = std::make_shared<H264Encoder>(options.h264Formats);
  if (options.vendorUnit) {
    auto& vendor = camera->AddUnit(std::make_unique<VendorUnit>(options.vendor, encoder));
    vendor.enterRomBoot = std::move(enterRomBoot);
    std::copy(options.nvmem.begin(), options.nvmem.end(), vendor.state.nvmem.begin());
    if (!options.stateFile.empty()) {
      // What a run that is cut short has changed must not be lost.
      vendor.SetFlashObserver([camera = camera.get(), file = options.stateFile] {
        try {
          WriteStateFile(file, camera->SaveMemory());
        } catch (const std::runtime_error&) {
          return;  // told when the run ends; nothing may be thrown into the host
        }
      });
    }
  }
  if (options.h264Unit) {
    camera->AddUnit(std::make_unique<H264Unit>(encoder));
  }
  if (options.skypeUnit) {
    camera->AddUnit(std::make_unique<SkypeUnit>(options.skypeVersion, encoder));
  }
  if (options.orvaUnit) {
    camera->AddUnit(std::make_unique<OrvaUnit>());
  }
  if (options.encodingUnit) {
    camera->AddUnit(std::make_unique<EncodingUnit>());
  }
  if (options.streamProbeUnit) {
    camera->AddUnit(std::make_unique<StreamProbeUnit>());
  }
  if (options.tirellaUnit) {
    camera->AddUnit(std::make_unique<TirellaUnit>());
  }
  if (!options.stateFile.empty()) {
    LoadState(*camera, options.stateFile);
  }
  if (!options.transferFile.empty()) {
    LogTransfers(*camera, options.transferFile);
  }
  for (const Fault& fault : options.faults) {
    camera->AddFault(fault);
  }
  return camera;
}

std::shared_ptr<Camera> RestartCamera(const CameraOptions& options, Camera* last,
                                      std::function<void()> enterRomBoot) {
  if (last != nullptr) {
    SaveState(options, *last);
  }
  auto camera = MakeCamera(options, std::move(enterRomBoot));
  SaveState(options, *camera);
  return camera;
}

void ForgetReplug(CameraOptions& options) {
  std::erase_if(options.faults,
                [](const Fault& fault) { return fault.kind == Fault::Kind::kReplug; });
}

void SaveState(const CameraOptions& options, Camera& camera) {
  if (!options.stateFile.empty()) {
    camera.Settle();
    WriteStateFile(options.stateFile, camera.SaveMemory());
  }
}

}  // namespace zem::simulator
