#include "bridges/common/borrowed_frame.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "TarvoBased/ITarvoException.h"
#include "TarvoBased/boundary.h"
#include "TarvoBased/error_codes.h"
#include "TarvoBased/res_keeper.h"
#include "avbase/avbase_srcutils/pixel_formats.h"

namespace Nifikral {
namespace {

constexpr char sourceName[] = "borrowed_frame";
// Lines that a caller reads beside an error of this unit.
enum Line : int { lineBadPlane = 20, lineClone = 40 };

unsigned DividedUp(unsigned value, unsigned divisor) { return value / divisor + (value % divisor != 0); }

}  // namespace

BorrowedFrame::BorrowedFrame(unsigned format, unsigned width, unsigned height, std::span<const BorrowedPlane> planes,
                             int timeStamp) {
    m_state.format = format;
    m_state.width = width;
    m_state.height = height;
    m_state.planeCount = unsigned(std::min(planes.size(), m_state.planes.size()));
    std::copy_n(planes.begin(), m_state.planeCount, m_state.planes.begin());
    m_state.timeStamp = timeStamp;
    m_state.displayAspectRatio = height > 0 ? double(width) / height : 0;
}

BorrowedFrame::BorrowedFrame(const State& original) : m_state(original) {
    std::size_t bytes = 0;
    for (const BorrowedPlane& plane : original.planes) bytes += Bytes(plane);
    m_memory.reset(new (std::nothrow) unsigned char[bytes]);
    if (!m_memory) TarvoBased::RaiseNoMemory(lineClone);
    unsigned char* next = m_memory.get();
    for (BorrowedPlane& plane : m_state.planes) {
        if (!plane.data) continue;
        std::memcpy(next, plane.data, Bytes(plane));
        plane.data = next;
        next += Bytes(plane);
    }
}

void BorrowedFrame::GetDimension(unsigned* width, unsigned* height) {
    if (width) *width = m_state.width - m_state.cropRight;
    if (height) *height = m_state.height - m_state.cropBottom;
}

unsigned BorrowedFrame::GetTotalSize() {
    unsigned total = 0;
    for (unsigned p = 0; p < m_state.planeCount; ++p) total += unsigned(Bytes(Cropped(p)));
    return total;
}

BorrowedPlane BorrowedFrame::Cropped(unsigned plane) const {
    BorrowedPlane rest = m_state.planes[plane];
    const AVBased::FormatInfo* const format = AVBased::FindFormat(m_state.format);
    if (!format || plane >= format->PlaneCount()) return rest;
    const AVBased::PlaneShape& shape = format->planes[plane];
    const unsigned width = m_state.width - m_state.cropRight, height = m_state.height - m_state.cropBottom;
    rest.rowBytes = std::min(rest.rowBytes, DividedUp(width, shape.pixels) * shape.bytes);
    rest.rows = std::min(rest.rows, DividedUp(height, shape.rows));
    return rest;
}

unsigned char* BorrowedFrame::GetBuffer(unsigned plane, unsigned* rowBytes, unsigned* pitch, unsigned* rows) {
    const bool exists = plane < m_state.planeCount;
    const BorrowedPlane shown = exists ? Cropped(plane) : BorrowedPlane{};
    if (rowBytes) *rowBytes = shown.rowBytes;
    if (pitch) *pitch = shown.pitch;
    if (rows) *rows = shown.rows;
    if (!exists)
        TarvoBased::GetTarvoException()->SetException(TarvoBased::errorBadIndex, TarvoBased::textBadIndex, lineBadPlane,
                                                      sourceName);
    return shown.data;
}

void BorrowedFrame::CropRightAndBottom(unsigned right, unsigned bottom) {
    m_state.cropRight = std::min(right, m_state.width);
    m_state.cropBottom = std::min(bottom, m_state.height);
}

void BorrowedFrame::Free() {
    if (m_memory) delete this;
}

unsigned BorrowedFrame::GetDuplicatedCount(unsigned* total) {
    if (total) *total = m_state.duplicatedTotal;
    return m_state.duplicatedCount;
}

void BorrowedFrame::SetDuplicatedCount(unsigned count, unsigned total) {
    m_state.duplicatedCount = count;
    m_state.duplicatedTotal = total;
}

AVBased::IRawVideoFrame* BorrowedFrame::Clone() {
    return TarvoBased::AtBoundary(lineClone, sourceName,
                                  [&]() -> AVBased::IRawVideoFrame* { return new BorrowedFrame(m_state); });
}

void BorrowedFrame::SetBorderData(void* data, int size) {
    m_state.borderData = data;
    m_state.borderSize = size;
}

void BorrowedFrame::GetBorderData(void** data, int* size) {
    if (data) *data = m_state.borderData;
    if (size) *size = m_state.borderSize;
}

}  // namespace Nifikral
