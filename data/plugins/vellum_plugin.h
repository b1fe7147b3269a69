/* Vellumcraft: the interface of animation plugins.
 *
 * A plugin is a shared library that exports the two functions below. It makes pictures; the program makes the
 * document. Its file is named QDXPL*_x64*.so and lies in the folder "plugin" beside the program, in
 * lib/vellumcraft/plugin of the installation, or in the person's own $XDG_DATA_HOME/Tarnwick/Animation
 * Plugins; nobody but its owner may write to the folder and the file.
 *
 * All calls come on the program's main thread, and the callback may be called from nowhere else, and only
 * while PLUGIN15DoBuild runs. Records lie in memory as they stand here on every 64-bit machine; all numbers
 * are in the byte order of the machine.
 *
 * This header may be used for any purpose, without conditions. It is C89 and C++.
 */
#ifndef VELLUM_PLUGIN_H
#define VELLUM_PLUGIN_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define VELLUM_PLUGIN_VERSION 3840u /* of records and calls; a plugin refuses what it doesn't know */

/* What the plugin tells of itself. On entry `size` is 600, `version` VELLUM_PLUGIN_VERSION, the rest zero. */
typedef struct VellumPluginParams {
  uint32_t size;
  uint32_t version;
  char name[261];        /* UTF-8, ended by a zero: the label in the menu */
  char description[261]; /* UTF-8, ended by a zero */
  uint8_t reserved[2];
  uint32_t flags; /* none have a meaning yet */
  uint8_t rest[64];
} VellumPluginParams;

/* The animation. The plugin fills it in for VELLUM_BEGIN and gives it along with every later call. */
typedef struct VellumContext {
  uint32_t size;        /* sizeof(VellumContext) */
  uint32_t width;       /* of the canvas, in pixels: 1 to 16383 */
  uint32_t height;      /* the same */
  uint32_t frame_count; /* as far as it is known; 0 if not */
  uint32_t loop_count;  /* how often it plays; 0 for ever */
  uint32_t total;       /* of the progress display; 0: there is none */
  uint64_t document;    /* set by VELLUM_BEGIN; the plugin leaves it as it is */
} VellumContext;

/* How a picture is shown, for VELLUM_ADD_FRAME. */
typedef struct VellumFrame {
  uint32_t index; /* from 0; moves the progress display */
  uint32_t delay; /* milliseconds */
  int32_t x, y;   /* of the picture's top left corner on the canvas */
  int32_t
      transparent;  /* index of a color, or with 24 bits a color 0x00BBGGRR, that is transparent; -1: none */
  uint32_t flags;   /* VELLUM_FRAME_... */
  uint32_t dispose; /* with VELLUM_FRAME_DISPOSE: 0 none, 1 background, 2 previous */
  uint32_t blend;   /* with VELLUM_FRAME_BLEND: 0 source, 1 over */
} VellumFrame;

#define VELLUM_FRAME_DISPOSE 1u
#define VELLUM_FRAME_BLEND 2u
#define VELLUM_FRAME_CLEAR 8u /* MNG: the canvas is cleared for the frame */

/* A picture, for VELLUM_ADD_FRAME. Behind it in memory follow, without a gap: below 9 bits the color table
 * (2, 16 or 256 entries of blue, green, red, 0), then the rows, the bottom row first, each padded to a
 * multiple of 4 bytes. 24 bits are blue, green, red; 32 bits blue, green, red, alpha, where alpha is not
 * multiplied in. */
typedef struct VellumPicture {
  uint32_t bytes;       /* from `header_size` to the end of the last row */
  uint32_t header_size; /* 40 */
  int32_t width;
  int32_t height;
  uint16_t planes; /* 1 */
  uint16_t bits;   /* 1, 4, 8, 24 or 32 */
  uint32_t zero[6];
} VellumPicture;

/* What the callback is asked for. */
#define VELLUM_BEGIN 1u     /* data and arguments are null */
#define VELLUM_ADD_FRAME 2u /* data: VellumPicture, arguments: VellumFrame; both are copied */
#define VELLUM_NOTHING 3u
#define VELLUM_END 4u /* data and arguments are null */

/* 1 when it was done. 0: it failed, or the person wants to stop; the plugin cleans up and returns. */
typedef uint32_t (*VellumCallback)(VellumContext* context, uint32_t code, const void* data,
                                   const void* arguments);

/* What the program tells. */
typedef struct VellumBuild {
  uint32_t size;    /* 104 */
  uint32_t version; /* VELLUM_PLUGIN_VERSION */
  void* window;     /* a token, the same in every call; null on the command line */
  VellumCallback callback;
  uint32_t language; /* 1 */
  uint32_t bits;     /* 24: the depth that the program likes best */
  uint32_t order;    /* 2: pictures are blue, green, red, with the bottom row first */
  uint8_t rest[68];
} VellumBuild;

#if defined(__GNUC__)
#define VELLUM_EXPORT __attribute__((visibility("default")))
#else
#define VELLUM_EXPORT
#endif

/* Exported by a plugin. The last argument of both is 0. */

/* Fills the record in. 0: the plugin can't work with this program. */
VELLUM_EXPORT uint32_t PLUGIN15GetPluginParams(VellumPluginParams* params, uint32_t reserved);

/* Asks the person what there is to ask, and builds: VELLUM_BEGIN, VELLUM_ADD_FRAME for each frame,
 * VELLUM_END. 0: it didn't. */
VELLUM_EXPORT uint32_t PLUGIN15DoBuild(void* window, VellumBuild* build, uint32_t reserved);

#ifdef __cplusplus
}
#endif

#endif
