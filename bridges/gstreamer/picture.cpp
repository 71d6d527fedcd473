#include "bridges/gstreamer/picture.h"

#include <array>
#include <cstdint>

#include "avbase/avbase_srcutils/pixel_formats.h"

namespace Nifikral::Gst {
namespace {

struct PictureFormat {
    GstVideoFormat format;
    unsigned code;
};

// What effects know as it is.
constexpr PictureFormat pictureFormats[] = {
    {GST_VIDEO_FORMAT_BGRA, AVBased::formatRgba32},
    {GST_VIDEO_FORMAT_BGRx, AVBased::formatRgba32},
    {GST_VIDEO_FORMAT_I420, 0},
    {GST_VIDEO_FORMAT_YV12, 0},
    {GST_VIDEO_FORMAT_Y42B, 4},
    {GST_VIDEO_FORMAT_YUV9, 6},
    {GST_VIDEO_FORMAT_YVU9, 6},
    {GST_VIDEO_FORMAT_Y41B, 7},
    {GST_VIDEO_FORMAT_A420, 35},
};

unsigned CodeOf(GstVideoFormat format) {
    for (const PictureFormat& row : pictureFormats)
        if (row.format == format) return row.code;
    return 0;
}

// The module's planes are Y, U, V and alpha: GStreamer's components, whatever the order of its planes. A packed
// picture's only plane is that of its first component.
unsigned PlaneIndex(const GstVideoFrame& picture, unsigned component) {
    return unsigned(GST_VIDEO_FRAME_COMP_PLANE(&picture, component));
}

BorrowedPlane PlaneOf(const GstVideoFrame& picture, unsigned component) {
    const unsigned plane = PlaneIndex(picture, component);
    return {
        static_cast<unsigned char*>(GST_VIDEO_FRAME_PLANE_DATA(&picture, plane)),
        unsigned(GST_VIDEO_FRAME_COMP_WIDTH(&picture, component) * GST_VIDEO_FRAME_COMP_PSTRIDE(&picture, component)),
        unsigned(GST_VIDEO_FRAME_PLANE_STRIDE(&picture, plane)),
        unsigned(GST_VIDEO_FRAME_COMP_HEIGHT(&picture, component))};
}

struct Bytes {
    std::uintptr_t begin, end;

    bool Holds(const Bytes& other) const { return begin <= other.begin && other.end <= end; }
    bool Meets(const Bytes& other) const { return begin < other.end && other.begin < end; }
};

Bytes BytesFrom(const void* begin, std::size_t size) {
    const auto address = reinterpret_cast<std::uintptr_t>(begin);
    return {address, address + size};
}

// A picture that says itself how it lies in memory is mapped plane by plane, any other one as a whole.
Bytes MappedAround(const GstVideoFrame& picture, unsigned plane) {
    const GstMapInfo& map = picture.map[picture.meta ? plane : 0];
    return BytesFrom(map.data, map.size);
}

}  // namespace

GstCaps* CapsOf(const EffectInfo& effect) {
    GValue formats = G_VALUE_INIT;
    g_value_init(&formats, GST_TYPE_LIST);
    for (const PictureFormat& row : pictureFormats) {
        const GstVideoFormatInfo* const info = gst_video_format_get_info(row.format);
        if ((effect.traits & changesAlpha) && !GST_VIDEO_FORMAT_INFO_HAS_ALPHA(info)) continue;
        GValue name = G_VALUE_INIT;
        g_value_init(&name, G_TYPE_STRING);
        g_value_set_static_string(&name, GST_VIDEO_FORMAT_INFO_NAME(info));
        gst_value_list_append_and_take_value(&formats, &name);
    }
    GstCaps* const caps = gst_caps_from_string("video/x-raw, width=" GST_VIDEO_SIZE_RANGE
                                               ", height=" GST_VIDEO_SIZE_RANGE ", framerate=" GST_VIDEO_FPS_RANGE);
    gst_caps_set_value(caps, "format", &formats);
    g_value_unset(&formats);
    return caps;
}

BorrowedFrame FrameOf(GstVideoFrame& picture, int timeStamp) {
    std::array<BorrowedPlane, GST_VIDEO_MAX_PLANES> planes;
    const unsigned count = GST_VIDEO_FRAME_N_PLANES(&picture);
    for (unsigned p = 0; p < count; ++p) planes[p] = PlaneOf(picture, p);
    const auto width = unsigned(GST_VIDEO_FRAME_WIDTH(&picture)), height = unsigned(GST_VIDEO_FRAME_HEIGHT(&picture));
    BorrowedFrame frame(CodeOf(GST_VIDEO_FRAME_FORMAT(&picture)), width, height, {planes.data(), count}, timeStamp);
    frame.SetInterlaced(GST_VIDEO_FRAME_IS_INTERLACED(&picture));
    frame.SetTopFieldFirst(GST_VIDEO_FRAME_IS_TFF(&picture));
    return frame;
}

bool PlanesStandAlone(const GstVideoFrame& picture) {
    std::array<Bytes, GST_VIDEO_MAX_PLANES> planes;
    for (unsigned p = 0; p < GST_VIDEO_FRAME_N_PLANES(&picture); ++p) {
        const unsigned index = PlaneIndex(picture, p);
        if (GST_VIDEO_FRAME_PLANE_STRIDE(&picture, index) < 0) return false;
        const BorrowedPlane plane = PlaneOf(picture, p);
        planes[p] = BytesFrom(plane.data, std::size_t(plane.pitch) * plane.rows);
        if (plane.pitch < plane.rowBytes || !MappedAround(picture, index).Holds(planes[p])) return false;
        for (unsigned other = 0; other < p; ++other)
            if (planes[p].Meets(planes[other])) return false;
    }
    return true;
}

GstVideoFrame* ScratchPicture::CopyOf(const GstVideoFrame& picture) {
    Release();
    GstVideoInfo info;
    if (!gst_video_info_set_format(&info, GST_VIDEO_FRAME_FORMAT(&picture), guint(GST_VIDEO_FRAME_WIDTH(&picture)),
                                   guint(GST_VIDEO_FRAME_HEIGHT(&picture))))
        return nullptr;
    GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, info.size, nullptr);
    if (!buffer) return nullptr;
    // Some effects show what follows a row.
    gst_buffer_memset(buffer, 0, 0, info.size);
    m_mapped = gst_video_frame_map(&m_picture, &info, buffer, GST_MAP_READWRITE);
    // From here on the mapped picture keeps it.
    gst_buffer_unref(buffer);
    return m_mapped && gst_video_frame_copy(&m_picture, &picture) ? &m_picture : nullptr;
}

void ScratchPicture::Release() {
    if (m_mapped) gst_video_frame_unmap(&m_picture);
    m_mapped = false;
}

}  // namespace Nifikral::Gst
