#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
}

#include <memory>
#include <new>
#include <string>

/// Owners for FFmpeg's objects, and its error numbers as words.
namespace Nifikral {

struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct FreePacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct FreeCodec {
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
};
struct CloseInput {
    void operator()(AVFormatContext* input) const { avformat_close_input(&input); }
};
using FramePtr = std::unique_ptr<AVFrame, FreeFrame>;
using PacketPtr = std::unique_ptr<AVPacket, FreePacket>;
using CodecPtr = std::unique_ptr<AVCodecContext, FreeCodec>;
using InputPtr = std::unique_ptr<AVFormatContext, CloseInput>;

template <class Owner>
Owner Require(typename Owner::pointer object) {
    if (!object) throw std::bad_alloc();
    return Owner(object);
}
inline FramePtr NewFrame() { return Require<FramePtr>(av_frame_alloc()); }
inline PacketPtr NewPacket() { return Require<PacketPtr>(av_packet_alloc()); }

/// A frame with memory of its own for a picture of this format and size.
FramePtr NewPicture(AVPixelFormat format, int width, int height);

/// The unit of a container's own times; FFmpeg's AV_TIME_BASE_Q is C alone.
inline constexpr AVRational containerTimes = {1, AV_TIME_BASE};

std::string ErrorText(int error);

}  // namespace Nifikral
