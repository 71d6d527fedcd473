#include <cstring>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/boundary.h"
#include "TarvoBased/error_codes.h"
#include "effects/AddNoiseEffect.h"
#include "effects/AtomizeEffect.h"
#include "effects/BlurSharpenEffects.h"
#include "effects/BrightnessContrastEffect.h"
#include "effects/CircleEffects.h"
#include "effects/ColorFilterEffect.h"
#include "effects/EdgeLightEffect.h"
#include "effects/EmbossEffect.h"
#include "effects/ErodeDilateEffects.h"
#include "effects/FadeEffects.h"
#include "effects/MagnifierEffect.h"
#include "effects/MirageEffect.h"
#include "effects/MosaicEffect.h"
#include "effects/OilPaintingEffect.h"
#include "effects/PopStyleEffect.h"
#include "effects/PortraitEffect.h"
#include "effects/RadiateEffect.h"
#include "effects/ReliefEffect.h"
#include "effects/ReverseEffect.h"
#include "effects/Rotate90XEffect.h"
#include "effects/SimpleColourEffects.h"
#include "effects/SpotlightEffect.h"
#include "effects/StrokeEffect.h"
#include "effects/TensileEffect.h"
#include "effects/Trans2D3D.h"
#include "effects/VideoWallEffect.h"
#include "effects/WrapEffects.h"
#include "effects/effect_table.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

constexpr char sourceName[] = "ImageEffects";

// Lines that the host reads beside an error of the factory.
enum Line : int { lineNullName = 53, lineNotFound = 183, lineBoundary = 186 };

constexpr EffectEntry effectTable[] = {
    {effectNameSimpleGaussBlur, Create<CSimpleGaussBlurEffect>},
    {effectNameSimpleLaplacianSharpen, Create<CSimpleLaplacianSharpenEffect>},
    {effectNameGray, Create<CGrayEffect>},
    {effectNameFlipColor, Create<CFlipColorEffect>},
    {effectNameInvert, Create<CInvertEffect>},
    {effectNameAgedFilm, Create<CAgedFilmEffect>},
    {effectNameBrightnessContrast, Create<CBrightnessContrastEffect>},
    {effectNameFadeIn, Create<CFadeInVideoImageEffect>},
    {effectNameFadeOut, Create<CFadeOutVideoImageEffect>},
    {effectNameDirectFadeIn, Create<CDirectFadeInEffect>},
    {effectNameDirectFadeOut, Create<CDirectFadeOutEffect>},
    {effectNameReverse, Create<CReverseVideoImageEffect>},
    {effectNameSpherize, Create<CSpherizeVideoImageEffect>},
    {effectNameMagnifier, Create<CMagnifierVideoImageEffect>},
    {effectNameRotate, Create<CRotateVideoImageEffect>},
    {effectNameTensile, Create<CTensileVideoImageEffect>},
    {effectNameEmboss, Create<CEmbossVideoImageEffect>},
    {effectNameMosaic, Create<CMosaicVideoImageEffect>},
    {effectNamePortrait, Create<CPortraitVideoImageEffect>},
    {effectNameMirage, Create<CMirageVideoImageEffect>},
    {effectNameStroke, Create<CStrokeVideoImageEffect>},
    {effectNameTransparency, Create<CTransparencyAjustEffect>},
    {effectNameColorFilter, Create<CColorFilterEffect>},
    {effectNameAtomize, Create<CAtomizeVideoImageEffect>},
    {effectNamePopStyle, Create<CPopStyleVideoImageEffect>},
    {effectNameDilate, Create<CDilateVideoImageEffect>},
    {effectNameErode, Create<CErodeVideoImageEffect>},
    {effectNameEdgeLight, Create<CEdgeLightVideoImageEffect>},
    {effectNameRelief, Create<CReliefVideoImageEffect>},
    {effectNameVideoWall, Create<CWallVideoImageEffect>},
    {effectNameAddNoise, Create<CAddNoiseVideoImageEffect>},
    {effectNameSpotlight, Create<CSpotlightVideoImageEffect>},
    {effectNameRadiate, Create<CRadiateVideoImageEffect>},
    {effectNameTileReflect, Create<CTileReflectVideoImageEffect>},
    {effectNameMirrorInvert, Create<CMirrorInvertVideoImageEffect>},
    {effectNameOilPainting, Create<COilPaintingVideoImageEffect>},
    {effectName2D3D, Create<CTrans2D3D>},
    {effectNameRotate90X, Create<CRotate90X>},
};

}  // namespace

std::span<const EffectEntry> EffectTable() { return effectTable; }

IVideoProc* CreateEffect(IAVManager* manager, const char* name, std::span<const EffectEntry> generators) noexcept {
    return AtBoundary(lineBoundary, sourceName, [&] {
        RequirePointer(name, lineNullName, sourceName);
        for (const std::span<const EffectEntry> rows : {EffectTable(), generators})
            for (const EffectEntry& entry : rows)
                if (std::strcmp(entry.name, name) == 0) return entry.create(name, manager);
        throw CBaseException(errorNotFound, textEffectNotFound, lineNotFound, sourceName);
    });
}

}  // namespace AVBased
