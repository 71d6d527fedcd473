#include "host/standins/ffmpeg_formats.h"

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <utility>

#include "avbase/avbase_srcutils/pixel_formats.h"

namespace Nifikral {
namespace {

struct Row {
    unsigned code;
    AVPixelFormat format;
};

// Plane 1 is U and plane 2 is V in every planar format. Where only the layout of a code is fixed (packed 16, 24 and 32
// bits beside formatRgba32), the order of its colours is this host's choice.
constexpr Row rows[] = {
    {0, AV_PIX_FMT_YUV420P},   {12, AV_PIX_FMT_YUV420P},   {4, AV_PIX_FMT_YUV422P},
    {13, AV_PIX_FMT_YUV422P},  {5, AV_PIX_FMT_YUV444P},    {14, AV_PIX_FMT_YUV444P},
    {6, AV_PIX_FMT_YUV410P},   {7, AV_PIX_FMT_YUV411P},    {33, AV_PIX_FMT_YUV440P},
    {35, AV_PIX_FMT_YUVA420P}, {60, AV_PIX_FMT_YUVA444P},  {1, AV_PIX_FMT_YUYV422},
    {17, AV_PIX_FMT_UYVY422},  {2, AV_PIX_FMT_BGR24},      {3, AV_PIX_FMT_RGB24},
    {8, AV_PIX_FMT_GRAY8},     {9, AV_PIX_FMT_MONOBLACK},  {10, AV_PIX_FMT_MONOWHITE},
    {11, AV_PIX_FMT_NV12},     {18, AV_PIX_FMT_UYYVYY411}, {27, AV_PIX_FMT_RGBA},
    {28, AV_PIX_FMT_ARGB},     {29, AV_PIX_FMT_ABGR},      {AVBased::formatRgba32, AV_PIX_FMT_BGRA},
    {43, AV_PIX_FMT_RGB565LE}, {44, AV_PIX_FMT_RGB555LE},  {45, AV_PIX_FMT_BGR565LE},
    {46, AV_PIX_FMT_BGR555LE}, {47, AV_PIX_FMT_RGB565BE},  {48, AV_PIX_FMT_RGB555BE},
    {49, AV_PIX_FMT_BGR565BE}, {50, AV_PIX_FMT_BGR555BE},
};

constexpr Row twins[] = {
    {0, AV_PIX_FMT_YUVJ420P}, {4, AV_PIX_FMT_YUVJ422P},  {5, AV_PIX_FMT_YUVJ444P},
    {7, AV_PIX_FMT_YUVJ411P}, {33, AV_PIX_FMT_YUVJ440P},
};

// Grey alone runs from 0 to 255 everywhere.
bool UsesFullRange(const PictureShape& shape) {
    return shape.fullRange || av_pix_fmt_desc_get(shape.format)->nb_components < 3;
}

}  // namespace

AVPixelFormat FfmpegFormat(unsigned code) {
    for (const Row& row : rows)
        if (row.code == code) return row.format;
    return AV_PIX_FMT_NONE;
}

int FormatCode(AVPixelFormat format) {
    for (const Row& row : rows)
        if (row.format == format) return int(row.code);
    for (const Row& row : twins)
        if (row.format == format) return int(row.code);
    return -1;
}

AVColorSpace UsualMatrix(int height) { return height > 576 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M; }

AVColorSpace MatrixOf(const PictureShape& shape) {
    const bool usable = shape.matrix != AVCOL_SPC_UNSPECIFIED && shape.matrix != AVCOL_SPC_RGB;
    return usable ? shape.matrix : UsualMatrix(shape.height);
}

const int* MatrixCoefficients(const PictureShape& shape) { return sws_getCoefficients(MatrixOf(shape)); }

ScalerPtr MakeScaler(const PictureShape& from, const PictureShape& to, int filter) {
    const AVPixFmtDescriptor& target = *av_pix_fmt_desc_get(to.format);
    int flags = filter | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP;
    if ((target.flags & AV_PIX_FMT_FLAG_RGB) && target.comp[0].depth >= 8) flags |= SWS_FULL_CHR_H_INT;
    ScalerPtr scaler(sws_alloc_context());
    if (!scaler) return nullptr;
    // With the ranges from the start: planes that differ in nothing else would be copied as they are.
    const std::pair<const char*, int> settings[] = {{"srcw", from.width},
                                                    {"srch", from.height},
                                                    {"src_format", from.format},
                                                    {"dstw", to.width},
                                                    {"dsth", to.height},
                                                    {"dst_format", to.format},
                                                    {"src_range", UsesFullRange(from)},
                                                    {"dst_range", UsesFullRange(to)},
                                                    {"sws_flags", flags}};
    for (const auto& [name, value] : settings)
        if (av_opt_set_int(scaler.get(), name, value, 0) < 0) return nullptr;
    if (sws_init_context(scaler.get(), nullptr, nullptr) < 0) return nullptr;
    // Refused for formats without YUV on either side, where there is nothing to set.
    sws_setColorspaceDetails(scaler.get(), MatrixCoefficients(from), UsesFullRange(from), MatrixCoefficients(to),
                             UsesFullRange(to), 0, 1 << 16, 1 << 16);
    return scaler;
}

}  // namespace Nifikral
