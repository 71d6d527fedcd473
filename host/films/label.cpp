#include "host/films/label.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "host/base/log.h"
#include "host/films/readable_shade.h"
#include "host/films/text_renderer.h"

namespace Nifikral {
namespace {

// Parts of the font's size.
constexpr double sidePadding = 0.55, oneLine = 1.65, lineStep = 1.2, cornerRadius = 0.3;

int PartOf(double part, int size) { return int(std::lround(part * size)); }

// How much of a pixel lies within a box with round corners.
double Within(const FilmBox& box, double radius, int x, int y) {
    const auto beyond = [&](int place, int begin, int size) {
        const double middle = place + 0.5 - begin;
        return std::max({radius - middle, middle - (size - radius), 0.0});
    };
    const double across = beyond(x, box.left, box.width), down = beyond(y, box.top, box.height);
    return std::clamp(radius + 0.5 - std::sqrt(across * across + down * down), 0.0, 1.0);
}

void DrawShade(AVFrame& picture, const FilmBox& box, unsigned shade, double radius) {
    for (int y = std::max(box.top, 0); y < std::min(box.top + box.height, picture.height); ++y)
        for (int x = std::max(box.left, 0); x < std::min(box.left + box.width, picture.width); ++x) {
            std::uint8_t* const to = picture.data[0] + std::ptrdiff_t(y) * picture.linesize[0] + std::ptrdiff_t(x) * 4;
            for (int c = 0; c < 3; ++c) to[c] = std::uint8_t(shade >> 8 * c);
            to[3] = std::uint8_t(std::lround((shade >> 24) * Within(box, radius, x, y)));
        }
}

void DrawText(AVFrame& picture, const AVFrame& text, int left, int top, const FilmBox& box) {
    const int bottom = std::min({top + text.height, box.top + box.height, picture.height});
    const int right = std::min({left + text.width, box.left + box.width, picture.width});
    for (int y = std::max({top, box.top, 0}); y < bottom; ++y)
        for (int x = std::max({left, box.left, 0}); x < right; ++x) {
            const std::uint8_t* const from =
                text.data[0] + std::ptrdiff_t(y - top) * text.linesize[0] + std::ptrdiff_t(x - left) * 4;
            std::uint8_t* const to = picture.data[0] + std::ptrdiff_t(y) * picture.linesize[0] + std::ptrdiff_t(x) * 4;
            const int over = from[3] * 255, under = to[3] * (255 - from[3]);
            if (over + under == 0) continue;
            for (int c = 0; c < 3; ++c) to[c] = std::uint8_t((from[c] * over + to[c] * under) / (over + under));
            to[3] = std::uint8_t((over + under) / 255);
        }
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

}  // namespace

int LabelPadding(int fontSize) { return PartOf(sidePadding, fontSize); }
int LabelHeight(int fontSize, int lines) { return PartOf(oneLine + lineStep * (lines - 1), fontSize); }

int TextWidth(StyledText text, const std::string& words, int size) {
    text.text = words;
    text.size = size;
    return words.empty() ? 0 : RenderText(text)->width;
}

std::string BrokenInto(StyledText style, const std::string& words, int width, int lines, bool wholeWords) {
    style.text = words;
    // Words stay whole as long as they fit.
    if (lines > 1) style.text = BreakLines(style, width, false);
    if (!wholeWords && TextWidth(style, style.text, style.size) > width) style.text = BreakLines(style, width, true);
    if (std::count(style.text.begin(), style.text.end(), '\n') >= lines) return {};
    return TextWidth(style, style.text, style.size) <= width ? style.text : std::string();
}

std::string CutInto(const StyledText& style, const std::string& words, int width, int lines, const std::string& what) {
    std::string fitting = BrokenInto(style, words, width, lines);
    if (!fitting.empty()) return fitting;
    PrintWarning(what + " \"" + words + "\" is too long for its place and cut; give it fewer characters");
    constexpr char mark[] = "\xe2\x80\xa6";
    const auto firstBytes = [&](std::size_t count) {
        // No part of a character stays, and no blank before the mark.
        while (count > 0 && (static_cast<unsigned char>(words[count]) & 0xC0) == 0x80) --count;
        while (count > 0 && words[count - 1] == ' ') --count;
        return words.substr(0, count);
    };
    std::size_t fits = 0, tooLong = words.size();
    while (tooLong - fits > 1) {
        const std::size_t middle = (fits + tooLong) / 2;
        const std::string cut = BrokenInto(style, firstBytes(middle) + mark, width, lines);
        (cut.empty() ? tooLong : fits) = middle;
        if (!cut.empty()) fitting = cut;
    }
    return fitting.empty() ? mark : fitting;
}

void DrawLabel(AVFrame& picture, const Label& label) {
    const FilmBox& box = label.box;
    const int size = label.text.size;
    DrawShade(picture, box, ShadeFor(label.text.red, label.text.green, label.text.blue), cornerRadius * size);
    const std::vector<std::string> lines = LinesOf(label.text.text);
    const int step = PartOf(lineStep, size);
    int middle = box.top * 2 + box.height - step * (int(lines.size()) - 1);  // of a line, in half pixels
    for (const std::string& line : lines) {
        StyledText text = label.text;
        text.text = line;
        const FramePtr drawn = RenderText(text);
        const int left = label.centred ? (box.width - drawn->width) / 2 : LabelPadding(size);
        DrawText(picture, *drawn, box.left + left, (middle - drawn->height) / 2, box);
        middle += 2 * step;
    }
}

}  // namespace Nifikral
