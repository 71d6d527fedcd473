#include "host/disc/title_copy.h"

#include <cmath>
#include <cstdlib>

#include "host/base/interruption.h"
#include "host/base/progress.h"
#include "host/media/media_input.h"

namespace Nifikral {
namespace {

constexpr std::uint8_t pictureCode = 0x00, groupCode = 0xB8;

// Behind the first start code of this kind; null where there is none.
const std::uint8_t* FindHead(const AVPacket& packet, std::uint8_t code) {
    const std::uint8_t *at = packet.data, *const end = packet.data + packet.size;
    for (; end - at > 8; ++at)
        if (at[0] == 0 && at[1] == 0 && at[2] == 1 && at[3] == code) return at + 4;
    return nullptr;
}

// Gives pictures the times that follow from their order. Containers have those of some pictures alone.
class PictureClock {
 public:
    explicit PictureClock(AVRational rate) : m_rate(av_q2d(rate)), m_longest(0.6 * m_rate + 0.5) {}

    // False for a picture that is not where it has to be. `seconds`: its time, if the container has it.
    bool Place(AVPacket& packet, std::optional<double> seconds) {
        const std::uint8_t* const head = FindHead(packet, pictureCode);
        const bool begins = FindHead(packet, groupCode) != nullptr;
        if (!head || (m_count == 0 && !begins)) return false;
        if (begins) m_group = m_count;
        if (double(m_count - m_group) + 1 > m_longest) return false;
        const long long shown = m_group + (head[0] << 2 | head[1] >> 6);
        if (seconds) {
            const double first = *seconds - double(shown) / m_rate;
            if (std::isnan(m_first)) m_first = first;
            // Half a picture of another time would be one repeated, or left out.
            if (std::abs(first - m_first) * m_rate > 0.5) return false;
        }
        if (std::isnan(m_first)) return false;
        const long long begin = std::llround(m_first * m_rate);
        packet.pts = begin + shown;
        packet.dts = begin + m_count++ - 1;
        packet.duration = 1;
        // Sound may begin before the pictures, and times of chapters count from these.
        if (begins) m_keys.push_back(double(shown) / m_rate);
        return true;
    }

    const std::vector<double>& Keys() const { return m_keys; }

 private:
    double m_rate, m_longest;
    long long m_count = 0, m_group = 0;  // pictures so far, and those before this group
    double m_first = std::nan("");       // the time of what is shown first
    std::vector<double> m_keys;
};

}  // namespace

std::optional<std::vector<double>> CopyTitle(const std::string& path, const OutputOptions& output,
                                             const FilmProfile& profile) {
    MediaSource::Options options;
    options.extras = true;
    const MediaSource source(path, options);
    OutputTraits traits = TraitsOf(source, AV_PIX_FMT_YUV420P);
    traits.profile = &profile;
    const std::unique_ptr<MediaSink> sink = OpenSink(output, traits, false);
    const FfmpegListener listener;
    const InputPtr input = OpenInput(path, nullptr, nullptr, listener);
    const double origin = input->start_time == AV_NOPTS_VALUE ? 0 : double(input->start_time) / AV_TIME_BASE;
    const int video = source.VideoStream().index;
    PictureClock clock(profile.frameRate);
    Progress progress(source.EstimatedFrameCount());
    for (;;) {
        ThrowIfInterrupted();
        PacketPtr packet = NewPacket();
        if (av_read_frame(input.get(), packet.get()) < 0) break;
        const AVRational base = input->streams[packet->stream_index]->time_base;
        if (packet->stream_index == video) {
            std::optional<double> seconds;
            if (packet->pts != AV_NOPTS_VALUE) seconds = double(packet->pts) * av_q2d(base) - origin;
            if (!clock.Place(*packet, seconds)) return std::nullopt;
            sink->WriteCoded(std::move(packet), av_inv_q(profile.frameRate));
            progress.Advance();
        } else {
            const std::int64_t shift = std::llround(origin / av_q2d(base));
            if (packet->pts == AV_NOPTS_VALUE) packet->pts = packet->dts;
            if (packet->pts == AV_NOPTS_VALUE) continue;
            packet->pts -= shift;
            packet->dts = packet->pts;
            sink->WriteAudio(std::move(packet));
        }
    }
    if (clock.Keys().empty()) return std::nullopt;
    sink->Finish();
    return clock.Keys();
}

}  // namespace Nifikral
