// Recovers a camera that has fallen back to its ROM boot loader: loads the updater into it, burns a
// firmware image into its serial flash, reads it back, compares, and restarts it.
//
//   recover IMAGE UPDATER
//
// What is read back is in the file IMAGE.read then. Attach only this one camera: the library takes
// the first one in ROM boot that it finds.
#include <array>
#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#else
#include <ctime>
#endif

#include "ZemUVC.hpp"
#include "read_file.hpp"

namespace {

// What the program ends with.
enum Outcome {
  kRuns = 0,            // the camera runs what was burned
  kNothingSent = 2,     // the command line or a file is wrong
  kNotInRomBoot = 3,    // there is no camera to recover
  kBrokeOff = 4,        // it stays in ROM boot and can be recovered again
  kNotVerified = 5,     // what was read back is not what was burned
  kDidNotComeBack = 6,  // burned and verified, and it does not start
};

struct Failure {
  Outcome outcome;
  std::string what;
  std::string next;
};

// An image begins with 18 bytes, which name its payload's length, and a block of 4096 bytes without
// which nothing starts. The library writes that block last.
constexpr std::size_t kImageHeader = 18;
constexpr std::size_t kBlock = 4096;
constexpr std::size_t kLengthAt = 14;
constexpr std::size_t kLeastCode = 18;

const char kRunAgain[] = "Unplug the camera, plug it in again, and run this once more.";

using Bytes = std::vector<std::uint8_t>;

// The library takes wide paths.
std::wstring Widen(const std::string& path) {
  std::wstring wide(path.size(), L'\0');
  const std::size_t length = std::mbstowcs(wide.data(), path.c_str(), wide.size());
  if (length == static_cast<std::size_t>(-1)) {
    throw Failure{kNothingSent, path + " is no path here.", "Nothing was sent."};
  }
  wide.resize(length);
  return wide;
}

// What the storage must hold then, from address 0 on: the header block and the payload.
Bytes ContentOf(const std::string& path) {
  Bytes image = ReadFile(path);
  if (image.size() < kImageHeader + kBlock || (std::memcmp(image.data(), "VSN_V2FW", 8) != 0 &&
                                               std::memcmp(image.data(), "VSN_V2BC", 8) != 0)) {
    throw Failure{kNothingSent, path + " is no firmware image.", "Nothing was sent."};
  }
  std::uint32_t payload = 0;
  for (std::size_t byte = 4; byte > 0; --byte) {
    payload = payload << 8 | image[kLengthAt + byte - 1];
  }
  if (payload > image.size() - kImageHeader - kBlock) {
    throw Failure{kNothingSent, path + " is not whole.", "Nothing was sent."};
  }
  image.resize(kImageHeader + kBlock + payload);
  image.erase(image.begin(), image.begin() + kImageHeader);
  return image;
}

void Pause() {
#if defined(_WIN32)
  Sleep(500);
#else
  const timespec halfASecond = {0, 500000000};
  nanosleep(&halfASecond, nullptr);
#endif
}

// Looks twice a second until there is something, but not for ever.
template <class Look>
auto Await(int seconds, const Look& look) {
  auto found = look();
  for (int pause = 0; pause < 2 * seconds && !found; ++pause) {
    Pause();
    found = look();
  }
  return found;
}

bool IsRunning() {
  std::error_code none;
  return static_cast<bool>(zemuvc::Camera::Open(0, none));
}

// A camera that has just come may not be ready to answer yet.
std::optional<zemuvc::Block<6>> VersionOfRunning() {
  std::error_code error;
  const zemuvc::Camera camera = zemuvc::Camera::Open(0, error);
  const zemuvc::Block<6> version = camera.GetFirmwareVersion(error);
  return error ? std::nullopt : std::optional(version);
}

struct Found {
  zemuvc::RomBoot session;
  zemuvc::RomMode mode;
  explicit operator bool() const { return static_cast<bool>(session); }
};

Found LookFor(zemuvc::RomMode mode) {
  std::error_code none;
  return {zemuvc::RomBoot::Open(mode, false, none), mode};
}

Found Look() {
  Found updater = LookFor(zemuvc::RomMode::kUpdater);
  return updater ? std::move(updater) : LookFor(zemuvc::RomMode::kBootLoader);
}

// Which state the camera is in now.
std::string State() {
  const Found found = Await(2, Look);
  if (!found) {
    return IsRunning() ? "it runs its firmware" : "it is neither a volume nor a camera now";
  }
  return found.mode == zemuvc::RomMode::kUpdater ? "the updater's storage answers"
                                                 : "its boot loader answers";
}

void Tell(const char* step) {
  std::printf("%s\n", step);
  std::fflush(stdout);
}

// The first camera in ROM boot. With another one that runs, the one that comes back could not be
// told from it.
Found Find() {
  Tell("1 of 6: look for the camera");
  Found found = Await(10, Look);
  const bool runs = IsRunning();
  if (!found) {
    throw Failure{kNotInRomBoot,
                  runs ? "There is a camera, and it runs its firmware."
                       : "There is no camera in ROM boot, and none that runs.",
                  runs ? "Nothing was sent. A camera that runs is updated, not recovered."
                       : "Nothing was sent. Try another cable and port. Raw volumes need "
                         "administrator rights, on Linux permission for its /dev/sg."};
  }
  if (runs) {
    throw Failure{kNotInRomBoot, "There is a camera in ROM boot, and another one that runs.",
                  "Nothing was sent. Unplug the one that runs."};
  }
  return found;
}

// The boot loader says what it is: aa 55, and its signature from byte 4 on.
std::string SignatureOf(zemuvc::RomBoot& bootLoader) {
  std::array<std::uint8_t, 16> identity = {};
  bootLoader.ReadScsi({0xFA, 0x55, 0x66, 0x01}, identity);
  return {identity.begin() + 4, identity.begin() + 8};
}

// The updater offers the storage. The library reports success also where none showed up: a new
// search tells.
zemuvc::RomBoot LoadUpdater(zemuvc::RomBoot bootLoader, const std::string& updater) {
  Tell("2 of 6: load the updater and wait for its storage (a wrong updater: five minutes)");
  bootLoader.LoadUpdater(Widen(updater));
  bootLoader.Close();
  Found found = Await(2, [] { return LookFor(zemuvc::RomMode::kUpdater); });
  if (!found) {
    throw Failure{kBrokeOff,
                  "The updater was sent, but no storage showed up: " + State() +
                      ". Nothing was erased or written.",
                  "Check that " + updater + " is the updater of this camera. " + kRunAgain};
  }
  return std::move(found.session);
}

void Burn(zemuvc::RomBoot& storage, const std::string& image) {
  Tell("3 of 6: burn the image");
  try {
    // Other storages are selected with SelectSpiNand, SelectParallelNand and SelectEmmc.
    storage.SelectSerialFlash();
  } catch (const zemuvc::Error& error) {
    throw Failure{kBrokeOff, std::string(error.what()) + ". Nothing was erased or written.",
                  "Check that this camera starts from serial flash."};
  }
  storage.BurnFirmware(Widen(image), 0);
}

void Verify(const zemuvc::RomBoot& storage, const Bytes& content, const std::string& path) {
  Tell("4 of 6: read it back and compare");
  std::error_code error;
  storage.ReadIntoFile(Widen(path), static_cast<std::uint32_t>(content.size()), error);
  if (error) {
    throw Failure{kNotVerified, "The image is burned, but could not be read back.",
                  "Leave the camera as it is and run this once more. If nothing answers then, "
                  "unplug it and plug it in again."};
  }
  const Bytes read = ReadFile(path);
  std::size_t different = content.size();
  for (std::size_t at = 0; at < content.size() && at < read.size(); ++at) {
    different -= read[at] == content[at] ? 1 : 0;
  }
  if (different > 0) {
    throw Failure{kNotVerified,
                  std::to_string(different) + " of " + std::to_string(content.size()) +
                      " bytes of the storage are not those of the image, see " + path + ".",
                  "Do not unplug or reset the camera, run this once more."};
  }
}

void Restart(zemuvc::RomBoot storage) {
  Tell("5 of 6: restart the camera");
  storage.ResetSystem();
  storage.Close();
  Tell("6 of 6: wait for it");
  const auto version = Await(10, VersionOfRunning);
  if (!version) {
    throw Failure{
        kDidNotComeBack,
        "The image is burned, byte by byte as read back, and the camera does not run it: " +
            State() + ".",
        "Check that it is the image of this camera. One that comes back with other USB "
        "ids is not found here."};
  }
  std::printf("The camera runs. Firmware version:");
  for (const std::uint8_t byte : *version) {
    std::printf(" %02x", byte);
  }
  std::printf("\n");
}

void Recover(const std::string& image, const std::string& updater) {
  const Bytes content = ContentOf(image);
  if (ReadFile(updater).size() < kLeastCode) {
    throw Failure{kNothingSent, updater + " is no updater.", "Nothing was sent."};
  }
  Found found = Find();
  try {
    if (found.mode == zemuvc::RomMode::kUpdater) {
      std::printf("found: an updater runs in it already\n");
    } else {
      std::printf("found: its boot loader, %s\n", SignatureOf(found.session).c_str());
      found.session = LoadUpdater(std::move(found.session), updater);
    }
    Burn(found.session, image);
    Verify(found.session, content, image + ".read");
    Restart(std::move(found.session));
  } catch (const zemuvc::Error& error) {
    found.session.Close();
    throw Failure{kBrokeOff,
                  std::string(error.what()) + ". The camera: " + State() +
                      ". Without the header block, which is written last, nothing starts from its "
                      "storage, and it falls back to its boot loader.",
                  kRunAgain};
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "");
  if (argc != 3) {
    std::printf("usage: recover IMAGE UPDATER\n");
    return kNothingSent;
  }
  try {
    Recover(argv[1], argv[2]);
    return kRuns;
  } catch (const Failure& failure) {
    std::printf("%s\n%s\n", failure.what.c_str(), failure.next.c_str());
    return failure.outcome;
  }
}
