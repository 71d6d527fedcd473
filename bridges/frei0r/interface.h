#pragma once

/// The frei0r 1.2 interface reduced to what filters and sources need. Strings are UTF-8 and live as long as the
/// plug-in.
namespace Nifikral::Frei0r {

enum PluginType : int { filterPlugin = 0, sourcePlugin = 1 };
/// The order of a pixel's bytes in memory.
enum ColourModel : int { modelBgra = 0, modelRgba = 1 };
enum ParameterType : int { switchParameter = 0, numberParameter = 1, colourParameter = 2, textParameter = 4 };
inline constexpr int interfaceMajor = 1;

struct PluginInfo {
    const char *name, *author;
    int type, colourModel, interfaceVersion, majorVersion, minorVersion, parameterCount;
    const char* explanation;
};

struct ParameterInfo {
    const char* name;
    int type;
    const char* explanation;
};

/// The value of a colour; a switch and a number are a double each, a text is a const char*.
struct Colour {
    float red, green, blue;
};

}  // namespace Nifikral::Frei0r
