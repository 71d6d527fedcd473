#include "host/run/region.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "host/base/nearest_names.h"
#include "host/base/split_text.h"
#include "host/media/media_source.h"
#include "host/media/picture_formats.h"

namespace Nifikral {
namespace {

constexpr std::uint8_t full = 255;

constexpr ParameterInfo column = {"", "", "", "pixels", {}, 1, Kind::Column};
constexpr ParameterInfo row = {"", "", "", "pixels", {}, 1, Kind::Row};
constexpr ParameterInfo length = {"", "", "", "pixels", {}, 1, Kind::Length};

struct ShapeForm {
    const char *name, *numbers;
    std::vector<const ParameterInfo*> kinds;
};
// In the order of Region::Shape.
const ShapeForm& FormOf(std::size_t shape) {
    static const ShapeForm forms[] = {{"circle", "X,Y,R", {&column, &row, &length}},
                                      {"ellipse", "X,Y,RX,RY", {&column, &row, &column, &row}},
                                      {"rectangle", "X,Y,WIDTH,HEIGHT", {&column, &row, &column, &row}}};
    return forms[shape];
}
constexpr std::size_t shapeCount = 3;

// How far a point lies inside an ellipse, in pixels; below 0 outside. Exact on the axes, and near the edge to the
// first order.
double DepthInEllipse(double dx, double dy, double rx, double ry) {
    const double u = dx / rx, v = dy / ry, distance = std::sqrt(u * u + v * v);
    if (distance == 0) return std::min(rx, ry);
    const double slope = std::sqrt(u * u / (rx * rx) + v * v / (ry * ry));
    return distance * (1 - distance) / slope;
}

std::uint8_t ShareAt(double depth, double soft) {
    if (depth < 0) return 0;
    if (depth >= soft) return full;
    return std::uint8_t(std::lround(Eased(Easing::InOut, depth / soft) * full));
}

// The samples of so many that lie between two places, and no further ones than it takes.
struct Span {
    int begin, end;
};
Span SpanOf(double low, double high, int count) {
    return {int(std::clamp(std::floor(low), 0.0, double(count))), int(std::clamp(std::ceil(high), 0.0, double(count)))};
}

// A quotient by 255, of what fits into 16 bits.
std::uint16_t Divided(std::uint16_t value) { return std::uint16_t(std::uint16_t(value + 1 + (value >> 8)) >> 8); }
std::uint8_t Mixed(std::uint8_t over, std::uint8_t under, std::uint8_t share) {
    return std::uint8_t(Divided(std::uint16_t(over * share + under * (full - share) + full / 2)));
}

// The mean of what each sample covers; at an odd edge that is less than elsewhere.
Coverage::Plane Reduced(const Coverage::Plane& whole, int columnShift, int rowShift) {
    Coverage::Plane reduced{AV_CEIL_RSHIFT(whole.width, columnShift), AV_CEIL_RSHIFT(whole.height, rowShift), {}};
    reduced.shares.resize(std::size_t(reduced.width) * std::size_t(reduced.height));
    std::uint8_t* to = reduced.shares.data();
    for (int y = 0; y < reduced.height; ++y) {
        const int top = y << rowShift, bottom = std::min(top + (1 << rowShift), whole.height);
        for (int x = 0; x < reduced.width; ++x) {
            const int left = x << columnShift, right = std::min(left + (1 << columnShift), whole.width);
            const int count = (bottom - top) * (right - left);
            int sum = count / 2;
            for (int j = top; j < bottom; ++j) {
                const std::uint8_t* const row = whole.shares.data() + std::ptrdiff_t(j) * whole.width;
                for (int i = left; i < right; ++i) sum += row[i];
            }
            *to++ = std::uint8_t(sum / count);
        }
    }
    return reduced;
}

}  // namespace

const char areaForms[] =
    "circle,X,Y,R, ellipse,X,Y,RX,RY, rectangle,X,Y,WIDTH,HEIGHT, or the file of a picture that is white there";

Region::Region(const std::string& area, const std::string& soft, bool outside) : m_outside(outside) {
    const std::vector<std::string> words = Split(area, ',');
    for (std::size_t i = 0; i < shapeCount; ++i) {
        const ShapeForm& form = FormOf(i);
        if (words.front() != form.name) continue;
        if (words.size() != form.kinds.size() + 1)
            throw std::invalid_argument("\"" + area + "\" is not " + form.name + "," + form.numbers);
        m_shape = Shape(i);
        for (std::size_t n = 0; n < form.kinds.size(); ++n)
            m_numbers.emplace_back(words[n + 1], PropertyType::Real, *form.kinds[n]);
    }
    if (m_shape == Shape::Picture) {
        if (area.empty() || words.size() > 1)
            throw std::invalid_argument("\"" + area + "\" is no area" +
                                        DidYouMean(words.front(), {"circle", "ellipse", "rectangle"}) + " (give " +
                                        areaForms + ")");
        if (!soft.empty()) throw std::invalid_argument("soft is for shapes; a picture brings its own soft edges");
        m_file = area;
        return;
    }
    m_numbers.emplace_back(soft.empty() ? "0" : soft, PropertyType::Real, length);
    if (m_numbers.back().Numbers().front() < 0) throw std::invalid_argument("soft=" + soft + " is below 0");
}

bool Region::Varies() const {
    return std::any_of(m_numbers.begin(), m_numbers.end(), [](const auto& number) { return number.Varies(); });
}

bool Region::NeedsFrameCount() const {
    return std::any_of(m_numbers.begin(), m_numbers.end(), [](const auto& number) { return number.NeedsFrameCount(); });
}

Region Region::Resized(const Scale& from, const Scale& to) const {
    Region result = *this;
    for (ParameterValue& number : result.m_numbers) number = number.Resized(from, to);
    return result;
}

Region Region::On(const Scale& scale, AVPixelFormat format) const {
    Region result = *this;
    for (ParameterValue& number : result.m_numbers) number = number.On(scale);
    result.m_width = scale.width;
    result.m_height = scale.height;
    result.m_format = format;
    if (!Varies()) result.m_still = result.Render(0, 1);
    return result;
}

std::shared_ptr<const Coverage> Region::At(long long frame, long long frameCount) const {
    return m_still ? m_still : Render(frame, frameCount);
}

std::shared_ptr<const Coverage> Region::Render(long long frame, long long frameCount) const {
    const auto coverage = std::make_shared<Coverage>();
    coverage->whole = {m_width, m_height, std::vector<std::uint8_t>(std::size_t(m_width) * std::size_t(m_height))};
    std::uint8_t* share = coverage->whole.shares.data();
    if (m_shape == Shape::Picture) {
        const FramePtr grey = LoadGrey();
        for (int y = 0; y < m_height; ++y, share += m_width)
            std::memcpy(share, grey->data[0] + std::ptrdiff_t(y) * grey->linesize[0], std::size_t(m_width));
    } else {
        std::vector<double> n;
        for (const ParameterValue& number : m_numbers) n.push_back(number.NumberAt(frame, frameCount));
        const double soft = n.back();
        const auto depth = [&](double x, double y) {
            if (m_shape == Shape::Rectangle) return std::min({x - n[0], y - n[1], n[0] + n[2] - x, n[1] + n[3] - y});
            const double rx = n[2], ry = m_shape == Shape::Circle ? rx : n[3];
            return rx > 0 && ry > 0 ? DepthInEllipse(x - n[0], y - n[1], rx, ry) : -1;
        };
        const bool around = m_shape != Shape::Rectangle;
        const double rx = n[2], ry = m_shape == Shape::Circle ? rx : n[3];
        const Span columns = SpanOf(around ? n[0] - rx : n[0], n[0] + rx, m_width);
        const Span rows = SpanOf(around ? n[1] - ry : n[1], n[1] + ry, m_height);
        // Pixels are judged by their centres.
        for (int y = rows.begin; y < rows.end; ++y)
            for (int x = columns.begin; x < columns.end; ++x)
                share[std::ptrdiff_t(y) * m_width + x] = ShareAt(depth(x + 0.5, y + 0.5), soft);
    }
    if (m_outside)
        for (std::uint8_t& value : coverage->whole.shares) value = std::uint8_t(full - value);
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(m_format);
    if (description.log2_chroma_w + description.log2_chroma_h > 0)
        coverage->chroma = Reduced(coverage->whole, description.log2_chroma_w, description.log2_chroma_h);
    return coverage;
}

FramePtr Region::LoadGrey() const {
    MediaSource source(m_file, {.range = {0, 0}, .audio = false});
    FramePtr picture = std::move(source.Next()->frame);
    PictureShape shape;
    shape.format = AV_PIX_FMT_GRAY8;
    shape.width = m_width;
    shape.height = m_height;
    shape.fullRange = true;
    PictureConverter(shape).Convert(picture);
    return picture;
}

void Compose(AVFrame& frame, const AVFrame& original, const Coverage& coverage) {
    const auto format = AVPixelFormat(frame.format);
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
    for (int p = 0; p < av_pix_fmt_count_planes(format); ++p) {
        const bool reduced = (p == 1 || p == 2) && !coverage.chroma.shares.empty();
        const Coverage::Plane& plane = reduced ? coverage.chroma : coverage.whole;
        const int step = description.comp[p].step, width = plane.width;
        for (int y = 0; y < plane.height; ++y) {
            std::uint8_t* __restrict to = frame.data[p] + std::ptrdiff_t(y) * frame.linesize[p];
            const std::uint8_t* __restrict from = original.data[p] + std::ptrdiff_t(y) * original.linesize[p];
            const std::uint8_t* __restrict share = plane.shares.data() + std::ptrdiff_t(y) * width;
            if (step == 1) {
                for (int x = 0; x < width; ++x) to[x] = Mixed(to[x], from[x], share[x]);
                continue;
            }
            for (int x = 0; x < width; ++x, to += step, from += step)
                for (int i = 0; i < step && share[x] != full; ++i) to[i] = Mixed(to[i], from[i], share[x]);
        }
    }
}

}  // namespace Nifikral
