#include "host/base/version.h"

const char* Nifikral::Version() { return NIFIKRAL_VERSION; }
