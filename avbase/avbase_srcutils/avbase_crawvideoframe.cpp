#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/boundary.h"
#include "TarvoBased/error_codes.h"
#include "avbase/avbase_srcutils/pixel_formats.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

constexpr char sourceName[] = "../avbase/avbase_srcutils/avbase_crawvideoframe";

// Lines that the host reads beside an error of this unit.
enum Line : int { lineGetBuffer = 120, lineClone = 160, lineLayOut = 210, lineBadFormat = 310 };

constexpr std::size_t alignment = 64;

// In 64 bits, since a row of four bytes a pixel may pass 2^32 before it is refused.
std::uint64_t RowBytes(const PlaneShape& shape, std::uint64_t width) { return width * shape.bytes / shape.pixels; }

const FormatInfo& RequireFormat(unsigned code) {
    const FormatInfo* const info = FindFormat(code);
    if (!info) throw CBaseException(errorBadFormat, textBadPixelFormat, lineBadFormat, sourceName);
    return *info;
}

}  // namespace

void GetImageParameters(unsigned format, unsigned width, unsigned height, bool& packed, unsigned& planeCount,
                        std::vector<unsigned>& rows, std::vector<unsigned>& rowBytes, std::vector<unsigned>& grouping,
                        std::vector<unsigned>& verticalSubsampling) {
    const FormatInfo& info = RequireFormat(format);
    packed = info.packed;
    planeCount = info.components;
    for (auto* list : {&rows, &rowBytes, &grouping, &verticalSubsampling}) list->clear();
    for (unsigned i = 0; i < info.PlaneCount(); ++i) {
        const PlaneShape& shape = info.planes[i];
        rows.push_back(height / shape.rows);
        rowBytes.push_back(static_cast<unsigned>(RowBytes(shape, width)));
        grouping.push_back(shape.pixels * 65536u + shape.bytes);
        verticalSubsampling.push_back(shape.rows);
    }
}

void CRawVideoFrame::FreeAligned::operator()(unsigned char* memory) const {
    ::operator delete[](memory, std::align_val_t{alignment});
}

CRawVideoFrame::CRawVideoFrame(bool flag, unsigned format, unsigned width, unsigned height, bool topDown)
    : m_format(format) {
    m_attributes.flag = flag;
    m_attributes.topDown = topDown;
    LayOut(width, height);
    std::memset(m_memory.get(), 0, GetRequireSize());
}

CRawVideoFrame::CRawVideoFrame(const CRawVideoFrame& other)
    : IRawVideoFrame(other), m_attributes(other.m_attributes), m_format(other.m_format) {
    LayOut(other.m_width, other.m_height);
    std::memcpy(m_memory.get(), other.m_memory.get(), GetRequireSize());
}

void CRawVideoFrame::LayOut(unsigned width, unsigned height) {
    const FormatInfo& info = RequireFormat(m_format);
    std::vector<FrameBuffer> planes(info.PlaneCount());
    std::uint64_t total = 0;
    for (unsigned i = 0; i < info.PlaneCount(); ++i) {
        const PlaneShape& shape = info.planes[i];
        const std::uint64_t rowBytes = RowBytes(shape, width);
        const std::uint64_t pitch = (rowBytes + alignment - 1) / alignment * alignment;
        FrameBuffer& plane = planes[i];
        plane.rows = height / shape.rows;
        // The sizes that a frame reports are 32-bit, so nothing larger than that can be had.
        constexpr std::uint64_t limit = std::numeric_limits<unsigned>::max();
        if (pitch > limit || pitch * plane.rows > limit - total)
            throw CBaseException(errorNoMemory, textNoMemory, lineLayOut, sourceName);
        plane.rowBytes = static_cast<unsigned>(rowBytes);
        plane.pixelsPerGroup = shape.pixels;
        plane.bytesPerGroup = shape.bytes;
        plane.verticalSubsampling = shape.rows;
        plane.pitch = static_cast<unsigned>(pitch);
        total += pitch * plane.rows;
    }
    // A picture without samples still has addresses, so one more unit than the planes need.
    const std::size_t bytes = static_cast<std::size_t>(total) + alignment;
    std::unique_ptr<unsigned char[], FreeAligned> memory(
        new (std::align_val_t{alignment}, std::nothrow) unsigned char[bytes]);
    if (!memory) throw CBaseException(errorNoMemory, textNoMemory, lineLayOut, sourceName);
    std::size_t offset = 0;
    for (FrameBuffer& plane : planes) {
        plane.data = memory.get() + offset;
        offset += std::size_t(plane.pitch) * plane.rows;
    }
    m_packed = info.packed;
    m_width = width;
    m_height = height;
    m_planes = std::move(planes);
    m_memory = std::move(memory);
}

void CRawVideoFrame::GetDimension(unsigned* width, unsigned* height) {
    if (width) *width = m_width - m_attributes.cropRight;
    if (height) *height = m_height - m_attributes.cropBottom;
}

unsigned char* CRawVideoFrame::GetBuffer(unsigned plane, unsigned* rowBytes, unsigned* pitch, unsigned* rows) {
    if (rowBytes) *rowBytes = 0;
    if (pitch) *pitch = 0;
    if (rows) *rows = 0;
    return AtBoundary(lineGetBuffer, sourceName, [&] {
        if (plane >= m_planes.size()) throw CBaseException(errorBadIndex, textBadIndex, lineGetBuffer, sourceName);
        const FrameBuffer& buffer = m_planes[plane];
        const std::uint64_t shownColumns = m_width - m_attributes.cropRight;
        if (rowBytes) *rowBytes = static_cast<unsigned>(shownColumns * buffer.bytesPerGroup / buffer.pixelsPerGroup);
        if (pitch) *pitch = buffer.pitch;
        if (rows) *rows = (m_height - m_attributes.cropBottom) / buffer.verticalSubsampling;
        return buffer.data;
    });
}

void CRawVideoFrame::CropRightAndBottom(unsigned right, unsigned bottom) {
    m_attributes.cropRight = std::min(right, m_width);
    m_attributes.cropBottom = std::min(bottom, m_height);
}

unsigned CRawVideoFrame::GetDuplicatedCount(unsigned* total) {
    if (total) *total = m_attributes.duplicatedTotal;
    return m_attributes.duplicatedCount;
}

void CRawVideoFrame::SetDuplicatedCount(unsigned count, unsigned total) {
    m_attributes.duplicatedCount = count;
    m_attributes.duplicatedTotal = total;
}

IRawVideoFrame* CRawVideoFrame::Clone() {
    return AtBoundary(lineClone, sourceName, [&]() -> IRawVideoFrame* { return new CRawVideoFrame(*this); });
}

void CRawVideoFrame::SetBorderData(void* data, int size) {
    m_attributes.borderData = data;
    m_attributes.borderSize = size;
}

void CRawVideoFrame::GetBorderData(void** data, int* size) {
    if (data) *data = m_attributes.borderData;
    if (size) *size = m_attributes.borderSize;
}

void CRawVideoFrame::SetSize(unsigned width, unsigned height) {
    m_attributes.cropRight = m_attributes.cropBottom = 0;
    if (width == m_width && height == m_height) return;
    LayOut(width, height);
    std::memset(m_memory.get(), 0, GetRequireSize());
}

unsigned CRawVideoFrame::GetRequireSize() const {
    unsigned size = 0;
    for (const FrameBuffer& plane : m_planes) size += plane.pitch * plane.rows;
    return size;
}

}  // namespace AVBased
