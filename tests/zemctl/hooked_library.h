// A library that calls the system as ours does, so that a test can see its calls led elsewhere.
#pragma once

#include <cstddef>

extern "C" {

// How many entries of the folder begin with "sg", or -1 when it cannot be read.
int HookedList(const char* folder);
// An open file, or an errno value, negative.
int HookedOpen(const char* path);
void HookedClose(int descriptor);
// An errno value, negative, or what ioctl gives.
int HookedControl(int descriptor, unsigned long code, void* argument);
void HookedSleep(unsigned milliseconds);
// By a function whose address is taken.
int HookedProcess();
}
