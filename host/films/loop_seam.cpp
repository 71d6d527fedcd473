#include "host/films/loop_seam.h"

#include <algorithm>
#include <cmath>

#include "host/media/frame_adapter.h"

namespace Nifikral {
namespace {

struct Plane {
    Plane(FrameAdapter& frame, unsigned plane) : data(frame.GetBuffer(plane, &rowBytes, &pitch, &rows)) {}
    unsigned char* Row(unsigned y) const { return data + std::size_t(y) * pitch; }

    unsigned rowBytes = 0, pitch = 0, rows = 0;
    unsigned char* data;
};

// `share` parts of `other` among `whole`.
void Mix(FrameAdapter& frame, FrameAdapter& other, int share, int whole) {
    for (unsigned p = 0; p < frame.GetBufferCount(); ++p) {
        const Plane to(frame, p), from(other, p);
        for (unsigned y = 0; y < to.rows; ++y)
            for (unsigned x = 0; x < to.rowBytes; ++x) {
                unsigned char& value = to.Row(y)[x];
                value =
                    static_cast<unsigned char>((value * (whole - share) + from.Row(y)[x] * share + whole / 2) / whole);
            }
    }
}

FramePtr CopyOf(const AVFrame& frame) {
    FramePtr copy = NewPicture(AVPixelFormat(frame.format), frame.width, frame.height);
    if (av_frame_copy(copy.get(), &frame) < 0) throw std::bad_alloc();
    return copy;
}

}  // namespace

long long LoopSeam::LengthOf(long long begin, long long end, AVRational frameRate) {
    constexpr double seconds = 0.5;
    const long long usual = std::max(1LL, std::llround(seconds * av_q2d(frameRate)));
    return std::min({usual, begin, (end - begin) / 2});
}

LoopSeam::LoopSeam(long long begin, long long end, AVRational frameRate)
    : m_begin(begin), m_end(end), m_length(LengthOf(begin, end, frameRate)), m_before(std::size_t(m_length)) {}

bool LoopSeam::HasLead() const {
    return std::all_of(m_before.begin(), m_before.end(), [](const FramePtr& frame) { return frame != nullptr; });
}

void LoopSeam::Close(AVFrame& frame, unsigned formatCode, long long number) {
    if (number >= Lead() && number < m_begin) m_before[std::size_t(number - Lead())] = CopyOf(frame);
    const long long place = number - (m_end - m_length);
    if (place < 0 || m_length == 0) return;
    FrameAdapter to(frame, formatCode, 0), from(*m_before.at(std::size_t(place)), formatCode, 0);
    Mix(to, from, int(place + 1), int(m_length));
}

}  // namespace Nifikral
