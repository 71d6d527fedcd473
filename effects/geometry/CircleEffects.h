#pragma once

#include <cstdint>
#include <optional>

#include "effects/geometry/table_effect.h"

/// Distortions inside a circle.
namespace AVBased {

inline constexpr char effectNameSpherize[] = "spherize";
inline constexpr char effectNameRotate[] = "rotate";

struct CircleSettings {
    std::uint32_t radius = 0, x = 0, y = 0;
    double scale = 0;

    /// The part of a picture that the circle's square covers; none when the centre lies beyond the right or the bottom
    /// edge.
    std::optional<Box> BoxIn(unsigned width, unsigned height) const;
};

/// The twist. A pixel outside the circle has no source: it stays.
struct RotateMap {
    CircleSettings circle;
    std::optional<Source> operator()(unsigned x, unsigned y) const;
    FillSourceRow Rows(const Box& box, InstructionSet set) const;
};

/// The lens. A pixel outside the circle is its own source.
struct SpherizeMap {
    CircleSettings circle;
    std::optional<Source> operator()(unsigned x, unsigned y) const;
    FillSourceRow Rows(const Box& box, InstructionSet set) const;
};

/// A swirl whose angle depends on the distance from the centre.
class CRotateVideoImageEffect : public CTableEffect<CircleSettings> {
 public:
    CRotateVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    void RotateRgba32Effect(const PackedView& picture) { Compute<RotateMap>(picture, Outside::White); }
    void RotateComponentEffect(const PlanarView& picture) { Compute<RotateMap>(picture, Outside::White); }
    void ConverRotateRgba32Effect(const PackedView& picture) { Replay(picture, Outside::White); }
    void ConverRotateComponentEffect(const PlanarView& picture) { Replay(picture, Outside::White); }
};

/// A bulge, or a pinch with a negative scale.
class CSpherizeVideoImageEffect : public CTableEffect<CircleSettings> {
 public:
    CSpherizeVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    // Deliberate: a source outside the picture leaves a packed pixel as it was, but turns a planar one white.
    void SpherizeRgba32Effect(const PackedView& picture) { Compute<SpherizeMap>(picture, Outside::Unchanged); }
    void SpherizeComponentEffect(const PlanarView& picture) { Compute<SpherizeMap>(picture, Outside::White); }
    void ConverSpherizeRgba32Effect(const PackedView& picture) { Replay(picture, Outside::Unchanged); }
    void ConverSpherizeComponentEffect(const PlanarView& picture) { Replay(picture, Outside::White); }
};

}  // namespace AVBased
