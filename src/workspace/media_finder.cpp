#include "workspace/media_finder.h"
