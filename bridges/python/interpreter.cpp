#include "bridges/python/interpreter.h"

#include <unistd.h>

#include <exception>
#include <sstream>
#include <string>
#include <utility>

#include "host/base/errors.h"
#include "host/base/log.h"

namespace Nifikral::Python {
namespace {

constexpr py::ssize_t largestSide = 16384;

std::string ShapeText(const py::array& array) {
    std::ostringstream text;
    for (py::ssize_t i = 0; i < array.ndim(); ++i) text << (i ? " x " : "") << array.shape(i);
    return array.ndim() ? text.str() : "a single number";
}

py::array RequireBytes(py::handle object, const std::string& what) {
    if (!py::isinstance<py::array>(object))
        throw py::type_error(what + ": expected a numpy array of uint8, got " +
                             std::string(py::str(py::type::of(object).attr("__name__"))) +
                             "; numpy.asarray makes one of many kinds of picture");
    auto array = py::reinterpret_borrow<py::array>(object);
    const py::dtype type = array.dtype();
    if (type.kind() != 'u' || type.itemsize() != 1)
        throw py::type_error(what + ": expected an array of uint8, got one of " +
                             std::string(py::str(py::object(type))) +
                             (type.kind() == 'f' ? "; (255 * picture).round().astype(numpy.uint8) converts 0 to 1"
                                                 : "; astype(numpy.uint8) converts numbers from 0 to 255"));
    return array;
}

ArrayView ViewOf(const py::array& array, const std::string& what) {
    ArrayView view;
    view.height = array.shape(0);
    view.width = array.shape(1);
    if (view.height == 0 || view.width == 0)
        throw py::value_error(what + ": the picture is empty, " + ShapeText(array));
    if (view.height > largestSide || view.width > largestSide)
        throw py::value_error(what + ": " + ShapeText(array) + " is too large; sides go up to " +
                              std::to_string(largestSide));
    // Read-only arrays are read from.
    view.data = const_cast<std::uint8_t*>(static_cast<const std::uint8_t*>(array.data()));
    view.rowStep = array.strides(0);
    view.columnStep = array.strides(1);
    view.channelStep = 1;
    if (array.ndim() == 3) {
        view.channels = array.shape(2);
        view.channelStep = array.strides(2);
    }
    return view;
}

void Throw(const HostError& error) {
    const char* const name = error.Code() == ExitCode::Usage                                       ? "UsageError"
                             : error.Code() == ExitCode::Input || error.Code() == ExitCode::Output ? "FileError"
                                                                                                   : "Error";
    const py::object type = py::module_::import("nifikral._errors").attr(name);
    const py::object exception = type(error.what());
    exception.attr("code") = error.ModuleCode();
    PyErr_SetObject(type.ptr(), exception.ptr());
}

}  // namespace

void Unlocked(const std::function<void()>& work) {
    std::exception_ptr failure;
    std::vector<std::string> warnings;
    PyThreadState* const state = PyEval_SaveThread();
    try {
        const WarningsTo collected([&](const std::string& line) { warnings.push_back(line); });
        work();
    } catch (...) {
        failure = std::current_exception();
    }
    // The lock is never to be had again, and to ask for it ends the thread in the middle of C++.
    while (_Py_IsFinalizing()) pause();
    PyEval_RestoreThread(state);
    for (const std::string& line : warnings)
        if (PyErr_WarnEx(PyExc_UserWarning, line.c_str(), 1) < 0) throw py::error_already_set();
    if (failure) std::rethrow_exception(failure);
}

void TranslateErrors() {
    py::register_exception_translator([](std::exception_ptr thrown) {
        try {
            if (thrown) std::rethrow_exception(std::move(thrown));
        } catch (const HostError& error) {
            Throw(error);
        }
    });
}

ArrayView ViewOfPicture(py::handle object, const char* what) {
    const py::array array = RequireBytes(object, what);
    const py::ssize_t dimensions = array.ndim();
    const py::ssize_t channels = dimensions == 3 ? array.shape(2) : 1;
    if (dimensions < 2 || dimensions > 3 || (channels != 1 && channels != 3 && channels != 4)) {
        const bool first = dimensions == 3 && (array.shape(0) == 1 || array.shape(0) == 3 || array.shape(0) == 4);
        throw py::value_error(std::string(what) + ": expected height x width, or height x width x 1, 3 or 4, got " +
                              ShapeText(array) +
                              (first ? "; numpy.moveaxis(picture, 0, -1) puts the channels last" : ""));
    }
    return ViewOf(array, what);
}

ArrayView ViewOfPlane(py::handle object, const char* what) {
    const py::array array = RequireBytes(object, what);
    if (array.ndim() != 2)
        throw py::value_error(std::string(what) + ": expected a plane of height x width, got " + ShapeText(array));
    return ViewOf(array, what);
}

void RequireWriteable(py::handle object, const char* what) {
    if (!py::reinterpret_borrow<py::array>(object).writeable())
        throw py::value_error(std::string(what) + " is read-only; give a copy of it, or leave out away");
}

py::array LikeArray(py::handle object) {
    const auto array = py::reinterpret_borrow<py::array>(object);
    return py::array(py::dtype::of<std::uint8_t>(),
                     std::vector<py::ssize_t>(array.shape(), array.shape() + array.ndim()));
}

void ArrayLock::Add(py::handle array) {
    for (py::object owner = py::reinterpret_borrow<py::object>(array); py::isinstance<py::array>(owner);
         owner = owner.attr("base"))
        m_references.push_back(py::reinterpret_steal<py::object>(PyWeakref_NewRef(owner.ptr(), nullptr)));
}

}  // namespace Nifikral::Python
