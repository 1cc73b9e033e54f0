// SPDX-License-Identifier: MIT
// Annotations for clang's -Wthread-safety: locks, and what they guard. Empty for other compilers.
#pragma once

#if defined(__clang__)
#define THREAD_ANNOTATION(attribute) __attribute__((attribute))
#else
#define THREAD_ANNOTATION(attribute)
#endif

// Of classes: a lock, and an object that owns one for the length of a scope.
#define LOCK_CLASS(kind) THREAD_ANNOTATION(capability(kind))
#define SCOPED_LOCK_CLASS THREAD_ANNOTATION(scoped_lockable)

// Of members: the lock under which they, or what they point to, may be used.
#define GUARDED_BY(lock) THREAD_ANNOTATION(guarded_by(lock))
#define POINTEE_GUARDED_BY(lock) THREAD_ANNOTATION(pt_guarded_by(lock))

// Of functions: the callers own these locks (alone or shared), or do not own them.
#define REQUIRES(...) THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define REQUIRES_SHARED(...) THREAD_ANNOTATION(requires_shared_capability(__VA_ARGS__))
#define EXCLUDES(...) THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))

// Of functions: they acquire or release locks; none named is the object itself.
#define ACQUIRE(...) THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ACQUIRE_SHARED(...) THREAD_ANNOTATION(acquire_shared_capability(__VA_ARGS__))
#define RELEASE(...) THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define RELEASE_SHARED(...) THREAD_ANNOTATION(release_shared_capability(__VA_ARGS__))
#define RELEASE_GENERIC(...) THREAD_ANNOTATION(release_generic_capability(__VA_ARGS__))

// Of functions that cannot be followed; each says why.
#define NO_THREAD_SAFETY_ANALYSIS THREAD_ANNOTATION(no_thread_safety_analysis)
