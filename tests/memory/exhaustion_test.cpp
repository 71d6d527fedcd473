// Every allocation of an effect's life fails once: nothing crashes, nothing leaks, and the failure is told.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>

#include "tests/support/test_frames.h"

namespace {

thread_local long allocationsLeft = -1;  // below 0: no limit
thread_local long liveAllocations = 0;

void* Allocate(std::size_t size, std::size_t alignment) {
    if (allocationsLeft == 0) throw std::bad_alloc();
    if (allocationsLeft > 0) --allocationsLeft;
    void* memory = nullptr;
    if (posix_memalign(&memory, std::max(alignment, sizeof(void*)), std::max<std::size_t>(size, 1)) != 0)
        throw std::bad_alloc();
    ++liveAllocations;
    return memory;
}

void Release(void* memory) {
    if (memory) --liveAllocations;
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) { return Allocate(size, 0); }
void* operator new(std::size_t size, std::align_val_t alignment) { return Allocate(size, std::size_t(alignment)); }
void operator delete(void* memory) noexcept { Release(memory); }
void operator delete(void* memory, std::size_t) noexcept { Release(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { Release(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { Release(memory); }

namespace AVBased::Testing {
namespace {

// Creates, sets and runs an effect, on frames of the module's own making. True when every step answered success.
bool Live(const EffectEntry& entry, IRawVideoFrame& packed, IRawVideoFrame& planar) {
    const EffectOwner effect(CreateEffect(nullptr, entry.name));
    if (!effect) return false;
    bool done = effect->SetProperty("duration", "a text that is too long for any small buffer");
    ImagePostion record;
    done &= effect->ProcFrame(&record, 1, &packed) != nullptr;
    effect->ProcFrameInPlace(&record, 1, &planar);
    return done && LastError().code == 0;
}

struct Outcome {
    bool done, ranOut;
    int code;
    long leaked;
};

Outcome LiveWithin(long limit, const EffectEntry& entry, IRawVideoFrame& packed, IRawVideoFrame& planar) {
    ForgetError();
    const long before = liveAllocations;
    LastError();  // the thread's exception object must exist before memory runs out
    allocationsLeft = limit;
    Outcome outcome{};
    outcome.done = Live(entry, packed, planar);
    outcome.ranOut = allocationsLeft == 0;
    allocationsLeft = -1;
    outcome.code = LastError().code;
    ForgetError();
    outcome.leaked = liveAllocations - before;
    return outcome;
}

TEST(Exhaustion, OfMemoryIsToldAndLeaksNothing) {
    for (const EffectEntry& entry : EffectTable()) {
        TestFrame packed(30, 16, 12), planar(0, 16, 12);
        Outcome outcome{false, true, 0, 0};
        for (long limit = 0; outcome.ranOut; ++limit) {
            SCOPED_TRACE(testing::Message() << entry.name << " with " << limit << " allocations");
            ASSERT_LT(limit, 1000);
            outcome = LiveWithin(limit, entry, packed, planar);
            EXPECT_EQ(outcome.leaked, 0);
            EXPECT_EQ(outcome.done, outcome.code == 0);
            EXPECT_TRUE(outcome.done || outcome.code == 10021007 || outcome.code == 10021015) << outcome.code;
        }
        EXPECT_TRUE(outcome.done) << entry.name;
    }
}

}  // namespace
}  // namespace AVBased::Testing
