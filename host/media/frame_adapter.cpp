#include "host/media/frame_adapter.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "TarvoBased/ITarvoException.h"
#include "TarvoBased/boundary.h"
#include "TarvoBased/error_codes.h"
#include "TarvoBased/res_keeper.h"

namespace Nifikral {
namespace {

constexpr char sourceName[] = "frame_adapter";
enum Line : int { lineBadPlane = 20, lineClone = 40 };

int PlaneCount(const AVFrame& frame) { return av_pix_fmt_count_planes(AVPixelFormat(frame.format)); }

bool IsChroma(const AVPixFmtDescriptor& description, unsigned plane) {
    return description.nb_components > 2 && (plane == 1 || plane == 2);
}

unsigned PlaneRows(const AVFrame& frame, unsigned plane, unsigned height) {
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(AVPixelFormat(frame.format));
    return unsigned(AV_CEIL_RSHIFT(int(height), IsChroma(description, plane) ? description.log2_chroma_h : 0));
}

struct Range {
    const std::uint8_t *begin, *end;
};

// All bytes that an effect may touch: whole rows, padding included.
Range PlaneBytes(const AVFrame& frame, unsigned plane) {
    const std::uint8_t* const begin = frame.data[plane];
    const std::size_t rows = PlaneRows(frame, plane, unsigned(frame.height));
    return {begin, begin + rows * std::size_t(frame.linesize[plane])};
}

bool OwnsItsPlanes(AVFrame& frame) {
    for (int p = 0; p < PlaneCount(frame); ++p) {
        if (frame.linesize[p] < 0) return false;
        const Range bytes = PlaneBytes(frame, unsigned(p));
        const AVBufferRef* const buffer = av_frame_get_plane_buffer(&frame, p);
        if (!buffer || bytes.begin < buffer->data || bytes.end > buffer->data + buffer->size) return false;
        for (int other = 0; other < p; ++other) {
            const Range otherBytes = PlaneBytes(frame, unsigned(other));
            if (bytes.begin < otherBytes.end && otherBytes.begin < bytes.end) return false;
        }
    }
    return true;
}

FramePtr DeepCopy(const AVFrame& frame) {
    FramePtr copy = NewPicture(AVPixelFormat(frame.format), frame.width, frame.height);
    if (av_frame_copy(copy.get(), &frame) < 0 || av_frame_copy_props(copy.get(), &frame) < 0) throw std::bad_alloc();
    return copy;
}

// Copies a picture whose rows run upwards in memory, or whose padding is not its own.
void GiveOwnPlanes(FramePtr& frame) {
    if (!OwnsItsPlanes(*frame)) frame = DeepCopy(*frame);
}

// An effect may look at the sample behind a row's last one. In rows without padding that is the next row's first one,
// so it is put there in rows with padding: a picture is to become the same however it lies in memory.
void ContinueRows(AVFrame& frame) {
    const auto format = AVPixelFormat(frame.format);
    const auto step = std::size_t(av_pix_fmt_desc_get(format)->comp[0].step);
    for (int p = 0; p < PlaneCount(frame); ++p) {
        const auto rowBytes = std::size_t(av_image_get_linesize(format, frame.width, p));
        const auto pitch = std::size_t(frame.linesize[p]);
        const unsigned rows = PlaneRows(frame, unsigned(p), unsigned(frame.height));
        if (rowBytes < step || pitch < rowBytes + step) continue;
        for (unsigned y = 0; y < rows; ++y) {
            std::uint8_t* const end = frame.data[p] + y * pitch + rowBytes;
            std::memcpy(end, y + 1 < rows ? end + pitch - rowBytes : end - step, step);
        }
    }
}

}  // namespace

FrameAdapter::FrameAdapter(AVFrame& frame, unsigned formatCode, int timeStamp)
    : m_frame(&frame), m_formatCode(formatCode), m_timeStamp(timeStamp) {}

FrameAdapter::FrameAdapter(FramePtr frame, unsigned formatCode, int timeStamp)
    : m_owned(std::move(frame)), m_formatCode(formatCode), m_timeStamp(timeStamp) {
    GiveOwnPlanes(m_owned);
    m_frame = m_owned.get();
    m_canBeModified = av_frame_is_writable(m_frame) > 0;
}

void FrameAdapter::GetDimension(unsigned* width, unsigned* height) {
    if (width) *width = unsigned(m_frame->width) - m_cropRight;
    if (height) *height = unsigned(m_frame->height) - m_cropBottom;
}

unsigned FrameAdapter::GetBufferCount() { return unsigned(PlaneCount(*m_frame)); }

unsigned FrameAdapter::GetTotalSize() {
    unsigned total = 0;
    for (unsigned p = 0; p < GetBufferCount(); ++p) {
        unsigned pitch = 0, rows = 0;
        GetBuffer(p, nullptr, &pitch, &rows);
        total += pitch * rows;
    }
    return total;
}

unsigned char* FrameAdapter::GetBuffer(unsigned plane, unsigned* rowBytes, unsigned* pitch, unsigned* rows) {
    const bool exists = plane < GetBufferCount();
    unsigned width = 0, height = 0;
    GetDimension(&width, &height);
    const auto format = AVPixelFormat(m_frame->format);
    if (rowBytes) *rowBytes = exists ? unsigned(av_image_get_linesize(format, int(width), int(plane))) : 0;
    if (pitch) *pitch = exists ? unsigned(m_frame->linesize[plane]) : 0;
    if (rows) *rows = exists ? PlaneRows(*m_frame, plane, height) : 0;
    if (exists) return m_frame->data[plane];
    TarvoBased::GetTarvoException()->SetException(TarvoBased::errorBadIndex, TarvoBased::textBadIndex, lineBadPlane,
                                                  sourceName);
    return nullptr;
}

double FrameAdapter::GetDAR() {
    const AVRational shape = m_frame->sample_aspect_ratio;
    const double pixel = shape.num > 0 && shape.den > 0 ? av_q2d(shape) : 1;
    return m_frame->height > 0 ? pixel * m_frame->width / m_frame->height : 0;
}

void FrameAdapter::CropRightAndBottom(unsigned right, unsigned bottom) {
    m_cropRight = std::min(right, unsigned(m_frame->width));
    m_cropBottom = std::min(bottom, unsigned(m_frame->height));
}

unsigned FrameAdapter::GetDuplicatedCount(unsigned* total) {
    if (total) *total = m_duplicatedTotal;
    return m_duplicatedCount;
}

void FrameAdapter::SetDuplicatedCount(unsigned count, unsigned total) {
    m_duplicatedCount = count;
    m_duplicatedTotal = total;
}

AVBased::IRawVideoFrame* FrameAdapter::Clone() {
    return TarvoBased::AtBoundary(lineClone, sourceName, [&]() -> AVBased::IRawVideoFrame* {
        FramePtr copy;
        try {
            copy = DeepCopy(*m_frame);
        } catch (const std::bad_alloc&) {
            TarvoBased::RaiseNoMemory(lineClone);
        }
        auto clone = std::make_unique<FrameAdapter>(std::move(copy), m_formatCode, m_timeStamp);
        clone->m_duration = m_duration;
        clone->SetDuplicatedCount(m_duplicatedCount, m_duplicatedTotal);
        clone->CropRightAndBottom(m_cropRight, m_cropBottom);
        clone->SetBorderData(m_borderData, m_borderSize);
        return clone.release();
    });
}

void FrameAdapter::SetBorderData(void* data, int size) {
    m_borderData = data;
    m_borderSize = size;
}

void FrameAdapter::GetBorderData(void** data, int* size) {
    if (data) *data = m_borderData;
    if (size) *size = m_borderSize;
}

void PrepareForEffects(FramePtr& frame) {
    GiveOwnPlanes(frame);
    if (av_frame_make_writable(frame.get()) < 0) throw std::bad_alloc();
    ContinueRows(*frame);
}

}  // namespace Nifikral
