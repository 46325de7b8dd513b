// The library's imports of the calls by which it reaches volumes on Linux: it lists the SCSI
// generic devices, opens them and sends them SG_IO. Here it finds one for each drive letter, whose
// number is the letter's, so that a letter is the same volume for the library, a trace and a
// simulated camera; which device of the machine that is, is looked up when it is opened.
#include <dirent.h>
#include <fcntl.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/errors.h"
#include "platform/linux/generic_errors.h"
#include "platform/linux/sysfs.h"
#include "simulator/linux/drive_folder.h"
#include "simulator/linux/volume_imports.h"
#include "tools/zemctl/camera/generic_request.h"
#include "tools/zemctl/camera/library_wait_linux.h"
#include "tools/zemctl/camera/simulated_volumes.h"
#include "tools/zemctl/camera/traced_volumes.h"
#include "tools/zemctl/camera/watched_volumes.h"

namespace zemctl {
namespace {

using zem::simulator::HeldLibrary;
using zem::simulator::HoldLibrary;
using zem::simulator::ImportHook;
using zem::simulator::kGenericFile;
using zem::simulator::kGenericFolder;

// The present watch, and what the imports led to before.
struct Watching {
  VolumeWatch watch;
  VolumeSource* source;
  zem::simulator::VolumeFunctions before;
  decltype(&::clock_nanosleep) sleep;
  zem::simulator::DriveFolder drives;
};
Watching* watching = nullptr;

// What a descriptor is known by to the watch.
const void* HandleOf(int descriptor) {
  return reinterpret_cast<const void*>(static_cast<std::intptr_t>(descriptor));
}

DIR* OpenFolderWatched(const char* path) {
  return path == kGenericFolder ? watching->drives.Open() : watching->before.openFolder(path);
}

dirent* ReadFolderWatched(DIR* folder) {
  return watching->drives.Owns(folder) ? watching->drives.Read(folder)
                                       : watching->before.readFolder(folder);
}

int CloseFolderWatched(DIR* folder) {
  if (!watching->drives.Owns(folder)) {
    return watching->before.closeFolder(folder);
  }
  watching->drives.Close(folder);
  return 0;
}

// Opens the device of the machine in this place.
VolumeOpening OpenGeneric(unsigned place, int flags, int& descriptor) {
  if (::access(kGenericFolder.data(), F_OK) != 0) {
    return {zem::platform::kNotSupported, std::string(kGenericFolder)};
  }
  std::array<unsigned, 256> numbers = {};
  if (place >= zem::platform::ListNumbered({kGenericFolder}, "sg", numbers)) {
    return {kNoSuchVolume};
  }
  VolumeOpening opening = {0, std::string(kGenericFile) + std::to_string(numbers[place])};
  descriptor = watching->before.open(opening.path.c_str(), flags);
  if (descriptor < 0) {
    opening.error = errno == ENOENT ? kNoSuchVolume : zem::platform::ErrorOfErrno(errno);
  }
  return opening;
}

int OpenWatched(const char* path, int flags, ...) {  // NOLINT(cert-dcl50-cpp): as open is
  std::va_list further;
  va_start(further, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(further, mode_t) : 0;
  va_end(further);
  const std::optional<unsigned> place = zem::simulator::DrivePlaceOf(path);
  if (!place) {
    return watching->before.open(path, flags, mode);
  }
  const std::string drive = {static_cast<char>('C' + *place), ':'};
  int descriptor = -1;
  if (watching->watch.record().MayOpen(drive)) {
    VolumeOpening opening;
    if (watching->source == nullptr) {
      opening = OpenGeneric(*place, flags, descriptor);
    } else if (opening = watching->source->OpenVolume(drive); opening.isOpen()) {
      // A descriptor of its own, behind which there is nothing.
      descriptor = watching->before.open("/dev/null", O_RDWR | O_CLOEXEC);
    }
    watching->watch.record().NoteOpening(drive, opening);
  }
  if (descriptor < 0) {
    // The library passes over a volume that it cannot open, for whatever reason.
    errno = ENOENT;
    return -1;
  }
  watching->watch.Opened(HandleOf(descriptor), drive);
  return descriptor;
}

int ControlWatched(int descriptor, unsigned long code, ...) {  // NOLINT(cert-dcl50-cpp): as ioctl
  std::va_list further;
  va_start(further, code);
  void* const argument = va_arg(further, void*);
  va_end(further);
  if (code != SG_IO || !watching->watch.Knows(HandleOf(descriptor))) {
    return watching->before.control(descriptor, code, argument);
  }
  auto& header = *static_cast<sg_io_hdr*>(argument);
  GenericRequest request(header);
  int result = 0;
  const std::uint32_t error =
      watching->source != nullptr
          ? watching->watch.Control(HandleOf(descriptor), request, *watching->source)
          : watching->watch.Control(HandleOf(descriptor), request, [&] {
              result = watching->before.control(descriptor, code, argument);
              return result < 0 ? zem::platform::ErrorOfErrno(errno)
                                : zem::platform::ErrorOfGeneric(header);
            });
  if (result == 0 && error != 0) {
    request.Fail(error);
  }
  return result;
}

int CloseWatched(int descriptor) {
  watching->watch.Closed(HandleOf(descriptor));
  return watching->before.close(descriptor);
}

int SleepWatched(clockid_t /*clock*/, int /*flags*/, const timespec* time, timespec* /*left*/) {
  watching->watch.Sleep(MillisecondsOf(*time),
                        [](std::uint32_t some) { LetPass(some, watching->sleep); });
  return 0;
}

}  // namespace

struct WatchedVolumes::Hooks {
  HeldLibrary library = HoldLibrary();
  zem::simulator::VolumeImports volumes{{OpenFolderWatched, ReadFolderWatched, CloseFolderWatched,
                                         OpenWatched, ControlWatched, CloseWatched}};
  ImportHook sleep{library, "clock_nanosleep", SleepWatched};
};

WatchedVolumes::WatchedVolumes(ScsiRecord& record, VolumeSource* source)
    : hooks_(std::make_unique<Hooks>()) {
  TraceVolumes(record);
  if (source == nullptr) {
    source = ReplayedVolumes();
  }
  if (source == nullptr) {
    source = SimulatedVolumes::OfProcess();
  }
  watching = new Watching{VolumeWatch(record),
                          source,
                          hooks_->volumes.Before(),
                          hooks_->sleep.Before<decltype(::clock_nanosleep)>(),
                          {}};
}

WatchedVolumes::~WatchedVolumes() {
  hooks_.reset();
  delete watching;
  watching = nullptr;
}

}  // namespace zemctl
