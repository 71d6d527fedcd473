#include "host/media/picture_formats.h"

extern "C" {
#include <libavutil/intreadwrite.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <charconv>

#include "avbase/avbase_srcutils/pixel_formats.h"
#include "host/base/errors.h"

namespace Nifikral {
namespace {

using AVBased::formatRgba32;

constexpr unsigned formatYuv420 = 0, formatYuv422 = 4, formatYuv410 = 6, formatYuv411 = 7, formatYuva420 = 35,
                   formatYuva444 = 60;
constexpr unsigned effectFormats[] = {
    formatYuv420, formatYuv422, formatYuv410, formatYuv411, formatRgba32, formatYuva420, formatYuva444, 12, 13};

const AVPixFmtDescriptor& Describe(AVPixelFormat format) { return *av_pix_fmt_desc_get(format); }

bool IsForEffects(int code) {
    return std::find(std::begin(effectFormats), std::end(effectFormats), unsigned(code)) != std::end(effectFormats);
}

bool IsYuv(AVPixelFormat format) {
    const AVPixFmtDescriptor& description = Describe(format);
    return description.nb_components >= 3 && !(description.flags & AV_PIX_FMT_FLAG_RGB) &&
           format != AV_PIX_FMT_XYZ12LE && format != AV_PIX_FMT_XYZ12BE;
}

// Of the usual 8x8 pattern, in which neighbours are far apart: 0 to 63.
unsigned DitherRank(unsigned x, unsigned y) {
    unsigned rank = 0;
    for (unsigned bit = 0; bit < 3; ++bit) {
        const unsigned column = x >> bit & 1, row = y >> bit & 1;
        rank = rank << 2 | (column ^ row) << 1 | row;
    }
    return rank;
}

// A chroma plane's sample with the mean alpha of the pixels that it covers.
unsigned MeanAlpha(const AVFrame& frame, int x, int y, int columnShift, int rowShift) {
    unsigned sum = 0, count = 0;
    for (int row = y << rowShift; row < std::min((y + 1) << rowShift, frame.height); ++row)
        for (int column = x << columnShift; column < std::min((x + 1) << columnShift, frame.width); ++column, ++count)
            sum += frame.data[3][std::ptrdiff_t(row) * frame.linesize[3] + column];
    return count ? sum / count : 255;
}

// What libswscale makes of white in 16 bits: it shifts luma and greys.
unsigned DeepWhite(const PictureShape& shape) {
    const bool yuv = IsYuv(shape.format);
    if (yuv && !shape.fullRange) return 255 << 8;
    const int depth = Depth(shape.format);
    const bool shifts = (yuv || Describe(shape.format).nb_components < 3) && depth < 16;
    return shifts ? ((1u << depth) - 1) << (16 - depth) : 65535;
}

// RGBA of 16 bits a sample as BGRA of 8. libswscale dithers planes, but cuts pixels.
FramePtr Dithered(const AVFrame& deep, unsigned white) {
    FramePtr frame = NewPicture(AV_PIX_FMT_BGRA, deep.width, deep.height);
    for (int y = 0; y < deep.height; ++y) {
        const std::uint8_t* from = deep.data[0] + std::ptrdiff_t(y) * deep.linesize[0];
        std::uint8_t* to = frame->data[0] + std::ptrdiff_t(y) * frame->linesize[0];
        for (int x = 0; x < deep.width; ++x, from += 8, to += 4) {
            const unsigned threshold = (2 * DitherRank(unsigned(x), unsigned(y)) + 1) * white / 128;
            const auto sample = [&](int c, unsigned most) {
                return std::uint8_t(std::min(255u, (AV_RL16(from + std::ptrdiff_t(2) * c) * 255u + threshold) / most));
            };
            to[0] = sample(2, white);
            to[1] = sample(1, white);
            to[2] = sample(0, white);
            to[3] = sample(3, 65535);
        }
    }
    return frame;
}

std::uint8_t Blend(unsigned value, unsigned black, unsigned alpha) {
    return std::uint8_t((value * alpha + black * (255 - alpha) + 127) / 255);
}

}  // namespace

AVPixelFormat PlainFormat(AVPixelFormat format, bool& fullRange) {
    constexpr std::pair<AVPixelFormat, AVPixelFormat> twins[] = {
        {AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUV420P}, {AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUV422P},
        {AV_PIX_FMT_YUVJ444P, AV_PIX_FMT_YUV444P}, {AV_PIX_FMT_YUVJ411P, AV_PIX_FMT_YUV411P},
        {AV_PIX_FMT_YUVJ440P, AV_PIX_FMT_YUV440P},
    };
    for (const auto& [twin, plain] : twins)
        if (format == twin) {
            fullRange = true;
            return plain;
        }
    return format;
}

PictureShape ShapeOf(const AVFrame& frame) {
    PictureShape shape;
    shape.fullRange = frame.color_range == AVCOL_RANGE_JPEG;
    shape.format = PlainFormat(AVPixelFormat(frame.format), shape.fullRange);
    shape.width = frame.width;
    shape.height = frame.height;
    shape.matrix = frame.colorspace;
    return shape;
}

bool HasAlpha(AVPixelFormat format) {
    return (Describe(format).flags & AV_PIX_FMT_FLAG_ALPHA) || format == AV_PIX_FMT_PAL8;
}

bool IsRgb(AVPixelFormat format) { return !IsYuv(format); }

int Depth(AVPixelFormat format) {
    const AVPixFmtDescriptor& description = Describe(format);
    int depth = 0;
    for (int c = 0; c < description.nb_components; ++c) depth = std::max(depth, description.comp[c].depth);
    return depth;
}

unsigned ParseFormat(const std::string& text) {
    unsigned code = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), code);
    if (error == std::errc() && end == text.data() + text.size()) {
        if (FfmpegFormat(code) != AV_PIX_FMT_NONE) return code;
    } else if (const AVPixelFormat format = av_get_pix_fmt(text.c_str()); format != AV_PIX_FMT_NONE) {
        if (FormatCode(format) >= 0) return unsigned(FormatCode(format));
    }
    throw HostError(ExitCode::Usage, "--format " + text +
                                         " names no pixel format that effects know; use a code (0, 4, 6, 7, 12, 13, "
                                         "30, 35, 60) or a name such as yuv420p, yuva444p or bgra");
}

unsigned EffectFormat(AVPixelFormat format, bool withAlpha) {
    const int own = FormatCode(format);
    const bool alpha = withAlpha || HasAlpha(format);
    if (IsForEffects(own) && HasAlpha(FfmpegFormat(unsigned(own))) >= alpha) return unsigned(own);
    if (!IsYuv(format)) return formatRgba32;
    const AVPixFmtDescriptor& description = Describe(format);
    const int columns = description.log2_chroma_w, rows = description.log2_chroma_h;
    if (columns == 1 && rows == 1) return alpha ? formatYuva420 : formatYuv420;
    if (alpha || columns == 0) return formatYuva444;
    if (columns == 1) return formatYuv422;
    return rows == 2 ? formatYuv410 : formatYuv411;
}

AVPixelFormat OutputFormat(AVPixelFormat source) {
    if (!IsYuv(source)) {
        const bool ownRoom = Depth(source) == 8 && Describe(source).nb_components >= 3 && source != AV_PIX_FMT_PAL8;
        if (ownRoom) return source;
        return HasAlpha(source) ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGB24;
    }
    if (Depth(source) == 8) return source;
    const unsigned code = EffectFormat(source, false);
    return code == formatYuva444 && !HasAlpha(source) ? AV_PIX_FMT_YUV444P : FfmpegFormat(code);
}

void PictureConverter::Convert(FramePtr& frame) {
    PictureShape from = ShapeOf(*frame);
    frame->format = from.format;
    // What is left out of sight needs no copy.
    if (from.format == AV_PIX_FMT_BGRA && m_to.format == AV_PIX_FMT_BGR0 && from.width == m_to.width &&
        from.height == m_to.height) {
        frame->format = AV_PIX_FMT_BGR0;
        return;
    }
    const bool toYuv = !IsRgb(m_to.format), fromYuv = !IsRgb(from.format);
    PictureShape to = m_to;
    if (to.matrix == AVCOL_SPC_UNSPECIFIED) to.matrix = fromYuv ? from.matrix : UsualMatrix(to.height);
    const bool sameColours =
        !toYuv || (from.fullRange == to.fullRange && MatrixCoefficients(from) == MatrixCoefficients(to));
    const int code = FormatCode(from.format);
    const bool dither = to.format == AV_PIX_FMT_BGRA && Depth(from.format) > 8;
    if (dither) to.format = AV_PIX_FMT_RGBA64LE;
    const bool sameLayout = from.format == to.format || (code >= 0 && code == FormatCode(to.format));
    if (!dither && sameLayout && sameColours && from.width == to.width && from.height == to.height) return;
    if (!m_scaler || !(from == m_from)) {
        m_from = from;
        PictureShape scaled = to;
        const bool apart = toYuv && fromYuv && MatrixCoefficients(from) != MatrixCoefficients(to);
        m_matrixChange.reset();
        if (apart && MatrixChange::Takes(to.format)) {
            m_matrixChange.emplace(MatrixCoefficients(from), MatrixCoefficients(to), to.fullRange);
            scaled.matrix = MatrixOf(from);
        }
        m_scaler = MakeScaler(from, scaled, SWS_BICUBIC);
        if (!m_scaler)
            throw HostError(ExitCode::Failed, std::string("pictures of format ") + Describe(from.format).name +
                                                  " cannot be converted to " + Describe(m_to.format).name);
    }
    FramePtr converted = NewPicture(to.format, to.width, to.height);
    sws_scale(m_scaler.get(), frame->data, frame->linesize, 0, frame->height, converted->data, converted->linesize);
    if (m_matrixChange) m_matrixChange->Apply(*converted);
    if (dither) converted = Dithered(*converted, DeepWhite(from));
    if (av_frame_copy_props(converted.get(), frame.get()) < 0) throw std::bad_alloc();
    converted->crop_left = converted->crop_top = converted->crop_right = converted->crop_bottom = 0;
    converted->colorspace = toYuv ? to.matrix : AVCOL_SPC_RGB;
    if (toYuv && fromYuv && from.fullRange == to.fullRange)
        converted->color_range = frame->color_range;
    else
        converted->color_range = to.fullRange || !toYuv ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    frame = std::move(converted);
}

void LayOverBlack(AVFrame& frame) {
    if (frame.format == AV_PIX_FMT_BGRA) {
        for (int y = 0; y < frame.height; ++y) {
            std::uint8_t* pixel = frame.data[0] + std::ptrdiff_t(y) * frame.linesize[0];
            for (int x = 0; x < frame.width; ++x, pixel += 4) {
                for (int c = 0; c < 3; ++c) pixel[c] = Blend(pixel[c], 0, pixel[3]);
                pixel[3] = 255;
            }
        }
        return;
    }
    const AVPixFmtDescriptor& description = Describe(AVPixelFormat(frame.format));
    const unsigned blackLuma = frame.color_range == AVCOL_RANGE_JPEG ? 0 : 16;
    for (int p = 2; p >= 0; --p) {
        const int columns = p ? description.log2_chroma_w : 0, rows = p ? description.log2_chroma_h : 0;
        for (int y = 0; y < AV_CEIL_RSHIFT(frame.height, rows); ++y) {
            std::uint8_t* const row = frame.data[p] + std::ptrdiff_t(y) * frame.linesize[p];
            for (int x = 0; x < AV_CEIL_RSHIFT(frame.width, columns); ++x)
                row[x] = Blend(row[x], p ? 128 : blackLuma, MeanAlpha(frame, x, y, columns, rows));
        }
    }
    for (int y = 0; y < frame.height; ++y)
        std::fill_n(frame.data[3] + std::ptrdiff_t(y) * frame.linesize[3], frame.width, std::uint8_t(255));
}

}  // namespace Nifikral
