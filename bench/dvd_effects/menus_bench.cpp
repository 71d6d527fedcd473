// Whole menus at 1920x1080, and at 3840x2160, frames a second on one thread. What a file would hold is copied from
// memory, so that no decoder is measured.

#include <benchmark/benchmark.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "bench/harness/frame_ring.h"
#include "dvd_effects/canvas/compositor.h"
#include "dvd_effects/generator_table.h"
#include "effects/ImageEffects.h"
#include "tests/support/fake_manager.h"

namespace Bench {
namespace {

using AVBased::Testing::FakeFile;
using AVBased::Testing::FakeManager;

constexpr unsigned pictures = 6, texts = 4;
// Frames of a template's loop, all of which are timed.
constexpr unsigned loop = 240;

// A file of one picture, or of the same frame over and over.
FakeFile Film(unsigned format, unsigned width, unsigned height, bool isStill) {
    const auto picture = std::make_shared<CRawVideoFrame>(false, format, width, height, true);
    unsigned rowBytes = 0, pitch = 0, rows = 0;
    for (unsigned p = 0; p < picture->GetBufferCount(); ++p) {
        unsigned char* const data = picture->GetBuffer(p, &rowBytes, &pitch, &rows);
        for (std::size_t i = 0; i < std::size_t(pitch) * rows; ++i)
            data[i] = static_cast<unsigned char>(format == formatPacked && i % 4 == 3 ? 255 : i * 7 + i / pitch);
    }
    FakeFile file;
    file.format = format;
    file.width = width;
    file.height = height;
    file.isStill = isStill;
    file.draw = [picture](CRawVideoFrame& frame, unsigned) { CopyFrame(frame, *picture); };
    return file;
}

std::string List(unsigned count, const std::string& item) {
    std::string list = item;
    for (unsigned i = 1; i < count; ++i) list += ";" + item;
    return list;
}

void Set(AVBased::IVideoProc& menu, const char* name, const std::string& value) {
    if (!menu.SetProperty(name, value.c_str())) throw std::runtime_error(std::string(name) + " refuses " + value);
}

// Six pictures or videos on their way across the frame, four texts, and a background. Templates lay out their pictures
// by themselves. With an upright film, one stands before its blurred copy where pictures fill the frame.
void Menu(benchmark::State& state, const char* name, unsigned format, bool videos, unsigned scale, bool hasUpright) {
    FakeManager manager;
    manager.textWidth = 400;
    manager.textHeight = 60;
    manager.files["picture"] =
        Film(videos ? formatPlanar : formatPacked, videos ? 640 : 480, videos ? 360 : 270, !videos);
    manager.files["upright"] = Film(formatPlanar, 360, 640, false);
    manager.files["background"] = Film(formatPlanar, scale * frameWidth, scale * frameHeight, !videos);
    const std::unique_ptr<AVBased::IVideoProc, void (*)(AVBased::IVideoProc*)> menu(
        AVBased::CreateEffect(&manager, name, AVBased::GeneratorTable()), [](AVBased::IVideoProc* m) { m->Free(); });
    std::string starts, ends, infos;
    for (unsigned i = 0; i < pictures; ++i) {
        const std::string place =
            (i ? ";" : "") + std::to_string(i % 3 * 500) + ";" + std::to_string(i / 3 * 400 + 101);
        starts += place;
        ends += (i ? ";" : "") + std::to_string(i % 3 * 500 + 301) + ";2000";
    }
    for (unsigned i = 0; i < texts; ++i)
        infos +=
            (i ? "\\" : "") + std::string("Text;Sans;;40;255;255;255;100;") + std::to_string(i * 200) + ";0;0;false";
    Set(*menu, "sourcePath", "background");
    Set(*menu, "textNumber", std::to_string(texts));
    Set(*menu, "textInfos", infos);
    Set(*menu, "additionSourceNumber", std::to_string(pictures));
    const std::string rest = List(pictures - 1, "picture"), kinds = List(pictures - 1, videos ? "false" : "true");
    Set(*menu, "isAdditionSourceImages", (hasUpright || videos ? "false;" : "true;") + kinds);
    Set(*menu, "additionSourcePaths", (hasUpright ? "upright;" : "picture;") + rest);
    if (name == std::string("menu_common")) {
        Set(*menu, "additionSourceSizes", List(pictures, "480;270"));
        Set(*menu, "startPositions", starts);
        Set(*menu, "endPositions", ends);
        Set(*menu, "moveSpeeds", List(pictures, "1"));
        Set(*menu, "startTrans", List(pictures, "255"));
        Set(*menu, "endTrans", List(pictures, "255"));
    }
    Set(*menu, "duration", std::to_string(loop));
    FrameRing ring(format, scale * frameWidth, scale * frameHeight);
    AVBased::ImagePostion record;
    menu->ProcFrameInPlace(&record, 0, &ring.Next());  // opens what it shows
    for (auto _ : state) {
        state.PauseTiming();
        CRawVideoFrame& frame = ring.Next();
        state.ResumeTiming();
        menu->ProcFrameInPlace(&record, 0, &frame);
    }
    state.counters["frames/s"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
}

// Six pictures on a frame: turned, or in perspective.
void Transformed(benchmark::State& state, unsigned format, bool perspective) {
    AVBased::Layer layer(480, 270);
    FakeManager::Paint(*layer.Frame(), 0xFF406080);
    CRawVideoFrame frame(false, format, frameWidth, frameHeight, true);
    if (format == formatPacked) FakeManager::Paint(frame, 0xFF203040);
    AVBased::Canvas canvas(frame, AVBased::BestInstructionSet());
    double turn = 0;
    for (auto _ : state) {
        turn += 1;
        for (unsigned i = 0; i < pictures; ++i) {
            const AVBased::Spot centre{300 + i % 3 * 600.0, 300 + i / 3 * 450.0};
            auto placement = AVBased::Placement::Turned(centre, 480, 270, turn + 15 * i);
            if (perspective) placement.topLeft.x += 40;
            canvas.LayTransformed(layer, placement);
        }
    }
    state.counters["frames/s"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
}

BENCHMARK_CAPTURE(Transformed, turned_planar, formatPlanar, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Transformed, turned_packed, formatPacked, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Transformed, perspective_planar, formatPlanar, true)->Unit(benchmark::kMillisecond);

// Every menu there is, with pictures on planar frames, of two sizes where it arranges them; the common one with videos
// and on packed frames too.
void MenuRows() {
    const auto add = [](const std::string& row, const char* name, unsigned format, bool videos, unsigned scale,
                        bool hasUpright = false) {
        benchmark::RegisterBenchmark(row.c_str(), Menu, name, format, videos, scale, hasUpright)
            ->Iterations(loop)
            ->Unit(benchmark::kMillisecond);
    };
    for (const AVBased::EffectEntry& entry : AVBased::GeneratorTable()) {
        const std::string name = entry.name;
        if (name.find("menu_") == std::string::npos) continue;
        const bool isCommon = name == "menu_common";
        for (const bool videos : {false, true})
            for (const bool packed : {false, true})
                if (isCommon || !(videos || packed))
                    add("Menu/" + name + (videos ? "_videos" : "_pictures") + (packed ? "_packed" : "_planar"),
                        entry.name, packed ? formatPacked : formatPlanar, videos, 1);
        if (!isCommon) add("Menu/" + name + "_4k", entry.name, formatPlanar, false, 2);
        if (name == "menu_fullscreen") {
            add("Menu/" + name + "_upright_film", entry.name, formatPlanar, false, 1, true);
            add("Menu/" + name + "_upright_film_4k", entry.name, formatPlanar, false, 2, true);
        }
    }
}

// Two pictures that always hand over to each other, both moving or both still.
void Slides(benchmark::State& state, const char* transition, unsigned format, const char* motion) {
    FakeManager manager;
    for (const char* name : {"first", "second"}) manager.files[name] = Film(formatPacked, 2400, 1600, true);
    const std::unique_ptr<AVBased::IVideoProc, void (*)(AVBased::IVideoProc*)> slides(
        AVBased::CreateEffect(&manager, "slide", AVBased::GeneratorTable()), [](AVBased::IVideoProc* m) { m->Free(); });
    Set(*slides, "paths", "first;second");
    Set(*slides, "slideDuration", "0");
    Set(*slides, "transitions", transition);
    Set(*slides, "motion", motion);
    Set(*slides, "fit", "crop");
    Set(*slides, "loop", "1");
    FrameRing ring(format);
    AVBased::ImagePostion record;
    slides->ProcFrameInPlace(&record, 0, &ring.Next());  // makes both pictures
    for (auto _ : state) {
        state.PauseTiming();
        CRawVideoFrame& frame = ring.Next();
        state.ResumeTiming();
        slides->ProcFrameInPlace(&record, 0, &frame);
    }
    state.counters["frames/s"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
}

// Two passes over each transition.
void SlideRows() {
    for (const char* transition : {"cut", "crossfade", "push", "wipe", "zoom", "iris", "blinds", "pageturn"})
        for (const bool packed : {false, true})
            for (const char* motion : {"random", "none"})
                benchmark::RegisterBenchmark((std::string("Slides/") + transition + (packed ? "_packed" : "_planar") +
                                              (*motion == 'n' ? "_still" : ""))
                                                 .c_str(),
                                             Slides, transition, packed ? formatPacked : formatPlanar, motion)
                    ->Iterations(2 * 25)
                    ->Unit(benchmark::kMillisecond);
}
const int registered = (MenuRows(), SlideRows(), 0);

}  // namespace
}  // namespace Bench

BENCHMARK_MAIN();
