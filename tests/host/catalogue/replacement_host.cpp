// A host that brings its own definitions of the imported functions: the module must call these.

#include <dlfcn.h>

#include <cstdio>
#include <initializer_list>

#include "TarvoBased/ITarvoException.h"
#include "avbase/IVideoProc.h"

namespace {

class OwnException final : public TarvoBased::ITarvoException {
 public:
    int GetExceptionCode() const override { return m_code; }
    const char* GetExceptionMsg() const override { return ""; }
    const char* GetExceptionSource(int*) const override { return ""; }
    void SetException(int code, const char*, int, const char*) override { m_code = code; }
    void Clear() override { m_code = 0; }
    void Copy(TarvoBased::ITarvoException* other) override { m_code = other->GetExceptionCode(); }

 private:
    int m_code = 0;
};

OwnException ownException;
int featureCalls = 0;

}  // namespace

extern "C" [[gnu::visibility("default")]] TarvoBased::ITarvoException* GetTarvoException() { return &ownException; }
extern "C" [[gnu::visibility("default")]] unsigned AVBasedGetCPUFeatures() {
    ++featureCalls;
    return 0;
}

int main(int, char** arguments) {
    void* const module = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    if (!module) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    const auto create =
        reinterpret_cast<AVBased::CreateVideoProcFunction>(dlsym(module, AVBased::createVideoProcSymbol));
    if (create(nullptr, "nosuch") || ownException.GetExceptionCode() != 10021005) {
        std::fprintf(stderr, "the module filed its error elsewhere\n");
        return 1;
    }
    // One of these chooses its routine by the processor's features.
    for (const char* const name : {"mosaic", "magnifier", "mirage", "emboss", "radiate"})
        if (AVBased::IVideoProc* const effect = create(nullptr, name)) effect->Free();
    if (featureCalls == 0) {
        std::fprintf(stderr, "the module asked another library for the processor's features\n");
        return 1;
    }
    return 0;
}
