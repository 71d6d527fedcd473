#pragma once

#include <string>
#include <vector>

#include "host/catalogue/effect_module.h"
#include "host/films/slide_pictures.h"

namespace Nifikral {

/// Throws a usage error, which begins with `where`, for a pattern of captions with an unknown word in braces.
void CheckCaptions(const std::string& pattern, const std::string& where = "");

/// A pattern with its words in braces replaced: {name} (the file's, without extension), {number} (within the show, from
/// 1), {date}, {time}, {description} and {place}. What the picture does not say is left out. \\n begins a new line.
std::string CaptionOf(const std::string& pattern, const Slide& slide, std::size_t number);

/// A text over some frames of a film.
struct Caption {
    std::string text;
    long long first = 0, count = 0;
    long long fade = 0;  ///< frames in which it comes, and goes
};

/// Draws captions below, inside the part of the frame that every screen shows. Threads: one at a time.
class CaptionPainter {
 public:
    /// `captions` come one after another. Sizes are those of the film. Throws an error for a module without titles.
    CaptionPainter(const EffectModule& module, std::vector<Caption> captions, int width, int height);

    void Draw(AVBased::IRawVideoFrame& frame, long long number);

 private:
    std::vector<Caption> m_captions;
    EffectPtr m_title;
    const Caption* m_shown = nullptr;
};

}  // namespace Nifikral
