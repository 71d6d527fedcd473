// A complete host: it loads the module, puts one effect on a picture of its own, prints the picture, and reports
// errors.
//
//     minimal_host MODULE EFFECT [PROPERTY VALUE]... >picture.ppm
#include <dlfcn.h>

#include <cstdio>

#include "TarvoBased/ITarvoException.h"
#include "avbase/IVideoProc.h"
#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "avbase/avbase_srcutils/pixel_formats.h"

using namespace AVBased;

namespace {

constexpr unsigned width = 64, height = 36;

// When the module refuses something or fails, it returns null or false and leaves the reason in this thread's object.
int Fail(const char* what) {
    TarvoBased::ITarvoException* const error = TarvoBased::GetTarvoException();
    std::fprintf(stderr, "%s: %s (code %d)\n", what, error->GetExceptionMsg(), error->GetExceptionCode());
    return 1;
}

// A pixel is four bytes: blue, green, red and alpha. Rows start a pitch apart, which may be more than their pixels.
template <class Visit>
void ForEachPixel(IRawVideoFrame& frame, Visit visit) {
    unsigned pitch = 0;
    unsigned char* const first = frame.GetBuffer(0, nullptr, &pitch, nullptr);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) visit(first + std::size_t(y) * pitch + std::size_t(x) * 4, x, y);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3 || argc % 2 == 0) {
        std::fprintf(stderr, "usage: minimal_host MODULE EFFECT [PROPERTY VALUE]...\n");
        return 2;
    }
    void* const module = dlopen(argv[1], RTLD_NOW);
    void* const symbol = module ? dlsym(module, createVideoProcSymbol) : nullptr;
    if (!symbol) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    const auto create = reinterpret_cast<CreateVideoProcFunction>(symbol);

    IVideoProc* const effect = create(nullptr, argv[2]);
    if (!effect) return Fail(argv[2]);
    for (int i = 3; i < argc; i += 2)
        if (!effect->SetProperty(argv[i], argv[i + 1])) return Fail(argv[i]);

    // Any class that implements IRawVideoFrame will do, also one over memory that the host has already.
    IRawVideoFrame* const frame = new CRawVideoFrame(false, formatRgba32, width, height, true);
    ForEachPixel(*frame, [](unsigned char* pixel, unsigned x, unsigned y) {
        pixel[0] = 64, pixel[1] = static_cast<unsigned char>(7 * y), pixel[2] = static_cast<unsigned char>(4 * x);
        pixel[3] = 255;
    });
    ImagePostion place;
    TarvoBased::GetTarvoException()->Clear();
    effect->ProcFrameInPlace(&place, noPosition, frame);
    if (TarvoBased::GetTarvoException()->GetExceptionCode() != 0) return Fail(argv[2]);
    std::printf("P3\n%u %u\n255\n", width, height);
    ForEachPixel(*frame, [](const unsigned char* pixel, unsigned, unsigned) {
        std::printf("%d %d %d\n", pixel[2], pixel[1], pixel[0]);
    });

    frame->Free();
    effect->Free();
    return 0;
}
