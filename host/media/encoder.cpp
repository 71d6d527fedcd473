#include "host/media/encoder.h"

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <string_view>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/media/ffmpeg_log.h"

namespace Nifikral {
namespace {

bool Is(const AVCodec& codec, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), std::string_view(codec.name)) != names.end();
}

bool IsJpeg(const AVCodec& codec) { return codec.id == AV_CODEC_ID_MJPEG || codec.id == AV_CODEC_ID_LJPEG; }

// What threads of these encoders share a picture out into. As many on every machine, so that each makes the same
// stream; more than two threads, because they end sooner where one of them has to wait. Each more costs a little
// quality.
constexpr int mostSlices = 4;

// Codecs whose streams count time in frames and cannot hold the fine clocks of containers.
bool CountsTimeInFrames(const AVCodec& codec) {
    switch (codec.id) {
        case AV_CODEC_ID_MPEG1VIDEO:
        case AV_CODEC_ID_MPEG2VIDEO:
        case AV_CODEC_ID_MPEG4:
        case AV_CODEC_ID_H263:
        case AV_CODEC_ID_FLV1:
        case AV_CODEC_ID_MSMPEG4V2:
        case AV_CODEC_ID_MSMPEG4V3:
        case AV_CODEC_ID_WMV2:
        case AV_CODEC_ID_THEORA:
        case AV_CODEC_ID_WRAPPED_AVFRAME:
            return true;
        default:
            return false;
    }
}

std::vector<AVPixelFormat> Formats(const AVCodec& codec, const Encoder::Purpose& purpose) {
    std::vector<AVPixelFormat> formats(purpose.formats.begin(), purpose.formats.end());
    if (formats.empty() && codec.pix_fmts)
        for (const AVPixelFormat* format = codec.pix_fmts; *format != AV_PIX_FMT_NONE; ++format)
            formats.push_back(*format);
    std::erase_if(formats, [](AVPixelFormat format) {
        bool twin = false;
        return PlainFormat(format, twin) != format || !sws_isSupportedOutput(format);
    });
    return formats;
}

// Those whose streams are to be played everywhere, which colours at every pixel would prevent.
bool IsForAllPlayers(const AVCodec& codec) {
    constexpr AVCodecID codecs[] = {AV_CODEC_ID_H264, AV_CODEC_ID_HEVC, AV_CODEC_ID_VP8,
                                    AV_CODEC_ID_VP9,  AV_CODEC_ID_AV1,  AV_CODEC_ID_MPEG2VIDEO};
    return std::find(std::begin(codecs), std::end(codecs), codec.id) != std::end(codecs);
}

// Whether the alpha that effects make is kept. Fades are, only where one chooses a codec for its alpha: a player that
// does not know of it would show no fade. Programs that read BMP take none for granted.
bool HoldsAlpha(const AVCodec& codec, const std::vector<AVPixelFormat>& formats, bool fades) {
    constexpr AVCodecID forAlpha[] = {AV_CODEC_ID_PNG,   AV_CODEC_ID_APNG,  AV_CODEC_ID_TIFF,     AV_CODEC_ID_WEBP,
                                      AV_CODEC_ID_TARGA, AV_CODEC_ID_QTRLE, AV_CODEC_ID_JPEG2000, AV_CODEC_ID_PRORES};
    if (codec.id == AV_CODEC_ID_BMP || (!formats.empty() && std::none_of(formats.begin(), formats.end(), HasAlpha)))
        return false;
    return !fades || std::find(std::begin(forAlpha), std::end(forAlpha), codec.id) != std::end(forAlpha);
}

PictureShape ChooseShape(const AVCodec& codec, const OutputTraits& traits, const Encoder::Purpose& purpose) {
    PictureShape shape = traits.source;
    shape.format = ChooseFormat(codec, traits, purpose);
    const bool yuv = !IsRgb(shape.format), yuvSource = !IsRgb(traits.source.format);
    shape.fullRange = yuv && (IsJpeg(codec) || (yuvSource && traits.source.fullRange));
    if (yuv && IsJpeg(codec)) shape.matrix = AVCOL_SPC_BT470BG;
    if (yuv && !yuvSource && !IsJpeg(codec)) shape.matrix = UsualMatrix(shape.height);
    if (!yuv) shape.matrix = AVCOL_SPC_RGB;
    return shape;
}

// Bits a second of what the first pass went through, with the coarsest steps that the second may take everywhere.
std::int64_t LeastBitRate(const std::string& statistics, const AVCodecContext& context) {
    constexpr double reserve = 1.5;  // what the second pass makes of it was up to 1.38 times as much
    std::istringstream pictures(statistics);
    double bits = 0;
    int count = 0;
    for (std::string picture; std::getline(pictures, picture, ';');) {
        const char* const kind = std::strstr(picture.c_str(), "type:");
        int type = 0, inner = 0, outer = 0, vectors = 0, rest = 0;
        double quality = 0;
        if (!kind || std::sscanf(kind, "type:%d q:%lf itex:%d ptex:%d mv:%d misc:%d", &type, &quality, &inner, &outer,
                                 &vectors, &rest) != 6)
            continue;
        const double coarsest =
            FF_QP2LAMBDA * context.qmax * (type == AV_PICTURE_TYPE_I ? std::abs(double(context.i_quant_factor)) : 1);
        bits += quality * (double(inner) + outer + 1) / coarsest + vectors + rest;
        ++count;
    }
    return count > 0 ? std::int64_t(bits * reserve * av_q2d(context.framerate) / count) : 0;
}

}  // namespace

AVPixelFormat ChooseFormat(const AVCodec& codec, const OutputTraits& traits, const Encoder::Purpose& purpose) {
    std::vector<AVPixelFormat> formats = Formats(codec, purpose);
    const bool alpha = traits.translucent != AV_PIX_FMT_NONE && HoldsAlpha(codec, formats, traits.fades);
    AVPixelFormat wanted = alpha ? traits.translucent : traits.preferred;
    if (IsForAllPlayers(codec)) {
        if (IsRgb(wanted)) wanted = alpha ? AV_PIX_FMT_YUVA420P : AV_PIX_FMT_YUV420P;
        if (traits.dvd) wanted = AV_PIX_FMT_YUV420P;
    } else if (Is(codec, {"libwebp", "libwebp_anim"})) {
        wanted = AV_PIX_FMT_BGRA;
    } else if (IsJpeg(codec)) {
        formats = {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P};
    } else if (purpose.still && !IsRgb(wanted)) {
        wanted = HasAlpha(wanted) ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGB24;
    }
    if (formats.empty() || std::find(formats.begin(), formats.end(), wanted) != formats.end()) return wanted;
    formats.push_back(AV_PIX_FMT_NONE);
    return avcodec_find_best_pix_fmt_of_list(formats.data(), wanted, HasAlpha(wanted), nullptr);
}

const AVCodec& FindEncoder(const std::string& name, AVCodecID usual) {
    const AVCodec* const codec =
        name.empty() ? avcodec_find_encoder(usual) : avcodec_find_encoder_by_name(name.c_str());
    if (codec && codec->type == AVMEDIA_TYPE_VIDEO) return *codec;
    if (name.empty())
        throw HostError(ExitCode::Output, std::string("there is no encoder for ") + avcodec_get_name(usual) +
                                              "; choose another extension or name one with --encoder");
    throw HostError(ExitCode::Usage,
                    "--encoder " + name + " names no video encoder; " +
                        (codec && codec->type == AVMEDIA_TYPE_AUDIO ? "for the sound name it with --audio-encoder"
                                                                    : "ffmpeg -encoders lists them"));
}

Encoder::Encoder(const AVCodec& codec, const OutputOptions& options, const OutputTraits& traits, const Purpose& purpose)
    : m_context(Require<CodecPtr>(avcodec_alloc_context3(&codec))),
      m_shape(ChooseShape(codec, traits, purpose)),
      m_sourceBase(traits.timeBase),
      m_keyTimes(options.keyTimes) {
    AVCodecContext& context = *m_context;
    context.width = m_shape.width;
    context.height = m_shape.height;
    context.pix_fmt = m_shape.format;
    context.sample_aspect_ratio = traits.pixelAspect;
    context.framerate = traits.frameRate;
    context.time_base = CountsTimeInFrames(codec) || purpose.still ? av_inv_q(traits.frameRate) : traits.timeBase;
    if (purpose.still) m_sourceBase = context.time_base;
    context.thread_count = options.threads;
    if (codec.id == AV_CODEC_ID_MPEG1VIDEO || codec.id == AV_CODEC_ID_MPEG2VIDEO || codec.id == AV_CODEC_ID_MPEG4)
        context.slices = std::min(mostSlices, (m_shape.height + 15) / 16);
    context.color_primaries = traits.primaries;
    context.color_trc = traits.transfer;
    context.colorspace = m_shape.matrix;
    context.chroma_sample_location = traits.chromaLocation;
    const bool yuv = !IsRgb(m_shape.format);
    context.color_range = yuv && m_shape.fullRange ? AVCOL_RANGE_JPEG : yuv ? AVCOL_RANGE_MPEG : AVCOL_RANGE_JPEG;
    if (yuv && !m_shape.fullRange && !IsRgb(traits.source.format)) context.color_range = traits.range;
    context.field_order = traits.fieldOrder;
    // Interlaced 4:2:0 needs pairs of chroma rows in each field.
    if (traits.fieldOrder != AV_FIELD_PROGRESSIVE && m_shape.height % 4 == 0)
        context.flags |= AV_CODEC_FLAG_INTERLACED_DCT;
    if (purpose.globalHeader) context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (purpose.still && codec.id == AV_CODEC_ID_MJPEG && options.encoder.empty() && options.encoderOptions.empty()) {
        UseJpegWriter(traits);
        return;
    }
    SetQuality(options, traits.dvd);
    if (options.firstPass) UsePass(*options.firstPass);
    const FfmpegListener listener;
    if (const int error = avcodec_open2(&context, &codec, nullptr); error < 0) {
        const std::string& complaint = listener.Complaint();
        throw HostError(ExitCode::Output, std::string("the encoder ") + codec.name + " does not take " +
                                              av_get_pix_fmt_name(m_shape.format) + " pictures of " +
                                              std::to_string(m_shape.width) + "x" + std::to_string(m_shape.height) +
                                              " (" + (complaint.empty() ? ErrorText(error) : complaint) +
                                              "); choose another with --encoder or another extension");
    }
}

// Pixels go in as they are, and so do planes that need no more than another range.
void Encoder::UseJpegWriter(const OutputTraits& traits) {
    m_jpeg.emplace(m_shape.format);
    const bool even = m_shape.width % 2 == 0 && m_shape.height % 2 == 0;
    if (even && !IsRgb(traits.source.format) && !traits.source.fullRange) return;
    m_shape.format = AV_PIX_FMT_BGR0;
    m_shape.matrix = AVCOL_SPC_RGB;
    m_shape.fullRange = false;
}

// What every player of video DVDs can follow.
void Encoder::SetDvdRates() {
    AVCodecContext& context = *m_context;
    context.bit_rate = 6'000'000;
    context.rc_max_rate = 9'000'000;
    context.rc_buffer_size = 224 * 1024 * 8;
    context.gop_size = context.framerate.num == 25 * context.framerate.den ? 15 : 18;
    context.max_b_frames = 2;
    // Noise fits into that only with the coarsest steps.
    av_opt_set(&context, "non_linear_quant", "1", AV_OPT_SEARCH_CHILDREN);
    context.qmax = 28;
}

void Encoder::SetQuality(const OutputOptions& options, bool dvd) {
    AVCodecContext& context = *m_context;
    const AVCodec& codec = *context.codec;
    const auto set = [&](const char* key, const char* value) {
        return av_opt_set(&context, key, value, AV_OPT_SEARCH_CHILDREN) >= 0;
    };
    if (Is(codec, {"libx264", "libx265"})) set("crf", "18");
#if defined(__x86_64__)
    // With AVX-512, libx264 bases the bits of B-frames on memory that nothing has set, unless rows have a multiple of
    // eight macroblocks: each run would give other bytes. AVX2 is as fast.
    if (Is(codec, {"libx264"}) && __builtin_cpu_supports("avx512f")) set("x264-params", "asm=AVX2");
#endif
    if (Is(codec, {"libvpx-vp9", "libvpx"})) {
        set("crf", "20");
        set("b", "0");
        set("row-mt", "1");
        set("cpu-used", "3");
    }
    if (Is(codec, {"libwebp", "libwebp_anim"})) set("quality", "92");
    if (dvd && codec.id == AV_CODEC_ID_MPEG2VIDEO) {
        SetDvdRates();
    } else if (IsJpeg(codec) || CountsTimeInFrames(codec)) {
        context.flags |= AV_CODEC_FLAG_QSCALE;
        // Of this one, 10 is the best.
        context.global_quality = (codec.id == AV_CODEC_ID_THEORA ? 8 : 2) * FF_QP2LAMBDA;
    }
    for (const std::string& option : options.encoderOptions) {
        const std::size_t equals = option.find('=');
        if (equals == std::string::npos || !set(option.substr(0, equals).c_str(), option.substr(equals + 1).c_str()))
            throw HostError(ExitCode::Usage, "--encoder-option " + option + " is none of " + codec.name +
                                                 "'s; ffmpeg -h encoder=" + codec.name + " lists them");
    }
}

void Encoder::UsePass(StatisticsOfPass& pass) {
    m_context->flags |= pass.complete ? AV_CODEC_FLAG_PASS2 : AV_CODEC_FLAG_PASS1;
    if (!pass.complete) {
        m_firstPass = &pass;
        return;
    }
    m_context->stats_in = pass.text.data();
    // FFmpeg would not only refuse a lower rate, but free the same memory twice.
    const std::int64_t least = LeastBitRate(pass.text, *m_context);
    if (least <= m_context->bit_rate) return;
    PrintWarning("its pictures take " + std::to_string(least / 1000) + " kbit/s at least in place of " +
                 std::to_string(m_context->bit_rate / 1000) + "; leave films out where the space does not suffice");
    m_context->bit_rate = least;
    m_context->rc_max_rate = std::max(m_context->rc_max_rate, least);
}

// Whether a picture is the first one at a time, in the context's base, from which players begin.
bool Encoder::BeginsAnew(std::int64_t time) {
    const double seconds = (double(time) + 0.5) * av_q2d(m_context->time_base);
    const std::size_t before = m_nextKey;
    while (m_nextKey < m_keyTimes.size() && m_keyTimes[m_nextKey] < seconds) ++m_nextKey;
    return m_nextKey > before;
}

std::string Encoder::Description() const {
    return std::string(m_jpeg ? "libjpeg-turbo" : m_context->codec->name) + ", " +
           av_get_pix_fmt_name(m_context->pix_fmt) + " " + std::to_string(m_shape.width) + "x" +
           std::to_string(m_shape.height);
}

void Encoder::Encode(FramePtr frame, const std::function<void(AVPacket&)>& store) {
    if (m_jpeg) {
        if (frame) store(*m_jpeg->Write(*frame));
        return;
    }
    if (frame) {
        frame->quality = m_context->global_quality;
        frame->pts = av_rescale_q(frame->pts, m_sourceBase, m_context->time_base);
        if (m_lastTime != AV_NOPTS_VALUE) frame->pts = std::max(frame->pts, m_lastTime + 1);
        m_lastTime = frame->pts;
        frame->pict_type = BeginsAnew(frame->pts) ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
        frame->pkt_duration = av_rescale_q(frame->pkt_duration, m_sourceBase, m_context->time_base);
    }
    int error = avcodec_send_frame(m_context.get(), frame.get());
    const PacketPtr packet = NewPacket();
    while (error >= 0) {
        error = avcodec_receive_packet(m_context.get(), packet.get());
        if (error == AVERROR_EOF && m_firstPass) m_firstPass->complete = true;
        if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return;
        if (error >= 0 && m_firstPass && m_context->stats_out) m_firstPass->text += m_context->stats_out;
        if (error >= 0) store(*packet);
        av_packet_unref(packet.get());
    }
    throw HostError(ExitCode::Failed, std::string("the encoder ") + m_context->codec->name + " fails (" +
                                          ErrorText(error) + "); choose another with --encoder");
}

}  // namespace Nifikral
