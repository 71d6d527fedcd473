#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#endif

namespace AVBased::Testing {

enum class Content { Random, NearBlack, NearWhite };

inline unsigned char RandomByte(std::mt19937& random, Content content = Content::Random) {
    switch (content) {
        case Content::NearBlack:
            return static_cast<unsigned char>(random() % 4);
        case Content::NearWhite:
            return static_cast<unsigned char>(252 + random() % 4);
        default:
            return static_cast<unsigned char>(random());
    }
}

/// Bytes with a guard zone of known bytes on both sides. A store outside changes the guard; under the address sanitizer
/// a load outside is caught as well.
class GuardedMemory {
 public:
    explicit GuardedMemory(std::size_t size) : m_size(size), m_bytes(new std::uint64_t[Total() / 8]) {
        std::memset(Begin(), guardByte, Total());
        Guard(true);
    }
    GuardedMemory(const GuardedMemory& other) : GuardedMemory(other.m_size) { *this = other; }
    GuardedMemory& operator=(const GuardedMemory& other) {
        if (m_size) std::memcpy(data(), other.data(), m_size);
        return *this;
    }
    ~GuardedMemory() { Guard(false); }

    unsigned char* data() const { return Begin() + guardSize; }
    std::size_t size() const { return m_size; }
    bool GuardIntact() const {
        Guard(false);
        bool intact = true;
        for (std::size_t i = 0; i < guardSize; ++i)
            intact &= Begin()[i] == guardByte && data()[m_size + i] == guardByte;
        Guard(true);
        return intact;
    }
    bool operator==(const GuardedMemory& other) const {
        return m_size == other.m_size && (m_size == 0 || std::memcmp(data(), other.data(), m_size) == 0) &&
               GuardIntact() && other.GuardIntact();
    }

 private:
    static constexpr std::size_t guardSize = 256;
    static constexpr unsigned char guardByte = 0xA5;

    std::size_t Total() const { return (m_size + 2 * guardSize + 7) / 8 * 8; }
    unsigned char* Begin() const { return reinterpret_cast<unsigned char*>(m_bytes.get()); }
    void Guard([[maybe_unused]] bool on) const {
#if defined(__SANITIZE_ADDRESS__)
        if (!on) return __asan_unpoison_memory_region(Begin(), Total());
        __asan_poison_memory_region(Begin(), guardSize);
        __asan_poison_memory_region(data() + m_size, Total() - guardSize - m_size);
#endif
    }

    std::size_t m_size;
    std::unique_ptr<std::uint64_t[]> m_bytes;
};

}  // namespace AVBased::Testing
