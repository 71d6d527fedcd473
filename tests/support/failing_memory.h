#pragma once

namespace AVBased::Testing {

/// While one of these lives, the allocations that report failure by a null pointer (new (std::nothrow) of an array)
/// fail, once the given number of them has succeeded.
class FailingMemory {
 public:
    explicit FailingMemory(int successes);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
};

}  // namespace AVBased::Testing
