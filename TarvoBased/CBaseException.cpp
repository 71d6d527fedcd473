#include "TarvoBased/CBaseException.h"

#include <new>
#include <utility>

#include "TarvoBased/error_codes.h"

namespace TarvoBased {
namespace {

const char* OrEmpty(const char* text) { return text ? text : ""; }

// Without memory for its text, an error still has its code.
std::string CopyIfThereIsMemory(const char* text) try { return OrEmpty(text); } catch (const std::bad_alloc&) {
    return {};
}

}  // namespace

CBaseException::CBaseException(int code, const char* message, int line, const char* source)
    : m_code(code), m_message(OrEmpty(message)), m_line(line), m_source(OrEmpty(source)) {}

CBaseException::CBaseException(ITarvoException* other) { CBaseException::Copy(other); }

const char* CBaseException::GetExceptionSource(int* line) const {
    if (line) *line = m_line;
    return m_source.c_str();
}

void CBaseException::SetException(int code, const char* message, int line, const char* source) {
    // The texts may be this object's own, so both are taken before either is replaced.
    std::string newMessage = CopyIfThereIsMemory(message), newSource = CopyIfThereIsMemory(source);
    m_code = code;
    m_message = std::move(newMessage);
    m_line = line;
    m_source = std::move(newSource);
}

void CBaseException::Clear() {
    m_code = noError;
    m_message.clear();
}

void CBaseException::Copy(ITarvoException* other) {
    int line = 0;
    const char* source = other->GetExceptionSource(&line);
    SetException(other->GetExceptionCode(), other->GetExceptionMsg(), line, source);
}

std::string ExceptionText(const ITarvoException& exception) {
    int line = 0;
    const std::string source = exception.GetExceptionSource(&line);
    return "[!!! Exception Code: " + std::to_string(exception.GetExceptionCode()) +
           "\nMsg: " + exception.GetExceptionMsg() + "\nFile: " + source + "\nLine: " + std::to_string(line) + " !!!]";
}

}  // namespace TarvoBased
