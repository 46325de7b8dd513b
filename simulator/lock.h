// A lock for what several threads of a host may do at once.
#pragma once

// The compiler for Windows that this is built with has no std::mutex.
#ifdef _WIN32
#include <windows.h>
#else
#include <mutex>
#endif

namespace zem::simulator {

#ifdef _WIN32

class Mutex {
 public:
  Mutex() { InitializeCriticalSection(&section_); }
  ~Mutex() { DeleteCriticalSection(&section_); }
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  void Enter() { EnterCriticalSection(&section_); }
  void Leave() { LeaveCriticalSection(&section_); }

 private:
  CRITICAL_SECTION section_ = {};
};

#else

class Mutex {
 public:
  void Enter() { mutex_.lock(); }
  void Leave() { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

#endif

// Holds one until its end.
class Lock {
 public:
  explicit Lock(Mutex& mutex) : mutex_(mutex) { mutex_.Enter(); }
  ~Lock() { mutex_.Leave(); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  Mutex& mutex_;
};

}  // namespace zem::simulator
