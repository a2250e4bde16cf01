#include "readers/inflate.h"
