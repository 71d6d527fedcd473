#pragma once

#include "dvd_effects/templates/CPhotographs.h"

namespace AVBased {

inline constexpr char effectMenuMemoriesName[] = "menu_memories";

/// Photographs with white borders that fall one after another onto a walnut table and settle there in a loose heap; in
/// the end they lift off again, the last one first. The light of a window wanders over all of them. The heap fills what
/// the texts leave of the menu; "startPositions" places them elsewhere.
class CMemories : public CPhotographs {
 public:
    explicit CMemories(IAVManager* manager) : CPhotographs(effectMenuMemoriesName, manager) {}

 protected:
    FrameSize UsualBox() const override;
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    // Where a photograph of the heap comes to rest, and how it stands in the loop. It comes from above the menu, from
    // as far as `height`, and leaves there.
    Pose Resting(const ShownPicture& picture, const Region& cell, const Region& stage) const;
    Pose At(double phase, unsigned index, unsigned count, const Pose& rest, double height) const;
    void DrawLight(Canvas& canvas) const;

    Layer m_light;
};

}  // namespace AVBased
