#include "support/g_time.h"
