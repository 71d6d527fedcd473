#pragma once

#include <cstdint>

#include "TarvoBased/res_keeper.h"
#include "effects/CBasedVideoEffect.h"
#include "effects/fixed_point.h"

namespace AVBased {

inline constexpr char effectNameBrightnessContrast[] = "brightness_contrast";

/// A straight line through tones: 127 becomes `middle`, each step from it counts slope / 256.
struct ToneLine {
    std::int32_t slope = 256, middle = 127;

    std::uint8_t operator()(std::int32_t tone) const { return ClampToByte((slope * (tone - 127) >> 8) + middle); }
};

/// Tones brightened and stretched, colours strengthened or drawn towards grey.
class CBrightnessContrastEffect : public CBasedVideoImageEffect {
 public:
    /// In per cent, -100 to 100.
    struct Settings {
        double brightness = 0, contrast = 0, saturation = 0;

        bool ChangesTones() const { return brightness != 0 || contrast != 0; }
        ToneLine PackedTones() const;
        /// Deliberate: half the packed step of brightness.
        ToneLine LumaTones() const;
        /// How far colours move from grey, in 1/256. Deliberate: 256 lies at -50, and 0 skips the step altogether.
        std::int32_t ColourFactor() const;
    };

    CBrightnessContrastEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    void FillTable();

    Settings m_settings;
    TarvoBased::ResKeeper<std::int32_t> m_table;  // what PackedTones() makes of each byte
};

}  // namespace AVBased
