#include "host/disc/film_moments.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/media/media_input.h"
#include "host/media/picture_formats.h"

namespace Nifikral {
namespace {

constexpr double chapterSeconds = 300, shortestEnd = 150;
constexpr int sampleWidth = 160, sampleHeight = 90;

// A picture of the film, small and grey.
struct Sample {
    double seconds = 0;
    FramePtr picture;

    const std::uint8_t* Row(int y) const { return picture->data[0] + std::ptrdiff_t(y) * picture->linesize[0]; }
};

// Reads samples from any moment on. What is damaged it passes over.
class Sampler {
 public:
    explicit Sampler(const std::string& path) : m_small({AV_PIX_FMT_GRAY8, sampleWidth, sampleHeight}) {
        m_input = OpenInput(path, nullptr, nullptr, m_listener);
        const AVCodec* codec = nullptr;
        const int index = av_find_best_stream(m_input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
        if (index < 0) throw HostError(ExitCode::Input, path + " holds no video that can be decoded; convert it first");
        for (unsigned i = 0; i < m_input->nb_streams; ++i)
            if (int(i) != index) m_input->streams[i]->discard = AVDISCARD_ALL;
        m_video = m_input->streams[index];
        m_decoder = Require<CodecPtr>(avcodec_alloc_context3(codec));
        if (avcodec_parameters_to_context(m_decoder.get(), m_video->codecpar) < 0) throw std::bad_alloc();
        m_decoder->pkt_timebase = m_video->time_base;
        m_decoder->thread_count = 0;
        // Enough to see what is there, in half the time.
        m_decoder->skip_frame = AVDISCARD_NONREF;
        m_decoder->skip_loop_filter = AVDISCARD_ALL;
        if (avcodec_open2(m_decoder.get(), codec, nullptr) < 0)
            throw HostError(ExitCode::Input, path + ": its decoder does not start; convert it first");
        if (m_input->start_time != AV_NOPTS_VALUE) m_start = double(m_input->start_time) / AV_TIME_BASE;
    }

    // Goes to the key frame before a moment; stays where the file cannot be sought in.
    void Seek(double seconds) {
        const auto time = std::int64_t((seconds + m_start) * AV_TIME_BASE);
        if (avformat_seek_file(m_input.get(), -1, INT64_MIN, time, time, 0) < 0) return;
        avcodec_flush_buffers(m_decoder.get());
        m_ended = false;
    }

    std::optional<Sample> Next() {
        for (;;) {
            ThrowIfInterrupted();
            FramePtr frame = NewFrame();
            const int error = avcodec_receive_frame(m_decoder.get(), frame.get());
            if (error == AVERROR_EOF || (error < 0 && m_ended)) return std::nullopt;
            if (error >= 0) {
                const double time = double(frame->best_effort_timestamp) * av_q2d(m_video->time_base) - m_start;
                m_small.Convert(frame);
                return Sample{std::max(0.0, time), std::move(frame)};
            }
            const PacketPtr packet = NewPacket();
            m_ended = av_read_frame(m_input.get(), packet.get()) < 0;
            if (m_ended || packet->stream_index == m_video->index)
                avcodec_send_packet(m_decoder.get(), m_ended ? nullptr : packet.get());
        }
    }

 private:
    FfmpegListener m_listener;
    InputPtr m_input;
    AVStream* m_video = nullptr;
    CodecPtr m_decoder;
    PictureConverter m_small;
    double m_start = 0;
    bool m_ended = false;
};

// What is to be seen in a picture, in levels of grey.
struct Look {
    double mean = 0, deviation = 0;
    double detail = 0;  // between neighbours in a row: rows of two fields differ in every motion

    bool IsClear() const { return mean > 40 && mean < 225 && deviation > 12; }
};

Look LookAt(const Sample& sample) {
    constexpr int apart = 2;
    double sum = 0, squares = 0, steps = 0;
    for (int y = 0; y < sampleHeight; ++y) {
        const std::uint8_t* const row = sample.Row(y);
        for (int x = 0; x < sampleWidth; ++x) {
            sum += row[x];
            squares += row[x] * row[x];
            if (x >= apart) steps += std::abs(row[x] - row[x - apart]);
        }
    }
    constexpr double count = sampleWidth * sampleHeight;
    const double mean = sum / count;
    return {mean, std::sqrt(std::max(0.0, squares / count - mean * mean)), steps / count};
}

double Difference(const Sample& a, const Sample& b) {
    double sum = 0;
    for (int y = 0; y < sampleHeight; ++y)
        for (int x = 0; x < sampleWidth; ++x) sum += std::abs(a.Row(y)[x] - b.Row(y)[x]);
    return sum / (sampleWidth * sampleHeight);
}

// The moment within reach of another at which the picture changes most abruptly; that other where it never does.
double FindCut(Sampler& film, double at) {
    constexpr double reach = 10, leastChange = 8;
    double found = at, best = leastChange, before = 0;
    std::optional<Sample> last;
    film.Seek(at - reach);
    while (std::optional<Sample> sample = film.Next()) {
        if (sample->seconds > at + reach) break;
        if (last && last->seconds >= at - reach) {
            const double change = Difference(*last, *sample);
            // Motion changes one picture after the other; a cut stands out. Of two alike the nearer counts.
            const double score = (change - before) * (1 - 0.5 * std::abs(sample->seconds - at) / reach);
            if (score > best) {
                best = score;
                found = sample->seconds;
            }
            before = change;
        }
        last = std::move(sample);
    }
    return found;
}

double PartSeconds(double seconds) { return std::max(chapterSeconds, seconds / double(mostChapters - 1)); }

}  // namespace

double FindThumbnail(const std::string& path, double seconds, double shown) {
    constexpr int tries = 8;
    const double first = 0.05 * seconds, last = std::max(0.5 * seconds, std::min(0.85 * seconds, seconds - shown)),
                 apart = (last - first) / (tries - 1);
    struct Moment {
        double seconds;
        Look look;
    };
    std::vector<Moment> moments;
    Sampler film(path);
    for (int i = 0; i < tries; ++i) {
        const double at = first + i * apart;
        film.Seek(at);
        std::optional<Sample> sample = film.Next();
        // A key frame is had at once, and is as good where it is not that of the try before.
        const double early = std::max(first, at - apart / 2);
        while (sample && sample->seconds < early) sample = film.Next();
        if (sample) moments.push_back({sample->seconds, LookAt(*sample)});
    }
    const auto anyClear = std::any_of(moments.begin(), moments.end(), [](const Moment& m) { return m.look.IsClear(); });
    if (anyClear) std::erase_if(moments, [](const Moment& m) { return !m.look.IsClear(); });
    double most = 0;
    for (const Moment& moment : moments) most = std::max(most, moment.look.detail);
    constexpr double nearlyAsSharp = 0.8;
    for (const Moment& moment : moments)
        if (moment.look.detail >= nearlyAsSharp * most) return moment.seconds;
    return 0;
}

std::vector<DiscChapter> FindChapters(const std::string& path, double seconds) {
    std::vector<DiscChapter> chapters;
    const double part = PartSeconds(seconds);
    if (seconds < part + shortestEnd) return chapters;
    Sampler film(path);
    chapters.emplace_back();
    for (double at = part; at <= seconds - shortestEnd; at += part) chapters.push_back({FindCut(film, at), {}});
    return chapters;
}

std::vector<DiscChapter> ChaptersOfShow(double seconds, double period) {
    std::vector<DiscChapter> chapters;
    const double part = std::max(1.0, std::round(PartSeconds(seconds) / period)) * period;
    if (seconds < part + shortestEnd) return chapters;
    for (double at = 0; at <= seconds - shortestEnd; at += part) chapters.push_back({at, {}});
    return chapters;
}

}  // namespace Nifikral
