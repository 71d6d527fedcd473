#pragma once

#include <gst/check/gstharness.h>
#include <gst/video/video.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/test_frames.h"

namespace Nifikral::Gst::Testing {

struct Unref {
    void operator()(GstBuffer* buffer) const { gst_buffer_unref(buffer); }
};
using BufferPtr = std::unique_ptr<GstBuffer, Unref>;

/// A GStreamer format, the module's code for it, and where Y, U, V and alpha stand among GStreamer's planes.
struct Format {
    GstVideoFormat format;
    unsigned code;
    std::array<unsigned, 4> planes{0, 1, 2, 3};

    bool HasAlpha() const { return format == GST_VIDEO_FORMAT_BGRA || format == GST_VIDEO_FORMAT_A420; }
};
inline constexpr Format bgra{GST_VIDEO_FORMAT_BGRA, 30}, i420{GST_VIDEO_FORMAT_I420, 0};
inline constexpr Format formats[] = {
    bgra,
    {GST_VIDEO_FORMAT_BGRx, 30},
    i420,
    {GST_VIDEO_FORMAT_YV12, 0, {0, 2, 1}},
    {GST_VIDEO_FORMAT_Y42B, 4},
    {GST_VIDEO_FORMAT_YUV9, 6},
    {GST_VIDEO_FORMAT_YVU9, 6, {0, 2, 1}},
    {GST_VIDEO_FORMAT_Y41B, 7},
    {GST_VIDEO_FORMAT_A420, 35},
};

/// Where a picture's planes lie in a buffer, in GStreamer's order.
struct Layout {
    std::vector<gsize> offsets;
    std::vector<gint> pitches;
    gsize size = 0;
    bool described = true;  ///< by the buffer itself; otherwise GStreamer's own
};

Layout OwnLayout(const Format& format, unsigned width, unsigned height);
/// With more bytes in each row, no two planes alike, and a gap before each plane.
Layout PaddedLayout(const Format& format, unsigned width, unsigned height, unsigned padding);

/// A picture in GStreamer's memory and as the module's frame.
class Picture {
 public:
    /// The frame's pitches are the layout's, unless its planes share rows: then they are GStreamer's own.
    Picture(const Format& format, unsigned width, unsigned height, const Layout& layout, bool sharesRows = false);

    /// A buffer with the frame's rows, where planes do not share them with their padding, and known bytes between them.
    BufferPtr Buffer(GstClockTime time = GST_CLOCK_TIME_NONE);
    std::string Caps(const char* rate) const;

    AVBased::Testing::TestFrame frame;

 private:
    Format m_format;
    unsigned m_width, m_height;
    Layout m_layout;
    bool m_sharesRows;
};

std::vector<unsigned char> BytesOf(GstBuffer& buffer);

/// One element between two pads of the test's own.
class ElementHarness {
 public:
    explicit ElementHarness(const std::string& name) : m_harness(gst_harness_new(name.c_str())) {}
    ElementHarness(const ElementHarness&) = delete;
    ElementHarness& operator=(const ElementHarness&) = delete;
    ~ElementHarness() { gst_harness_teardown(m_harness); }

    operator GstHarness*() const { return m_harness; }
    GObject* Object() const { return G_OBJECT(m_harness->element); }
    void Set(const std::string& property, const std::string& text) {
        gst_util_set_object_arg(Object(), property.c_str(), text.c_str());
    }
    void Begin(const Picture& picture, const char* rate = "25/1") {
        gst_harness_set_src_caps_str(m_harness, picture.Caps(rate).c_str());
    }
    /// What the element makes of it; null when it fails.
    BufferPtr Process(BufferPtr buffer) {
        if (gst_harness_push(m_harness, buffer.release()) != GST_FLOW_OK) return nullptr;
        return BufferPtr(gst_harness_pull(m_harness));
    }

 private:
    GstHarness* m_harness;
};

}  // namespace Nifikral::Gst::Testing
