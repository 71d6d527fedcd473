#pragma once

#include <cstdint>
#include <string>

#include "TarvoBased/ITarvoException.h"

namespace TarvoBased {

/// The one class of exception that the module throws, and the form in which a thread's current error is kept.
class CBaseException final : public ITarvoException {
 public:
    /// `source` is the raising unit's name without extension; null texts count as empty.
    CBaseException(int code, const char* message, int line, const char* source);
    /// A copy of another library's error object; `other` must not be null.
    explicit CBaseException(ITarvoException* other);

    int GetCode() const { return m_code; }
    const char* GetMsg() const { return m_message.c_str(); }

    int GetExceptionCode() const override { return m_code; }
    const char* GetExceptionMsg() const override { return m_message.c_str(); }
    const char* GetExceptionSource(int* line) const override;
    void SetException(int code, const char* message, int line, const char* source) override;
    void Clear() override;
    void Copy(ITarvoException* other) override;

 private:
    std::int32_t m_code = 0;
    std::string m_message;
    std::int32_t m_line = 0;
    std::string m_source;
};

/// The error as one text, for a log or a terminal.
std::string ExceptionText(const ITarvoException& exception);

}  // namespace TarvoBased
