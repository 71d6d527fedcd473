#include "host/studio/view_turns.h"

#include "host/base/interruption.h"
#include "host/studio/web_message.h"

namespace Nifikral {

void ViewTurn::RequireNewest() const {
    ThrowIfInterrupted();
    if (m_counter->newest != m_number) throw Superseded();
}

}  // namespace Nifikral
