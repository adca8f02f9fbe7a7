#include "workspace/folder_watcher.h"
