#include "simulator/linux/volume_hooks.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <map>

#include "simulator/linux/drive_folder.h"
#include "simulator/linux/generic_answer.h"
#include "simulator/linux/volume_imports.h"
#include "simulator/volume.h"

namespace zem::simulator {
namespace {

// What a descriptor of the library's leads to.
struct OpenedVolume {
  std::shared_ptr<BootLoader> bootLoader;
  std::uint32_t connection = 0;
};

DriveFolder driveFolder;
std::vector<std::shared_ptr<BootLoader>> presentBootLoaders;
std::map<int, OpenedVolume> openedVolumes;

DIR* OpenFolderOrDrives(const char* path) {
  return path == kGenericFolder ? driveFolder.Open() : ::opendir(path);
}

dirent* ReadFolderOrDrives(DIR* folder) {
  return driveFolder.Owns(folder) ? driveFolder.Read(folder) : ::readdir(folder);
}

int CloseFolderOrDrives(DIR* folder) {
  if (!driveFolder.Owns(folder)) {
    return ::closedir(folder);
  }
  driveFolder.Close(folder);
  return 0;
}

int OpenFileOrVolume(const char* path, int flags, ...) {  // NOLINT(cert-dcl50-cpp): as open is
  std::va_list further;
  va_start(further, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(further, mode_t) : 0;
  va_end(further);
  const std::optional<unsigned> place = DrivePlaceOf(path);
  if (!place) {
    return ::open(path, flags, mode);
  }
  const auto found = std::find_if(
      presentBootLoaders.begin(), presentBootLoaders.end(),
      [&](const auto& each) { return each->letter() == static_cast<wchar_t>(L'C' + *place); });
  const auto connection =
      found != presentBootLoaders.end() ? (*found)->Connect() : std::optional<std::uint32_t>();
  if (!connection) {
    errno = ENOENT;
    return -1;
  }
  // A descriptor of its own, behind which there is nothing.
  const int descriptor = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  openedVolumes[descriptor] = {*found, *connection};
  return descriptor;
}

void Execute(const OpenedVolume& volume, sg_io_hdr& request) {
  if (!volume.bootLoader->IsConnected(volume.connection)) {
    FailGeneric(request, kNotConnected);
    return;
  }
  const bool isIn = request.dxfer_direction == SG_DXFER_FROM_DEV;
  const std::span sent(static_cast<std::uint8_t*>(request.dxferp), request.dxfer_len);
  // What fails leaves the caller's buffer alone.
  std::vector<std::uint8_t> answer(isIn ? request.dxfer_len : 0);
  const ScsiResult result = volume.bootLoader->Execute({request.cmdp, request.cmd_len}, isIn,
                                                       isIn ? std::span(answer) : sent);
  if (const std::uint32_t error = SystemErrorOf(result); error != 0) {
    FailGeneric(request, error);
  } else {
    answer.resize(isIn ? result.moved : 0);
    AnswerGeneric(request, result.status, answer);
  }
}

int ControlFileOrVolume(int descriptor, unsigned long code,
                        ...) {  // NOLINT(cert-dcl50-cpp): as ioctl
  std::va_list further;
  va_start(further, code);
  void* const argument = va_arg(further, void*);
  va_end(further);
  const auto volume = openedVolumes.find(descriptor);
  if (code != SG_IO || volume == openedVolumes.end()) {
    return ::ioctl(descriptor, code, argument);
  }
  Execute(volume->second, *static_cast<sg_io_hdr*>(argument));
  return 0;
}

int CloseFileOrVolume(int descriptor) {
  openedVolumes.erase(descriptor);
  return ::close(descriptor);
}

}  // namespace

struct VolumeHooks::Hooks {
  VolumeImports imports{{OpenFolderOrDrives, ReadFolderOrDrives, CloseFolderOrDrives,
                         OpenFileOrVolume, ControlFileOrVolume, CloseFileOrVolume}};
};

VolumeHooks::VolumeHooks(const std::vector<std::shared_ptr<BootLoader>>& bootLoaders)
    : hooks_(std::make_unique<Hooks>()) {
  presentBootLoaders = bootLoaders;
}

// The volumes stay as long as any import leads to them.
VolumeHooks::~VolumeHooks() {
  hooks_.reset();
  presentBootLoaders.clear();
  openedVolumes.clear();
}

}  // namespace zem::simulator
