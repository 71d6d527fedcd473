#include "host/standins/packed_scaler.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cstring>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/error_codes.h"

// The thread sanitizer looks at the choice between clones before it is ready.
#if defined(__x86_64__) && !defined(__SANITIZE_THREAD__)
#define NIFIKRAL_CLONES gnu::target_clones("default", "avx2")
#else
#define NIFIKRAL_CLONES gnu::noinline
#endif

namespace Nifikral {
namespace {

constexpr char sourceName[] = "packed_scaler";
// Lines that a caller reads beside an error of this unit.
enum Line : int { lineScaler = 20, lineMemory = 40 };

// The planes of a picture of the wanted size, whose numbers stand for colours as in the picture they come from.
PictureShape Planes(const PictureShape& from, const PictureShape& to) {
    PictureShape planes = from;
    planes.format = AV_PIX_FMT_YUV444P;
    planes.width = to.width;
    planes.height = to.height;
    if (planes.matrix == AVCOL_SPC_UNSPECIFIED) planes.matrix = UsualMatrix(from.height);
    return planes;
}

}  // namespace

bool PackedScaler::Serves(const PictureShape& from, const PictureShape& to) {
    const AVPixFmtDescriptor& source = *av_pix_fmt_desc_get(from.format);
    return to.format == AV_PIX_FMT_BGRA && source.nb_components == 3 && (source.flags & AV_PIX_FMT_FLAG_PLANAR) &&
           !(source.flags & AV_PIX_FMT_FLAG_RGB);
}

PackedScaler::PackedScaler(const PictureShape& from, const PictureShape& to, int filter)
    : m_planes(NewAvPicture(Planes(from, to), lineMemory)), m_scaler(MakeScaler(from, Planes(from, to), filter)) {
    if (!m_scaler)
        throw TarvoBased::CBaseException(TarvoBased::errorBadFormat, TarvoBased::textBadPixelFormat, lineScaler,
                                         sourceName);
    // libswscale's numbers are for limited range: red of V, blue of U, green of U, green of V.
    const int* const limited = MatrixCoefficients(from);
    const auto chroma = [&](int i) { return from.fullRange ? int(std::int64_t(limited[i]) * 224 / 255) : limited[i]; };
    const int luma = from.fullRange ? 1 << 16 : (255 << 16) / 219;
    m_colours = {32768 - (from.fullRange ? 0 : 16 * luma), luma, chroma(0), chroma(2), chroma(3), chroma(1)};
}

[[NIFIKRAL_CLONES]] void PackedScaler::MixRow(const Colours& colours, const std::uint8_t* y, const std::uint8_t* u,
                                              const std::uint8_t* v, int width, std::uint8_t* to) {
    const Colours c = colours;
    const auto byte = [](std::int32_t sum) { return std::uint32_t(std::clamp(sum >> 16, 0, 255)); };
    for (int x = 0; x < width; ++x) {
        const std::int32_t luma = c.base + c.luma * y[x], first = u[x] - 128, second = v[x] - 128;
        const std::uint32_t blue = byte(luma + c.blueOfU * first);
        const std::uint32_t green = byte(luma - c.greenOfU * first - c.greenOfV * second);
        const std::uint32_t red = byte(luma + c.redOfV * second);
        const std::uint32_t pixel = 0xFF000000 | red << 16 | green << 8 | blue;
        std::memcpy(to + std::ptrdiff_t(x) * 4, &pixel, sizeof pixel);
    }
}

bool PackedScaler::Scale(const std::uint8_t* const fromData[4], const int fromPitches[4], std::uint8_t* const toData[4],
                         const int toPitches[4], int fromRows) const {
    AVFrame& planes = *m_planes;
    if (sws_scale(m_scaler.get(), fromData, fromPitches, 0, fromRows, planes.data, planes.linesize) < 0) return false;
    const auto row = [&](int p, int y) { return planes.data[p] + std::ptrdiff_t(y) * planes.linesize[p]; };
    for (int y = 0; y < planes.height; ++y)
        MixRow(m_colours, row(0, y), row(1, y), row(2, y), planes.width, toData[0] + std::ptrdiff_t(y) * toPitches[0]);
    return true;
}

}  // namespace Nifikral
