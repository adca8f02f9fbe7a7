#include "platform/atomic_file.h"
