// Scoped locks over list storage. A lock remembers the mutex that it took, never the list: the list may change its
// representation meanwhile, but its owner keeps it alive (rooted) until the lock is released.
#pragma once

#include <cerrno>
#include <exception>
#include <system_error>

#include "runtime/records.h"

// The list's mutex when the list needs locking, else null. A list that needs its lock but has none ends the process.
inline pthread_mutex_t* listMutex(const ListData& list) {
  if (list.needsLock == 0) return nullptr;
  if (list.mutex == nullptr) std::terminate();
  return list.mutex;
}

// Locks the mutex; throws std::system_error with the error number when that fails.
inline void lockMutex(pthread_mutex_t* mutex) {
  if (const int error = pthread_mutex_lock(mutex); error != 0) throw std::system_error(error, std::generic_category());
}

// Holds a mutex, when there is one, to the end of the scope. Throws std::system_error when it cannot be taken.
class MutexLock {
 public:
  explicit MutexLock(pthread_mutex_t* mutex) : mutex_(mutex) {
    if (mutex_ != nullptr) lockMutex(mutex_);
  }
  ~MutexLock() {
    if (mutex_ != nullptr) pthread_mutex_unlock(mutex_);
  }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  pthread_mutex_t* mutex_;
};

// Holds one list's lock to the end of the scope. Throws std::system_error when the mutex cannot be taken.
class ListDataLock {
 public:
  explicit ListDataLock(ListData& list) : lock_(listMutex(list)) {}

 private:
  MutexLock lock_;
};

// Holds the locks of two operand lists, a shared one once; `second` may be null. The order is first, then second; but
// when second is busy, first is released while waiting for it, so that two threads which take the same two lists in
// opposite order never wait for each other. Nothing may be read before the constructor returns. Throws
// std::system_error.
class TwoListDataLock {
 public:
  TwoListDataLock(ListData& first, ListData* second)
      : first_(listMutex(first)), second_(second == nullptr ? nullptr : listMutex(*second)) {
    if (second_ == first_) second_ = nullptr;
    if (first_ != nullptr) lockMutex(first_);
    while (second_ != nullptr) {
      const int error = pthread_mutex_trylock(second_);
      if (error == 0) return;
      if (first_ != nullptr) pthread_mutex_unlock(first_);
      if (error != EBUSY) throw std::system_error(error, std::generic_category());
      lockMutex(second_);
      if (first_ == nullptr) return;
      pthread_mutex_unlock(second_);
      lockMutex(first_);
    }
  }
  ~TwoListDataLock() {
    if (second_ != nullptr) pthread_mutex_unlock(second_);
    if (first_ != nullptr) pthread_mutex_unlock(first_);
  }
  TwoListDataLock(const TwoListDataLock&) = delete;
  TwoListDataLock& operator=(const TwoListDataLock&) = delete;

 private:
  pthread_mutex_t* first_;
  pthread_mutex_t* second_;
};
