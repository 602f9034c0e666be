/// Tells Clang's thread-safety analysis which mutex guards what. Other compilers see nothing.
///
/// Annotate a guarded member with `ZAN_GUARDED_BY(mutex_)`, what a guarded pointer points to with
/// `ZAN_PT_GUARDED_BY(mutex_)`, and a function that expects its caller to hold the mutex with
/// `ZAN_REQUIRES(mutex_)`. Clang then reports, with `-Wthread-safety`, each access that happens
/// without the lock.
#ifndef ZANENGINE_INFRA_THREADANNOTATIONS_H
#define ZANENGINE_INFRA_THREADANNOTATIONS_H

#if defined(__clang__)
#define ZAN_THREAD_ANNOTATION(annotation) __attribute__((annotation))
#else
#define ZAN_THREAD_ANNOTATION(annotation)
#endif

/// A class whose objects can be held, such as a mutex; the name appears in the compiler's reports.
#define ZAN_CAPABILITY(name) ZAN_THREAD_ANNOTATION(capability(name))

/// A class whose objects hold a mutex for as long as they live.
#define ZAN_SCOPED_CAPABILITY ZAN_THREAD_ANNOTATION(scoped_lockable)

/// A member that is used only while the mutex is held; and what such a pointer points to.
#define ZAN_GUARDED_BY(mutex) ZAN_THREAD_ANNOTATION(guarded_by(mutex))
#define ZAN_PT_GUARDED_BY(mutex) ZAN_THREAD_ANNOTATION(pt_guarded_by(mutex))

/// A function that takes the mutex, gives it back, or needs it held throughout. Without an argument
/// the object itself is meant.
#define ZAN_ACQUIRE(...) ZAN_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ZAN_RELEASE(...) ZAN_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define ZAN_REQUIRES(...) ZAN_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))

/// A function that the analysis cannot follow, such as the body of `lock()` itself.
#define ZAN_NO_THREAD_SAFETY_ANALYSIS ZAN_THREAD_ANNOTATION(no_thread_safety_analysis)

#endif
