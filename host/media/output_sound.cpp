#include "host/media/output_sound.h"

#include <algorithm>
#include <string_view>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/media/ffmpeg_log.h"
#include "host/media/output_streams.h"

namespace Nifikral {
namespace {

// Containers whose usual sound is not what they would be asked for first.
constexpr std::pair<std::string_view, AVCodecID> usualCodecs[] = {{"avi", AV_CODEC_ID_MP3}, {"asf", AV_CODEC_ID_WMAV2}};

AVCodecID UsualCodec(const AVOutputFormat& format, bool dvd) {
    if (dvd) return AV_CODEC_ID_AC3;
    for (const auto& [name, codec] : usualCodecs)
        if (name == format.name) return codec;
    const bool aac = avformat_query_codec(&format, AV_CODEC_ID_AAC, FF_COMPLIANCE_NORMAL) == 1;
    return aac ? AV_CODEC_ID_AAC : format.audio_codec;
}

const AVCodec* ChooseEncoder(const AVOutputFormat& format, const OutputOptions& options, bool dvd) {
    if (options.audioEncoder.empty()) return avcodec_find_encoder(UsualCodec(format, dvd));
    const AVCodec* const codec = avcodec_find_encoder_by_name(options.audioEncoder.c_str());
    if (codec && codec->type == AVMEDIA_TYPE_AUDIO) return codec;
    throw HostError(ExitCode::Usage, "--audio-encoder " + options.audioEncoder +
                                         " names no encoder for sound; use one such as aac, libopus, flac or ac3");
}

// What a player of video DVDs knows of a title, and what is usual for one or two channels of it.
constexpr std::size_t mostDvdTracks = 8;
constexpr int dvdBitRate = 192'000;
// What is heard as good, and what a disc may have.
constexpr int bitRatePerChannel = 112'000, mostBitRate = 448'000;

bool IsPcm(AVCodecID id) { return id >= AV_CODEC_ID_FIRST_AUDIO && id < AV_CODEC_ID_ADPCM_IMA_QT; }

bool IsForDvd(const AVCodecParameters& sound) {
    return sound.codec_id == AV_CODEC_ID_AC3 && sound.sample_rate == 48000 && sound.bit_rate <= mostBitRate;
}

// Some containers take more than those who read them understand, or than can be stored in them. Samples as they are
// (PCM) do not stand in this list: where they are taken, they are understood.
bool IsUnderstood(const AVOutputFormat& format, const AVCodecParameters& sound, bool dvd) {
    struct Known {
        std::string_view container;
        std::initializer_list<AVCodecID> codecs;
    };
    static const Known containers[] = {
        {"mpegts",
         {AV_CODEC_ID_MP1, AV_CODEC_ID_MP2, AV_CODEC_ID_MP3, AV_CODEC_ID_AAC, AV_CODEC_ID_AAC_LATM, AV_CODEC_ID_AC3,
          AV_CODEC_ID_EAC3, AV_CODEC_ID_DTS, AV_CODEC_ID_OPUS}},
        {"avi", {AV_CODEC_ID_MP2, AV_CODEC_ID_MP3, AV_CODEC_ID_AAC, AV_CODEC_ID_AC3, AV_CODEC_ID_WMAV2}},
        {"asf", {AV_CODEC_ID_WMAV1, AV_CODEC_ID_WMAV2, AV_CODEC_ID_WMAPRO, AV_CODEC_ID_MP3, AV_CODEC_ID_AAC}},
        {"mov",
         {AV_CODEC_ID_AAC, AV_CODEC_ID_ALAC, AV_CODEC_ID_MP2, AV_CODEC_ID_MP3, AV_CODEC_ID_AC3, AV_CODEC_ID_EAC3,
          AV_CODEC_ID_AMR_NB, AV_CODEC_ID_AMR_WB}},
        {"nut",
         {AV_CODEC_ID_AAC, AV_CODEC_ID_MP2, AV_CODEC_ID_MP3, AV_CODEC_ID_AC3, AV_CODEC_ID_DTS, AV_CODEC_ID_FLAC,
          AV_CODEC_ID_OPUS, AV_CODEC_ID_VORBIS}},
    };
    if (dvd) return IsForDvd(sound);
    for (const auto& [name, codecs] : containers)
        if (name == format.name)
            return std::find(codecs.begin(), codecs.end(), sound.codec_id) != codecs.end() ||
                   (IsPcm(sound.codec_id) && name != "mpegts");
    return true;
}

bool IsLossless(AVCodecID id) {
    const AVCodecDescriptor* const codec = avcodec_descriptor_get(id);
    return codec && (codec->props & AV_CODEC_PROP_LOSSLESS) && !(codec->props & AV_CODEC_PROP_LOSSY);
}

AVSampleFormat SampleFormat(const AVCodec& encoder, int wanted) {
    if (!encoder.sample_fmts) return AV_SAMPLE_FMT_FLT;
    const auto* chosen = encoder.sample_fmts;
    for (const auto* format = encoder.sample_fmts; *format != AV_SAMPLE_FMT_NONE; ++format)
        if (av_get_packed_sample_fmt(*format) == av_get_packed_sample_fmt(AVSampleFormat(wanted))) chosen = format;
    return *chosen;
}

constexpr int surround = 6;  // channels

// The forms to try in turn: nearest to the source first.
std::vector<SoundForm> FormsFor(const AVCodec& encoder, const AVCodecParameters& source, bool dvd) {
    const bool usualRate = !dvd && source.sample_rate > 0 && (source.sample_rate == 44100 || IsLossless(encoder.id));
    std::vector<SoundForm> forms;
    const int channels = source.ch_layout.nb_channels;
    // An encoder that takes fewer channels mostly has those of 5.1.
    for (const AVChannelLayout& layout : {NamedLayout(source.ch_layout), UsualLayout(channels),
                                          UsualLayout(std::min(channels, surround)), UsualLayout(2)})
        for (const int rate : {usualRate ? source.sample_rate : 48000, 48000, 44100})
            forms.push_back({rate, SampleFormat(encoder, source.format), layout});
    return forms;
}

int UsualBitRate(int channels, bool dvd) {
    return dvd && channels <= 2 ? dvdBitRate : std::min(mostBitRate, bitRatePerChannel * channels);
}

AVStream* AddEncoded(AVFormatContext& output, const AVCodecContext& encoder) {
    AVCodecParameters* parameters = avcodec_parameters_alloc();
    if (!parameters || avcodec_parameters_from_context(parameters, &encoder) < 0) throw std::bad_alloc();
    const bool takes = Takes(output, parameters, encoder.time_base);
    AVStream* const stream = takes ? &AddStream(output, *parameters, encoder.time_base) : nullptr;
    avcodec_parameters_free(&parameters);
    return stream;
}

}  // namespace

int DvdBitRate(const AVCodecParameters& sound) {
    const bool copied = IsForDvd(sound) && sound.bit_rate > 0;
    return copied ? int(sound.bit_rate) : UsualBitRate(sound.ch_layout.nb_channels, true);
}

OutputSound::OutputSound(AVFormatContext& output, const std::string& name, const OutputOptions& options,
                         const OutputTraits& traits) {
    // What is wrong with the pictures shows when the header is written.
    if ((traits.audio.empty() && !options.silence) || !Takes(output, nullptr, {})) return;
    const AVOutputFormat& format = *output.oformat;
    const bool asked = !options.audioEncoder.empty() || options.audioBitRate > 0;
    const AVCodec* const encoder = ChooseEncoder(format, options, traits.dvd);
    std::string coded, left;
    for (const AVStream* const from : traits.audio) {
        const AVCodecParameters& coding = *from->codecpar;
        const std::string codec = avcodec_get_name(coding.codec_id);
        Stream stream{from->index, from->time_base, nullptr, nullptr, nullptr};
        if (traits.dvd && m_streams.size() == mostDvdTracks) {
            AppendWord(left, StreamTitle(*from));
            continue;
        }
        if (!asked && !traits.soundIsRaw && IsUnderstood(format, coding, traits.dvd) &&
            Takes(output, &coding, from->time_base)) {
            stream.to = &AddStream(output, coding, from->time_base);
            AppendWord(m_description, codec + " copied");
        } else {
            const FfmpegListener listener;
            const auto taken = [&](const SoundForm& form) {
                const int rate =
                    options.audioBitRate > 0 ? options.audioBitRate : UsualBitRate(form.layout.nb_channels, traits.dvd);
                stream.encoder = SoundEncoder::Start(*encoder, form, rate);
                if (!stream.encoder) return false;
                stream.to = AddEncoded(output, stream.encoder->Context());
                if (stream.to) stream.decoder = std::make_unique<SoundDecoder>(*from, form, name);
                return stream.to != nullptr;
            };
            const std::vector<SoundForm> forms =
                encoder ? FormsFor(*encoder, coding, traits.dvd) : std::vector<SoundForm>();
            if (std::find_if(forms.begin(), forms.end(), taken) != forms.end()) {
                stream.timeBase = stream.encoder->Context().time_base;
                AppendWord(coded, codec);
                AppendWord(m_description, codec + " encoded with " + encoder->name);
            } else if (asked && encoder && m_streams.empty()) {
                const std::string& complaint = listener.Complaint();
                throw HostError(ExitCode::Output, name + ": " + format.name + " does not take sound of " +
                                                      encoder->name +
                                                      (complaint.empty() ? "" : " (" + complaint + ")") +
                                                      "; choose another --audio-encoder or --audio-bitrate, or leave "
                                                      "them out");
            } else {
                AppendWord(left, StreamTitle(*from));
                continue;
            }
        }
        stream.to->disposition = from->disposition;
        av_dict_copy(&stream.to->metadata, from->metadata, 0);
        m_streams.push_back(std::move(stream));
    }
    if (m_streams.empty() && options.silence && encoder) AddSilence(output, *encoder, traits.dvd);
    const std::string holds = name + ": its container (" + format.name + ") holds no ";
    if (!coded.empty() && !asked && !traits.soundIsRaw && !options.silence)
        PrintWarning((traits.dvd ? name + ": video DVDs want AC-3 and not " : holds) + coded +
                     " sound; it is encoded with " + encoder->name + " (--audio-encoder chooses another)");
    if (!left.empty())
        PrintWarning(holds + (m_streams.empty() ? "" : "further ") + "sound; " + (traits.soundIsRaw ? "it" : left) +
                     " is left out");
}

void OutputSound::AddSilence(AVFormatContext& output, const AVCodec& encoder, bool dvd) {
    SoundForm form;
    form.format = SampleFormat(encoder, form.format);
    Stream stream{silent,
                  {1, form.rate},
                  nullptr,
                  nullptr,
                  SoundEncoder::Start(encoder, form, UsualBitRate(form.layout.nb_channels, dvd))};
    if (stream.encoder) stream.to = AddEncoded(output, stream.encoder->Context());
    if (!stream.to) return;
    AppendWord(m_description, std::string("silence encoded with ") + encoder.name);
    m_streams.push_back(std::move(stream));
}

void OutputSound::Reach(double seconds, const Store& store) const {
    for (const Stream& stream : m_streams)
        if (stream.from == silent)
            stream.encoder->PutSilence(seconds, [&](AVPacket& coded) { Send(stream, coded, store); });
}

void OutputSound::Send(const Stream& stream, AVPacket& packet, const Store& store) {
    av_packet_rescale_ts(&packet, stream.timeBase, stream.to->time_base);
    packet.stream_index = stream.to->index;
    packet.pos = -1;
    store(packet);
}

void OutputSound::Encode(const Stream& stream, const AVPacket* packet, const Store& store) {
    const auto send = [&](AVPacket& coded) { Send(stream, coded, store); };
    if (stream.decoder) stream.decoder->Put(packet, [&](AVFrame& frame) { stream.encoder->Put(&frame, send); });
    if (!packet) stream.encoder->Put(nullptr, send);
}

void OutputSound::Write(PacketPtr packet, const Store& store) {
    for (Stream& stream : m_streams) {
        if (stream.from != packet->stream_index) continue;
        if (stream.decoder) return Encode(stream, packet.get(), store);
        // Where a stream was cut off, the rest of its last packet may come with that one's time once more.
        if (packet->dts != AV_NOPTS_VALUE && packet->dts <= stream.last) return;
        stream.last = packet->dts;
        return Send(stream, *packet, store);
    }
}

void OutputSound::Finish(const Store& store) {
    for (const Stream& stream : m_streams)
        if (stream.encoder) Encode(stream, nullptr, store);
}

}  // namespace Nifikral
