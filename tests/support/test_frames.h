#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <ostream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "TarvoBased/ITarvoException.h"
#include "avbase/IVideoProc.h"
#include "avbase/avbase_srcutils/pixel_formats.h"
#include "effects/ImageEffects.h"
#include "tests/support/guarded_memory.h"

namespace AVBased::Testing {

using Grid = std::vector<std::vector<unsigned>>;

/// How a test frame's planes lie in memory.
struct FrameLayout {
    std::array<unsigned, 4> padding{7, 3, 3, 5};  ///< bytes between a row's end and the next row, by plane
    bool roundChromaUp = false;                   ///< as hosts do that give an odd edge chroma of its own
};

/// A host's frame with guarded planes, any pitches, and a count of the frames alive.
class TestFrame : public IRawVideoFrame {
 public:
    static inline std::atomic<int> alive = 0;
    bool refuseClone = false;
    /// What the frame's clone is instead of a copy; the frame gives it away.
    std::unique_ptr<TestFrame> otherClone;

    /// `reportedCode` replaces the format code that the frame reports, for codes that have no layout.
    TestFrame(unsigned format, unsigned width, unsigned height, FrameLayout layout = {}, int reportedCode = -1)
        : m_info(*FindFormat(format)),
          m_code(reportedCode < 0 ? format : unsigned(reportedCode)),
          m_width(width),
          m_height(height) {
        ++alive;
        for (unsigned p = 0; p < m_info.PlaneCount(); ++p) {
            const PlaneShape& shape = m_info.planes[p];
            const unsigned up = layout.roundChromaUp && (p == 1 || p == 2) ? 1 : 0;
            const unsigned rowBytes = (width * shape.bytes + up * (shape.pixels - 1u)) / shape.pixels;
            const unsigned rows = (height + up * (shape.rows - 1u)) / shape.rows;
            const unsigned pitch = rowBytes + layout.padding[p];
            m_planes.push_back({rowBytes, pitch, rows, GuardedMemory(std::size_t(pitch) * rows)});
        }
    }
    TestFrame(const TestFrame& other)
        : IRawVideoFrame(other),
          m_info(other.m_info),
          m_code(other.m_code),
          m_width(other.m_width),
          m_height(other.m_height),
          m_timeStamp(other.m_timeStamp),
          m_planes(other.m_planes) {
        ++alive;
    }
    TestFrame& operator=(const TestFrame&) = delete;
    ~TestFrame() override { --alive; }

    void Randomise(std::mt19937& random, Content content = Content::Random) {
        for (Plane& plane : m_planes)
            for (std::size_t i = 0; i < plane.memory.size(); ++i) plane.memory.data()[i] = RandomByte(random, content);
    }
    void Fill(unsigned plane, unsigned value) {
        const GuardedMemory& memory = m_planes.at(plane).memory;
        for (std::size_t i = 0; i < memory.size(); ++i) memory.data()[i] = static_cast<unsigned char>(value);
    }
    /// A plane's samples: bytes of a planar plane; of a packed one 0xAARRGGBB words.
    Grid Samples(unsigned plane = 0) const {
        Grid grid;
        for (unsigned y = 0; y < m_planes.at(plane).rows; ++y) {
            auto& row = grid.emplace_back();
            for (unsigned x = 0; x + SampleBytes() <= m_planes[plane].rowBytes; x += SampleBytes())
                row.push_back(Value(RowStart(plane, y) + x, SampleBytes()));
        }
        return grid;
    }
    void SetSamples(unsigned plane, const Grid& grid) {
        ASSERT_EQ(grid.size(), m_planes.at(plane).rows);
        for (unsigned y = 0; y < grid.size(); ++y) {
            ASSERT_EQ(grid[y].size() * SampleBytes(), m_planes[plane].rowBytes);
            unsigned char* at = RowStart(plane, y);
            for (unsigned value : grid[y])
                for (unsigned byte = 0; byte < SampleBytes(); ++byte)
                    *at++ = static_cast<unsigned char>(value >> 8 * byte);
        }
    }
    /// The bytes between the rows of a plane.
    std::vector<unsigned char> Padding(unsigned plane) const {
        std::vector<unsigned char> bytes;
        const Plane& p = m_planes.at(plane);
        for (unsigned y = 0; y < p.rows; ++y)
            bytes.insert(bytes.end(), RowStart(plane, y) + p.rowBytes, RowStart(plane, y) + p.pitch);
        return bytes;
    }
    bool GuardsIntact() const {
        for (const Plane& plane : m_planes)
            if (!plane.memory.GuardIntact()) return false;
        return true;
    }
    /// Compares all bytes, padding and guards included, each with a tolerance. Empty if they agree, else where the
    /// first difference lies, what was expected and found there, and how many samples differ.
    std::string DifferenceFrom(const TestFrame& expected, int tolerance = 0) const;
    /// Compares the same; a test that fails prints the difference with the frame on the left.
    bool operator==(const TestFrame& other) const {
        m_difference = DifferenceFrom(other);
        return m_difference.empty();
    }
    friend void PrintTo(const TestFrame& frame, std::ostream* out) {
        *out << "format " << frame.m_code << ", " << frame.m_width << "x" << frame.m_height << frame.m_difference;
    }

    unsigned GetPixelFormat() override { return m_code; }
    void GetDimension(unsigned* width, unsigned* height) override {
        if (width) *width = m_width;
        if (height) *height = m_height;
    }
    int GetTimeStamp() override { return m_timeStamp; }
    void SetTimeStamp(int timeStamp) override { m_timeStamp = timeStamp; }
    bool IsTopDown() override { return true; }
    bool IsPacked() override { return m_info.packed; }
    unsigned GetBufferCount() override { return unsigned(m_planes.size()); }
    unsigned GetTotalSize() override {
        unsigned size = 0;
        for (const Plane& plane : m_planes) size += plane.pitch * plane.rows;
        return size;
    }
    unsigned char* GetBuffer(unsigned plane, unsigned* rowBytes, unsigned* pitch, unsigned* rows) override {
        const bool there = plane < m_planes.size();
        if (rowBytes) *rowBytes = there ? m_planes[plane].rowBytes : 0;
        if (pitch) *pitch = there ? m_planes[plane].pitch : 0;
        if (rows) *rows = there ? m_planes[plane].rows : 0;
        return there ? m_planes[plane].memory.data() : nullptr;
    }
    double GetDAR() override { return 0; }
    void CropRightAndBottom(unsigned, unsigned) override {}
    void Free() override { delete this; }
    unsigned GetDuration() override { return 0; }
    void SetDuration(unsigned) override {}
    unsigned GetDuplicatedCount(unsigned*) override { return 0; }
    void SetDuplicatedCount(unsigned, unsigned) override {}
    IRawVideoFrame* Clone() override {
        return otherClone ? otherClone.release() : refuseClone ? nullptr : new TestFrame(*this);
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
    struct Plane {
        unsigned rowBytes, pitch, rows;
        GuardedMemory memory;
    };
    static unsigned Value(const unsigned char* bytes, unsigned count) {
        unsigned value = 0;
        while (count-- > 0) value = value << 8 | bytes[count];
        return value;
    }
    unsigned SampleBytes() const { return m_info.planes[0].bytes; }
    unsigned char* RowStart(unsigned plane, std::size_t y) const {
        return m_planes.at(plane).memory.data() + y * m_planes[plane].pitch;
    }

    const FormatInfo& m_info;
    unsigned m_code, m_width, m_height;
    int m_timeStamp = 0;
    std::vector<Plane> m_planes;
    mutable std::string m_difference;
};

inline std::string TestFrame::DifferenceFrom(const TestFrame& expected, int tolerance) const {
    if (m_code != expected.m_code || m_width != expected.m_width || m_height != expected.m_height)
        return ": the other is " + testing::PrintToString(expected);
    std::ostringstream text;
    std::size_t differing = 0;
    for (unsigned p = 0; p < m_planes.size(); ++p) {
        const Plane &plane = m_planes[p], &other = expected.m_planes[p];
        if (!plane.memory.GuardIntact()) return ": written outside plane " + std::to_string(p);
        if (plane.pitch != other.pitch || plane.rows != other.rows) return ": the planes lie in another way";
        if (plane.memory == other.memory) continue;
        for (unsigned y = 0; y < plane.rows; ++y)
            for (unsigned at = 0, size; at < plane.pitch; at += size) {
                size = at < plane.rowBytes ? SampleBytes() : 1;
                const unsigned char *const found = RowStart(p, y) + at, *const wanted = expected.RowStart(p, y) + at;
                const auto agrees = [=](unsigned char a, unsigned char b) { return std::abs(a - b) <= tolerance; };
                if (std::equal(found, found + size, wanted, agrees) || differing++ > 0) continue;
                text << ": plane " << p << ", x " << at / SampleBytes() << ", y " << y
                     << (at < plane.rowBytes ? "" : " (padding)") << std::hex << ": expected 0x" << Value(wanted, size)
                     << ", found 0x" << Value(found, size) << std::dec;
            }
    }
    if (differing) text << "; " << differing << " differ";
    return text.str();
}

struct FreeEffect {
    void operator()(IVideoProc* effect) const { effect->Free(); }
};
using EffectOwner = std::unique_ptr<IVideoProc, FreeEffect>;
using Settings = std::vector<std::pair<std::string, std::string>>;

/// A new effect with these properties set.
inline EffectOwner MakeEffect(const char* name, const Settings& settings = {}) {
    EffectOwner effect(CreateEffect(nullptr, name));
    if (!effect) throw std::runtime_error(std::string("no effect ") + name);
    for (const auto& [property, value] : settings)
        if (!effect->SetProperty(property.c_str(), value.c_str()))
            throw std::runtime_error(property + " refuses " + value);
    return effect;
}

inline void Apply(IVideoProc& effect, IRawVideoFrame& frame, int position = 0) {
    ImagePostion record;
    effect.ProcFrameInPlace(&record, position, &frame);
}

/// The calling thread's filed error.
struct Error {
    int code = 0;
    std::string message;
    int line = 0;
    std::string source;
    bool operator==(const Error&) const = default;
    friend void PrintTo(const Error& error, std::ostream* out) {
        *out << error.code << " \"" << error.message << "\" " << error.source << ":" << error.line;
    }
};
inline Error LastError() {
    Error error;
    const TarvoBased::ITarvoException* current = TarvoBased::GetTarvoException();
    error.code = current->GetExceptionCode();
    error.message = current->GetExceptionMsg();
    error.source = current->GetExceptionSource(&error.line);
    return error;
}
inline void ForgetError() { TarvoBased::ReleaseTarvoException(); }

}  // namespace AVBased::Testing
