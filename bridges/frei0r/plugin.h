#pragma once

#include "bridges/frei0r/interface.h"

/// What the small plug-in objects, one for each effect, call in the libraries that they share. Included by each of
/// them, so nothing of the standard library stands here.
#define NIFIKRAL_SHARED [[gnu::visibility("default")]]

namespace Nifikral::Frei0r {

/// An effect at work on pictures of one size. Threads: any; one waits for the other.
class Instance {
 public:
    virtual ~Instance() = default;
    /// Reads or writes the value of a parameter, of the type that its description gives.
    virtual void Set(const void* value, int parameter) = 0;
    virtual void Get(void* value, int parameter) = 0;
    /// Makes the picture of a moment. Pictures have no padding; `input` is null for a source and may be `output`.
    virtual void Update(double time, const void* input, void* output) = 0;
};

/// Effects over the host's pictures, by their names in the module.
struct NIFIKRAL_SHARED Filter {
    static void Describe(const char* effect, PluginInfo& info);
    static void DescribeParameter(const char* effect, int parameter, ParameterInfo& info);
    /// Null, with a line on standard error, when the module or the effect cannot be had.
    static Instance* Construct(const char* effect, unsigned width, unsigned height);
};

/// Menus, each made from a project file.
struct NIFIKRAL_SHARED Source {
    static void Describe(const char* effect, PluginInfo& info);
    static void DescribeParameter(const char* effect, int parameter, ParameterInfo& info);
    static Instance* Construct(const char* effect, unsigned width, unsigned height);
};

}  // namespace Nifikral::Frei0r
