#include "host/studio/preview_coding.h"

#include "host/base/errors.h"
#include "host/media/encoder.h"
#include "host/media/frame_adapter.h"
#include "host/media/jpeg_picture.h"
#include "host/media/picture_formats.h"
#include "host/studio/shared_frame.h"

namespace Nifikral {
namespace {

FramePtr Converted(const AVFrame& frame, AVPixelFormat format) {
    FramePtr picture = Referenced(frame);
    PictureShape shape = ShapeOf(frame);
    shape.format = format;
    PictureConverter(shape).Convert(picture);
    return picture;
}

}  // namespace

std::string JpegOf(const AVFrame& frame, bool showsAlpha) {
    const bool alpha = showsAlpha && HasAlpha(AVPixelFormat(frame.format));
    FramePtr picture = Converted(frame, alpha ? AV_PIX_FMT_BGRA : AV_PIX_FMT_BGR0);
    if (picture->format == AV_PIX_FMT_BGRA) {
        PrepareForEffects(picture);
        LayOverBlack(*picture);
        picture->format = AV_PIX_FMT_BGR0;
    }
    thread_local JpegWriter writer(AV_PIX_FMT_YUV420P, JpegWriter::Care::Passing);
    const PacketPtr file = writer.Write(*picture);
    return {reinterpret_cast<const char*>(file->data), std::size_t(file->size)};
}

std::string PngOf(const AVFrame& frame) {
    const bool alpha = HasAlpha(AVPixelFormat(frame.format));
    FramePtr picture = Converted(frame, alpha ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGB24);
    const CodecPtr encoder = Require<CodecPtr>(avcodec_alloc_context3(&FindEncoder("png", AV_CODEC_ID_PNG)));
    encoder->width = picture->width;
    encoder->height = picture->height;
    encoder->pix_fmt = AVPixelFormat(picture->format);
    encoder->time_base = {1, 25};
    encoder->compression_level = 1;
    const PacketPtr packet = NewPacket();
    picture->pts = 0;
    if (avcodec_open2(encoder.get(), encoder->codec, nullptr) < 0 ||
        avcodec_send_frame(encoder.get(), picture.get()) < 0 || avcodec_send_frame(encoder.get(), nullptr) < 0 ||
        avcodec_receive_packet(encoder.get(), packet.get()) < 0)
        throw HostError(ExitCode::Failed, "the picture cannot be written as PNG; ask for a JPEG");
    return {reinterpret_cast<const char*>(packet->data), std::size_t(packet->size)};
}

FramePtr PartOf(const AVFrame& frame, const PicturePart& part) {
    FramePtr picture = Converted(frame, AV_PIX_FMT_BGRA);
    picture->data[0] += std::ptrdiff_t(part.top) * picture->linesize[0] + std::ptrdiff_t(part.left) * 4;
    picture->width = part.width;
    picture->height = part.height;
    return picture;
}

std::string Framed(const std::string& picture) {
    std::string bytes;
    for (const int shift : {24, 16, 8, 0}) bytes += char(picture.size() >> shift & 255);
    return bytes + picture;
}

}  // namespace Nifikral
