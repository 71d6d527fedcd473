#include "bench/harness/frame_ring.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <random>

namespace Bench {
namespace {

// The frames of a ring together, in bytes; the largest caches of desktop and server cores hold a fraction of it.
constexpr std::size_t ringBytes = 320'000'000;

struct Plane {
    unsigned char* data;
    unsigned rowBytes, pitch, rows;
    std::size_t Bytes() const { return std::size_t(pitch) * rows; }
};

Plane PlaneOf(CRawVideoFrame& frame, unsigned plane) {
    Plane result{};
    result.data = frame.GetBuffer(plane, &result.rowBytes, &result.pitch, &result.rows);
    return result;
}

// Soft slopes, discs with hard edges and fine noise: what a camera sees, near enough for branches and counts.
void DrawPicture(CRawVideoFrame& frame) {
    std::minstd_rand random(20240611);
    for (unsigned p = 0; p < frame.GetBufferCount(); ++p) {
        const Plane plane = PlaneOf(frame, p);
        const unsigned bytesPerPixel = frame.IsPacked() ? 4 : 1;
        for (unsigned y = 0; y < plane.rows; ++y)
            for (unsigned x = 0; x < plane.rowBytes; ++x) {
                const double u = double(x / bytesPerPixel) * bytesPerPixel / plane.rowBytes;
                const double v = double(y) / plane.rows;
                const unsigned channel = p + x % bytesPerPixel;
                const double slope = 110 + 70 * std::sin(5 * u + channel) * std::cos(4 * v - channel);
                const double disc = std::hypot(std::fmod(6 * u, 1) - 0.5, std::fmod(4 * v, 1) - 0.5) < 0.3 ? 50 : 0;
                const double noise = double(random() % 17) - 8;
                plane.data[std::size_t(y) * plane.pitch + x] =
                    (unsigned char)(std::clamp(slope + disc + noise, 0.0, 255.0));
            }
    }
}

using Vector [[gnu::vector_size(32)]] = unsigned char;

#if defined(__x86_64__)
[[gnu::target("avx2")]]
#endif
void Invert(unsigned char* data, std::size_t bytes) {
    const unsigned char* const end = data + bytes / sizeof(Vector) * sizeof(Vector);
    for (; data != end; data += sizeof(Vector)) *reinterpret_cast<Vector*>(data) ^= 255;
}

}  // namespace

void InPlacePass(CRawVideoFrame& frame, unsigned plane) {
    for (unsigned p = 0; p < frame.GetBufferCount(); ++p)
        if (plane == allPlanes || plane == p) {
            const Plane bytes = PlaneOf(frame, p);
            Invert(bytes.data, bytes.Bytes());
        }
}

void CopyFrame(CRawVideoFrame& to, CRawVideoFrame& from) {
    for (unsigned p = 0; p < to.GetBufferCount(); ++p)
        std::memcpy(PlaneOf(to, p).data, PlaneOf(from, p).data, PlaneOf(to, p).Bytes());
}

FrameRing::FrameRing(unsigned format, unsigned width, unsigned height)
    : m_picture(false, format, width, height, true), m_single(false, format, width, height, true) {
    DrawPicture(m_picture);
    // An odd count, so that callers which take turns meet other frames in the next round.
    const std::size_t count = ringBytes / m_picture.GetRequireSize() | 1;
    for (std::size_t i = 0; i < count; ++i)
        m_frames.push_back(std::make_unique<CRawVideoFrame>(false, format, width, height, true));
}

CRawVideoFrame& FrameRing::Next() {
    if (m_next == 0)
        for (auto& frame : m_frames) CopyFrame(*frame, m_picture);
    CRawVideoFrame& frame = *m_frames[m_next];
    m_next = (m_next + 1) % m_frames.size();
    return frame;
}

CRawVideoFrame& FrameRing::Renewed() {
    CopyFrame(m_single, m_picture);
    return m_single;
}

FrameRing& RingOf(unsigned format) {
    static std::map<unsigned, FrameRing> rings;
    return rings.try_emplace(format, format).first->second;
}

}  // namespace Bench
