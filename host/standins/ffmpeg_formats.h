#pragma once

extern "C" {
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

#include <memory>

/// What the stand-in converter and the host command both need to know of FFmpeg's pictures.
namespace Nifikral {

/// The FFmpeg format with the layout of a pixel format code, plane by plane; AV_PIX_FMT_NONE for an unknown code.
AVPixelFormat FfmpegFormat(unsigned code);
/// The first code with the layout of an FFmpeg format, -1 without one. Full-range twins (yuvj420p) count as the same
/// layout.
int FormatCode(AVPixelFormat format);

/// A picture's layout, size and colours, as a conversion needs them.
struct PictureShape {
    AVPixelFormat format = AV_PIX_FMT_NONE;
    int width = 0, height = 0;
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;  ///< unspecified: the usual one for the height
    bool fullRange = false;                       ///< YUV only: luma 0 to 255 instead of 16 to 235

    bool operator==(const PictureShape&) const = default;
};

/// BT.601 for up to 576 rows, BT.709 above.
AVColorSpace UsualMatrix(int height);

/// What a picture's YUV is coded by.
AVColorSpace MatrixOf(const PictureShape& shape);

/// libswscale's numbers for a picture's matrix; equal pointers for equal matrices.
const int* MatrixCoefficients(const PictureShape& shape);

struct FreeScaler {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
using ScalerPtr = std::unique_ptr<SwsContext, FreeScaler>;

/// A scaler with matrix and range set on both sides; `filter` is one of the SWS_ constants. Null when FFmpeg has none.
ScalerPtr MakeScaler(const PictureShape& from, const PictureShape& to, int filter);

}  // namespace Nifikral
