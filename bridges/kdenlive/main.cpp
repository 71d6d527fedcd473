// Writes the descriptions as the package installs them. Usage: kdenlive_effect_descriptions FOLDER
#include <iostream>

#include "bridges/kdenlive/effect_descriptions.h"
#include "host/base/errors.h"

int main(int count, char** arguments) {
    using namespace Nifikral;
    if (count != 2) {
        std::cerr << "usage: " << arguments[0] << " FOLDER\n";
        return int(ExitCode::Usage);
    }
    try {
        Kdenlive::WriteEffectDescriptions(arguments[1], EffectModule(""));
    } catch (const HostError& error) {
        std::cerr << arguments[0] << ": " << error.what() << "\n";
        return int(error.Code());
    }
}
