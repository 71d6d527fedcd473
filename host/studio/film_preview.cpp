#include "host/studio/film_preview.h"

#include <algorithm>

#include "host/media/picture_formats.h"
#include "host/studio/preview_coding.h"
#include "host/studio/preview_source.h"
#include "host/studio/still_preview.h"

namespace Nifikral {

void FilmView::Begin(const Prepare& prepare) {
    m_frames.reset();
    m_film.reset();
    m_film.emplace(prepare());
    // As a video is made.
    m_frames.emplace(*m_film->generator, m_film->film, EffectFormat(AV_PIX_FMT_YUV420P, false));
}

std::string FilmView::Frame(const std::string& key, long long number, int width, const Prepare& prepare,
                            const ViewTurn& turn) {
    const std::string own = key + "/" + std::to_string(width);
    if (m_key != own || !m_frames) {
        m_key.clear();
        m_made.clear();
        m_bytes = 0;
        Begin(prepare);
        m_key = own;
    }
    number = std::clamp(number, 0LL, m_film->film.frames - 1);
    if (const auto made = m_made.find(number); made != m_made.end()) return made->second;
    if (m_frames->Number() > number && !m_film->film.seeks) Begin(prepare);
    if (m_film->film.seeks && m_frames->Number() != number) m_frames->GoTo(number);
    while (m_frames->Number() < number) {
        turn.RequireNewest();
        m_frames->Make();
    }
    const FramePtr frame = m_frames->Make();
    std::string picture = JpegOf(*Scaled(*frame, ShownShape(ShapeOf(*frame), width)));
    constexpr std::size_t mostBytes = 32 << 20;
    if (m_bytes + picture.size() < mostBytes) {
        m_bytes += picture.size();
        m_made[number] = picture;
    }
    return picture;
}

}  // namespace Nifikral
