// Stand-in for the host's image converter, over libswscale.

#include "avbase/IImageConverter.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/boundary.h"
#include "TarvoBased/error_codes.h"
#include "host/standins/alpha_scaler.h"
#include "host/standins/av_picture.h"
#include "host/standins/packed_scaler.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

constexpr char sourceName[] = "image_converter";
// Lines that a caller reads beside an error of this unit.
enum Line : int {
    lineShape = 40,
    lineScaler = 60,
    lineFrame = 80,
    lineMemory = 100,
    lineConvert = 120,
    lineCreate = 140
};
constexpr unsigned largestSide = 1u << 16;

struct Plane {
    unsigned char* data = nullptr;
    unsigned rowBytes = 0, pitch = 0, rows = 0;
};

[[noreturn]] void RaiseBadFormat(int line) {
    throw CBaseException(errorBadFormat, textBadPixelFormat, line, sourceName);
}

Nifikral::PictureShape ToPictureShape(const ImageShape& shape) {
    const AVPixelFormat format = Nifikral::FfmpegFormat(shape.format);
    if (format == AV_PIX_FMT_NONE) RaiseBadFormat(lineShape);
    if (!shape.width || !shape.height || shape.width > largestSide || shape.height > largestSide)
        throw CBaseException(errorBadFormat, "Bad picture size", lineShape, sourceName);
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    if (shape.matrix == ColourMatrix::Bt601) matrix = AVCOL_SPC_SMPTE170M;
    if (shape.matrix == ColourMatrix::Bt709) matrix = AVCOL_SPC_BT709;
    // libswscale knows no packed 4:1:1; a Picture takes it apart into planes.
    return {format == AV_PIX_FMT_UYYVYY411 ? AV_PIX_FMT_YUV411P : format, int(shape.width), int(shape.height), matrix,
            shape.fullRange};
}

int FilterFlag(ScalingFilter filter) {
    switch (filter) {
        case ScalingFilter::Nearest:
            return SWS_POINT;
        case ScalingFilter::Bilinear:
            return SWS_BILINEAR;
        case ScalingFilter::Lanczos:
            return SWS_LANCZOS;
        case ScalingFilter::Bicubic:
            break;
    }
    return SWS_BICUBIC;
}

// What libswscale sees of one frame: the frame's own planes, or a scratch picture where they are not what it expects.
// It rounds chroma sizes up where frames round them down, and its vector code reads and writes whole blocks.
class Picture {
 public:
    Picture(IRawVideoFrame& frame, const Nifikral::PictureShape& shape)
        : m_shape(shape),
          m_topDown(frame.IsTopDown()),
          m_packed411(Nifikral::FfmpegFormat(frame.GetPixelFormat()) == AV_PIX_FMT_UYYVYY411) {
        m_count = m_packed411 ? 1 : unsigned(av_pix_fmt_count_planes(shape.format));
        if (frame.GetBufferCount() < m_count) RaiseBadFormat(lineFrame);
        bool direct = !m_packed411;
        for (unsigned p = 0; p < m_count; ++p) {
            Plane& plane = m_planes[p];
            plane.data = frame.GetBuffer(p, &plane.rowBytes, &plane.pitch, &plane.rows);
            if (!plane.data) throw CBaseException(errorBadPointer, textBadPointer, lineFrame, sourceName);
            plane.rowBytes = std::min(plane.rowBytes, plane.pitch);
            direct = direct && plane.rowBytes >= FullRowBytes(p) && plane.rows >= FullRows(p) &&
                     plane.pitch % 64 == 0 && reinterpret_cast<std::uintptr_t>(plane.data) % 64 == 0;
        }
        if (direct) return;
        m_scratch = Nifikral::NewAvPicture(shape, lineMemory);
    }

    void Load() {
        if (!m_scratch) return;
        if (m_packed411) {
            ForEachPacked411Sample([](unsigned char& packed, unsigned char& planar) { planar = packed; });
            return;
        }
        for (unsigned p = 0; p < m_count; ++p)
            for (unsigned y = 0; y < FullRows(p); ++y) {
                const Plane& plane = m_planes[p];
                unsigned char* const row = ScratchRow(p, y);
                if (!plane.rows || !plane.rowBytes) {
                    std::memset(row, 128, FullRowBytes(p));
                    continue;
                }
                const unsigned char* const from = Row(p, std::min(y, plane.rows - 1));
                const unsigned bytes = std::min(plane.rowBytes, FullRowBytes(p));
                std::memcpy(row, from, bytes);
                // The sample that an odd picture's chroma lacks takes its neighbour's value.
                std::memset(row + bytes, from[bytes - 1], FullRowBytes(p) - bytes);
            }
    }

    void Store() {
        if (!m_scratch) return;
        if (m_packed411) {
            ForEachPacked411Sample([](unsigned char& packed, unsigned char& planar) { packed = planar; });
            return;
        }
        for (unsigned p = 0; p < m_count; ++p)
            for (unsigned y = 0; y < std::min(m_planes[p].rows, FullRows(p)); ++y)
                std::memcpy(Row(p, y), ScratchRow(p, y), std::min(m_planes[p].rowBytes, FullRowBytes(p)));
    }

    void Describe(std::uint8_t* data[4], int pitches[4]) const {
        for (unsigned p = 0; p < 4; ++p) {
            data[p] = nullptr;
            pitches[p] = 0;
            if (m_scratch) {
                data[p] = m_scratch->data[p];
                pitches[p] = m_scratch->linesize[p];
            } else if (p < m_count) {
                data[p] = Row(p, 0);
                pitches[p] = m_topDown ? int(m_planes[p].pitch) : -int(m_planes[p].pitch);
            }
        }
    }

 private:
    unsigned FullRowBytes(unsigned p) const {
        return unsigned(std::max(0, av_image_get_linesize(m_shape.format, m_shape.width, int(p))));
    }
    unsigned FullRows(unsigned p) const {
        const AVPixFmtDescriptor* const description = av_pix_fmt_desc_get(m_shape.format);
        const bool chroma = (p == 1 || p == 2) && description->nb_components > 2;
        return unsigned(AV_CEIL_RSHIFT(m_shape.height, chroma ? description->log2_chroma_h : 0));
    }
    unsigned char* Row(unsigned p, unsigned y) const {
        const Plane& plane = m_planes[p];
        const unsigned inMemory = m_topDown ? y : std::min(plane.rows, FullRows(p)) - 1 - y;
        return plane.data + std::size_t(inMemory) * plane.pitch;
    }
    // Four pixels in six bytes: U Y Y V Y Y. What the last group of a row lacks keeps its value.
    template <class Work>
    void ForEachPacked411Sample(Work work) const {
        constexpr unsigned lumaOffsets[] = {1, 2, 4, 5}, chromaOffsets[] = {0, 3};
        for (unsigned y = 0; y < std::min(m_planes[0].rows, unsigned(m_shape.height)); ++y) {
            unsigned char* const row = Row(0, y);
            const auto visit = [&](unsigned offset, unsigned char& planar) {
                if (offset < m_planes[0].rowBytes) work(row[offset], planar);
            };
            for (unsigned x = 0; x < unsigned(m_shape.width); ++x)
                visit(x / 4 * 6 + lumaOffsets[x % 4], ScratchRow(0, y)[x]);
            for (unsigned p = 1; p < 3; ++p)
                for (unsigned x = 0; x < FullRowBytes(p); ++x) visit(x * 6 + chromaOffsets[p - 1], ScratchRow(p, y)[x]);
        }
    }
    unsigned char* ScratchRow(unsigned p, unsigned y) const {
        return m_scratch->data[p] + std::ptrdiff_t(y) * m_scratch->linesize[p];
    }

    Nifikral::PictureShape m_shape;
    bool m_topDown, m_packed411;
    unsigned m_count = 0;
    Plane m_planes[4];
    Nifikral::AvPicturePtr m_scratch;
};

class CImageConverter final : public IImageConverter {
 public:
    explicit CImageConverter(const ImageConversion& conversion)
        : m_conversion(conversion),
          m_from(ToPictureShape(conversion.source)),
          m_to(ToPictureShape(conversion.destination)),
          m_scaler(Nifikral::MakeScaler(m_from, m_to, FilterFlag(conversion.filter))) {
        if (!m_scaler) RaiseBadFormat(lineScaler);
        if (Nifikral::PackedScaler::Serves(m_from, m_to))
            m_packedScaler.emplace(m_from, m_to, FilterFlag(conversion.filter));
    }

    bool Convert(IRawVideoFrame* source, IRawVideoFrame* destination) override {
        return AtBoundary(lineConvert, sourceName, [&] {
            Require(source, m_conversion.source);
            Require(destination, m_conversion.destination);
            Picture from(*source, m_from), to(*destination, m_to);
            std::uint8_t *fromData[4], *toData[4];
            int fromPitches[4], toPitches[4];
            from.Load();
            from.Describe(fromData, fromPitches);
            to.Describe(toData, toPitches);
            if (!Scale(fromData, fromPitches, toData, toPitches))
                throw CBaseException(errorGeneral, "Conversion failed", lineConvert, sourceName);
            to.Store();
            return true;
        });
    }
    void Free() override { delete this; }

 private:
    bool Scale(const std::uint8_t* const from[4], const int fromPitches[4], std::uint8_t* const to[4],
               const int toPitches[4]) {
        if (m_packedScaler) return m_packedScaler->Scale(from, fromPitches, to, toPitches, m_from.height);
        if (!Nifikral::AlphaScaler::Serves(m_from, m_to) || Nifikral::AlphaScaler::IsOpaque(m_from, from, fromPitches))
            return sws_scale(m_scaler.get(), from, fromPitches, 0, m_from.height, to, toPitches) >= 0;
        if (!m_alphaScaler) m_alphaScaler.emplace(m_from, m_to, FilterFlag(m_conversion.filter));
        m_alphaScaler->Scale(from, fromPitches, to, toPitches);
        return true;
    }
    static void Require(IRawVideoFrame* frame, const ImageShape& shape) {
        RequirePointer(frame, lineFrame, sourceName);
        unsigned width = 0, height = 0;
        frame->GetDimension(&width, &height);
        if (frame->GetPixelFormat() != shape.format || width != shape.width || height != shape.height)
            RaiseBadFormat(lineFrame);
    }

    ImageConversion m_conversion;
    Nifikral::PictureShape m_from, m_to;
    Nifikral::ScalerPtr m_scaler;
    std::optional<Nifikral::AlphaScaler> m_alphaScaler;
    std::optional<Nifikral::PackedScaler> m_packedScaler;
};

}  // namespace

extern "C" {

[[gnu::visibility("default")]] IImageConverter* CreateImageConverterEx(const ImageConversion* conversion) {
    return AtBoundary(lineCreate, sourceName, [&]() -> IImageConverter* {
        RequirePointer(conversion, lineCreate, sourceName);
        return new CImageConverter(*conversion);
    });
}

[[gnu::visibility("default")]] IImageConverter* CreateImageConverter(unsigned sourceFormat, unsigned sourceWidth,
                                                                     unsigned sourceHeight, unsigned destinationFormat,
                                                                     unsigned destinationWidth,
                                                                     unsigned destinationHeight) {
    ImageConversion conversion;
    conversion.source = {sourceFormat, sourceWidth, sourceHeight};
    conversion.destination = {destinationFormat, destinationWidth, destinationHeight};
    return CreateImageConverterEx(&conversion);
}

}  // extern "C"

}  // namespace AVBased
