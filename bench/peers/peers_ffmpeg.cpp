#include <memory>
#include <string>

#include "bench/peers/peers.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
}

namespace Bench {
namespace {

constexpr unsigned alphaPlane = 3;

// A chain of filters on one thread. Frames go in by reference, so that filters which work in place do so.
class Chain {
 public:
    Chain(const std::string& filters, AVPixelFormat format) : m_format(format), m_graph(avfilter_graph_alloc()) {
        m_graph->nb_threads = 1;
        // A filter that does not know the format is left out, rather than fed through a conversion.
        avfilter_graph_set_auto_convert(m_graph.get(), unsigned(AVFILTER_AUTO_CONVERT_NONE));
        const std::string source = "video_size=" + std::to_string(frameWidth) + "x" + std::to_string(frameHeight) +
                                   ":pix_fmt=" + std::to_string(int(format)) + ":time_base=1/25";
        AVFilterInOut *inputs = nullptr, *outputs = nullptr;
        m_usable = avfilter_graph_create_filter(&m_source, avfilter_get_by_name("buffer"), "in", source.c_str(),
                                                nullptr, m_graph.get()) >= 0 &&
                   avfilter_graph_create_filter(&m_sink, avfilter_get_by_name("buffersink"), "out", nullptr, nullptr,
                                                m_graph.get()) >= 0 &&
                   avfilter_graph_parse2(m_graph.get(), filters.c_str(), &inputs, &outputs) >= 0 && inputs && outputs &&
                   avfilter_link(m_source, 0, inputs->filter_ctx, unsigned(inputs->pad_idx)) >= 0 &&
                   avfilter_link(outputs->filter_ctx, unsigned(outputs->pad_idx), m_sink, 0) >= 0 &&
                   avfilter_graph_config(m_graph.get(), nullptr) >= 0;
        avfilter_inout_free(&inputs);
        avfilter_inout_free(&outputs);
    }

    bool IsUsable() const { return m_usable; }

    void Run(CRawVideoFrame& picture) {
        AVFrame* frame = av_frame_alloc();
        frame->format = m_format;
        frame->width = int(frameWidth);
        frame->height = int(frameHeight);
        frame->pts = m_pts++;
        for (unsigned p = 0; p < picture.GetBufferCount(); ++p) {
            unsigned pitch = 0, rows = 0;
            frame->data[p] = picture.GetBuffer(p, nullptr, &pitch, &rows);
            frame->linesize[p] = int(pitch);
            frame->buf[p] = av_buffer_create(
                frame->data[p], std::size_t(pitch) * rows, [](void*, std::uint8_t*) {}, nullptr, 0);
        }
        if (av_buffersrc_add_frame(m_source, frame) >= 0)
            while (av_buffersink_get_frame(m_sink, frame) >= 0) av_frame_unref(frame);
        av_frame_free(&frame);
    }

 private:
    struct FreeGraph {
        void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
    };
    AVPixelFormat m_format;
    std::unique_ptr<AVFilterGraph, FreeGraph> m_graph;
    AVFilterContext *m_source = nullptr, *m_sink = nullptr;
    std::int64_t m_pts = 0;
    bool m_usable = false;
};

Work WorkOf(const char* filters, AVPixelFormat format) {
    if (!*filters) return nullptr;
    const auto chain = std::make_shared<Chain>(filters, format);
    if (!chain->IsUsable()) return nullptr;
    return [chain](CRawVideoFrame& frame) { chain->Run(frame); };
}

struct Peer {
    const char *row, *packed, *planar;
};

constexpr Peer peers[] = {
    {"gray FFmpeg", "", "hue=s=0"},
    {"invert FFmpeg", "negate", "negate"},
    {"flip_color FFmpeg", "colorchannelmixer=0:0:1:0:0:1:0:0:1:0:0:0", ""},
    {"aged_film FFmpeg", "colorchannelmixer=.393:.769:.189:0:.349:.686:.168:0:.272:.534:.131", "lutyuv=u=117:v=136"},
    {"brightness_contrast FFmpeg", "lutrgb=r=val*1.3+13:g=val*1.3+13:b=val*1.3+13", "eq=contrast=1.3:brightness=0.2"},
    {"brightness_contrast saturation FFmpeg", "", "eq=contrast=1.3:brightness=0.2:saturation=1.4"},
    {"directfadein FFmpeg", "fade=in:start_frame=0:nb_frames=100000", "fade=in:start_frame=0:nb_frames=100000"},
    {"colorfilter FFmpeg", "colorchannelmixer=rr=1:gg=.76:bb=.52", "colorize=hue=30:saturation=0.5:mix=0.6"},
    {"popstyle FFmpeg", "", "pseudocolor=c0=trunc(val/64)*64:c1=trunc(val/64)*64:c2=256-trunc(val/64)*64"},
    {"simple_gauss_blur FFmpeg", "convolution=1 2 1 2 4 2 1 2 1:1 2 1 2 4 2 1 2 1:1 2 1 2 4 2 1 2 1",
     "convolution=1 2 1 2 4 2 1 2 1:1 2 1 2 4 2 1 2 1:1 2 1 2 4 2 1 2 1"},
    {"simple_laplacian_sharpen FFmpeg",
     "convolution=-1 -1 -1 -1 9 -1 -1 -1 -1:-1 -1 -1 -1 9 -1 -1 -1 -1:-1 -1 -1 -1 9 -1 -1 -1 -1",
     "convolution=-1 -1 -1 -1 9 -1 -1 -1 -1:-1 -1 -1 -1 9 -1 -1 -1 -1:-1 -1 -1 -1 9 -1 -1 -1 -1"},
    {"erode FFmpeg", "", "erosion"},
    {"dilate FFmpeg", "", "dilation"},
    {"mosaic FFmpeg", "pixelize=w=8:h=8", "pixelize=w=8:h=8"},
    {"edgelight FFmpeg", "sobel", "sobel"},
    {"spherize FFmpeg", "lenscorrection=k1=0.2:k2=0.1", "lenscorrection=k1=0.2:k2=0.1"},
    {"portrait FFmpeg", "", "bilateral=sigmaS=4:sigmaR=0.1:planes=1"},
    {"addnoise FFmpeg", "", "noise=c0s=20:c0f=t"},
    {"addnoise colour FFmpeg", "", "noise=alls=20:allf=t"},
    {"reverse mirror FFmpeg", "hflip", "hflip"},
    {"EffectNameRotate90X FFmpeg", "transpose=1,scale=608:1080:flags=bilinear,pad=1920:1080:-1:-1",
     "transpose=1,scale=608:1080:flags=bilinear,pad=1920:1080:-1:-1"},
    {"spotlight FFmpeg", "vignette", "vignette"},
};

}  // namespace

void RegisterFfmpeg() {
    av_log_set_level(AV_LOG_QUIET);
    for (const Peer& peer : peers)
        RegisterPeer(peer.row, WorkOf(peer.packed, AV_PIX_FMT_BGRA), WorkOf(peer.planar, AV_PIX_FMT_YUV420P));
    const char fade[] = "fade=in:start_frame=0:nb_frames=100000000:alpha=1";
    RegisterPeer("fadein FFmpeg", WorkOf(fade, AV_PIX_FMT_BGRA), WorkOf(fade, AV_PIX_FMT_YUVA420P), formatPlanarAlpha,
                 alphaPlane);
    RegisterPeer("transparency FFmpeg", WorkOf("colorchannelmixer=aa=0.5", AV_PIX_FMT_BGRA),
                 WorkOf("lutyuv=a=val/2", AV_PIX_FMT_YUVA420P), formatPlanarAlpha, alphaPlane);
}

}  // namespace Bench
