#pragma once

#include <span>

#include "avbase/IVideoProc.h"

namespace AVBased {

/// A row of the effect table: the name a host asks for, and how its object is made.
struct EffectEntry {
    const char* name;
    IVideoProc* (*create)(const char* name, IAVManager* manager);
};

/// Every effect in the order in which names are compared.
std::span<const EffectEntry> EffectTable();

/// What the exported function does; see CreateVideoProcFunction.
IVideoProc* CreateEffect(IAVManager* manager, const char* name) noexcept;

}  // namespace AVBased
