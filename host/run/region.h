#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/media/ffmpeg_handles.h"
#include "host/run/parameter_value.h"

namespace Nifikral {

/// How much of an effect shows at each pixel of a picture, and at each sample of its chroma planes: 0 to 255.
struct Coverage {
    struct Plane {
        int width = 0, height = 0;
        std::vector<std::uint8_t> shares;
    };
    Plane whole, chroma;
};

/// The part of the picture in which an effect shows: a shape or a grey picture, or all but that.
class Region {
 public:
    /// `area` is "circle,X,Y,R", "ellipse,X,Y,RX,RY", "rectangle,X,Y,WIDTH,HEIGHT" or the file of a picture that is
    /// white where the effect shows. Numbers are pixels or shares, as 50%, and may change over time, as 10%..90%.
    /// `soft`, a length or "", is how far the effect comes in gradually, inwards from the shape's edge.
    /// `outside`: all but the area. Throws std::invalid_argument, saying what is wrong.
    Region(const std::string& area, const std::string& soft, bool outside);

    bool Varies() const;
    bool NeedsFrameCount() const;
    /// The same for pictures of another size.
    Region Resized(const Scale& from, const Scale& to) const;
    /// The same for pictures of a format and a size, with all numbers in pixels; loads the picture. Throws input
    /// errors.
    Region On(const Scale& scale, AVPixelFormat format) const;
    /// Of a region that On has made, at a frame of so many that the effect works on. Threads: any.
    std::shared_ptr<const Coverage> At(long long frame, long long frameCount) const;

 private:
    enum class Shape { Circle, Ellipse, Rectangle, Picture };

    std::shared_ptr<const Coverage> Render(long long frame, long long frameCount) const;
    FramePtr LoadGrey() const;

    Shape m_shape = Shape::Picture;
    std::string m_file;
    std::vector<ParameterValue> m_numbers;  // of the shape, the softness last
    bool m_outside;
    int m_width = 0, m_height = 0;
    AVPixelFormat m_format = AV_PIX_FMT_NONE;
    std::shared_ptr<const Coverage> m_still;  // of a region that does not vary
};

/// The forms that an area may have, for messages.
extern const char areaForms[];

/// Puts `original` back where the coverage is 0 and mixes it in where it is partial; where it is 255, `frame` stays.
void Compose(AVFrame& frame, const AVFrame& original, const Coverage& coverage);

}  // namespace Nifikral
