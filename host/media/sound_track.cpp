#include "host/media/sound_track.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <deque>
#include <filesystem>
#include <functional>

#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/media/ffmpeg_log.h"
#include "host/media/sound_decoder.h"

namespace Nifikral {
namespace {

[[noreturn]] void Refuse(const std::string& path, const std::string& what) {
    throw HostError(ExitCode::Input, path + what);
}

struct FreeFormat {
    void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};

// A file's sound, its other streams left aside.
struct SoundInput {
    explicit SoundInput(const std::string& path);
    // Null behind the last one.
    PacketPtr Next() const;

    InputPtr input;
    AVStream* stream = nullptr;
};

SoundInput::SoundInput(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) Refuse(path, ": no such file; check the name");
    if (std::filesystem::is_directory(path, error)) Refuse(path, " is a folder; name a file with sound");
    const FfmpegListener listener;
    AVFormatContext* context = nullptr;
    const bool opened = avformat_open_input(&context, ("file:" + path).c_str(), nullptr, nullptr) >= 0;
    input.reset(opened ? context : nullptr);
    if (!input || avformat_find_stream_info(input.get(), nullptr) < 0) {
        const std::string& complaint = listener.Complaint();
        Refuse(path, " is no sound that can be read" + (complaint.empty() ? "" : " (" + complaint + ")") +
                         "; give a file such as .mp3, .m4a, .flac or .wav");
    }
    const AVCodec* codec = nullptr;
    const int index = av_find_best_stream(input.get(), AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
    if (index < 0) Refuse(path, " holds no sound that can be decoded; give a file that does");
    for (unsigned i = 0; i < input->nb_streams; ++i)
        if (int(i) != index) input->streams[i]->discard = AVDISCARD_ALL;
    stream = input->streams[index];
}

PacketPtr SoundInput::Next() const {
    for (;;) {
        ThrowIfInterrupted();
        PacketPtr packet = NewPacket();
        const int error = av_read_frame(input.get(), packet.get());
        if (error == AVERROR_EOF) return nullptr;
        if (error < 0) Refuse(input->url, ": its sound cannot be read (" + ErrorText(error) + "); convert it first");
        if (packet->stream_index == stream->index) return packet;
    }
}

constexpr int sampleRate = 48000, channels = 2;

std::int64_t Samples(double seconds) {
    constexpr double longest = 1e6;
    return std::llround(std::min(seconds, longest) * sampleRate);
}

// 0 at `begin`, 1 at `end`, and so beyond.
float Ramp(std::int64_t at, std::int64_t begin, std::int64_t end) {
    return end > begin ? std::clamp(float(at - begin) / float(end - begin), 0.0f, 1.0f) : 1.0f;
}

// A piece, decoded as far as it is needed.
class PieceReader {
 public:
    explicit PieceReader(const SoundPiece& piece)
        : m_begin(Samples(piece.begin)),
          m_end(m_begin + Samples(piece.length)),
          m_fadeIn(Samples(piece.fadeIn)),
          m_fadeOut(Samples(piece.fadeOut)),
          m_input(piece.path),
          m_decoder(*m_input.stream, {}, piece.path, {}, true) {
        while (!m_decoder.HasDecoded() && Decode()) {
        }
        if (!m_decoder.HasDecoded())
            Refuse(piece.path, " holds no sound that can be decoded; it is damaged or cut short");
    }

    // Adds what is heard from a time on, in samples of the film; each call goes on from the one before. False when
    // nothing comes any more.
    bool AddTo(std::vector<float>& mix, std::int64_t from) {
        const std::int64_t to = from + std::int64_t(mix.size()) / channels;
        const std::int64_t last = std::min(to, m_end);
        while (m_begin + m_decoded < last && Decode()) {
        }
        for (std::int64_t at = std::max(from, m_begin + m_dropped); at < last; ++at) {
            const auto place = std::size_t(at - m_begin - m_dropped) * channels;
            if (place >= m_samples.size()) break;
            const float gain = Ramp(at, m_begin, m_begin + m_fadeIn) * Ramp(m_end - at, 0, m_fadeOut);
            for (int c = 0; c < channels; ++c)
                mix[std::size_t(at - from) * channels + std::size_t(c)] += gain * m_samples[place + std::size_t(c)];
        }
        const auto done = std::size_t(std::clamp<std::int64_t>(to - m_begin - m_dropped, 0, m_decoded - m_dropped));
        m_samples.erase(m_samples.begin(), m_samples.begin() + std::ptrdiff_t(done * channels));
        m_dropped += std::int64_t(done);
        return to < m_end && (!m_ended || to < m_begin + m_decoded);
    }

 private:
    bool Decode() {
        if (m_ended) return false;
        const PacketPtr packet = m_input.Next();
        m_ended = !packet;
        m_decoder.Put(packet.get(), [this](const AVFrame& frame) {
            // Silence where the file has a gap; what comes twice is left out.
            const std::int64_t overlap = std::clamp<std::int64_t>(m_decoded - frame.pts, 0, frame.nb_samples);
            if (frame.pts > m_decoded)
                m_samples.resize(m_samples.size() + std::size_t(frame.pts - m_decoded) * channels);
            const auto* const samples = reinterpret_cast<const float*>(frame.data[0]);
            m_samples.insert(m_samples.end(), samples + overlap * channels, samples + frame.nb_samples * channels);
            m_decoded = std::max(m_decoded, frame.pts + frame.nb_samples);
        });
        return !m_ended;
    }

    std::int64_t m_begin, m_end;  // in the film
    std::int64_t m_fadeIn, m_fadeOut;
    SoundInput m_input;
    SoundDecoder m_decoder;
    std::deque<float> m_samples;
    std::int64_t m_dropped = 0, m_decoded = 0;  // of the piece: where the samples begin and end
    bool m_ended = false;
};

}  // namespace

struct SoundTrack::Parts {
    Parts(const std::vector<SoundPiece>& pieces, const SoundCut& cut);

    std::vector<PacketPtr> Until(double seconds);
    PacketPtr Mix();

    std::vector<SoundPiece> later;  // by their begin, the first one last; files are open only while they are heard
    std::vector<std::unique_ptr<PieceReader>> heard;
    SoundCut cut;
    std::int64_t next;                                    // in samples of the film
    std::unique_ptr<AVFormatContext, FreeFormat> holder;  // of the stream that containers get
};

SoundTrack::Parts::Parts(const std::vector<SoundPiece>& pieces, const SoundCut& soundCut)
    : later(pieces),
      cut(soundCut),
      next(Samples(cut.begin)),
      holder(Require<decltype(holder)>(avformat_alloc_context())) {
    std::ranges::stable_sort(later, std::ranges::greater(), &SoundPiece::begin);
    const SoundForm form;
    AVStream* const stream = avformat_new_stream(holder.get(), nullptr);
    if (!stream) throw std::bad_alloc();
    stream->time_base = {1, sampleRate};
    AVCodecParameters& coding = *stream->codecpar;
    coding.codec_type = AVMEDIA_TYPE_AUDIO;
    coding.codec_id = av_get_pcm_codec(form.format, -1);
    coding.format = form.format;
    coding.sample_rate = form.rate;
    coding.ch_layout = form.layout;
}

// The next packet; null behind the last one.
PacketPtr SoundTrack::Parts::Mix() {
    constexpr std::int64_t usualLength = 1024;
    const std::int64_t end = Samples(cut.end), length = std::min(usualLength, end - next);
    if (length <= 0 || (later.empty() && heard.empty())) return nullptr;
    for (; !later.empty() && Samples(later.back().begin) < next + length; later.pop_back())
        if (Samples(later.back().begin + later.back().length) > next)
            heard.push_back(std::make_unique<PieceReader>(later.back()));
    std::vector<float> mix(std::size_t(length) * channels);
    std::erase_if(heard, [&](const auto& piece) { return !piece->AddTo(mix, next); });
    const std::int64_t filmEnd = Samples(cut.filmEnd), fade = Samples(cut.fade);
    for (std::size_t i = 0; i < mix.size(); ++i) mix[i] *= Ramp(filmEnd - next - std::int64_t(i) / channels, 0, fade);
    PacketPtr packet = NewPacket();
    if (av_new_packet(packet.get(), int(mix.size() * sizeof(float))) < 0) throw std::bad_alloc();
    std::memcpy(packet->data, mix.data(), mix.size() * sizeof(float));
    packet->pts = packet->dts = next - Samples(cut.begin);
    packet->duration = length;
    next += length;
    return packet;
}

std::vector<PacketPtr> SoundTrack::Parts::Until(double seconds) {
    std::vector<PacketPtr> taken;
    while (double(next - Samples(cut.begin)) / sampleRate < seconds) {
        PacketPtr packet = Mix();
        if (!packet) break;
        taken.push_back(std::move(packet));
    }
    return taken;
}

double SoundSeconds(const std::string& path) {
    const SoundInput sound(path);
    const double base = av_q2d(sound.stream->time_base);
    double begin = 0, end = 0;
    bool any = false;
    while (const PacketPtr packet = sound.Next()) {
        if (packet->pts == AV_NOPTS_VALUE) continue;
        if (!any) begin = double(packet->pts) * base;
        any = true;
        end = std::max(end, double(packet->pts + packet->duration) * base);
    }
    if (end <= begin && sound.input->duration > 0) return double(sound.input->duration) / AV_TIME_BASE;
    if (end <= begin) Refuse(path, " does not say how long its sound is; convert it first");
    return end - begin;
}

void RequireSound(const std::string& path) { PieceReader({path}); }

SoundTrack::SoundTrack(const std::vector<SoundPiece>& pieces, const SoundCut& cut)
    : m_parts(std::make_unique<Parts>(pieces, cut)) {}
SoundTrack::~SoundTrack() = default;
const AVStream& SoundTrack::Stream() const { return *m_parts->holder->streams[0]; }
std::vector<PacketPtr> SoundTrack::Until(double seconds) { return m_parts->Until(seconds); }

}  // namespace Nifikral
