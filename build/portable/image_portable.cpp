#include "build/image.h"
