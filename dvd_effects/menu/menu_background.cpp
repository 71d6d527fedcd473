#include "dvd_effects/menu/menu_background.h"

#include "dvd_effects/menu/host_sources.h"
#include "dvd_effects/menu/menu_errors.h"
#include "dvd_effects/menu/menu_frames.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

// The line that the host reads beside an error of a background.
constexpr int lineBackground = 100;

bool HasAlpha(IRawVideoFrame& frame) {
    const FormatInfo* const info = FindFormat(frame.GetPixelFormat());
    return info && info->components == 4;
}

}  // namespace

void MenuBackground::Open(IAVManager* manager, const std::string& path) {
    m_source = path.empty() ? nullptr : OpenSource(manager, path, false, textNullBackgroundSource);
    Forget();
}

void MenuBackground::OpenMask(IAVManager* manager, const std::string& path) {
    m_mask = path.empty() ? nullptr : ReadFrame(*OpenSource(manager, path, true));
    Forget();
}

void MenuBackground::Forget() {
    m_composed.reset();
    m_picture.reset();
    m_converter.reset();
    m_isReady = false;
}

void MenuBackground::Pass(std::int64_t frames) {
    Attempt(lineBackground, [&] {
        for (; frames > 0 && HasVideo(); --frames) ReadFrame(*m_source);
    });
}

void MenuBackground::Draw(Canvas& canvas, const FrameKind& kind, FrameSize menu,
                          const std::function<void(Canvas&)>& paint) {
    if (!m_isReady) Attempt(lineBackground, [&] { m_source ? Advance(kind, menu) : Paint(kind, menu, paint); });
    if (!m_composed || menu.width < kind.size.width || menu.height < kind.size.height) canvas.Clear();
    if (m_composed) canvas.Copy(*m_composed);
}

void MenuBackground::RequireSize(FrameSize menu) {
    Require(menu.width <= largestSide && menu.height <= largestSide, textInvalidParamValue, lineBackground,
            basedMenuName);
}

std::unique_ptr<CRawVideoFrame> MenuBackground::Empty(const FrameKind& kind, FrameSize menu) const {
    RequireSize(menu);
    auto background = std::make_unique<CRawVideoFrame>(false, kind.format, menu.width, menu.height, true);
    Canvas(*background, kind.set).Clear();
    return background;
}

void MenuBackground::Paint(const FrameKind& kind, FrameSize menu, const std::function<void(Canvas&)>& paint) {
    m_isReady = true;
    if (!paint) return;
    auto background = Empty(kind, menu);
    Canvas canvas(*background, kind.set);
    paint(canvas);
    m_composed = std::move(background);
}

void MenuBackground::Advance(const FrameKind& kind, FrameSize menu) {
    m_isReady = true;
    if (!m_composed) m_composed = Empty(kind, menu);
    m_isReady = m_source->IsStill();
    const FrameOwner frame = ReadFrame(*m_source);
    if (m_mask || HasAlpha(*frame))
        Lay(*frame, kind, menu);
    else
        Place(*frame, menu);
}

void MenuBackground::Place(IRawVideoFrame& frame, FrameSize menu) {
    IImageConverter* converter = m_converter.release();
    int width = 0, height = 0;
    const int done = AddBlack(&frame, menu.width, menu.height, converter, width, height, m_composed.get(), 1);
    // A video whose frames change their size needs another converter.
    m_converter.reset(converter);
    if (done) return;
    m_converter.reset();
    RaiseHostFailure(textUnexpectedError, lineBackground, basedMenuName);
}

void MenuBackground::Lay(IRawVideoFrame& frame, const FrameKind& kind, FrameSize menu) {
    if (!m_picture) m_picture = std::make_unique<MenuPicture>(kind);
    const FrameSize size = FitInto(SizeOf(frame), menu);
    const point_t at{std::int32_t(menu.width - size.width) / 2, std::int32_t(menu.height - size.height) / 2};
    if (m_mask && !m_picture->mask) m_picture->MakeMask(*m_mask, menu);
    m_picture->Make(frame, size, at);
    Canvas canvas(*m_composed, kind.set);
    canvas.Clear();
    canvas.Lay(m_picture->layer, at.x, at.y);
}

}  // namespace AVBased
