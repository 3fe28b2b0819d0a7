// Includes a header that may be included, but by a relative path.
#include "../files/path.h"
