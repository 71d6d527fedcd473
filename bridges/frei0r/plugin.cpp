// One plug-in: the functions that a frei0r host looks up, each handed on with the name of this object's effect.
// NIFIKRAL_EFFECT is that name, NIFIKRAL_KIND one of the structs of plugin.h. An object for each effect, because hosts
// distinguish plug-ins by their files, and the loader makes one of several links to a file.
#include "bridges/frei0r/plugin.h"

using namespace Nifikral::Frei0r;

#define NIFIKRAL_EXPORT extern "C" [[gnu::visibility("default")]]

NIFIKRAL_EXPORT int f0r_init() { return 1; }

NIFIKRAL_EXPORT void f0r_deinit() {}

NIFIKRAL_EXPORT void f0r_get_plugin_info(PluginInfo* info) { NIFIKRAL_KIND::Describe(NIFIKRAL_EFFECT, *info); }

NIFIKRAL_EXPORT void f0r_get_param_info(ParameterInfo* info, int parameter) {
    NIFIKRAL_KIND::DescribeParameter(NIFIKRAL_EFFECT, parameter, *info);
}

NIFIKRAL_EXPORT void* f0r_construct(unsigned width, unsigned height) {
    return NIFIKRAL_KIND::Construct(NIFIKRAL_EFFECT, width, height);
}

NIFIKRAL_EXPORT void f0r_destruct(void* instance) { delete static_cast<Instance*>(instance); }

NIFIKRAL_EXPORT void f0r_set_param_value(void* instance, void* value, int parameter) {
    static_cast<Instance*>(instance)->Set(value, parameter);
}

NIFIKRAL_EXPORT void f0r_get_param_value(void* instance, void* value, int parameter) {
    static_cast<Instance*>(instance)->Get(value, parameter);
}

NIFIKRAL_EXPORT void f0r_update(void* instance, double time, const void* input, void* output) {
    static_cast<Instance*>(instance)->Update(time, input, output);
}
