#include "host/media/sound_track.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <filesystem>
#include <iomanip>
#include <sstream>

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

std::string Filters(const SoundCut& cut) {
    std::ostringstream filters;
    filters << std::setprecision(12);
    if (cut.fade > 0) filters << "afade=t=out:st=" << std::max(0.0, cut.filmEnd - cut.fade) << ":d=" << cut.fade << ",";
    filters << "atrim=start=" << cut.begin << ":end=" << cut.end;
    return filters.str();
}

}  // namespace

struct SoundTrack::Parts {
    Parts(const std::string& path, const SoundCut& cut);

    std::vector<PacketPtr> Until(double seconds);
    // Decodes the next piece; false behind the last one.
    bool Advance();
    void Keep(const AVFrame& frame);

    SoundForm form;
    SoundInput sound;
    SoundDecoder decoder;
    std::int64_t begin;                                   // of the cut, in samples
    std::unique_ptr<AVFormatContext, FreeFormat> holder;  // of the stream that containers get
    std::deque<PacketPtr> packets;
    bool ended = false;
};

SoundTrack::Parts::Parts(const std::string& path, const SoundCut& cut)
    : sound(path),
      decoder(*sound.stream, form, path, Filters(cut), true),
      begin(std::llround(cut.begin * form.rate)),
      holder(Require<decltype(holder)>(avformat_alloc_context())) {
    AVStream* const stream = avformat_new_stream(holder.get(), nullptr);
    if (!stream) throw std::bad_alloc();
    stream->time_base = {1, form.rate};
    AVCodecParameters& coding = *stream->codecpar;
    coding.codec_type = AVMEDIA_TYPE_AUDIO;
    coding.codec_id = av_get_pcm_codec(form.format, -1);
    coding.format = form.format;
    coding.sample_rate = form.rate;
    coding.ch_layout = form.layout;
    while (!decoder.HasDecoded() && Advance()) {
    }
    if (!decoder.HasDecoded()) Refuse(path, " holds no sound that can be decoded; it is damaged or cut short");
}

void SoundTrack::Parts::Keep(const AVFrame& frame) {
    PacketPtr packet = NewPacket();
    const int bytes = frame.nb_samples * av_get_bytes_per_sample(form.format) * form.layout.nb_channels;
    if (av_new_packet(packet.get(), bytes) < 0) throw std::bad_alloc();
    std::copy_n(frame.data[0], bytes, packet->data);
    packet->pts = packet->dts = frame.pts - begin;
    packet->duration = frame.nb_samples;
    packets.push_back(std::move(packet));
}

bool SoundTrack::Parts::Advance() {
    if (ended) return false;
    const PacketPtr packet = sound.Next();
    ended = !packet;
    decoder.Put(packet.get(), [this](const AVFrame& frame) { Keep(frame); });
    return !ended;
}

std::vector<PacketPtr> SoundTrack::Parts::Until(double seconds) {
    const auto isEarlier = [&](const PacketPtr& packet) { return double(packet->pts) / form.rate < seconds; };
    while ((packets.empty() || isEarlier(packets.back())) && Advance()) {
    }
    std::vector<PacketPtr> taken;
    while (!packets.empty() && isEarlier(packets.front())) {
        taken.push_back(std::move(packets.front()));
        packets.pop_front();
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

SoundTrack::SoundTrack(const std::string& path, const SoundCut& cut) : m_parts(std::make_unique<Parts>(path, cut)) {}
SoundTrack::~SoundTrack() = default;
const AVStream& SoundTrack::Stream() const { return *m_parts->holder->streams[0]; }
std::vector<PacketPtr> SoundTrack::Until(double seconds) { return m_parts->Until(seconds); }

}  // namespace Nifikral
