#include "skin/locale.h"
