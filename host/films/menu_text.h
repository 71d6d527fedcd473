#pragma once

#include <array>
#include <string>
#include <vector>

#include "host/films/film.h"
#include "host/films/project_reader.h"
#include "host/films/styled_text.h"
#include "host/films/template_style.h"

namespace Nifikral {

/// One text of a menu.
struct MenuText {
    std::string item;  ///< its name in the project
    StyledText styled;
    std::string styleWords;    ///< those of "fontstyle"; the alignment and the spacing stand in `styled`
    std::array<int, 4> box{};  ///< x, y, width, height
    /// The host lays it out in its box, or about x, as its alignment says; else the template does, from the left.
    bool isAligned = false;
    bool moves = false;
    std::vector<int> end = {0, 0}, formula = {0, 0};
    int speed = 0;
    int ofSource = -1;                   ///< the source that it names, and is shown with; -1: none
    int firstFrame = 0, lastFrame = -1;  ///< between which it is shown, from 0; last -1: no limit
};

/// The text that is number `index` of a menu, from 0, with nothing in it yet: as the template's style has it.
MenuText StyledMenuText(const TemplateStyle& style, const Film& film, std::size_t index);
/// The same of one kind of text.
MenuText StyledMenuText(const TypeStyle& type, const Film& film);

/// One entry of "textInfos". What it leaves out is as in `usual`.
MenuText ReadMenuText(const ProjectItem& item, const MenuText& usual);
/// The entry that reads as this text: with all of its style and its box.
Json MenuTextJson(const MenuText& text);

/// The text with the size, the line breaks and the place that an aligned one takes: its letters in its box, however its
/// decoration reaches beyond that. Others stay as they are. Throws what measuring it throws.
MenuText LaidOut(const MenuText& text);

/// The item of the module's list for a text that is laid out.
std::string TextInListOf(const MenuText& text);

/// Files a fault for a text with one of the characters that separate what the module's lists hold.
void RefuseSeparators(const ProjectItem& item, const std::string& text, const char* separators);

/// Numbers with ";" between them.
std::string NumberList(const std::vector<int>& numbers);

}  // namespace Nifikral
