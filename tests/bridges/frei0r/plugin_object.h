#pragma once

#include <dlfcn.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "bridges/frei0r/interface.h"

namespace Nifikral::Frei0r {

/// A built plug-in object as a host has it: opened by its file, its functions looked up by their names.
class PluginObject {
 public:
    explicit PluginObject(const std::string& effect)
        : m_handle(dlopen((NIFIKRAL_FREI0R_FOLDER "/nifikral_" + effect + ".so").c_str(), RTLD_NOW | RTLD_LOCAL)) {
        if (!m_handle) throw std::runtime_error(dlerror());
        Function<int()>("f0r_init")();
    }
    PluginObject(const PluginObject&) = delete;
    PluginObject& operator=(const PluginObject&) = delete;
    ~PluginObject() {
        Function<void()>("f0r_deinit")();
        dlclose(m_handle);
    }

    PluginInfo Info() const {
        PluginInfo info{};
        Function<void(PluginInfo*)>("f0r_get_plugin_info")(&info);
        return info;
    }
    std::vector<ParameterInfo> Parameters() const {
        std::vector<ParameterInfo> parameters(std::size_t(Info().parameterCount));
        for (std::size_t i = 0; i < parameters.size(); ++i)
            Function<void(ParameterInfo*, int)>("f0r_get_param_info")(&parameters[i], int(i));
        return parameters;
    }
    /// The parameter's index; throws for an unknown one.
    int Find(const std::string& parameter) const {
        const std::vector<ParameterInfo> parameters = Parameters();
        for (std::size_t i = 0; i < parameters.size(); ++i)
            if (parameter == parameters[i].name) return int(i);
        throw std::runtime_error("no parameter " + parameter);
    }

    template <class Signature>
    Signature* Function(const char* name) const {
        void* const address = dlsym(m_handle, name);
        if (!address) throw std::runtime_error(dlerror());
        return reinterpret_cast<Signature*>(address);
    }

 private:
    void* m_handle;
};

/// An instance of a plug-in, of a picture's size.
class PluginInstance {
 public:
    PluginInstance(const PluginObject& object, unsigned width, unsigned height)
        : m_object(&object),
          m_width(width),
          m_height(height),
          m_instance(object.Function<void*(unsigned, unsigned)>("f0r_construct")(width, height)) {
        if (!m_instance) throw std::runtime_error("no instance");
    }
    PluginInstance(const PluginInstance&) = delete;
    PluginInstance& operator=(const PluginInstance&) = delete;
    ~PluginInstance() { m_object->Function<void(void*)>("f0r_destruct")(m_instance); }

    template <class Value>
    void Set(const std::string& parameter, Value value) {
        m_object->Function<void(void*, void*, int)>("f0r_set_param_value")(m_instance, &value,
                                                                           m_object->Find(parameter));
    }
    template <class Value = double>
    Value Get(const std::string& parameter) {
        Value value{};
        m_object->Function<void(void*, void*, int)>("f0r_get_param_value")(m_instance, &value,
                                                                           m_object->Find(parameter));
        return value;
    }
    void Update(double time, const void* input, void* output) {
        m_object->Function<void(void*, double, const void*, void*)>("f0r_update")(m_instance, time, input, output);
    }
    /// A copy of the picture with the effect on it.
    std::vector<unsigned char> Picture(double time, const std::vector<unsigned char>& input) {
        std::vector<unsigned char> output(std::size_t(m_width) * m_height * 4);
        Update(time, input.empty() ? nullptr : input.data(), output.data());
        return output;
    }

 private:
    const PluginObject* m_object;
    unsigned m_width, m_height;
    void* m_instance;
};

}  // namespace Nifikral::Frei0r
