// Every allocation of an effect's life fails once: nothing crashes, nothing leaks, and the failure is reported.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>

#include "dvd_effects/generator_table.h"
#include "tests/support/fake_manager.h"
#include "tests/support/test_frames.h"

namespace {

thread_local long allocationsLeft = -1;  // below 0: no limit
thread_local long liveAllocations = 0;
thread_local bool hasRefused = false;

void* AllocateAlways(std::size_t size, std::size_t alignment) {
    void* memory = nullptr;
    if (posix_memalign(&memory, std::max(alignment, sizeof(void*)), std::max<std::size_t>(size, 1)) != 0)
        throw std::bad_alloc();
    ++liveAllocations;
    return memory;
}

void* Allocate(std::size_t size, std::size_t alignment) {
    if (allocationsLeft == 0) {
        hasRefused = true;
        throw std::bad_alloc();
    }
    if (allocationsLeft > 0) --allocationsLeft;
    return AllocateAlways(size, alignment);
}

void Release(void* memory) {
    if (memory) --liveAllocations;
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) { return Allocate(size, 0); }
void* operator new(std::size_t size, std::align_val_t alignment) { return Allocate(size, std::size_t(alignment)); }
// Such callers silently go on without the memory: never refused here.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return AllocateAlways(size, 0); }
void operator delete(void* memory) noexcept { Release(memory); }
void operator delete(void* memory, std::size_t) noexcept { Release(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { Release(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { Release(memory); }

namespace AVBased::Testing {
namespace {

// Creates, sets and runs an effect, on frames of the module's own making. True when every step succeeded.
bool Live(const EffectEntry& entry, IRawVideoFrame& packed, IRawVideoFrame& planar) {
    const EffectOwner effect(CreateEffect(nullptr, entry.name));
    if (!effect) return false;
    bool done = effect->SetProperty("duration", "a text that is too long for any small buffer");
    ImagePostion record;
    done &= effect->ProcFrame(&record, 1, &packed) != nullptr;
    effect->ProcFrameInPlace(&record, 1, &planar);
    return done && LastError().code == 0;
}

// The same for a generator, with whichever of the properties it knows; a step that fails is only filed.
bool LiveGenerator(FakeManager& manager, const EffectEntry& entry, IRawVideoFrame& packed, IRawVideoFrame& planar) {
    const EffectOwner effect(CreateEffect(&manager, entry.name, GeneratorTable()));
    if (!effect) return false;
    constexpr const char* settings[][2] = {{"sourcePath", "picture"},
                                           {"backgroundMask", "picture"},
                                           {"textNumber", "1"},
                                           {"textInfos", "Text;Sans;;9;255;0;0;9;4;1;1;false"},
                                           {"additionSourceNumber", "2"},
                                           {"isAdditionSourceImages", "true;false"},
                                           {"additionSourcePaths", "picture;picture"},
                                           {"additionSourceSizes", "7;7;5;5"},
                                           {"maskPaths", "picture;picture"},
                                           {"startPositions", "1;1;4;4"},
                                           {"startTrans", "255;200"},
                                           {"endTrans", "255;200"}};
    for (const auto& [name, value] : settings) effect->SetProperty(name, value);
    ImagePostion record;
    for (IRawVideoFrame* frame : {&packed, &planar})
        for (int i = 0; i < 2; ++i) effect->ProcFrameInPlace(&record, 1, frame);
    return true;
}

struct Outcome {
    bool done, ranOut;
    int code;
    long leaked;
};

// Lets `live` have so many allocations and no more.
template <class Life>
Outcome LiveWithin(long limit, Life live) {
    ForgetError();
    const long before = liveAllocations;
    LastError();  // the thread's exception object must exist before memory runs out
    allocationsLeft = limit;
    hasRefused = false;
    Outcome outcome{};
    outcome.done = live();
    outcome.ranOut = hasRefused;
    allocationsLeft = -1;
    outcome.code = LastError().code;
    ForgetError();
    outcome.leaked = liveAllocations - before;
    return outcome;
}

TEST(Exhaustion, OfMemoryIsReportedAndLeaksNothing) {
    for (const EffectEntry& entry : EffectTable()) {
        TestFrame packed(30, 16, 12), planar(0, 16, 12);
        Outcome outcome{false, true, 0, 0};
        for (long limit = 0; outcome.ranOut; ++limit) {
            SCOPED_TRACE(testing::Message() << entry.name << " with " << limit << " allocations");
            ASSERT_LT(limit, 1000);
            outcome = LiveWithin(limit, [&] { return Live(entry, packed, planar); });
            EXPECT_EQ(outcome.leaked, 0);
            EXPECT_EQ(outcome.done, outcome.code == 0);
            EXPECT_TRUE(outcome.done || outcome.code == 10021007 || outcome.code == 10021015) << outcome.code;
        }
        EXPECT_TRUE(outcome.done) << entry.name;
    }
}

TEST(Exhaustion, OfAGeneratorsMemoryIsReportedAndLeaksNothing) {
    FakeManager manager;
    manager.files["picture"] = FakeManager::Plain(6, 4, 0xFF204060);
    for (const EffectEntry& entry : GeneratorTable()) {
        TestFrame packed(30, 16, 12), planar(0, 16, 12);
        const long step = &entry == GeneratorTable().data() ? 1 : 13;  // what they share is tried once
        // What is made once in a thread's or process's life is made here.
        LiveWithin(-1, [&] { return LiveGenerator(manager, entry, packed, planar); });
        Outcome outcome{false, true, 0, 0};
        for (long limit = 0; outcome.ranOut; limit += step) {
            SCOPED_TRACE(testing::Message() << entry.name << " with " << limit << " allocations");
            ASSERT_LT(limit, 20000);
            outcome = LiveWithin(limit, [&] { return LiveGenerator(manager, entry, packed, planar); });
            ASSERT_EQ(outcome.leaked, 0);
            ASSERT_TRUE(!outcome.ranOut || outcome.code != 0);
        }
    }
}

}  // namespace
}  // namespace AVBased::Testing
