// The camera's list of H.264 stream formats: read from the camera once, then kept in the handle.
#pragma once

#include <cstddef>
#include <span>

#include "device/device_handle.h"
#include "include/ZemUVCExtApi.h"
#include "platform/com.h"

namespace zem {

// A list of `size` zero bytes, at least those of its header; null when there is no memory.
FrameListPtr AllocateFrameList(std::size_t size);

// The records that follow a list's header.
std::span<const H264FrameInfo> RecordsOf(const H264FrameList& list);

// Puts a record behind those that the list has; its memory must hold one more.
void AppendRecord(H264FrameList& list, const H264FrameInfo& record);

// Makes sure that the handle has its list: the camera's or, where anything about that goes wrong,
// the default one. 0, or kFail when memory is exhausted.
HRESULT EnsureFrameList(DeviceHandle& device);

// A copy of the handle's list for the caller; its length in bytes, or kFail when memory is
// exhausted. `list` must not be null.
HRESULT GetH264FrameList(DeviceHandle& device, void** list);
void ReleaseH264FrameList(void* list);

}  // namespace zem
