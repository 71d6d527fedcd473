#pragma once

#include "effects/CBasedVideoEffect.h"

namespace AVBased {

/// Glowing edges: each sample becomes the length of its gradient times a level, modulo 256.
class CEdgeLightVideoImageEffect : public CBasedVideoImageEffect {
 public:
    CEdgeLightVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

    /// In place; `width` counts samples (pixels of the packed picture), `pitch` bytes.
    void EdgeLightRgba32Effect(unsigned char* data, unsigned width, unsigned pitch, unsigned height) const;
    void EdgeLightCompYEffect(unsigned char* data, unsigned width, unsigned pitch, unsigned height) const;
    void EdgeLightCompUVEffect(unsigned char* data, unsigned width, unsigned pitch, unsigned height) const;

    struct Settings {
        std::uint32_t level = 3;
    };

 private:
    Settings m_settings;
};

}  // namespace AVBased
