#pragma once

#include "host/run/effect_request.h"

namespace Nifikral {

/// Throws a usage error when the effect cannot bear the setting, or refuses it. Sets it; not for relative values.
void RequireAcceptable(AVBased::IVideoProc& effect, const ParameterSetting& setting);

/// Warns of a number that is hardly meant on pictures of that size. Not for relative values.
void WarnWhereOdd(const std::string& effect, const ParameterSetting& setting, const Scale& scale);

}  // namespace Nifikral
