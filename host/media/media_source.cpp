#include "host/media/media_source.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/base/log.h"
#include "host/media/media_input.h"
#include "host/media/picture_formats.h"
#include "host/media/whole_jpeg.h"

namespace Nifikral {
namespace {

[[noreturn]] void Refuse(const std::string& line) { throw HostError(ExitCode::Input, line); }

std::vector<PacketPtr> MoveOut(std::deque<PacketPtr>& packets, std::size_t count) {
    std::vector<PacketPtr> taken;
    for (; count > 0; --count) {
        taken.push_back(std::move(packets.front()));
        packets.pop_front();
    }
    return taken;
}

double Seconds(std::int64_t time, AVRational base) { return double(time) * av_q2d(base); }

}  // namespace

MediaSource::MediaSource(const std::string& path, const Options& options)
    : m_path(path), m_name(IsPipe(path) ? "the input from stdin" : path), m_options(options) {
    if (IsNumbered(path)) {
        const long long last = options.range.last;
        m_files = NumberedFiles(path, options.gaps, last == FrameRange::noEnd ? last : last + 1);
    }
    const std::string& file = m_files.empty() ? path : m_files.front();
    CheckLocalFile(file);
    if (IsPipe(path)) m_standardInput = std::make_unique<StandardInput>();
    try {
        m_reader = OpenPictureFile(file, m_files.empty(), m_standardInput.get(), options.enoughSide);
    } catch (const PictureFault& fault) {
        Refuse((m_files.empty() ? m_name : file) + " is damaged or cut short (" + fault.what() +
               "); repair it or save it anew");
    }
    if (m_reader) {
        OpenReader();
    } else {
        OpenDecoder(file);
        m_pending = options.begin > 0 || options.keyFrame ? DecodeFrom(options.begin) : DecodeNext();
    }
    if (!m_pending) Refuse(m_name + " holds no picture that can be decoded; it is damaged or cut short");
    m_orientation.Prepare(*m_pending, *m_video);
    m_orientation.Apply(m_pending);
}

void MediaSource::OpenReader() {
    m_pending = DecodeNext();
    if (!m_pending) return;
    m_input = InputOf(*m_reader, *m_pending);
    m_video = m_input->streams[0];
    RefuseHugePictures();
}

void MediaSource::OpenDecoder(const std::string& file) {
    {
        const FfmpegListener listener;
        const AVInputFormat* const format = m_files.empty() ? nullptr : av_find_input_format("image2");
        m_input = OpenInput(file, format, m_standardInput.get(), listener);
        m_endsEarly = listener.EndedEarly();
    }
    const AVCodec* codec = nullptr;
    const int index = av_find_best_stream(m_input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (index == AVERROR_DECODER_NOT_FOUND) Refuse(m_name + ": there is no decoder for its pictures; convert it first");
    if (index < 0) Refuse(m_name + " holds no picture and no video; give a file that does");
    m_video = m_input->streams[index];
    RefuseHugePictures();
    for (unsigned i = 0; i < m_input->nb_streams; ++i) {
        AVStream* const stream = m_input->streams[i];
        const bool audio = m_options.audio && stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
        const bool subtitles = m_options.extras && stream->codecpar->codec_type == AVMEDIA_TYPE_SUBTITLE;
        if (stream != m_video && !audio && !subtitles) stream->discard = AVDISCARD_ALL;
    }
    m_decoder = Require<CodecPtr>(avcodec_alloc_context3(codec));
    int error = avcodec_parameters_to_context(m_decoder.get(), m_video->codecpar);
    m_decoder->pkt_timebase = m_video->time_base;
    m_damage = std::make_unique<DamageLog>();
    m_damage->Attach(*m_decoder);
    m_decoder->thread_count = m_options.threads;
    if (HoldsPictureFiles(*m_input)) {
        // More than one picture at once is not to be had from a file of one.
        if (m_files.empty() && !m_standardInput) m_decoder->thread_type = FF_THREAD_SLICE;
        // The decoder of TIFF would refuse every tag that it does not know.
        const bool strict = codec->id != AV_CODEC_ID_TIFF;
        if (!m_options.keepGoing && strict) m_decoder->err_recognition |= AV_EF_EXPLODE;
    }
    if (error >= 0) error = avcodec_open2(m_decoder.get(), codec, nullptr);
    if (error < 0) Refuse(m_name + ": its decoder does not start (" + ErrorText(error) + "); convert it first");
    if (m_input->start_time != AV_NOPTS_VALUE)
        m_origin = av_rescale_q(m_input->start_time, containerTimes, m_video->time_base);
    m_packets = 0;
    ForgetPlace();
}

void MediaSource::ForgetPlace() {
    m_inputEnded = m_finished = false;
    m_lastTime = m_readTime = m_passedTime = AV_NOPTS_VALUE;
    m_audio.clear();
}

bool MediaSource::Seek(std::int64_t time) {
    if (avformat_seek_file(m_input.get(), m_video->index, INT64_MIN, time, time, 0) < 0) return false;
    avcodec_flush_buffers(m_decoder.get());
    ForgetPlace();
    return true;
}

// Goes to a key frame from which on the picture at a time and all behind it come as they do when the film is read
// through: what is shown before a key frame but stored behind it would be made from pictures that are not there.
bool MediaSource::SeekKeyFrame(std::int64_t time) {
    const double tick = av_q2d(m_video->time_base);
    constexpr double firstStep = 0.5;
    for (double back = 0; !m_lacksTimes; back = back * 2 + firstStep) {
        const std::int64_t from = time - std::int64_t(back / tick);
        if (!Seek(from)) return false;
        const PacketPtr packet = ReadKeyPacket(time);
        if (packet && !m_lacksTimes && packet->pts <= time) {
            SendPacket(*packet);
            return true;
        }
        if (from < m_origin) return false;
    }
    return false;
}

// The next key frame's packet; none where that is decoded behind a time.
PacketPtr MediaSource::ReadKeyPacket(std::int64_t time) {
    PacketPtr packet = NewPacket();
    for (; av_read_frame(m_input.get(), packet.get()) >= 0; av_packet_unref(packet.get())) {
        ThrowIfInterrupted();
        if (packet->stream_index != m_video->index) continue;
        NoteTimes(*packet);
        if (packet->dts != AV_NOPTS_VALUE && packet->dts > time) return nullptr;
        if (packet->flags & AV_PKT_FLAG_KEY) return packet;
    }
    return nullptr;
}

void MediaSource::NoteTimes(const AVPacket& packet) { m_lacksTimes = m_lacksTimes || packet.pts == AV_NOPTS_VALUE; }

void MediaSource::Rewind() {
    if (!m_standardInput) OpenDecoder(m_path);
}

// The next picture at a time or behind it.
FramePtr MediaSource::DecodeUpTo(std::int64_t time) {
    PassTo(time);
    for (FramePtr frame = DecodeNext(); frame; frame = DecodeNext())
        if (frame->pts == AV_NOPTS_VALUE || frame->pts >= time) return frame;
    return nullptr;
}

// The first picture at a time or behind it; the film's first one where there is none.
FramePtr MediaSource::DecodeFrom(double seconds) {
    if (HoldsPictureFiles(*m_input)) return DecodeNext();
    const std::int64_t time = TimeAt(seconds);
    // One that was just opened is at its begin, which a container without an index would miss.
    const auto isThere = [&] { return seconds <= 0 && m_packets == 0; };
    FramePtr frame;
    if (m_options.keyFrame && (isThere() || Seek(time))) {
        const bool whole = HoldsWholePictures();
        if (whole) frame = DecodeKeyFrame();
        if (!frame && (!whole || Seek(time))) frame = DecodeUpTo(time);
        if (frame) return frame;
    }
    // A key frame that is the picture itself may lie half a frame behind the time.
    const auto half = std::int64_t(0.5 / av_q2d(FrameRate()) / av_q2d(m_video->time_base));
    const bool atBegin = isThere();
    const bool sought = !atBegin && m_origin != AV_NOPTS_VALUE && SeekKeyFrame(time + half);
    if (sought) frame = DecodeUpTo(time);
    if (!sought || m_lacksTimes) {
        if (!atBegin) Rewind();
        frame = DecodeNext();
        // Times that follow from the order of decoding alone are late by what the decoder holds back.
        if (frame && m_lacksTimes) m_origin = frame->pts;
        if (frame && frame->pts < TimeAt(seconds)) frame = DecodeUpTo(TimeAt(seconds));
    }
    if (frame) return frame;
    Rewind();
    return DecodeNext();
}

// A decoder that is asked for what it has need not wait for the pictures that are shown before this one.
FramePtr MediaSource::DecodeKeyFrame() {
    for (const long long before = m_packets; m_packets == before;)
        if (!ReadPacket()) break;
    avcodec_send_packet(m_decoder.get(), nullptr);
    FramePtr frame = ReceiveFrame();
    avcodec_flush_buffers(m_decoder.get());
    return frame && frame->key_frame ? std::move(frame) : nullptr;
}

bool MediaSource::GoTo(double seconds, bool keyFrame) {
    if (!m_decoder || !m_files.empty() || m_origin == AV_NOPTS_VALUE || HoldsPictureFiles(*m_input)) return false;
    m_options.begin = seconds;
    m_options.keyFrame = keyFrame;
    m_pending = DecodeFrom(seconds);
    if (m_pending) m_orientation.Apply(m_pending);
    return m_pending != nullptr;
}

bool MediaSource::ReadsOnTo(double seconds) {
    if (!m_decoder || !m_files.empty() || m_origin == AV_NOPTS_VALUE) return true;
    const std::int64_t time = TimeAt(seconds);
    const AVIndexEntry* const key = avformat_index_get_entry_from_timestamp(m_video, time, AVSEEK_FLAG_BACKWARD);
    if (key && m_readTime != AV_NOPTS_VALUE && key->timestamp > m_readTime) return false;
    PassTo(time);
    return true;
}

// H.264 says for certain which pictures no other one is made from; where pictures come in two fields, of each field.
void MediaSource::PassTo(std::int64_t time) {
    if (HoldsWholePictures() && m_decoder->codec_id == AV_CODEC_ID_H264) m_passedTime = time;
}

PictureShape MediaSource::Shape(const AVFrame& frame) const {
    PictureShape shape = ShapeOf(frame);
    if (!m_reader || m_reader->Coded() == AV_PIX_FMT_NONE) return shape;
    shape.format = m_reader->Coded();
    shape.matrix = AVCOL_SPC_BT470BG;
    shape.fullRange = true;
    return shape;
}

void MediaSource::RefuseHugePictures() const {
    const int width = m_video->codecpar->width, height = m_video->codecpar->height, most = m_options.largestSide;
    if (width > most || height > most)
        Refuse(m_name + " is " + std::to_string(width) + "x" + std::to_string(height) + " pixels large; scale it to " +
               std::to_string(most) + "x" + std::to_string(most) + " at most");
}

std::vector<const AVStream*> MediaSource::AudioStreams() const {
    std::vector<const AVStream*> streams;
    for (unsigned i = 0; i < m_input->nb_streams; ++i)
        if (m_input->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO && m_options.audio)
            streams.push_back(m_input->streams[i]);
    return streams;
}

std::vector<const AVStream*> MediaSource::ExtraStreams() const {
    std::vector<const AVStream*> streams;
    for (unsigned i = 0; i < m_input->nb_streams && m_options.extras; ++i) {
        const AVStream* const stream = m_input->streams[i];
        const AVMediaType type = stream->codecpar->codec_type;
        const bool cover = stream != m_video && (stream->disposition & AV_DISPOSITION_ATTACHED_PIC);
        if (type == AVMEDIA_TYPE_SUBTITLE || type == AVMEDIA_TYPE_ATTACHMENT || cover) streams.push_back(stream);
    }
    return streams;
}

std::span<AVChapter* const> MediaSource::Chapters() const {
    if (!m_options.extras) return {};
    return {m_input->chapters, m_input->nb_chapters};
}

std::pair<double, double> MediaSource::Window() const {
    const double start = m_input->start_time == AV_NOPTS_VALUE ? 0 : double(m_input->start_time) / AV_TIME_BASE;
    const auto [first, last] = m_options.range;
    const double rate = av_q2d(FrameRate()), endless = std::numeric_limits<double>::infinity();
    return {start + double(first) / rate, last == FrameRange::noEnd ? endless : start + double(last + 1) / rate};
}

std::vector<std::string> MediaSource::Photographs() const {
    if (IsPipe(m_path)) return {};
    if (!m_files.empty()) return {m_files.begin(), m_files.end()};
    const bool single = m_reader || HoldsPictureFiles(*m_input);
    return single ? std::vector{m_path} : std::vector<std::string>();
}

bool MediaSource::HasStreamsBeside() const {
    for (unsigned i = 0; i < m_input->nb_streams; ++i)
        if (m_input->streams[i] != m_video && m_input->streams[i]->discard != AVDISCARD_ALL) return true;
    return false;
}

AVRational MediaSource::FrameRate() const {
    const AVRational rate = av_guess_frame_rate(m_input.get(), m_video, nullptr);
    return rate.num > 0 && rate.den > 0 ? rate : AVRational{25, 1};
}

double MediaSource::Length() const {
    if (m_video->duration > 0) return Seconds(m_video->duration, m_video->time_base);
    // Matroska says it in a tag. The whole may be longer by far: subtitles without an end last for weeks.
    int hours = 0, minutes = 0;
    double seconds = 0;
    const AVDictionaryEntry* const tag = av_dict_get(m_video->metadata, "DURATION", nullptr, 0);
    if (tag && std::sscanf(tag->value, "%d:%d:%lf", &hours, &minutes, &seconds) == 3)
        if (const double length = (hours * 60.0 + minutes) * 60 + seconds; length > 0) return length;
    return m_input->duration > 0 ? double(m_input->duration) / AV_TIME_BASE : 0;
}

long long MediaSource::EstimatedFrameCount() const {
    long long count = m_files.empty() ? m_video->nb_frames : (long long)m_files.size();
    if (count <= 0) count = std::llround(Length() * av_q2d(FrameRate()));
    if (count <= 0) return 0;
    return std::max(0LL, std::min(count - 1, m_options.range.last) - m_options.range.first + 1);
}

long long MediaSource::CountFrames(const FrameRange& range) const {
    if (m_reader || !m_files.empty()) {
        const long long count = m_files.empty() ? m_video->nb_frames : (long long)m_files.size();
        return std::max(0LL, std::min(range.last, count - 1) - range.first + 1);
    }
    if (IsPipe(m_path)) return 0;
    const FfmpegListener listener;
    const InputPtr input = OpenInput(m_path, nullptr, nullptr, listener, true);
    const PacketPtr packet = NewPacket();
    for (unsigned i = 0; i < input->nb_streams; ++i)
        if (int(i) != m_video->index) input->streams[i]->discard = AVDISCARD_ALL;
    long long count = 0;
    for (; count <= range.last && av_read_frame(input.get(), packet.get()) >= 0; av_packet_unref(packet.get()))
        if (packet->stream_index == m_video->index && !(packet->flags & AV_PKT_FLAG_DISCARD)) ++count;
    ThrowIfInterrupted();
    return std::max(0LL, count - range.first);
}

std::optional<SourceStep> MediaSource::Next() {
    const FrameRange &range = m_options.range, &chunk = m_options.chunk;
    const long long first = std::max(range.first, chunk.first);
    while (!m_finished) {
        if (m_decoded > std::min(range.last, chunk.last)) {
            ReadTrailingAudio();
            m_finished = true;
            return SourceStep{nullptr, 0, TakeAudio(true)};
        }
        FramePtr frame = std::move(m_pending);
        if (!frame) {
            frame = DecodeNext();
            if (frame) m_orientation.Apply(frame);
        }
        if (!frame) {
            ReportEnd(range, chunk, m_decoded, m_name);
            m_finished = true;
            m_endTime = std::numeric_limits<double>::infinity();
            return SourceStep{nullptr, 0, TakeAudio(true)};
        }
        const long long number = m_decoded++;
        if (number == range.first && number > 0) m_origin = frame->pts;
        if (number < first) {
            DropAudioBefore(*frame);
            continue;
        }
        if (number == first && number > 0) DropAudioBefore(*frame);
        m_endTime = EndTime(*frame);
        if (m_origin != AV_NOPTS_VALUE) frame->pts -= m_origin;
        return SourceStep{std::move(frame), number, TakeAudio(false)};
    }
    return std::nullopt;
}

FramePtr MediaSource::DecodeNext() {
    if (m_reader) return ReadNext();
    for (;;) {
        ThrowIfInterrupted();
        if (FramePtr frame = ReceiveFrame()) return frame;
        if (m_inputEnded) return nullptr;
        if (!ReadPacket()) {
            m_inputEnded = true;
            const int error = avcodec_send_packet(m_decoder.get(), nullptr);
            if (error < 0 && error != AVERROR_EOF) ReportDamage(ErrorText(error));
        }
    }
}

FramePtr MediaSource::ReadNext() {
    for (;;) {
        ThrowIfInterrupted();
        try {
            if (m_files.empty()) return m_reader->Next();
            if (m_packets == (long long)m_files.size()) return nullptr;
            const std::string& file = m_files[std::size_t(m_packets++)];
            if (m_packets > 1) m_reader = OpenPictureFile(file, false, nullptr);
            FramePtr frame = m_reader ? m_reader->Next() : nullptr;
            if (!frame) throw PictureFault("it is of another kind than " + m_files.front());
            frame->pkt_duration = PictureReader::stillDuration;
            frame->pts = (m_packets - 1) * frame->pkt_duration;
            return frame;
        } catch (const PictureFault& fault) {
            ReportDamage(fault.what());
            if (m_files.empty()) return nullptr;
        }
    }
}

FramePtr MediaSource::ReceiveFrame() {
    FramePtr frame = NewFrame();
    int error = AVERROR(EAGAIN);
    // At the end one bad picture must not hide those that still wait behind it.
    do error = avcodec_receive_frame(m_decoder.get(), frame.get());
    while (m_inputEnded && error < 0 && error != AVERROR_EOF && error != AVERROR(EAGAIN) &&
           (ReportDamage(ErrorText(error)), true));
    if (error == AVERROR_EOF) ReportDamageUpTo(DamageLog::allPackets);
    if (error < 0 && error != AVERROR_EOF && error != AVERROR(EAGAIN)) ReportDamage(ErrorText(error));
    if (error < 0) return nullptr;
    ReportDamageUpTo(frame->reordered_opaque);
    if (frame->decode_error_flags || (frame->flags & AV_FRAME_FLAG_CORRUPT)) ReportDamage("a picture is incomplete");
    const std::int64_t oneFrame = std::max<std::int64_t>(
        1, frame->pkt_duration > 0 ? frame->pkt_duration : av_rescale_q(1, av_inv_q(FrameRate()), m_video->time_base));
    frame->pkt_duration = oneFrame;
    frame->pts = frame->best_effort_timestamp;
    if (frame->pts == AV_NOPTS_VALUE) frame->pts = m_lastTime == AV_NOPTS_VALUE ? 0 : m_lastTime + oneFrame;
    if (m_lastTime != AV_NOPTS_VALUE) frame->pts = std::max(frame->pts, m_lastTime + 1);
    m_lastTime = frame->pts;
    bool fullRange = frame->color_range == AVCOL_RANGE_JPEG;
    frame->format = PlainFormat(AVPixelFormat(frame->format), fullRange);
    if (fullRange) frame->color_range = AVCOL_RANGE_JPEG;
    return frame;
}

bool MediaSource::ReadPacket() {
    if (!m_files.empty()) return ReadFile();
    PacketPtr packet = NewPacket();
    const FfmpegListener listener;
    const int error = av_read_frame(m_input.get(), packet.get());
    m_endsEarly = m_endsEarly || listener.EndedEarly();
    if (error < 0) {
        ThrowIfInterrupted();
        const bool quickTime = std::string(m_input->iformat->name).find("mov") != std::string::npos;
        const bool lacksPictures =
            quickTime && m_options.begin == 0 && m_video->discard != AVDISCARD_ALL && m_packets < m_video->nb_frames;
        if (error != AVERROR_EOF)
            m_damage->Add(m_packets, ErrorText(error));
        else if (m_endsEarly || lacksPictures)
            m_damage->Add(m_packets, "the file ends before its end");
        return false;
    }
    if (packet->stream_index != m_video->index) {
        KeepAudio(std::move(packet));
        return true;
    }
    NoteTimes(*packet);
    SendPacket(*packet);
    return true;
}

bool MediaSource::ReadFile() {
    if (m_packets == (long long)m_files.size()) return false;
    const std::vector<std::uint8_t> bytes = ReadWholeFile(m_files[std::size_t(m_packets)]);
    if (bytes.empty()) {
        m_damage->Add(m_packets++, "it is empty or cannot be read");
        return true;
    }
    const PacketPtr packet = NewPacket();
    if (av_new_packet(packet.get(), int(bytes.size())) < 0) throw std::bad_alloc();
    std::copy(bytes.begin(), bytes.end(), packet->data);
    packet->pts = packet->dts = m_packets;
    packet->duration = 1;
    packet->flags = AV_PKT_FLAG_KEY;
    SendPacket(*packet);
    return true;
}

void MediaSource::SendPacket(const AVPacket& packet) {
    if (packet.flags & AV_PKT_FLAG_CORRUPT) m_damage->Add(m_packets, "a part of the file is missing");
    if (m_decoder->codec_id == AV_CODEC_ID_MJPEG && HoldsPictureFiles(*m_input) &&
        !IsWholeJpeg({packet.data, std::size_t(packet.size)}))
        m_damage->Add(m_packets, "the file ends before its end");
    m_decoder->reordered_opaque = m_packets++;
    m_readTime = packet.dts;
    const bool passed = packet.pts != AV_NOPTS_VALUE && packet.pts < m_passedTime;
    m_decoder->skip_frame = passed ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
    const int sent = avcodec_send_packet(m_decoder.get(), &packet);
    if (sent >= 0 || sent == AVERROR(EAGAIN) || sent == AVERROR_EOF) return;
    // Where frames are decoded one at a time, the error is this packet's.
    if (m_decoder->thread_type == FF_THREAD_SLICE) ReportDamageUpTo(m_packets);
    ReportDamage(ErrorText(sent));
}

std::vector<PacketPtr> MediaSource::ReadAudio() {
    if (m_options.range.IsWhole()) {
        m_video->discard = AVDISCARD_ALL;
        m_finished = !ReadPacket();
        return TakeAudio(true);
    }
    // Where a range begins and ends follows from its pictures.
    std::optional<SourceStep> step = Next();
    return step ? std::move(step->audio) : std::vector<PacketPtr>();
}

std::vector<PacketPtr> MediaSource::AudioUntil(double seconds) {
    std::vector<PacketPtr> taken;
    const auto reached = [&] {
        if (taken.empty()) return false;
        const AVPacket& last = *taken.back();
        return last.pts != AV_NOPTS_VALUE &&
               Seconds(last.pts, m_input->streams[last.stream_index]->time_base) >= seconds;
    };
    while (!m_finished && HasStreamsBeside() && !reached())
        for (PacketPtr& packet : ReadAudio()) taken.push_back(std::move(packet));
    return taken;
}

void MediaSource::ReportDamage(const std::string& what) {
    const bool ofFiles = std::size_t(m_decoded) < m_files.size();
    const bool single = m_decoder && m_decoder->thread_type == FF_THREAD_SLICE;
    const std::string where = ofFiles || single ? "" : " at frame " + std::to_string(m_decoded);
    const std::string line =
        (ofFiles ? m_files[std::size_t(m_decoded)] : m_name) + " is damaged or cut short" + where + " (" + what + ")";
    if (!m_options.keepGoing) Refuse(line + "; " + m_options.damageRemedy);
    if (!m_damageReported) PrintWarning(line + "; going on with what is readable");
    m_damageReported = true;
}

void MediaSource::ReportDamageUpTo(std::int64_t packet) {
    if (const std::string what = m_damage->UpTo(packet); !what.empty()) ReportDamage(what);
}

double MediaSource::EndTime(const AVFrame& frame) const {
    return Seconds(frame.pts + frame.pkt_duration, m_video->time_base);
}

void MediaSource::KeepAudio(PacketPtr packet) {
    if (packet->pts == AV_NOPTS_VALUE) packet->pts = packet->dts;
    m_audio.push_back(std::move(packet));
}

void MediaSource::DropAudioBefore(const AVFrame& frame) {
    const double begin = Seconds(frame.pts, m_video->time_base);
    std::erase_if(m_audio, [&](const PacketPtr& packet) {
        const AVStream& stream = *m_input->streams[packet->stream_index];
        // Subtitles that are still shown stay.
        const bool shown = stream.codecpar->codec_type == AVMEDIA_TYPE_SUBTITLE;
        return Seconds(packet->pts + (shown ? packet->duration : 0), stream.time_base) < begin;
    });
}

void MediaSource::ReadTrailingAudio() {
    // Files interleave their streams within about a second.
    constexpr double interleaving = 1;
    while (!m_inputEnded && HasStreamsBeside()) {
        PacketPtr packet = NewPacket();
        if (av_read_frame(m_input.get(), packet.get()) < 0) return;
        if (packet->stream_index != m_video->index)
            KeepAudio(std::move(packet));
        else if (Seconds(packet->dts, m_video->time_base) > m_endTime + interleaving)
            return;
    }
}

std::vector<PacketPtr> MediaSource::TakeAudio(bool atEnd) {
    std::size_t count = m_audio.size();
    // A range that ends takes no audio from behind it, and where that is, is known when its last frame comes.
    if (m_options.range.last != FrameRange::noEnd) {
        const auto isLater = [&](const PacketPtr& packet) {
            return Seconds(packet->pts, m_input->streams[packet->stream_index]->time_base) >= m_endTime;
        };
        if (atEnd) std::erase_if(m_audio, isLater);
        count = std::size_t(std::find_if(m_audio.begin(), m_audio.end(), isLater) - m_audio.begin());
    }
    std::vector<PacketPtr> taken = MoveOut(m_audio, count);
    for (const PacketPtr& packet : taken) {
        if (m_origin == AV_NOPTS_VALUE) continue;
        const AVRational base = m_input->streams[packet->stream_index]->time_base;
        const std::int64_t shift = av_rescale_q(m_origin, m_video->time_base, base);
        if (packet->pts != AV_NOPTS_VALUE) packet->pts -= shift;
        if (packet->dts != AV_NOPTS_VALUE) packet->dts -= shift;
    }
    return taken;
}

}  // namespace Nifikral
