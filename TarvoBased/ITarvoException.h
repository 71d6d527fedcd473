#pragma once

namespace TarvoBased {

/// An error as it crosses library borders: code, message, source unit and line. Code 0 means no error.
class ITarvoException {
 public:
    virtual int GetExceptionCode() const = 0;
    /// Borrowed, valid until the object changes. Never null.
    virtual const char* GetExceptionMsg() const = 0;
    /// The unit that raised the error; its line goes to `line` unless that is null. Borrowed as above.
    virtual const char* GetExceptionSource(int* line) const = 0;
    /// Overwrites all four fields; a null text counts as empty.
    virtual void SetException(int code, const char* message, int line, const char* source) = 0;
    /// Code 0 and no message. Source and line stay: the last place of trouble remains readable.
    virtual void Clear() = 0;
    /// Takes over all four fields of `other`, which stays its owner's.
    virtual void Copy(ITarvoException* other) = 0;

 protected:
    ~ITarvoException() = default;
};

// Imported from the host's global support library.
extern "C" {
/// The calling thread's current exception object; never null, valid until the thread ends or releases it.
ITarvoException* GetTarvoException();
/// Releases the calling thread's exception object; the next GetTarvoException() makes a fresh one.
void ReleaseTarvoException();
}

}  // namespace TarvoBased
