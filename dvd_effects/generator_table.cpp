#include "dvd_effects/generator_table.h"

#include "dvd_effects/CBaby.h"
#include "dvd_effects/CCommon.h"
#include "dvd_effects/CCommonSub.h"
#include "dvd_effects/CFestival.h"
#include "dvd_effects/CFullScreen.h"
#include "dvd_effects/CLayeredTitles.h"
#include "dvd_effects/CMemories.h"
#include "dvd_effects/CMemories2.h"
#include "dvd_effects/COldAge.h"
#include "dvd_effects/CPerformance.h"
#include "dvd_effects/CPets.h"
#include "dvd_effects/CPush.h"
#include "dvd_effects/CRectangles.h"
#include "dvd_effects/CResizingPanels.h"
#include "dvd_effects/CSlides.h"
#include "dvd_effects/CSpecialOccasion.h"
#include "dvd_effects/CStacking.h"
#include "dvd_effects/CTitle.h"
#include "dvd_effects/CTravel.h"
#include "dvd_effects/CVideoWall.h"
#include "dvd_effects/CVignette.h"

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
