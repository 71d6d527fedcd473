#include "dvd_effects/slides/CSlides.h"

#include <algorithm>

#include "dvd_effects/canvas/animation.h"
#include "dvd_effects/canvas/compositor.h"
#include "dvd_effects/canvas/errors.h"
#include "dvd_effects/menu/host_sources.h"
#include "dvd_effects/menu/list_parsers.h"
#include "dvd_effects/menu/menu_frames.h"
#include "dvd_effects/slides/rasters.h"
#include "effects/base/place_hash.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

constexpr char unitName[] = "CSlides";

// Lines that the host reads beside an error of a slideshow.
enum Line : int { lineProperty = 40, lineFrame = 100, linePicture = 140 };

constexpr char randomChoice[] = "random";

constexpr std::pair<const char*, SlideFit> fits[] = {
    {"pad", SlideFit::Pad}, {"crop", SlideFit::Crop}, {"blur", SlideFit::Blur}};

void RequireKnown(bool known) { Require(known, textInvalidParamValue, lineProperty, unitName); }

// A list of words that all of isKnown(word) takes.
template <class IsKnown>
std::vector<std::string> ParseWords(const std::string& list, IsKnown isKnown) {
    std::vector<std::string> words = SplitList(list, ';');
    RequireKnown(!words.empty());
    for (const std::string& word : words) RequireKnown(isKnown(word));
    return words;
}

}  // namespace

const Property<CSlides> CSlides::properties[11] = {
    {"paths", "",
     [](CSlides& slides, const std::string& paths) {
         slides.m_paths = SplitList(paths, ';');
         slides.m_timeline.pictures = std::max<std::uint64_t>(slides.m_paths.size(), 1);
         slides.ForgetPictures();
     }},
    {"films", "",
     [](CSlides& slides, const std::string& words) {
         slides.m_films = SplitList(words, ';');
         slides.ForgetPictures();
     }},
    {"slideDuration", "100",
     [](CSlides& slides, std::int32_t frames) { slides.m_timeline.alone = std::max(frames, 0); }},
    {"slideDurations", "",
     [](CSlides& slides, const std::string& list) {
         slides.m_timeline.own.clear();
         for (const std::string& item : SplitList(list, ';'))
             slides.m_timeline.own.push_back(item.empty() ? -1 : std::max(ParseInteger(item), 0));
     }},
    {"transitionDuration", "25",
     [](CSlides& slides, std::int32_t frames) { slides.m_timeline.together = std::max(frames, 0); }},
    {"transitions", "crossfade",
     [](CSlides& slides, const std::string& words) {
         slides.m_transitions =
             ParseWords(words, [](const std::string& word) { return word == randomChoice || FindTransition(word); });
     }},
    {"motion", "none",
     [](CSlides& slides, const std::string& words) {
         slides.m_motions =
             ParseWords(words, [](const std::string& word) { return FindSlideMotion(word, 0).has_value(); });
         slides.ForgetPictures();
     }},
    {"motionAmount", "15",
     [](CSlides& slides, std::int32_t percent) {
         slides.m_motionAmount = std::clamp(percent, 1, 100);
         slides.ForgetPictures();
     }},
    {"fit", "pad",
     [](CSlides& slides, const std::string& word) {
         const auto* const fit = std::ranges::find(fits, word, [](const auto& row) { return row.first; });
         RequireKnown(fit != std::end(fits));
         slides.m_fit = fit->second;
         slides.ForgetPictures();
     }},
    {"loop", "0", [](CSlides& slides, std::int32_t loop) { slides.m_timeline.loops = loop != 0; }},
    {"seed", "0",
     [](CSlides& slides, std::int32_t seed) {
         slides.m_seed = seed;
         slides.ForgetPictures();
     }},
};

CSlides::CSlides(IAVManager* manager) : CBasedVideoImageEffect(effectSlideName), m_manager(manager) {
    DeclareProperties(*this, properties);
}

void CSlides::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(*this, properties, name, node);
}

bool CSlides::Seek(unsigned position) {
    m_position = position;
    return true;
}

void CSlides::ForgetPictures() {
    for (Slide& slide : m_slides) slide = {};
}

void CSlides::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const std::uint64_t position = m_position++;
    if (!Canvas::Takes(*frame)) return;
    const FrameSize size = SizeOf(*frame);
    const FrameKind kind{frame->GetPixelFormat(), size, Instructions()};
    if (kind != m_kind) {
        m_kind = kind;
        m_top.reset();
        ForgetPictures();
    }
    const bool drawable = std::max(size.width, size.height) <= largestSide;
    if (!drawable || m_paths.empty()) FillBlack(*frame);
    Require(drawable, textInvalidParamValue, lineFrame, unitName);
    if (m_paths.empty() || !size.width || !size.height) return;

    const SlideTimeline::Frame at = m_timeline.At(position);
    if (at.second)
        DrawTransition(*frame, at);
    else
        Draw(*frame, at.first, at.first, WholeRegion(size.width, size.height));
}

void CSlides::DrawTransition(IRawVideoFrame& frame, const SlideTimeline::Frame& at) {
    const Transition& transition = TransitionAfter(at.first.index);
    if (!m_top)
        m_top = std::make_unique<CRawVideoFrame>(false, m_kind.format, m_kind.size.width, m_kind.size.height, true);
    IRawVideoFrame &below = frame, &top = *m_top;
    Draw(transition.firstOnTop ? top : below, at.first, *at.second, transition.placeFirst(m_kind.size, at.t));
    Draw(transition.firstOnTop ? below : top, *at.second, at.first, transition.placeSecond(m_kind.size, at.t));
    transition.compose(frame, top, at.t, Instructions());
}

void CSlides::Draw(IRawVideoFrame& frame, const SlideMoment& moment, const SlideMoment& kept,
                   const FixedRegion& place) {
    IRawVideoFrame& picture = PictureAt(moment, kept.index);
    const FixedRegion shown = MotionOf(moment.index).Shown(SizeOf(picture), m_kind.size, moment.share);
    DrawView(frame, picture, shown, place, Instructions());
}

std::uint32_t CSlides::Random(Choice choice, std::uint64_t index) const {
    const FrameHash ofPicture{std::uint32_t(m_seed), std::int32_t(index)};
    return ofPicture.Row(unsigned(choice), 0)(0);
}

SlideMotion CSlides::MotionOf(std::uint64_t index) const {
    if (IsFilm(index)) return {};
    return *FindSlideMotion(m_motions[index % m_motions.size()], Random(Choice::Motion, index));
}

const Transition& CSlides::TransitionAfter(std::uint64_t index) const {
    const std::string& name = m_transitions[index % m_transitions.size()];
    if (name != randomChoice) return *FindTransition(name);
    const std::span<const Transition> all = Transitions();
    return all[Random(Choice::Transition, index) % (all.size() - 1)];
}

IRawVideoFrame& CSlides::PictureAt(const SlideMoment& moment, std::uint64_t kept) {
    const std::uint64_t index = moment.index;
    Slide* slide = std::ranges::find_if(m_slides, [&](const Slide& s) { return s.picture && s.index == index; });
    if (slide == std::end(m_slides)) {
        slide = &m_slides[m_slides[0].picture && m_slides[0].index == kept ? 1 : 0];
        *slide = {};
        const auto side = [&](unsigned own) {
            const std::uint64_t larger = std::uint64_t(own) * unsigned(100 + m_motionAmount) / 100;
            return MotionOf(index).Moves() ? unsigned(std::min<std::uint64_t>(larger, largestSide)) : own;
        };
        slide->index = index;
        slide->picture = std::make_unique<CRawVideoFrame>(false, m_kind.format, side(m_kind.size.width),
                                                          side(m_kind.size.height), true);
        FillBlack(*slide->picture);
        if (!IsFilm(index)) AtBoundary(linePicture, unitName, [&] { Fill(*slide->picture, m_paths[index]); });
    }
    if (IsFilm(index)) AtBoundary(linePicture, unitName, [&] { Play(*slide, moment.frame); });
    return *slide->picture;
}

void CSlides::Play(Slide& slide, std::uint64_t number) {
    if (slide.framesRead > number + 1) slide.film.reset();
    if (!slide.film) {
        slide.film = OpenSource(m_manager, m_paths[slide.index], false);
        slide.framesRead = 0;
    }
    FrameOwner frame;
    for (; slide.framesRead <= number; ++slide.framesRead) frame = ReadFrame(*slide.film);
    if (!frame) return;
    FillBlack(*slide.picture);
    FitPicture(*frame, m_fit, m_kind.size.height, *slide.picture, Instructions());
}

void CSlides::Fill(CRawVideoFrame& picture, const std::string& path) {
    // The file is closed again before anything is made of its picture.
    const FrameOwner frame = ReadFrame(*OpenSource(m_manager, path, true));
    FitPicture(*frame, m_fit, m_kind.size.height, picture, Instructions());
}

}  // namespace AVBased
