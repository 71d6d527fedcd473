#include "host/studio/film_reader.h"

#include <algorithm>
#include <cmath>

#include "host/base/errors.h"
#include "host/run/run_options.h"
#include "host/studio/picture_cache.h"

namespace Nifikral {
namespace {

MediaSource::Options Opening(double begin) {
    MediaSource::Options options;
    options.threads = RunOptions().ThreadCount();
    options.keepGoing = true;
    options.audio = false;
    options.largestSide = 16384;
    options.begin = begin;
    return options;
}

}  // namespace

long long SourceFacts::FrameAt(double time) const {
    // A time that a page has worked out from a number is not to fall short of it by a last digit.
    const auto number = (long long)std::floor(time * av_q2d(rate) + 0.01);
    return std::clamp(number, 0LL, std::max(0LL, frames - 1));
}

long long SourceFacts::FramesBefore(double time) const {
    return std::clamp((long long)std::ceil(time * av_q2d(rate) - 0.01), 0LL, frames);
}

FilmReader::FilmReader(std::string path) : m_path(std::move(path)) {
    m_source.emplace(m_path, Opening(0));
    m_facts.shape = m_source->Shape(m_source->FirstFrame());
    const AVRational rate = m_source->FrameRate();
    av_reduce(&m_facts.rate.num, &m_facts.rate.den, rate.num, rate.den, INT_MAX);
    m_facts.frames = std::max(1LL, m_source->EstimatedFrameCount());
    m_facts.seconds = m_facts.IsFilm() ? double(m_facts.frames) / av_q2d(m_facts.rate) : 0;
}

void FilmReader::Open(long long number) {
    m_last.reset();
    m_lastNumber = -1;
    m_ended = false;
    // Half a frame before it, since times are rounded.
    const double begin = number > 0 ? (double(number) - 0.5) / av_q2d(m_facts.rate) : 0;
    m_source.emplace(m_path, Opening(begin));
}

FramePtr FilmReader::At(long long number) {
    constexpr double stepSeconds = 2;
    const auto ahead = (long long)(stepSeconds * av_q2d(m_facts.rate));
    if (!m_source || number < m_lastNumber || (m_lastNumber < 0 ? number > ahead : number > m_lastNumber + ahead))
        Open(number);
    while (!m_ended && (!m_last || m_lastNumber < number)) {
        std::optional<SourceStep> step = m_source->Next();
        if (!step || !step->frame) {
            m_ended = true;
            break;
        }
        const AVRational base = m_source->VideoStream().time_base;
        const double seconds = double(step->frame->pts) * av_q2d(base);
        m_last = std::move(step->frame);
        m_lastNumber = std::max(m_lastNumber + 1, std::llround(seconds * av_q2d(m_facts.rate)));
    }
    if (!m_last) throw HostError(ExitCode::Input, m_path + " has no picture at frame " + std::to_string(number));
    return Referenced(*m_last);
}

}  // namespace Nifikral
