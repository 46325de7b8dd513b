#include "platform/linux/video_control.h"

#include <algorithm>
#include <optional>

#include "platform/bytes.h"

namespace zem::platform {
namespace {

using Bytes = std::span<const std::uint8_t>;

// Descriptor types.
constexpr std::uint8_t kConfiguration = 0x02;
constexpr std::uint8_t kInterface = 0x04;
constexpr std::uint8_t kClassInterface = 0x24;

constexpr std::size_t kConfigurationLength = 9;
constexpr std::size_t kInterfaceLength = 9;

constexpr std::uint8_t kVideoClass = 0x0E;
constexpr std::uint8_t kVideoControlSubclass = 0x01;

// Which entity a class-specific descriptor of this subtype is, and the bytes that it has at least.
struct EntityForm {
  std::uint8_t subtype;
  EntityKind kind;
  std::size_t length;
};

constexpr EntityForm kEntityForms[] = {
    {0x02, EntityKind::kInputTerminal, 8},  {0x03, EntityKind::kOutputTerminal, 9},
    {0x04, EntityKind::kSelectorUnit, 5},   {0x05, EntityKind::kProcessingUnit, 8},
    {0x06, EntityKind::kExtensionUnit, 20}, {0x07, EntityKind::kEncodingUnit, 10},
};

// The descriptors of a block one after another, until one is cut off.
class DescriptorWalk {
 public:
  explicit DescriptorWalk(Bytes block) : rest_(block) {}

  std::optional<Bytes> Next() {
    if (rest_.size() < 2 || rest_[0] < 2 || rest_[0] > rest_.size()) {
      return std::nullopt;
    }
    const Bytes descriptor = rest_.first(rest_[0]);
    rest_ = rest_.subspan(descriptor.size());
    return descriptor;
  }

  // What Next has not taken yet.
  Bytes rest() const { return rest_; }

 private:
  Bytes rest_;
};

bool Is(Bytes descriptor, std::uint8_t type, std::size_t length) {
  return descriptor[1] == type && descriptor.size() >= length;
}

// The descriptors behind that of a configuration, cut to what is there.
Bytes FindConfiguration(Bytes descriptors, std::uint8_t number) {
  DescriptorWalk walk(descriptors);
  while (const auto descriptor = walk.Next()) {
    if (Is(*descriptor, kConfiguration, kConfigurationLength) && (*descriptor)[5] == number) {
      const std::size_t total = LoadLe16(&(*descriptor)[2]);
      const std::size_t length = total > descriptor->size() ? total - descriptor->size() : 0;
      return walk.rest().first(std::min(length, walk.rest().size()));
    }
  }
  return {};
}

bool IsVideoControl(Bytes descriptor, std::uint8_t interfaceNumber) {
  return Is(descriptor, kInterface, kInterfaceLength) && descriptor[2] == interfaceNumber &&
         descriptor[3] == 0 && descriptor[5] == kVideoClass &&
         descriptor[6] == kVideoControlSubclass;
}

GUID ReadGuid(const std::uint8_t* bytes) {
  GUID id = {LoadLe32(bytes), LoadLe16(bytes + 4), LoadLe16(bytes + 6), {}};
  std::copy_n(bytes + 8, sizeof(id.Data4), id.Data4);
  return id;
}

std::optional<VideoEntity> ReadEntity(Bytes descriptor) {
  for (const EntityForm& form : kEntityForms) {
    if (descriptor.size() >= form.length && descriptor[2] == form.subtype) {
      const bool isTerminal =
          form.kind == EntityKind::kInputTerminal || form.kind == EntityKind::kOutputTerminal;
      const bool isExtension = form.kind == EntityKind::kExtensionUnit;
      return VideoEntity{form.kind, descriptor[3],
                         isTerminal ? LoadLe16(&descriptor[4]) : std::uint16_t{0},
                         isExtension ? ReadGuid(&descriptor[4]) : GUID{}};
    }
  }
  return std::nullopt;
}

}  // namespace

void ReadVideoTopology(Bytes descriptors, std::uint8_t configuration, std::uint8_t interfaceNumber,
                       VideoTopology& topology) {
  topology.count = 0;
  DescriptorWalk walk(FindConfiguration(descriptors, configuration));
  bool inside = false;
  while (const auto descriptor = walk.Next()) {
    if ((*descriptor)[1] == kInterface) {
      inside = IsVideoControl(*descriptor, interfaceNumber);
    } else if (inside && Is(*descriptor, kClassInterface, 3)) {
      const auto entity = ReadEntity(*descriptor);
      if (entity && topology.count < topology.entities.size()) {
        topology.entities[topology.count++] = *entity;
      }
    }
  }
}

}  // namespace zem::platform
