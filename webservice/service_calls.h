// The generated web-service calls as C++ sees them: C functions over plain records.

#pragma once

#include <stdsoap2.h>

extern "C" {
#include "soapStub.h"
}
