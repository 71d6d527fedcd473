#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/disc/dvd_script.h"

namespace Nifikral {

/// Makes a video DVD of finished titles, one for each film of the project, and of the films of the menus' pages, one
/// for each page: an image where `output` ends in .iso, else a folder. It stands under its name only when it is
/// complete and was read back. `work` is a folder for files of no further use. `show` receives how much is done, from 0
/// to 1. Throws errors that name the cause and the remedy.
void AuthorDisc(
    const DiscProject& project, const std::vector<DiscPage>& pages, const std::vector<MadeTitle>& titles,
    const std::vector<MadePage>& films, const std::string& output, const std::string& work, bool overwrite,
    const std::function<void(double)>& show = [](double) {});

/// How many buttons a page of such a disc may have.
int MostButtons(const FilmProfile& profile);
/// Whether its pictures are for wide screens, so that some players show them smaller.
bool IsWide(const FilmProfile& profile);

/// Whether the output is one file that holds the disc.
bool IsImage(const std::string& output);

/// Files faults for menus and buttons that a DVD cannot hold.
void CheckPages(const DiscProject& project, const std::vector<DiscPage>& pages, Faults& faults);

/// Throws an output error when a disc could not be made there.
void CheckDvdOutput(const std::string& output, bool overwrite);

}  // namespace Nifikral
