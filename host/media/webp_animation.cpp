#include "host/media/webp_animation.h"

extern "C" {
#include <libavutil/intreadwrite.h>
}
#include <webp/demux.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace Nifikral {
namespace {

struct DeleteDecoder {
    void operator()(WebPAnimDecoder* decoder) const { WebPAnimDecoderDelete(decoder); }
};

class WebpAnimation final : public PictureReader {
 public:
    explicit WebpAnimation(std::vector<std::uint8_t> file) : m_file(std::move(file)) {
        WebPAnimDecoderOptions options;
        WebPAnimDecoderOptionsInit(&options);
        options.color_mode = MODE_BGRA;
        const WebPData data = {m_file.data(), m_file.size()};
        m_decoder.reset(WebPAnimDecoderNew(&data, &options));
        if (!m_decoder || !WebPAnimDecoderGetInfo(m_decoder.get(), &m_info))
            throw PictureFault("its parts do not fit together, or its end is missing");
    }

    int Count() const override { return int(m_info.frame_count); }

    FramePtr Next() override {
        if (!WebPAnimDecoderHasMoreFrames(m_decoder.get())) return nullptr;
        std::uint8_t* pixels = nullptr;
        int end = 0;
        if (!WebPAnimDecoderGetNext(m_decoder.get(), &pixels, &end)) throw PictureFault("a picture is incomplete");
        FramePtr frame = NewPicture(AV_PIX_FMT_BGRA, int(m_info.canvas_width), int(m_info.canvas_height));
        const std::size_t rowBytes = std::size_t(m_info.canvas_width) * 4;
        for (int y = 0; y < frame->height; ++y)
            std::memcpy(frame->data[0] + std::ptrdiff_t(y) * frame->linesize[0], pixels + std::size_t(y) * rowBytes,
                        rowBytes);
        frame->colorspace = AVCOL_SPC_RGB;
        frame->color_range = AVCOL_RANGE_JPEG;
        frame->pts = m_begin;
        frame->pkt_duration = end > m_begin ? end - m_begin : stillDuration;
        m_begin += frame->pkt_duration;
        return frame;
    }

 private:
    std::vector<std::uint8_t> m_file;  // the decoder reads on in it
    std::unique_ptr<WebPAnimDecoder, DeleteDecoder> m_decoder;
    WebPAnimInfo m_info{};
    std::int64_t m_begin = 0;
};

}  // namespace

bool IsWebpAnimation(std::span<const std::uint8_t> head) {
    constexpr std::size_t flags = 20;
    constexpr std::uint8_t animated = 0x02;
    const std::string_view text(reinterpret_cast<const char*>(head.data()), std::min(head.size(), flags));
    return head.size() > flags && text.starts_with("RIFF") && text.substr(8, 8) == "WEBPVP8X" &&
           (head[flags] & animated);
}

std::unique_ptr<PictureReader> OpenWebpAnimation(std::vector<std::uint8_t> file) {
    // The decoder would take the memory for two whole pictures at once.
    constexpr std::size_t width = 24, height = 27, end = 30;
    if (file.size() >= end) RequirePixels(AV_RL24(&file[width]) + 1, AV_RL24(&file[height]) + 1);
    return std::make_unique<WebpAnimation>(std::move(file));
}

}  // namespace Nifikral
