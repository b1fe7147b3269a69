// Makers of the fields that most rows have.
#pragma once

#include "base/fields.h"

namespace vellum {

constexpr Field whole_field(const char* name, const char* label, std::int64_t least, std::int64_t most,
                            std::int64_t initial, int* setting = nullptr, int state = 0) {
  return {.name = name,
          .label = label,
          .least = least,
          .most = most,
          .initial = initial,
          .setting = setting,
          .stateId = state};
}
constexpr Field flag_field(const char* name, const char* label, std::int64_t initial, int* setting = nullptr,
                           int bits = 0, int state = 0) {
  return {.name = name,
          .label = label,
          .type = FieldType::Flag,
          .most = 1,
          .initial = initial,
          .setting = setting,
          .settingBits = bits,
          .stateId = state};
}
constexpr Field color_field(const char* name, const char* label, std::int64_t initial, int* setting = nullptr,
                            int state = 0) {
  return {.name = name,
          .label = label,
          .type = FieldType::Color,
          .most = 0xFFFFFF,
          .initial = initial,
          .setting = setting,
          .stateId = state};
}
constexpr Field on_page(Field field, const char* page) {
  field.page = page;
  return field;
}
constexpr Field enabled_by(Field field, const char* name, std::int64_t value = -1) {
  field.enabledBy = name;
  field.enabledAt = value;
  return field;
}
/// One of the fields that a choice has each for itself: shown while that one is chosen.
constexpr Field only_for(Field field, const char* choice, std::int64_t value) {
  field.vanishes = true;
  return enabled_by(field, choice, value);
}
/// With a line in the state file.
constexpr Field kept(Field field, int line) {
  field.stateId = line;
  return field;
}

}  // namespace vellum
