#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <functional>
#include <vector>

#include "bridges/python/pixels.h"

/// What crosses between the interpreter and the bridge: its lock, arrays and exceptions.
namespace Nifikral::Python {

namespace py = pybind11;

/// Runs work that touches nothing of Python without the interpreter's lock. Its warnings become Python's. A thread that
/// is still at work while the interpreter ends stops here.
void Unlocked(const std::function<void()>& work);

/// Makes HostError the exceptions of nifikral._errors.
void TranslateErrors();

/// The array of a picture of 1, 3 or 4 channels, or of a plane. Throws TypeError and ValueError that say what was
/// expected of `what`.
ArrayView ViewOfPicture(py::handle object, const char* what);
ArrayView ViewOfPlane(py::handle object, const char* what);
/// Throws ValueError for an array that is read-only.
void RequireWriteable(py::handle object, const char* what);
/// A new array of the same shape.
py::array LikeArray(py::handle array);

/// Keeps arrays from being resized in place by another thread: an array with weak references refuses that.
class ArrayLock {
 public:
    void Add(py::handle array);

 private:
    std::vector<py::object> m_references;
};

}  // namespace Nifikral::Python
