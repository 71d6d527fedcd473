#pragma once

#include <type_traits>
#include <utility>

namespace TarvoBased {

/// Files the exception in flight in the calling thread's exception object. Call only from a catch handler.
void RecordException(int line, const char* source) noexcept;

/// Raises a copy of the calling thread's pending error, if there is one: for calls into the host that report failure
/// only by a null result.
void RaisePendingException();

/// Raises 10021003 when `pointer` is null.
void RequirePointer(const void* pointer, int line, const char* source);

/// Runs `work` as an operation that the host may call: whatever it throws is filed, and `failure` is returned instead.
/// `line` and `source` are what the host reads for an exception that brings none of its own.
template <class Work, class Result>
Result AtBoundary(int line, const char* source, Result failure, Work&& work) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (...) {
        RecordException(line, source);
    }
    return failure;
}

template <class Work>
auto AtBoundary(int line, const char* source, Work&& work) noexcept -> decltype(work()) {
    using Result = decltype(work());
    if constexpr (std::is_void_v<Result>) {
        AtBoundary(line, source, false, [&] {
            std::forward<Work>(work)();
            return true;
        });
    } else {
        return AtBoundary(line, source, Result{}, std::forward<Work>(work));
    }
}

}  // namespace TarvoBased
