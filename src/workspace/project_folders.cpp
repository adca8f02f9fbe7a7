#include "workspace/project_folders.h"
