/* The header compiles as C11. That its functions have C names is seen in the list of what the library exports. */
#include "kalvo.h"
