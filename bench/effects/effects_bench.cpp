#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include "bench/harness/measure.h"
#include "bench/harness/report.h"
#include "effects/ImageEffects.h"
#include "effects/base/CBasedVideoEffect.h"

namespace Bench {
namespace {

using AVBased::InstructionSet;

/// An effect with settings, and the times that it may take in units of the in-place pass.
struct Job {
    const char* row;  ///< the effect's name, then after a blank what distinguishes this row from others of the effect
    const char* settings;  ///< properties as "name=value", a blank between
    double goalPacked, goalPlanar;
    int position = 0;
    unsigned planarFormat = formatPlanar;
    unsigned planarUnit = allPlanes;  ///< the plane whose pass is the planar unit
};

constexpr unsigned alphaPlane = 3;
constexpr char wholeFrameRotate[] = "rotate_r=1102 rotate_x=960 rotate_y=540 rotate_scale=2";
constexpr char wholeFrameSpherize[] = "spherize_r=1102 spherize_x=960 spherize_y=540 spherize_scale=2";
constexpr char tensileBothWays[] =
    "tensile_vertical=1 tensile_vertical_y1=270 tensile_vertical_y2=810 tensile_vertical_scale=1.5 "
    "tensile_horizontal=1 tensile_horizontal_x1=480 tensile_horizontal_x2=1440 tensile_horizontal_scale=1.5";

constexpr Job jobs[] = {
    {"gray", "", 1.0, 0.3},
    {"invert", "", 0.95, 1.0},
    {"flip_color", "", 0.9, 0.4},
    {"aged_film", "", 1.05, 0.3},
    {"brightness_contrast", "brightness=20 contrast=30", 1.05, 0.8},
    {"brightness_contrast saturation", "brightness=20 contrast=30 saturation=40", 1.4, 1.0},
    {"fadein", "duration=100", 1.05, 1.05, 40, formatPlanarAlpha, alphaPlane},
    {"fadeout", "duration=100", 1.05, 1.05, 40, formatPlanarAlpha, alphaPlane},
    {"directfadein", "duration=100", 1.1, 1.1, 40},
    {"directfadeout", "duration=100", 1.1, 1.1, 40},
    {"transparency", "", 1.05, 1.05, 0, formatPlanarAlpha, alphaPlane},
    {"colorfilter", "", 1.05, 3.0},
    {"popstyle", "", 1.8, 4.2},
    {"popstyle panels", "popstyle_panels=1", 4.6, 6.5},
    {"simple_gauss_blur", "blur_count=1", 1.7, 1.6},
    {"simple_laplacian_sharpen", "sharpen_count=1", 2.0, 2.2},
    {"emboss", "emboss_level=3", 1.1, 1.15},
    {"relief", "relief_angle=40", 2.5, 2.6},
    {"erode", "", 1.2, 1.3},
    {"dilate", "", 1.2, 1.3},
    {"mosaic", "mosaic_x2=1920 mosaic_y2=1080 mosaic_step=3", 1.0, 1.1},
    {"oilpainting", "oilpainting_brushsize=3 oilpainting_coarseness=50", 28, 64},
    {"edgelight", "edgelight_level=3", 2.5, 2.5},
    {"rotate", wholeFrameRotate, 3.0, 3.6},
    {"spherize", wholeFrameSpherize, 3.0, 3.6},
    {"mirrorinvert", "mirrorinvert_amount=100", 3.6, 5.0},
    {"tilereflect", "tilereflect_angle=30 tilereflect_size=30 tilereflect_curvature=30", 5.0, 7.0},
    {"magnifier", "magnifier_r=400 magnifier_x=960 magnifier_y=540 magnifier_scale=2.5", 0.8, 1.6},
    {"tensile", tensileBothWays, 1.2, 2.5},
    {"mirage", "mirage_width=10 mirage_alpha=10", 1.3, 2.5},
    {"radiate", "radiate_x=960 radiate_y=540 radiate_level=300", 6, 16},
    {"spotlight", "spotlight_r=540 spotlight_x=960 spotlight_y=540", 1.2, 1.15},
    {"reverse mirror", "mirror=1", 1.0, 1.05},
    {"reverse vertical", "vertical=1", 0.9, 1.05},
    {"addnoise", "", 1.2, 1.2},
    {"addnoise colour", "addnoise_color=1", 1.6, 2.4},
    {"atomize", "", 3, 8},
    {"portrait", "", 26, 70},
    {"2D_3D_TransForm", "", 9, 40},
    {"2D_3D_TransForm side", "2D_3D_TransForm_output=1", 9, 30},
    {"2D_3D_TransForm top", "2D_3D_TransForm_output=2", 11, 35},
    {"stroke", "", 5.5, 9.0},
    {"EffectNameRotate90X", "", 2.3, 6.5},
    {"EffectNameRotate90X half", "EffectNameRotate90X_turns=2", 1.0, 1.05},
    {"videowall", "videowall_horiTiles=3 videowall_verTiles=3", 1.2, 1.3},
};

// The job's effect with its settings; null when the module has none of that name.
std::shared_ptr<AVBased::IVideoProc> MakeEffect(const Job& job, InstructionSet set) {
    const std::string row = job.row;
    AVBased::IVideoProc* const made = AVBased::CreateEffect(nullptr, row.substr(0, row.find(' ')).c_str());
    if (!made) return nullptr;
    std::shared_ptr<AVBased::IVideoProc> effect(made, [](AVBased::IVideoProc* e) { e->Free(); });
    const std::string settings = job.settings;
    for (std::size_t begin = 0; begin < settings.size();) {
        const std::size_t end = std::min(settings.find(' ', begin), settings.size());
        const std::size_t equals = settings.find('=', begin);
        const std::string name = settings.substr(begin, equals - begin);
        if (!effect->SetProperty(name.c_str(), settings.substr(equals + 1, end - equals - 1).c_str()))
            throw std::invalid_argument(row + " refuses " + name);
        begin = end + 1;
    }
    dynamic_cast<AVBased::CBasedVideoImageEffect&>(*effect).UseInstructionSet(set);
    return effect;
}

Work MakeWork(const Job& job, InstructionSet set) {
    return [effect = MakeEffect(job, set), position = job.position](CRawVideoFrame& frame) {
        AVBased::ImagePostion record;
        effect->ProcFrameInPlace(&record, position, &frame);
    };
}

std::string WithLayout(const std::string& row, bool packed) { return row + (packed ? "/packed" : "/planar"); }

void Register(const Job& job, InstructionSet set, bool packed) {
    std::string row = job.row;
    if (set == InstructionSet::Baseline) row += " (baseline)";
    const auto make = [&job, set] { return MakeWork(job, set); };
    const Measured measured = packed ? Measured{formatPacked, make, job.goalPacked}
                                     : Measured{job.planarFormat, make, job.goalPlanar, job.planarUnit};
    benchmark::RegisterBenchmark(WithLayout(row, packed).c_str(), [=, &job](benchmark::State& state) {
        if (MakeEffect(job, set))
            Measure(state, measured);
        else
            state.SkipWithError("not in this module");
    })->UseManualTime();
}

// Calls one row's effect on one frame, so many times and nothing else: for a program that counts instructions.
int Call(const std::string& name, int times) {
    for (const Job& job : jobs)
        for (const bool packed : {true, false}) {
            if (WithLayout(job.row, packed) != name) continue;
            CRawVideoFrame frame(false, packed ? formatPacked : job.planarFormat, frameWidth, frameHeight, true);
            const Work work = MakeWork(job, AVBased::BestInstructionSet());
            for (int i = 0; i < times; ++i) work(frame);
            return 0;
        }
    std::fprintf(stderr, "nifikral_bench: no row is called %s\n", name.c_str());
    return 2;
}

}  // namespace
}  // namespace Bench

int main(int argc, char** argv) {
    using namespace Bench;
    if (argc == 4 && std::strcmp(argv[1], "--calls") == 0) return Call(argv[3], std::atoi(argv[2]));
    char baselineFlag[] = "--baseline";
    char** const end = std::remove_if(argv + 1, argv + argc, [&](char* a) { return !std::strcmp(a, baselineFlag); });
    const bool baseline = end != argv + argc;
    for (const Job& job : jobs)
        for (const bool packed : {true, false}) {
            if (baseline) Register(job, AVBased::InstructionSet::Baseline, packed);
            Register(job, AVBased::BestInstructionSet(), packed);
        }
    return RunAll(int(end - argv), argv);
}
