#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "effects/base/row_loops.h"

namespace AVBased {

/// Writes bytes that are not read again soon past the caches, where the processor can, so that the lines written need
/// not be fetched first. The end of the object's life makes all that it wrote visible in the usual order.
class StreamingStores {
 public:
    StreamingStores() = default;
    StreamingStores(const StreamingStores&) = delete;
    StreamingStores& operator=(const StreamingStores&) = delete;
#if defined(__SSE2__)
    ~StreamingStores() { _mm_sfence(); }

    /// The ranges must not overlap.
    void Copy(unsigned char* to, const unsigned char* from, std::size_t size) const {
        const std::size_t head = BeforeLine(to, size), end = head + (size - head) / cacheLine * cacheLine;
        std::memcpy(to, from, head);
        for (std::size_t line = head; line < end; line += cacheLine)
            for (std::size_t at = line; at < line + cacheLine; at += sizeof(__m128i))
                Stream(to + at, _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + at)));
        std::memcpy(to + end, from + end, size - end);
    }
    void Fill(unsigned char* to, std::uint8_t value, std::size_t size) const {
        const std::size_t head = BeforeLine(to, size), end = head + (size - head) / cacheLine * cacheLine;
        std::memset(to, value, head);
        for (std::size_t at = head; at < end; at += sizeof(__m128i))
            Stream(to + at, _mm_set1_epi8(static_cast<char>(value)));
        std::memset(to + end, value, size - end);
    }

 private:
    static std::size_t BeforeLine(const void* address, std::size_t size) {
        return std::min<std::size_t>(-reinterpret_cast<std::uintptr_t>(address) % cacheLine, size);
    }
    static void Stream(unsigned char* to, __m128i value) { _mm_stream_si128(reinterpret_cast<__m128i*>(to), value); }
#else
    void Copy(unsigned char* to, const unsigned char* from, std::size_t size) const { std::memcpy(to, from, size); }
    void Fill(unsigned char* to, std::uint8_t value, std::size_t size) const { std::memset(to, value, size); }
#endif
};

}  // namespace AVBased
