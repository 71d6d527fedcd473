#pragma once

#include <algorithm>
#include <deque>

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

/// What pictures of one size are set in: they keep the coverage of `shape`, in the middle of `frame`, which is larger
/// by an even number and may hold a shadow.
struct Mount {
    Layer frame, shape;
};

/// The mounts that a template has made, one for every size of picture: every frame of a video needs one.
class Mounts {
 public:
    /// Sets a picture in the mount that make(size) makes.
    template <class Make>
    void Set(Layer& picture, LayerKind kind, Make make) {
        const FrameSize size{picture.Width(), picture.Height()};
        const Key key{kind.packed, kind.rows, size};
        auto known = std::find_if(m_made.begin(), m_made.end(), [&](const Made& made) { return made.key == key; });
        if (known == m_made.end()) {
            if (m_made.size() == mostKept) m_made.pop_front();
            m_made.push_back({key, make(size)});
            known = m_made.end() - 1;
        }
        SetIn(known->mount, picture);
    }

 private:
    static constexpr std::size_t mostKept = 16;
    struct Key {
        bool packed;
        unsigned rows;
        FrameSize size;
        bool operator==(const Key&) const = default;
    };
    struct Made {
        Key key;
        Mount mount;
    };
    static void SetIn(const Mount& mount, Layer& picture);

    std::deque<Made> m_made;
};

}  // namespace AVBased
