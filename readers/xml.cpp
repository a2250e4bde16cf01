#include "readers/xml.h"
