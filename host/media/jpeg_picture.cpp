#include "host/media/jpeg_picture.h"

extern "C" {
#include <libavutil/intreadwrite.h>
}
#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "host/base/errors.h"

namespace Nifikral {
namespace {

constexpr std::pair<TJSAMP, AVPixelFormat> samplings[] = {
    {TJSAMP_444, AV_PIX_FMT_YUV444P}, {TJSAMP_422, AV_PIX_FMT_YUV422P}, {TJSAMP_420, AV_PIX_FMT_YUV420P},
    {TJSAMP_GRAY, AV_PIX_FMT_GRAY8},  {TJSAMP_440, AV_PIX_FMT_YUV440P}, {TJSAMP_411, AV_PIX_FMT_YUV411P},
};

struct Destroy {
    void operator()(void* handle) const { tjDestroy(handle); }
};
using HandlePtr = std::unique_ptr<void, Destroy>;

// Room for any picture of this size. Pages that stay empty cost nothing.
PacketPtr NewFile(int width, int height, int sampling) {
    PacketPtr packet = NewPacket();
    if (av_new_packet(packet.get(), int(tjBufSize(width, height, sampling))) < 0) throw std::bad_alloc();
    return packet;
}

class JpegPicture final : public PictureReader {
 public:
    JpegPicture(FramePtr picture, AVPixelFormat coded) : m_picture(std::move(picture)), m_coded(coded) {}
    FramePtr Next() override { return std::move(m_picture); }
    int Count() const override { return 1; }
    AVPixelFormat Coded() const override { return m_coded; }

 private:
    FramePtr m_picture;
    AVPixelFormat m_coded;
};

// The segments that stand before the picture, with what programs and cameras say of it.
std::span<const std::uint8_t> Head(std::span<const std::uint8_t> file) {
    constexpr std::size_t segmentHead = 4;
    constexpr std::uint8_t escape = 0xff, firstOfPrograms = 0xe0, lastOfPrograms = 0xef;
    std::size_t at = 2;
    while (at + segmentHead <= file.size() && file[at] == escape && file[at + 1] >= firstOfPrograms &&
           file[at + 1] <= lastOfPrograms)
        at += 2u + file[at + 2] * 256u + file[at + 3];
    return file.first(std::min(at, file.size()));
}

// A picture of next to nothing that FFmpeg has read the head of: for the way up, the pixels' shape, the profile and so
// on. Null where that fails.
FramePtr DecodeHead(std::span<const std::uint8_t> head) {
    constexpr int side = 8;
    constexpr std::size_t ownHead = 20;  // its first mark and segment
    const std::array<unsigned char, side * side> grey{};
    const HandlePtr handle = Require<HandlePtr>(tjInitCompress());
    const PacketPtr tiny = NewFile(side, side, TJSAMP_GRAY);
    unsigned long size = 0;
    if (tjCompress2(handle.get(), grey.data(), side, side, side, TJPF_GRAY, &tiny->data, &size, TJSAMP_GRAY, 50,
                    TJFLAG_NOREALLOC) != 0)
        return nullptr;
    const std::span body = std::span(tiny->data, size).subspan(ownHead);
    const PacketPtr packet = NewPacket();
    if (av_new_packet(packet.get(), int(head.size() + body.size())) < 0) throw std::bad_alloc();
    std::copy(body.begin(), body.end(), std::copy(head.begin(), head.end(), packet->data));
    const AVCodec* const codec = avcodec_find_decoder(AV_CODEC_ID_MJPEG);
    if (!codec) return nullptr;
    const CodecPtr decoder = Require<CodecPtr>(avcodec_alloc_context3(codec));
    FramePtr frame = NewFrame();
    if (avcodec_open2(decoder.get(), codec, nullptr) < 0 || avcodec_send_packet(decoder.get(), packet.get()) < 0 ||
        avcodec_receive_frame(decoder.get(), frame.get()) < 0)
        return nullptr;
    return frame;
}

// The smallest scale at which the decoder leaves a side long enough.
tjscalingfactor ScaleFor(int side, int enough) {
    tjscalingfactor best{1, 1};
    int count = 0;
    const tjscalingfactor* const all = tjGetScalingFactors(&count);
    for (int i = 0; i < count && enough > 0; ++i)
        if (const int scaled = TJSCALED(side, all[i]); scaled >= enough && scaled < TJSCALED(side, best)) best = all[i];
    return best;
}

}  // namespace

std::unique_ptr<PictureReader> OpenJpegPicture(std::span<const std::uint8_t> file, int enoughSide) {
    // What is larger FFmpeg refuses, and says so.
    constexpr long long mostPixels = 250'000'000;
    const HandlePtr handle = Require<HandlePtr>(tjInitDecompress());
    int width = 0, height = 0, sampling = 0, colours = 0;
    if (tjDecompressHeader3(handle.get(), file.data(), file.size(), &width, &height, &sampling, &colours) != 0 ||
        (colours != TJCS_YCbCr && colours != TJCS_GRAY) || (long long)width * height > mostPixels)
        return nullptr;
    const auto* const known = std::find_if(std::begin(samplings), std::end(samplings),
                                           [&](const auto& row) { return row.first == sampling; });
    const FramePtr head = DecodeHead(Head(file));
    if (known == std::end(samplings) || !head) return nullptr;
    const tjscalingfactor scale = ScaleFor(std::max(width, height), enoughSide);
    width = TJSCALED(width, scale);
    height = TJSCALED(height, scale);
    FramePtr frame = NewPicture(AV_PIX_FMT_BGRA, width, height);
    if (tjDecompress2(handle.get(), file.data(), file.size(), frame->data[0], width, frame->linesize[0], height,
                      TJPF_BGRA, TJFLAG_ACCURATEDCT | TJFLAG_STOPONWARNING) != 0)
        return nullptr;
    if (av_frame_copy_props(frame.get(), head.get()) < 0) throw std::bad_alloc();
    frame->colorspace = AVCOL_SPC_RGB;
    frame->color_range = AVCOL_RANGE_JPEG;
    frame->pts = 0;
    frame->pkt_duration = PictureReader::stillDuration;
    return std::make_unique<JpegPicture>(std::move(frame), known->second);
}

bool HasJpegHead(const std::string& path) {
    // Profiles, notes and a thumbnail may stand before what counts.
    constexpr std::size_t enough = 256 << 10;
    std::vector<unsigned char> head(enough);
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(head.data()), enough);
    const HandlePtr handle = Require<HandlePtr>(tjInitDecompress());
    int width = 0, height = 0, sampling = 0, colours = 0;
    return tjDecompressHeader3(handle.get(), head.data(), (unsigned long)file.gcount(), &width, &height, &sampling,
                               &colours) == 0;
}

struct JpegWriter::Parts {
    HandlePtr handle = Require<HandlePtr>(tjInitCompress());
    int sampling;
    int quality, transform;
};

JpegWriter::JpegWriter(AVPixelFormat sampling, Care care) : m_parts(std::make_unique<Parts>()) {
    constexpr int keptQuality = 92, passingQuality = 85;
    m_parts->quality = care == Care::Kept ? keptQuality : passingQuality;
    m_parts->transform = care == Care::Kept ? TJFLAG_ACCURATEDCT : TJFLAG_FASTDCT;
    m_parts->sampling = std::find_if(std::begin(samplings), std::end(samplings), [&](const auto& row) {
                            return row.second == sampling;
                        })->first;
}
JpegWriter::~JpegWriter() = default;

PacketPtr JpegWriter::Write(const AVFrame& frame) {
    const int quality = m_parts->quality;
    void* const handle = m_parts->handle.get();
    const int sampling = m_parts->sampling, flags = m_parts->transform | TJFLAG_NOREALLOC;
    PacketPtr packet = NewFile(frame.width, frame.height, sampling);
    unsigned long size = 0;
    int error = 0;
    if (frame.format == AV_PIX_FMT_BGR0) {
        error = tjCompress2(handle, frame.data[0], frame.width, frame.linesize[0], frame.height, TJPF_BGRX,
                            &packet->data, &size, sampling, quality, flags);
    } else {
        const unsigned char* planes[3] = {frame.data[0], frame.data[1], frame.data[2]};
        error = tjCompressFromYUVPlanes(handle, planes, frame.width, frame.linesize, frame.height, sampling,
                                        &packet->data, &size, quality, flags);
    }
    if (error != 0) throw HostError(ExitCode::Failed, std::string("JPEG cannot be written: ") + tjGetErrorStr2(handle));
    av_shrink_packet(packet.get(), int(size));
    if (const AVRational pixel = frame.sample_aspect_ratio; pixel.num > 0 && pixel.den > 0) {
        constexpr int densities = 13, largest = 65535;
        int across = 0, down = 0;
        av_reduce(&across, &down, pixel.num, pixel.den, largest);
        packet->data[densities] = 0;  // no unit
        AV_WB16(packet->data + densities + 1, across);
        AV_WB16(packet->data + densities + 3, down);
    }
    packet->pts = frame.pts;
    return packet;
}

}  // namespace Nifikral
