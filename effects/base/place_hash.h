#pragma once

#include <cstdint>

/// Random numbers that are a function of a seed, a frame's position and a place in the picture, so that a frame comes
/// out the same in every run, on every thread and machine, while frames beside it differ.
namespace AVBased {

/// A step of mixing: lower bits take the higher ones in, which then reach all above them.
constexpr std::uint32_t MixStep(std::uint32_t bits, unsigned shift, std::uint32_t odd) {
    return (bits ^ bits >> shift) * odd;
}
/// Every bit of the argument flips about half of the result's bits.
constexpr std::uint32_t MixBits(std::uint32_t bits) {
    bits = MixStep(MixStep(bits, 16, 0x7FEB352D), 15, 0x846CA68B);
    return bits ^ bits >> 16;
}

/// What the random numbers of one row start from.
class RowHash {
 public:
    explicit constexpr RowHash(std::uint32_t key) : m_key(key) {}
    /// Uniform over all 32 bits.
    constexpr std::uint32_t operator()(std::uint32_t x) const { return MixBits(m_key + x * step); }
    /// As if the row began one place further on; in a loop over a row faster than to pass the place.
    constexpr RowHash Next() const { return RowHash(m_key + step); }

 private:
    static constexpr std::uint32_t step = 0x9E3779B9;
    std::uint32_t m_key;
};

/// What the random numbers of one frame start from.
class FrameHash {
 public:
    constexpr FrameHash(std::uint32_t seed, std::int32_t position)
        : m_key(MixBits(MixBits(seed) + std::uint32_t(position))) {}
    /// Rows of the same number but of another plane, or channel, are independent.
    constexpr RowHash Row(unsigned plane, unsigned y) const { return RowHash(MixBits(m_key ^ MixBits(4 * y + plane))); }

 private:
    std::uint32_t m_key;
};

}  // namespace AVBased
