// Prints docs/frei0r-parameters.md: the built plug-ins' own descriptions.
#include <iostream>

#include "host/catalogue/catalogue.h"
#include "tests/bridges/frei0r/plugin_object.h"

namespace {

using namespace Nifikral;

const char* TypeName(int type) {
    return type == Frei0r::switchParameter ? "switch" : type == Frei0r::colourParameter ? "colour" : "number";
}

void PrintFilter(const EffectInfo& effect) {
    constexpr unsigned width = 1280, height = 720;
    const Frei0r::PluginObject object(effect.name);
    Frei0r::PluginInstance instance(object, width, height);
    std::cout << "\n## nifikral_" << effect.name << "\n\n" << effect.summary << "\n";
    int place = 0;
    for (const Frei0r::ParameterInfo& parameter : object.Parameters()) {
        if (place++ == 0) std::cout << "\n| | Name | Type | Default | |\n|---|---|---|---|---|\n";
        std::cout << "| " << place << " | `" << parameter.name << "` | " << TypeName(parameter.type) << " | ";
        if (parameter.type == Frei0r::colourParameter) {
            const auto colour = instance.Get<Frei0r::Colour>(parameter.name);
            std::cout << colour.red << "/" << colour.green << "/" << colour.blue;
        } else {
            std::cout << instance.Get(parameter.name);
        }
        std::cout << " | " << parameter.explanation << " |\n";
    }
}

}  // namespace

int main() {
    std::cout << "# Parameters of the frei0r plug-ins\n\n"
                 "In the order in which ffmpeg takes them; melt and GStreamer take them by their names. Hosts keep "
                 "numbers between 0\nand 1; the last column says what they stand for. Defaults are those for a picture "
                 "of 1280 x 720.\n";
    for (const EffectInfo& effect : Catalogue())
        if (!(effect.traits & generator)) PrintFilter(effect);
    std::cout << "\n## Menus\n\n"
                 "Sources, each with one text parameter, `project`: the project file, as `nifikral menu` takes it.\n\n"
                 "| Source | |\n|---|---|\n";
    for (const EffectInfo& effect : Catalogue())
        if (effect.traits & menu) std::cout << "| `nifikral_" << effect.name << "` | " << effect.summary << " |\n";
}
