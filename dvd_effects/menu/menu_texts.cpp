#include "dvd_effects/menu/menu_texts.h"

#include "dvd_effects/menu/host_sources.h"
#include "dvd_effects/menu/list_parsers.h"
#include "dvd_effects/menu/menu_errors.h"
#include "dvd_effects/menu/menu_frames.h"
#include "dvd_effects/menu/menu_motion.h"
#include "dvd_effects/menu/wrapped_text.h"

namespace AVBased {

namespace {

// The line that the host reads beside an error of a text.
constexpr int lineText = 200;

}  // namespace

void MenuTexts::SetNumber(std::int32_t number) {
    m_number = number;
    Forget();
}

void MenuTexts::SetInfos(const std::string& list) {
    m_infos = list;
    Forget();
}

void MenuTexts::Prepare(IAVImporter* importer, const FrameKind& kind) {
    if (m_isReady) return;
    m_isReady = true;
    m_texts.clear();
    m_captions.clear();
    const std::vector<std::string> infos = SplitList(m_infos, '\\');
    // Deliberate: without a word.
    if (std::int64_t(infos.size()) != m_number) return;
    for (unsigned i = 0; i < infos.size(); ++i) Attempt(lineText, [&] { Render(importer, kind, infos[i], i); });
}

void MenuTexts::Render(IAVImporter* importer, const FrameKind& kind, const std::string& info, unsigned number) {
    MenuText text;
    text.number = number;
    if (!ParseTextInfo(&text.item, info)) return;
    WrapText(importer, text.item, [&](const text_t& tried) {
        const FrameOwner frame = RenderText(importer, tried);
        return frame ? SizeOf(*frame) : FrameSize{};
    });
    const FrameOwner frame = RenderText(importer, text.item);
    if (!frame) return;
    LayerMaker(kind.Layers()).Make(*frame, FitText(SizeOf(*frame), text.item.boxSize), text.layer, kind.set);
    (text.item.ofSource < 0 ? m_texts : m_captions).push_back(std::move(text));
}

const MenuText* MenuTexts::CaptionOf(unsigned source) const {
    for (const MenuText& caption : m_captions)
        if (unsigned(caption.item.ofSource) == source) return &caption;
    return nullptr;
}

void MenuTexts::Draw(Canvas& canvas, std::uint32_t n) const {
    for (const MenuText& text : m_texts) {
        const point_t at = PositionOf(text.item, n);
        if (IsShown(text.item, n)) canvas.Lay(text.layer, at.x, at.y);
    }
}

}  // namespace AVBased
