#include "host/studio/film_reader.h"

#include <algorithm>
#include <cmath>

#include "host/base/errors.h"
#include "host/disc/film_facts.h"
#include "host/run/run_options.h"
#include "host/studio/shared_frame.h"

namespace Nifikral {
namespace {

MediaSource::Options Opening(int threads, int enoughSide) {
    MediaSource::Options options;
    options.threads = threads;
    options.keepGoing = true;
    options.extras = true;
    options.largestSide = 16384;
    options.enoughSide = enoughSide;
    options.keyFrame = true;
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

FilmReader::FilmReader(std::string path, const MediaSource::Options& options)
    : m_path(std::move(path)), m_options(options) {
    m_source.emplace(m_path, m_options);
    m_facts.shape = m_source->Shape(m_source->FirstFrame());
    const AVRational rate = m_source->FrameRate();
    av_reduce(&m_facts.rate.num, &m_facts.rate.den, rate.num, rate.den, INT_MAX);
    m_facts.frames = std::max(1LL, m_source->EstimatedFrameCount());
    m_facts.seconds = m_facts.IsFilm() ? double(m_facts.frames) / av_q2d(m_facts.rate) : 0;
    m_isAtKeyFrame = m_facts.IsFilm();
    m_facts.sound = !m_source->AudioStreams().empty();
    m_facts.chapters = MarksOf(*m_source);
}

FilmReader::FilmReader(std::string path) : FilmReader(std::move(path), Opening(RunOptions().ThreadCount(), 0)) {}
FilmReader::FilmReader(std::string path, SourceFacts facts)
    : m_path(std::move(path)), m_options(Opening(RunOptions().ThreadCount(), 0)), m_facts(std::move(facts)) {}
FilmReader::FilmReader(std::string path, int enoughSide) : FilmReader(std::move(path), Opening(1, enoughSide)) {}

// Half a frame before it, since times are rounded.
double FilmReader::BeginOf(long long number) const {
    return number > 0 ? (double(number) - 0.5) / av_q2d(m_facts.rate) : 0;
}

void FilmReader::Open(long long number, bool keyFrame) {
    m_last.reset();
    m_lastNumber = -1;
    m_ended = false;
    const double begin = BeginOf(number);
    m_isAtKeyFrame = keyFrame;
    if (m_source && m_source->GoTo(begin, keyFrame)) return;
    m_options.begin = begin;
    m_options.keyFrame = keyFrame;
    m_source.emplace(m_path, m_options);
}

// Where the film's first key frame is its first frame, as in most, it is there before the decoder would hand it out.
void FilmReader::TakeKeyFrame() {
    std::optional<SourceStep> step = m_source->Next();
    if (!step || !step->frame) return;
    const double seconds = double(step->frame->pts) * av_q2d(m_source->VideoStream().time_base);
    if (std::llround(seconds * av_q2d(m_facts.rate)) != 0) return;
    m_last = std::move(step->frame);
    m_lastNumber = 0;
}

FramePtr FilmReader::At(long long number) {
    if (m_isAtKeyFrame && number == 0 && !m_last) TakeKeyFrame();
    if (m_last && m_lastNumber == number) return Referenced(*m_last);
    constexpr double stepSeconds = 2;
    const auto ahead = (long long)(stepSeconds * av_q2d(m_facts.rate));
    const auto isFar = [&] { return m_lastNumber < 0 ? number > ahead : number > m_lastNumber + ahead; };
    const auto skips = [&] { return m_last && number > m_lastNumber + 1 && !m_source->ReadsOnTo(BeginOf(number)); };
    if (m_isAtKeyFrame || !m_source || number < m_lastNumber || (!m_source->LacksTimes() && (isFar() || skips())))
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

FramePtr FilmReader::Near(long long number) {
    if (number > 0) Open(number, true);
    std::optional<SourceStep> step = m_source->Next();
    if (!step || !step->frame) throw HostError(ExitCode::Input, m_path + " has no picture that can be shown");
    return std::move(step->frame);
}

}  // namespace Nifikral
