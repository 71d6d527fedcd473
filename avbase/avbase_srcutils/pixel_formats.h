#pragma once

#include <cstdint>

/// Every pixel format in one table. The planes of a new frame and the dispatch of an effect both read it.
namespace AVBased {

/// One plane's part of a picture of W x H pixels: a row holds W / pixels groups of `bytes` bytes each (divisions
/// truncate), and there are H / rows rows.
struct PlaneShape {
    std::uint8_t pixels = 0, bytes = 0, rows = 1;
};

struct FormatInfo {
    unsigned code;
    bool packed;              ///< one plane only
    std::uint8_t components;  ///< colour components; of a format that is not packed, also its planes
    bool forEffects;          ///< the effects' packed format, or a luma/chroma format that they know
    PlaneShape planes[4];

    constexpr unsigned PlaneCount() const { return packed ? 1 : components; }
    /// How far luma coordinates are shifted right to reach chroma samples: both 0 where there is no chroma plane.
    constexpr unsigned ColumnShift() const { return Log2(planes[1].pixels); }
    constexpr unsigned RowShift() const { return Log2(planes[1].rows); }

 private:
    static constexpr unsigned Log2(unsigned value) { return value >= 4 ? 2 : value >= 2 ? 1 : 0; }
};

/// The effects' packed format: 32 bits a pixel, in memory blue, green, red, alpha.
inline constexpr unsigned formatRgba32 = 30;

namespace Shapes {
inline constexpr PlaneShape full{1, 1, 1}, half{2, 1, 1}, halfBoth{2, 1, 2}, quarter{4, 1, 1}, quarterBoth{4, 1, 4},
    halfRows{1, 1, 2}, twoBytes{1, 2, 1}, threeBytes{1, 3, 1}, fourBytes{1, 4, 1}, bits{8, 1, 1}, pairs{2, 4, 1},
    fours{4, 6, 1}, chromaPairs{2, 2, 2};
}

inline constexpr FormatInfo formats[] = {
    {0, false, 3, true, {Shapes::full, Shapes::halfBoth, Shapes::halfBoth}},
    {12, false, 3, true, {Shapes::full, Shapes::halfBoth, Shapes::halfBoth}},
    {4, false, 3, true, {Shapes::full, Shapes::half, Shapes::half}},
    {13, false, 3, true, {Shapes::full, Shapes::half, Shapes::half}},
    {5, false, 3, false, {Shapes::full, Shapes::full, Shapes::full}},
    {14, false, 3, false, {Shapes::full, Shapes::full, Shapes::full}},
    {6, false, 3, true, {Shapes::full, Shapes::quarterBoth, Shapes::quarterBoth}},
    {7, false, 3, true, {Shapes::full, Shapes::quarter, Shapes::quarter}},
    {33, false, 3, false, {Shapes::full, Shapes::halfRows, Shapes::halfRows}},
    {35, false, 4, true, {Shapes::full, Shapes::halfBoth, Shapes::halfBoth, Shapes::full}},
    {60, false, 4, true, {Shapes::full, Shapes::full, Shapes::full, Shapes::full}},
    {1, true, 3, false, {Shapes::pairs}},
    {17, true, 3, false, {Shapes::pairs}},
    {2, true, 3, false, {Shapes::threeBytes}},
    {3, true, 3, false, {Shapes::threeBytes}},
    {8, true, 1, false, {Shapes::full}},
    {9, true, 1, false, {Shapes::bits}},
    {10, true, 1, false, {Shapes::bits}},
    // The second plane interleaves the two chroma samples of each 2 x 2 pixels.
    {11, false, 2, false, {Shapes::full, Shapes::chromaPairs}},
    {18, true, 3, false, {Shapes::fours}},
    {27, true, 4, false, {Shapes::fourBytes}},
    {28, true, 4, false, {Shapes::fourBytes}},
    {29, true, 4, false, {Shapes::fourBytes}},
    {formatRgba32, true, 4, true, {Shapes::fourBytes}},
    {43, true, 3, false, {Shapes::twoBytes}},
    {44, true, 3, false, {Shapes::twoBytes}},
    {45, true, 3, false, {Shapes::twoBytes}},
    {46, true, 3, false, {Shapes::twoBytes}},
    {47, true, 3, false, {Shapes::twoBytes}},
    {48, true, 3, false, {Shapes::twoBytes}},
    {49, true, 3, false, {Shapes::twoBytes}},
    {50, true, 3, false, {Shapes::twoBytes}},
};

/// The table's row for a code, null for an unknown one.
constexpr const FormatInfo* FindFormat(unsigned code) {
    for (const FormatInfo& info : formats)
        if (info.code == code) return &info;
    return nullptr;
}

}  // namespace AVBased
