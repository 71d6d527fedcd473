#include "TarvoBased/res_keeper.h"

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/error_codes.h"

namespace TarvoBased {

void RaiseNoMemory(int line) {
    throw CBaseException(errorNoMemory, textNoMemory, line, "../dependency/TarvoBased/res_keeper");
}

}  // namespace TarvoBased
