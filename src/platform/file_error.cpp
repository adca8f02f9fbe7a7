#include "platform/file_error.h"
