#pragma once

#include "dvd_effects/menu/CBasedMenu.h"

namespace AVBased {

inline constexpr char effectMenuCommonName[] = "menu_common";

/// A menu whose pictures travel along straight lines and fade in or out on the way.
class CCommon : public CBasedMenu {
 public:
    explicit CCommon(IAVManager* manager) : CBasedMenu(effectMenuCommonName, manager) {}

 protected:
    void DrawScene(Canvas& canvas) override;
};

}  // namespace AVBased
