#include "host/media/browser_media.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>

#include "host/base/interruption.h"
#include "host/base/log.h"
#include "host/base/number_text.h"
#include "host/media/ffmpeg_log.h"
#include "host/media/media_input.h"
#include "host/media/media_source.h"
#include "host/media/output_extras.h"
#include "host/media/output_sound.h"
#include "host/media/output_streams.h"
#include "host/media/part_file.h"

namespace Nifikral {
namespace {

std::string Entry(const AVStream& stream, const char* key) {
    const AVDictionaryEntry* const entry = av_dict_get(stream.metadata, key, nullptr, 0);
    return entry && std::string_view(entry->value) != "und" ? entry->value : "";
}

// Containers whose packets have all their times.
bool IsTimed(const AVFormatContext& input) {
    const std::string_view name = input.iformat->name;
    return name.starts_with("mov,") || name.starts_with("matroska,");
}

// Browsers show fields as combs, and pictures of more depth or colour not at all.
bool IsPlayable(const std::string& path, const AVCodecParameters& video, int width, int height) {
    const bool isCodedSo = video.codec_id == AV_CODEC_ID_H264 &&
                           (video.field_order == AV_FIELD_UNKNOWN || video.field_order == AV_FIELD_PROGRESSIVE) &&
                           std::max(video.width, video.height) <= std::max(width, height) &&
                           std::min(video.width, video.height) <= std::min(width, height);
    if (!isCodedSo) return false;
    // What an input says of its pictures may come of their heads alone, and say nothing of their colours.
    MediaSource::Options options;
    options.audio = false;
    const MediaSource film(path, options);
    const AVFrame& first = film.FirstFrame();
    return first.format == AV_PIX_FMT_YUV420P && first.color_range != AVCOL_RANGE_JPEG;
}

bool IsVideo(const AVStream& stream) {
    return stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !(stream.disposition & AV_DISPOSITION_ATTACHED_PIC);
}

const AVStream* VideoOf(const AVFormatContext& input) {
    for (unsigned i = 0; i < input.nb_streams; ++i)
        if (IsVideo(*input.streams[i])) return input.streams[i];
    return nullptr;
}

// A file that appears when it is complete, and is written a packet at a time.
class Output {
 public:
    Output(const std::string& path, const char* container) : m_path(path), m_part(path, true) {
        AVFormatContext* context = nullptr;
        avformat_alloc_output_context2(&context, nullptr, container, nullptr);
        m_context = Require<std::unique_ptr<AVFormatContext, Free>>(context);
    }

    AVFormatContext& Context() { return *m_context; }

    void Begin() {
        const std::string url = "file:" + m_part.Path();
        // The writer opens the file once more to move what it begins with.
        m_context->url = av_strdup(url.c_str());
        Check(avio_open(&m_context->pb, url.c_str(), AVIO_FLAG_WRITE));
        AVDictionary* options = nullptr;
        av_dict_set(&options, "movflags", "+faststart", 0);
        const int error = avformat_write_header(m_context.get(), &options);
        av_dict_free(&options);
        Check(error);
    }
    void Write(AVPacket& packet) {
        Check(av_interleaved_write_frame(m_context.get(), &packet));
        Check(m_context->pb->error);
    }
    void Finish() {
        Check(av_write_trailer(m_context.get()));
        avio_flush(m_context->pb);
        Check(m_context->pb->error);
        Check(avio_closep(&m_context->pb));
        m_part.Commit();
    }

 private:
    struct Free {
        void operator()(AVFormatContext* output) const {
            if (output->pb) avio_closep(&output->pb);
            avformat_free_context(output);
        }
    };
    void Check(int error) const {
        if (error < 0) ThrowWriteError(m_path, error);
    }

    std::string m_path;
    PartFile m_part;  // before the context: closed first, then removed
    std::unique_ptr<AVFormatContext, Free> m_context;
};

// Hands out all packets of a file, with times that count from its begin.
void ReadPackets(const std::string& path, AVFormatContext& input, const std::function<void(PacketPtr)>& take) {
    const std::int64_t start = input.start_time == AV_NOPTS_VALUE ? 0 : input.start_time;
    double reached = 0;
    for (;;) {
        ThrowIfInterrupted();
        PacketPtr packet = NewPacket();
        const int error = av_read_frame(&input, packet.get());
        if (error < 0) {
            if (error != AVERROR_EOF)
                PrintWarning(path + " is damaged after " + NumberText(reached) +
                             " seconds; what is readable before that is kept");
            return;
        }
        const AVRational base = input.streams[packet->stream_index]->time_base;
        const std::int64_t shift = av_rescale_q(start, containerTimes, base);
        if (packet->pts != AV_NOPTS_VALUE) packet->pts -= shift;
        if (packet->dts != AV_NOPTS_VALUE) packet->dts -= shift;
        if (packet->dts != AV_NOPTS_VALUE) reached = double(packet->dts) * av_q2d(base);
        take(std::move(packet));
    }
}

// How a stream is turned and the like goes along.
void CopySideData(AVStream& to, const AVStream& from) {
    for (int i = 0; i < from.nb_side_data; ++i) {
        const AVPacketSideData& data = from.side_data[i];
        std::uint8_t* const copy = av_stream_new_side_data(&to, data.type, data.size);
        if (!copy) throw std::bad_alloc();
        std::copy_n(data.data, data.size, copy);
    }
}

AVStream& AddVideo(AVFormatContext& output, const AVStream& from) {
    AVStream& video = AddStream(output, *from.codecpar, from.time_base);
    video.sample_aspect_ratio = from.sample_aspect_ratio;
    video.avg_frame_rate = from.avg_frame_rate;
    video.r_frame_rate = from.r_frame_rate;
    CopySideData(video, from);
    return video;
}

}  // namespace

BrowserTracks BrowserTracksOf(const std::string& path, int width, int height) {
    CheckLocalFile(path);
    const FfmpegListener listener;
    const InputPtr input = OpenInput(path, nullptr, nullptr, listener);
    BrowserTracks tracks;
    const AVStream* const video = VideoOf(*input);
    tracks.pictures = video && IsTimed(*input) && IsPlayable(path, *video->codecpar, width, height);
    for (unsigned i = 0; i < input->nb_streams; ++i) {
        const AVStream& stream = *input->streams[i];
        const AVCodecParameters& coding = *stream.codecpar;
        const BrowserTrack track{int(i), Entry(stream, "language"), Entry(stream, "title")};
        const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(coding.codec_id);
        if (coding.codec_type == AVMEDIA_TYPE_AUDIO) tracks.sounds.push_back(track);
        if (coding.codec_type != AVMEDIA_TYPE_SUBTITLE || !descriptor) continue;
        if (descriptor->props & AV_CODEC_PROP_TEXT_SUB)
            tracks.subtitles.push_back(track);
        else
            ++tracks.paintedSubtitles;
    }
    return tracks;
}

void WriteBrowserFilm(const std::string& from, int sound, const std::string& to) {
    const FfmpegListener listener;
    const InputPtr input = OpenInput(from, nullptr, nullptr, listener);
    const AVStream& video = *VideoOf(*input);
    Output output(to, "mp4");
    const AVStream& stored = AddVideo(output.Context(), video);
    OutputOptions options;
    OutputTraits traits;
    if (sound >= 0) {
        traits.audio = {input->streams[sound]};
        if (traits.audio[0]->codecpar->codec_id != AV_CODEC_ID_AAC) options.audioEncoder = "aac";
    }
    OutputSound beside(output.Context(), to, options, traits);
    output.Begin();
    const auto store = [&](AVPacket& packet) { output.Write(packet); };
    ReadPackets(from, *input, [&](PacketPtr packet) {
        if (packet->stream_index == sound) return beside.Write(std::move(packet), store);
        if (packet->stream_index != video.index) return;
        av_packet_rescale_ts(packet.get(), video.time_base, stored.time_base);
        packet->stream_index = stored.index;
        packet->pos = -1;
        output.Write(*packet);
    });
    beside.Finish(store);
    output.Finish();
}

void WriteBrowserSubtitles(const std::string& from, int stream, const std::string& to) {
    const FfmpegListener listener;
    const InputPtr input = OpenInput(from, nullptr, nullptr, listener);
    Output output(to, "webvtt");
    OutputTraits traits;
    traits.extras = {input->streams[stream]};
    traits.end = std::numeric_limits<double>::infinity();
    const OutputExtras subtitles(output.Context(), to, OutputOptions(), traits, traits);
    output.Begin();
    ReadPackets(from, *input, [&](const PacketPtr& packet) {
        subtitles.Write(*packet, [&](AVPacket& text) { output.Write(text); });
    });
    output.Finish();
}

}  // namespace Nifikral
