#pragma once

#ifdef __SANITIZE_THREAD__
extern "C" void __tsan_acquire(void* address);
extern "C" void __tsan_release(void* address);
#endif

namespace Nifikral {

/// A thread's turn at work that TBB passes from thread to thread: each sees what those before it did in theirs. TBB
/// takes care of that; this says so to the thread sanitizer, which does not see into it. Without the sanitizer it does
/// nothing.
class Turn {
 public:
    /// `work` is an address that stands for it, and is not read.
    explicit Turn([[maybe_unused]] void* work)
#ifdef __SANITIZE_THREAD__
        : m_work(work) {
        __tsan_acquire(work);
    }
    ~Turn() { __tsan_release(m_work); }
#else
    {
    }
    ~Turn() = default;
#endif
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

#ifdef __SANITIZE_THREAD__
 private:
    void* m_work;
#endif
};

}  // namespace Nifikral
