#include "avbase/IImageConverter.h"
