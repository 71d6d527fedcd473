#pragma once

#include "dvd_effects/templates/CPhotographs.h"

namespace AVBased {

inline constexpr char effectMenuMemories2Name[] = "menu_memories2";

/// An album that lies open on a walnut table. Its photographs stand in a loose grid; each in turn comes out of the four
/// corners that hold it, straightens and grows, and returns to its place, where the paper has stayed pale. The grid
/// fills what the texts leave of the menu; "startPositions" places them elsewhere.
class CMemories2 : public CPhotographs {
 public:
    explicit CMemories2(IAVManager* manager) : CPhotographs(effectMenuMemories2Name, manager) {}

 protected:
    FrameSize UsualBox() const override;
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    void Mark(Pile& pile, const Placement& at) const;

    Layer m_paper, m_corner;
};

}  // namespace AVBased
