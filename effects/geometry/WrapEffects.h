#pragma once

#include <cstdint>
#include <optional>

#include "effects/geometry/table_effect.h"

/// Distortions of the whole picture that wrap around its edges.
namespace AVBased {

inline constexpr char effectNameTileReflect[] = "tilereflect";
inline constexpr char effectNameMirrorInvert[] = "mirrorinvert";

struct MirrorInvertSettings {
    std::int32_t amount = 100;

    std::optional<Box> BoxIn(unsigned width, unsigned height) const { return Box{0, width, 0, height}; }
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
    std::optional<Box> BoxIn(unsigned width, unsigned height) const { return Box{0, width, 0, height}; }
};

/// Rotated tiles, each a lens, over a picture of the given size.
struct TileReflectMap {
    TileReflectSettings settings;
    unsigned width, height;
    std::optional<Source> operator()(unsigned x, unsigned y) const;
    FillSourceRow Rows(const Box& box, InstructionSet set) const;
};

/// The picture turned inside out about its centre.
class CMirrorInvertVideoImageEffect : public CTableEffect<MirrorInvertSettings> {
 public:
    CMirrorInvertVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    void OnSettingsChanged() override { m_table.SetValid(false); }
    void MirrorInvertRgba32EffectFirst(const PackedView& picture) {
        Compute<MirrorInvertMap>(picture, Outside::Nearest);
    }
    void MirrorInvertComponentEffectFirst(const PlanarView& picture) {
        Compute<MirrorInvertMap>(picture, Outside::Nearest);
    }
    void MirrorInvertRgba32Effect(const PackedView& picture) { Replay(picture, Outside::Nearest); }
    void MirrorInvertComponentEffect(const PlanarView& picture) { Replay(picture, Outside::Nearest); }
};

/// The picture seen through rotated glass tiles. A tile size of 0 and an angle beyond 180 degrees are refused.
class CTileReflectVideoImageEffect : public CTableEffect<TileReflectSettings> {
 public:
    CTileReflectVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    void TileReflectRgba32EffectFirst(const PackedView& picture) { Compute<TileReflectMap>(picture, Outside::Nearest); }
    void TileReflectComponentEffectFirst(const PlanarView& picture) {
        Compute<TileReflectMap>(picture, Outside::Nearest);
    }
    void TileReflectRgba32Effect(const PackedView& picture) { Replay(picture, Outside::Nearest); }
    void TileReflectComponentEffect(const PlanarView& picture) { Replay(picture, Outside::Nearest); }
};

}  // namespace AVBased
