#pragma once

#include <vector>

#include "dvd_effects/canvas/compositor.h"
#include "dvd_effects/menu/menu_texts.h"
#include "dvd_effects/templates/picture_grid.h"

namespace AVBased {

/// The keys of a remote control that menus are used with, side by side: the arrows about their middle, the one that
/// plays and the one that leads back to the menu. One after another lights up, as they are pressed.
class RemoteKeys {
 public:
    struct Style {
        Colour key, sign, lit;
    };
    /// Keys whose arrows are that many pixels wide when they are shown in their own size.
    void Make(LayerKind kind, unsigned size, const Style& style);
    /// Draws them in the middle of a region, no larger than in their own size; `part` is that of the loop. They are
    /// left out where they would be smaller than a third of that.
    void Draw(Canvas& canvas, const Region& room, double part) const;

 private:
    static constexpr unsigned groups = 3;
    Layer m_keys[groups], m_lit[groups];
    double m_size = 0;
};

/// What the texts leave free below them, of a panel that they stand on.
Region BelowTexts(const std::vector<MenuText>& texts, const Region& panel);

}  // namespace AVBased
