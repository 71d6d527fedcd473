#pragma once

#include <optional>
#include "host/films/styled_text.h"

#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

/// The largest side of a picture that this host makes or opens for a generator.
inline constexpr int largestSide = 16384;

/// Where the lines of a text lie in the picture that RenderText makes of it; around them its decoration has room.
struct TextExtent {
    int left = 0, top = 0, width = 0, height = 0;
};
/// Throws as CheckText.
TextExtent MeasureText(const StyledText& text);

/// Draws a text on a transparent picture (BGRA, colours not multiplied by alpha) that is just large enough for it. A
/// font family that is not installed and characters that it lacks are reported once, with the font that was used
/// instead. Throws std::runtime_error for a text that is no UTF-8, a size below 1 and a text too large to draw.
/// Threads: any.
FramePtr RenderText(const StyledText& text);

/// The first byte of a text that is no UTF-8; nothing for one that is.
std::optional<std::size_t> FirstInvalidByte(const std::string& text);
/// Throws a usage error that begins with `what` for a text that is no UTF-8.
void RequireUtf8(const char* what, const std::string& text);
/// The text with a replacement character for each byte that is no UTF-8.
std::string ValidUtf8(const std::string& text);

/// What RenderText throws for a text, whatever its length.
void CheckText(const StyledText& text);

/// The text with line feeds where it has to break so that its picture gets no wider than `width` pixels: as few as
/// possible, which leave lines of about one length. Its own line feeds stay. Breaks fall where the script has them, and
/// with `withinWords` also within a word that is too wide. Throws as CheckText.
std::string BreakLines(const StyledText& text, int width, bool withinWords);

}  // namespace Nifikral
