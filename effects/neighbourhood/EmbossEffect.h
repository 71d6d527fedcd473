#pragma once

#include <atomic>

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameEmboss[] = "emboss";

/// Embosses `height` rows in place; `width` counts samples (pixels of a packed picture), `pitch` bytes.
using EmbossRoutine = void (*)(unsigned char* data, unsigned width, unsigned pitch, unsigned height, unsigned level);

/// The plain routines: one plane of bytes, packed pixels.
void emboss_effect_component_c(unsigned char* data, unsigned width, unsigned pitch, unsigned height, unsigned level);
void emboss_effect_rgba32_c(unsigned char* data, unsigned width, unsigned pitch, unsigned height, unsigned level);
/// The vectorised routines treat extremes and the ends of rows otherwise; on every processor they do so alike. They use
/// the best instruction set.
void emboss_effect_component_mmx(unsigned char* data, unsigned width, unsigned pitch, unsigned height, unsigned level);
void emboss_effect_rgba32_mmx(unsigned char* data, unsigned width, unsigned pitch, unsigned height, unsigned level);

/// The routines in use by the whole process: the plain ones until an effect is made on a processor with a vector unit.
/// Atomic since effects may be made on several threads. In place of the vectorised ones an effect runs their variants
/// for its own instruction set.
extern std::atomic<EmbossRoutine> emboss_effect_component, emboss_effect_rgba32;

struct EmbossSettings {
    std::int32_t level = 0;
};

/// Raised edges: each sample against the one above it, scaled by a level, around grey.
class CEmbossVideoImageEffect : public CSettingsEffect<EmbossSettings> {
 public:
    CEmbossVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
