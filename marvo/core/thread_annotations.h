/// @file
/// What clang's thread-safety analysis is told about locks; nothing for other compilers.
///
/// Not guarded against being included twice: `marvo.h` leaves none of these macros behind, and a header that
/// comes after it gets them again.

#ifndef MARVO_GUARDED_BY

#if defined(__clang__)
#define MARVO_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define MARVO_THREAD_ATTRIBUTE(x)
#endif

/// A class whose objects are locks.
#define MARVO_CAPABILITY(kind) MARVO_THREAD_ATTRIBUTE(capability(kind))
/// A class whose objects hold a lock for a scope.
#define MARVO_SCOPED_CAPABILITY MARVO_THREAD_ATTRIBUTE(scoped_lockable)
/// A member that is touched only while `lock` is held.
#define MARVO_GUARDED_BY(lock) MARVO_THREAD_ATTRIBUTE(guarded_by(lock))
/// A pointer that may be looked at without `lock`, but what it points to is touched only while that is held.
#define MARVO_PT_GUARDED_BY(lock) MARVO_THREAD_ATTRIBUTE(pt_guarded_by(lock))
/// A function whose caller holds the locks.
#define MARVO_REQUIRES(...) MARVO_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
/// A function whose caller must not hold the locks.
#define MARVO_EXCLUDES(...) MARVO_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
/// A function that takes the locks.
#define MARVO_ACQUIRE(...) MARVO_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
/// A function that releases the locks.
#define MARVO_RELEASE(...) MARVO_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
/// A function that gives a reference to `lock`.
#define MARVO_RETURN_CAPABILITY(lock) MARVO_THREAD_ATTRIBUTE(lock_returned(lock))
/// A lock that is taken after these.
#define MARVO_ACQUIRED_AFTER(...) MARVO_THREAD_ATTRIBUTE(acquired_after(__VA_ARGS__))

#endif
