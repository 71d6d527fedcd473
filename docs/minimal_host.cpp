// The least that a host does: it loads the module, makes an effect, puts it on a frame and tells errors.
#include <dlfcn.h>

#include <cstdio>

#include "TarvoBased/ITarvoException.h"
#include "avbase/IVideoProc.h"
#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "avbase/avbase_srcutils/pixel_formats.h"

using namespace AVBased;

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: minimal_host MODULE EFFECT\n");
        return 2;
    }
    void* const module = dlopen(argv[1], RTLD_NOW);
    const auto create =
        module ? reinterpret_cast<CreateVideoProcFunction>(dlsym(module, createVideoProcSymbol)) : nullptr;
    if (!create) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    IVideoProc* const effect = create(nullptr, argv[2]);
    if (!effect) {
        std::fprintf(stderr, "%s: %s\n", argv[2], TarvoBased::GetTarvoException()->GetExceptionMsg());
        return 1;
    }

    // Any class that implements IRawVideoFrame will do; this one brings its own memory.
    IRawVideoFrame* const frame = new CRawVideoFrame(false, formatRgba32, 1, 1, true);
    unsigned char* const pixel = frame->GetBuffer(0, nullptr, nullptr, nullptr);
    pixel[0] = 200, pixel[1] = 100, pixel[2] = 0, pixel[3] = 40;
    ImagePostion record;
    effect->ProcFrameInPlace(&record, noPosition, frame);
    std::printf("blue %d green %d red %d alpha %d\n", pixel[0], pixel[1], pixel[2], pixel[3]);

    frame->Free();
    effect->Free();
    return 0;
}
