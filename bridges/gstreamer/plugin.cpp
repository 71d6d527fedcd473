#include <gst/gst.h>

#include "bridges/gstreamer/effect_element.h"

#define PACKAGE "nifikral"

namespace {

gboolean Initialise(GstPlugin* plugin) { return Nifikral::Gst::RegisterElements(plugin); }

}  // namespace

extern "C" {
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, nifikral, "Video effects", Initialise, NIFIKRAL_VERSION,
                  "Proprietary", "Nifikral", "Unknown package origin")
}
