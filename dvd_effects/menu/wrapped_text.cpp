#include "dvd_effects/menu/wrapped_text.h"

#include <algorithm>

#include "TarvoBased/ITarvoException.h"
#include "dvd_effects/canvas/errors.h"
#include "dvd_effects/menu/host_sources.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

constexpr int lineBreak = 420;

// The text with the host's line breaks; unchanged where the host makes none.
std::string Broken(IAVImporter* importer, const text_t& text, std::int64_t width, bool withinWords) {
    IAVSource* source = nullptr;
    ISimpleHTMLRender* render = nullptr;
    if (!CreateTextRender(importer, source, render, text)) return text.text;
    const SourceOwner owner(source);
    auto* const lines = static_cast<ITextLines*>(source->GetInterface(ITextLines::name));
    if (!lines) {
        // A host may lack it.
        ITarvoException* const filed = GetTarvoException();
        if (filed->GetExceptionCode() == errorNoInterface) filed->Clear();
        return text.text;
    }
    const char* const broken = lines->BreakLines(unsigned(std::min<std::int64_t>(width, largestSide)), withinWords);
    if (!broken) RaiseHostFailure(textUnexpectedError, lineBreak);
    return broken;
}

}  // namespace

void WrapText(IAVImporter* importer, text_t& text, const std::function<FrameSize(const text_t&)>& measure) {
    const point_t box = text.boxSize;
    if (box.x <= 0 || !importer) return;
    if (Broken(importer, text, std::int64_t(box.x) * 4 / 3, true) == text.text) return;
    text_t tried = text;
    for (const bool withinWords : {false, true})
        for (tried.size = text.size; tried.size > (withinWords ? 0 : text.size / 2);
             tried.size -= std::max(tried.size / 16, 1)) {
            tried.text = text.text;
            tried.text = Broken(importer, tried, box.x, withinWords);
            const FrameSize size = measure(tried);
            const bool fits = size.width <= unsigned(box.x) && (box.y <= 0 || size.height <= unsigned(box.y));
            if (!fits && !(withinWords && tried.size == 1)) continue;
            text = tried;
            return;
        }
}

}  // namespace AVBased
