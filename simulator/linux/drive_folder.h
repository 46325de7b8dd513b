// The folder of SCSI generic devices as a library sees it for which there is one for each drive
// letter, whose number is the letter's.
#pragma once

#include <dirent.h>

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace zem::simulator {

inline constexpr std::string_view kGenericFolder = "/sys/class/scsi_generic";
inline constexpr std::string_view kGenericFile = "/dev/sg";

// Stands in for opendir, readdir and closedir on that folder.
class DriveFolder {
 public:
  DIR* Open();
  // Whether Open has given this, and Close not taken it back.
  bool Owns(const DIR* folder) const;
  dirent* Read(DIR* folder);
  void Close(DIR* folder);

 private:
  struct Listing {
    unsigned next = 0;
    dirent entry = {};
  };
  std::vector<std::unique_ptr<Listing>>::const_iterator Find(const DIR* folder) const;

  std::vector<std::unique_ptr<Listing>> listings_;
};

// The place of a device among them, 0 for C:, by its path; nothing for any other path.
std::optional<unsigned> DrivePlaceOf(std::string_view path);

}  // namespace zem::simulator
