#include "host/disc/subtitle_text.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "host/films/text_renderer.h"

namespace Nifikral {
namespace {

// As shares of the film's sides.
constexpr double widest = 0.84;
constexpr int linesInHeight = 15;
constexpr double lineStep = 1.25;  // in sizes of the font

}  // namespace

FramePtr PaintSubtitle(const std::string& text, bool italic, int width, int height) {
    StyledText line;
    line.text = text;
    line.style.italic = italic;
    line.style.outline = true;
    line.size = std::max(1, height / linesInHeight);
    line.red = line.green = line.blue = 255;
    const std::string broken = BreakLines(line, int(width * widest), true);
    const int step = int(line.size * lineStep);
    std::vector<FramePtr> pictures;
    int across = 1, down = 1;
    for (std::size_t begin = 0; begin <= broken.size();) {
        const std::size_t end = std::min(broken.find('\n', begin), broken.size());
        line.text = broken.substr(begin, end - begin);
        begin = end + 1;
        pictures.push_back(RenderText(line));
        across = std::max(across, pictures.back()->width);
        down = std::max(down, step * int(pictures.size() - 1) + pictures.back()->height);
    }
    FramePtr whole = NewPicture(AV_PIX_FMT_BGRA, across, down);
    for (int y = 0; y < down; ++y) std::memset(whole->data[0] + y * whole->linesize[0], 0, std::size_t(across) * 4);
    int top = 0;
    for (const FramePtr& picture : pictures) {
        const int left = (across - picture->width) / 2;
        for (int y = 0; y < picture->height; ++y) {
            const std::uint8_t* from = picture->data[0] + y * picture->linesize[0];
            std::uint8_t* to = whole->data[0] + (top + y) * whole->linesize[0] + left * 4;
            for (int x = 0; x < picture->width; ++x, from += 4, to += 4)
                if (from[3] > to[3]) std::copy_n(from, 4, to);
        }
        top += step;
    }
    return whole;
}

}  // namespace Nifikral
