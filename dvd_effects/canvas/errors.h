#pragma once

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/boundary.h"
#include "TarvoBased/error_codes.h"

namespace AVBased {

/// The name beside every error that the shared operations of the menus file.
inline constexpr char dvdEffectsUtilsName[] = "dvd_effects_utils";

/// Raises 10021008 with a message unless the condition holds.
inline void Require(bool condition, const char* message, int line, const char* source = dvdEffectsUtilsName) {
    if (!condition) throw TarvoBased::CBaseException(TarvoBased::errorGeneral, message, line, source);
}

/// For a call into the host that failed: raises what the host filed, or else the message.
[[noreturn]] inline void RaiseHostFailure(const char* message, int line, const char* source = dvdEffectsUtilsName) {
    TarvoBased::RaisePendingException();
    throw TarvoBased::CBaseException(TarvoBased::errorGeneral, message, line, source);
}

}  // namespace AVBased
