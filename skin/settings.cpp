#include "skin/settings.h"
