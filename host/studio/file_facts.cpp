#include "host/studio/file_facts.h"

#include "host/media/sound_track.h"
#include "host/studio/folder_listing.h"
#include "host/studio/studio_json.h"
#include "host/studio/web_message.h"

namespace Nifikral {

std::string FileFacts(const StudioFolder& folder, const std::string& path, PreviewSources& sources) {
    const std::string own = folder.File(path), kind = FileKind(own);
    if (kind == "sound") return JsonText({{"kind", kind}, {"seconds", SoundSeconds(own)}, {"sound", true}});
    if (kind != "picture" && kind != "film") throw WebError(404, path + " is no picture, film or sound");
    const SourceFacts facts = sources.Facts(own);
    Json json = {{"kind", facts.IsFilm() ? "film" : "picture"},
                 {"width", facts.shape.width},
                 {"height", facts.shape.height},
                 {"frames", facts.frames},
                 {"rate", {facts.rate.num, facts.rate.den}},
                 {"seconds", facts.seconds},
                 {"sound", facts.sound},
                 {"alpha", HasAlpha(facts.shape.format)}};
    if (facts.IsFilm()) {
        json["chapters"] = Json::array();
        for (const DiscChapter& chapter : facts.chapters)
            json["chapters"].push_back({{"begin", chapter.begin}, {"title", chapter.title}});
    }
    return JsonText(json);
}

}  // namespace Nifikral
