#include "host/media/sound_track.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include <algorithm>
#include <deque>
#include <filesystem>
#include <iomanip>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/media/ffmpeg_log.h"

namespace Nifikral {
namespace {

constexpr int sampleRate = 48000, bitRate = 224000;

[[noreturn]] void Refuse(const std::string& path, const std::string& what) {
    throw HostError(ExitCode::Input, path + what);
}

struct FreeGraph {
    void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
};
struct FreeOutput {
    void operator()(AVFormatContext* output) const { avformat_free_context(output); }
};
struct FreeInOut {
    void operator()(AVFilterInOut* list) const { avfilter_inout_free(&list); }
};
using InOutPtr = std::unique_ptr<AVFilterInOut, FreeInOut>;

// A file's sound, its other streams left aside.
struct SoundInput {
    explicit SoundInput(const std::string& path);

    InputPtr input;
    AVStream* stream = nullptr;
    const AVCodec* codec = nullptr;
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
    const int index = av_find_best_stream(input.get(), AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
    if (index < 0) Refuse(path, " holds no sound that can be decoded; give a file that does");
    for (unsigned i = 0; i < input->nb_streams; ++i)
        if (int(i) != index) input->streams[i]->discard = AVDISCARD_ALL;
    stream = input->streams[index];
}

std::string LayoutOf(const AVFrame& frame) {
    AVChannelLayout layout = frame.ch_layout;
    if (layout.order == AV_CHANNEL_ORDER_UNSPEC) av_channel_layout_default(&layout, frame.ch_layout.nb_channels);
    char text[256] = "";
    av_channel_layout_describe(&layout, text, sizeof text);
    return text;
}

int RateFor(const AVCodec& encoder) {
    const int* rate = encoder.supported_samplerates;
    if (!rate) return sampleRate;
    for (const int* candidate = rate; *candidate; ++candidate)
        if (*candidate == sampleRate) return sampleRate;
    return *rate;
}

}  // namespace

struct SoundTrack::Parts {
    Parts(const std::string& path, const AVCodec& encoder, const SoundCut& cut);

    std::vector<PacketPtr> Until(double seconds);
    // Null behind the last one.
    FramePtr DecodeNext();
    void MakeGraph(const AVFrame& first, const SoundCut& cut);
    // Encodes the next piece; false behind the last one.
    bool Advance();
    bool Encode(const AVFrame* frame);
    void Check(int error) const;

    std::string path;
    SoundInput sound;
    CodecPtr decoder, encoder;
    FramePtr pending;  // decoded first, to see its form
    std::unique_ptr<AVFilterGraph, FreeGraph> graph;
    AVFilterContext *in = nullptr, *out = nullptr;
    std::unique_ptr<AVFormatContext, FreeOutput> holder;  // of the stream that containers are told of
    std::deque<PacketPtr> packets;
    bool encoded = false;
};

SoundTrack::Parts::Parts(const std::string& name, const AVCodec& encoderKind, const SoundCut& cut)
    : path(name), sound(name), holder(Require<decltype(holder)>(avformat_alloc_context())) {
    decoder = Require<CodecPtr>(avcodec_alloc_context3(sound.codec));
    decoder->pkt_timebase = sound.stream->time_base;
    int error = avcodec_parameters_to_context(decoder.get(), sound.stream->codecpar);
    if (error >= 0) error = avcodec_open2(decoder.get(), sound.codec, nullptr);
    Check(error);

    encoder = Require<CodecPtr>(avcodec_alloc_context3(&encoderKind));
    encoder->sample_fmt = encoderKind.sample_fmts ? encoderKind.sample_fmts[0] : AV_SAMPLE_FMT_FLTP;
    encoder->sample_rate = RateFor(encoderKind);
    encoder->time_base = {1, encoder->sample_rate};
    encoder->bit_rate = bitRate;
    av_channel_layout_default(&encoder->ch_layout, 2);
    encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (avcodec_open2(encoder.get(), &encoderKind, nullptr) < 0)
        throw HostError(ExitCode::Output, std::string("the encoder ") + encoderKind.name +
                                              " does not start; choose another extension for the film");
    AVStream* const stream = avformat_new_stream(holder.get(), nullptr);
    if (!stream || avcodec_parameters_from_context(stream->codecpar, encoder.get()) < 0) throw std::bad_alloc();
    stream->time_base = encoder->time_base;

    pending = DecodeNext();
    if (!pending) Refuse(path, " holds no sound that can be decoded; it is damaged or cut short");
    MakeGraph(*pending, cut);
}

void SoundTrack::Parts::Check(int error) const {
    if (error < 0) Refuse(path, ": its sound cannot be read (" + ErrorText(error) + "); convert it first");
}

void SoundTrack::Parts::MakeGraph(const AVFrame& first, const SoundCut& cut) {
    graph = Require<decltype(graph)>(avfilter_graph_alloc());
    const AVRational base = sound.stream->time_base;
    std::ostringstream source, filters;
    source << "time_base=" << base.num << "/" << base.den << ":sample_rate=" << first.sample_rate
           << ":sample_fmt=" << first.format << ":channel_layout=" << LayoutOf(first);
    filters << std::setprecision(12) << "asetpts=PTS-STARTPTS,aresample=" << encoder->sample_rate
            << ",aformat=channel_layouts=stereo:sample_fmts=" << av_get_sample_fmt_name(encoder->sample_fmt);
    if (cut.fade > 0) filters << ",afade=t=out:st=" << std::max(0.0, cut.filmEnd - cut.fade) << ":d=" << cut.fade;
    filters << ",atrim=start=" << cut.begin << ":end=" << cut.end << ",asetpts=PTS-STARTPTS";
    InOutPtr inputs(avfilter_inout_alloc()), outputs(avfilter_inout_alloc());
    if (!inputs || !outputs) throw std::bad_alloc();
    Check(avfilter_graph_create_filter(&in, avfilter_get_by_name("abuffer"), "in", source.str().c_str(), nullptr,
                                       graph.get()));
    Check(
        avfilter_graph_create_filter(&out, avfilter_get_by_name("abuffersink"), "out", nullptr, nullptr, graph.get()));
    *outputs = {av_strdup("in"), in, 0, nullptr};
    *inputs = {av_strdup("out"), out, 0, nullptr};
    AVFilterInOut *openInputs = inputs.release(), *openOutputs = outputs.release();
    const int error = avfilter_graph_parse_ptr(graph.get(), filters.str().c_str(), &openInputs, &openOutputs, nullptr);
    inputs.reset(openInputs);
    outputs.reset(openOutputs);
    Check(error);
    Check(avfilter_graph_config(graph.get(), nullptr));
    if (encoder->frame_size > 0) av_buffersink_set_frame_size(out, unsigned(encoder->frame_size));
}

FramePtr SoundTrack::Parts::DecodeNext() {
    FramePtr frame = NewFrame();
    for (;;) {
        ThrowIfInterrupted();
        const int received = avcodec_receive_frame(decoder.get(), frame.get());
        if (received >= 0) {
            frame->pts = frame->best_effort_timestamp;
            return frame;
        }
        if (received == AVERROR_EOF) return nullptr;
        if (received != AVERROR(EAGAIN)) Check(received);
        const PacketPtr packet = NewPacket();
        const int read = av_read_frame(sound.input.get(), packet.get());
        if (read < 0 && read != AVERROR_EOF) Check(read);
        if (read >= 0 && packet->stream_index != sound.stream->index) continue;
        // Players pass over a damaged piece of a sound; so does this.
        avcodec_send_packet(decoder.get(), read < 0 ? nullptr : packet.get());
    }
}

bool SoundTrack::Parts::Encode(const AVFrame* frame) {
    Check(avcodec_send_frame(encoder.get(), frame));
    for (;;) {
        PacketPtr packet = NewPacket();
        const int error = avcodec_receive_packet(encoder.get(), packet.get());
        if (error == AVERROR(EAGAIN)) return true;
        if (error == AVERROR_EOF) return false;
        Check(error);
        packet->stream_index = 0;
        packets.push_back(std::move(packet));
    }
}

bool SoundTrack::Parts::Advance() {
    if (encoded) return false;
    for (;;) {
        const FramePtr frame = NewFrame();
        const int error = av_buffersink_get_frame(out, frame.get());
        if (error >= 0) return Encode(frame.get());
        if (error == AVERROR_EOF) {
            encoded = true;
            return Encode(nullptr);
        }
        if (error != AVERROR(EAGAIN)) Check(error);
        FramePtr next = pending ? std::move(pending) : DecodeNext();
        Check(av_buffersrc_add_frame(in, next.get()));
    }
}

std::vector<PacketPtr> SoundTrack::Parts::Until(double seconds) {
    const auto begin = [&](const PacketPtr& packet) { return double(packet->pts) * av_q2d(encoder->time_base); };
    while ((packets.empty() || begin(packets.back()) < seconds) && Advance()) {
    }
    std::vector<PacketPtr> taken;
    while (!packets.empty() && begin(packets.front()) < seconds) {
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
    for (const PacketPtr packet = NewPacket(); av_read_frame(sound.input.get(), packet.get()) >= 0;
         av_packet_unref(packet.get())) {
        ThrowIfInterrupted();
        if (packet->stream_index != sound.stream->index || packet->pts == AV_NOPTS_VALUE) continue;
        if (!any) begin = double(packet->pts) * base;
        any = true;
        end = std::max(end, double(packet->pts + packet->duration) * base);
    }
    if (end <= begin && sound.input->duration > 0) return double(sound.input->duration) / AV_TIME_BASE;
    if (end <= begin) Refuse(path, " does not tell how long its sound is; convert it first");
    return end - begin;
}

SoundTrack::SoundTrack(const std::string& path, const AVCodec& encoder, const SoundCut& cut)
    : m_parts(std::make_unique<Parts>(path, encoder, cut)) {}
SoundTrack::~SoundTrack() = default;
const AVStream& SoundTrack::Stream() const { return *m_parts->holder->streams[0]; }
std::vector<PacketPtr> SoundTrack::Until(double seconds) { return m_parts->Until(seconds); }

}  // namespace Nifikral
