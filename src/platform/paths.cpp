#include "platform/paths.h"
