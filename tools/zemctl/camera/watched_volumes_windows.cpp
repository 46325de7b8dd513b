// The library's imports of the calls by which it reaches volumes on Windows.
#include <windows.h>

#include <cstdint>
#include <memory>
#include <set>

#include "simulator/windows/volume_imports.h"
#include "tools/zemctl/camera/pass_through_request.h"
#include "tools/zemctl/camera/traced_volumes.h"
#include "tools/zemctl/camera/watched_volumes.h"

namespace zemctl {
namespace {

using zem::simulator::AsImport;
using zem::simulator::Before;
using zem::simulator::HeldModule;
using zem::simulator::ImportHook;

// The present watch, and what the imports led to before: the system, or simulated volumes.
struct Watching {
  VolumeWatch watch;
  VolumeSource* source;
  zem::simulator::VolumeFunctions before;
  decltype(&Sleep) sleep;
  // Handles to a source's volumes are addresses in here.
  std::set<std::unique_ptr<char>> handles;
};
Watching* watching = nullptr;

HANDLE Refuse(DWORD error) {
  SetLastError(error);
  return INVALID_HANDLE_VALUE;
}

HANDLE WINAPI OpenWatched(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                          DWORD creation, DWORD flags, HANDLE pattern) {
  const auto drive = path != nullptr ? VolumeWatch::DriveOf(path) : std::optional<std::string>();
  if (!drive) {
    return watching->before.open(path, access, share, security, creation, flags, pattern);
  }
  if (!watching->watch.record().MayOpen(*drive)) {
    return Refuse(ERROR_FILE_NOT_FOUND);
  }
  HANDLE handle = Refuse(ERROR_FILE_NOT_FOUND);
  VolumeOpening opening = {kNoSuchVolume};
  if (watching->source != nullptr) {
    opening = watching->source->OpenVolume(*drive);
    if (opening.isOpen()) {
      handle = watching->handles.insert(std::make_unique<char>()).first->get();
    }
  } else {
    handle = watching->before.open(path, access, share, security, creation, flags, pattern);
    // Why a volume cannot be opened is not told apart: there are always some, such as the system's.
    opening.error = handle != INVALID_HANDLE_VALUE ? 0 : kNoSuchVolume;
  }
  watching->watch.record().NoteOpening(*drive, opening);
  if (handle != INVALID_HANDLE_VALUE) {
    watching->watch.Opened(handle, *drive);
  }
  return handle;
}

BOOL WINAPI ControlWatched(HANDLE handle, DWORD code, LPVOID input, DWORD inputSize, LPVOID output,
                           DWORD outputSize, LPDWORD returned, LPOVERLAPPED overlapped) {
  if (!watching->watch.Knows(handle) || input == nullptr) {
    return watching->before.control(handle, code, input, inputSize, output, outputSize, returned,
                                    overlapped);
  }
  PassThroughRequest request(input);
  const std::uint32_t error =
      watching->source != nullptr
          ? watching->watch.Control(handle, request, *watching->source)
          : watching->watch.Control(handle, request, [&] {
              return watching->before.control(handle, code, input, inputSize, output, outputSize,
                                              returned, overlapped) != FALSE
                         ? std::uint32_t{0}
                         : std::uint32_t{GetLastError()};
            });
  SetLastError(error);
  return error == 0 ? TRUE : FALSE;
}

BOOL WINAPI CloseWatched(HANDLE handle) {
  const bool isSource = watching->source != nullptr && watching->watch.Knows(handle);
  watching->watch.Closed(handle);
  return isSource ? TRUE : watching->before.close(handle);
}

void WINAPI SleepWatched(DWORD milliseconds) {
  watching->watch.Sleep(milliseconds, [](std::uint32_t some) { watching->sleep(some); });
}

}  // namespace

struct WatchedVolumes::Hooks {
  HeldModule library = zem::simulator::HoldLibrary();
  zem::simulator::VolumeImports volumes{{OpenWatched, ControlWatched, CloseWatched}};
  ImportHook sleep{library.get(), "Sleep", AsImport(SleepWatched)};
};

WatchedVolumes::WatchedVolumes(ScsiRecord& record, VolumeSource* source)
    : hooks_(std::make_unique<Hooks>()) {
  TraceVolumes(record);
  if (source == nullptr) {
    source = ReplayedVolumes();
  }
  watching = new Watching{VolumeWatch(record),
                          source,
                          hooks_->volumes.Before(),
                          Before<decltype(Sleep)>(hooks_->sleep),
                          {}};
}

WatchedVolumes::~WatchedVolumes() {
  hooks_.reset();
  delete watching;
  watching = nullptr;
}

}  // namespace zemctl
