#pragma once

#include <string>

#include "host/films/menu_places.h"
#include "host/films/styled_text.h"
#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

/// Words on a shade that keeps them readable over anything: with a contrast of 4.5 to 1 at least, where their colour is
/// not of a middle brightness.
struct Label {
    FilmBox box;
    StyledText text;  ///< lines apart by line feeds
    bool centred = false;
};

/// What a label takes besides its text, for a font of that size.
int LabelPadding(int fontSize);
int LabelHeight(int fontSize, int lines = 1);

/// How wide a line of text gets at a size of its font.
int TextWidth(StyledText text, const std::string& words, int size);

/// The text, broken into up to that many lines of that width, within words too unless these are to stay whole; nothing
/// where it does not fit.
std::string BrokenInto(StyledText style, const std::string& words, int width, int lines, bool wholeWords = false);
/// The same, cut where they do not fit, with a warning that names them as `what`.
std::string CutInto(const StyledText& style, const std::string& words, int width, int lines, const std::string& what);

/// Draws on a picture (BGRA, colours not multiplied by alpha).
void DrawLabel(AVFrame& picture, const Label& label);

}  // namespace Nifikral
