#include "dvd_effects/generator_table.h"
#include "effects/ImageEffects.h"

/// The module's one exported function; see AVBased::CreateVideoProcFunction.
extern "C" [[gnu::visibility("default")]] AVBased::IVideoProc* CreateVideoProc(AVBased::IAVManager* manager,
                                                                               const char* name) {
    return AVBased::CreateEffect(manager, name, AVBased::GeneratorTable());
}
