#include "dvd_effects/menu/CBasedMenu.h"

#include "dvd_effects/menu/list_parsers.h"
#include "dvd_effects/menu/menu_errors.h"

namespace AVBased {

namespace {

// Lines that the host reads beside an error of a template, of its places and of going to a frame.
enum Line : int { lineScene = 180, lineWatch = 220, linePlace = 240, lineGoTo = 260 };

constexpr unsigned mostMoments = 256;

}  // namespace

template <std::int32_t CBasedMenu::*side>
void CBasedMenu::SetSide(CBasedMenu& menu, std::int32_t value) {
    menu.*side = value;
    menu.ForgetBackground();
}

template <MenuSources::ParseList parse>
void CBasedMenu::SetList(CBasedMenu& menu, const std::string& list) {
    menu.m_sources.SetList(parse, list);
}

template <MenuSources::ParseList parse>
void CBasedMenu::SetFades(CBasedMenu& menu, const std::string& list) {
    SetList<parse>(menu, list);
    menu.m_hasFades = true;
}

const Property<CBasedMenu> CBasedMenu::properties[18] = {
    {"width", "0", SetSide<&CBasedMenu::m_width>},
    {"height", "0", SetSide<&CBasedMenu::m_height>},
    {"sourcePath", "", [](CBasedMenu& menu, const std::string& path) { menu.m_background.Open(menu.m_manager, path); }},
    {"backgroundMask", "",
     [](CBasedMenu& menu, const std::string& path) { menu.m_background.OpenMask(menu.m_manager, path); }},
    {"textNumber", "0", [](CBasedMenu& menu, std::int32_t number) { menu.m_texts.SetNumber(number); }},
    {"textInfos", "", [](CBasedMenu& menu, const std::string& list) { menu.m_texts.SetInfos(list); }},
    {"additionSourceNumber", "0", [](CBasedMenu& menu, std::int32_t count) { menu.m_sources.SetCount(count); }},
    {"isAdditionSourceImages", "",
     [](CBasedMenu& menu, const std::string& list) {
         SetList<GetAdditionSourceType>(menu, list);
         menu.m_sources.Forget();
     }},
    {"additionSourcePaths", "", [](CBasedMenu& menu, const std::string& list) { menu.m_sources.SetPaths(list); }},
    {"additionSourceSizes", "", [](CBasedMenu& menu, const std::string& list) { menu.m_sources.AddSizes(list); }},
    {"maskPaths", "", [](CBasedMenu& menu, const std::string& list) { menu.m_sources.SetMaskPaths(list); }},
    {"startPositions", "",
     [](CBasedMenu& menu, const std::string& list) {
         SetList<GetStartPositions>(menu, list);
         menu.m_hasPlaces = true;
     }},
    {"endPositions", "", SetList<GetEndPositions>},
    {"moveFormulas", "", SetList<GetMoveFormulas>},
    {"moveSpeeds", "", SetList<GetMoveSpeeds>},
    {"startTrans", "", SetFades<GetStartTrans>},
    {"endTrans", "", SetFades<GetEndTrans>},
    {"fadeSpeeds", "", SetFades<GetFadeSpeeds>},
};

CBasedMenu::CBasedMenu(const char* name, IAVManager* manager)
    : CBasedVideoImageEffect(name),
      m_manager(manager),
      m_textImporter(manager ? manager->GetImporter(importerSimpleHtmlText) : nullptr) {
    DeclareProperties(*this, properties);
    AddInterface(IMenuPlaces::name, static_cast<IMenuPlaces*>(this));
    AddInterface(IMenuPlayback::name, static_cast<IMenuPlayback*>(this));
}

void CBasedMenu::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(*this, properties, name, node);
}

void CBasedMenu::ForgetBackground() {
    m_background.Forget();
    m_hasScenery = false;
}

FrameSize CBasedMenu::MenuSize() const {
    const auto side = [](std::int32_t set, unsigned own) { return set > 0 ? unsigned(set) : own; };
    return {side(m_width, m_kind.size.width), side(m_height, m_kind.size.height)};
}

void CBasedMenu::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ++m_frameNumber;
    const FrameSize size = SizeOf(*frame);
    if (!Canvas::Takes(*frame) || !size.width || !size.height) return;
    const FrameKind kind{frame->GetPixelFormat(), size, Instructions()};
    if (kind != m_kind) {
        m_kind = kind;
        ForgetBackground();
        m_sources.Forget();
        m_texts.Forget();
    }
    m_sources.Prepare(m_manager, m_kind, *this);
    m_texts.Prepare(m_textImporter, m_kind);
    m_sources.Advance(*this);
    if (!m_hasScenery)
        Attempt(lineScene, [&] {
            m_hasScenery = true;
            MenuBackground::RequireSize(MenuSize());
            MakeScenery();
        });
    Canvas canvas(*frame, Instructions());
    std::function<void(Canvas&)> paint;
    if (HasOwnBackground())
        paint = [this](Canvas& background) {
            PaintBackground(background);
            FinishBackground(background);
        };
    m_background.Draw(canvas, m_kind, MenuSize(), paint);
    Attempt(lineScene, [&] {
        MenuBackground::RequireSize(MenuSize());
        DrawScene(canvas);
    });
}

std::vector<RestingPlaces::Subject> CBasedMenu::Subjects() const {
    std::vector<RestingPlaces::Subject> subjects;
    for (const ShownSource& shown : ShownSources())
        subjects.push_back({pictures, shown.number, &shown.layer, &shown.smaller, shown.own});
    for (const MenuText& text : Texts())
        subjects.push_back({texts, text.number, &text.layer, nullptr, text.layer.Size()});
    return subjects;
}

bool CBasedMenu::Watch(unsigned first, unsigned end) {
    const std::uint32_t now = m_frameNumber;
    const bool watched = TarvoBased::AtBoundary(lineWatch, basedMenuName, [&] {
        Require(m_kind != FrameKind() && first < end, TarvoBased::textInvalidParamValue, lineWatch, basedMenuName);
        MenuBackground::RequireSize(MenuSize());
        CRawVideoFrame frame(false, m_kind.format, m_kind.size.width, m_kind.size.height, true);
        RestingPlaces places(m_kind.size);
        const LayingWatcher watcher = [&](const Laying& laying) { places.See(laying); };
        const unsigned moments = std::min(end - first, mostMoments);
        for (unsigned i = 0; i < moments; ++i) {
            // The first and the last frame are among them.
            m_frameNumber = first + 1 + std::uint32_t(std::uint64_t(i) * (end - 1 - first) / std::max(1u, moments - 1));
            places.Begin(Subjects());
            Canvas canvas(frame, Instructions(), &watcher);
            DrawScene(canvas);
            places.End();
        }
        m_places = std::move(places);
        return true;
    });
    m_frameNumber = now;
    return watched;
}

bool CBasedMenu::GetPlace(int kind, unsigned index, MenuPlace* place) {
    return TarvoBased::AtBoundary(linePlace, basedMenuName, [&] {
        TarvoBased::RequirePointer(place, linePlace, basedMenuName);
        const std::int64_t count = kind == pictures ? m_sources.Count() : kind == texts ? m_texts.Number() : 0;
        if (!m_places || std::int64_t(index) >= count)
            throw TarvoBased::CBaseException(TarvoBased::errorBadIndex, TarvoBased::textBadIndex, linePlace,
                                             basedMenuName);
        *place = m_places->PlaceOf(kind, index);
        return true;
    });
}

bool CBasedMenu::GoTo(unsigned frame) {
    return TarvoBased::AtBoundary(lineGoTo, basedMenuName, [&] {
        const std::int64_t frames = std::int64_t(frame) - m_frameNumber;
        Require(frames >= 0 || !(m_sources.HasVideos() || m_background.HasVideo()), TarvoBased::textInvalidParamValue,
                lineGoTo, basedMenuName);
        m_sources.Pass(frames);
        m_background.Pass(frames);
        m_frameNumber = frame;
        return true;
    });
}

double CBasedMenu::GetCover(int kind, int left, int top, int width, int height) {
    return m_places ? m_places->CoverOf(kind, left, top, width, height) : 0;
}

}  // namespace AVBased
