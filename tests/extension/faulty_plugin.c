/* A plugin that does something wrong; FAULT says what. */
#include <pthread.h>
#include <string.h>
#include <unistd.h>

#include "vellum_plugin.h"

static VellumBuild kept;
static VellumContext context = {sizeof(VellumContext), 4, 2, 0, 0, 2, 0};
static struct {
  VellumPicture head;
  uint8_t rows[2][12];
} picture = {{64, 40, 4, 2, 1, 24, {0}}, {{0}}};
static VellumFrame frame = {0, 100, 0, 0, -1, 0, 0, 0};

uint32_t PLUGIN15GetPluginParams(VellumPluginParams* params, uint32_t reserved) {
  (void)reserved;
  if (FAULT == 1) return 0;
  if (FAULT == 9)
    memset(params->name, 'A', sizeof params->name + sizeof params->description);
  else
    strcpy(params->name, "Fault");
  return 1;
}

static void* call_elsewhere(void* wait) {
  if (wait) usleep(20000);
  context.document = 1;
  return kept.callback(&context, VELLUM_ADD_FRAME, &picture, &frame) ? &kept : 0;
}

#if FAULT != 2
uint32_t PLUGIN15DoBuild(void* window, VellumBuild* build, uint32_t reserved) {
  pthread_t thread;
  void* accepted = 0;
  uint32_t good = 1;
  (void)window;
  (void)reserved;
  kept = *build;
  if (FAULT == 6) context.width = 0;
  good &= build->callback(&context, VELLUM_BEGIN, 0, 0);
  if (FAULT == 4) return good;
  if (FAULT == 5) picture.head.bytes = 0x7FFFFFFF;
  if (FAULT == 7) build->callback(&context, VELLUM_BEGIN, 0, 0);
  if (FAULT == 8) {
    pthread_create(&thread, 0, call_elsewhere, 0);
    pthread_join(thread, &accepted);
    if (accepted) return 0; /* the document would have a frame too many */
    pthread_create(&thread, 0, call_elsewhere, &kept);
    pthread_detach(thread);
  }
  good &= build->callback(&context, VELLUM_ADD_FRAME, &picture, &frame);
  picture.rows[0][0] = 200;
  good &= build->callback(&context, VELLUM_ADD_FRAME, &picture, &frame);
  build->callback(&context, 99, 0, 0);
  build->callback(0, VELLUM_END, 0, 0);
  if (FAULT != 3) build->callback(&context, VELLUM_END, 0, 0);
  if (FAULT == 7) {
    build->callback(&context, VELLUM_END, 0, 0);
    build->callback(&context, VELLUM_ADD_FRAME, &picture, &frame);
  }
  return good;
}
#endif
