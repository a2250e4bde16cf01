#include "skin/skin_model.h"
