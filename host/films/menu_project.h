#pragma once

#include <string>
#include <utility>
#include <vector>

#include "avbase/IAVManager.h"
#include "host/films/film.h"
#include "host/films/menu_text.h"
#include "host/films/project_reader.h"
#include "host/films/template_style.h"

namespace Nifikral {

/// One picture or video on a menu. Which parts a project leaves out, its list as a whole leaves out.
struct MenuSource {
    std::string item, path, maskItem, mask;
    std::string caption;  ///< its name, which the template shows with it; empty: none
    bool isImage = true;
    double begin = 0;  ///< the second at which a video starts
    std::vector<int> size, start = {0, 0}, end, formula = {0, 0};
    int speed = 0, startTrans = 255, endTrans = 255, fadeSpeed = 0;
};

/// A menu's project, its files' names as the command finds them.
struct MenuProject {
    Film film;
    std::string background, backgroundMask;
    bool backgroundMoves = false;  ///< it is a video
    std::vector<MenuText> texts;
    std::vector<MenuSource> sources;
    std::vector<std::string> buttons;   ///< texts in a list that stands still
    std::vector<std::string> captions;  ///< of the pictures; none: no captions
    MenuText names;                     ///< how the captions of sources look
    /// How buttons, and captions that stand still over the menu, look.
    StyledText labels = {{}, {}, {.bold = true}, 0, 255, 255, 255};
    bool placesSources = false;  ///< else the template does
    int perPage = 0;             ///< pictures and videos; 0: all on one
    Mood mood = Mood::Own;
    bool paintsNothing =
        false;  ///< the template; without a background, a plain one in the mood's colours is behind all
};

/// Lets a picture come to a place: it drifts there from its left and fades in, one after another within four seconds.
void ComeIn(MenuSource& source, int left, int top, int index);

/// Reads a project and opens every file and every font that it names, for a trial. What is wrong is filed in `faults`.
/// `profile`, unless null, stands in for the project's own.
MenuProject ReadMenuProject(const std::string& path, const std::string& templateName, const FilmProfile* profile,
                            Faults& faults);

/// The same of a project that was read already. `files` opens what it names.
MenuProject ReadMenuProject(const Json& json, const std::string& path, const std::string& templateName,
                            const FilmProfile* profile, AVBased::IAVManager& files, Faults& faults);

/// Files a loop that begins where the film has ended.
void CheckLoop(const Film& film, Faults& faults);

/// One of the names of moods; any other is filed.
Mood ReadMood(const ProjectItem& item);

/// How buttons and captions of a menu look: as the template's captions, in the colour of the first text.
StyledText LabelStyle(const TemplateStyle& style, const std::vector<MenuText>& texts);

/// The keys of project files and what they take, one a line.
std::string DescribeProjectKeys();

/// The module's properties for a project, in the order in which they have to be set.
std::vector<std::pair<std::string, std::string>> MenuProperties(const MenuProject& project);

}  // namespace Nifikral
