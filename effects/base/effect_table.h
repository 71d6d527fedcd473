#pragma once

#include <type_traits>

#include "avbase/IVideoProc.h"

namespace AVBased {

/// A row of the effect table: the name a host asks for, and how its object is made.
struct EffectEntry {
    const char* name;
    IVideoProc* (*create)(const char* name, IAVManager* manager);
};

/// How a row makes its object. A generator takes the manager; a frame effect knows its name, or is plain enough to be
/// given it.
template <class Effect>
IVideoProc* Create(const char* name, IAVManager* manager) {
    if constexpr (std::is_constructible_v<Effect, IAVManager*>)
        return new Effect(manager);
    else if constexpr (std::is_default_constructible_v<Effect>)
        return new Effect;
    else
        return new Effect(name);
}

}  // namespace AVBased
