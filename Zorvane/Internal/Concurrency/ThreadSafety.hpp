// Lock annotations that clang's thread-safety analysis checks, and a mutex that carries them.
#pragma once

#include <mutex>

#if defined(__clang__)
#define ZV_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define ZV_THREAD_ATTRIBUTE(x)
#endif

/// The member is read and written only while `mutex` is held.
#define ZV_GUARDED_BY(mutex) ZV_THREAD_ATTRIBUTE(guarded_by(mutex))
/// What the pointer points to is used only while `mutex` is held.
#define ZV_PT_GUARDED_BY(mutex) ZV_THREAD_ATTRIBUTE(pt_guarded_by(mutex))
/// The function is called with the mutex held.
#define ZV_REQUIRES(...) ZV_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
/// The function is called without the mutex, because it takes it.
#define ZV_EXCLUDES(...) ZV_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define ZV_CAPABILITY(name) ZV_THREAD_ATTRIBUTE(capability(name))
#define ZV_SCOPED_CAPABILITY ZV_THREAD_ATTRIBUTE(scoped_lockable)
#define ZV_ACQUIRE(...) ZV_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define ZV_RELEASE(...) ZV_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
/// For the rare function whose locking the analysis can't follow; say why.
#define ZV_NO_THREAD_SAFETY_ANALYSIS ZV_THREAD_ATTRIBUTE(no_thread_safety_analysis)

namespace zorvane {

/// `std::mutex` under the eyes of the analysis.
class ZV_CAPABILITY("mutex") Mutex {
  public:
    void lock() ZV_ACQUIRE() { mutex_.lock(); }
    void unlock() ZV_RELEASE() { mutex_.unlock(); }

  private:
    std::mutex mutex_;
};

/// Holds a `Mutex` for a scope; may let go of it earlier. A `std::condition_variable_any` can wait with it.
class ZV_SCOPED_CAPABILITY MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) ZV_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~MutexLock() ZV_RELEASE() {
        if (held_) {
            mutex_.unlock();
        }
    }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    void lock() ZV_ACQUIRE() {
        mutex_.lock();
        held_ = true;
    }
    void unlock() ZV_RELEASE() {
        held_ = false;
        mutex_.unlock();
    }

  private:
    Mutex& mutex_;
    bool held_ = true;
};

}  // namespace zorvane
