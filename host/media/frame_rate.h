#pragma once

#include <optional>
#include <string>

extern "C" {
#include <libavutil/rational.h>
}

namespace Nifikral {

/// What a rate has to be, for messages.
inline constexpr char frameRateForm[] = "frames a second from 1 to 240, such as 25, 29.97 or 30000/1001";

/// Reads such a rate; a decimal that is meant to be one of television's is taken for it exactly. Nothing for anything
/// else.
std::optional<AVRational> ParseFrameRate(const std::string& text);

/// The same for what --rate says. Throws a usage error for anything else.
AVRational RequireFrameRate(const std::string& text);

}  // namespace Nifikral
