// nifikral._nifikral: what the package nifikral is made of; its own functions say how it is called.
#include <pybind11/stl.h>

#include "bridges/python/film.h"
#include "bridges/python/library.h"
#include "bridges/python/worker.h"
#include "host/base/errors.h"
#include "host/base/version.h"
#include "host/catalogue/effect_json.h"
#include "host/films/title.h"

namespace Nifikral::Python {
namespace {

// Runs what reads files without the interpreter's lock.
template <class Make>
auto MadeUnlocked(Make make) {
    decltype(make()) made;
    Unlocked([&] { made = make(); });
    return made;
}

std::string Catalogue() {
    return MadeUnlocked([] { return EffectsAsJson(AllEffects(TheModule())); });
}

using Asked = std::vector<std::pair<std::string, std::vector<std::pair<std::string, std::string>>>>;

std::unique_ptr<Worker> MakeChain(const Asked& asked, Order order, double frameRate) {
    return MadeUnlocked([&] {
        std::vector<AskedEffect> effects;
        for (const auto& [request, settings] : asked) effects.push_back({request, settings});
        return std::make_unique<Worker>(RequestsOf(effects), order, frameRate);
    });
}

std::unique_ptr<Worker> MakeTitle(const TitleOptions& options, long long frames, double frameRate, Order order) {
    return MadeUnlocked([&] {
        const auto in = [&](double seconds) { return std::llround(seconds * frameRate); };
        const TitleTimes when{0, frames, in(options.inSeconds), in(options.outSeconds)};
        return std::make_unique<Worker>(std::vector{TitleRequest(options, when)}, order, frameRate);
    });
}

std::unique_ptr<FilmFrames> MakeMenu(const std::string& project, const std::string& templateName, int page) {
    return MadeUnlocked([&] { return std::make_unique<FilmFrames>(OpenMenu(project, templateName, page)); });
}

std::unique_ptr<FilmFrames> MakeShow(const SlideshowOptions& options) {
    return MadeUnlocked([&] { return std::make_unique<FilmFrames>(PrepareSlideshow(options, TheModule())); });
}

// A call of an object, unless its initialiser was never called: what it then points to is no object.
template <class Object, class Result, class... Arguments>
auto OfMade(Result (Object::*function)(Arguments...)) {
    return [function](const py::object& self, Arguments... arguments) {
        if (!reinterpret_cast<py::detail::instance*>(self.ptr())->get_value_and_holder().holder_constructed())
            throw py::type_error("this object was never made: its __init__ has not been called");
        return (self.cast<Object&>().*function)(arguments...);
    };
}

}  // namespace

PYBIND11_MODULE(_nifikral, module) {
    TranslateErrors();
    module.attr("version") = Version();
    module.def("catalogue", &Catalogue);

    py::enum_<Order>(module, "Order").value("rgb", Order::Rgb).value("bgr", Order::Bgr);

    py::class_<Worker>(module, "Chain")
        .def(py::init(&MakeChain))
        .def("__call__", OfMade(&Worker::Process), py::arg("picture"), py::pos_only(), py::kw_only(),
             py::arg("out") = py::none(), py::arg("position") = py::none());

    py::class_<FilmFrames>(module, "Film")
        .def_property_readonly("width", &FilmFrames::Width)
        .def_property_readonly("height", &FilmFrames::Height)
        .def_property_readonly("rate", &FilmFrames::FrameRate)
        .def_property_readonly("count", &FilmFrames::Count)
        .def_property_readonly("seeks", &FilmFrames::Seeks)
        .def("frame", OfMade(&FilmFrames::Frame));
    module.def("menu", &MakeMenu);
    module.def("slideshow", &MakeShow);
    module.def("title", &MakeTitle);

    py::class_<SlideshowOptions>(module, "SlideshowOptions")
        .def(py::init())
        .def_readwrite("pictures", &SlideshowOptions::inputs)
        .def_readwrite("sort", &SlideshowOptions::order)
        .def_readwrite("captions", &SlideshowOptions::captions)
        .def_readwrite("seconds", &SlideshowOptions::pictureSeconds)
        .def_readwrite("transition", &SlideshowOptions::transitionSeconds)
        .def_readwrite("transitions", &SlideshowOptions::transitions)
        .def_readwrite("motions", &SlideshowOptions::motions)
        .def_readwrite("motion_amount", &SlideshowOptions::motionAmount)
        .def_readwrite("seed", &SlideshowOptions::seed)
        .def_readwrite("fit", &SlideshowOptions::fit)
        .def_readwrite("size", &SlideshowOptions::size)
        .def_readwrite("rate", &SlideshowOptions::frameRate)
        .def_readwrite("strict", &SlideshowOptions::strict);

    py::class_<TitleOptions>(module, "TitleOptions")
        .def(py::init())
        .def_readwrite("text", &TitleOptions::text)
        .def_readwrite("face", &TitleOptions::face)
        .def_readwrite("style", &TitleOptions::style)
        .def_readwrite("color", &TitleOptions::colour)
        .def_readwrite("size", &TitleOptions::size)
        .def_readwrite("place", &TitleOptions::place)
        .def_readwrite("in_motion", &TitleOptions::inMotion)
        .def_readwrite("out_motion", &TitleOptions::outMotion)
        .def_readwrite("in_seconds", &TitleOptions::inSeconds)
        .def_readwrite("out_seconds", &TitleOptions::outSeconds);
}

}  // namespace Nifikral::Python
