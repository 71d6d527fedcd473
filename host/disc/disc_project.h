#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/films/template_style.h"
#include "host/media/film_profile.h"

/// What a disc holds. One project serves the DVD and the folder for browsers.
namespace Nifikral {

/// What a video DVD holds, each of its titles, and the rates of its pictures in kbit/s.
inline constexpr std::size_t mostTitles = 99, mostChapters = 99, mostSounds = 8, mostSubtitles = 32;
inline constexpr int lowestVideoRate = 1000, highestVideoRate = 8000;

/// A part of a film that the remote control leads to.
struct DiscChapter {
    double begin = 0;   ///< seconds of the film
    std::string title;  ///< empty: its number
};

/// One title of a disc: a film, or a slideshow that is made of pictures.
struct DiscFilm {
    std::string item;                    ///< its name in the project, such as films[2]
    std::string title;                   ///< what its button says
    std::string path;                    ///< of the film; empty: a slideshow
    std::vector<std::string> subtitles;  ///< files beside those of the film itself
    std::vector<std::string> pictures;   ///< of the slideshow: folders, and pictures by their names
    std::string music;                   ///< of the slideshow; may be empty
    double pictureSeconds = 5;
    std::vector<DiscChapter> chapters;  ///< in order, the first at 0; none: the film is one part
    double thumbnail = 0;               ///< the second at which its moving picture in the menu begins
};

/// How buttons are marked when they are chosen or pressed.
enum class ButtonMark { Frame, Underline, Marker };

/// What is written on the buttons of menus, and on a page for browsers around them.
struct DiscWords {
    std::string playAll = "Play all", chapters = "Chapters", instructions = "How to watch", next = "Next",
                previous = "Previous", back = "Back";
    std::string menu = "Menu", play = "Play", resume = "Continue", chapter = "Chapter", sound = "Sound",
                subtitles = "Subtitles", noSubtitles = "No subtitles", fullScreen = "Full screen";
};

/// Their names in a project.
struct DiscWord {
    const char* name;
    std::string DiscWords::*text;
};
inline constexpr DiscWord discWords[] = {
    {"playAll", &DiscWords::playAll},
    {"chapters", &DiscWords::chapters},
    {"instructions", &DiscWords::instructions},
    {"next", &DiscWords::next},
    {"previous", &DiscWords::previous},
    {"back", &DiscWords::back},
    {"menu", &DiscWords::menu},
    {"play", &DiscWords::play},
    {"resume", &DiscWords::resume},
    {"chapter", &DiscWords::chapter},
    {"sound", &DiscWords::sound},
    {"subtitles", &DiscWords::subtitles},
    {"noSubtitles", &DiscWords::noSubtitles},
    {"fullScreen", &DiscWords::fullScreen},
};

struct DiscMenus {
    std::string mainTemplate = "menu_common", chapterTemplate = "submenu_common",
                instructionTemplate = "instructionmenu_common";
    Mood mood = Mood::Own;                  ///< of the templates
    std::string background;                 ///< a picture; empty: the template's own
    std::string music;                      ///< empty: silence
    double seconds = 20;                    ///< the length of a loop
    double fade = 2;                        ///< seconds in which the music fades at the loop's end
    bool playAll = true;                    ///< a button for all films in turn, where there are several
    bool chapters = true;                   ///< chapter menus for films with more than one chapter
    std::vector<std::string> instructions;  ///< the lines of an instruction page; none: no page
    DiscWords words;
    std::string language = "en";  ///< of the words, as browsers name it
    ButtonMark mark = ButtonMark::Frame;
    unsigned chosen = 0xFFD040, pressed = 0xFFFFFF;  ///< 0xRRGGBB
};

/// A disc's project, with file names as the command finds them.
struct DiscProject {
    std::string title;
    const FilmProfile* profile = nullptr;  ///< one with `dvd`
    long long capacity = 4'700'000'000;    ///< bytes, at most
    int videoRate = 0;                     ///< kbit/s; 0: as the disc's space allows, up to 8000
    std::vector<DiscFilm> films;
    DiscMenus menus;
};

}  // namespace Nifikral
