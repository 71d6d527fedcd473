#include "host/films/menu_places.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "TarvoBased/ITarvoException.h"
#include "TarvoBased/error_codes.h"
#include "avbase/IAVManager.h"
#include "avbase/IMenuPlaces.h"
#include "avbase/avbase_srcutils/pixel_formats.h"
#include "host/base/errors.h"
#include "host/films/button_list.h"
#include "host/films/loop_seam.h"
#include "host/media/frame_adapter.h"

namespace Nifikral {
namespace {

using AVBased::IMenuPlaces;

void MakeFirstFrame(AVBased::IVideoProc& menu, const Film& film) {
    const FramePtr frame = NewPicture(AV_PIX_FMT_BGRA, film.width, film.height);
    FrameAdapter adapter(*frame, AVBased::formatRgba32, 0);
    AVBased::ImagePostion record{0, 0, unsigned(frame->width), unsigned(frame->height)};
    TarvoBased::GetTarvoException()->Clear();
    menu.ProcFrameInPlace(&record, 0, &adapter);
    if (const std::optional<std::string> error = TakeModuleError())
        throw HostError(ExitCode::Failed, std::string(menu.GetName()) + " fails at frame 0: " + *error);
}

// A host whose files all are the same plain picture.
class PlainPictures final : public AVBased::IAVManager {
 public:
    AVBased::IAVImporter* GetImporter(const char*) override { return nullptr; }
    AVBased::IAVSource* OpenSource(const char*, const char*) override { return new Picture; }

 private:
    class Picture final : public AVBased::IAVSource, public AVBased::IAVSourcePropertySet {
     public:
        void* GetInterface(const char* name) override {
            if (std::strcmp(name, AVBased::IAVSourcePropertySet::name) == 0)
                return static_cast<AVBased::IAVSourcePropertySet*>(this);
            TarvoBased::GetTarvoException()->SetException(TarvoBased::errorNoInterface, name, 0, "menu_places");
            return nullptr;
        }
        AVBased::IRawVideoFrame* ReadFrame() override {
            FramePtr frame = NewPicture(AV_PIX_FMT_BGRA, 160, 90);
            for (int y = 0; y < frame->height; ++y)
                std::memset(frame->data[0] + std::ptrdiff_t(y) * frame->linesize[0], 255,
                            std::size_t(frame->width) * 4);
            return new FrameAdapter(std::move(frame), AVBased::formatRgba32, 0);
        }
        bool SetProperty(int, int) override { return true; }
        bool IsStill() override { return true; }
        void Free() override { delete this; }
        virtual ~Picture() = default;
    };
};

}  // namespace

FilmBox SafeArea(int width, int height) {
    const int left = (width + 19) / 20, top = (height + 19) / 20;
    return {left, top, width - 2 * left, height - 2 * top};
}

FilmBox RestingPlace::Reach(const Film& film) const {
    const FilmBox safe = SafeArea(film.width, film.height).Grown(-markRoom), all = at.Grown(drift);
    const auto begin = [](int own, int grown, int edge) { return std::min(own, std::max(grown, edge)); };
    const int left = begin(at.left, all.left, safe.left), top = begin(at.top, all.top, safe.top);
    const auto end = [](int own, int grown, int edge) { return std::max(own, std::min(grown, edge)); };
    return {left, top, end(at.left + at.width, all.left + all.width, safe.left + safe.width) - left,
            end(at.top + at.height, all.top + all.height, safe.top + safe.height) - top};
}

FilmBox StoredBox(const Film& film, const FilmBox& box) {
    if (!film.profile) return box;
    const auto scaled = [](int place, int stored, int own) { return int(std::lround(double(place) * stored / own)); };
    const auto across = [&](int x) { return scaled(x, film.profile->width, film.width); };
    const auto down = [&](int y) { return scaled(y, film.profile->height, film.height); };
    const int left = across(box.left), top = down(box.top);
    return {left, top, across(box.left + box.width) - left, down(box.top + box.height) - top};
}

MenuWatch::MenuWatch(const MenuProject& page, const std::string& templateName, const EffectModule& module)
    : m_pictures(page.sources.size()),
      m_texts(page.texts.size()),
      m_menu(module.Create(templateName)),
      m_places(static_cast<IMenuPlaces*>(m_menu->GetInterface(IMenuPlaces::name))) {
    TakeFiledMessage();
    if (!m_places) return;
    SetProperties(*m_menu, MenuProperties(page), [&](const std::string& name, const std::string& reason) {
        throw HostError(ExitCode::Usage, templateName + " refuses " + name + ": " + reason);
    });
    const Film& film = page.film;
    MakeFirstFrame(*m_menu, film);
    const long long before = LoopSeam::LengthOf(film.loopStart, film.frames, film.frameRate);
    if (!m_places->Watch(unsigned(film.loopStart - before), unsigned(film.frames)))
        throw HostError(ExitCode::Failed, templateName + " cannot be watched: " + TakeModuleError().value_or(""));
}

std::vector<RestingPlace> MenuWatch::Places() const {
    std::vector<RestingPlace> places;
    const auto add = [&](PlaceKind kind, int moduleKind, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            AVBased::MenuPlace place{};
            if (m_places && !m_places->GetPlace(moduleKind, unsigned(i), &place)) TakeFiledMessage();
            places.push_back({kind, i, {place.left, place.top, place.width, place.height}, place.drift});
        }
    };
    add(PlaceKind::Picture, IMenuPlaces::pictures, m_pictures);
    add(PlaceKind::Text, IMenuPlaces::texts, m_texts);
    return places;
}

double MenuWatch::Cover(PlaceKind kind, const FilmBox& part) const {
    const int moduleKind = kind == PlaceKind::Text ? IMenuPlaces::texts : IMenuPlaces::pictures;
    return m_places ? m_places->GetCover(moduleKind, part.left, part.top, part.width, part.height) : 0;
}

std::vector<RestingPlace> RestingPlacesOf(const MenuProject& page, const std::string& templateName,
                                          const EffectModule& module) {
    const MenuWatch watch(page, templateName, module);
    std::vector<RestingPlace> places = watch.Places();
    const std::vector<Label> buttons = LayOutButtons(page, watch).buttons;
    for (std::size_t i = 0; i < buttons.size(); ++i) places.push_back({PlaceKind::Button, i, buttons[i].box});
    return places;
}

bool PicturesRest(const std::string& templateName, const EffectModule& module) {
    PlainPictures manager;
    const EffectModule plain(module.Path(), &manager);
    MenuProject page;
    page.film.width = 512;
    page.film.height = 288;
    page.film.frames = 300;
    for (const auto& [across, down] : {std::pair(40, 40), {296, 40}, {40, 164}, {296, 164}}) {
        MenuSource& source = page.sources.emplace_back();
        source.path = "plain";
        source.start = source.end = {across, down};
    }
    const auto rest = [&] {
        const std::vector<RestingPlace> places = MenuWatch(page, templateName, plain).Places();
        return std::all_of(places.begin(), places.end(), [](const RestingPlace& place) { return place.Rests(); });
    };
    if (rest()) return true;
    page.placesSources = true;
    return rest();
}

}  // namespace Nifikral
