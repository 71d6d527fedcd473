#pragma once

#include <memory>
#include <string>
#include <vector>

#include "avbase/IAVManager.h"
#include "dvd_effects/menu/menu_picture.h"
#include "dvd_effects/slides/slide_picture.h"
#include "dvd_effects/slides/slide_timeline.h"
#include "dvd_effects/slides/transitions.h"
#include "effects/base/CBasedVideoEffect.h"
#include "effects/base/property_table.h"

namespace AVBased {

inline constexpr char effectSlideName[] = "slide";

/// A slideshow: pictures one after another over the whole frame, each handed over to the next by a transition, and
/// moving slowly meanwhile. Every processed frame is the next one of the show, whatever it held; Seek sets which one
/// the next is. A frame depends on its number and the properties alone. Opaque throughout.
///
/// Picture i is alone for `slideDuration` frames from frame i * (slideDuration + transitionDuration) on, and shares the
/// next `transitionDuration` frames with picture i + 1. The last one stays; with `loop` the first one follows it.
///
/// | Property             | Default     |                                                                            |
/// |----------------------|-------------|----------------------------------------------------------------------------|
/// | "paths"              | ""          | ";" list of pictures, in order                                             |
/// | "films"              | ""          | ";" list of true for what plays meanwhile, without motion, a frame for     |
/// |                      |             | each of the show, and of anything else for pictures                        |
/// | "slideDuration"      | "100"       | frames; 0 lets transition follow transition                                |
/// | "slideDurations"     | ""          | ";" list of frames for the first pictures; an empty item: slideDuration    |
/// | "transitionDuration" | "25"        | frames; 0 cuts                                                             |
/// | "transitions"        | "crossfade" | ";" list, repeated: crossfade, push, wipe, zoom, iris, blinds, pageturn,   |
/// |                      |             | cut (half way through its time), or random, any but the cut                |
/// | "motion"             | "none"      | ";" list, repeated: none, zoomin, zoomout, panleft, panright, panup,       |
/// |                      |             | pandown, or random                                                         |
/// | "motionAmount"       | "15"        | how much larger a moving picture gets, in percent, 1 to 100                |
/// | "fit"                | "pad"       | pictures of another shape: pad with black, crop, or blur (pad with a dark, |
/// |                      |             | blurred copy)                                                              |
/// | "loop"               | "0"         | not 0: starts over after the last picture                                 |
/// | "seed"               | "0"         | of the random choices                                                      |
///
/// A word that is not in a list above is refused. At most two pictures are held, whatever their number, and a file is
/// open only while it is read, a film while it shows. One that fails shows as black in its time, so that the others
/// keep theirs; the error is filed whenever its turn comes. Without pictures all is black.
class CSlides : public CBasedVideoImageEffect {
 public:
    /// `manager` is borrowed; without one, every picture is black.
    explicit CSlides(IAVManager* manager);

    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    bool Seek(unsigned position) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    static const Property<CSlides> properties[11];

    // A picture as large as it is ever seen; of a film the frame that was read last.
    struct Slide {
        std::uint64_t index = 0;
        std::unique_ptr<CRawVideoFrame> picture;
        SourceOwner film;
        std::uint64_t framesRead = 0;
    };

    enum class Choice : unsigned { Transition, Motion };

    void ForgetPictures();
    // The random number of a picture's choice.
    std::uint32_t Random(Choice choice, std::uint64_t index) const;
    SlideMotion MotionOf(std::uint64_t index) const;
    const Transition& TransitionAfter(std::uint64_t index) const;
    bool IsFilm(std::uint64_t index) const { return index < m_films.size() && m_films[index] == "true"; }
    // The picture, made unless it is there; the one at `kept` stays.
    IRawVideoFrame& PictureAt(const SlideMoment& moment, std::uint64_t kept);
    void Fill(CRawVideoFrame& picture, const std::string& path);
    // Brings a film to a frame of it.
    void Play(Slide& slide, std::uint64_t number);
    void Draw(IRawVideoFrame& frame, const SlideMoment& moment, const SlideMoment& kept, const FixedRegion& place);
    void DrawTransition(IRawVideoFrame& frame, const SlideTimeline::Frame& at);

    IAVManager* m_manager;
    std::uint64_t m_position = 0;

    std::vector<std::string> m_paths, m_films, m_transitions{"crossfade"}, m_motions{"none"};
    SlideTimeline m_timeline{1, 100, 25, false};
    std::int32_t m_motionAmount = 15, m_seed = 0;
    SlideFit m_fit = SlideFit::Pad;

    // What the pictures held were made for.
    FrameKind m_kind;
    Slide m_slides[2];
    std::unique_ptr<CRawVideoFrame> m_top;  // the upper picture of a transition
};

}  // namespace AVBased
