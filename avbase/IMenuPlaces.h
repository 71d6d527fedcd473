#pragma once

namespace AVBased {

/// Where a picture or a text of a menu rests, in pixels of the frame.
struct MenuPlace {
    /// The part of the frame that lies within its bounds at every moment; a picture's mount and shadow do not count.
    /// Width and height are 0 where it never rests.
    int left, top, width, height;
    /// How many pixels its bounds reach beyond that at most, at any side: 0 where it stands still, more where it sways
    /// or grows.
    int drift;
};

/// Where the pictures and texts of a menu rest, for buttons: under the interface name "IMenuPlaces" of every menu.
/// Watching draws nothing, and the frames that follow are those that had followed without it.
class IMenuPlaces {
 public:
    static constexpr char name[] = "IMenuPlaces";

    /// What the other calls are about.
    static constexpr int pictures = 0, texts = 1;

    /// Watches the frames from `first` to before `end`, where 0 is the menu's first one: up to 256 of them, evenly
    /// spread. What is there at all of them, at least half visible and never covered by more than that, and whose
    /// bounds of all moments have at least half of their width and height in common, rests there. False (10021008)
    /// before the menu has processed a frame, whose size and format it takes, and for no frames.
    virtual bool Watch(unsigned first, unsigned end) = 0;
    /// The place of a picture or a text, counted from 0 in the order of the menu's list. False (10021000) for one that
    /// the list has not, and before anything was watched.
    virtual bool GetPlace(int kind, unsigned index, MenuPlace* place) = 0;
    /// How much of a part of the frame all pictures, or all texts, took while they were watched: 0 to 1, more where
    /// they overlap. 0 before anything was watched.
    virtual double GetCover(int kind, int left, int top, int width, int height) = 0;

 protected:
    ~IMenuPlaces() = default;
};

}  // namespace AVBased
