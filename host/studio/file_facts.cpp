#include "host/studio/file_facts.h"

#include <algorithm>
#include <cmath>

#include "host/disc/film_facts.h"
#include "host/disc/stages.h"
#include "host/media/sound_track.h"
#include "host/studio/film_reader.h"
#include "host/studio/folder_listing.h"
#include "host/studio/preview_coding.h"
#include "host/studio/preview_source.h"
#include "host/studio/studio_json.h"

namespace Nifikral {

std::string FileFacts(const StudioFolder& folder, const std::string& path) {
    const std::string own = folder.File(path), kind = FileKind(own);
    if (kind == "sound") return JsonText({{"kind", kind}, {"seconds", SoundSeconds(own)}, {"sound", true}});
    if (kind != "picture" && kind != "film") throw WebError(404, path + " is no picture, film or sound");
    const SourceFacts facts = FilmReader(own).Facts();
    Json json = {{"kind", facts.IsFilm() ? "film" : "picture"},
                 {"width", facts.shape.width},
                 {"height", facts.shape.height},
                 {"frames", facts.frames},
                 {"rate", {facts.rate.num, facts.rate.den}},
                 {"seconds", facts.seconds},
                 {"sound", false},
                 {"alpha", HasAlpha(facts.shape.format)}};
    if (facts.IsFilm()) {
        const FilmFacts film = FactsOf(own);
        json["sound"] = !film.soundLanguages.empty();
        json["chapters"] = Json::array();
        for (const DiscChapter& chapter : film.chapters)
            json["chapters"].push_back({{"begin", chapter.begin}, {"title", chapter.title}});
    }
    return JsonText(json);
}

WebReply Thumbnail(const StudioFolder& folder, const std::string& path, int size, double at) {
    const std::string own = folder.File(path), kind = FileKind(own);
    if (kind != "picture" && kind != "film") throw WebError(404, path + " is no picture and no film");
    FilmReader reader(own);
    const SourceFacts& facts = reader.Facts();
    constexpr double part = 0.1, most = 3;
    const long long number = facts.FrameAt(at >= 0 ? at : std::min(facts.seconds * part, most));
    const FramePtr whole = reader.At(number);
    PictureShape shape = ShapeOf(*whole);
    const double scale = std::min(1.0, double(size) / std::max(shape.width, shape.height));
    shape.width = std::max(1, int(std::lround(shape.width * scale)));
    shape.height = std::max(1, int(std::lround(shape.height * scale)));
    return {200, "image/jpeg", JpegOf(*Scaled(*whole, shape)), {{"Cache-Control", "private, max-age=3600"}}};
}

}  // namespace Nifikral
