// Black and white with a yellow for what is chosen; edges are thick, and nothing is told by a shade alone.
#include "look.h"

const Look kLook = {{0x000000, 0xFFFFFF, 0x000000, 0xFFFFFF, 0x141414, 0x000000, 0xFFFFFF, 0xFFDD00, 0x000000,
                     0x66CCFF, 0xFFFFFF, 0xA6A6A6, 0x000000, 0xFFFF66, 0xFFFFFF, 0xFFDD00, 0x000000},
                    0x000000,
                    0x000000,
                    3,
                    2,
                    0,
                    0.30};
