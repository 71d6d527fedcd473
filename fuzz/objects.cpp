// Any texts, frames and calls in any order, on any object of the module, with a host that fails and lies.

#include <memory>
#include <vector>

#include "TarvoBased/IStrings.h"
#include "TarvoBased/ITarvoException.h"
#include "avbase/IMenuPlaces.h"
#include "avbase/IMenuPlayback.h"
#include "avbase/IVideoProc.h"
#include "fuzz/hostile_host.h"
#include "host/catalogue/catalogue.h"

extern "C" AVBased::IVideoProc* CreateVideoProc(AVBased::IAVManager* manager, const char* name);

using namespace AVBased;
using Fuzzing::HostileFrame;
using Fuzzing::HostileHost;

namespace {

struct FreeObject {
    template <class Object>
    void operator()(Object* object) const {
        object->Free();
    }
};
using FrameOwner = std::unique_ptr<HostileFrame, FreeObject>;
using ObjectOwner = std::unique_ptr<IVideoProc, FreeObject>;

std::string AnyNumber(FuzzedDataProvider& data) {
    switch (data.ConsumeIntegralInRange(0, 5)) {
        case 0:
            return std::to_string(data.ConsumeIntegral<int>());
        case 1:
            return std::to_string(data.ConsumeFloatingPointInRange(-4.0, 4.0));
        default:
            return std::to_string(data.ConsumeIntegralInRange(-100, 300));
    }
}

// Numbers, as most lists have them, or words that mean something in some of them.
std::string AnyList(FuzzedDataProvider& data, int items, bool numbers) {
    constexpr const char* words[] = {"true",     "false",  "picture", "",       "crossfade", "push",   "zoom",
                                     "pageturn", "random", "iris",    "blinds", "wipe",      "zoomin", "panleft",
                                     "none",     "blur",   "crop",    "up",     "#ffffff"};
    std::string list;
    for (int i = 0; i < items; ++i)
        list += (i ? ";" : "") + (numbers ? AnyNumber(data) : std::string(data.PickValueInArray(words)));
    return list;
}

std::string AnyText(FuzzedDataProvider& data) {
    constexpr const char* usual[] = {"Text;Sans;;9;255;0;0;9;4;1;1;false",
                                     "Some words;Sans;bold;9;255;0;0;9;4;30;20;true;15;3;1;2;5;0", "1e300", "nan",
                                     "-inf"};
    constexpr int mostItems = 8, longest = 80;
    switch (data.ConsumeIntegralInRange(0, 5)) {
        case 0:
            return data.PickValueInArray(usual);
        case 1:
            return data.ConsumeRandomLengthString(longest);
        case 2:
        case 3:
            return AnyList(data, data.ConsumeIntegralInRange(1, mostItems), data.ConsumeBool());
        default:
            return AnyNumber(data);
    }
}

// Passes are counted in these, and billions of them take hours.
bool CountsPasses(const std::string& property) { return property == "blur_count" || property == "sharpen_count"; }

// Lists of a menu count only where each has as many items as there are pictures.
void Furnish(FuzzedDataProvider& data, IVideoProc& menu) {
    struct List {
        const char* name;
        int itemsPerPicture;
        bool numbers;
    };
    constexpr List lists[] = {{"isAdditionSourceImages", 1, false},
                              {"additionSourcePaths", 1, false},
                              {"additionSourceSizes", 2, true},
                              {"maskPaths", 1, false},
                              {"startPositions", 2, true},
                              {"endPositions", 2, true},
                              {"moveFormulas", 2, true},
                              {"moveSpeeds", 1, true},
                              {"startTrans", 1, true},
                              {"endTrans", 1, true},
                              {"fadeSpeeds", 1, true}};
    const int pictures = data.ConsumeIntegralInRange(0, 5);
    menu.SetProperty("additionSourceNumber", std::to_string(pictures).c_str());
    menu.SetProperty("paths", AnyList(data, pictures, false).c_str());
    for (const List& list : lists)
        if (data.ConsumeIntegralInRange(0, 3) > 0)
            menu.SetProperty(list.name, AnyList(data, pictures * list.itemsPerPicture, list.numbers).c_str());
}

void Watch(FuzzedDataProvider& data, IVideoProc& object, int position) {
    constexpr unsigned farthest = 12;
    if (auto* const playback = static_cast<IMenuPlayback*>(object.GetInterface(IMenuPlayback::name)))
        playback->GoTo(data.ConsumeIntegralInRange(0U, farthest));
    auto* const places = static_cast<IMenuPlaces*>(object.GetInterface(IMenuPlaces::name));
    if (!places) return;
    places->Watch(unsigned(position), unsigned(position) + data.ConsumeIntegralInRange(0U, farthest));
    MenuPlace place{};
    places->GetPlace(data.ConsumeIntegralInRange(0, 1), data.ConsumeIntegralInRange(0U, 5U), &place);
    places->GetCover(data.ConsumeIntegralInRange(0, 1), position, place.top, place.width, position);
}

void Live(FuzzedDataProvider& data, HostileHost& host) {
    const auto& effects = Nifikral::Catalogue();
    const ObjectOwner object(
        CreateVideoProc(&host, effects[data.ConsumeIntegralInRange<std::size_t>(0, effects.size() - 1)].name));
    if (!object) return;
    const std::unique_ptr<TarvoBased::IStrings, FreeObject> list(object->GetPropertyNames());
    std::vector<std::string> names = {""};
    for (int i = 0; list && i < list->GetCount(); ++i) names.emplace_back(list->GetString(i)->GetStr());
    if (data.ConsumeBool()) Furnish(data, *object);
    ImagePostion record;
    FrameOwner frame(new HostileFrame(data));
    IRawVideoFrame* made = nullptr;
    constexpr int longestLife = 24;
    for (int step = 0; step < longestLife && data.remaining_bytes() > 0; ++step) {
        const int position = data.ConsumeBool() ? data.ConsumeIntegralInRange(-3, 60) : data.ConsumeIntegral<int>();
        const std::string& name = names[data.ConsumeIntegralInRange<std::size_t>(0, names.size() - 1)];
        switch (data.ConsumeIntegralInRange(0, 10)) {
            case 0:
                frame.reset(new HostileFrame(data));
                break;
            case 1:
                made = object->ProcFrame(&record, position, frame.get());
                break;
            case 2:
                // What an object has made may come back to it.
                if (made) made = object->ProcFrame(&record, position, made);
                break;
            case 3:
                object->Seek(unsigned(position));
                break;
            case 4:
                Watch(data, *object, position);
                break;
            case 5:
                object->GetProperty(name.c_str(), nullptr);
                object->BlendFrame(&record, position, frame.get(), made);
                break;
            case 6:
            case 7:
            case 8: {
                const std::string text = CountsPasses(name) ? std::to_string(position & 3) : AnyText(data);
                object->SetProperty(name.c_str(), text.c_str());
                break;
            }
            default:
                object->ProcFrameInPlace(&record, position, frame.get());
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    FuzzedDataProvider data(bytes, size);
    HostileHost host(data);
    Live(data, host);
    TarvoBased::ReleaseTarvoException();
    if (host.OpenSources() != 0) __builtin_trap();
    return 0;
}
