// The COM interfaces by which a camera is found and reached: from the Windows SDK headers on
// Windows, declared in platform/portable_com.h elsewhere. Discovery, topology walks and transport
// are written on these interfaces once; a real camera, the simulator and a test's fake are each an
// implementation of them.
#pragma once

#ifdef _WIN32

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
// Each of these headers leans on those before it.
// clang-format off
#include <windows.h>
#include <objbase.h>
#include <oaidl.h>
#include <strmif.h>
#include <ks.h>
#include <ksproxy.h>
// clang-format on
#if __has_include(<vidcap.h>)
#include <vidcap.h>
#else
#include "platform/ks_topology_info.h"
#endif

#else

#include "platform/portable_com.h"

#endif

#include "platform/interface_ids.h"
