#pragma once

#include <glib-object.h>

#include <string>

#include "host/catalogue/catalogue.h"
#include "host/catalogue/effect_module.h"

namespace Nifikral::Gst {

/// Whether a property is of a kind that an effect on frames has; lists and texts belong to the generators.
bool IsNumber(const PropertyInfo& property);

/// Such a property as GObject sees it: its type as the module has it; range, choices, unit and meaning as the catalogue
/// knows them; as its default what the effect works with.
GParamSpec* SpecOf(const EffectInfo& effect, const PropertyInfo& property);
/// The same of the property "duration", which GStreamer can find out by itself.
GParamSpec* DurationSpec();

/// A value of the property's type as the module reads it, and back.
std::string TextOf(const GValue& value);
void SetFromText(GValue& value, const std::string& text);

}  // namespace Nifikral::Gst
