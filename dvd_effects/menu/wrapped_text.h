#pragma once

#include <functional>

#include "dvd_effects/canvas/layer_maker.h"
#include "dvd_effects/menu/menu_records.h"

namespace AVBased {

/// Breaks the lines of a text that its box would otherwise make smaller than three quarters of its size, and lowers its
/// font size as far as the lines then need it. Words stay whole down to half of the size; only those that are wider
/// even then are broken. Nothing changes for a text of less width, for a box without one, and with a host that breaks
/// no lines (ITextLines).
///
/// `measure` returns the size of such a text as it is drawn, and may raise. Raises the host's errors.
void WrapText(IAVImporter* importer, text_t& text, const std::function<FrameSize(const text_t&)>& measure);

}  // namespace AVBased
