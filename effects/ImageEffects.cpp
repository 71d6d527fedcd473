#include "effects/ImageEffects.h"

#include <cstring>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/boundary.h"
#include "TarvoBased/error_codes.h"
#include "effects/colour/AddNoiseEffect.h"
#include "effects/colour/BrightnessContrastEffect.h"
#include "effects/colour/ColorFilterEffect.h"
#include "effects/colour/PopStyleEffect.h"
#include "effects/colour/SimpleColourEffects.h"
#include "effects/geometry/CircleEffects.h"
#include "effects/geometry/MagnifierEffect.h"
#include "effects/geometry/MirageEffect.h"
#include "effects/geometry/ReverseEffect.h"
#include "effects/geometry/Rotate90XEffect.h"
#include "effects/geometry/TensileEffect.h"
#include "effects/geometry/Trans2D3D.h"
#include "effects/geometry/VideoWallEffect.h"
#include "effects/geometry/WrapEffects.h"
#include "effects/light/FadeEffects.h"
#include "effects/light/RadiateEffect.h"
#include "effects/light/SpotlightEffect.h"
#include "effects/neighbourhood/AtomizeEffect.h"
#include "effects/neighbourhood/BlurSharpenEffects.h"
#include "effects/neighbourhood/EdgeLightEffect.h"
#include "effects/neighbourhood/EmbossEffect.h"
#include "effects/neighbourhood/ErodeDilateEffects.h"
#include "effects/neighbourhood/MosaicEffect.h"
#include "effects/neighbourhood/OilPaintingEffect.h"
#include "effects/neighbourhood/PortraitEffect.h"
#include "effects/neighbourhood/ReliefEffect.h"
#include "effects/neighbourhood/StrokeEffect.h"

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
