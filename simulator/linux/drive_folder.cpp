#include "simulator/linux/drive_folder.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace zem::simulator {
namespace {

constexpr unsigned kDrives = 'Z' - 'C' + 1;

}  // namespace

DIR* DriveFolder::Open() {
  void* const listing = listings_.emplace_back(std::make_unique<Listing>()).get();
  return static_cast<DIR*>(listing);
}

std::vector<std::unique_ptr<DriveFolder::Listing>>::const_iterator DriveFolder::Find(
    const DIR* folder) const {
  return std::find_if(listings_.begin(), listings_.end(), [folder](const auto& each) {
    return static_cast<const void*>(each.get()) == folder;
  });
}

bool DriveFolder::Owns(const DIR* folder) const { return Find(folder) != listings_.end(); }

dirent* DriveFolder::Read(DIR* folder) {
  Listing& listing = **Find(folder);
  if (listing.next == kDrives) {
    return nullptr;
  }
  const std::string name = "sg" + std::to_string(listing.next++);
  listing.entry.d_name[name.copy(&listing.entry.d_name[0], sizeof(listing.entry.d_name) - 1)] =
      '\0';
  return &listing.entry;
}

void DriveFolder::Close(DIR* folder) { listings_.erase(Find(folder)); }

std::optional<unsigned> DrivePlaceOf(std::string_view path) {
  if (!path.starts_with(kGenericFile)) {
    return std::nullopt;
  }
  path.remove_prefix(kGenericFile.size());
  unsigned number = 0;
  const auto [end, error] = std::from_chars(path.data(), path.data() + path.size(), number);
  const bool isWhole = error == std::errc() && end == path.data() + path.size();
  return isWhole && number < kDrives ? std::optional(number) : std::nullopt;
}

}  // namespace zem::simulator
