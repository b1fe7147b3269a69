// White surfaces on a cool grey, with a blue that is strong enough to read.
#include "look.h"

const Look kLook = {{0xF3F5F8, 0x1D232C, 0xFFFFFF, 0x1D232C, 0xF3F6FA, 0xFDFEFF, 0x1D232C, 0x1F66C1, 0xFFFFFF,
                     0x1556A8, 0x566070, 0x858D9A, 0x27303D, 0xFFFFFF, 0xBCC4D0, 0x1F66C1, 0xFFFFFF},
                    0xFFFFFF,
                    0xE9EDF3,
                    5,
                    1,
                    0.05,
                    0.10};
