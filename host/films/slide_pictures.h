#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/media/picture_metadata.h"

namespace Nifikral {

class PictureStore;

/// What a slideshow shows in one piece: a picture, an animation or a film.
struct Slide {
    std::string path;
    std::optional<double> seconds;       ///< how long it shows by itself; else as long as all pictures, or the film
    std::optional<std::string> caption;  ///< its own, instead of the one of all

    // Known after the trial.
    bool plays = false;      ///< it has more than one frame
    double filmSeconds = 0;  ///< of a film; 0 for pictures, and for animations, which play over and over
    bool hasSound = false;
    PhotographFacts facts;
};

/// Whether a file is a picture, or a film, by its name.
bool IsPictureName(const std::filesystem::path& path);
bool IsFilmName(const std::filesystem::path& path);

/// The slides that are meant: files as they are named; from a folder those with the extension of a picture or a film,
/// in the order in which people count; and for @FILE those that the list in this file names (ReadSlideList). What else
/// a folder holds is printed under -v. Throws input errors, and usage errors for lists.
std::vector<Slide> FindSlides(const std::vector<std::string>& inputs);

struct SlideTrial {
    bool strict = false;            ///< none may be missing
    bool headsOnly = false;         ///< of JPEG files only the head is looked at, which takes no time
    PictureStore* store = nullptr;  ///< where the pictures that were opened are kept
};

/// Those that can be read, after a trial of all. The others are printed as warnings; when none is left, or any is
/// missing that may not be, an input error is thrown.
std::vector<Slide> ReadableSlides(std::vector<Slide> slides, const SlideTrial& trial);

/// What OrderSlides takes.
std::vector<std::string> SlideOrders();
/// "given"; by "name"; by "date", those without one behind the others; or "random", by the seed. Slides that are equal
/// in it keep their order.
void OrderSlides(std::vector<Slide>& slides, const std::string& order, std::uint32_t seed);

}  // namespace Nifikral
