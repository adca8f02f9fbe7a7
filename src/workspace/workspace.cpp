#include "workspace/workspace.h"
