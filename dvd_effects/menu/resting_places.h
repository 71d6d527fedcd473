#pragma once

#include <deque>
#include <vector>

#include "avbase/IMenuPlaces.h"
#include "dvd_effects/canvas/laying.h"

namespace AVBased {

/// Finds out, from what is laid on a canvas moment by moment, where the pictures and texts among it rest.
class RestingPlaces {
 public:
    /// A picture or a text. Everything that it points to is borrowed.
    struct Subject {
        int kind;         ///< IMenuPlaces::pictures or texts
        unsigned number;  ///< in its list
        const Layer* layer;
        const std::deque<Layer>* smaller;  ///< copies of the layer that stand in for it; null: none
        FrameSize own;                     ///< of what matters of the layer, in its middle: a picture without its mount
    };

    /// Starts anew for frames of a size.
    explicit RestingPlaces(FrameSize frame = {}) : m_frame(frame) {}

    /// What is laid between these two belongs to one moment, which has these subjects.
    void Begin(std::vector<Subject> subjects);
    void See(const Laying& laying);
    void End();

    /// As IMenuPlaces has them.
    MenuPlace PlaceOf(int kind, unsigned number) const;
    double CoverOf(int kind, int left, int top, int width, int height) const;

 private:
    struct Bounds {
        double left = 0, top = 0, right = 0, bottom = 0;

        double Width() const { return right - left; }
        double Height() const { return bottom - top; }
        Bounds Within(const Bounds& other) const;
        Bounds JoinedTo(const Bounds& other) const;
        double CommonArea(const Bounds& other) const;
    };
    // A subject at one of its places at a moment, seen at a few of its points.
    struct Showing {
        static constexpr unsigned side = 8, points = side * side;
        int kind;
        unsigned number;
        Bounds bounds;
        Spot at[points];
        double own[points], shown[points];  // how much it covers there, and what is seen of that

        double Visible() const;
    };
    // A place that a subject has had at all moments so far.
    struct Stay {
        int kind;
        unsigned number;
        Bounds common, reach;
    };
    struct Taken {
        int kind;
        Bounds bounds;
        double share;
    };

    void Add(const Subject& subject, const Laying& laying);
    void Hide(const Laying& laying);
    void KeepStays();

    FrameSize m_frame;
    unsigned m_moments = 0;
    std::vector<Subject> m_subjects;
    std::vector<Showing> m_showings;  // of the moment
    std::vector<Stay> m_stays;
    std::vector<Taken> m_taken;  // of all moments
};

}  // namespace AVBased
