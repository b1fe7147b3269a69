// Where the lights of an animation's properties change, as the settings have it.
#pragma once

#include "configuration/shell_settings.h"
#include "operations/animation_properties.h"

namespace vellum {

inline PropertyLimits property_limits() {
  using namespace settings;
  return {PropertiesDimensionYellow, PropertiesDimensionRed, PropertiesFileYellow,
          PropertiesFileRed,         PropertiesMemYellow,    PropertiesMemRed};
}

}  // namespace vellum
