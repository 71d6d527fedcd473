#pragma once

#include <string>
#include <vector>

#include "host/catalogue/effect_module.h"
#include "host/disc/disc_page.h"
#include "host/disc/disc_project.h"
#include "host/disc/web_pictures.h"

/// The files of a disc for browsers.
namespace Nifikral {

/// A sound or subtitle track of a film.
struct WebTrack {
    std::string file;
    std::string language;  ///< as the film has it; may be empty
    std::string title;     ///< the same

    bool operator==(const WebTrack&) const = default;
};

/// A film as the page plays it.
struct WebFilm {
    std::vector<WebTrack> sounds;     ///< the film with each of its sound tracks; one without sound where it has none
    std::vector<WebTrack> subtitles;  ///< WebVTT
    std::string poster;               ///< where the picture is that stands for it until it plays
    bool copied = false;              ///< the pictures were not coded again

    bool operator==(const WebFilm&) const = default;
};

/// The film of a page of the menu.
struct WebMenu {
    std::string film;
    std::string poster;    ///< a picture of it where motion is not wanted
    double loopStart = 0;  ///< seconds, from where it repeats
};

/// Makes the files of one film of the project in a folder, and last the one that ReadWebFilm reads. Pictures have
/// square pixels and at most 1080 lines; what browsers play as it is coded is copied. Few browsers let one choose among
/// the sound tracks of a file, so that each gets a file of its own, with the pictures. `key`: what the film is made
/// from; its chunks are of this. Throws host errors.
WebFilm MakeWebFilm(const DiscProject& project, int film, const std::string& folder, int threads,
                    const EffectModule& module, const std::string& key = {});

/// How MakeWebFilm has a film coded there.
WebCoding CodingOf(const DiscProject& project, int film, const std::string& folder, const std::string& key,
                   int threads);

/// The file that stands there when all of a film's are complete.
std::string PlaceOfWebFilm(const std::string& folder, int film);
/// What MakeWebFilm has made there. Throws an input error.
WebFilm ReadWebFilm(const std::string& folder, int film);

/// Makes its poster, which a change of the project's moment for it alone makes anew. Throws host errors.
void WriteWebPoster(const DiscFilm& film, const WebFilm& made);

/// Makes the poster and last the film of one page of the menu in a folder. Throws host errors.
WebMenu MakeWebMenu(const DiscProject& project, const std::vector<DiscPage>& pages, int page, const std::string& folder,
                    int threads, const EffectModule& module);

/// Where MakeWebMenu puts them.
WebMenu PlaceOfWebMenu(const std::vector<DiscPage>& pages, int page, const std::string& folder);

}  // namespace Nifikral
