#pragma once

#include <cstddef>
#include <memory>
#include <new>

namespace TarvoBased {

/// Raises 10021007 "No enough memory" with `line`; the source is this unit.
[[noreturn]] void RaiseNoMemory(int line);

/// Scratch memory of `count` uninitialised objects, released on every path. Raises 10021007 with `line` (a number that
/// the host can see, so it belongs to the caller's contract) when there is none.
template <class T>
class ResKeeper {
 public:
    ResKeeper(std::size_t count, int line) {
        if (count > std::size_t(-1) / sizeof(T)) RaiseNoMemory(line);
        m_memory.reset(new (std::nothrow) T[count]);
        if (!m_memory) RaiseNoMemory(line);
    }
    T* get() const { return m_memory.get(); }
    T& operator[](std::size_t index) const { return m_memory[index]; }

 private:
    std::unique_ptr<T[]> m_memory;
};

}  // namespace TarvoBased
