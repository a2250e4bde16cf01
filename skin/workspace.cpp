#include "skin/workspace.h"
