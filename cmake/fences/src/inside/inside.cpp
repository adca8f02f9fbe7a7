#include "inside/inside.h"
#include "inside/internal/own.h"
