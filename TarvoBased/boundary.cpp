#include "TarvoBased/boundary.h"

#include <exception>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/error_codes.h"

namespace TarvoBased {

void RecordException(int line, const char* source) noexcept try {
    ITarvoException* const current = GetTarvoException();
    try {
        throw;
    } catch (CBaseException& exception) {
        current->Copy(&exception);
    } catch (const std::exception& exception) {
        current->SetException(errorStandardException, exception.what(), line, source);
    } catch (...) {
        current->SetException(errorGeneral, textUnknownException, line, source);
    }
} catch (...) {
    // Filing an error needs memory too. Without any, the host sees only the failure value.
}

void RaisePendingException() {
    ITarvoException* const current = GetTarvoException();
    if (current->GetExceptionCode() != noError) throw CBaseException(current);
}

void RequirePointer(const void* pointer, int line, const char* source) {
    if (!pointer) throw CBaseException(errorBadPointer, textBadPointer, line, source);
}

}  // namespace TarvoBased
