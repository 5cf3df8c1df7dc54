#pragma once

#include <condition_variable>
#include <mutex>
#include <utility>

/// Clang checks with -Wthread-safety that members are touched under the mutex that guards them. The standard library's
/// mutex carries no annotations, so members that are to be checked use the `Mutex` below. Other compilers ignore the
/// annotations.
#if defined(__clang__)
#define TARVO_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define TARVO_THREAD_ANNOTATION(x)
#endif

/// The member is read and written under the mutex only.
#define TARVO_GUARDED_BY(mutex) TARVO_THREAD_ANNOTATION(guarded_by(mutex))
/// What the pointer points to is read and written under the mutex only.
#define TARVO_PT_GUARDED_BY(mutex) TARVO_THREAD_ANNOTATION(pt_guarded_by(mutex))
/// Callers of the function hold the mutex.
#define TARVO_REQUIRES(...) TARVO_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
/// Callers of the function do not hold the mutex, because the function takes it.
#define TARVO_EXCLUDES(...) TARVO_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
/// The function takes the mutex, or releases it.
#define TARVO_ACQUIRE(...) TARVO_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define TARVO_RELEASE(...) TARVO_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
/// The function takes the mutex if it returns this value.
#define TARVO_TRY_ACQUIRE(...) TARVO_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
/// The function follows a rule that the check cannot express; a comment beside it says which.
#define TARVO_NO_THREAD_SAFETY_ANALYSIS TARVO_THREAD_ANNOTATION(no_thread_safety_analysis)

namespace tarvo::platform {

/// A `std::mutex` that the check knows.
class TARVO_THREAD_ANNOTATION(capability("mutex")) Mutex {
public:
    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() TARVO_ACQUIRE() { mutex_.lock(); }
    void unlock() TARVO_RELEASE() { mutex_.unlock(); }
    /// Returns whether the mutex was free and is held now.
    bool tryLock() TARVO_TRY_ACQUIRE(true) { return mutex_.try_lock(); }

    /// Tells the check that the mutex is held, inside a lambda that runs under it. Checks nothing at run time.
    void assumeHeld() const TARVO_THREAD_ANNOTATION(assert_capability(this)) {}

private:
    friend class MutexLock;
    std::mutex mutex_;
};

/// Holds a mutex for the length of a scope, with pauses in between where `unlock` and `lock` are called.
class TARVO_THREAD_ANNOTATION(scoped_lockable) MutexLock {
public:
    explicit MutexLock(Mutex& mutex) TARVO_ACQUIRE(mutex) : lock_(mutex.mutex_) {}
    ~MutexLock() TARVO_RELEASE() {}
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    void lock() TARVO_ACQUIRE() { lock_.lock(); }
    void unlock() TARVO_RELEASE() { lock_.unlock(); }

private:
    friend class Condition;
    std::unique_lock<std::mutex> lock_;
};

/// A `std::condition_variable` for `MutexLock`. A predicate runs under the lock and begins with `mutex.assumeHeld()`
/// where it touches guarded members.
class Condition {
public:
    void notifyOne() { variable_.notify_one(); }
    void notifyAll() { variable_.notify_all(); }

    void wait(MutexLock& lock) { variable_.wait(lock.lock_); }
    template <class Predicate>
    void wait(MutexLock& lock, Predicate&& predicate) {
        variable_.wait(lock.lock_, std::forward<Predicate>(predicate));
    }
    template <class Duration>
    void waitFor(MutexLock& lock, Duration atMost) {
        variable_.wait_for(lock.lock_, atMost);
    }
    /// These answer whether the predicate holds at the end.
    template <class Duration, class Predicate>
    bool waitFor(MutexLock& lock, Duration atMost, Predicate&& predicate) {
        return variable_.wait_for(lock.lock_, atMost, std::forward<Predicate>(predicate));
    }
    template <class Time, class Predicate>
    bool waitUntil(MutexLock& lock, Time deadline, Predicate&& predicate) {
        return variable_.wait_until(lock.lock_, deadline, std::forward<Predicate>(predicate));
    }

private:
    std::condition_variable variable_;
};

}  // namespace tarvo::platform
