#pragma once

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameEdgeLight[] = "edgelight";

struct EdgeLightSettings {
    std::uint32_t level = 3;
};

/// Glowing edges: each sample becomes the length of its gradient times a level, modulo 256.
class CEdgeLightVideoImageEffect : public CSettingsEffect<EdgeLightSettings> {
 public:
    CEdgeLightVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

    /// In place; `width` counts samples (pixels of the packed picture), `pitch` bytes.
    void EdgeLightRgba32Effect(unsigned char* data, unsigned width, unsigned pitch, unsigned height) const;
    void EdgeLightCompYEffect(unsigned char* data, unsigned width, unsigned pitch, unsigned height) const;
    void EdgeLightCompUVEffect(unsigned char* data, unsigned width, unsigned pitch, unsigned height) const;

 private:
    void EdgeLightComponent(unsigned char* data, unsigned width, unsigned pitch, unsigned height,
                            unsigned char bias) const;
};

}  // namespace AVBased
