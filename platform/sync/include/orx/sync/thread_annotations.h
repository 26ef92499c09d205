#pragma once

// Lock annotations that clang's -Wthread-safety checks at compile time: a member marked
// GUARDED_BY(mu_) may only be touched with mu_ held, a function marked REQUIRES(mu_) only be
// called with it held, one marked EXCLUDES(mu_) only without it. Under other compilers they
// expand to nothing. They name capabilities of orx::sync::Mutex and orx::sync::SharedMutex
// (<orx/sync/mutex.h>); std::mutex carries no capability and cannot be named here.

#if defined(__clang__)
#define ORX_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define ORX_THREAD_ANNOTATION(x)
#endif

// On a class: its objects are locks ("mutex" names the kind in the compiler's messages).
#define CAPABILITY(x) ORX_THREAD_ANNOTATION(capability(x))
// On a class: its objects hold a lock from construction to destruction (RAII).
#define SCOPED_CAPABILITY ORX_THREAD_ANNOTATION(scoped_lockable)

// On a member: reading or writing it needs the lock.
#define GUARDED_BY(x) ORX_THREAD_ANNOTATION(guarded_by(x))
// On a pointer member: the data it points to needs the lock (the pointer itself does not).
#define PT_GUARDED_BY(x) ORX_THREAD_ANNOTATION(pt_guarded_by(x))
// On a lock member: it is always taken after (or before) the named ones. Checked only by
// -Wthread-safety-beta; it states the order for readers either way.
#define ACQUIRED_AFTER(...) ORX_THREAD_ANNOTATION(acquired_after(__VA_ARGS__))
#define ACQUIRED_BEFORE(...) ORX_THREAD_ANNOTATION(acquired_before(__VA_ARGS__))

// On a function: the caller holds the lock exclusively (REQUIRES) or at least shared.
#define REQUIRES(...) ORX_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define REQUIRES_SHARED(...) ORX_THREAD_ANNOTATION(requires_shared_capability(__VA_ARGS__))
// On a function: the caller must not hold the lock, because the function takes it.
#define EXCLUDES(...) ORX_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))

// On a function: it takes or gives back the lock (or `this`, when nothing is named).
#define ACQUIRE(...) ORX_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ACQUIRE_SHARED(...) ORX_THREAD_ANNOTATION(acquire_shared_capability(__VA_ARGS__))
#define RELEASE(...) ORX_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define RELEASE_SHARED(...) ORX_THREAD_ANNOTATION(release_shared_capability(__VA_ARGS__))
#define RELEASE_GENERIC(...) ORX_THREAD_ANNOTATION(release_generic_capability(__VA_ARGS__))
// On a function returning bool: the lock is held when it returns the given value.
#define TRY_ACQUIRE(...) ORX_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
// On a function: it checks that the lock is held; afterwards the compiler assumes so.
#define ASSERT_CAPABILITY(x) ORX_THREAD_ANNOTATION(assert_capability(x))
// On a function: it returns a reference to the named lock.
#define RETURN_CAPABILITY(x) ORX_THREAD_ANNOTATION(lock_returned(x))

// On a function: not checked. Only for code whose locking the compiler cannot follow; say why.
#define NO_THREAD_SAFETY_ANALYSIS ORX_THREAD_ANNOTATION(no_thread_safety_analysis)
