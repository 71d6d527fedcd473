#pragma once

#include <deque>
#include <string>
#include <vector>

#include "dvd_effects/canvas/compositor.h"
#include "dvd_effects/menu/menu_picture.h"

namespace AVBased {

/// A text item and how it looks.
struct MenuText {
    text_t item;
    Layer layer;
    unsigned number = 0;                ///< in the list
    mutable std::deque<Layer> smaller;  ///< at a half, a quarter... of its size, made when needed
};

/// The texts of a menu.
class MenuTexts {
 public:
    /// How many items a list must have, else none is shown.
    void SetNumber(std::int32_t number);
    std::int32_t Number() const { return m_number; }
    void SetInfos(const std::string& list);
    /// Renders them anew for the next frame.
    void Forget() { m_isReady = false; }

    /// Has the host render what is not rendered yet; without an importer, that fails. Errors are filed.
    void Prepare(IAVImporter* importer, const FrameKind& kind);
    const std::vector<MenuText>& All() const { return m_texts; }
    /// The name of a source; null where it has none. Names do not count as texts of the menu.
    const MenuText* CaptionOf(unsigned source) const;
    /// Draws those shown at frame `n`, at their places.
    void Draw(Canvas& canvas, std::uint32_t n) const;

 private:
    void Render(IAVImporter* importer, const FrameKind& kind, const std::string& info, unsigned number);

    std::int32_t m_number = 0;
    std::string m_infos;
    std::vector<MenuText> m_texts, m_captions;
    bool m_isReady = false;
};

}  // namespace AVBased
