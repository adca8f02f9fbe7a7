#include "inside/inside.h"
#include "inside/internal/own.h"

#include <libavcodec/avcodec.h>
#include <libheif/heif.h>
