#include "effects/base/CBasedVideoEffect.h"

#include <utility>

#include "TarvoBased/boundary.h"
#include "effects/base/property_table.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

constexpr char sourceName[] = "CBasedVideoEffect";

// Lines that the host reads beside an error of the frame calls: of a null record, of a null frame, of anything else.
struct FrameCallLines {
    int record, frame, boundary;
};
constexpr FrameCallLines procFrameLines{98, 99, 111}, inPlaceLines{118, 119, 121}, motionLines{138, 139, 141};

constexpr Property<CBasedVideoEffect::BaseSettings> baseProperties[] = {
    {"duration", "1", &CBasedVideoEffect::BaseSettings::duration},
};

// Runs `work` at the boundary of a frame call whose record and frame must be there.
template <class Work>
auto FrameCall(const FrameCallLines& lines, const ImagePostion* record, const IRawVideoFrame* frame, Work&& work) {
    return AtBoundary(lines.boundary, sourceName, [&] {
        RequirePointer(record, lines.record, sourceName);
        RequirePointer(frame, lines.frame, sourceName);
        return work();
    });
}

}  // namespace

CBasedVideoEffect::CBasedVideoEffect(const char* name, unsigned subtype) : CBaseAVProc(name, 1, subtype) {
    AddInterface("IVideoProc", static_cast<IVideoProc*>(this));
    DeclareProperties(*this, baseProperties);
}

void CBasedVideoEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBaseAVProc::OnSetProperty(name, node);
    StoreProperty(m_base, baseProperties, name, node);
}

IRawVideoFrame* CBasedVideoImageEffect::ProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) {
    return FrameCall(procFrameLines, record, frame, [&] {
        // The last output may be what comes in now.
        const FrameOwner last = frame == m_output.get() ? std::move(m_output) : nullptr;
        m_output.reset();
        m_output = CloneFrame(*frame);
        // A host frame may decline to be cloned without an error; there is nothing to process then.
        if (m_output) InnerProcFrame(record, position, m_output.get());
        return m_output.get();
    });
}

void CBasedVideoImageEffect::ProcFrameInPlace(ImagePostion* record, int position, IRawVideoFrame* frame) {
    FrameCall(inPlaceLines, record, frame, [&] { InnerProcFrame(record, position, frame); });
}

void CBasedVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame*) {}

void CBasedVideoMotionXYEffect::ProcFrameInPlace(ImagePostion* record, int position, IRawVideoFrame* frame) {
    FrameCall(motionLines, record, frame, [&] { InnerProcFrame(record, position, frame); });
}

}  // namespace AVBased
