#ifndef TVTSAN_P_H
#define TVTSAN_P_H

// Qt's locks and thread joins live in a library built without
// ThreadSanitizer, so the sanitizer can't see that they order memory and
// reports every guarded access as a race. These calls state the ordering
// they give; in any other build they are nothing.

#if defined(__SANITIZE_THREAD__)
#define TV_TSAN_ANNOTATE 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TV_TSAN_ANNOTATE 1
#endif
#endif

#if defined(TV_TSAN_ANNOTATE)
extern "C" void __tsan_acquire(void* addr);
extern "C" void __tsan_release(void* addr);
#endif

// What the releasing thread did before tv_tsan_release(addr) happens before
// what the acquiring thread does after tv_tsan_acquire(addr).
inline void tv_tsan_acquire([[maybe_unused]] void* addr)
{
#if defined(TV_TSAN_ANNOTATE)
    __tsan_acquire(addr);
#endif
}

inline void tv_tsan_release([[maybe_unused]] void* addr)
{
#if defined(TV_TSAN_ANNOTATE)
    __tsan_release(addr);
#endif
}

#endif
