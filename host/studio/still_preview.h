#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/run/effect_chain.h"
#include "host/run/effect_request.h"
#include "host/studio/preview_coding.h"
#include "host/studio/preview_source.h"
#include "host/studio/view_turns.h"

namespace Nifikral {

/// A frame of a file under effects.
struct StillWish {
    std::string path;
    long long number = 0;              ///< of the frame
    int width = 960;                   ///< that it has at most
    std::optional<PicturePart> crop;   ///< of the result in its full size, in place of a width
    FrameRange run;                    ///< in which effects without a window work
    std::vector<std::string> effects;  ///< as the command takes them
};

/// What a view keeps: the chain with the picture behind each of its effects.
class StillView {
 public:
    /// The wished picture in the layout that effects see. What has not changed since the last wish, from the first
    /// effect on, is not made again. Throws host errors, and Superseded between two effects.
    SharedFrame Make(const StillWish& wish, PreviewSources& sources, const EffectModule& module, const ViewTurn& turn);
    /// Whether the alpha of the last picture counts. What effects leave there of an opaque source is no part of it.
    bool ShowsAlpha() const { return m_showsAlpha; }

 private:
    struct Stage {
        std::string key;  // of everything that the object depends on
        std::unique_ptr<std::vector<PlacedEffect>> placed;
        std::unique_ptr<EffectChain> chain;
        std::string pictureKey;  // of everything that the picture depends on; empty: there is none
        SharedFrame picture;
    };

    std::vector<Stage> m_stages;
    bool m_showsAlpha = true;
};

/// The size of a picture in a width at most, never enlarged.
PictureShape ShownShape(const PictureShape& whole, int width);

}  // namespace Nifikral
