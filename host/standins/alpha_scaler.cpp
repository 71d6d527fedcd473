#include "host/standins/alpha_scaler.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/error_codes.h"
#include "host/standins/av_picture.h"

namespace Nifikral {
namespace {

constexpr char sourceName[] = "alpha_scaler";
// Lines that a caller reads beside an error of this unit.
enum Line : int { lineScaler = 20, lineMemory = 40 };

bool HasAlphaChannel(AVPixelFormat format) { return av_pix_fmt_desc_get(format)->flags & AV_PIX_FMT_FLAG_ALPHA; }

PictureShape Packed(PictureShape shape) {
    shape.format = AV_PIX_FMT_BGRA;
    shape.matrix = AVCOL_SPC_UNSPECIFIED;
    return shape;
}

ScalerPtr RequireScaler(const PictureShape& from, const PictureShape& to, int filter) {
    ScalerPtr scaler = MakeScaler(from, to, filter);
    if (!scaler)
        throw TarvoBased::CBaseException(TarvoBased::errorBadFormat, TarvoBased::textBadPixelFormat, lineScaler,
                                         sourceName);
    return scaler;
}

// Calls work(pixel) for the four bytes of each pixel of a BGRA picture.
template <class Work>
void ForEachPixel(AVFrame& picture, Work work) {
    for (int y = 0; y < picture.height; ++y) {
        std::uint8_t* pixel = picture.data[0] + std::ptrdiff_t(y) * picture.linesize[0];
        for (int x = 0; x < picture.width; ++x, pixel += 4) work(pixel);
    }
}

void MultiplyByAlpha(std::uint8_t* pixel) {
    for (int c = 0; c < 3; ++c) pixel[c] = std::uint8_t((pixel[c] * pixel[3] + 127) / 255);
}

void DivideByAlpha(std::uint8_t* pixel) {
    const int alpha = pixel[3];
    // A filter may overshoot further in a colour than in the alpha.
    for (int c = 0; alpha && c < 3; ++c) pixel[c] = std::uint8_t(std::min(255, (pixel[c] * 255 + alpha / 2) / alpha));
}

}  // namespace

bool AlphaScaler::Serves(const PictureShape& from, const PictureShape& to) {
    return HasAlphaChannel(from.format) && HasAlphaChannel(to.format) &&
           (from.width != to.width || from.height != to.height);
}

bool AlphaScaler::IsOpaque(const PictureShape& shape, const std::uint8_t* const data[4], const int pitches[4]) {
    const AVComponentDescriptor& alpha = av_pix_fmt_desc_get(shape.format)->comp[3];
    for (int y = 0; y < shape.height; ++y) {
        const std::uint8_t* sample = data[alpha.plane] + std::ptrdiff_t(y) * pitches[alpha.plane] + alpha.offset;
        unsigned all = 255;
        for (int x = 0; x < shape.width; ++x, sample += alpha.step) all &= *sample;
        if (all != 255) return false;
    }
    return true;
}

AlphaScaler::AlphaScaler(const PictureShape& from, const PictureShape& to, int filter)
    : m_packedFrom(Packed(from)),
      m_packedTo(Packed(to)),
      m_pack(RequireScaler(from, m_packedFrom, SWS_BICUBIC)),
      m_scale(RequireScaler(m_packedFrom, m_packedTo, filter)),
      m_unpack(RequireScaler(m_packedTo, to, SWS_BICUBIC)) {}

void AlphaScaler::Scale(const std::uint8_t* const fromData[4], const int fromPitches[4], std::uint8_t* const toData[4],
                        const int toPitches[4]) const {
    const AvPicturePtr from = NewAvPicture(m_packedFrom, lineMemory), to = NewAvPicture(m_packedTo, lineMemory);
    sws_scale(m_pack.get(), fromData, fromPitches, 0, from->height, from->data, from->linesize);
    ForEachPixel(*from, MultiplyByAlpha);
    sws_scale(m_scale.get(), from->data, from->linesize, 0, from->height, to->data, to->linesize);
    ForEachPixel(*to, DivideByAlpha);
    sws_scale(m_unpack.get(), to->data, to->linesize, 0, to->height, toData, toPitches);
}

}  // namespace Nifikral
