// What a call from Python takes beside the same call of the module, both in turn on the same 1920x1080 picture, and
// what other orders and a picture of three channels add. Usage: nifikral_python_bench [ROUNDS]; PYTHONPATH names the
// folder of the built package.
#include <pybind11/embed.h>
#include <pybind11/numpy.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "avbase/avbase_srcutils/pixel_formats.h"
#include "bridges/common/borrowed_frame.h"
#include "bridges/common/bridged_effect.h"

namespace py = pybind11;
using namespace Nifikral;

namespace {

constexpr unsigned width = 1920, height = 1080;

// Of this thread's processor time.
double Now() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

double Milliseconds(const std::function<void()>& call) {
    const double begin = Now();
    call();
    return Now() - begin;
}

double Median(std::vector<double> values) {
    std::ranges::nth_element(values, values.begin() + std::ptrdiff_t(values.size() / 2));
    return values[values.size() / 2];
}

py::array_t<std::uint8_t> Picture(unsigned channels) {
    py::array_t<std::uint8_t> picture({height, width, channels});
    unsigned value = 1;
    for (py::ssize_t i = 0; i < picture.size(); ++i)
        picture.mutable_data()[i] = std::uint8_t((value = value * 1664525 + 1013904223) >> 24);
    return picture;
}

struct Row {
    const char* effect;
    std::vector<std::pair<const char*, int>> settings = {};
};
const Row rows[] = {{"invert"},
                    {"gray"},
                    {"aged_film"},
                    {"simple_gauss_blur", {{"blur_count", 1}}},
                    {"rotate", {{"rotate_x", 960}, {"rotate_y", 540}, {"rotate_r", 480}, {"rotate_scale", 4}}},
                    {"oilpainting", {{"oilpainting_brushsize", 4}, {"oilpainting_coarseness", 50}}}};

void Compare(const Row& row, int rounds) {
    py::dict settings;
    for (const auto& [name, value] : row.settings) settings[name] = value;
    const py::object make = py::module_::import("nifikral").attr("Effect");
    const py::object bgr = make(row.effect, py::arg("order") = "bgr", **settings);
    const py::object rgb = make(row.effect, py::arg("order") = "rgb", **settings);
    const auto inPlace = [](const py::object& effect, const py::array& picture) {
        effect(picture, py::arg("out") = picture, py::arg("position") = 1);
    };
    const py::array_t<std::uint8_t> four = Picture(4), three = Picture(3);
    BridgedEffect own(*TheBridgeModule().module, row.effect);
    for (const auto& [name, value] : row.settings) own.Set(name, std::to_string(value));
    const BorrowedPlane plane{const_cast<unsigned char*>(four.data()), width * 4, width * 4, height};
    BorrowedFrame frame(AVBased::formatRgba32, width, height, {&plane, 1});
    const std::function<void()> calls[] = {[&] { own.Process(frame, 1); }, [&] { inPlace(bgr, four); },
                                           [&] { inPlace(rgb, four); }, [&] { inPlace(bgr, three); },
                                           [&] { inPlace(rgb, three); }};
    constexpr int kinds = 5;
    std::vector<double> times[kinds], ratios[2], differences[2];
    for (int round = 0; round < rounds; ++round) {
        // Each kind of call finds the caches as its own kind left them; the order turns from round to round.
        for (int turn = 0; turn < kinds; ++turn) {
            const int kind = (round + turn) % kinds;
            calls[kind]();
            times[kind].push_back(Milliseconds(calls[kind]));
        }
        for (int order = 0; order < 2; ++order) {
            ratios[order].push_back(times[1 + order].back() / times[0].back());
            differences[order].push_back(times[3 + order].back() - times[1].back());
        }
    }
    std::printf("%-22s %9.3f %9.3f %9.3f %10.3f %10.3f\n", row.effect, Median(times[0]), Median(ratios[0]),
                Median(ratios[1]), Median(differences[0]), Median(differences[1]));
}

}  // namespace

int main(int count, char** arguments) {
    const int rounds = count > 1 ? std::atoi(arguments[1]) : 61;
    const py::scoped_interpreter interpreter;
    std::printf("%-22s %9s %9s %9s %10s %10s\n", "in place, 1920x1080", "C++ ms", "x bgra", "x rgba", "+ bgr ms",
                "+ rgb ms");
    for (const Row& row : rows) Compare(row, rounds);
}
