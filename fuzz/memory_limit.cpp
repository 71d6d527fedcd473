#include "fuzz/memory_limit.h"

#include <cstdlib>
#include <new>

namespace {

void* Allocate(std::size_t size) noexcept {
    return size > Nifikral::Fuzzing::largestObject ? nullptr : std::malloc(size ? size : 1);
}

void* Required(void* memory) {
    if (!memory) throw std::bad_alloc();
    return memory;
}

}  // namespace

void* operator new(std::size_t size) { return Required(Allocate(size)); }
void* operator new[](std::size_t size) { return Required(Allocate(size)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
