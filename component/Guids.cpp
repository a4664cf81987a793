// The identifiers that the type library's header only declares, defined once.

#include <initguid.h>

#include "TERVANELib.h"
