/* A theme that lacks something, by the number FAULT; 0 lacks nothing, and counts how often it is begun and
 * ended. */
#include "vellum_theme.h"

VELLUM_THEME_EXPORT int theme_begun = 0;
VELLUM_THEME_EXPORT int theme_ended = 0;

uint32_t THEMEInit(uint32_t version) {
  ++theme_begun;
  return FAULT != 1 && version == VELLUM_THEME_VERSION;
}

void THEMEDeInit(void) { ++theme_ended; }

#if FAULT != 2
uint32_t THEMEGetBitmap(const VellumPixels* pixels) {
  pixels->words[0] = 0xFF000000u | theme_begun;
  return 1;
}
#endif

#if FAULT != 3
uint32_t THEMEGetSupport(void) { return 31; }
uint32_t THEMEDrawButton(const VellumPixels* pixels, uint32_t state, const char* text) {
  (void)state;
  pixels->words[0] = 0xFFFFFFFFu;
  return *text == 'd' ? 2 : 0;
}
uint32_t THEMEDrawSmallButton(const VellumPixels* pixels, uint32_t state, const char* text) {
  return (pixels && state && text) * 0u;
}
uint32_t THEMEDrawTool(const VellumPixels* pixels, uint32_t state, uint32_t command) {
  (void)pixels, (void)state;
  return command == 101;
}
uint32_t THEMEDrawToolbarBackground(const VellumPixels* pixels) { return !pixels; }
int32_t THEMEGetMetric(uint32_t number) { return number == 0 ? 2147483647 : -5; }
uint32_t THEMEConfigure(void* window) { return window != 0; }
#endif
