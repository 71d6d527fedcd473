#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <vector>

#include "avbase/IRawVideoFrame.h"
#include "avbase/avbase_srcutils/pixel_formats.h"

namespace AVBased::Fuzzing {

/// A frame of a host that is not to be trusted: planes that its format has not, rows longer than their pitch, calls
/// that return null or throw, sizes that are others with every call, clones of another size or without planes. What it
/// says of its memory holds: pitch x rows bytes of each plane are there, and no more.
class HostileFrame final : public IRawVideoFrame {
 public:
    /// `data` decides, now and in later calls, and outlives the frame.
    explicit HostileFrame(FuzzedDataProvider& data) : m_data(data) {
        m_habit = Habit(std::max(0, data.ConsumeIntegralInRange(-12, int(Habit::Last))));
        const unsigned largest = data.ConsumeIntegralInRange(0, 3) == 3 ? 70 : 20;
        const auto side = [&] { return data.ConsumeIntegralInRange(0U, largest); };
        m_format = AnyFormat();
        m_width = side();
        m_height = side();
        const FormatInfo* const info = FindFormat(m_format);
        m_count = info ? info->PlaneCount() : 1;
        const unsigned char seed = data.ConsumeIntegral<unsigned char>();
        for (unsigned p = 0; p < m_count; ++p) {
            const PlaneShape shape = info ? info->planes[p] : PlaneShape{1, 1, 1};
            Plane& plane = m_planes[p];
            if (m_habit == Habit::HasOddPlanes) {
                constexpr unsigned bytesPerPixel = 4;
                plane = {side() * bytesPerPixel, side() * bytesPerPixel, side(), {}};
            } else {
                const unsigned rowBytes = m_width * shape.bytes / shape.pixels;
                plane = {rowBytes, rowBytes + data.ConsumeIntegralInRange(0U, 9U), m_height / shape.rows, {}};
            }
            plane.memory.resize(std::size_t(plane.pitch) * plane.rows);
            unsigned state = seed;
            for (unsigned char& byte : plane.memory)
                byte = static_cast<unsigned char>((state = state * 69069 + 1) >> 16);
        }
        m_timeStamp = data.ConsumeIntegralInRange(-2, 40);
    }

    unsigned GetPixelFormat() override { return ChangesNow() ? AnyFormat() : m_format; }
    void GetDimension(unsigned* width, unsigned* height) override {
        if (width) *width = Changed(m_width);
        if (height) *height = Changed(m_height);
    }
    int GetTimeStamp() override { return m_timeStamp; }
    void SetTimeStamp(int timeStamp) override { m_timeStamp = timeStamp; }
    bool IsTopDown() override { return true; }
    bool IsPacked() override { return m_count == 1; }
    unsigned GetBufferCount() override { return Changed(m_count); }
    unsigned GetTotalSize() override { return Changed(m_width * m_height); }
    unsigned char* GetBuffer(unsigned plane, unsigned* rowBytes, unsigned* pitch, unsigned* rows) override {
        if (m_habit == Habit::Throws && m_data.ConsumeBool()) throw std::runtime_error("the frame has gone");
        Plane none;
        Plane& own = plane < m_planes.size() ? m_planes[plane] : none;
        if (rowBytes) *rowBytes = ChangesNow() ? m_data.ConsumeIntegralInRange(0U, own.pitch + 9) : own.rowBytes;
        if (pitch) *pitch = own.pitch;
        if (rows) *rows = Changed(own.rows);
        const bool fails = own.memory.empty() || (m_habit == Habit::ReturnsNull && m_data.ConsumeBool());
        return fails ? nullptr : own.memory.data();
    }
    double GetDAR() override { return 0; }
    void CropRightAndBottom(unsigned, unsigned) override {}
    void Free() override { delete this; }
    unsigned GetDuration() override { return 0; }
    void SetDuration(unsigned) override {}
    unsigned GetDuplicatedCount(unsigned*) override { return 0; }
    void SetDuplicatedCount(unsigned, unsigned) override {}
    IRawVideoFrame* Clone() override {
        if (m_habit == Habit::ReturnsNull) return nullptr;
        if (m_habit == Habit::Throws && m_data.ConsumeBool()) throw std::runtime_error("the frame is not cloned");
        if (m_habit == Habit::ClonesAnother) return new HostileFrame(m_data);
        auto* const clone = new HostileFrame(*this);
        if (m_habit == Habit::ClonesHalf) clone->m_planes[m_data.ConsumeIntegralInRange(0U, 3U)] = {};
        return clone;
    }
    bool CanBeModified() override { return true; }
    void SetCanBeModified(bool) override {}
    bool IsInterlaced() override { return false; }
    void SetInterlaced(bool) override {}
    bool IsTopFieldFirst() override { return false; }
    void SetTopFieldFirst(bool) override {}
    void SetBorderData(void*, int) override {}
    void GetBorderData(void**, int*) override {}

 private:
    enum class Habit { None, HasOddPlanes, ReturnsNull, Throws, Changes, ClonesAnother, ClonesHalf, Last = ClonesHalf };
    struct Plane {
        unsigned rowBytes = 0, pitch = 0, rows = 0;
        std::vector<unsigned char> memory;
    };

    bool ChangesNow() { return m_habit == Habit::Changes && m_data.ConsumeBool(); }
    unsigned Changed(unsigned most) { return ChangesNow() ? m_data.ConsumeIntegralInRange(0U, most) : most; }
    unsigned AnyFormat() {
        constexpr unsigned unknown = 999;
        const std::size_t chosen = m_data.ConsumeIntegralInRange<std::size_t>(0, 2 * std::size(formats));
        return chosen == std::size(formats)  ? unknown
               : chosen < std::size(formats) ? formats[chosen].code
                                             : formatRgba32;
    }

    FuzzedDataProvider& m_data;
    Habit m_habit;
    unsigned m_format, m_width, m_height, m_count;
    int m_timeStamp = 0;
    std::array<Plane, 4> m_planes;
};

}  // namespace AVBased::Fuzzing
