#pragma once

#include <cstdint>
#include <optional>

#include "effects/base/CBasedVideoEffect.h"
#include "effects/geometry/coordinate_table.h"

/// Distortions of the whole picture that wrap around its edges.
namespace AVBased {

inline constexpr char effectNameTileReflect[] = "tilereflect";
inline constexpr char effectNameMirrorInvert[] = "mirrorinvert";

struct MirrorInvertSettings {
    std::int32_t amount = 100;
};

/// The inversion in a circle about the centre of a picture of the given size.
struct MirrorInvertMap {
    MirrorInvertSettings settings;
    unsigned width, height;
    std::optional<Source> operator()(unsigned x, unsigned y) const;
    FillSourceRow Rows(const Box& box, InstructionSet set) const;
};

/// What the three properties come to. These initial members belong to no setting of the properties.
struct TileReflectSettings {
    std::int32_t sine = 11743, cosine = 25466, sizeFactor = 1, curvature = 8;
    bool operator==(const TileReflectSettings&) const = default;

    void SetAngle(std::int32_t degrees);  ///< -180 to 180
    void SetSize(std::int32_t size);      ///< not 0
};

/// Rotated tiles, each a lens, over a picture of the given size.
struct TileReflectMap {
    TileReflectSettings settings;
    unsigned width, height;
    std::optional<Source> operator()(unsigned x, unsigned y) const;
    FillSourceRow Rows(const Box& box, InstructionSet set) const;
};

/// The picture turned inside out about its centre.
class CMirrorInvertVideoImageEffect : public CBasedVideoImageEffect {
 public:
    CMirrorInvertVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    void MirrorInvertRgba32EffectFirst(const PackedView& picture);
    void MirrorInvertComponentEffectFirst(const PlanarView& picture);
    void MirrorInvertRgba32Effect(const PackedView& picture);
    void MirrorInvertComponentEffect(const PlanarView& picture);

    MirrorInvertSettings m_settings;
    CoordinateTable m_table;
};

/// The picture seen through rotated glass tiles. A tile size of 0 and an angle beyond 180 degrees are refused.
class CTileReflectVideoImageEffect : public CBasedVideoImageEffect {
 public:
    CTileReflectVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    void TileReflectRgba32EffectFirst(const PackedView& picture);
    void TileReflectComponentEffectFirst(const PlanarView& picture);
    void TileReflectRgba32Effect(const PackedView& picture);
    void TileReflectComponentEffect(const PlanarView& picture);

    TileReflectSettings m_settings;
    CoordinateTable m_table;
};

}  // namespace AVBased
