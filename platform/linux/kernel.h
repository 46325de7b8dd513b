// Everything that the Linux platform asks of the kernel's device files and of sysfs: the one place
// that tests stand in for at link time. Failures are errno values, negative.
#pragma once

namespace zem::platform::kernel {

// Where sysfs is mounted, and where the device files are; without a trailing separator.
const char* SysFolder();
const char* DeviceFolder();

// A file descriptor of a device file, closed in programs that this one starts.
int Open(const char* path, int flags);

void Close(int descriptor);

// One ioctl; begun again when a signal comes before it has begun.
int Control(int descriptor, unsigned long request, void* argument);

// The same with the thread's signals held back until it has ended: for requests that the kernel
// would abandon half way and then begin again.
int ControlWithSignalsHeld(int descriptor, unsigned long request, void* argument);

}  // namespace zem::platform::kernel
