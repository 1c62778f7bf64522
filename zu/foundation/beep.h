#pragma once

#include "zu/export.h"

// Sounds the terminal's bell, where standard error is one. Pitch [Hz] and length [ms] are wishes.
ZU_API void ZuvoBeep(int iFrequency, int iDuration);
