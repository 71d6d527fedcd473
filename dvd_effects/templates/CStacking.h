#pragma once

#include "dvd_effects/templates/CPhotographs.h"

namespace AVBased {

inline constexpr char effectMenuStackingName[] = "menu_stacking";

/// A pile that grows: large photographs slide in from all sides and land on one another, each a little turned, and the
/// pile gives way under every one; at the loop's end it is swept away to the right, from its top down. It stands where
/// the texts leave most room; "startPositions" places them elsewhere.
class CStacking : public CPhotographs {
 public:
    explicit CStacking(IAVManager* manager) : CPhotographs(effectMenuStackingName, manager) {}

 protected:
    FrameSize UsualBox() const override { return PartOfMenu(0.42, 0.54); }
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    Pose At(double phase, const ShownPicture& picture, unsigned count, const Region& stage) const;
};

}  // namespace AVBased
