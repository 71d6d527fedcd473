#include "host/media/matrix_change.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cmath>
#include <vector>

namespace Nifikral {
namespace {

// The shares of red, green and blue in luma.
struct Weights {
    double red, green, blue;

    explicit Weights(const int* coefficients)
        : red(WeightOf(coefficients[0])), green(0), blue(WeightOf(coefficients[1])) {
        green = 1 - red - blue;
    }

 private:
    // libswscale has twice the rest of a weight, for chroma of 224 steps and colours of 255.
    static double WeightOf(int coefficient) { return 1 - coefficient / 65536.0 * 224 / 255 / 2; }
};

std::uint8_t Sample(int value) { return std::uint8_t(std::clamp(value, 0, 255)); }

}  // namespace

MatrixChange::MatrixChange(const int* from, const int* to, bool fullRange) {
    const Weights old(from), own(to);
    const auto shares = [](double u, double v) {
        return Shares{std::int16_t(std::lround(u * (1 << bits))), std::int16_t(std::lround(v * (1 << bits)))};
    };
    // How far chroma moves blue and red away from luma, and green for both.
    const double blue = 2 * (1 - old.blue), red = 2 * (1 - old.red);
    const double lumaOfU = blue * (own.blue - own.green * old.blue / old.green);
    const double lumaOfV = red * (own.red - own.green * old.red / old.green);
    const double lumaSteps = fullRange ? 1 : 219.0 / 224;
    m_luma = shares(lumaSteps * lumaOfU, lumaSteps * lumaOfV);
    m_u = shares((blue - lumaOfU) / (2 * (1 - own.blue)), -lumaOfV / (2 * (1 - own.blue)));
    m_v = shares(-lumaOfU / (2 * (1 - own.red)), (red - lumaOfV) / (2 * (1 - own.red)));
}

bool MatrixChange::Takes(AVPixelFormat format) {
    const AVPixFmtDescriptor& layout = *av_pix_fmt_desc_get(format);
    const auto isPlane = [&](int component) {
        return layout.comp[component].plane == component && layout.comp[component].depth == 8;
    };
    constexpr std::uint64_t other = AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_HWACCEL;
    return layout.nb_components >= 3 && (layout.flags & AV_PIX_FMT_FLAG_PLANAR) && !(layout.flags & other) &&
           isPlane(0) && isPlane(1) && isPlane(2);
}

void MatrixChange::Apply(AVFrame& frame) const {
    const AVPixFmtDescriptor& layout = *av_pix_fmt_desc_get(AVPixelFormat(frame.format));
    const int columns = layout.log2_chroma_w, rows = layout.log2_chroma_h;
    // The compiler would take each sample that is written for a new width.
    const int columnsOfLuma = frame.width, countOfRows = frame.height;
    const auto width = std::size_t(AV_CEIL_RSHIFT(frame.width, columns));
    const int height = AV_CEIL_RSHIFT(frame.height, rows);
    const auto row = [&](int plane, int y) { return frame.data[plane] + std::ptrdiff_t(y) * frame.linesize[plane]; };
    const Shares ofLuma = m_luma, ofU = m_u, ofV = m_v;
    // What each chroma sample adds to luma, and what each luma sample gets.
    std::vector<std::int16_t> shares(width), added(width << columns);
    for (int y = 0; y < height; ++y) {
        std::uint8_t *const u = row(1, y), *const v = row(2, y);
        for (std::size_t x = 0; x < width; ++x) {
            const auto du = std::int16_t(u[x] - 128), dv = std::int16_t(v[x] - 128);
            shares[x] = std::int16_t(ofLuma.Of(du, dv));
            u[x] = Sample(128 + ofU.Of(du, dv));
            v[x] = Sample(128 + ofV.Of(du, dv));
        }
        if (columns == 1)
            for (std::size_t x = 0; x < width; ++x) added[2 * x] = added[2 * x + 1] = shares[x];
        else
            for (std::size_t x = 0; x < width << columns; ++x) added[x] = shares[x >> columns];
        for (int below = y << rows; below < std::min((y + 1) << rows, countOfRows); ++below) {
            std::uint8_t* const luma = row(0, below);
            for (int x = 0; x < columnsOfLuma; ++x) luma[x] = Sample(luma[x] + added[std::size_t(x)]);
        }
    }
}

}  // namespace Nifikral
