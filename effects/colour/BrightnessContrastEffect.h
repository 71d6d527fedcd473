#pragma once

#include <cstdint>

#include "TarvoBased/res_keeper.h"
#include "effects/base/settings_effect.h"
#include "effects/colour/tone_line.h"

namespace AVBased {

inline constexpr char effectNameBrightnessContrast[] = "brightness_contrast";

/// In per cent, -100 to 100.
struct BrightnessContrastSettings {
    double brightness = 0, contrast = 0, saturation = 0;

    bool ChangesTones() const { return brightness != 0 || contrast != 0; }
    ToneLine PackedTones() const;
    /// Deliberate: half the packed step of brightness.
    ToneLine LumaTones() const;
    /// How far colours move from grey, in 1/256. Deliberate: 256 lies at -50, and 0 skips the step altogether.
    std::int32_t ColourFactor() const;
};

/// Tones brightened and stretched, colours strengthened or drawn towards grey.
class CBrightnessContrastEffect : public CSettingsEffect<BrightnessContrastSettings> {
 public:
    CBrightnessContrastEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    void OnParsed(PropertyNode& node) override;
    void OnSettingsChanged() override { FillTable(); }
    void FillTable();

    TarvoBased::ResKeeper<std::int32_t> m_table;  // what PackedTones() makes of each byte
};

}  // namespace AVBased
