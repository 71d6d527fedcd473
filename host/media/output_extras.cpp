#include "host/media/output_extras.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

#include "host/base/log.h"
#include "host/media/output_streams.h"

namespace Nifikral {
namespace {

// What there is of this in each container: the kind of its subtitles of text, how it holds a cover, and chapters.
enum class CoverKind { None, Picture, Attachment };
struct Holds {
    std::string_view container;
    AVCodecID text = AV_CODEC_ID_NONE;
    CoverKind cover = CoverKind::None;
    bool chapters = false;
};
constexpr Holds containers[] = {{"mp4", AV_CODEC_ID_MOV_TEXT, CoverKind::Picture, true},
                                {"ipod", AV_CODEC_ID_MOV_TEXT, CoverKind::Picture, true},
                                {"mov", AV_CODEC_ID_MOV_TEXT, CoverKind::None, true},
                                {"matroska", AV_CODEC_ID_SUBRIP, CoverKind::Attachment, true},
                                {"webm", AV_CODEC_ID_WEBVTT, CoverKind::None, true},
                                {"nut", AV_CODEC_ID_NONE, CoverKind::None, true},
                                {"asf", AV_CODEC_ID_NONE, CoverKind::None, true},
                                {"webvtt", AV_CODEC_ID_WEBVTT}};

const Holds& HoldsOf(const AVOutputFormat& format) {
    static constexpr Holds nothing;
    for (const Holds& holds : containers)
        if (holds.container == format.name) return holds;
    return nothing;
}

bool IsText(AVCodecID codec) {
    const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(codec);
    return descriptor && (descriptor->props & AV_CODEC_PROP_TEXT_SUB);
}

// Some containers take any subtitles, though their readers understand only those of discs or broadcasts.
bool IsUnderstood(const AVOutputFormat& format, AVCodecID codec) {
    const std::string_view name = format.name;
    if (name == "mpegts") return codec == AV_CODEC_ID_DVB_SUBTITLE || codec == AV_CODEC_ID_DVB_TELETEXT;
    if (name == "vob" || name == "dvd") return codec == AV_CODEC_ID_DVD_SUBTITLE;
    return HoldsOf(format).text != AV_CODEC_ID_NONE;
}

bool AddChapters(AVFormatContext& output, const OutputTraits& traits) {
    if (traits.chapters.empty()) return true;
    if (!HoldsOf(*output.oformat).chapters) return false;
    constexpr AVRational base = {1, 1000};
    const auto time = [&](std::int64_t at, AVRational in) {
        const double seconds = std::clamp(double(at) * av_q2d(in), traits.begin, traits.end);
        return std::llround((seconds - traits.begin) * base.den);
    };
    for (const AVChapter* const from : traits.chapters) {
        const std::int64_t begin = time(from->start, from->time_base), end = time(from->end, from->time_base);
        if (begin >= end) continue;
        auto** const list =
            static_cast<AVChapter**>(av_realloc_array(output.chapters, output.nb_chapters + 1, sizeof(AVChapter*)));
        if (!list) throw std::bad_alloc();
        output.chapters = list;
        auto* const chapter = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
        if (!chapter) throw std::bad_alloc();
        list[output.nb_chapters++] = chapter;
        *chapter = {from->id, base, begin, end, nullptr};
        av_dict_copy(&chapter->metadata, from->metadata, 0);
    }
    return true;
}

// A stream's data, as FFmpeg's structures own it.
void SetData(std::uint8_t*& data, int& size, const void* from, std::size_t bytes) {
    data = static_cast<std::uint8_t*>(av_mallocz(bytes + AV_INPUT_BUFFER_PADDING_SIZE));
    if (!data) throw std::bad_alloc();
    std::memcpy(data, from, bytes);
    size = int(bytes);
}

}  // namespace

OutputExtras::OutputExtras(AVFormatContext& output, const std::string& name, const OutputOptions& options,
                           const OutputTraits& traits, const OutputTraits& stored)
    : m_seconds(traits.end - traits.begin) {
    std::string left;
    for (const AVStream* const from : traits.extras) {
        const AVMediaType type = from->codecpar->codec_type;
        const char* const kind = type == AVMEDIA_TYPE_SUBTITLE ? "subtitles "
                                 : type == AVMEDIA_TYPE_VIDEO  ? "cover picture "
                                                               : "attachment ";
        bool kept = false;
        if (type == AVMEDIA_TYPE_SUBTITLE)
            kept = traits.dvd && options.paintSubtitle
                       ? AddPictures(output, *from, from->index, SubtitlePlace(traits, stored), options.paintSubtitle)
                       : AddSubtitles(output, *from);
        if (type == AVMEDIA_TYPE_VIDEO) kept = AddCover(output, *from);
        if (type == AVMEDIA_TYPE_ATTACHMENT && Takes(output, from->codecpar, from->time_base)) {
            av_dict_copy(&AddStream(output, *from->codecpar, from->time_base).metadata, from->metadata, 0);
            kept = true;
        }
        if (!kept) AppendWord(left, kind + StreamTitle(*from));
    }
    for (const std::string& file : options.subtitleFiles)
        if (traits.dvd && options.paintSubtitle)
            AddFile(output, file, SubtitlePlace(traits, stored), options.paintSubtitle);
    // A disc's chapters stand beside the film.
    if (!AddChapters(output, traits) && !options.paintSubtitle) AppendWord(left, "chapters");
    if (!left.empty())
        PrintWarning(name + ": its container (" + output.oformat->name +
                     ") does not hold what the input has beside: " + left);
}

bool OutputExtras::AddSubtitles(AVFormatContext& output, const AVStream& from) {
    const AVCodecParameters& coding = *from.codecpar;
    Subtitles subtitles{from.index, from.time_base, nullptr, nullptr, nullptr, nullptr};
    if (IsUnderstood(*output.oformat, coding.codec_id) && Takes(output, &coding, from.time_base)) {
        subtitles.to = &AddStream(output, coding, from.time_base);
    } else {
        const AVCodec* const encoder = avcodec_find_encoder(HoldsOf(*output.oformat).text);
        const AVCodec* const decoder = avcodec_find_decoder(coding.codec_id);
        if (!encoder || !decoder || !IsText(coding.codec_id)) return false;
        subtitles.decoder = Require<CodecPtr>(avcodec_alloc_context3(decoder));
        subtitles.encoder = Require<CodecPtr>(avcodec_alloc_context3(encoder));
        AVCodecContext &in = *subtitles.decoder, &out = *subtitles.encoder;
        in.pkt_timebase = from.time_base;
        if (avcodec_parameters_to_context(&in, &coding) < 0 || avcodec_open2(&in, decoder, nullptr) < 0) return false;
        out.time_base = {1, 1000};
        if (in.subtitle_header)
            SetData(out.subtitle_header, out.subtitle_header_size, in.subtitle_header,
                    std::size_t(in.subtitle_header_size));
        if (avcodec_open2(&out, encoder, nullptr) < 0) return false;
        AVStream& stream = AddStream(output, coding, out.time_base);
        if (avcodec_parameters_from_context(stream.codecpar, &out) < 0) throw std::bad_alloc();
        subtitles.to = &stream;
    }
    subtitles.to->disposition = from.disposition;
    av_dict_copy(&subtitles.to->metadata, from.metadata, 0);
    m_subtitles.push_back(std::move(subtitles));
    return true;
}

bool OutputExtras::AddPictures(AVFormatContext& output, const AVStream& from, int number, const SubtitlePlace& place,
                               const PaintText& paint) {
    if (m_subtitles.size() == DiscSubtitles::mostTracks || !DiscSubtitles::Takes(*from.codecpar)) return false;
    Subtitles subtitles{number, from.time_base, nullptr, nullptr, nullptr, nullptr};
    subtitles.pictures = std::make_unique<DiscSubtitles>(from, place, paint);
    AVCodecParameters coding = {};
    coding.codec_type = AVMEDIA_TYPE_SUBTITLE;
    coding.codec_id = AV_CODEC_ID_DVD_SUBTITLE;
    subtitles.to = &AddStream(output, coding, from.time_base);
    m_subtitles.push_back(std::move(subtitles));
    return true;
}

void OutputExtras::AddFile(AVFormatContext& output, const std::string& path, const SubtitlePlace& place,
                           const PaintText& paint) {
    // Streams of the input have the numbers from 0 up.
    const int number = -1 - int(m_files.size());
    SubtitleFile file(path);
    if (!AddPictures(output, file.Stream(), number, place, paint)) return;
    PacketPtr first = file.Next();
    m_files.push_back({std::move(file), number, std::move(first)});
}

void OutputExtras::Reach(double seconds, const Store& store) {
    for (File& file : m_files)
        for (; file.next && double(file.next->pts) * av_q2d(file.file.Stream().time_base) <= seconds;
             file.next = file.file.Next()) {
            file.next->stream_index = file.stream;
            Write(*file.next, store);
        }
}

bool OutputExtras::AddCover(AVFormatContext& output, const AVStream& from) {
    const CoverKind kind = HoldsOf(*output.oformat).cover;
    const AVCodecID codec = from.codecpar->codec_id;
    if (kind == CoverKind::None || (codec != AV_CODEC_ID_PNG && codec != AV_CODEC_ID_MJPEG)) return false;
    AVStream& stream = AddStream(output, *from.codecpar, from.time_base);
    av_dict_copy(&stream.metadata, from.metadata, 0);
    if (kind == CoverKind::Picture) {
        stream.disposition = AV_DISPOSITION_ATTACHED_PIC;
        m_covers.push_back({&from, &stream});
        return true;
    }
    AVCodecParameters& coding = *stream.codecpar;
    coding.codec_type = AVMEDIA_TYPE_ATTACHMENT;
    av_freep(&coding.extradata);
    SetData(coding.extradata, coding.extradata_size, from.attached_pic.data, std::size_t(from.attached_pic.size));
    const std::string type = codec == AV_CODEC_ID_PNG ? "png" : "jpeg";
    av_dict_set(&stream.metadata, "filename", ("cover." + type).c_str(), AV_DICT_DONT_OVERWRITE);
    av_dict_set(&stream.metadata, "mimetype", ("image/" + type).c_str(), AV_DICT_DONT_OVERWRITE);
    return true;
}

void OutputExtras::Begin(const Store& store) const {
    for (const Cover& cover : m_covers) {
        const PacketPtr packet = Require<PacketPtr>(av_packet_clone(&cover.from->attached_pic));
        packet->stream_index = cover.to->index;
        packet->pts = packet->dts = 0;
        store(*packet);
    }
}

PacketPtr OutputExtras::Convert(const Subtitles& subtitles, AVPacket& packet) {
    AVSubtitle text = {};
    int got = 0;
    MakeUtf8(subtitles.decoder->codec_id, avcodec_get_name(subtitles.decoder->codec_id), packet);
    if (avcodec_decode_subtitle2(subtitles.decoder.get(), &text, &got, &packet) < 0 || !got) return nullptr;
    text.pts = av_rescale_q(packet.pts, subtitles.timeBase, containerTimes);
    std::vector<std::uint8_t> coded(1 << 16);
    const int size = avcodec_encode_subtitle(subtitles.encoder.get(), coded.data(), int(coded.size()), &text);
    avsubtitle_free(&text);
    PacketPtr made = NewPacket();
    if (size <= 0 || av_new_packet(made.get(), size) < 0) return nullptr;
    std::copy_n(coded.begin(), size, made->data);
    made->pts = made->dts = packet.pts;
    made->duration = packet.duration;
    return made;
}

// What is shown when a range begins or ends is shown for the rest of its time. False when none is left.
bool OutputExtras::CutToLength(AVPacket& packet, AVRational timeBase) const {
    std::int64_t end = packet.pts + packet.duration;
    if (!std::isinf(m_seconds)) end = std::min(end, std::int64_t(m_seconds / av_q2d(timeBase)));
    packet.pts = packet.dts = std::max<std::int64_t>(packet.pts, 0);
    packet.duration = end - packet.pts;
    return packet.duration > 0;
}

void OutputExtras::Write(AVPacket& packet, const Store& store) const {
    for (const Subtitles& subtitles : m_subtitles) {
        if (subtitles.from != packet.stream_index) continue;
        const auto send = [&](AVPacket& made) {
            av_packet_rescale_ts(&made, subtitles.timeBase, subtitles.to->time_base);
            made.stream_index = subtitles.to->index;
            made.pos = -1;
            store(made);
        };
        if (subtitles.pictures) return subtitles.pictures->Convert(packet, send);
        const PacketPtr made =
            subtitles.decoder ? Convert(subtitles, packet) : Require<PacketPtr>(av_packet_clone(&packet));
        if (!made) return;
        if (made->duration > 0 && !CutToLength(*made, subtitles.timeBase)) return;
        send(*made);
    }
}

}  // namespace Nifikral
