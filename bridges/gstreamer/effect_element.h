#pragma once

#include <gst/gst.h>

/// GStreamer's elements: one for each effect on frames that the module has.
namespace Nifikral::Gst {

/// Makes them known under their names. Without a module there are none, which is told with the reason.
bool RegisterElements(GstPlugin* plugin);

}  // namespace Nifikral::Gst
