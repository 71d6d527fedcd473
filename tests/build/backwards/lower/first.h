#pragma once

#include "upper/second.h"
