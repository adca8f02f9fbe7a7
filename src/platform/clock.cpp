#include "platform/clock.h"
