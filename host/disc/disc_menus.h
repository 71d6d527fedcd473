#pragma once

#include <string>
#include <vector>

#include "host/catalogue/effect_module.h"
#include "host/disc/disc_page.h"
#include "host/disc/disc_project.h"
#include "host/disc/dvd_script.h"
#include "host/films/film.h"

namespace Nifikral {

/// The pages of a disc's menus with their buttons, for players of DVDs and for browsers alike: the main menu, on as
/// many pages as it takes; where several films have chapters, the choice among them; a page of instructions, where
/// there are any; and each film's chapters. Buttons lie on the pictures, with captions below, where a template's
/// pictures rest, else in a list of texts. `only` is the number of the one that is laid out, from 0, while the others
/// stay empty; below 0, all are. Throws what reading the films and pictures throws.
std::vector<DiscPage> PagesOfDisc(const DiscProject& project, const EffectModule& module, int only = -1);

/// Makes the film of a page as the options say, with the project's music.
void RenderPage(const DiscProject& project, const DiscPage& page, const EffectModule& module, FilmOptions options);

/// The same for a DVD, with the project's music: `output` is an .mpg, which is replaced where it is there.
/// `threads`: 0 for all cores.
void MakePage(const DiscProject& project, const DiscPage& page, const EffectModule& module, const std::string& output,
              int threads);

/// The film that MakePage has made there.
MadePage PlaceOfPage(const DiscPage& page, const std::string& output);

}  // namespace Nifikral
