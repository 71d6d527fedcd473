#pragma once

#include <cstddef>
#include <new>

#include "effects/base/vector_rows_avx2.h"
#include "effects/neighbourhood/oil_brush.h"
#include "effects/neighbourhood/oil_picture.h"

/// How the lines of a picture stand in vectors while it is painted.
namespace AVBased {
namespace {

/// The picture stands cut into 32 upright strips, and vector i of a line holds column i of each strip. So neighbouring
/// columns are neighbouring vectors: a brush slides by whole vectors, and no sum ever crosses a lane.
constexpr std::size_t lanes = 32;

/// Outside the picture. Never a class, since the coarseness is at most 255 here.
constexpr unsigned char noClass = 255;

class Scratch {
 public:
    explicit Scratch(std::size_t size)
        : m_data(static_cast<unsigned char*>(::operator new(size, std::align_val_t(64)))) {}
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch() { ::operator delete(m_data, std::align_val_t(64)); }

    // The next `size` bytes; the caller has counted them before.
    unsigned char* Take(std::size_t size) {
        unsigned char* const part = m_data + m_taken;
        m_taken += RoundUp(size);
        return part;
    }
    static constexpr std::size_t RoundUp(std::size_t size) { return (size + 63) / 64 * 64; }

 private:
    unsigned char* m_data;
    std::size_t m_taken = 0;
};

struct Sizes {
    std::size_t width, height, radius, classes;
    std::size_t strip;    // columns of a strip, a multiple of every chroma cell
    std::size_t columns;  // the same with the brush's reach on both sides
    std::size_t vectors;  // the same as whole blocks of 16
    std::size_t line;     // bytes of a line of samples with its margins

    Sizes(const OilPicture& picture, std::size_t brushRadius, unsigned coarseness)
        : width(picture.width),
          height(picture.height),
          radius(brushRadius),
          classes(OilClass(255, coarseness) + 1u),
          strip((width + 4 * lanes - 1) / (4 * lanes) * 4),
          columns(strip + 2 * radius),
          vectors((columns + 15) / 16 * 16),
          line(lanes * strip + vectors) {}
    std::size_t ClassRows() const { return 2 * radius + 4; }
    std::size_t Pairs() const { return radius + 1; }
};

}  // namespace
}  // namespace AVBased

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

using Vector = __m256i;

inline void Transpose(Vector (&rows)[16]) {
    for (int round = 0; round < 4; ++round) {
        Vector next[16];
        for (int k = 0; k < 8; ++k) {
            next[2 * k] = _mm256_unpacklo_epi8(rows[k], rows[k + 8]);
            next[2 * k + 1] = _mm256_unpackhi_epi8(rows[k], rows[k + 8]);
        }
        for (int k = 0; k < 16; ++k) rows[k] = next[k];
    }
}

/// A line with its left margin, to vectors.
void ToStrips(const unsigned char* line, Vector* to, const Sizes& sizes) {
    for (std::size_t i = 0; i < sizes.vectors; i += 16) {
        Vector rows[16];
        for (std::size_t lane = 0; lane < 16; ++lane) {
            const unsigned char* const at = line + lane * sizes.strip + i;
            rows[lane] = _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(at + 16 * sizes.strip),
                                             reinterpret_cast<const __m128i*>(at));
        }
        Transpose(rows);
        for (std::size_t k = 0; k < 16; ++k) to[i + k] = rows[k];
    }
}

/// Vectors to a line. A block of 16 may write past its strip: into what a later store of the same block, or the first
/// block of all strips, which comes last, writes again.
void FromStrips(const Vector* from, unsigned char* line, const Sizes& sizes) {
    for (std::size_t i = (sizes.strip + 15) / 16 * 16; i > 0;) {
        i -= 16;
        Vector rows[16];
        for (std::size_t k = 0; k < 16; ++k) rows[k] = from[i + k];
        Transpose(rows);
        for (std::size_t lane = 0; lane < 16; ++lane)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(line + lane * sizes.strip + i),
                             _mm256_castsi256_si128(rows[lane]));
        for (std::size_t lane = 0; lane < 16; ++lane)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(line + (lane + 16) * sizes.strip + i),
                             _mm256_extracti128_si256(rows[lane], 1));
    }
}

}  // namespace
}  // namespace AVBased

NIFIKRAL_END_AVX2
