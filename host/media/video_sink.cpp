#include "host/media/video_sink.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/base/number_text.h"
#include "host/media/chunk_file.h"
#include "host/media/encoder.h"
#include "host/media/ffmpeg_log.h"
#include "host/media/output_extras.h"
#include "host/media/output_sound.h"
#include "host/media/part_file.h"
#include "host/media/picture_fit.h"

namespace Nifikral {
namespace {

struct CloseOutput {
    void operator()(AVFormatContext* output) const {
        if (output->pb) avio_closep(&output->pb);
        avformat_free_context(output);
    }
};
using OutputPtr = std::unique_ptr<AVFormatContext, CloseOutput>;

constexpr AVPixelFormat y4mFormats[] = {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV411P,
                                        AV_PIX_FMT_GRAY8};

bool IsY4m(const AVOutputFormat& format) { return std::string_view(format.name) == "yuv4mpegpipe"; }

// The container's own choice, except where another serves better.
AVCodecID UsualCodec(const AVOutputFormat& format) {
    const std::string_view name = format.name;
    if (name == "nut") return AV_CODEC_ID_RAWVIDEO;
    if (name == "asf") return AV_CODEC_ID_WMV2;
    if (avformat_query_codec(&format, AV_CODEC_ID_H264, FF_COMPLIANCE_NORMAL) == 1 && name != "avi" &&
        avcodec_find_encoder(AV_CODEC_ID_H264))
        return AV_CODEC_ID_H264;
    return format.video_codec;
}

// What telephones write under keys of their own goes under those that containers know as well.
void CopyTags(AVDictionary*& to, const AVDictionary* from) {
    constexpr std::pair<const char*, const char*> known[] = {{"com.apple.quicktime.location.ISO6709", "location"},
                                                             {"com.apple.quicktime.creationdate", "date"},
                                                             {"com.apple.quicktime.author", "artist"},
                                                             {"com.apple.quicktime.make", "make"},
                                                             {"com.apple.quicktime.model", "model"}};
    av_dict_copy(&to, from, 0);
    for (const auto& [own, usual] : known)
        if (const AVDictionaryEntry* const entry = av_dict_get(from, own, nullptr, 0))
            av_dict_set(&to, usual, entry->value, AV_DICT_DONT_OVERWRITE);
}

// One video stream with the input's audio packets beside it.
class VideoSink final : public MediaSink {
 public:
    VideoSink(const OutputOptions& options, const OutputTraits& traits, const AVOutputFormat& format,
              const AVCodec& codec, bool tryOnly)
        : m_name(options.path == "-" ? "stdout" : options.path),
          m_purpose{.globalHeader = (format.flags & AVFMT_GLOBALHEADER) != 0,
                    .formats = IsY4m(format) ? std::span(y4mFormats) : std::span<const AVPixelFormat>()},
          m_stored(StoredTraits(traits, codec, ChooseFormat(codec, traits, m_purpose), options.progressive)),
          m_encoder(codec, options, m_stored, m_purpose),
          m_shape(m_encoder.Shape()),
          m_fit(TraitsForFit(traits, m_stored), m_stored, m_name),
          m_timeBase(traits.timeBase),
          m_keepsRate(av_cmp_q(traits.frameRate, m_stored.frameRate) == 0),
          m_keepsFrames(m_keepsRate && traits.fieldOrder == m_stored.fieldOrder) {
        const PictureShape fit = TraitsForFit(traits, m_stored).source;
        m_shape.width = fit.width;
        m_shape.height = fit.height;
        if (!traits.profile) ReportFit(traits);
        // A chunk is coded as its whole output, but kept in the one container that holds every coding's times exactly.
        const AVOutputFormat& container = options.chunk ? *av_guess_format(chunkContainer, nullptr, nullptr) : format;
        const std::string path = options.chunk ? ChunkPath(options.path, *options.chunk) : options.path;
        if (options.chunk && codec.id == AV_CODEC_ID_WRAPPED_AVFRAME)
            throw HostError(ExitCode::Usage, m_name + ": " + format.name +
                                                 " has nothing that chunks could be joined by; "
                                                 "choose another extension, such as .mkv");
        if (options.path != "-") CheckOutputPath(options.path, options.overwrite || options.chunk);
        AVFormatContext* context = nullptr;
        avformat_alloc_output_context2(&context, &container, nullptr, path.c_str());
        m_output = Require<OutputPtr>(context);
        if (container.video_codec == AV_CODEC_ID_MPEG2VIDEO && traits.dvd) SetDvdPacking();
        AddVideoStream();
        if (options.chunk) {
            m_output->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;
            av_dict_set(&m_output->metadata, chunkMark, options.mark.c_str(), 0);
        } else {
            m_sound.emplace(*m_output, m_name, options, traits);
            m_extras.emplace(*m_output, m_name, options, traits, m_stored);
            CopyTags(m_output->metadata, traits.metadata);
        }
        if (tryOnly) return;
        if (options.chunk) MakeChunkFolder(options.path);
        if (options.path != "-") m_part = std::make_unique<PartFile>(path, options.overwrite);
        const std::string url = m_part ? "file:" + m_part->Path() : "pipe:1";
        Check(avio_open(&m_output->pb, url.c_str(), AVIO_FLAG_WRITE));
        const FfmpegListener listener;
        if (const int error = avformat_write_header(m_output.get(), nullptr); error < 0) {
            const std::string& complaint = listener.Complaint();
            if (m_output->pb->error < 0) ThrowWriteError(m_name, m_output->pb->error);
            throw HostError(ExitCode::Output, m_name + ": " + container.name + " cannot hold this (" +
                                                  (complaint.empty() ? ErrorText(error) : complaint) +
                                                  "); choose another extension or --encoder");
        }
        if (m_extras) m_extras->Begin([this](AVPacket& beside) { Interleave(beside); });
    }

    const PictureShape& Shape() const override { return m_shape; }
    bool KeepsFrames() const override { return m_keepsFrames; }
    std::string Description() const override {
        const std::string sound = m_sound ? m_sound->Description() : "";
        return m_encoder.Description() + (sound.empty() ? "" : "; sound: " + sound);
    }

    void Write(FramePtr frame, long long) override {
        const double end = double(frame->pts + frame->pkt_duration) * av_q2d(m_timeBase);
        Reach(end);
        m_fit.Put(std::move(frame), [this](FramePtr fitted) { Encode(std::move(fitted)); });
    }

    void WriteAudio(PacketPtr packet) override {
        const auto store = [this](AVPacket& beside) { Interleave(beside); };
        if (m_extras) m_extras->Write(*packet, store);
        if (m_sound) m_sound->Write(std::move(packet), store);
    }

    bool CodesAlike(const AVCodecParameters& coded) const override {
        const AVCodecContext& own = m_encoder.Context();
        return coded.codec_id == own.codec_id && coded.width == own.width && coded.height == own.height &&
               std::equal(coded.extradata, coded.extradata + coded.extradata_size, own.extradata,
                          own.extradata + own.extradata_size);
    }

    void WriteCoded(PacketPtr packet, AVRational timeBase) override {
        m_codedBefore = true;
        av_packet_rescale_ts(packet.get(), timeBase, m_video->time_base);
        packet->stream_index = m_video->index;
        packet->pos = -1;
        const double end = double(packet->pts + packet->duration) * av_q2d(m_video->time_base);
        Reach(end);
        Interleave(*packet);
    }

    void Finish() override {
        m_fit.Put(nullptr, [this](FramePtr fitted) { Encode(std::move(fitted)); });
        if (!m_codedBefore) Encode(nullptr);
        if (m_sound) m_sound->Finish([this](AVPacket& sound) { Interleave(sound); });
        Check(av_write_trailer(m_output.get()));
        avio_flush(m_output->pb);
        Check(m_output->pb->error);
        Check(avio_closep(&m_output->pb));
        if (m_part) m_part->Commit();
    }

    std::string Kept() const override { return m_part ? MediaSink::Kept() : "what went to stdout ends early"; }

 private:
    // What comes from elsewhere than the input goes as far as its pictures.
    void Reach(double seconds) {
        const auto store = [this](AVPacket& beside) { Interleave(beside); };
        if (m_sound) m_sound->Reach(seconds, store);
        if (m_extras) m_extras->Reach(seconds, store);
    }

    void Encode(FramePtr frame) {
        m_encoder.Encode(std::move(frame), [this](AVPacket& packet) { Store(packet); });
    }

    static std::string Rate(const OutputTraits& traits) {
        return NumberText(std::round(av_q2d(traits.frameRate) * 100) / 100);
    }

    void ReportFit(const OutputTraits& given) const {
        const std::string codec = avcodec_get_name(m_encoder.Context().codec_id);
        const PictureShape& stored = m_encoder.Shape();
        if (stored.width != m_shape.width || stored.height != m_shape.height)
            PrintWarning(m_name + " is " + std::to_string(stored.width) + "x" + std::to_string(stored.height) +
                         ": the last column or row is left out, since " + codec +
                         " that every player takes has even sides");
        if (!m_keepsRate)
            PrintWarning(m_name + " has " + Rate(m_stored) + " pictures a second, since " + codec + " has no " +
                         Rate(given));
    }

    // The sectors of a disc, and the most that a player reads in a second.
    void SetDvdPacking() {
        m_output->packet_size = 2048;
        m_output->max_delay = AV_TIME_BASE * 7 / 10;
        av_opt_set_int(m_output->priv_data, "muxrate", 10080000, 0);
    }

    AVStream& NewStream() {
        AVStream* const stream = avformat_new_stream(m_output.get(), nullptr);
        if (!stream) throw std::bad_alloc();
        return *stream;
    }

    void AddVideoStream() {
        AVStream& stream = NewStream();
        if (avcodec_parameters_from_context(stream.codecpar, &m_encoder.Context()) < 0) throw std::bad_alloc();
        stream.time_base = m_encoder.Context().time_base;
        stream.avg_frame_rate = stream.r_frame_rate = m_stored.frameRate;
        stream.sample_aspect_ratio = m_stored.pixelAspect;
        m_video = &stream;
    }

    void Store(AVPacket& packet) {
        av_packet_rescale_ts(&packet, m_encoder.Context().time_base, m_video->time_base);
        packet.stream_index = m_video->index;
        Interleave(packet);
    }

    void Interleave(AVPacket& packet) const {
        Check(av_interleaved_write_frame(m_output.get(), &packet));
        Check(m_output->pb->error);
    }

    void Check(int error) const {
        if (error < 0) ThrowWriteError(m_name, error);
    }

    std::string m_name;
    Encoder::Purpose m_purpose;
    OutputTraits m_stored;
    Encoder m_encoder;
    PictureShape m_shape;
    PictureFit m_fit;
    AVRational m_timeBase;  // of the pictures that come
    bool m_keepsRate, m_keepsFrames;
    std::unique_ptr<PartFile> m_part;  // before the output: closed first, then removed
    OutputPtr m_output;
    AVStream* m_video = nullptr;
    std::optional<OutputSound> m_sound;
    std::optional<OutputExtras> m_extras;
    bool m_codedBefore = false;  // and none are left in the encoder
};

}  // namespace

std::unique_ptr<MediaSink> OpenVideoSink(const OutputOptions& options, const OutputTraits& traits,
                                         const AVOutputFormat& format, bool tryOnly) {
    const AVCodec& codec = FindEncoder(options.encoder, UsualCodec(format));
    return std::make_unique<VideoSink>(options, traits, format, codec, tryOnly);
}

}  // namespace Nifikral
