/* Vellumcraft: the interface of themes.
 *
 * A theme is a shared library that draws the toolbar and the buttons of the desktop program and names its
 * colors and sizes. Its file is named THEME_*_x64*.so and lies in the folder "theme" beside the program, or
 * in lib/vellumcraft/theme of the installation, which nobody but its owner may write to. What stands between
 * "THEME_" and "_x64" is its name in the list.
 *
 * All calls come on the program's main thread, all but THEMEInit only while the theme is started. A theme
 * draws into memory and keeps no pointer behind a call. Which functions must be there is said at each; what a
 * theme doesn't draw (THEMEGetSupport), or fails at, the program draws in the theme's colors.
 *
 * This header may be used for any purpose, without conditions. It is C89 and C++.
 */
#ifndef VELLUM_THEME_H
#define VELLUM_THEME_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define VELLUM_THEME_VERSION 1u

/* Where a theme draws: words 0xAARRGGBB whose colors are multiplied by alpha, the top row first. All are zero
 * on entry, which is: nothing is drawn. */
typedef struct VellumPixels {
  uint32_t size; /* sizeof(VellumPixels) */
  uint32_t* words;
  int32_t width, height; /* in pixels of the screen */
  int32_t stride;        /* bytes from one row to the next */
  double scale;          /* pixels of the screen for one of the layout: 1, 1.25, 2 ... */
} VellumPixels;

/* State of what is drawn: a sum. */
enum {
  VELLUM_STATE_HOT = 1, /* the pointer is on it */
  VELLUM_STATE_PRESSED = 2,
  VELLUM_STATE_CHECKED = 4,
  VELLUM_STATE_DISABLED = 8,
  VELLUM_STATE_FOCUSED = 16, /* the keyboard's place: must be seen */
  VELLUM_STATE_DEFAULT = 32  /* what Enter presses: its text has VELLUM_COLOR_ACCENT_TEXT */
};

/* What THEMEGetSupport says: a sum. */
enum {
  VELLUM_SUPPORT_BUTTON = 1,
  VELLUM_SUPPORT_SMALL_BUTTON = 2,
  VELLUM_SUPPORT_TOOL = 4,
  VELLUM_SUPPORT_TOOLBAR = 8,
  VELLUM_SUPPORT_NEEDS_RESTART = 16 /* it can't begin in a program that runs already */
};

/* Sizes, in pixels of the layout; 0: as the desktop has it. */
enum {
  VELLUM_METRIC_TOOLBAR_HEIGHT = 0,
  VELLUM_METRIC_BUTTON_WIDTH = 1, /* the least */
  VELLUM_METRIC_SMALL_BUTTON_WIDTH = 2,
  VELLUM_METRIC_SMALL_BUTTON_HEIGHT = 3,
  VELLUM_METRIC_GAP = 4,
  VELLUM_METRIC_TEXT_HEIGHT = 5, /* of a line in a button, the least */
  VELLUM_METRIC_MARGIN = 6
};

/* Colors, 0xRRGGBB. Each text must be readable on its ground: a contrast of 4.5 at least. */
enum {
  VELLUM_COLOR_WINDOW = 0,
  VELLUM_COLOR_TEXT,
  VELLUM_COLOR_FIELD, /* lists, and fields that are typed into */
  VELLUM_COLOR_FIELD_TEXT,
  VELLUM_COLOR_OTHER_FIELD, /* every second row */
  VELLUM_COLOR_BUTTON,
  VELLUM_COLOR_BUTTON_TEXT,
  VELLUM_COLOR_HIGHLIGHT,
  VELLUM_COLOR_HIGHLIGHT_TEXT,
  VELLUM_COLOR_LINK,
  VELLUM_COLOR_SECONDARY_TEXT,
  VELLUM_COLOR_DISABLED_TEXT, /* may be weaker */
  VELLUM_COLOR_TIP,
  VELLUM_COLOR_TIP_TEXT,
  VELLUM_COLOR_EDGE, /* lines around fields and buttons */
  VELLUM_COLOR_ACCENT,
  VELLUM_COLOR_ACCENT_TEXT,
  VELLUM_COLOR_COUNT
};

#define VELLUM_THEME_EXPORT __attribute__((visibility("default")))

/* Listing and use. Starts the theme; 0: it doesn't know this version, or can't. */
VELLUM_THEME_EXPORT uint32_t THEMEInit(uint32_t version);
/* Listing and use. Ends it. */
VELLUM_THEME_EXPORT void THEMEDeInit(void);
/* Listing and use. Draws the sample that the list of themes shows. 0: failed. */
VELLUM_THEME_EXPORT uint32_t THEMEGetBitmap(const VellumPixels* pixels);

/* Use. What it draws, and what else it asks for. */
VELLUM_THEME_EXPORT uint32_t THEMEGetSupport(void);
/* Use. The ground of a button; 0: failed, 1: the program draws icon and text, 2: the theme has drawn `text`
 * (UTF-8) as well. */
VELLUM_THEME_EXPORT uint32_t THEMEDrawButton(const VellumPixels* pixels, uint32_t state, const char* text);
VELLUM_THEME_EXPORT uint32_t THEMEDrawSmallButton(const VellumPixels* pixels, uint32_t state,
                                                  const char* text);
/* Use. The ground of a tool; `command` is the number of its command, 0 for one without. 0: failed. */
VELLUM_THEME_EXPORT uint32_t THEMEDrawTool(const VellumPixels* pixels, uint32_t state, uint32_t command);
/* Use. All of the toolbar's ground. 0: failed. */
VELLUM_THEME_EXPORT uint32_t THEMEDrawToolbarBackground(const VellumPixels* pixels);
/* Use. A size of the layout. */
VELLUM_THEME_EXPORT int32_t THEMEGetMetric(uint32_t number);

/* Where it is there, the list of themes has a button for it. The theme's own settings; `window` is a token.
 * Not 0: something has changed. */
VELLUM_THEME_EXPORT uint32_t THEMEConfigure(void* window);
/* Where it is there, it names the colors of the whole program, and is asked for all or none: 0: not this one.
 */
VELLUM_THEME_EXPORT uint32_t THEMEGetColor(uint32_t number, uint32_t* color);

#ifdef __cplusplus
}
#endif

#endif
