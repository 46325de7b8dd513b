// The volumes that the library opens: which of its calls go to one, and what each command was. The
// file beside it that is named after the system brings the calls here.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "tools/zemctl/camera/scsi_record.h"

namespace zemctl {

// What stands in for the system's volumes, such as a replayed trace.
class VolumeSource {
 public:
  VolumeSource() = default;
  virtual ~VolumeSource() = default;
  VolumeSource(const VolumeSource&) = delete;
  VolumeSource& operator=(const VolumeSource&) = delete;

  // Opens the volume.
  virtual VolumeOpening OpenVolume(const std::string& drive) = 0;
  // Carries a command out, drive, CDB, direction, length and data to be sent being given.
  virtual void Execute(ScsiCommand& command) = 0;
};

// A request to a volume in the form in which the library puts it to the system.
class VolumeRequest {
 public:
  VolumeRequest() = default;
  virtual ~VolumeRequest() = default;
  VolumeRequest(const VolumeRequest&) = delete;
  VolumeRequest& operator=(const VolumeRequest&) = delete;

  // CDB, direction, length and data to be sent.
  virtual ScsiCommand Describe() const = 0;
  // Adds the status and the data that the device has answered with.
  virtual void Collect(ScsiCommand& command) const = 0;
  // Answers it in the device's place with status and data.
  virtual void Answer(const ScsiCommand& command) = 0;
};

class VolumeWatch {
 public:
  explicit VolumeWatch(ScsiRecord& record) : record_(record) {}

  // "F:" for \\.\f: and the like; nothing for any other file.
  static std::optional<std::string> DriveOf(std::wstring_view path);

  // The library has opened the volume, which then is known by this handle, or closed it.
  void Opened(const void* handle, const std::string& drive);
  void Closed(const void* handle) { drives_.erase(handle); }
  bool Knows(const void* handle) const { return drives_.contains(handle); }

  // A request on a known handle. `send` hands it to the system and returns its error, or 0; it is
  // not called once the gate is shut. The error of the request, or 0; a refusal of the device is an
  // error, too.
  std::uint32_t Control(const void* handle, VolumeRequest& request,
                        const std::function<std::uint32_t()>& send);

  // The same for a source.
  std::uint32_t Control(const void* handle, VolumeRequest& request, VolumeSource& source);

  // Waits for the library, as long as it makes sense; `pause` lets so many milliseconds pass.
  void Sleep(std::uint32_t milliseconds, const std::function<void(std::uint32_t)>& pause) const;

  ScsiRecord& record() const { return record_; }

 private:
  ScsiRecord& record_;
  std::map<const void*, std::string> drives_;
};

}  // namespace zemctl
