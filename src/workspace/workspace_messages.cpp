#include "workspace/workspace_messages.h"
