#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

/// The base of the templates that show photographs with a white border, lying on something or lifted from it.
class CPhotographs : public CAnimatedMenu {
 public:
    using CAnimatedMenu::CAnimatedMenu;

 protected:
    struct Pose {
        Spot centre;
        double scale = 1, degrees = 0;
        double lift = 0;  ///< 0 lies, 1 is a hand's breadth above
        double opacity = 1;
    };
    static Pose PoseBetween(const Pose& a, const Pose& b, double part);
    /// The pose, moved and made as small as it takes for all of a photograph to lie within a region; as it is where the
    /// properties say where photographs stand.
    Pose Within(const Region& region, const ShownPicture& picture, Pose pose) const;

    void MakeScenery() override;
    void FinishPicture(Layer& layer, unsigned index) const override;
    /// Lays a photograph and its shadow on a pile.
    void ShowPhotograph(Pile& pile, const ShownPicture& picture, const Pose& pose) const;

 private:
    Layer m_shadow;
};

}  // namespace AVBased
