#pragma once

namespace AVBased {

/// Goes from frame to frame of a menu: under the interface name "IMenuPlayback" of every menu.
class IMenuPlayback {
 public:
    static constexpr char name[] = "IMenuPlayback";

    /// The frame that is processed next is the one of this number, where 0 is the menu's first, as if it had processed
    /// all those before it; none of them is drawn, but videos are read that far. False (10021008) for an earlier frame
    /// of a menu with videos, which only run forward.
    virtual bool GoTo(unsigned frame) = 0;

 protected:
    ~IMenuPlayback() = default;
};

}  // namespace AVBased
