#include <optional>

#include "tests/support/sweep.h"

namespace AVBased::Testing {
namespace {

using Map = std::vector<unsigned>;

struct Band {
    unsigned begin, end;
    double scale;

    bool Fits(unsigned size) const { return begin < end && end <= size && scale >= 1; }
    unsigned Grown() const { return unsigned(std::min(scale * (end - begin), 4294967295.0)); }
};

// Entries that rise evenly from `first`, by 256ths of `step`.
void Append(Map& map, std::uint64_t count, std::uint64_t first, std::uint64_t step) {
    for (std::uint64_t i = 0; i < count && i < 1000; ++i) map.push_back(unsigned(first + (i * step >> 8)));
}

// The band grows about its middle, both sides are compressed.
std::optional<Map> Columns(const Band& band, unsigned width) {
    if (!band.Fits(width)) return std::nullopt;
    const unsigned length = band.Grown(), step = unsigned(256 / band.scale);
    const unsigned grow = (length - (band.end - band.begin)) >> 1, left = band.begin - grow, right = band.end + grow;
    const auto appendRest = [&](Map& map, unsigned count) {
        Append(map, count, band.end, ((width - band.end) << 8) / count);
    };
    Map map;
    if (int(left) > 0) {
        Append(map, left, 0, (band.begin << 8) / left);
        Append(map, width > right ? length : width - left, band.begin, step);
        if (width > right) appendRest(map, width - right);
    } else {
        const unsigned shown = std::min(width, right);
        Append(map, shown, (std::uint64_t(grow - band.begin) * step >> 8) + band.begin, step);
        if (width > shown) appendRest(map, width - shown);
    }
    map.resize(std::min<std::size_t>(map.size(), width));
    return map;
}

// The band grows upwards only; rows from its end on keep their places.
std::optional<Map> Rows(const Band& band, unsigned height) {
    if (!band.Fits(height)) return std::nullopt;
    const unsigned length = band.Grown(), step = unsigned(256 / band.scale);
    Map map;
    if (length < band.end) {
        const unsigned top = band.end - length;
        Append(map, top, 0, (band.begin << 8) / top);
        Append(map, length, band.begin, step);
    } else {
        Append(map, band.end, (std::uint64_t(length - band.end) * step >> 8) + band.begin, step);
    }
    return map;
}

// Whole rows move, and their padding with them.
void MoveRows(TestFrame& frame, const Map& rows) {
    TestFrame copy = frame;
    const Picture size(frame);
    for (unsigned p = 0; p < (size.packed ? 1 : 3); ++p)
        for (unsigned y = 0; y < rows.size(); ++y) {
            unsigned pitch, count;
            unsigned char* const to = frame.GetBuffer(p, nullptr, &pitch, &count);
            const unsigned row = y >> size.RowShift(p), source = std::min(rows[y] >> size.RowShift(p), count - 1);
            if (row < count)
                std::copy_n(copy.GetBuffer(p, nullptr, nullptr, nullptr) + std::size_t(source) * pitch, pitch,
                            to + std::size_t(row) * pitch);
        }
}

TEST(Tensile, GivesEveryPixelWhatTheMapsSay) {
    SweepFrames(1000, [](const TestFrame& frame, std::mt19937& random) {
        Picture picture(frame);
        const Picture from = picture;
        const auto width = unsigned(from.Width()), height = unsigned(from.Height());
        const auto bandOf = [&](unsigned size) {
            const unsigned begin = random() % size, end = begin + 1 + random() % (size - begin);
            if (random() % 16 == 0) return Band{begin, random() % 2 ? begin : size + 1, 2};
            return Band{begin, end, random() % 8 ? RealBetween(1, 4, random) : random() % 2 ? 0.99 : 255.9};
        };
        const Band across = bandOf(width), down = bandOf(height);
        const int horizontal = random() % 8 ? Between(0, 1, random) : 2,
                  vertical = random() % 8 ? Between(0, 1, random) : -1;
        const auto columns = Columns(across, width), rows = Rows(down, height);
        TestFrame expected = frame;
        if (horizontal == 1 && columns && (vertical != 1 || rows)) {
            for (unsigned y = 0; y < height; ++y)
                for (unsigned x = 0; x < columns->size(); ++x)
                    picture.Take(int(x), int(y), from, int((*columns)[x]),
                                 int(vertical == 1 && y < rows->size() ? (*rows)[y] : y));
            picture.StoreIn(expected);
        } else if (horizontal != 1 && vertical == 1 && rows) {
            MoveRows(expected, *rows);
        }
        ExpectEffect("tensile",
                     Numbers("tensile_", {{"horizontal", horizontal},
                                          {"horizontal_x1", across.begin},
                                          {"horizontal_x2", across.end},
                                          {"horizontal_scale", across.scale},
                                          {"vertical", vertical},
                                          {"vertical_y1", down.begin},
                                          {"vertical_y2", down.end},
                                          {"vertical_scale", down.scale}}),
                     frame, expected);
    });
}

}  // namespace
}  // namespace AVBased::Testing
