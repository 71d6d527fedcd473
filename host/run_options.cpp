#include "host/run_options.h"

#include <algorithm>
#include <thread>

namespace Nifikral {

int RunOptions::ThreadCount() const {
    return threads > 0 ? threads : std::max(1, int(std::thread::hardware_concurrency()));
}

}  // namespace Nifikral
