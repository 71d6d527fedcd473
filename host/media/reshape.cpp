#include "host/media/reshape.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>

#include "host/base/errors.h"

namespace Nifikral {
namespace {

constexpr int largestSide = 16384;

// Pixels, or a share of a side.
struct Length {
    double value = 0;
    bool share = false;

    double Of(int side) const { return share ? side * value / 100 : value; }
};

// Takes what is a length off the front of a text.
std::optional<Length> TakeLength(std::string_view& text) {
    Length length;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), length.value);
    if (error != std::errc() || !(length.value >= 0)) return std::nullopt;
    text.remove_prefix(std::size_t(rest - text.data()));
    length.share = text.starts_with('%');
    if (length.share) text.remove_prefix(1);
    return length;
}

bool TakeSign(std::string_view& text, char sign) {
    if (!text.starts_with(sign)) return false;
    text.remove_prefix(1);
    return true;
}

struct Box {
    int x, y, width, height;
};

Box ParseCrop(const std::string& text, const AVFrame& picture) {
    std::string_view rest = text;
    const std::optional<Length> width = TakeLength(rest);
    const bool by = TakeSign(rest, 'x');
    const std::optional<Length> height = TakeLength(rest);
    std::optional<Length> x, y;
    const bool placed = TakeSign(rest, '+');
    if (placed) {
        x = TakeLength(rest);
        if (TakeSign(rest, '+')) y = TakeLength(rest);
    }
    if (!width || !by || !height || (placed && !(x && y)) || !rest.empty())
        throw HostError(ExitCode::Usage, "--crop " + text +
                                             " is no part of a picture; give WIDTHxHEIGHT+X+Y in pixels or shares, "
                                             "such as 640x360+0+100 or 50%x50%+25%+25%");
    Box box{0, 0, int(std::lround(width->Of(picture.width))), int(std::lround(height->Of(picture.height)))};
    box.x = placed ? int(std::lround(x->Of(picture.width))) : (picture.width - box.width) / 2;
    box.y = placed ? int(std::lround(y->Of(picture.height))) : (picture.height - box.height) / 2;
    if (box.width < 1 || box.height < 1 || box.x < 0 || box.y < 0 || box.width > picture.width - box.x ||
        box.height > picture.height - box.y)
        throw HostError(ExitCode::Usage, "--crop " + text + " is not within the picture, which is " +
                                             std::to_string(picture.width) + "x" + std::to_string(picture.height));
    // Chroma has no finer places; the fields of interlaced pictures have their own.
    const AVPixFmtDescriptor& layout = *av_pix_fmt_desc_get(AVPixelFormat(picture.format));
    const int rows = layout.log2_chroma_h + (picture.interlaced_frame ? 1 : 0);
    box.x &= ~((1 << layout.log2_chroma_w) - 1);
    box.y &= ~((1 << rows) - 1);
    return box;
}

struct Size {
    int width, height;
    bool ownShape;  // and not the picture's
};

Size ParseScale(const std::string& text, int width, int height, bool evenSides) {
    std::string_view rest = text;
    const std::optional<Length> across = text.starts_with('x') ? std::nullopt : TakeLength(rest);
    const bool by = TakeSign(rest, 'x');
    const std::optional<Length> down = by ? TakeLength(rest) : std::nullopt;
    bool good = (across || down) && (!by || down) && rest.empty();
    const auto side = [&](double length, bool given) {
        const double whole = evenSides && !given ? 2 * std::round(length / 2) : std::round(length);
        good = good && length > 0 && whole <= largestSide;
        return good ? std::max(int(whole), 1) : 1;
    };
    const auto isGiven = [](const std::optional<Length>& length) { return length && !length->share; };
    const double wide = across ? across->Of(width) : down ? down->Of(height) * width / height : 0;
    const double high = down ? down->Of(height) : wide * height / width;
    const Size size{side(wide, isGiven(across)), side(high, isGiven(down)),
                    across && down && std::abs(wide * height / (high * width) - 1) > 0.01};
    if (!good)
        throw HostError(ExitCode::Usage, "--scale " + text +
                                             " is no size; give WIDTHxHEIGHT, WIDTH, xHEIGHT or a share such as 50%, "
                                             "with sides from 1 to " +
                                             std::to_string(largestSide));
    return size;
}

}  // namespace

Reshaper::Reshaper(const Preparation& preparation, const AVFrame& first, AVRational pixelAspect, bool evenSides)
    : m_pixelAspect(pixelAspect) {
    std::ostringstream filters;
    Box box{0, 0, first.width, first.height};
    if (!preparation.crop.empty()) {
        box = ParseCrop(preparation.crop, first);
        filters << "crop=" << box.width << ":" << box.height << ":" << box.x << ":" << box.y << ":exact=1";
    }
    if (!preparation.scale.empty()) {
        const Size size = ParseScale(preparation.scale, box.width, box.height, evenSides);
        filters << (box.width != first.width || box.height != first.height || !preparation.crop.empty() ? "," : "")
                << "scale=" << size.width << ":" << size.height << ":flags=bicubic:interl=-1";
        if (size.ownShape) {
            if (m_pixelAspect.num <= 0) m_pixelAspect = {1, 1};
            m_pixelAspect = av_mul_q(m_pixelAspect, av_mul_q({box.width, size.width}, {size.height, box.height}));
        }
    }
    m_filters = filters.str();
}

void Reshaper::Apply(FramePtr& frame) {
    if (!IsNeeded()) return;
    if (!m_graph || frame->format != m_format || frame->width != m_width || frame->height != m_height) {
        m_format = frame->format;
        m_width = frame->width;
        m_height = frame->height;
        std::ostringstream source;
        source << "video_size=" << m_width << "x" << m_height << ":pix_fmt=" << m_format
               << ":time_base=1/1:pixel_aspect=1/1";
        m_graph.emplace(AVMEDIA_TYPE_VIDEO, source.str(), m_filters, "the pictures cannot be cropped or scaled so");
    }
    m_graph->Put(*frame);
    frame = m_graph->Take();
    if (!frame) throw HostError(ExitCode::Failed, "a picture got lost when it was cropped or scaled");
    frame->sample_aspect_ratio = m_pixelAspect;
}

}  // namespace Nifikral
