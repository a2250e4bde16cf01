#include "readers/zip_reader.h"
