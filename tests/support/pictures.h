#pragma once

#include "tests/support/test_frames.h"

/// Frames as judges see them: plain numbers, without memory, pitches or packing. A judge is the slow, obvious form of
/// an effect, which shares no arithmetic with it.
namespace AVBased::Testing {

/// Numbers by column and row.
struct Plane {
    int width = 0, height = 0;
    std::vector<int> samples;

    Plane() = default;
    /// make(x, y) for every place.
    template <class Make>
    Plane(int columns, int rows, Make make) : width(columns), height(rows) {
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < columns; ++x) samples.push_back(make(x, y));
    }

    bool Contains(int x, int y) const { return x >= 0 && x < width && y >= 0 && y < height; }
    int& operator()(int x, int y) { return samples[std::size_t(y) * std::size_t(width) + std::size_t(x)]; }
    int operator()(int x, int y) const { return const_cast<Plane&>(*this)(x, y); }
    /// The nearest sample; 0 where there is none.
    int Near(int x, int y) const {
        return samples.empty() ? 0 : (*this)(std::clamp(x, 0, width - 1), std::clamp(y, 0, height - 1));
    }
    /// make(x, y) for every place of a plane of this size.
    template <class Make>
    Plane Like(Make make) const {
        return {width, height, make};
    }
};

/// The planes of a frame; of a packed one blue, green, red and alpha.
struct Picture {
    std::vector<Plane> planes;
    bool packed;
    int columnShift = 0, rowShift = 0;

    explicit Picture(const TestFrame& frame) : packed(const_cast<TestFrame&>(frame).IsPacked()) {
        const FormatInfo& info = *FindFormat(const_cast<TestFrame&>(frame).GetPixelFormat());
        if (!packed) columnShift = int(info.ColumnShift()), rowShift = int(info.RowShift());
        for (unsigned p = 0; p < (packed ? 4 : info.PlaneCount()); ++p) {
            const Grid grid = frame.Samples(packed ? 0 : p);
            planes.emplace_back(grid.empty() ? 0 : int(grid[0].size()), int(grid.size()), [&](int x, int y) {
                return int(grid[std::size_t(y)][std::size_t(x)] >> (packed ? 8 * p : 0) & 255);
            });
        }
    }
    void StoreIn(TestFrame& frame) const {
        for (unsigned p = 0; p < frame.GetBufferCount(); ++p) {
            Grid grid = frame.Samples(p);
            for (int y = 0; y < planes[p].height; ++y)
                for (int x = 0; x < planes[p].width; ++x) {
                    unsigned& sample = grid[std::size_t(y)][std::size_t(x)];
                    sample = 0;
                    for (unsigned c = packed ? 4 : 1; c-- > 0;)
                        sample = sample << 8 | unsigned(planes[p + c](x, y) & 255);
                }
            frame.SetSamples(p, grid);
        }
    }

    int Width() const { return planes[0].width; }
    int Height() const { return planes[0].height; }
    bool IsChroma(unsigned plane) const { return !packed && (plane == 1 || plane == 2); }
    int ColumnShift(unsigned plane) const { return IsChroma(plane) ? columnShift : 0; }
    int RowShift(unsigned plane) const { return IsChroma(plane) ? rowShift : 0; }
    /// The sample of a plane that covers a position; null at an odd edge where chroma has none, and outside.
    int* At(unsigned plane, int x, int y) {
        const int column = x >> ColumnShift(plane), row = y >> RowShift(plane);
        return planes[plane].Contains(column, row) ? &planes[plane](column, row) : nullptr;
    }
    /// The same, but the nearest one.
    int Near(unsigned plane, int x, int y) const {
        return planes[plane].Near(x >> ColumnShift(plane), y >> RowShift(plane));
    }
    /// Sets what covers a position, f(plane): whole packed pixels, but not the alpha of planar ones. Chroma that
    /// several positions share is set for each.
    template <class F>
    void Set(int x, int y, F f) {
        if (!planes[0].Contains(x, y)) return;
        for (unsigned p = 0; p < (packed ? 4 : 3); ++p)
            if (int* const sample = At(p, x, y)) *sample = f(p);
    }
    /// Shows the nearest position of an untouched picture.
    void Take(int x, int y, const Picture& from, int sourceX, int sourceY) {
        sourceX = std::clamp(sourceX, 0, from.Width() - 1);
        sourceY = std::clamp(sourceY, 0, from.Height() - 1);
        Set(x, y, [&](unsigned p) { return from.Near(p, sourceX, sourceY); });
    }
    void Whiten(int x, int y) {
        Set(x, y, [&](unsigned p) { return packed ? 255 : p == 0 ? 235 : 128; });
    }
};

}  // namespace AVBased::Testing
