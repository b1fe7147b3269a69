// Slate without pure black, so that pictures stay the brightest of what is seen.
#include "look.h"

const Look kLook = {{0x25282E, 0xE4E7EC, 0x1B1D22, 0xE4E7EC, 0x20232A, 0x363B44, 0xEEF1F5, 0x2E6FC4, 0xFFFFFF,
                     0x7FB4FF, 0xA9B0BC, 0x767D89, 0x3B414B, 0xF2F4F7, 0x4A505B, 0x2E6FC4, 0xFFFFFF},
                    0x33373F,
                    0x292C33,
                    5,
                    1,
                    0.06,
                    0.28};
