#include "tests/support/failing_memory.h"

#include <climits>
#include <cstddef>
#include <new>

static int successesLeft = INT_MAX;

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    if (successesLeft <= 0) return nullptr;
    if (successesLeft != INT_MAX) --successesLeft;
    try {
        return ::operator new[](size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

namespace AVBased::Testing {

FailingMemory::FailingMemory(int successes) { successesLeft = successes; }
FailingMemory::~FailingMemory() { successesLeft = INT_MAX; }

}  // namespace AVBased::Testing
