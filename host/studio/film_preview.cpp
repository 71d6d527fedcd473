#include "host/studio/film_preview.h"

#include <algorithm>

#include "host/base/errors.h"
#include "host/media/picture_formats.h"
#include "host/studio/preview_coding.h"
#include "host/studio/preview_source.h"
#include "host/studio/still_preview.h"

namespace Nifikral {

void FilmView::Begin(const FilmWish& wish) {
    m_frames.reset();
    m_film.reset();
    m_film.emplace(wish.prepare());
    // As a video is made.
    m_frames.emplace(*m_film->generator, m_film->film, EffectFormat(AV_PIX_FMT_YUV420P, false));
}

void FilmView::GoTo(const FilmWish& wish, long long number, const ViewTurn& turn) {
    if (m_frames->Number() > number && !m_frames->GoTo(number)) Begin(wish);
    // Videos are read on the way.
    constexpr long long step = 25;
    while (m_frames->Number() < number) {
        turn.RequireNewest();
        static_cast<void>(m_frames->GoTo(std::min(number, m_frames->Number() + step)));
    }
}

FramePtr FilmView::Made(const FilmWish& wish, long long number, const ViewTurn& turn) {
    for (;;) try {
            GoTo(wish, std::min(number, m_film->film.frames - 1), turn);
            return m_frames->Make();
        } catch (const HostError&) {
            if (!wish.mends || !wish.mends(number)) throw;
            Begin(wish);
        }
}

std::string FilmView::Frame(const FilmWish& wish, FilmFrames& made, const ViewTurn& turn) {
    std::string key = wish.key + "/" + std::to_string(wish.width);
    if (m_key != key || !m_frames) {
        m_key.clear();
        Begin(wish);
        m_name = std::to_string(std::hash<std::string>()(key)) + "/" + std::to_string(key.size()) + "/";
        m_key = std::move(key);
    }
    const long long number = std::clamp(wish.number, 0LL, m_film->film.frames - 1);
    const std::string name = m_name + std::to_string(number);
    if (std::string picture = made.Find(name); !picture.empty()) return picture;
    const FramePtr frame = Made(wish, number, turn);
    std::string picture = JpegOf(*Scaled(*frame, ShownShape(ShapeOf(*frame), wish.width)));
    made.Keep(name, picture, picture.size());
    return picture;
}

}  // namespace Nifikral
