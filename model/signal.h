#ifndef TARN_MODEL_SIGNAL_H
#define TARN_MODEL_SIGNAL_H

// The signal types live a layer below, in signals/; the module's users may
// reach them through here.
#include "signals/signal.h"

#endif
