#pragma once

namespace Nifikral {

/// A shared library that is loaded when this object is made, and stays: for those that cost every start of a program
/// more time than most runs need them. Throws HostError where it is missing. Threads: any, after the constructor.
class LazyLibrary {
 public:
    /// `file`: by its run-time name, as in "libz.so.1".
    explicit LazyLibrary(const char* file);
    void* Find(const char* name) const;

 private:
    const char* m_file;
    void* m_handle;
};

/// A function of such a library, called like any other.
template <class Function>
class Lazy {
 public:
    Lazy(const LazyLibrary& library, const char* name) : m_function(reinterpret_cast<Function*>(library.Find(name))) {}
    template <class... Arguments>
    auto operator()(Arguments... arguments) const {
        return m_function(arguments...);
    }

 private:
    Function* m_function;
};

}  // namespace Nifikral
