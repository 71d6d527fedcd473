#pragma once

#include "avbase/IRawVideoFrame.h"

namespace AVBased {

/// Converts frames of one size and format into frames of another. Threads: one at a time.
class IImageConverter {
 public:
    /// Fills every plane of `destination` from `source`. Both must have the sizes and formats that the converter was
    /// made for. False on failure: 10021003 for a null frame, 10021010 for a frame of another size or format.
    virtual bool Convert(IRawVideoFrame* source, IRawVideoFrame* destination) = 0;
    virtual void Free() = 0;

 protected:
    ~IImageConverter() = default;
};

/// How YUV numbers stand for colours. Automatic: BT.601 for up to 576 rows, BT.709 above.
enum class ColourMatrix { Automatic, Bt601, Bt709 };

struct ImageShape {
    unsigned format = 0, width = 0, height = 0;  ///< pixel format code, pixels, rows
    ColourMatrix matrix = ColourMatrix::Automatic;
    bool fullRange = false;  ///< YUV only: luma 0 to 255 instead of 16 to 235
};

enum class ScalingFilter { Nearest, Bilinear, Bicubic, Lanczos };

struct ImageConversion {
    ImageShape source, destination;
    ScalingFilter filter = ScalingFilter::Bicubic;
};

extern "C" {
/// A converter with automatic matrices, limited range and bicubic scaling; the caller releases it with Free().
/// Null on failure: 10021010 for a format that cannot be converted or a size of zero.
IImageConverter* CreateImageConverter(unsigned sourceFormat, unsigned sourceWidth, unsigned sourceHeight,
                                      unsigned destinationFormat, unsigned destinationWidth,
                                      unsigned destinationHeight);
/// The same with every choice open. `conversion` is read during the call only.
IImageConverter* CreateImageConverterEx(const ImageConversion* conversion);
}

}  // namespace AVBased
