#pragma once

#include <gst/gst.h>

/// GStreamer's elements: one for each effect on frames that the module has.
namespace Nifikral::Gst {

/// Registers them under their names. Without a module there are none, and a warning gives the reason.
bool RegisterElements(GstPlugin* plugin);

}  // namespace Nifikral::Gst
