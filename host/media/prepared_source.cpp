#include "host/media/prepared_source.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>

#include "host/media/frame_rate.h"

namespace Nifikral {
namespace {

// Where frames are counted anew, the input's own numbers do not matter.
MediaSource::Options Opening(MediaSource::Options options, const Preparation& preparation) {
    if (!preparation.rate.empty()) options.range = options.chunk = {};
    return options;
}

AVRational PixelAspect(const MediaSource& source) {
    const AVRational own = source.FirstFrame().sample_aspect_ratio;
    return own.num ? own : source.VideoStream().sample_aspect_ratio;
}

}  // namespace

PreparedSource::PreparedSource(const std::string& path, const MediaSource::Options& options,
                               const Preparation& preparation, bool evenSides)
    : m_path(path),
      m_options(options),
      m_preparation(preparation),
      m_rate(preparation.rate.empty() ? AVRational{0, 1} : RequireFrameRate(preparation.rate)),
      m_source(path, Opening(options, preparation)),
      m_reshape(preparation, m_source.FirstFrame(), PixelAspect(m_source), evenSides),
      m_shape(m_source.Shape(m_source.FirstFrame())) {
    const AVFrame& first = m_source.FirstFrame();
    if (m_reshape.IsNeeded()) {
        FramePtr trial = Require<FramePtr>(av_frame_clone(&first));
        Reshaper(m_reshape).Apply(trial);
        m_shape = m_source.Shape(*trial);
    }
    if (m_rate.num == 0) return;
    const AVRational base = m_source.VideoStream().time_base;
    std::ostringstream source, filters;
    source << "video_size=" << first.width << "x" << first.height << ":pix_fmt=" << first.format
           << ":time_base=" << base.num << "/" << base.den;
    if (first.interlaced_frame) filters << "bwdif=mode=send_frame:deint=interlaced,";
    filters << "fps=" << m_rate.num << "/" << m_rate.den;
    m_timing.emplace(AVMEDIA_TYPE_VIDEO, source.str(), filters.str(), path + ": its frame rate cannot be changed");
}

OutputTraits PreparedSource::Traits(AVPixelFormat preferred) const {
    OutputTraits traits = TraitsOf(m_source, preferred);
    traits.source = m_shape;
    traits.pixelAspect = m_reshape.PixelAspect();
    if (!m_timing) return traits;
    traits.frameRate = m_rate;
    traits.timeBase = av_inv_q(m_rate);
    traits.fieldOrder = AV_FIELD_PROGRESSIVE;
    return traits;
}

long long PreparedSource::EstimatedFrameCount() const {
    const long long count = m_source.EstimatedFrameCount();
    if (!m_timing) return count;
    const auto all = std::llround(double(count) * av_q2d(av_div_q(m_rate, m_source.FrameRate())));
    return std::max(0LL, std::min(all - 1, m_options.range.last) - m_options.range.first + 1);
}

long long PreparedSource::CountFrames(const FrameRange& range) const {
    if (!m_timing) return m_source.CountFrames(range);
    if (m_path == "-") return 0;
    // Which frames there are follows from the times of the pictures, and these from their decoding.
    MediaSource::Options options = m_options;
    options.range = options.chunk = {};
    options.audio = false;
    PreparedSource again(m_path, options, {"", "", m_preparation.rate}, false);
    long long count = 0;
    while (count <= range.last && again.PullFrame()) ++count;
    return std::max(0LL, count - range.first);
}

FramePtr PreparedSource::PullSource() {
    std::optional<SourceStep> step = m_source.Next();
    if (step)
        for (PacketPtr& packet : step->audio) m_audio.push_back(std::move(packet));
    m_sourceEnded = !step || !step->frame;
    if (m_sourceEnded) return nullptr;
    m_sourceEnd = step->frame->pts + step->frame->pkt_duration;
    return std::move(step->frame);
}

FramePtr PreparedSource::PullFrame() {
    if (m_begin == AV_NOPTS_VALUE) {
        FramePtr first = PullSource(), second = PullSource();
        if (!second) {
            // A single picture has no rate of its own.
            m_begin = first->pts = 0;
            first->pkt_duration = 1;
            return first;
        }
        m_timing->Put(*first);
        m_timing->Put(*second);
    }
    for (;;) {
        if (FramePtr frame = m_timing->Take()) {
            if (m_begin == AV_NOPTS_VALUE) m_begin = frame->pts;
            frame->pkt_duration = 1;
            return frame;
        }
        if (m_sourceEnded) return nullptr;
        if (const FramePtr frame = PullSource())
            m_timing->Put(*frame);
        else
            m_timing->End(m_sourceEnd);
    }
}

double PreparedSource::Seconds(long long number) const { return double(m_begin + number) / av_q2d(m_rate); }

std::vector<PacketPtr> PreparedSource::TakeAudio() {
    const FrameRange& range = m_options.range;
    const double begin = range.first > 0 ? Seconds(range.first) : -std::numeric_limits<double>::infinity();
    const double end =
        range.last != FrameRange::noEnd ? Seconds(range.last + 1) : std::numeric_limits<double>::infinity();
    std::vector<PacketPtr> taken;
    for (PacketPtr& packet : m_audio) {
        const AVStream* stream = nullptr;
        for (const AVStream* const candidate : m_source.AudioStreams())
            if (candidate->index == packet->stream_index) stream = candidate;
        if (!stream) continue;
        const double time = double(packet->pts) * av_q2d(stream->time_base);
        if (time < begin || time >= end) continue;
        const std::int64_t shift =
            range.first > 0 ? av_rescale_q(m_begin + range.first, av_inv_q(m_rate), stream->time_base) : 0;
        if (packet->pts != AV_NOPTS_VALUE) packet->pts -= shift;
        if (packet->dts != AV_NOPTS_VALUE) packet->dts -= shift;
        taken.push_back(std::move(packet));
    }
    m_audio.clear();
    return taken;
}

std::vector<PacketPtr> PreparedSource::AudioUntil(double seconds) {
    if (!m_timing) return m_source.AudioUntil(seconds);
    if (m_begin == AV_NOPTS_VALUE) PullFrame();
    const double origin = m_options.range.first > 0 ? Seconds(m_options.range.first) : 0;
    for (PacketPtr& packet : m_source.AudioUntil(seconds + origin)) m_audio.push_back(std::move(packet));
    return TakeAudio();
}

std::optional<SourceStep> PreparedSource::Next() {
    if (!m_timing) return m_source.Next();
    const FrameRange &range = m_options.range, &chunk = m_options.chunk;
    while (!m_finished) {
        if (m_number > std::min(range.last, chunk.last)) {
            // Files interleave their streams within about a second.
            const double end = Seconds(m_number) + 1, base = av_q2d(m_source.VideoStream().time_base);
            while (double(m_sourceEnd) * base < end && PullFrame()) {
            }
            m_finished = true;
            return SourceStep{nullptr, 0, TakeAudio()};
        }
        FramePtr frame = PullFrame();
        if (!frame) {
            ReportEnd(range, chunk, m_number, m_path);
            m_finished = true;
            return SourceStep{nullptr, 0, TakeAudio()};
        }
        const long long number = m_number++;
        if (number < std::max(range.first, chunk.first)) continue;
        frame->pts = range.first > 0 ? number - range.first : m_begin + number;
        return SourceStep{std::move(frame), number, TakeAudio()};
    }
    return std::nullopt;
}

}  // namespace Nifikral
