#include "tests/bridges/gstreamer/element_harness.h"

#include <cstdlib>

namespace Nifikral::Gst::Testing {
namespace {

using AVBased::Testing::FrameLayout;
using AVBased::Testing::TestFrame;

// GStreamer with this build's plug-in alone.
class GStreamer : public testing::Environment {
 public:
    void SetUp() override {
        setenv("GST_PLUGIN_PATH", NIFIKRAL_GSTREAMER_FOLDER, true);
        setenv("GST_PLUGIN_SYSTEM_PATH_1_0", "", true);
        setenv("GST_REGISTRY", NIFIKRAL_GSTREAMER_FOLDER "/registry", true);
        setenv("GST_REGISTRY_FORK", "no", true);
        unsetenv("NIFIKRAL_MODULE");
        gst_init(nullptr, nullptr);
    }
    void TearDown() override { gst_deinit(); }
};
[[maybe_unused]] const testing::Environment* const environment = testing::AddGlobalTestEnvironment(new GStreamer);

FrameLayout FrameLayoutOf(const Format& format, unsigned width, unsigned height, const Layout& layout) {
    FrameLayout result{{0, 0, 0, 0}, true};
    TestFrame tight(format.code, width, height, result);
    for (unsigned p = 0; p < tight.GetBufferCount(); ++p) {
        unsigned rowBytes = 0;
        tight.GetBuffer(p, &rowBytes, nullptr, nullptr);
        result.padding[p] = unsigned(layout.pitches[format.planes[p]]) - rowBytes;
    }
    return result;
}

}  // namespace

Layout OwnLayout(const Format& format, unsigned width, unsigned height) {
    GstVideoInfo info;
    gst_video_info_set_format(&info, format.format, width, height);
    const unsigned planes = GST_VIDEO_INFO_N_PLANES(&info);
    return {{info.offset, info.offset + planes}, {info.stride, info.stride + planes}, info.size, false};
}

Layout PaddedLayout(const Format& format, unsigned width, unsigned height, unsigned padding) {
    Layout layout = OwnLayout(format, width, height);
    layout.described = true;
    layout.size = 0;
    for (unsigned p = 0; p < layout.offsets.size(); ++p) {
        layout.pitches[p] += int(padding + p);
        layout.offsets[p] = layout.size + 3;
        layout.size = layout.offsets[p] + gsize(layout.pitches[p]) * height;
    }
    return layout;
}

Picture::Picture(const Format& format, unsigned width, unsigned height, const Layout& layout, bool sharesRows)
    : frame(format.code, width, height,
            FrameLayoutOf(format, width, height, sharesRows ? OwnLayout(format, width, height) : layout)),
      m_format(format),
      m_width(width),
      m_height(height),
      m_layout(layout),
      m_sharesRows(sharesRows) {}

BufferPtr Picture::Buffer(GstClockTime time) {
    BufferPtr buffer(gst_buffer_new_allocate(nullptr, m_layout.size, nullptr));
    gst_buffer_memset(buffer.get(), 0, 0xA5, m_layout.size);
    for (unsigned p = 0; p < frame.GetBufferCount(); ++p) {
        unsigned rowBytes = 0, pitch = 0, rows = 0;
        const unsigned char* const bytes = frame.GetBuffer(p, &rowBytes, &pitch, &rows);
        const unsigned plane = m_format.planes[p];
        for (unsigned y = 0; y < rows; ++y)
            gst_buffer_fill(buffer.get(), m_layout.offsets[plane] + gsize(m_layout.pitches[plane]) * y,
                            bytes + std::size_t(pitch) * y, m_sharesRows ? rowBytes : pitch);
    }
    if (m_layout.described)
        gst_buffer_add_video_meta_full(buffer.get(), GST_VIDEO_FRAME_FLAG_NONE, m_format.format, m_width, m_height,
                                       guint(m_layout.offsets.size()), m_layout.offsets.data(),
                                       m_layout.pitches.data());
    GST_BUFFER_PTS(buffer.get()) = time;
    return buffer;
}

std::vector<unsigned char> BytesOf(GstBuffer& buffer) {
    std::vector<unsigned char> bytes(gst_buffer_get_size(&buffer));
    gst_buffer_extract(&buffer, 0, bytes.data(), bytes.size());
    return bytes;
}

std::string Picture::Caps(const char* rate) const {
    return std::string("video/x-raw, format=") + gst_video_format_to_string(m_format.format) +
           ", width=" + std::to_string(m_width) + ", height=" + std::to_string(m_height) + ", framerate=" + rate;
}

}  // namespace Nifikral::Gst::Testing
