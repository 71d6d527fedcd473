#include "dvd_effects/generator_table.h"

#include "dvd_effects/slides/CSlides.h"
#include "dvd_effects/slides/CTitle.h"
#include "dvd_effects/templates/CBaby.h"
#include "dvd_effects/templates/CCommon.h"
#include "dvd_effects/templates/CCommonSub.h"
#include "dvd_effects/templates/CFestival.h"
#include "dvd_effects/templates/CFullScreen.h"
#include "dvd_effects/templates/CLayeredTitles.h"
#include "dvd_effects/templates/CMemories.h"
#include "dvd_effects/templates/CMemories2.h"
#include "dvd_effects/templates/COldAge.h"
#include "dvd_effects/templates/CPerformance.h"
#include "dvd_effects/templates/CPets.h"
#include "dvd_effects/templates/CPush.h"
#include "dvd_effects/templates/CRectangles.h"
#include "dvd_effects/templates/CResizingPanels.h"
#include "dvd_effects/templates/CSpecialOccasion.h"
#include "dvd_effects/templates/CStacking.h"
#include "dvd_effects/templates/CTravel.h"
#include "dvd_effects/templates/CVideoWall.h"
#include "dvd_effects/templates/CVignette.h"

namespace AVBased {

namespace {

constexpr EffectEntry generatorTable[] = {
    {effectMenuFullScreenName, Create<CFullScreen>},
    {effectMenuLayeredTitlesName, Create<CLayeredTitles>},
    {effectMenuMemoriesName, Create<CMemories>},
    {effectMenuOldAgeName, Create<COldAge>},
    {effectMenuResizingPanelsName, Create<CResizingPanels>},
    {effectMenuPerformanceName, Create<CPerformance>},
    {effectMenuBabyGirlName, Create<CBabyGirl>},
    {effectMenuBabyBoyName, Create<CBabyBoy>},
    {effectMenuRectanglesName, Create<CRectangles>},
    {effectMenuPushName, Create<CPush>},
    {effectMenuTravelName, Create<CTravel>},
    {effectMenuPetsName, Create<CPets>},
    {effectMenuStackingName, Create<CStacking>},
    {effectMenuSpecialOccasionName, Create<CSpecialOccasion>},
    {effectMenuVignetteName, Create<CVignette>},
    {effectMenuVideoWallName, Create<CVideoWall>},
    {effectSlideName, Create<CSlides>},
    {effectTitleName, Create<CTitle>},
    {effectMenuFestivalName, Create<CFestival>},
    {effectSubMenuFestivalName, Create<CFestivalSub>},
    {effectInstructionMenuFestivalName, Create<CFestivalInstruction>},
    {effectSubMenuCommonName, Create<CCommonSub>},
    {effectInstructionMenuCommonName, Create<CCommomInstrction>},
    {effectMenuCommonName, Create<CCommon>},
    {effectMenuMemories2Name, Create<CMemories2>},
};

}  // namespace

std::span<const EffectEntry> GeneratorTable() { return generatorTable; }

}  // namespace AVBased
