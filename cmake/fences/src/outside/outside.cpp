#include "inside/inside.h"
