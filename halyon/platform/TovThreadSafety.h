// What a lock guards and which functions need it, in words that a compiler can check.
//
// clang++ compares them with the code (-Wthread-safety, an error here); other compilers read nothing. Every lock of the
// system and every field behind one carries them. Macros, because the attributes differ between compilers.
#pragma once

#if defined(__clang__)
#define HYN_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define HYN_THREAD_SAFETY(attribute)
#endif

// Of a class: its objects are locks, or hold one for a scope.
#define HYN_LOCK HYN_THREAD_SAFETY(capability("lock"))
#define HYN_SCOPED_LOCK HYN_THREAD_SAFETY(scoped_lockable)

// Of a field: touched only by a thread that holds `lock`.
#define HYN_GUARDED_BY(lock) HYN_THREAD_SAFETY(guarded_by(lock))

// Of a function: the caller holds these locks; it takes or gives them back (none named: the object's own).
#define HYN_REQUIRES(...) HYN_THREAD_SAFETY(requires_capability(__VA_ARGS__))
#define HYN_ACQUIRE(...) HYN_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define HYN_RELEASE(...) HYN_THREAD_SAFETY(release_capability(__VA_ARGS__))

// Of a function: its body is not looked at. It implements a lock, or the reason stands beside it.
#define HYN_UNCHECKED HYN_THREAD_SAFETY(no_thread_safety_analysis)
