#pragma once

#include <string>
#include <vector>

#include "host/catalogue/effect_module.h"
#include "host/films/menu_project.h"

namespace AVBased {
class IMenuPlaces;
}

namespace Nifikral {

/// An upright part of a film's frames, in their square pixels.
struct FilmBox {
    int left = 0, top = 0, width = 0, height = 0;

    bool IsEmpty() const { return width <= 0 || height <= 0; }
    bool Overlaps(const FilmBox& other) const {
        return left < other.left + other.width && other.left < left + width && top < other.top + other.height &&
               other.top < top + height;
    }
    bool IsWithin(const FilmBox& other) const {
        return left >= other.left && top >= other.top && left + width <= other.left + other.width &&
               top + height <= other.top + other.height;
    }
    FilmBox Grown(int by) const { return {left - by, top - by, width + 2 * by, height + 2 * by}; }
};

/// The same part of the frames that are stored: those of a profile have pixels of another shape.
FilmBox StoredBox(const Film& film, const FilmBox& box);

/// What every screen shows of frames of that size: all but a twentieth of their sides at each edge. Words stay within,
/// and so do buttons with their marks, or are warned of.
FilmBox SafeArea(int width, int height);
/// How far the mark of a button reaches beyond it.
inline constexpr int markRoom = 8;

/// What a button may lie on.
enum class PlaceKind { Picture, Text, Button };

struct RestingPlace {
    PlaceKind kind;
    std::size_t index;  ///< among the page's sources, texts or buttons
    /// The part of the frame that lies within its bounds as long as the menu repeats; empty where it never rests.
    FilmBox at;
    int drift = 0;  ///< how many pixels it reaches beyond that at most: 0 where it stands still

    bool Rests() const { return !at.IsEmpty(); }
    /// All that it may take while it rests, as far as the marks of buttons there stay within the safe area.
    FilmBox Reach(const Film& film) const;
};

/// A page of a menu, watched through the part that players repeat, with the frames that dissolve into its end. Throws
/// what rendering a frame of it throws. Threads: one at a time.
class MenuWatch {
 public:
    MenuWatch(const MenuProject& page, const std::string& templateName, const EffectModule& module);

    /// Of every picture and then every text, in the order of the page.
    std::vector<RestingPlace> Places() const;
    /// How much of a part of the frames pictures, or texts, take on the whole: 0 to 1, more where they overlap.
    double Cover(PlaceKind kind, const FilmBox& part) const;

 private:
    std::size_t m_pictures, m_texts;
    EffectPtr m_menu;
    AVBased::IMenuPlaces* m_places;  // null: a module that knows none
};

/// Of every picture, text and button of a page: where buttons that play something can be laid.
std::vector<RestingPlace> RestingPlacesOf(const MenuProject& page, const std::string& templateName,
                                          const EffectModule& module);

/// Whether all pictures of a template rest, so that buttons can lie on them. It is tried with four plain pictures at
/// the template's places, and at chosen ones if need be.
bool PicturesRest(const std::string& templateName, const EffectModule& module);

}  // namespace Nifikral
